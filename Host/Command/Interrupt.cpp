// The signal handlers behind the interrupt flag.
#include "Host/Command/Interrupt.h"

#include "Platform/Helper/ProcessHelper.h"

#include <array>
#include <atomic>
#include <csignal>

namespace
{

std::atomic<bool> g_bInterrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "the flag is set inside a signal handler");

extern "C" void Interrupt_Handle(int signalNumber)
{
    g_bInterrupted = true;
    std::signal(signalNumber, SIG_DFL);
}

void TerminalClose_Note()
{
    g_bInterrupted = true;
}

// What a user and a service manager send.
constexpr std::array signalNumbers = {SIGINT, SIGTERM};

} // namespace

CInterrupt::CInterrupt()
{
    g_bInterrupted = false;
    for (const int signalNumber : signalNumbers)
    {
        std::signal(signalNumber, &Interrupt_Handle);
    }
    CProcessHelper::TerminalClose_Handle(&TerminalClose_Note);
}

CInterrupt::~CInterrupt()
{
    for (const int signalNumber : signalNumbers)
    {
        std::signal(signalNumber, SIG_DFL);
    }
    CProcessHelper::TerminalClose_Handle(nullptr);
}

bool CInterrupt::IsRequested()
{
    return g_bInterrupted;
}
