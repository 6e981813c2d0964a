// The swath turn; see the header.
//
// A block is as many rows as one 64-bit word has pixels of a row: 64 words of 64 pixels, or 32 of 32. It is transposed
// by swapping ever smaller quarters, in two passes that hold eight words in registers: first whole bytes change places,
// then the pixels inside the bytes. The last block of a row or a line reaches back over the one before it, so that only
// swaths smaller than a block meet less than whole words.
//
// Two bit planes are no work of their own: the bits of 2-bit pixels, taken as twice as many 1-bit pixels, turn into the
// lines of the high and the low bits in turns.
//
// What lost, on a server processor: 8x8 blocks, one word each, which are stored byte by byte (0.7 to 0.9 GB/s where
// this reaches 3.0 to 3.9); one halving of the whole block after the other (2.1 where the compiler makes vector code of
// it, 0.6 where it does not); a look for blank rows in every eight words instead of the whole block (2.5).
#include "Host/Input/SwathTurn.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace
{

constexpr int wordBits = 64;
constexpr std::size_t wordBytes = 8;

using CWord = std::uint64_t;

// Bytes as a word whose lowest byte is the first, and back. Where fewer than a word's bytes are there, the word ends in
// zeros, or only its first bytes are written.
CWord Bytes_Reverse(CWord word)
{
    word = (word & 0x00FF00FF00FF00FF) << 8 | (word >> 8 & 0x00FF00FF00FF00FF);
    word = (word & 0x0000FFFF0000FFFF) << 16 | (word >> 16 & 0x0000FFFF0000FFFF);
    return word << 32 | word >> 32;
}

CWord Word_Load(const unsigned char* bytes)
{
    CWord word = 0;
    std::memcpy(&word, bytes, wordBytes);
    return std::endian::native == std::endian::little ? word : Bytes_Reverse(word);
}

CWord Word_LoadPart(const unsigned char* bytes, std::size_t count)
{
    std::array<unsigned char, wordBytes> part = {};
    std::memcpy(part.data(), bytes, count);
    return Word_Load(part.data());
}

void Word_Store(CWord word, unsigned char* bytes)
{
    word = std::endian::native == std::endian::little ? word : Bytes_Reverse(word);
    std::memcpy(bytes, &word, wordBytes);
}

void Word_StorePart(CWord word, unsigned char* bytes, std::size_t count)
{
    std::array<unsigned char, wordBytes> whole = {};
    Word_Store(word, whole.data());
    std::memcpy(bytes, whole.data(), count);
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

// Swaps the later `half` bits of the upper row with the earlier ones of the lower row, in every 2 x `half` bits. Later
// bytes are higher in a word, later pixels of a byte lower.
template<int half>
void Quarters_Swap(CWord& upper, CWord& lower)
{
    constexpr CWord low = LowHalves<half>();
    if constexpr (half >= 8)
    {
        const CWord swap = (upper >> half ^ lower) & low;
        upper ^= swap << half;
        lower ^= swap;
    }
    else
    {
        const CWord swap = (upper ^ lower >> half) & low;
        upper ^= swap;
        lower ^= swap << half;
    }
}

// Eight words of a block, or four, every `step`th one: their halvings down to `half` bits.
template<int half, std::size_t step>
void EightWords_Transpose(CWord* block)
{
    std::array<CWord, 8> words = {block[0],        block[step],     block[2 * step], block[3 * step],
                                  block[4 * step], block[5 * step], block[6 * step], block[7 * step]};
    Quarters_Swap<4 * half>(words[0], words[4]);
    Quarters_Swap<4 * half>(words[1], words[5]);
    Quarters_Swap<4 * half>(words[2], words[6]);
    Quarters_Swap<4 * half>(words[3], words[7]);
    Quarters_Swap<2 * half>(words[0], words[2]);
    Quarters_Swap<2 * half>(words[1], words[3]);
    Quarters_Swap<2 * half>(words[4], words[6]);
    Quarters_Swap<2 * half>(words[5], words[7]);
    Quarters_Swap<half>(words[0], words[1]);
    Quarters_Swap<half>(words[2], words[3]);
    Quarters_Swap<half>(words[4], words[5]);
    Quarters_Swap<half>(words[6], words[7]);
    block[0] = words[0];
    block[step] = words[1];
    block[2 * step] = words[2];
    block[3 * step] = words[3];
    block[4 * step] = words[4];
    block[5 * step] = words[5];
    block[6 * step] = words[6];
    block[7 * step] = words[7];
}

template<int half>
void FourWords_Transpose(CWord* block)
{
    std::array<CWord, 4> words = {block[0], block[1], block[2], block[3]};
    Quarters_Swap<2 * half>(words[0], words[2]);
    Quarters_Swap<2 * half>(words[1], words[3]);
    Quarters_Swap<half>(words[0], words[1]);
    Quarters_Swap<half>(words[2], words[3]);
    block[0] = words[0];
    block[1] = words[1];
    block[2] = words[2];
    block[3] = words[3];
}

template<int elementBits, std::size_t side>
void Block_Transpose(std::array<CWord, side>& block)
{
    constexpr std::size_t wordsPerByte = side / 8;
    for (std::size_t i = 0; i < wordsPerByte; ++i)
    {
        EightWords_Transpose<8, wordsPerByte>(block.data() + i);
    }
    for (std::size_t i = 0; i < side; i += wordsPerByte)
    {
        if constexpr (elementBits == 1)
        {
            EightWords_Transpose<1, 1>(block.data() + i);
        }
        else
        {
            FourWords_Transpose<2>(block.data() + i);
        }
    }
}

// The swath as pixels that are turned: bit planes count every bit as one.
struct STurn
{
    const unsigned char* rows;
    std::size_t rowStride;
    std::size_t rowCount;
    std::size_t rowBytes;
    int columnCount;
    unsigned char* lines;
    std::size_t lineStride;
    bool bReverse;
    int linesPerPosition;

    unsigned char* Line_Of(int column) const
    {
        const int position = column / linesPerPosition;
        const int positionCount = columnCount / linesPerPosition;
        const int line =
            (bReverse ? positionCount - 1 - position : position) * linesPerPosition + column % linesPerPosition;
        return lines + static_cast<std::size_t>(line) * lineStride;
    }
};

// Where the block at `offset` begins in a row or line of `size` bytes.
std::size_t BlockStart(std::size_t offset, std::size_t size)
{
    return size < wordBytes ? 0 : std::min(offset, size - wordBytes);
}

// `rowCount` rows into a block; what it has more holds no ink. False if nothing does.
template<std::size_t side>
bool Block_Load(const unsigned char* rows, std::size_t rowStride, std::size_t rowCount, std::size_t bytes,
                std::array<CWord, side>& block)
{
    CWord ink = 0;
    for (std::size_t i = 0; i < rowCount; ++i)
    {
        const unsigned char* row = rows + i * rowStride;
        block[i] = bytes == wordBytes ? Word_Load(row) : Word_LoadPart(row, bytes);
        ink |= block[i];
    }
    std::fill(block.begin() + static_cast<std::ptrdiff_t>(rowCount), block.end(), CWord{0});
    return ink != 0;
}

// The words of a block into as many lines, `lineOffset` bytes from their beginning.
void Block_Store(const CWord* block, unsigned char* const* lines, std::size_t lineCount, std::size_t lineOffset,
                 std::size_t bytes)
{
    for (std::size_t i = 0; i < lineCount; ++i)
    {
        if (bytes == wordBytes)
        {
            Word_Store(block[i], lines[i] + lineOffset);
        }
        else
        {
            Word_StorePart(block[i], lines[i] + lineOffset, bytes);
        }
    }
}

// The block whose rows begin `rowOffset` bytes into the rows and whose lines are `lineOffset` bytes into theirs.
template<int elementBits>
void Block_Turn(const STurn& turn, std::size_t rowOffset, std::size_t lineOffset, unsigned char* const* lines,
                std::size_t lineCount)
{
    constexpr std::size_t side = wordBits / elementBits;
    const std::size_t firstRow = lineOffset * 8 / elementBits;
    const std::size_t rowCount = std::min(side, turn.rowCount - std::min(firstRow, turn.rowCount));
    const unsigned char* rows = rowCount > 0 ? turn.rows + firstRow * turn.rowStride + rowOffset : turn.rows;
    std::array<CWord, side> block;
    const bool bInk = Block_Load(rows, turn.rowStride, rowCount, std::min(wordBytes, turn.rowBytes - rowOffset), block);
    if (bInk) // most of a page has none
    {
        Block_Transpose<elementBits>(block);
    }
    Block_Store(block.data(), lines, lineCount, lineOffset, std::min(wordBytes, turn.lineStride - lineOffset));
}

// Blocks down the swath first: a column of blocks fills neighbouring lines from end to end while they are in the cache,
// and the band is written once, in order.
template<int elementBits>
void Pixels_Turn(const STurn& turn)
{
    constexpr int side = wordBits / elementBits;
    for (std::size_t offset = 0; offset < turn.rowBytes; offset += wordBytes)
    {
        const std::size_t rowOffset = BlockStart(offset, turn.rowBytes);
        const int column = static_cast<int>(rowOffset) * 8 / elementBits;
        const int columnsHere = std::min(side, turn.columnCount - column);
        std::array<unsigned char*, side> lines;
        for (int i = 0; i < columnsHere; ++i)
        {
            lines[static_cast<std::size_t>(i)] = turn.Line_Of(column + i);
        }
        for (std::size_t lineOffset = 0; lineOffset < turn.lineStride; lineOffset += wordBytes)
        {
            Block_Turn<elementBits>(turn, rowOffset, BlockStart(lineOffset, turn.lineStride), lines.data(),
                                    static_cast<std::size_t>(columnsHere));
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
    STurn turn = {};
    turn.rows = rows;
    turn.rowStride = shape.rowStride;
    turn.rowCount = static_cast<std::size_t>(shape.rowCount);
    turn.rowBytes =
        (static_cast<std::size_t>(shape.columnCount) * static_cast<std::size_t>(shape.bitsPerPixel) + 7) / 8;
    turn.columnCount = shape.columnCount * linesPerPosition;
    turn.lines = lines;
    turn.lineStride = shape.lineStride;
    turn.bReverse = shape.bReverse;
    turn.linesPerPosition = linesPerPosition;
    if (shape.bitsPerPixel / linesPerPosition == 2)
    {
        Pixels_Turn<2>(turn);
    }
    else
    {
        Pixels_Turn<1>(turn);
    }
}
