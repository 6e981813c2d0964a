// A recursive lock and the guard that holds it for a scope.
//
// A thread that holds the lock may take it again; it is free once every Enter has met its Leave. No time-outs. Taking
// and leaving a lock that nobody else wants makes no system call. Who finds it taken looks again for a moment, since
// locks here are held for a moment only, and then sleeps.
#pragma once

#include "Platform/PlatformExport.h"

#if !defined(_WIN32)
#include <atomic>
#include <cstdint>
#include <thread>
#endif

class PLATFORM_API CCustomCriticalSection
{
public:
#if defined(_WIN32)
    CCustomCriticalSection();
    ~CCustomCriticalSection();
#else
    CCustomCriticalSection() = default;
#endif
    CCustomCriticalSection(const CCustomCriticalSection&) = delete;
    CCustomCriticalSection& operator=(const CCustomCriticalSection&) = delete;

    void Enter();
    void Leave();

private:
#if defined(_WIN32)
    // The system's critical section; its header stays out of this one.
    alignas(void*) unsigned char m_section[sizeof(void*) == 8 ? 40 : 24];
#else
    enum EWord : std::uint32_t
    {
        Word_Free = 0,
        Word_Held = 1,
        Word_HeldAndWanted = 2, // somebody may sleep until it is free
    };

    void Enter_Slow();
    void Wake();

    std::atomic<std::uint32_t> m_word{Word_Free};
    std::uint32_t m_reentryCount = 0; // the owner's
    std::atomic<std::thread::id> m_owner{};
#endif
};

#if !defined(_WIN32)

inline void CCustomCriticalSection::Enter()
{
    std::uint32_t free = Word_Free;
    if (!m_word.compare_exchange_strong(free, Word_Held, std::memory_order_acquire, std::memory_order_relaxed))
    {
        Enter_Slow();
        return;
    }
    m_owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

inline void CCustomCriticalSection::Leave()
{
    if (m_reentryCount > 0)
    {
        --m_reentryCount;
        return;
    }
    m_owner.store(std::thread::id(), std::memory_order_relaxed);
    if (m_word.exchange(Word_Free, std::memory_order_release) == Word_HeldAndWanted)
    {
        Wake();
    }
}

#endif

// Holds a critical section from construction to destruction.
class CEnterLeaveCriticalSection
{
public:
    explicit CEnterLeaveCriticalSection(CCustomCriticalSection& section) : m_section(section) { m_section.Enter(); }
    ~CEnterLeaveCriticalSection() { m_section.Leave(); }
    CEnterLeaveCriticalSection(const CEnterLeaveCriticalSection&) = delete;
    CEnterLeaveCriticalSection& operator=(const CEnterLeaveCriticalSection&) = delete;

private:
    CCustomCriticalSection& m_section;
};
