// Cuts a line of 400 pixels into four blocks that begin on a byte.
#include "DataMap/BlockLine.h"

#include "DataMap/MapKernelInUse.h"

#include <cstdint>
#include <cstring>

namespace
{
using Word = std::uint64_t;
constexpr int wordSize = sizeof(Word);

void Block_Copy(unsigned char* block, const unsigned char* src)
{
    std::memset(block, 0, SBlockLine::room);
    std::memcpy(block, src, SBlockLine::blockByteCount);
}

// Eight bytes that begin in the middle of src[0].
void Word_Shift(unsigned char* dst, const unsigned char* src)
{
    Word first = 0;
    Word second = 0;
    std::memcpy(&first, src, wordSize);
    std::memcpy(&second, src + 1, wordSize);
    const Word word = (first & 0x0F0F0F0F0F0F0F0FU) << 4 | (second >> 4 & 0x0F0F0F0F0F0F0F0FU);
    std::memcpy(dst, &word, wordSize);
}

// The block that begins in the middle of src[0] and ends with src[12].
void Block_Shift(unsigned char* block, const unsigned char* src)
{
    constexpr int last = SBlockLine::blockByteCount - 1;
    std::memset(block + wordSize, 0, SBlockLine::room - wordSize);
    Word_Shift(block, src);
    Word_Shift(block + last - wordSize, src + last - wordSize);
    block[last] = static_cast<unsigned char>(src[last] << 4);
}
} // namespace

void SBlockLine::Cut(const unsigned char* src)
{
    Block_Copy(m_blocks[0], src);
    Block_Shift(m_blocks[1], src + 12);
    Block_Copy(m_blocks[2], src + 25);
    Block_Shift(m_blocks[3], src + 37);
}

void SBlockLine::Interleave(bool bAscending, unsigned char* result) const
{
    const unsigned char* columns[blockCount];
    for (int block = 0; block < blockCount; ++block)
    {
        columns[bAscending ? block : blockCount - 1 - block] = m_blocks[block];
    }
    MapKernel_Get().m_pColumns_Store(columns, blockCount, room, result);
}
