// The sleeping threads, and how a sleeping thread is found that is like a new one.
//
// The system tells a thread's attributes only to the thread that asks, and each question is a system call. Who starts a
// job asks for its own, which a new thread would inherit, and takes a sleeping thread that began its last job with the
// same ones. A thread asks again after its job, when it has told the job's end, so that nobody waits for the answer; if
// the job has changed them the thread ends: some changes, such as a higher niceness, cannot be taken back without a
// privilege. The floating-point environment and the locale cost no system call and are set before each job.
//
// Sleeping threads hold nothing but their stacks. They end when they have slept for too long, when there are too many
// of them, and when this library is unloaded or the process exits.
#include "Platform/Thread/SystemThread.h"

#include "Platform/Thread/AddressWait.h"
#include "Platform/Thread/SpinWait.h"

#include <array>
#include <atomic>
#include <cfenv>
#include <chrono>
#include <clocale>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <pthread.h>
#include <utility>

#if defined(__linux__)
#include <csignal>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace
{

constexpr std::chrono::seconds idleLimit{60};
constexpr int idleThreadLimit = 64;
constexpr std::chrono::nanoseconds spinLimit{5000}; // a few system calls

// What a new thread inherits, apart from the floating-point environment. What the system does not write is 0.
struct SAttributes
{
    // Those of the calling thread; none if the system does not tell them.
    static std::optional<SAttributes> Get()
    {
#if defined(__linux__)
        std::optional<SAttributes> own(std::in_place);
        if (syscall(SYS_rt_sigprocmask, SIG_BLOCK, nullptr, &own->m_signalMask, sizeof(m_signalMask)) == 0 &&
            syscall(SYS_sched_getaffinity, 0, sizeof(m_processors), own->m_processors.data()) > 0 &&
            syscall(SYS_sched_getattr, 0, own->m_scheduling.data(), sizeof(m_scheduling), 0) == 0 &&
            prctl(PR_GET_NAME, own->m_name.data()) == 0)
        {
            return own;
        }
#endif
        return std::nullopt;
    }

    bool operator==(const SAttributes&) const = default;

    std::uint64_t m_signalMask = 0;
    std::array<std::uint64_t, 16> m_processors = {}; // one bit each, as many as the C library has
    std::array<std::uint32_t, 12> m_scheduling = {}; // the first edition of the kernel's record
    std::array<char, 16> m_name = {};
};

// A system thread: does one job after the other.
class CThread
{
public:
    // Every job begins with `attributes`. None: there is only one job.
    CThread(CSystemThreadJob& first, const std::optional<SAttributes>& attributes) : m_attributes(attributes)
    {
        Job_Set(first);
    }

    // Starts the system thread, which owns this object from then on. False if the system cannot.
    bool Start(std::size_t stackSize)
    {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        const bool bSizeOk = stackSize == 0 || pthread_attr_setstacksize(&attributes, stackSize) == 0;
        pthread_t id = {};
        const bool bStarted = bSizeOk && pthread_create(&id, &attributes, &Main, this) == 0;
        pthread_attr_destroy(&attributes);
        return bStarted;
    }

    // Give a sleeping thread, which nobody else can reach any more, its next job, or the end.
    void Next_Set(CSystemThreadJob& job)
    {
        Job_Set(job);
        Mail_Set(Mail_Job);
    }
    void End_Join()
    {
        const pthread_t id = m_id; // the thread deletes this object
        m_bJoined = true;
        Mail_Set(Mail_End);
        pthread_join(id, nullptr);
    }

    // Whether a thread that can be taken still has the attributes with which its last job began. It asks the system
    // when that job's end has been told already, so the answer may have to be waited for.
    bool IsUnchanged()
    {
        if (CSpinWait::IsWorthwhile())
        {
            CSpinWait::Spin([this] { return m_check != Check_Asked; }, spinLimit, 8);
        }
        std::uint32_t check = Check_Asked;
        while (m_check.compare_exchange_strong(check, Check_Awaited) || check == Check_Awaited)
        {
            CAddressWait::Sleep(m_check, Check_Awaited, CAddressWait::withoutLimit);
            check = Check_Asked;
        }
        return check == Check_Unchanged;
    }

    const std::optional<SAttributes> m_attributes;
    CThread* m_pNext = nullptr; // the one that fell asleep before

private:
    enum EMail : std::uint32_t
    {
        Mail_None = 0,
        Mail_Job = 1,
        Mail_End = 2,
    };

    enum ECheck : std::uint32_t
    {
        Check_Asked = 0,
        Check_Awaited = 1, // somebody may sleep until it is known
        Check_Unchanged = 2,
        Check_Changed = 3,
    };

    // On the thread that starts the job, whose floating-point environment it gets.
    void Job_Set(CSystemThreadJob& job)
    {
        m_pJob = &job;
        std::fegetenv(&m_environment);
    }
    void Mail_Set(EMail mail)
    {
        const std::atomic<std::uint32_t>* address = &m_mail;
        m_mail = mail;
        CAddressWait::WakeOne(address);
    }

    static void* Main(void* argument);
    void Run();
    bool Attributes_Check();
    bool Mail_Take();

    CSystemThreadJob* m_pJob = nullptr; // what it does, or will do once m_mail says so
    std::fenv_t m_environment = {};     // for that job
    std::atomic<std::uint32_t> m_mail{Mail_None};
    std::atomic<std::uint32_t> m_check{Check_Asked};
    bool m_bJoined = false;       // somebody joins this thread
    pthread_t m_id = pthread_t(); // set by the thread itself, which may be through before its maker learns it
};

// The sleeping threads, the latest first.
class CSleepingThreads
{
public:
    // Never destroyed, since a thread that still runs when the process exits comes here afterwards. Takes no memory.
    static CSleepingThreads& Get()
    {
        alignas(CSleepingThreads) static std::array<unsigned char, sizeof(CSleepingThreads)> memory;
        static auto* threads = new (memory.data()) CSleepingThreads();
        return *threads;
    }

    // Takes out the latest thread that fits; null if none does.
    template<class Fits>
    CThread* Take(Fits fits)
    {
        const std::lock_guard guard(m_lock);
        for (CThread** place = &m_pLatest; *place != nullptr; place = &(*place)->m_pNext)
        {
            if (fits(**place))
            {
                --m_count;
                return std::exchange(*place, (*place)->m_pNext);
            }
        }
        return nullptr;
    }

    // Takes out a thread that wants to end. False if somebody has just taken it, whose mail is on its way.
    bool Remove(const CThread& thread)
    {
        return Take([&](const CThread& other) { return &other == &thread; }) != nullptr;
    }

    // False if the thread has to end instead. Otherwise it may be given work from here on.
    bool Put(CThread& thread)
    {
        const std::lock_guard guard(m_lock);
        m_bForkSafe = m_bForkSafe || Fork_Prepare();
        if (!m_bForkSafe || m_bClosed || m_count >= idleThreadLimit)
        {
            return false;
        }
        thread.m_pNext = std::exchange(m_pLatest, &thread);
        ++m_count;
        return true;
    }

    // Ends and joins all of them.
    void End_All()
    {
        while (CThread* thread = Take([](const CThread&) { return true; }))
        {
            thread->End_Join();
        }
    }

    // The same, and no thread sleeps here any more.
    void Close()
    {
        {
            const std::lock_guard guard(m_lock);
            m_bClosed = true;
        }
        End_All();
    }

private:
    // A child process has none of its parent's threads. False if there is no memory for the handlers.
    static bool Fork_Prepare()
    {
        return pthread_atfork([] { Get().m_lock.lock(); }, [] { Get().m_lock.unlock(); },
                              []
                              {
                                  Get().m_pLatest = nullptr;
                                  Get().m_count = 0;
                                  Get().m_lock.unlock();
                              }) == 0;
    }

    std::mutex m_lock;
    CThread* m_pLatest = nullptr;
    int m_count = 0;
    bool m_bClosed = false;
    bool m_bForkSafe = false;
};

// Closes the door when the library is unloaded.
struct SCloser
{
    ~SCloser() { CSleepingThreads::Get().Close(); }
} g_closer;

void* CThread::Main(void* argument)
{
    const std::unique_ptr<CThread> own(static_cast<CThread*>(argument));
    own->m_id = pthread_self();
    own->Run();
    if (!own->m_bJoined)
    {
        pthread_detach(pthread_self());
    }
    return nullptr;
}

void CThread::Run()
{
    do
    {
        CSystemThreadJob& job = *m_pJob;
        std::fesetenv(&m_environment);
        uselocale(LC_GLOBAL_LOCALE);
        job.Run();
        m_check = Check_Asked;
        // The thread can be taken before the end is known, so that who waits for the end and then starts a job finds
        // it.
        const bool bSleeps = m_attributes && CSleepingThreads::Get().Put(*this);
        job.Ended();
        if (!bSleeps || !Attributes_Check())
        {
            return;
        }
    } while (Mail_Take());
}

// After the end of the job, for which somebody may wait. False: the thread ends, since the job has changed them.
bool CThread::Attributes_Check()
{
    const bool bUnchanged = m_attributes == SAttributes::Get();
    if (m_check.exchange(bUnchanged ? Check_Unchanged : Check_Changed) == Check_Awaited)
    {
        CAddressWait::WakeAll(&m_check);
    }
    return bUnchanged || !CSleepingThreads::Get().Remove(*this);
}

// Sleeps until there is something to do. False: the thread ends.
bool CThread::Mail_Take()
{
    auto deadline = std::chrono::steady_clock::now() + idleLimit;
    while (m_mail == Mail_None)
    {
        CAddressWait::Sleep(m_mail, Mail_None, deadline);
        if (m_mail == Mail_None && std::chrono::steady_clock::now() >= deadline)
        {
            if (CSleepingThreads::Get().Remove(*this))
            {
                return false;
            }
            deadline = CAddressWait::withoutLimit;
        }
    }
    return m_mail.exchange(Mail_None) == Mail_Job;
}

} // namespace

bool CSystemThread::Start(CSystemThreadJob& job, std::size_t stackSize)
{
    const auto attributes = stackSize == 0 ? SAttributes::Get() : std::nullopt;
    const auto isLikeNew = [&](CThread& thread) { return thread.m_attributes == attributes && thread.IsUnchanged(); };
    if (CThread* sleeping = attributes ? CSleepingThreads::Get().Take(isLikeNew) : nullptr)
    {
        sleeping->Next_Set(job);
        return true;
    }
    std::unique_ptr<CThread> thread(new (std::nothrow) CThread(job, attributes));
    if (thread == nullptr || !thread->Start(stackSize))
    {
        return false;
    }
    static_cast<void>(thread.release()); // its own
    return true;
}

void CSystemThread::Sleeping_End()
{
    CSleepingThreads::Get().End_All();
}
