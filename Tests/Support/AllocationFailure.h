// Memory that runs out where a test says so.
//
// A test executable that compiles AllocationFailure.cpp has its own operators new and delete, for itself and for the
// libraries that it loads. Nothing fails unless asked to, and then only on the thread that asked.
#pragma once

// While it lives, one call of operator new by the thread that made it throws std::bad_alloc.
class CAllocationFailure
{
public:
    // `nth`: which of the thread's calls from now on fails, 1 = the next one. All others succeed.
    explicit CAllocationFailure(int nth);
    ~CAllocationFailure();
    CAllocationFailure(const CAllocationFailure&) = delete;
    CAllocationFailure& operator=(const CAllocationFailure&) = delete;

    // True once it has happened.
    bool HasFailed() const;
};
