// The swath turn; see the header.
//
// A block is as many rows as one 64-bit word has pixels of a row: 64 words of 64 pixels, or 32 of 32. It is transposed
// in place by swapping ever smaller quarters, which compilers turn into vector code. What lost: 8x8 blocks, one word
// each, which are stored byte by byte (0.7 to 0.9 GB/s where this reaches 2.1, optimised for speed on a server
// processor).
#include "Host/Input/SwathTurn.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace
{

constexpr int wordBits = 64;
constexpr int wordBytes = 8;

using CWord = std::uint64_t;

// Bytes as a word whose highest bits are the first pixels, and back. Where fewer than a word's bytes are there, the
// word ends in zeros, or only its first bytes are written.
CWord Word_Load(const unsigned char* bytes, std::size_t count)
{
    std::array<unsigned char, wordBytes> part = {};
    if (count < wordBytes)
    {
        std::memcpy(part.data(), bytes, count);
        bytes = part.data();
    }
    CWord word = 0;
    for (int i = 0; i < wordBytes; ++i)
    {
        word = word << 8 | bytes[i];
    }
    return word;
}

void Word_Store(CWord word, unsigned char* bytes, std::size_t count)
{
    std::array<unsigned char, wordBytes> whole = {};
    for (std::size_t i = 0; i < wordBytes; ++i)
    {
        whole[i] = static_cast<unsigned char>(word >> (wordBits - 8 - 8 * i));
    }
    if (count >= wordBytes)
    {
        std::memcpy(bytes, whole.data(), wordBytes); // a constant count: one store
        return;
    }
    std::memcpy(bytes, whole.data(), count);
}

// The odd-numbered bits (counted from the lowest), moved together into the low half.
CWord OddBits_Gather(CWord word)
{
    word = word >> 1 & 0x5555555555555555;
    word = (word | word >> 1) & 0x3333333333333333;
    word = (word | word >> 2) & 0x0F0F0F0F0F0F0F0F;
    word = (word | word >> 4) & 0x00FF00FF00FF00FF;
    word = (word | word >> 8) & 0x0000FFFF0000FFFF;
    return (word | word >> 16) & 0x00000000FFFFFFFF;
}

// The low `half` of every 2 x `half` bits.
template<int half>
constexpr CWord LowHalves()
{
    CWord mask = 0;
    for (int bit = 0; bit < wordBits; ++bit)
    {
        mask |= CWord{bit % (2 * half) < half} << bit;
    }
    return mask;
}

// Swaps, in every square of 2 x `size` elements, the upper right quarter with the lower left one; then the same within
// the quarters.
template<int elementBits, int size>
void Block_Transpose(CWord* block)
{
    constexpr int shift = size * elementBits;
    constexpr CWord low = LowHalves<shift>();
    for (int square = 0; square < wordBits / elementBits; square += 2 * size)
    {
        for (int i = square; i < square + size; ++i)
        {
            const CWord swap = (block[i] ^ block[i + size] >> shift) & low;
            block[i] ^= swap;
            block[i + size] ^= swap << shift;
        }
    }
    if constexpr (size > 1)
    {
        Block_Transpose<elementBits, size / 2>(block);
    }
}

// How the pixels of a row become elements of a block: as they are (1 or 2 bits), or one bit plane of 2-bit pixels.
template<int bits>
struct SWholePixels
{
    static constexpr int elementBits = bits;
    static constexpr int rowBits = bits;
    static CWord Load(const unsigned char* row, std::size_t count) { return Word_Load(row, count); }
};

template<bool bHigh>
struct SPlane
{
    static constexpr int elementBits = 1;
    static constexpr int rowBits = 2;
    static CWord Load(const unsigned char* row, std::size_t count)
    {
        const CWord first = Word_Load(row, count);
        const CWord second = count > wordBytes ? Word_Load(row + wordBytes, count - wordBytes) : 0;
        constexpr int shift = bHigh ? 0 : 1;
        return OddBits_Gather(first << shift) << 32 | OddBits_Gather(second << shift);
    }
};

// Where the line of a column stands.
struct SLineOrder
{
    int linesPerPosition;
    int plane;
};

template<class Elements>
void Pixels_Turn(const unsigned char* rows, unsigned char* lines, const SSwathShape& shape, SLineOrder order)
{
    constexpr int side = wordBits / Elements::elementBits;
    constexpr std::size_t loadBytes = side * Elements::rowBits / 8;
    const std::size_t rowBytes = (static_cast<std::size_t>(shape.columnCount) * Elements::rowBits + 7) / 8;

    // Blocks down the swath first: a column of blocks fills `side` neighbouring lines from end to end while they are in
    // the cache, and the band is written once, in order.
    for (int column = 0; column < shape.columnCount; column += side)
    {
        const std::size_t rowOffset = static_cast<std::size_t>(column / side) * loadBytes;
        const int columnsHere = std::min(side, shape.columnCount - column);
        for (std::size_t lineOffset = 0; lineOffset < shape.lineStride; lineOffset += wordBytes)
        {
            const std::size_t firstRow = lineOffset / wordBytes * side;
            std::array<CWord, side> block = {};
            const auto rowCount = static_cast<std::size_t>(shape.rowCount);
            const std::size_t rowsHere = firstRow < rowCount ? std::min<std::size_t>(side, rowCount - firstRow) : 0;
            for (std::size_t i = 0; i < rowsHere; ++i)
            {
                block[i] = Elements::Load(rows + (firstRow + i) * shape.rowStride + rowOffset, rowBytes - rowOffset);
            }
            if (rowsHere > 0)
            {
                Block_Transpose<Elements::elementBits, side / 2>(block.data());
            }
            for (int i = 0; i < columnsHere; ++i)
            {
                const int position = shape.bReverse ? shape.columnCount - 1 - (column + i) : column + i;
                const std::size_t line =
                    static_cast<std::size_t>(position) * static_cast<std::size_t>(order.linesPerPosition) +
                    static_cast<std::size_t>(order.plane);
                Word_Store(block[static_cast<std::size_t>(i)], lines + line * shape.lineStride + lineOffset,
                           shape.lineStride - lineOffset);
            }
        }
    }
}

} // namespace

int SwathLinesPerPosition_Get(int bitsPerPixel, bool bUnitPlanes)
{
    return bUnitPlanes && bitsPerPixel == 2 ? 2 : 1;
}

std::size_t SwathRowStride_Get(std::size_t rowBytes)
{
    constexpr std::size_t cacheLine = 64;
    const std::size_t cacheLines = (rowBytes + cacheLine - 1) / cacheLine;
    return (cacheLines | 1) * cacheLine;
}

void Swath_Turn(const unsigned char* rows, unsigned char* lines, const SSwathShape& shape)
{
    const int linesPerPosition = SwathLinesPerPosition_Get(shape.bitsPerPixel, shape.bUnitPlanes);
    if (linesPerPosition == 2)
    {
        Pixels_Turn<SPlane<true>>(rows, lines, shape, {2, 0});
        Pixels_Turn<SPlane<false>>(rows, lines, shape, {2, 1});
    }
    else if (shape.bitsPerPixel == 2)
    {
        Pixels_Turn<SWholePixels<2>>(rows, lines, shape, {1, 0});
    }
    else
    {
        Pixels_Turn<SWholePixels<1>>(rows, lines, shape, {1, 0});
    }
}
