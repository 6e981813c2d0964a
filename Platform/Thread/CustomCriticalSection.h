// A recursive lock and the guard that holds it for a scope.
//
// A thread that holds the lock may take it again; it is free once every Enter has met its Leave. No time-outs.
#pragma once

#include <mutex>

class CCustomCriticalSection
{
public:
    CCustomCriticalSection() = default;
    CCustomCriticalSection(const CCustomCriticalSection&) = delete;
    CCustomCriticalSection& operator=(const CCustomCriticalSection&) = delete;

    void Enter() { m_mutex.lock(); }
    void Leave() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

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
