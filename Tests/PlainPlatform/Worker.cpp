// The worker base. Its threads are the edition's; what a worker's thread and the others share is behind a monitor.
#include "Platform/Thread/TamBaseThread.h"

#include "PlainHook.h"
#include "PlainMonitor.h"
#include "PlainThread.h"

#include <exception>
#include <utility>

namespace
{

constexpr unsigned hourMs = 3600000;
constexpr unsigned shortHourMs = 50;

} // namespace

struct TamBaseThread::SRun
{
    CPlainMonitor monitor; // guards what follows
    bool bLive = false;    // a thread was started and its worker body has not ended
    bool bReady = false;
    bool bPaused = false;
    bool bPauseRequested = false;
    bool bStopRequested = false;
    bool bSuccess = false;
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
    SRun& run = *m_pRun;
    if (run.monitor.Look([&run] { return run.bLive; }))
    {
        return false;
    }
    if (m_threadHandle != nullptr)
    {
        PlainThread_Close(m_threadHandle);
        m_threadHandle = nullptr;
    }
    m_threadName = name;
    m_threadState = 1;
    run.monitor.Change(
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
        run.monitor.Change([&run] { run.bLive = false; });
        throw;
    }
    if (!bCreated)
    {
        run.monitor.Change([&run] { run.bLive = false; });
    }
    return bCreated;
}

bool TamBaseThread::WaitReady()
{
    SRun& run = *m_pRun;
    bool bReady = false;
    const auto IsDecided = [&]
    {
        bReady = run.bReady;
        return bReady || !run.bLive;
    };
    run.monitor.Wait(IsDecided, CPlainMonitor::withoutLimit);
    return bReady;
}

bool TamBaseThread::WaitPaused()
{
    SRun& run = *m_pRun;
    bool bPaused = false;
    const auto IsDecided = [&]
    {
        bPaused = run.bPaused;
        return bPaused || !run.bLive || !run.bPauseRequested || run.bStopRequested;
    };
    run.monitor.Wait(IsDecided, CPlainMonitor::withoutLimit);
    return bPaused;
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
    m_pRun->monitor.Change([this] { m_pRun->bStopRequested = true; });
}

void TamBaseThread::Pause()
{
    m_pRun->monitor.Change([this] { m_pRun->bPauseRequested = true; });
}

void TamBaseThread::Resume()
{
    m_pRun->monitor.Change([this] { m_pRun->bPauseRequested = false; });
}

bool TamBaseThread::IsThreadSuccess()
{
    return m_pRun->monitor.Look([this] { return m_pRun->bSuccess; });
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
    run.monitor.Change(
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
    m_pRun->monitor.Change([this] { m_pRun->bReady = true; });
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
    const auto [bPause, bStop] =
        run.monitor.Look([&run] { return std::pair(run.bPauseRequested, run.bStopRequested); });
    if (!bPause || bStop)
    {
        return !bStop;
    }
    run.monitor.Change([&run] { run.bPaused = true; });
    const auto IsOver = [&run] { return !run.bPauseRequested || run.bStopRequested; };
    run.monitor.WaitAndChange(IsOver, CPlainMonitor::withoutLimit, [&run] { run.bPaused = false; });
    return run.monitor.Look([&run] { return !run.bStopRequested; });
}
