// The lock's slow half: taken again by its owner, or taken by somebody else.
#include "Platform/Thread/CustomCriticalSection.h"

#include "Platform/Thread/AddressWait.h"
#include "Platform/Thread/SpinWait.h"

namespace
{

constexpr std::chrono::nanoseconds spinLimit{2000};

// Pauses between two looks. Who looks at once takes the lock's cache line away from its holder, who most likely wants
// it again for the next element: let it do some.
constexpr int restCount = 16;

} // namespace

void CCustomCriticalSection::Enter_Slow()
{
    const auto self = std::this_thread::get_id();
    // Only the owner itself can find itself here.
    if (m_owner.load(std::memory_order_relaxed) == self)
    {
        ++m_reentryCount;
        return;
    }
    const auto take = [this]
    {
        std::uint32_t free = Word_Free;
        return m_word.load(std::memory_order_relaxed) == Word_Free &&
               m_word.compare_exchange_weak(free, Word_Held, std::memory_order_acquire, std::memory_order_relaxed);
    };
    if (!take() && !(CSpinWait::IsWorthwhile() && CSpinWait::Spin(take, spinLimit, restCount)))
    {
        // Whoever has slept takes it as wanted: others may sleep still.
        while (m_word.exchange(Word_HeldAndWanted, std::memory_order_acquire) != Word_Free)
        {
            CAddressWait::Sleep(m_word, Word_HeldAndWanted, CAddressWait::withoutLimit);
        }
    }
    m_owner.store(self, std::memory_order_relaxed);
}

void CCustomCriticalSection::Wake()
{
    CAddressWait::WakeOne(&m_word);
}
