// The worker's run loop and the hand-shakes around it.
#include "Platform/Thread/TamBaseThread.h"

#include "Platform/Thread/CustomManualResetEvent.h"
#include "Platform/Thread/WorkerWait.h"

#include <exception>

namespace
{

thread_local TamBaseThread* t_pWorker = nullptr;

// Runs one part of a worker's body. What it throws waits in `thrown` until the body is over; the first one counts.
template<class Part>
void Guarded_Run(std::exception_ptr& thrown, Part part)
{
    try
    {
        part();
    }
    catch (...)
    {
        if (thrown == nullptr)
        {
            thrown = std::current_exception();
        }
    }
}

} // namespace

// The wait in progress.

CWorkerWait::CWorkerWait(CCustomManualResetEvent& event) : m_event(event), m_pWorker(t_pWorker)
{
    if (m_pWorker != nullptr)
    {
        const std::lock_guard guard(m_pWorker->m_waitLock);
        m_pWorker->m_pWait = this;
    }
}

CWorkerWait::~CWorkerWait()
{
    if (m_pWorker != nullptr)
    {
        const std::lock_guard guard(m_pWorker->m_waitLock);
        m_pWorker->m_pWait = nullptr;
    }
}

bool CWorkerWait::IsCut()
{
    return t_pWorker != nullptr && t_pWorker->m_bWaitsCut;
}

void CWorkerWait::Wake(TamBaseThread& worker)
{
    const std::lock_guard guard(worker.m_waitLock);
    if (worker.m_pWait != nullptr)
    {
        worker.m_pWait->m_event.WakeAll();
    }
}

TamBaseThread* CWorkerWait::Worker_Get()
{
    return t_pWorker;
}

void CWorkerWait::Worker_Set(TamBaseThread* worker)
{
    t_pWorker = worker;
}

// The worker.

TamBaseThread::TamBaseThread() = default;

TamBaseThread::TamBaseThread(const TamBaseThread& other) : m_threadName(other.m_threadName) {}

TamBaseThread& TamBaseThread::operator=(const TamBaseThread& other)
{
    if (this != &other)
    {
        m_threadName = other.m_threadName;
    }
    return *this;
}

TamBaseThread::~TamBaseThread()
{
    CloseThread();
}

bool TamBaseThread::Start(const char* name)
{
    const CEnterLeaveCriticalSection startGuard(m_startLock);
    {
        const std::lock_guard guard(m_stateLock);
        if (m_bLive)
        {
            return false;
        }
    }
    LastRun_Close();
    m_threadName = name;
    {
        const std::lock_guard guard(m_stateLock);
        m_bReady = false;
        m_bSuccess = false;
        m_bPauseRequested = false;
        m_bStopRequested = false;
        m_bWaitsCut = false;
        m_threadState = Preparing;
        m_bLive = true;
    }
    bool bCreated = false;
    try
    {
        bCreated = CustomCreateThread();
    }
    catch (...)
    {
        Start_Undo();
        throw;
    }
    if (!bCreated)
    {
        Start_Undo();
    }
    return bCreated;
}

// There is no thread: the worker is one that has not been started.
void TamBaseThread::Start_Undo()
{
    const std::lock_guard guard(m_stateLock);
    m_threadState = NotStarted;
    m_bLive = false;
    m_stateChanged.notify_all();
}

bool TamBaseThread::WaitReady()
{
    std::unique_lock lock(m_stateLock);
    m_stateChanged.wait(lock, [this] { return m_threadState != Preparing || IsOwnThread(); });
    return m_bReady;
}

bool TamBaseThread::WaitPaused()
{
    std::unique_lock lock(m_stateLock);
    const auto bCanPause = [this] { return m_bLive && m_bPauseRequested && !m_bStopRequested && !IsOwnThread(); };
    m_stateChanged.wait(lock, [&] { return m_threadState == Paused || !bCanPause(); });
    return m_threadState == Paused && bCanPause();
}

bool TamBaseThread::WaitExit(unsigned int timeoutMs)
{
    if (IsOwnThread())
    {
        return false; // a worker cannot outwait itself
    }
    HANDLE thread = nullptr;
    {
        const CEnterLeaveCriticalSection startGuard(m_startLock);
        if (m_threadHandle == nullptr)
        {
            return true;
        }
        thread = m_threadHandle;
        const std::lock_guard guard(m_stateLock);
        ++m_exitWaiterCount;
    }
    const bool bEnded = WaitForSingleObject(thread, timeoutMs) == WAIT_OBJECT_0;
    const std::lock_guard guard(m_stateLock);
    --m_exitWaiterCount;
    m_stateChanged.notify_all();
    return bEnded;
}

void TamBaseThread::Stop()
{
    {
        const std::lock_guard guard(m_stateLock);
        const bool bFirst = !m_bStopRequested.exchange(true);
        m_stateChanged.notify_all();
        if (!bFirst || IsOwnThread() || m_threadState == Finishing)
        {
            return;
        }
        m_bWaitsCut = true;
    }
    CWorkerWait::Wake(*this);
}

void TamBaseThread::Pause()
{
    const std::lock_guard guard(m_stateLock);
    m_bPauseRequested = true;
}

void TamBaseThread::Resume()
{
    const std::lock_guard guard(m_stateLock);
    m_bPauseRequested = false;
    m_stateChanged.notify_all();
}

bool TamBaseThread::IsThreadSuccess()
{
    const std::lock_guard guard(m_stateLock);
    return m_bSuccess;
}

bool TamBaseThread::IsOwnThread() const
{
    return CWorkerWait::Worker_Get() == this;
}

bool TamBaseThread::Prepare()
{
    return true;
}

void TamBaseThread::Finally() {}

unsigned long TamBaseThread::StartThreadWorker()
{
    CWorkerWait::Worker_Set(this);
    bool bSuccess = false;
    std::exception_ptr thrown;
    Guarded_Run(thrown, [&] { bSuccess = RunLoop(); });
    Finish_Begin();
    Guarded_Run(thrown, [&] { Finally(); });
    CWorkerWait::Worker_Set(nullptr);
    End_Set(bSuccess && thrown == nullptr);
    if (thrown != nullptr)
    {
        std::rethrow_exception(thrown);
    }
    return bSuccess ? 1 : 0;
}

// Gives up the thread of a run that is over but for its last instructions, once nobody waits for it any more.
void TamBaseThread::LastRun_Close()
{
    if (m_threadHandle == nullptr)
    {
        return;
    }
    WaitForSingleObject(m_threadHandle, INFINITE);
    std::unique_lock lock(m_stateLock);
    m_stateChanged.wait(lock, [this] { return m_exitWaiterCount == 0; });
    CloseThread();
}

bool TamBaseThread::RunLoop()
{
    if (!Prepare())
    {
        return false;
    }
    Ready_Set();
    while (PausePoint())
    {
        if (!OneLoop())
        {
            return false;
        }
    }
    return true;
}

// Rests here while a pause is requested. False once a stop is.
bool TamBaseThread::PausePoint()
{
    if (!m_bPauseRequested)
    {
        return !m_bStopRequested; // nothing to rest for: without the lock
    }
    std::unique_lock lock(m_stateLock);
    if (m_bPauseRequested && !m_bStopRequested)
    {
        m_threadState = Paused;
        m_stateChanged.notify_all();
        m_stateChanged.wait(lock, [this] { return !m_bPauseRequested || m_bStopRequested; });
        m_threadState = Running;
        m_stateChanged.notify_all();
    }
    return !m_bStopRequested;
}

void TamBaseThread::Ready_Set()
{
    const std::lock_guard guard(m_stateLock);
    m_bReady = true;
    m_threadState = Running;
    m_stateChanged.notify_all();
}

void TamBaseThread::Finish_Begin()
{
    const std::lock_guard guard(m_stateLock);
    m_threadState = Finishing;
    m_bWaitsCut = false;
    m_stateChanged.notify_all();
}

void TamBaseThread::End_Set(bool bSuccess)
{
    const std::lock_guard guard(m_stateLock);
    m_bSuccess = bSuccess;
    m_bLive = false;
    m_threadState = Ended;
    m_stateChanged.notify_all();
}

void TamBaseThread::CloseThread()
{
    if (m_threadHandle != nullptr)
    {
        CloseHandle(m_threadHandle);
        m_threadHandle = nullptr;
    }
}
