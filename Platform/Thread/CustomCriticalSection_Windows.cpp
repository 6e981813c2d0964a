// The recursive lock on Windows: the system's critical section.
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomCriticalSection.h"

#include <new>

namespace
{

// The lock is held for a few instructions at a time: worth a short spin before a thread sleeps.
constexpr DWORD spinCount = 4000;

CRITICAL_SECTION* Section(void* storage)
{
    return std::launder(static_cast<CRITICAL_SECTION*>(storage));
}

} // namespace

CCustomCriticalSection::CCustomCriticalSection()
{
    static_assert(sizeof(m_section) == sizeof(CRITICAL_SECTION) && alignof(CRITICAL_SECTION) <= alignof(void*));
    InitializeCriticalSectionAndSpinCount(new (m_section) CRITICAL_SECTION, spinCount);
}

CCustomCriticalSection::~CCustomCriticalSection()
{
    DeleteCriticalSection(Section(m_section));
}

void CCustomCriticalSection::Enter()
{
    EnterCriticalSection(Section(m_section));
}

void CCustomCriticalSection::Leave()
{
    LeaveCriticalSection(Section(m_section));
}
