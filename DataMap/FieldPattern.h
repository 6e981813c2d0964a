// How the pixels of one unit spread over board frames, byte by byte: what a kernel needs to know to place them.
//
// The patterns are constant tables, made by the compiler. A map picks one when it maps a line and adds what belongs to
// the unit; the kernels read them from any thread.
#pragma once

// For each board byte from the first frame's field byte on: where its pixel comes from.
struct SFieldPattern
{
    static constexpr int lead = 16;  // board bytes in front of the field, which get nothing
    static constexpr int span = 128; // board bytes from the field on
    static constexpr int size = lead + span;

    // Begin(row, byteOffset) is where that row begins for frames whose field is `byteOffset` bytes behind their start.
    enum ERow
    {
        Row_Source,    // index of the source byte; 0x80: the board byte gets nothing
        Row_PixelMask, // the pixel's bits in the source byte; where there is none: any pixel's
        Row_PixelBit,  // 8 x index of the source byte + number of the pixel's lowest bit in it
        Row_Target,    // 0xFF where the board byte gets a pixel, 0 elsewhere
        Row_Count
    };
    unsigned char m_rows[Row_Count][size];

    // 0 to groupSizeCount - 1: the frames that one source byte gives (eight; four of 2-bit pixels; two of pairs) take
    // 8, 16, 32, 64 or 128 bytes.
    static constexpr int groupSizeCount = 5;
    int m_groupSizeIndex;

    const unsigned char* Begin(int byteOffset) const { return m_rows[0] + lead - byteOffset; }
};

class CFieldPattern
{
public:
    static constexpr int frameByteCountMax = 16;

    // One pixel of `srcBitCount` bits (1 or 2) per frame of `frameByteCount` bytes (0 or more). Null for frames that
    // have no pattern: there are patterns for 2, 4, 8 and 16 bytes.
    static const SFieldPattern* Pixel_Get(int frameByteCount, int srcBitCount)
    {
        return frameByteCount <= frameByteCountMax ? patterns[srcBitCount - 1][frameByteCount] : nullptr;
    }
    // Four 1-bit pixels side by side in four bytes of each frame, from four source bytes. Null as above, and for frames
    // of less than 4 bytes.
    static const SFieldPattern* Block_Get(int frameByteCount)
    {
        return frameByteCount <= frameByteCountMax ? blockPatterns[frameByteCount] : nullptr;
    }
    // Pairs of 2-bit pixels, whose high bits are neighbours in one plane's frames and whose low bits in the other's:
    // for the second pixel's high bit. Null as above, and for frames of less than 4 bytes.
    static const SFieldPattern* Pair_Get(int frameByteCount)
    {
        return frameByteCount <= frameByteCountMax ? pairPatterns[frameByteCount] : nullptr;
    }
    // Frames of 2 bytes with the 1-bit pixels of each pair swapped.
    static const SFieldPattern swappedPattern;

private:
    static const SFieldPattern* const patterns[2][frameByteCountMax + 1];
    static const SFieldPattern* const blockPatterns[frameByteCountMax + 1];
    static const SFieldPattern* const pairPatterns[frameByteCountMax + 1];
};
