// A manual-reset event of the Windows kernel, with its handle. Windows only, internal to the thread library: what must
// be waited for together with something else is one of these. Any thread; every operation is a system call.
#pragma once

class CKernelEvent
{
public:
    // Not signalled. Throws std::bad_alloc if the system has no event left.
    CKernelEvent();
    ~CKernelEvent();
    CKernelEvent(const CKernelEvent&) = delete;
    CKernelEvent& operator=(const CKernelEvent&) = delete;

    void State_Set(bool bSet);

    // For the system's wait functions. Stays this object's.
    void* Handle() const { return m_handle; }

private:
    void* m_handle;
};
