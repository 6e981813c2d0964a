// The process and its terminal, through the system's own calls.
#include "Platform/Helper/ProcessHelper.h"

#include <atomic>
#include <csignal>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

std::atomic<void (*)()> g_pCloseHandler{nullptr};
static_assert(std::atomic<void (*)()>::is_always_lock_free, "it is read inside a signal handler");

extern "C" void Hangup_Handle(int signalNumber)
{
    std::signal(signalNumber, SIG_DFL);
    if (void (*const pHandler)() = g_pCloseHandler)
    {
        pHandler();
    }
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

void CProcessHelper::StandardOutput_Binary() {}

std::int64_t CProcessHelper::ProcessId()
{
    return getpid();
}

void CProcessHelper::TerminalClose_Handle(void (*pHandler)())
{
    g_pCloseHandler = pHandler;
    std::signal(SIGHUP, pHandler == nullptr ? SIG_DFL : &Hangup_Handle);
}
