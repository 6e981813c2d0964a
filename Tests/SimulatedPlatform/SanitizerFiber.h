// What the sanitizers want to be told, where one is built in: both of them which fiber runs, AddressSanitizer on which
// stack, ThreadSanitizer which operations of the platform order one thread's work before another's. The platform and
// the scheduler are not instrumented themselves; only what the contract promises counts as order, so that the library
// is seen to rely on no more. Nothing without SIMULATION_TSAN and SIMULATION_ASAN.
#pragma once

#include <cstddef>

#ifdef SIMULATION_TSAN

#include <sanitizer/tsan_interface.h>

extern "C"
{
    void AnnotateIgnoreReadsBegin(const char* file, int line);
    void AnnotateIgnoreReadsEnd(const char* file, int line);
}

class CSanitizerFiber
{
public:
    CSanitizerFiber() : m_inside(__tsan_create_fiber(0)) {}
    ~CSanitizerFiber() { __tsan_destroy_fiber(m_inside); }
    CSanitizerFiber(const CSanitizerFiber&) = delete;
    CSanitizerFiber& operator=(const CSanitizerFiber&) = delete;

    void Enter(const void* /*stackBottom*/, std::size_t /*stackBytes*/)
    {
        m_outside = __tsan_get_current_fiber();
        __tsan_switch_to_fiber(m_inside, __tsan_switch_to_fiber_no_sync);
    }
    void Entered() {}
    void Leave(bool /*bForGood*/) { __tsan_switch_to_fiber(m_outside, __tsan_switch_to_fiber_no_sync); }
    void Left() {}

private:
    void* m_inside;
    void* m_outside = nullptr;
};

// What is done in between is no access of the running thread's. (To ignore reads ignores writes, too.)
inline void Sanitizer_Unseen_Begin()
{
    AnnotateIgnoreReadsBegin(__FILE__, __LINE__);
}
inline void Sanitizer_Unseen_End()
{
    AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
}

inline void Sanitizer_Acquire(const void* object)
{
    __tsan_acquire(const_cast<void*>(object));
}
inline void Sanitizer_Release(const void* object)
{
    __tsan_release(const_cast<void*>(object));
}

#else

#ifdef SIMULATION_ASAN

#include <sanitizer/common_interface_defs.h>

class CSanitizerFiber
{
public:
    // Outside, before and after the fiber has run.
    void Enter(const void* stackBottom, std::size_t stackBytes)
    {
        __sanitizer_start_switch_fiber(&m_outsideFrames, stackBottom, stackBytes);
    }
    void Left() { __sanitizer_finish_switch_fiber(m_outsideFrames, nullptr, nullptr); }

    // Inside, after it was entered and before it is left.
    void Entered() { __sanitizer_finish_switch_fiber(m_insideFrames, &m_outsideBottom, &m_outsideBytes); }
    void Leave(bool bForGood)
    {
        __sanitizer_start_switch_fiber(bForGood ? nullptr : &m_insideFrames, m_outsideBottom, m_outsideBytes);
    }

private:
    void* m_outsideFrames = nullptr;
    void* m_insideFrames = nullptr;
    const void* m_outsideBottom = nullptr;
    std::size_t m_outsideBytes = 0;
};

#else

struct CSanitizerFiber
{
    void Enter(const void* /*stackBottom*/, std::size_t /*stackBytes*/) {}
    void Entered() {}
    void Leave(bool /*bForGood*/) {}
    void Left() {}
};

#endif

inline void Sanitizer_Unseen_Begin() {}
inline void Sanitizer_Unseen_End() {}
inline void Sanitizer_Acquire(const void* /*object*/) {}
inline void Sanitizer_Release(const void* /*object*/) {}

#endif

// What the scheduler does on a thread's behalf.
class CSanitizerUnseen
{
public:
    CSanitizerUnseen() { Sanitizer_Unseen_Begin(); }
    ~CSanitizerUnseen() { Sanitizer_Unseen_End(); }
    CSanitizerUnseen(const CSanitizerUnseen&) = delete;
    CSanitizerUnseen& operator=(const CSanitizerUnseen&) = delete;
};
