// The Windows kernel's event.
#include "Platform/Thread/KernelEvent.h"

#include "Platform/Thread/CreateThread.h"

#include <new>

CKernelEvent::CKernelEvent() : m_handle(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (m_handle == nullptr)
    {
        throw std::bad_alloc();
    }
}

CKernelEvent::~CKernelEvent()
{
    CloseHandle(m_handle);
}

void CKernelEvent::State_Set(bool bSet)
{
    bSet ? SetEvent(m_handle) : ResetEvent(m_handle);
}
