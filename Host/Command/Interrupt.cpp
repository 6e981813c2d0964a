// The signal handlers behind the interrupt flag.
#include "Host/Command/Interrupt.h"

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

// What a user, a service manager and a closed terminal send.
constexpr std::array signalNumbers = {
    SIGINT,
    SIGTERM,
#if defined(SIGHUP)
    SIGHUP,
#endif
};

} // namespace

CInterrupt::CInterrupt()
{
    g_bInterrupted = false;
    for (const int signalNumber : signalNumbers)
    {
        std::signal(signalNumber, &Interrupt_Handle);
    }
}

CInterrupt::~CInterrupt()
{
    for (const int signalNumber : signalNumbers)
    {
        std::signal(signalNumber, SIG_DFL);
    }
}

bool CInterrupt::IsRequested()
{
    return g_bInterrupted;
}
