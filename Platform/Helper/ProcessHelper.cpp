// The process and its terminal, through the system's own calls.
#include "Platform/Helper/ProcessHelper.h"

#include <csignal>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

bool CProcessHelper::IsErrorTerminal()
{
    return isatty(2) == 1;
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
