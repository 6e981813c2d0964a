// A recursive lock and the guard that holds it for a scope.
#pragma once

#include <mutex>

class CCustomCriticalSection
{
public:
    CCustomCriticalSection() = default;
    CCustomCriticalSection(const CCustomCriticalSection&) = delete;
    CCustomCriticalSection& operator=(const CCustomCriticalSection&) = delete;

private:
    friend class CEnterLeaveCriticalSection;

    std::recursive_mutex m_mutex;
};

class CEnterLeaveCriticalSection
{
public:
    explicit CEnterLeaveCriticalSection(CCustomCriticalSection& section) : m_guard(section.m_mutex) {}

private:
    std::lock_guard<std::recursive_mutex> m_guard;
};
