// Workers, events and locks that poll: who waits looks again every millisecond. Slow, but complete, and without a line
// of the embedded edition.
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomCriticalSection.h"
#include "Platform/Thread/CustomManualResetEvent.h"
#include "Platform/Thread/TamBaseThread.h"

#include <chrono>
#include <thread>

namespace
{

// The stop request of the worker that the calling thread runs; null on other threads.
thread_local const std::atomic<bool>* t_pStopRequested = nullptr;

// Looks until `isOver` or the time is; what it said last.
template<class IsOver>
bool Poll(unsigned long timeoutMs, IsOver isOver)
{
    const auto begin = std::chrono::steady_clock::now();
    while (!isOver())
    {
        if (timeoutMs != 0xFFFFFFFFUL &&
            std::chrono::steady_clock::now() - begin >= std::chrono::milliseconds(timeoutMs))
        {
            return isOver();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace

#if defined(_WIN32)

CKernelEvent::CKernelEvent() : m_handle(nullptr) {} // nothing here waits in the kernel

CKernelEvent::~CKernelEvent() = default;

CCustomCriticalSection::CCustomCriticalSection()
{
    static_assert(sizeof(CRITICAL_SECTION) == sizeof(m_section));
    InitializeCriticalSection(reinterpret_cast<CRITICAL_SECTION*>(m_section));
}

CCustomCriticalSection::~CCustomCriticalSection()
{
    DeleteCriticalSection(reinterpret_cast<CRITICAL_SECTION*>(m_section));
}

void CCustomCriticalSection::Enter()
{
    EnterCriticalSection(reinterpret_cast<CRITICAL_SECTION*>(m_section));
}

void CCustomCriticalSection::Leave()
{
    LeaveCriticalSection(reinterpret_cast<CRITICAL_SECTION*>(m_section));
}

CCustomManualResetEvent::CCustomManualResetEvent(bool bInitiallySet) : m_bSet(bInitiallySet) {}

bool CCustomManualResetEvent::Wait(unsigned long timeoutMs, int /*reserved*/)
{
    Poll(timeoutMs, [this] { return m_bSet || (t_pStopRequested != nullptr && *t_pStopRequested); });
    return m_bSet;
}

void CCustomManualResetEvent::Set()
{
    m_bSet = true;
}

void CCustomManualResetEvent::Reset()
{
    m_bSet = false;
}

#else

// What the headers leave to the library: the lock that was taken, the event that was not set.

void CCustomCriticalSection::Enter_Slow()
{
    if (m_owner.load() == std::this_thread::get_id())
    {
        ++m_reentryCount;
        return;
    }
    std::uint32_t free = Word_Free;
    while (!m_word.compare_exchange_weak(free, Word_Held))
    {
        free = Word_Free;
        std::this_thread::yield();
    }
    m_owner.store(std::this_thread::get_id());
}

void CCustomCriticalSection::Wake() {} // who polls is not woken

CCustomManualResetEvent::CCustomManualResetEvent(bool bInitiallySet) : m_word(bInitiallySet ? setBit : 0) {}

bool CCustomManualResetEvent::Wait_Slow(unsigned long timeoutMs)
{
    Poll(timeoutMs, [this] { return IsSet() || (t_pStopRequested != nullptr && *t_pStopRequested); });
    return IsSet();
}

void CCustomManualResetEvent::Wake() {}

namespace
{

struct SThread
{
    std::atomic<bool> bEnded{false};
    DWORD exitCode = 0;
    std::thread thread;
};

} // namespace

HANDLE CreateThread(void* /*securityAttributes*/, std::size_t /*stackSize*/, ThreadStartRoutine startRoutine,
                    void* parameter, DWORD /*creationFlags*/, DWORD* threadId)
{
    static std::atomic<DWORD> lastId{0};
    auto* thread = new SThread();
    if (threadId != nullptr)
    {
        *threadId = ++lastId;
    }
    thread->thread = std::thread(
        [thread, startRoutine, parameter]
        {
            thread->exitCode = static_cast<DWORD>(startRoutine(parameter));
            thread->bEnded = true;
        });
    return thread;
}

DWORD WaitForSingleObject(HANDLE thread, DWORD timeoutMs)
{
    const auto& waited = *static_cast<SThread*>(thread);
    return Poll(timeoutMs, [&waited] { return waited.bEnded.load(); }) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

bool CloseHandle(HANDLE thread)
{
    auto* closed = static_cast<SThread*>(thread);
    closed->thread.join();
    delete closed;
    return true;
}

#endif

CCustomManualResetEvent::~CCustomManualResetEvent() = default;

// The worker's loop, without pauses: this edition has none.

TamBaseThread::TamBaseThread() = default;

TamBaseThread::TamBaseThread(const TamBaseThread& other) : m_threadName(other.m_threadName) {}

TamBaseThread& TamBaseThread::operator=(const TamBaseThread& other)
{
    m_threadName = other.m_threadName;
    return *this;
}

TamBaseThread::~TamBaseThread()
{
    if (m_threadHandle != nullptr)
    {
        CloseHandle(m_threadHandle);
    }
}

bool TamBaseThread::Start(const char* name)
{
    m_threadName = name;
    m_threadState = Preparing;
    return CustomCreateThread();
}

bool TamBaseThread::WaitReady()
{
    Poll(0xFFFFFFFFUL, [this] { return m_threadState != Preparing; });
    return m_bReady;
}

bool TamBaseThread::WaitPaused()
{
    return false;
}

bool TamBaseThread::WaitExit(unsigned int timeoutMs)
{
    return m_threadHandle == nullptr || WaitForSingleObject(m_threadHandle, timeoutMs) == WAIT_OBJECT_0;
}

void TamBaseThread::Stop()
{
    m_bStopRequested = true;
}

void TamBaseThread::Pause() {}

void TamBaseThread::Resume() {}

bool TamBaseThread::IsThreadSuccess()
{
    return m_bSuccess;
}

bool TamBaseThread::Prepare()
{
    return true;
}

void TamBaseThread::Finally() {}

unsigned long TamBaseThread::StartThreadWorker()
{
    t_pStopRequested = &m_bStopRequested;
    bool bSuccess = Prepare();
    m_bReady = bSuccess;
    m_threadState = Running;
    while (bSuccess && !m_bStopRequested)
    {
        bSuccess = OneLoop();
    }
    Finally();
    t_pStopRequested = nullptr;
    m_bSuccess = bSuccess;
    m_threadState = Ended;
    return bSuccess ? 1 : 0;
}
