// The interrupt flag, and the plan behind it.
#include "Host/Interrupt.h"

#include "Platform/Helper/ProcessHelper.h"

#include <atomic>

namespace
{

std::atomic<bool> g_bInterrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "the flag is set inside a signal handler");

void Interrupt_Note()
{
    g_bInterrupted = true;
}

// Winding down takes two looks of the main thread and a band; who waits for a second has had enough.
CProcessHelper::SEndPlan g_plan = {&Interrupt_Note, 800, 0, ""};

} // namespace

CInterrupt::CInterrupt(int exitStatus, const char* pText)
{
    g_bInterrupted = false;
    g_plan.m_exitStatus = exitStatus;
    g_plan.m_pText = pText;
    CProcessHelper::EndRequests_Handle(&g_plan);
}

CInterrupt::~CInterrupt()
{
    CProcessHelper::EndRequests_Handle(nullptr);
}

bool CInterrupt::IsRequested()
{
    return g_bInterrupted;
}
