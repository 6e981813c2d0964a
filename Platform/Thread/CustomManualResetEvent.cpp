// The manual-reset event's slow half: a wait that does not find the event set.
//
// Set and Wait meet through two sequentially consistent atomics, the word and the number of waiters: a waiter announces
// itself before it looks at the word for the last time, Set changes the word before it looks for waiters, so one of the
// two always sees the other. A stop request, which is no signal, changes the count in the word: a waiter that has
// looked at the request too early then does not fall asleep.
#include "Platform/Thread/CustomManualResetEvent.h"

#include "Platform/Thread/AddressWait.h"
#include "Platform/Thread/SpinWait.h"
#include "Platform/Thread/WorkerWait.h"

namespace
{

// About as long as it takes to put a thread to sleep and to wake it on a virtual machine, whose idle cores are given
// back to their host. Twice that time gains little and costs more where cores are few.
constexpr std::chrono::nanoseconds spinLimit{20'000};

// Pauses between two looks, which leave the cache line to those who are about to change it.
constexpr int restCount = 16;

} // namespace

CCustomManualResetEvent::CCustomManualResetEvent(bool bInitiallySet) : m_word(bInitiallySet ? setBit : 0) {}

CCustomManualResetEvent::~CCustomManualResetEvent()
{
    m_word.fetch_or(setBit);
    std::uint32_t waiters = m_waiters.fetch_or(destroyedBit) | destroyedBit;
    while (waiters != destroyedBit)
    {
        Wake();
        CAddressWait::Sleep(m_waiters, waiters, CAddressWait::withoutLimit);
        waiters = m_waiters.load();
    }
}

bool CCustomManualResetEvent::Wait_Slow(unsigned long timeoutMs)
{
    const auto deadline =
        timeoutMs >= waitWithoutLimit ? CAddressWait::withoutLimit : CAddressWait::Deadline(timeoutMs);
    m_waiters.fetch_add(waiterOne);
    std::uint32_t word = 0;
    const auto isOver = [&] { return Wait_IsOver(word); };
    if (!m_spin.Until(isOver, spinLimit, restCount))
    {
        const CWorkerWait worker(*this);
        m_waiters.fetch_add(sleeperOne);
        bool bTimeLeft = true;
        while (!isOver() && bTimeLeft)
        {
            CAddressWait::Sleep(m_word, word, deadline);
            bTimeLeft = deadline == CAddressWait::withoutLimit || std::chrono::steady_clock::now() < deadline;
        }
        m_waiters.fetch_sub(sleeperOne);
    }
    // Last, when no stop request can reach this event through the worker any more: the destructor waits for this.
    const std::atomic<std::uint32_t>* waiters = &m_waiters;
    if (m_waiters.fetch_sub(waiterOne) == destroyedBit + waiterOne)
    {
        CAddressWait::WakeAll(waiters);
    }
    return (word & setBit) != 0;
}

// True if the event is set or the worker's waits are cut short; `word` becomes the word that was read. The order
// matters: a stop request that comes after the look at IsCut changes the word, so that the waiter does not sleep on it;
// and after a request the word is read again, since a request must not hide a signal that came first.
bool CCustomManualResetEvent::Wait_IsOver(std::uint32_t& word) const
{
    word = m_word.load();
    if ((word & setBit) == 0 && CWorkerWait::IsCut())
    {
        word = m_word.load();
        return true;
    }
    return (word & setBit) != 0;
}

void CCustomManualResetEvent::Wake()
{
    CAddressWait::WakeAll(&m_word);
}

// Wakes all waiters without a signal, so that they see a stop request.
void CCustomManualResetEvent::WakeAll()
{
    m_word.fetch_add(wakeOne);
    Wake();
}
