// A recursive lock and the guard that holds it for a scope. Their operations are the simulation's; to be destroyed
// while somebody holds it is a finding.
#pragma once

class CCustomCriticalSection
{
public:
    CCustomCriticalSection() = default;
    CCustomCriticalSection(const CCustomCriticalSection&) = delete;
    CCustomCriticalSection& operator=(const CCustomCriticalSection&) = delete;
    ~CCustomCriticalSection();

private:
    friend class CEnterLeaveCriticalSection;

    const void* m_holder = nullptr; // the thread
    int m_depth = 0;
};

class CEnterLeaveCriticalSection
{
public:
    explicit CEnterLeaveCriticalSection(CCustomCriticalSection& section);
    CEnterLeaveCriticalSection(const CEnterLeaveCriticalSection&) = delete;
    CEnterLeaveCriticalSection& operator=(const CEnterLeaveCriticalSection&) = delete;
    ~CEnterLeaveCriticalSection();

private:
    CCustomCriticalSection& m_section;
};
