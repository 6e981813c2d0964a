// Threads, the event, and the worker base: standard parts, a new thread for every start.
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomManualResetEvent.h"
#include "Platform/Thread/TamBaseThread.h"

#include "PlainHook.h"
#include "PlainThread.h"

#include <chrono>
#include <exception>
#include <thread>

namespace
{

constexpr unsigned withoutLimit = 4294967295U;
constexpr unsigned hourMs = 3600000;
constexpr unsigned shortHourMs = 50;

// What a handle points to.
struct SPlainThread
{
    std::mutex mutex; // guards bEnded and exitCode
    std::condition_variable ended;
    bool bEnded = false;
    unsigned long exitCode = 0;
    std::thread thread;
};

void Thread_Run(SPlainThread& self, unsigned long (*startRoutine)(void*), void* parameter)
{
    const unsigned long exitCode = startRoutine(parameter);
    --SPlainHook::runningCount;
    const std::lock_guard guard(self.mutex);
    self.exitCode = exitCode;
    self.bEnded = true;
    self.ended.notify_all();
}

} // namespace

void* CreateThread(void* securityAttributes, std::size_t stackSize, unsigned long (*startRoutine)(void*),
                   void* parameter, std::uint32_t creationFlags, std::uint32_t* threadId)
{
    static std::atomic<std::uint32_t> lastThreadId{1000};
    if (++SPlainHook::creationCount == SPlainHook::failingCreation || securityAttributes != nullptr || stackSize != 0 ||
        creationFlags != 0)
    {
        return nullptr;
    }
    try
    {
        auto self = std::make_unique<SPlainThread>();
        SPlainThread& shared = *self;
        *threadId = ++lastThreadId;
        ++SPlainHook::runningCount;
        shared.thread =
            std::thread([&shared, startRoutine, parameter] { Thread_Run(shared, startRoutine, parameter); });
        ++SPlainHook::startedCount;
        return self.release();
    }
    catch (const std::exception&) // no thread left, or no memory
    {
        --SPlainHook::runningCount;
        return nullptr;
    }
}

bool PlainThread_Wait(void* handle, unsigned timeoutMs)
{
    auto& self = *static_cast<SPlainThread*>(handle);
    std::unique_lock lock(self.mutex);
    const auto HasEnded = [&self] { return self.bEnded; };
    if (timeoutMs == withoutLimit)
    {
        self.ended.wait(lock, HasEnded);
        return true;
    }
    return self.ended.wait_for(lock, std::chrono::milliseconds(timeoutMs), HasEnded);
}

unsigned long PlainThread_ExitCode(void* handle)
{
    auto& self = *static_cast<SPlainThread*>(handle);
    const std::lock_guard guard(self.mutex);
    return self.exitCode;
}

void PlainThread_Close(void* handle)
{
    const std::unique_ptr<SPlainThread> self(static_cast<SPlainThread*>(handle));
    self->thread.join();
}

// The event. Its constructor's argument says nothing here: a new event is not set.

CCustomManualResetEvent::CCustomManualResetEvent(bool) {}

bool CCustomManualResetEvent::Wait(unsigned long timeoutMs, int)
{
    if (CPlainWaitListener* const listener = SPlainHook::waitListener; listener != nullptr)
    {
        listener->EventWait(this, timeoutMs);
    }
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return m_bSet; });
}

void CCustomManualResetEvent::Set()
{
    const std::lock_guard guard(m_mutex);
    m_bSet = true;
    m_changed.notify_all();
}

void CCustomManualResetEvent::Reset()
{
    const std::lock_guard guard(m_mutex);
    m_bSet = false;
}

// The worker.

struct TamBaseThread::SRun
{
    std::mutex mutex; // guards what follows
    std::condition_variable changed;
    bool bLive = false; // a thread was started and its worker body has not ended
    bool bReady = false;
    bool bPaused = false;
    bool bPauseRequested = false;
    bool bStopRequested = false;
    bool bSuccess = false;

    // Changes what others wait for.
    template<class Change>
    void Set(Change change)
    {
        const std::lock_guard guard(mutex);
        change();
        changed.notify_all();
    }
};

TamBaseThread::TamBaseThread() : m_pRun(std::make_unique<SRun>()) {}

TamBaseThread::TamBaseThread(const TamBaseThread& other)
    : m_threadName(other.m_threadName), m_pRun(std::make_unique<SRun>())
{
}

TamBaseThread& TamBaseThread::operator=(const TamBaseThread& other)
{
    m_threadName = other.m_threadName;
    return *this;
}

TamBaseThread::~TamBaseThread()
{
    if (m_threadHandle != nullptr)
    {
        PlainThread_Close(m_threadHandle);
    }
}

bool TamBaseThread::Start(const char* name)
{
    {
        const std::lock_guard guard(m_pRun->mutex);
        if (m_pRun->bLive)
        {
            return false;
        }
    }
    if (m_threadHandle != nullptr)
    {
        PlainThread_Close(m_threadHandle);
        m_threadHandle = nullptr;
    }
    m_threadName = name;
    m_threadState = 1;
    SRun& run = *m_pRun;
    run.Set(
        [&run]
        {
            run.bLive = true;
            run.bReady = run.bPaused = run.bPauseRequested = run.bStopRequested = run.bSuccess = false;
        });
    bool bCreated = false;
    try
    {
        bCreated = CustomCreateThread();
    }
    catch (...)
    {
        run.Set([&run] { run.bLive = false; });
        throw;
    }
    if (!bCreated)
    {
        run.Set([&run] { run.bLive = false; });
    }
    return bCreated;
}

bool TamBaseThread::WaitReady()
{
    std::unique_lock lock(m_pRun->mutex);
    m_pRun->changed.wait(lock, [this] { return m_pRun->bReady || !m_pRun->bLive; });
    return m_pRun->bReady;
}

bool TamBaseThread::WaitPaused()
{
    std::unique_lock lock(m_pRun->mutex);
    SRun& run = *m_pRun;
    run.changed.wait(lock, [&run] { return run.bPaused || !run.bLive || !run.bPauseRequested || run.bStopRequested; });
    return run.bPaused;
}

bool TamBaseThread::WaitExit(unsigned int timeoutMs)
{
    if (CPlainWaitListener* const listener = SPlainHook::waitListener; listener != nullptr)
    {
        listener->ExitWait(m_threadName, timeoutMs);
    }
    const unsigned patience = SPlainHook::bShortHour && timeoutMs == hourMs ? shortHourMs : timeoutMs;
    return m_threadHandle == nullptr || PlainThread_Wait(m_threadHandle, patience);
}

void TamBaseThread::Stop()
{
    m_pRun->Set([this] { m_pRun->bStopRequested = true; });
}

void TamBaseThread::Pause()
{
    m_pRun->Set([this] { m_pRun->bPauseRequested = true; });
}

void TamBaseThread::Resume()
{
    m_pRun->Set([this] { m_pRun->bPauseRequested = false; });
}

bool TamBaseThread::IsThreadSuccess()
{
    const std::lock_guard guard(m_pRun->mutex);
    return m_pRun->bSuccess;
}

bool TamBaseThread::Prepare()
{
    return true;
}

void TamBaseThread::Finally() {}

unsigned long TamBaseThread::StartThreadWorker()
{
    SRun& run = *m_pRun;
    bool bSuccess = false;
    std::exception_ptr thrown;
    try
    {
        bSuccess = RunLoop();
    }
    catch (...)
    {
        thrown = std::current_exception();
    }
    try
    {
        Finally();
    }
    catch (...)
    {
        thrown = thrown == nullptr ? std::current_exception() : thrown;
    }
    run.Set(
        [&]
        {
            run.bSuccess = bSuccess && thrown == nullptr;
            run.bLive = false;
        });
    if (thrown != nullptr)
    {
        std::rethrow_exception(thrown);
    }
    return bSuccess ? 1 : 0;
}

bool TamBaseThread::RunLoop()
{
    if (!Prepare())
    {
        return false;
    }
    m_pRun->Set([this] { m_pRun->bReady = true; });
    while (PausePoint())
    {
        if (!OneLoop())
        {
            return false;
        }
    }
    return true;
}

// Rests while a pause is requested. False once a stop is.
bool TamBaseThread::PausePoint()
{
    SRun& run = *m_pRun;
    std::unique_lock lock(run.mutex);
    if (run.bPauseRequested && !run.bStopRequested)
    {
        run.bPaused = true;
        run.changed.notify_all();
        run.changed.wait(lock, [&run] { return !run.bPauseRequested || run.bStopRequested; });
        run.bPaused = false;
    }
    return !run.bStopRequested;
}
