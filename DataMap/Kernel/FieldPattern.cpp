// The tables behind the field patterns, computed by the compiler.
#include "DataMap/Kernel/FieldPattern.h"

namespace
{
struct SPatternShape
{
    int frameByteCount;
    int srcBitCount;
    int columnCount; // neighbouring bytes of a frame that get pixels, each from a source byte of its own
    bool bSwapPairs;
};

constexpr SFieldPattern Pattern_Make(const SPatternShape& shape)
{
    SFieldPattern pattern = {};
    pattern.m_frameByteCount = shape.frameByteCount;
    pattern.m_bSwapPairs = shape.bSwapPairs;
    const int pixelsPerByte = 8 / shape.srcBitCount;
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
        const int lowestBit = 8 - shape.srcBitCount * (pixel + 1);
        pattern.m_rows[SFieldPattern::Row_Source][i] = static_cast<unsigned char>(source);
        pattern.m_rows[SFieldPattern::Row_PixelMask][i] =
            static_cast<unsigned char>(((1 << shape.srcBitCount) - 1) << lowestBit);
        pattern.m_rows[SFieldPattern::Row_PixelBit][i] = static_cast<unsigned char>(8 * source + lowestBit);
        pattern.m_rows[SFieldPattern::Row_Target][i] = 0xFF;
    }
    return pattern;
}

constexpr SFieldPattern oneBit[4] = {Pattern_Make({2, 1, 1, false}), Pattern_Make({4, 1, 1, false}),
                                     Pattern_Make({8, 1, 1, false}), Pattern_Make({16, 1, 1, false})};
constexpr SFieldPattern twoBit[4] = {Pattern_Make({2, 2, 1, false}), Pattern_Make({4, 2, 1, false}),
                                     Pattern_Make({8, 2, 1, false}), Pattern_Make({16, 2, 1, false})};
constexpr SFieldPattern swapped = Pattern_Make({2, 1, 1, true});
constexpr SFieldPattern block[3] = {Pattern_Make({4, 1, 4, false}), Pattern_Make({8, 1, 4, false}),
                                    Pattern_Make({16, 1, 4, false})};

constexpr const SFieldPattern* none = nullptr;
} // namespace

constinit const SFieldPatterns fieldPatterns = {{none, none, &oneBit[0], none, &oneBit[1], none, none, none, &oneBit[2],
                                                 none, none, none, none, none, none, none, &oneBit[3]},
                                                {none, none, &twoBit[0], none, &twoBit[1], none, none, none, &twoBit[2],
                                                 none, none, none, none, none, none, none, &twoBit[3]},
                                                {none, none, &swapped},
                                                {none, none, none, none, &block[0], none, none, none, &block[1], none,
                                                 none, none, none, none, none, none, &block[2]}};
