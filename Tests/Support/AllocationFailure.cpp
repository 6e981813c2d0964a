// The operators that can fail. They are in a file of their own, where no compiler sees both sides of a pair at once.
#include "Tests/Support/AllocationFailure.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local int t_callsLeft = 0; // until the one that fails; 0: none does, or it has been

void* Taken(void* block)
{
    if (block == nullptr || (t_callsLeft > 0 && --t_callsLeft == 0))
    {
        std::free(block);
        throw std::bad_alloc();
    }
    return block;
}

} // namespace

CAllocationFailure::CAllocationFailure(int nth)
{
    t_callsLeft = nth;
}

CAllocationFailure::~CAllocationFailure()
{
    t_callsLeft = 0;
}

bool CAllocationFailure::HasFailed() const
{
    return t_callsLeft == 0;
}

void* operator new(std::size_t size)
{
    return Taken(std::malloc(size == 0 ? 1 : size));
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    const auto unit = static_cast<std::size_t>(alignment);
    return Taken(std::aligned_alloc(unit, (size + unit - 1) / unit * unit));
}

// The others are those above in the standard libraries, but not in a sanitizer's.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    try
    {
        return operator new(size);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept
{
    return operator new(size, tag);
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    operator delete(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept
{
    operator delete(block);
}

void operator delete(void* block, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}
