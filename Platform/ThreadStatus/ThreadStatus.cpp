// Busy counters, one slot per identity.
#include "Platform/ThreadStatus/ThreadStatus.h"

#include <array>
#include <atomic>

namespace
{

struct SBusySlot
{
    std::atomic<int> count{0};
    std::atomic<std::int64_t> nanoseconds{0};
};

SBusySlot& Slot(ECustomThreadId id)
{
    constexpr std::size_t slotCount = 64;
    static std::array<SBusySlot, slotCount> slots;
    return slots[static_cast<std::size_t>(id) % slotCount];
}

} // namespace

int CThreadStatusMonitor::BusyCount_Get(ECustomThreadId id)
{
    return Slot(id).count;
}

std::chrono::nanoseconds CThreadStatusMonitor::BusyTime_Get(ECustomThreadId id)
{
    return std::chrono::nanoseconds(Slot(id).nanoseconds);
}

CAutoReleaseThreadBusy::CAutoReleaseThreadBusy(ECustomThreadId id) : m_id(id), m_begin(std::chrono::steady_clock::now())
{
    ++Slot(m_id).count;
}

CAutoReleaseThreadBusy::~CAutoReleaseThreadBusy()
{
    auto& slot = Slot(m_id);
    slot.nanoseconds += (std::chrono::steady_clock::now() - m_begin) / std::chrono::nanoseconds(1);
    --slot.count;
}
