// The scalar kernel: the definition of every inner loop, in standard C++ for any processor.
//
// Its one liberty is to transpose the bits of eight bytes inside one 64-bit word.
#include "DataMap/Kernel/MapKernel.h"

#include <cstdint>
#include <utility>

namespace
{
using Word = std::uint64_t;

// Byte `index` of each of the 8 rows, row 0 in the most significant byte.
Word Rows_Gather(const unsigned char* const* rows, int index)
{
    Word word = 0;
    for (int row = 0; row < 8; ++row)
    {
        word = word << 8 | (rows[row] != nullptr ? rows[row][index] : 0U);
    }
    return word;
}

// Exchanges bit (row, column) with bit (column, row); row 0 is the most significant byte, column 0 its highest bit.
constexpr Word Bits_Transpose(Word word)
{
    Word changed = (word ^ (word >> 7)) & 0x00AA00AA00AA00AAU;
    word ^= changed ^ (changed << 7);
    changed = (word ^ (word >> 14)) & 0x0000CCCC0000CCCCU;
    word ^= changed ^ (changed << 14);
    changed = (word ^ (word >> 28)) & 0x00000000F0F0F0F0U;
    return word ^ changed ^ (changed << 28);
}

void Rows_Transpose(const unsigned char* const* rows, int offset, int byteCount, bool bSwapPairs, unsigned char* dst)
{
    const int flip = bSwapPairs ? 1 : 0;
    for (int i = 0; i < byteCount; ++i)
    {
        const Word frames = Bits_Transpose(Rows_Gather(rows, offset + i));
        for (int pixel = 0; pixel < 8; ++pixel)
        {
            dst[8 * i + (pixel ^ flip)] = static_cast<unsigned char>(frames >> (56 - 8 * pixel));
        }
    }
}

template<bool bStore>
void Columns_Map(const unsigned char* const* columns, int columnCount, int byteCount, unsigned char* dst)
{
    for (int column = 0; column < columnCount; ++column)
    {
        const unsigned char* src = columns[column];
        unsigned char* out = dst + column;
        for (int i = 0; src != nullptr && i < byteCount; ++i)
        {
            *out = static_cast<unsigned char>(bStore ? src[i] : *out | src[i]);
            out += columnCount;
        }
    }
}

// The high bits of a byte's four pairs, packed into the low nibble.
constexpr unsigned HighBits(unsigned value)
{
    return (value >> 4 & 8U) | (value >> 3 & 4U) | (value >> 2 & 2U) | (value >> 1 & 1U);
}

void Planes_Split(const unsigned char* src, int byteCount, unsigned char* high, unsigned char* low)
{
    for (int i = 0; i < byteCount; i += 2)
    {
        const unsigned first = src[i];
        const unsigned second = i + 1 < byteCount ? src[i + 1] : 0U;
        high[i / 2] = static_cast<unsigned char>(HighBits(first) << 4 | HighBits(second));
        low[i / 2] = static_cast<unsigned char>(HighBits(first << 1) << 4 | HighBits(second << 1));
    }
}

void Quads_Split(const unsigned char* src, int byteCount, unsigned char* even, unsigned char* odd)
{
    for (int i = 0; i < byteCount; i += 4)
    {
        unsigned char high[2] = {};
        unsigned char low[2] = {};
        Planes_Split(src + i, byteCount - i < 4 ? byteCount - i : 4, high, low);
        Planes_Split(high, 2, even + i / 4, odd + i / 4);
        Planes_Split(low, 2, even + quadRoom + i / 4, odd + quadRoom + i / 4);
    }
}

constexpr int blockByteCount = 13;

// The block that begins on src[0], or in its middle.
void Block_Cut(const unsigned char* src, bool bMiddle, unsigned char* block)
{
    for (int i = 0; i < blockByteCount; ++i)
    {
        const int next = i + 1 < blockByteCount ? src[i + 1] : 0;
        block[i] = bMiddle ? static_cast<unsigned char>(src[i] << 4 | next >> 4) : src[i];
    }
}

void Blocks_Cut(const unsigned char* src, bool bAscending, unsigned char* dst)
{
    for (int block = 0; block < 4; ++block)
    {
        const int place = bAscending ? block : 3 - block;
        Block_Cut(src + 100 * block / 8, block % 2 != 0, dst + place * blockRoom);
    }
}

void Blocks_Interleave(const unsigned char* src, bool bAscending, unsigned char* dst)
{
    unsigned char blocks[4 * blockRoom];
    Blocks_Cut(src, bAscending, blocks);
    for (int i = 0; i < 4 * blockByteCount; ++i)
    {
        dst[i] = blocks[i % 4 * blockRoom + i / 4];
    }
}

void Nibbles_Expand(const unsigned char* table, const unsigned char* src, int byteCount, unsigned char* dst)
{
    for (int i = 0; i < byteCount; ++i)
    {
        dst[2 * i] = table[src[i] / 16];
        dst[2 * i + 1] = table[src[i] % 16];
    }
}

// The pixels of a source byte, one per byte, the first lowest; those of each pair exchanged.
template<int bitCount>
constexpr Word Pixels_Spread(unsigned sourceByte, bool bSwapPairs)
{
    Word copies = 0; // each brings its pixel to the place of its byte
    Word pixelMask = 0;
    for (int pixel = 0; pixel < 8 / bitCount; ++pixel)
    {
        copies |= Word{1} << (8 + bitCount) * pixel;
        pixelMask |= Word{(1 << bitCount) - 1} << 8 * pixel;
    }
    const Word pixels = (copies * sourceByte) >> (8 - bitCount) & pixelMask;
    constexpr Word evenBytes = 0x00FF00FF00FF00FFU;
    return bSwapPairs ? (pixels & evenBytes) << 8 | (pixels >> 8 & evenBytes) : pixels;
}

// ORs the bytes of `fields` into the same byte of as many frames.
template<int... pixels>
void Fields_Or(std::integer_sequence<int, pixels...> /*frames*/, Word fields, unsigned char* dst, int frameByteCount)
{
    ((dst[pixels * frameByteCount] =
          static_cast<unsigned char>(dst[pixels * frameByteCount] | (fields >> (8 * pixels)))),
     ...);
}

template<EFieldKind kind>
void Field_Or(const SFieldPattern& pattern, unsigned place, const unsigned char* src, int /*srcByteCount*/,
              unsigned char* dst, int dstByteCount)
{
    constexpr int columnCount = kind == Field_Block ? 4 : 1;
    constexpr int bitCount = kind == Field_TwoBit ? 2 : 1;
    constexpr unsigned pixelField = kind == Field_Double ? 0b11 : 0b01; // what a pixel of 1 sets
    constexpr int pixelCount = 8 / bitCount;                            // of a source byte
    const int frameByteCount = pattern.m_frameByteCount;
    const bool bSwapPairs = pattern.m_bSwapPairs;
    const unsigned field = pixelField << place % 8;
    for (int column = 0; column < columnCount; ++column)
    {
        const unsigned char* source = src + column;
        int position = static_cast<int>(place / 8) + column;
        for (; position + (pixelCount - 1) * frameByteCount < dstByteCount; source += columnCount)
        {
            Fields_Or(std::make_integer_sequence<int, pixelCount>{},
                      Pixels_Spread<bitCount>(*source, bSwapPairs) * field, dst + position, frameByteCount);
            position += pixelCount * frameByteCount;
        }
        for (int pixel = 0; position < dstByteCount; position += frameByteCount)
        {
            const Word fields = Pixels_Spread<bitCount>(*source, bSwapPairs) * field;
            dst[position] = static_cast<unsigned char>(dst[position] | (fields >> (8 * pixel)));
            ++pixel;
        }
    }
}

constexpr SMapKernel Kernel_Make()
{
    SMapKernel kernel = {"scalar",    Rows_Transpose, Columns_Map<false>, Columns_Map<true>, Planes_Split,
                         Quads_Split, Blocks_Cut,     Blocks_Interleave,  Nibbles_Expand,    {}};
    for (int size = 0; size < SFieldPattern::groupSizeCount; ++size)
    {
        kernel.m_pField_Or[Field_OneBit][size] = Field_Or<Field_OneBit>;
        kernel.m_pField_Or[Field_Double][size] = Field_Or<Field_Double>;
        kernel.m_pField_Or[Field_TwoBit][size] = Field_Or<Field_TwoBit>;
        kernel.m_pField_Or[Field_Block][size] = Field_Or<Field_Block>;
    }
    return kernel;
}
} // namespace

constinit const SMapKernel mapKernelScalar = Kernel_Make();
