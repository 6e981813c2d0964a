// The counting operators, for the whole program. What is freed is overwritten, so that whoever still uses it is seen.
#include "LiveAllocations.h"

#ifdef SIMULATION_COUNTS_ALLOCATIONS

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>

namespace
{

std::atomic<std::int64_t> g_live{0};

void* Allocate(std::size_t size) noexcept
{
    void* const block = std::malloc(size == 0 ? 1 : size);
    g_live += block != nullptr ? 1 : 0;
    return block;
}

void Free(void* block) noexcept
{
    if (block != nullptr)
    {
        --g_live;
        std::memset(block, 0xDD, malloc_usable_size(block));
        std::free(block);
    }
}

} // namespace

std::int64_t LiveAllocations_Count()
{
    return g_live;
}

void* operator new(std::size_t size)
{
    void* const block = Allocate(size);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept
{
    Free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    Free(block);
}

#else

std::int64_t LiveAllocations_Count()
{
    return 0;
}

#endif
