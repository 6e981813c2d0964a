// The handler that the C++ library calls when there is no memory.
#include "Host/MemoryWatch.h"

#include <atomic>
#include <new>

namespace
{

std::atomic<bool> g_bRanOut{false};

void Refusal_Note()
{
    g_bRanOut = true;
    throw std::bad_alloc();
}

} // namespace

void Memory_Watch()
{
    std::set_new_handler(&Refusal_Note);
}

bool Memory_HasRunOut()
{
    return g_bRanOut;
}
