// Pages from the system, one at each end without any access.
#include "Tests/Support/GuardedMemory.h"

#include <new>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace
{
constexpr std::size_t pageSize = 65536; // a multiple of what any system has

#if defined(_WIN32)
unsigned char* Pages_Reserve(std::size_t size)
{
    return static_cast<unsigned char*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
}
bool Pages_Open(unsigned char* begin, std::size_t size)
{
    return VirtualAlloc(begin, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}
void Pages_Free(unsigned char* begin, std::size_t /*size*/)
{
    VirtualFree(begin, 0, MEM_RELEASE);
}
#else
unsigned char* Pages_Reserve(std::size_t size)
{
    void* pages = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pages != MAP_FAILED ? static_cast<unsigned char*>(pages) : nullptr;
}
bool Pages_Open(unsigned char* begin, std::size_t size)
{
    return mprotect(begin, size, PROT_READ | PROT_WRITE) == 0;
}
void Pages_Free(unsigned char* begin, std::size_t size)
{
    munmap(begin, size);
}
#endif
} // namespace

CGuardedMemory::CGuardedMemory(std::size_t size) : m_size((size + pageSize - 1) / pageSize * pageSize)
{
    unsigned char* pages = Pages_Reserve(m_size + 2 * pageSize);
    if (pages == nullptr || !Pages_Open(pages + pageSize, m_size))
    {
        throw std::bad_alloc();
    }
    m_begin = pages + pageSize;
}

CGuardedMemory::~CGuardedMemory()
{
    Pages_Free(m_begin - pageSize, m_size + 2 * pageSize);
}
