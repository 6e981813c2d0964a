// The manual-reset event's slow half: a wait that does not find the event set.
//
// Set and Wait meet through two sequentially consistent atomics, the word and the number of waiters: a waiter announces
// itself before it looks at the word for the last time, Set changes the word before it looks for waiters, so one of the
// two always sees the other. A stop request, which is no signal, changes the word by its count: a waiter that has
// looked at the request too early then does not fall asleep.
#include "Platform/Thread/CustomManualResetEvent.h"

#include "Platform/Thread/AddressWait.h"
#include "Platform/Thread/SpinWait.h"
#include "Platform/Thread/WorkerWait.h"

namespace
{

// About as long as it takes to put a thread to sleep and to wake it on a virtual machine, whose idle cores are given
// back to their host. Twice that gains little, and makes threads that have nothing to do dearer where cores are few.
constexpr std::chrono::nanoseconds spinLimit{20'000};

// Pauses between two looks, which leave the cache line to those who are about to change it. A patient waiter lets them
// do more.
constexpr int restCount = 16;
constexpr int patientRestCount = 64;

} // namespace

CCustomManualResetEvent::CCustomManualResetEvent(bool bInitiallySet) : m_word(bInitiallySet ? setBit : 0) {}

CCustomManualResetEvent::~CCustomManualResetEvent()
{
    m_word.fetch_or(setBit);
    m_word.fetch_add(wakeOne); // patient waiters too
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
    return Wait_SpinThenSleep(timeoutMs, sleeperOne, [this](std::uint32_t& word) { return Wait_IsOver(word); });
}

bool CCustomManualResetEvent::Wait_Slow_Patiently(unsigned long timeoutMs)
{
    const std::uint32_t before = m_word.load();
    if ((before & setBit) != 0)
    {
        return true;
    }
    return Wait_SpinThenSleep(timeoutMs, patientOne,
                              [this, before](std::uint32_t& word)
                              {
                                  const bool bOver = Wait_IsOver(word);
                                  const bool bHurried = (word & ~setBit) != before;
                                  return bOver && (bHurried || CWorkerWait::IsStopRequested());
                              });
}

template<class IsOver>
bool CCustomManualResetEvent::Wait_SpinThenSleep(unsigned long timeoutMs, std::uint32_t sleeper, IsOver isOver)
{
    const auto deadline =
        timeoutMs >= waitWithoutLimit ? CAddressWait::withoutLimit : CAddressWait::Deadline(timeoutMs);
    m_waiters.fetch_add(waiterOne);
    std::uint32_t word = 0;
    const auto bOver = [&] { return isOver(word); };
    if (!m_spin.Until(bOver, spinLimit, sleeper == patientOne ? patientRestCount : restCount))
    {
        const CWorkerWait worker(*this);
        m_waiters.fetch_add(sleeper);
        bool bTimeLeft = true;
        while (!isOver(word) && bTimeLeft)
        {
            CAddressWait::Sleep(m_word, word, deadline);
            bTimeLeft = deadline == CAddressWait::withoutLimit || std::chrono::steady_clock::now() < deadline;
        }
        m_waiters.fetch_sub(sleeper);
    }
    // Last, when no stop request can reach this event through the worker any more: the destructor waits for this.
    const std::atomic<std::uint32_t>* waiters = &m_waiters;
    if (m_waiters.fetch_sub(waiterOne) == destroyedBit + waiterOne)
    {
        CAddressWait::WakeAll(waiters);
    }
    return (word & setBit) != 0;
}

// `word` is what was seen. The request is looked at after the word, so that one that comes later finds the word changed
// by itself; and the word once more after a request, which must not hide a signal that came first.
bool CCustomManualResetEvent::Wait_IsOver(std::uint32_t& word) const
{
    word = m_word.load();
    if ((word & setBit) == 0 && CWorkerWait::IsStopRequested())
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

// Wakes all waiters without a signal: they look for what else has happened.
void CCustomManualResetEvent::WakeAll()
{
    m_word.fetch_add(wakeOne);
    Wake();
}
