// Cuts a line of 400 pixels into four blocks that begin on a byte.
#include "DataMap/BlockLine.h"

#include "DataMap/CpuFeature.h"

#include <utility>

// Vectors of 16 bytes are part of every processor of this kind.
#if defined(DATAMAPPING_X86_KERNELS)

#include <emmintrin.h>

namespace
{
__m128i Load(const unsigned char* src)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
}

void Store(unsigned char* dst, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), value);
}

// Bytes that begin in the middle of those of `bytes`; `next`: the same bytes from the second on.
__m128i Nibbles_Shift(__m128i bytes, __m128i next)
{
    const __m128i low = _mm_set1_epi8(0x0F);
    return _mm_or_si128(_mm_slli_epi16(_mm_and_si128(bytes, low), 4), _mm_and_si128(_mm_srli_epi16(next, 4), low));
}

struct SBlocks
{
    __m128i m_blocks[SBlockLine::blockCount];
};

// By number. Nothing but the line's 50 bytes is read.
SBlocks Blocks_Load(const unsigned char* src)
{
    const __m128i twelve = _mm_set_epi32(0, -1, -1, -1);
    const __m128i end = _mm_srli_si128(Load(src + 34), 3); // from byte 37 on, zeros behind the line
    const __m128i second = Nibbles_Shift(Load(src + 12), _mm_and_si128(Load(src + 13), twelve));
    return {{Load(src), second, Load(src + 25), Nibbles_Shift(end, _mm_srli_si128(end, 1))}};
}
} // namespace

void SBlockLine::Cut(const unsigned char* src, bool bAscending)
{
    const SBlocks blocks = Blocks_Load(src);
    for (int block = 0; block < blockCount; ++block)
    {
        Store(m_blocks[bAscending ? block : blockCount - 1 - block], blocks.m_blocks[block]);
    }
}

void SBlockColumns::Cut(const unsigned char* src, bool bAscending)
{
    SBlocks blocks = Blocks_Load(src);
    if (!bAscending)
    {
        std::swap(blocks.m_blocks[0], blocks.m_blocks[3]);
        std::swap(blocks.m_blocks[1], blocks.m_blocks[2]);
    }
    const __m128i low01 = _mm_unpacklo_epi8(blocks.m_blocks[0], blocks.m_blocks[1]);
    const __m128i low23 = _mm_unpacklo_epi8(blocks.m_blocks[2], blocks.m_blocks[3]);
    const __m128i high01 = _mm_unpackhi_epi8(blocks.m_blocks[0], blocks.m_blocks[1]);
    const __m128i high23 = _mm_unpackhi_epi8(blocks.m_blocks[2], blocks.m_blocks[3]);
    Store(m_bytes, _mm_unpacklo_epi16(low01, low23));
    Store(m_bytes + 16, _mm_unpackhi_epi16(low01, low23));
    Store(m_bytes + 32, _mm_unpacklo_epi16(high01, high23));
    Store(m_bytes + 48, _mm_unpackhi_epi16(high01, high23));
}

#else

#include <cstring>

namespace
{
void Block_Copy(unsigned char* block, const unsigned char* src)
{
    std::memcpy(block, src, SBlockLine::blockByteCount);
}

// The block that begins in the middle of src[0] and ends with src[12].
void Block_Shift(unsigned char* block, const unsigned char* src)
{
    constexpr int last = SBlockLine::blockByteCount - 1;
    for (int i = 0; i < last; ++i)
    {
        block[i] = static_cast<unsigned char>(src[i] << 4 | src[i + 1] >> 4);
    }
    block[last] = static_cast<unsigned char>(src[last] << 4);
}
} // namespace

void SBlockLine::Cut(const unsigned char* src, bool bAscending)
{
    const int flip = bAscending ? 0 : blockCount - 1; // 3 - k is k ^ 3
    Block_Copy(m_blocks[0 ^ flip], src);
    Block_Shift(m_blocks[1 ^ flip], src + 12);
    Block_Copy(m_blocks[2 ^ flip], src + 25);
    Block_Shift(m_blocks[3 ^ flip], src + 37);
}

void SBlockColumns::Cut(const unsigned char* src, bool bAscending)
{
    SBlockLine line;
    line.Cut(src, bAscending);
    for (int i = 0; i < SBlockLine::blockCount * SBlockLine::blockByteCount; ++i)
    {
        m_bytes[i] = line.m_blocks[i % SBlockLine::blockCount][i / SBlockLine::blockCount];
    }
}

#endif
