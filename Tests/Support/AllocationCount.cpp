// The counting operators. They are in a file of their own, where no compiler sees both sides of a pair at once.
#include "Tests/Support/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<std::int64_t> g_count{0};

void* Counted(void* block)
{
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    ++g_count;
    return block;
}

} // namespace

std::int64_t Allocation_Count()
{
    return g_count;
}

void* operator new(std::size_t size)
{
    return Counted(std::malloc(size == 0 ? 1 : size));
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    const auto unit = static_cast<std::size_t>(alignment);
    return Counted(std::aligned_alloc(unit, (size + unit - 1) / unit * unit));
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}
