// The signal handlers behind the interrupt flag.
#include "Host/Command/Interrupt.h"

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

} // namespace

CInterrupt::CInterrupt()
{
    g_bInterrupted = false;
    std::signal(SIGINT, &Interrupt_Handle);
    std::signal(SIGTERM, &Interrupt_Handle);
}

CInterrupt::~CInterrupt()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

bool CInterrupt::IsRequested()
{
    return g_bInterrupted;
}
