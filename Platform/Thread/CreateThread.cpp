// Threads of a POSIX system under the names that the thread library uses.
//
// A handle is a counted reference to a record that the thread and the handle's owner share, so that waiting for a
// thread and giving its handle up work in any order. The record says that the thread has ended when its routine has
// returned.
//
// Making a system thread costs more than most bands. So a system thread whose routine has returned sleeps for a while
// and then takes the next one, if there is one by then. Sleeping threads hold nothing but their stacks; they are ended
// when they have slept for too long, when there are too many of them, and when this library is unloaded or the process
// exits.
#include "Platform/Thread/CreateThread.h"

#include "Platform/Thread/AddressWait.h"
#include "Platform/Thread/SpinWait.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <vector>

namespace
{

constexpr std::chrono::seconds idleLimit{60};
constexpr std::size_t idleThreadLimit = 64;
constexpr std::chrono::nanoseconds spinLimit{5000};

// What a thread and its handle share. It is deleted with the last of its references.
struct SThread
{
    enum EState : std::uint32_t
    {
        Runs = 0,
        RunsAwaited = 1, // somebody may sleep until it has ended
        Ended = 2,
    };

    void Retain() { ++referenceCount; }
    void Release()
    {
        if (--referenceCount == 0)
        {
            delete this;
        }
    }

    ThreadStartRoutine startRoutine = nullptr;
    void* parameter = nullptr;
    std::atomic<std::uint32_t> state{Runs};
    DWORD exitCode = 0; // written before the end is
    std::atomic<int> referenceCount{2};
};

void End_Publish(SThread& thread, DWORD exitCode)
{
    thread.exitCode = exitCode;
    if (thread.state.exchange(SThread::Ended) == SThread::RunsAwaited)
    {
        CAddressWait::WakeAll(&thread.state);
    }
    thread.Release();
}

bool End_Wait(SThread& thread, CAddressWait::TimePoint deadline)
{
    const auto bEnded = [&] { return thread.state.load() == SThread::Ended; };
    if (CSpinWait::IsWorthwhile() && CSpinWait::Spin(bEnded, spinLimit, 8))
    {
        return true;
    }
    do
    {
        std::uint32_t runs = SThread::Runs;
        thread.state.compare_exchange_strong(runs, SThread::RunsAwaited);
        CAddressWait::Sleep(thread.state, SThread::RunsAwaited, deadline);
    } while (!bEnded() && (deadline == CAddressWait::withoutLimit || std::chrono::steady_clock::now() < deadline));
    return bEnded();
}

// A system thread: runs one routine after the other.
class CSystemThread
{
public:
    // `bSleeps`: it takes further routines after the first.
    CSystemThread(SThread& first, bool bSleeps) : m_pThread(&first), m_bSleeps(bSleeps) {}

    // Starts the system thread, which owns this object from then on. False if the system cannot.
    bool Start(const pthread_attr_t& attributes)
    {
        pthread_t id = {};
        return pthread_create(&id, &attributes, &Main, this) == 0;
    }

    // Give a sleeping thread, which nobody else can reach any more, its next routine, or the end.
    void Next_Set(SThread& thread)
    {
        m_pThread = &thread;
        Mail_Set(Mail_Thread);
    }
    void End_Join()
    {
        const pthread_t id = m_id; // the thread deletes this object
        m_bJoined = true;
        Mail_Set(Mail_End);
        pthread_join(id, nullptr);
    }

private:
    enum EMail : std::uint32_t
    {
        Mail_None = 0,
        Mail_Thread = 1,
        Mail_End = 2,
    };

    void Mail_Set(EMail mail)
    {
        const std::atomic<std::uint32_t>* address = &m_mail;
        m_mail = mail;
        CAddressWait::WakeOne(address);
    }

    static void* Main(void* argument);
    void Run();
    bool Mail_Take();

    SThread* m_pThread; // what it runs, or will run once m_mail says so
    bool m_bSleeps;
    std::atomic<std::uint32_t> m_mail{Mail_None};
    bool m_bJoined = false;       // somebody joins this thread
    pthread_t m_id = pthread_t(); // set by the thread itself, which may be through before its maker learns it
};

// The sleeping system threads.
class CSleepingThreads
{
public:
    // Never destroyed, since a thread that still runs when the process exits comes here afterwards.
    static CSleepingThreads& Get()
    {
        static auto* threads = new CSleepingThreads();
        return *threads;
    }

    // The one that was put here last; null if there is none.
    CSystemThread* Take()
    {
        const std::lock_guard guard(m_lock);
        if (m_threads.empty())
        {
            return nullptr;
        }
        CSystemThread* thread = m_threads.back();
        m_threads.pop_back();
        return thread;
    }

    // False if there is no room: the thread then ends. From here on the thread may be given work.
    bool Put(CSystemThread& thread)
    {
        const std::lock_guard guard(m_lock);
        if (m_bClosed || m_threads.size() >= idleThreadLimit)
        {
            return false;
        }
        m_threads.push_back(&thread);
        return true;
    }

    // Takes out a thread that wants to end. False if somebody has just taken it.
    bool Remove(CSystemThread& thread)
    {
        const std::lock_guard guard(m_lock);
        const auto place = std::find(m_threads.begin(), m_threads.end(), &thread);
        if (place == m_threads.end())
        {
            return false;
        }
        m_threads.erase(place);
        return true;
    }

    // Ends and joins all of them.
    void End_All()
    {
        while (CSystemThread* thread = Take())
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
    CSleepingThreads()
    {
        m_threads.reserve(idleThreadLimit);
        // A child process has none of its parent's threads.
        pthread_atfork([] { Get().m_lock.lock(); }, [] { Get().m_lock.unlock(); },
                       []
                       {
                           Get().m_threads.clear();
                           Get().m_lock.unlock();
                       });
    }

    std::mutex m_lock;
    std::vector<CSystemThread*> m_threads;
    bool m_bClosed = false;
};

// Closes the door when the library is unloaded.
struct SCloser
{
    ~SCloser() { CSleepingThreads::Get().Close(); }
} g_closer;

void* CSystemThread::Main(void* argument)
{
    const std::unique_ptr<CSystemThread> own(static_cast<CSystemThread*>(argument));
    own->m_id = pthread_self();
    own->Run();
    if (!own->m_bJoined)
    {
        pthread_detach(pthread_self());
    }
    return nullptr;
}

void CSystemThread::Run()
{
    bool bGoesOn = true;
    while (bGoesOn)
    {
        SThread& thread = *m_pThread;
        const auto exitCode = static_cast<DWORD>(thread.startRoutine(thread.parameter));
        // It can be taken before its end is known, so that who waits for the end and then starts a thread finds it.
        bGoesOn = m_bSleeps && CSleepingThreads::Get().Put(*this);
        End_Publish(thread, exitCode);
        bGoesOn = bGoesOn && Mail_Take();
    }
}

// Sleeps until there is something to do. False: the thread ends.
bool CSystemThread::Mail_Take()
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
            deadline = CAddressWait::withoutLimit; // taken: the mail is on its way
        }
    }
    return m_mail.exchange(Mail_None) == Mail_Thread;
}

bool SystemThread_Start(SThread& thread, std::size_t stackSize)
{
    // Another stack than the usual one is a thread's own.
    if (CSystemThread* sleeping = stackSize == 0 ? CSleepingThreads::Get().Take() : nullptr)
    {
        sleeping->Next_Set(thread);
        return true;
    }
    auto system = std::make_unique<CSystemThread>(thread, stackSize == 0);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    const bool bSizeOk = stackSize == 0 || pthread_attr_setstacksize(&attributes, stackSize) == 0;
    const bool bStarted = bSizeOk && system->Start(attributes);
    pthread_attr_destroy(&attributes);
    if (bStarted)
    {
        static_cast<void>(system.release()); // its own
    }
    return bStarted;
}

DWORD NextThreadId()
{
    static std::atomic<DWORD> lastId{0};
    return ++lastId;
}

} // namespace

HANDLE CreateThread(void* securityAttributes, std::size_t stackSize, ThreadStartRoutine startRoutine, void* parameter,
                    DWORD creationFlags, DWORD* threadId)
{
    if (securityAttributes != nullptr || creationFlags != 0 || startRoutine == nullptr)
    {
        return nullptr;
    }
    auto thread = std::make_unique<SThread>();
    thread->startRoutine = startRoutine;
    thread->parameter = parameter;
    if (threadId != nullptr)
    {
        *threadId = NextThreadId(); // before the thread exists, which may look at it
    }
    return SystemThread_Start(*thread, stackSize) ? thread.release() : nullptr;
}

DWORD WaitForSingleObject(HANDLE thread, DWORD timeoutMs)
{
    SThread& shared = *static_cast<SThread*>(thread);
    if (shared.state.load() == SThread::Ended)
    {
        return WAIT_OBJECT_0;
    }
    if (timeoutMs == 0)
    {
        return WAIT_TIMEOUT;
    }
    shared.Retain(); // the handle may be closed meanwhile
    const bool bEnded =
        End_Wait(shared, timeoutMs == INFINITE ? CAddressWait::withoutLimit : CAddressWait::Deadline(timeoutMs));
    shared.Release();
    return bEnded ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

bool GetExitCodeThread(HANDLE thread, DWORD* exitCode)
{
    const SThread& shared = *static_cast<SThread*>(thread);
    const bool bEnded = shared.state.load() == SThread::Ended;
    *exitCode = bEnded ? shared.exitCode : 0;
    return bEnded;
}

bool CloseHandle(HANDLE thread)
{
    static_cast<SThread*>(thread)->Release();
    return true;
}

void SleepingThreads_End()
{
    CSleepingThreads::Get().End_All();
}
