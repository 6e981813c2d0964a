// Memory between two pages that nobody may touch: a read or a write beyond either end ends the program.
#pragma once

#include <cstddef>

class CGuardedMemory
{
public:
    // Room for `size` bytes at the least, all zero.
    explicit CGuardedMemory(std::size_t size);
    ~CGuardedMemory();
    CGuardedMemory(const CGuardedMemory&) = delete;
    CGuardedMemory& operator=(const CGuardedMemory&) = delete;

    // The first byte behind the forbidden page in front, and the first of the forbidden page behind.
    unsigned char* Begin() const { return m_begin; }
    unsigned char* End() const { return m_begin + m_size; }
    // Where `count` bytes lie that touch the end, or the beginning.
    unsigned char* Place(std::size_t count, bool bAtEnd) const { return bAtEnd ? End() - count : m_begin; }

private:
    unsigned char* m_begin = nullptr;
    std::size_t m_size;
};
