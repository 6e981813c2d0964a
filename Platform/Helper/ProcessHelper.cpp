// The process and its terminal, through the system's own calls.
#include "Platform/Helper/ProcessHelper.h"

#include "Platform/Helper/FileWriter.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

// What a user, a service manager and a terminal send.
constexpr std::array endSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<const CProcessHelper::SEndPlan*> g_pPlan{nullptr};
std::atomic<bool> g_bEnding{false}; // the plan's first request has come
std::atomic<bool> g_bStatusAsked{false};
timer_t g_graceTimer = {};
bool g_bTimer = false;
static_assert(std::atomic<const CProcessHelper::SEndPlan*>::is_always_lock_free &&
                  std::atomic<bool>::is_always_lock_free,
              "they are used inside a signal handler");

void Grace_Set(int milliseconds)
{
    itimerspec time = {};
    time.it_value.tv_sec = milliseconds / 1000;
    time.it_value.tv_nsec = milliseconds % 1000 * 1'000'000L;
    if (g_bTimer)
    {
        timer_settime(g_graceTimer, 0, &time, nullptr);
    }
}

extern "C" void Grace_End(int /*signalNumber*/)
{
    const CProcessHelper::SEndPlan* const pPlan = g_pPlan;
    if (pPlan != nullptr && g_bEnding)
    {
        CFileWriter::HiddenFiles_Remove();
        [[maybe_unused]] const ssize_t written = write(2, pPlan->m_pText, std::strlen(pPlan->m_pText));
        _exit(pPlan->m_exitStatus);
    }
}

// A request to end with a core file is no request to wind down.
extern "C" void Quit_Handle(int signalNumber)
{
    CFileWriter::HiddenFiles_Remove();
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber); // blocked until the handler returns
}

extern "C" void End_Handle(int signalNumber)
{
    const int error = errno;
    const CProcessHelper::SEndPlan* const pPlan = g_pPlan;
    if (pPlan != nullptr && !g_bEnding.exchange(true))
    {
        pPlan->m_pNote();
        Grace_Set(pPlan->m_graceMs);
    }
    else
    {
        Quit_Handle(signalNumber);
    }
    errno = error;
}

extern "C" void Status_Handle(int /*signalNumber*/)
{
    g_bStatusAsked = true;
}

// Unless the process was started to ignore it.
void Signal_Handle(int signalNumber, void (*pHandler)(int))
{
    struct sigaction action = {};
    if (sigaction(signalNumber, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
    {
        return;
    }
    action = {};
    action.sa_handler = pHandler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int endSignal : endSignals)
    {
        sigaddset(&action.sa_mask, endSignal); // one at a time
    }
    sigaction(signalNumber, &action, nullptr);
}

void GraceTimer_Make()
{
    Signal_Handle(SIGALRM, &Grace_End);
    sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGALRM;
    g_bTimer = timer_create(CLOCK_MONOTONIC, &event, &g_graceTimer) == 0;
}

} // namespace

std::vector<std::string> CProcessHelper::Arguments_Get(int argumentCount, char** arguments)
{
    return {arguments, arguments + argumentCount};
}

bool CProcessHelper::IsErrorTerminal()
{
    return isatty(2) == 1;
}

bool CProcessHelper::IsOutputTerminal()
{
    return isatty(1) == 1;
}

int CProcessHelper::TerminalWidth()
{
    winsize size = {};
    return ioctl(2, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::int64_t CProcessHelper::PeakMemoryBytes()
{
    rusage usage = {};
    return getrusage(RUSAGE_SELF, &usage) == 0 ? std::int64_t{usage.ru_maxrss} * 1024 : 0;
}

void CProcessHelper::WriteSignals_Ignore()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int CProcessHelper::Descriptor_Of(std::FILE* pStream)
{
    return fileno(pStream);
}

void CProcessHelper::StandardOutput_Binary() {}

std::int64_t CProcessHelper::ProcessId()
{
    return getpid();
}

void CProcessHelper::StandardDescriptors_Open()
{
    // The other way round, so that reading and writing fail. A system always has a root, if not that device.
    for (const int descriptor : {0, 1, 2})
    {
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF &&
            open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY) < 0)
        {
            open("/", O_RDONLY);
        }
    }
}

void CProcessHelper::EndRequests_Handle(const SEndPlan* pPlan)
{
    static const bool bTimer = (GraceTimer_Make(), g_bTimer);
    if (bTimer)
    {
        Grace_Set(0); // of a former plan
    }
    g_bEnding = false;
    g_pPlan = pPlan;
    for (const int endSignal : endSignals)
    {
        Signal_Handle(endSignal, &End_Handle);
    }
    Signal_Handle(SIGQUIT, &Quit_Handle);
}

void CProcessHelper::StatusRequests_Mark()
{
    Signal_Handle(SIGUSR1, &Status_Handle);
}

bool CProcessHelper::StatusRequest_Take()
{
    return g_bStatusAsked.exchange(false);
}
