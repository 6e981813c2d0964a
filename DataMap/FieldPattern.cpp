// The tables behind the field patterns, computed by the compiler.
#include "DataMap/FieldPattern.h"

namespace
{
struct SPatternShape
{
    int frameByteCount;
    int srcBitCount;
    int columnCount; // neighbouring bytes of a frame that get pixels, each from a source byte of its own
    bool bSwapPairs;
    bool bPairs; // of 2-bit pixels, the second's high bit
};

constexpr SFieldPattern Pattern_Make(const SPatternShape& shape)
{
    SFieldPattern pattern = {};
    const int pixelsPerByte = shape.bPairs ? 2 : 8 / shape.srcBitCount;
    while (8 << pattern.m_groupSizeIndex < pixelsPerByte * shape.frameByteCount)
    {
        ++pattern.m_groupSizeIndex;
    }
    for (int i = 0; i < SFieldPattern::size; ++i)
    {
        pattern.m_rows[SFieldPattern::Row_Source][i] = 0x80;
        pattern.m_rows[SFieldPattern::Row_PixelMask][i] = static_cast<unsigned char>(0xFF << (8 - shape.srcBitCount));
        const int position = i - SFieldPattern::lead;
        const int column = position % shape.frameByteCount;
        if (position < 0 || column >= shape.columnCount)
        {
            continue;
        }
        const int frame = position / shape.frameByteCount;
        const int source = frame / pixelsPerByte * shape.columnCount + column;
        const int pixel = shape.bSwapPairs ? (frame % pixelsPerByte) ^ 1 : frame % pixelsPerByte;
        const int lowestBit = shape.bPairs ? 5 - 4 * pixel : 8 - shape.srcBitCount * (pixel + 1);
        pattern.m_rows[SFieldPattern::Row_Source][i] = static_cast<unsigned char>(source);
        pattern.m_rows[SFieldPattern::Row_PixelMask][i] =
            static_cast<unsigned char>(((1 << shape.srcBitCount) - 1) << lowestBit);
        pattern.m_rows[SFieldPattern::Row_PixelBit][i] = static_cast<unsigned char>(8 * source + lowestBit);
        pattern.m_rows[SFieldPattern::Row_Target][i] = 0xFF;
    }
    return pattern;
}

constexpr SFieldPattern pixel2 = Pattern_Make({2, 1, 1, false, false});
constexpr SFieldPattern pixel4 = Pattern_Make({4, 1, 1, false, false});
constexpr SFieldPattern pixel8 = Pattern_Make({8, 1, 1, false, false});
constexpr SFieldPattern pixel16 = Pattern_Make({16, 1, 1, false, false});
constexpr SFieldPattern twoBit2 = Pattern_Make({2, 2, 1, false, false});
constexpr SFieldPattern twoBit4 = Pattern_Make({4, 2, 1, false, false});
constexpr SFieldPattern twoBit8 = Pattern_Make({8, 2, 1, false, false});
constexpr SFieldPattern twoBit16 = Pattern_Make({16, 2, 1, false, false});
constexpr SFieldPattern block4 = Pattern_Make({4, 1, 4, false, false});
constexpr SFieldPattern block8 = Pattern_Make({8, 1, 4, false, false});
constexpr SFieldPattern block16 = Pattern_Make({16, 1, 4, false, false});
constexpr SFieldPattern pair4 = Pattern_Make({4, 1, 1, false, true});
constexpr SFieldPattern pair8 = Pattern_Make({8, 1, 1, false, true});
constexpr SFieldPattern pair16 = Pattern_Make({16, 1, 1, false, true});

constexpr const SFieldPattern* none = nullptr;
} // namespace

// By the bytes of a frame.
const SFieldPattern* const CFieldPattern::patterns[2][frameByteCountMax + 1] = {
    {none, none, &pixel2, none, &pixel4, none, none, none, &pixel8, none, none, none, none, none, none, none, &pixel16},
    {none, none, &twoBit2, none, &twoBit4, none, none, none, &twoBit8, none, none, none, none, none, none, none,
     &twoBit16}};
const SFieldPattern* const CFieldPattern::blockPatterns[frameByteCountMax + 1] = {
    none, none, none, none, &block4, none, none, none, &block8, none, none, none, none, none, none, none, &block16};
const SFieldPattern* const CFieldPattern::pairPatterns[frameByteCountMax + 1] = {
    none, none, none, none, &pair4, none, none, none, &pair8, none, none, none, none, none, none, none, &pair16};
const SFieldPattern CFieldPattern::swappedPattern = Pattern_Make({2, 1, 1, true, false});
