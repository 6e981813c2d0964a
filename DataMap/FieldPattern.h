// How the pixels of one unit spread over board frames, byte by byte: what a kernel needs to know to place them.
//
// The patterns are constant tables, made by the compiler. A map picks one when it maps a line and adds what belongs to
// the unit; the kernels read them from any thread.
#pragma once

// For each board byte behind the first frame's field byte: which source byte its pixel comes from and where in it.
struct SFieldPattern
{
    static constexpr int lead = 16;   // entries before the field: bytes of a frame that belong to others
    static constexpr int span = 128;  // board bytes that are described
    static constexpr int size = lead + span;

    unsigned char m_source[size];    // index of the source byte; 0x80: the board byte gets nothing
    unsigned char m_pixelMask[size]; // the pixel's bits in the source byte; where there is none: any pixel's
    unsigned char m_pixelBit[size];  // 8 x index of the source byte + number of the pixel's lowest bit in it
    unsigned char m_target[size];    // 0xFF where the board byte gets a pixel, 0 elsewhere

    // 0 to groupSizeCount - 1: eight frames (of 2-bit pixels four, what one source byte gives) take 8, 16, 32, 64 or
    // 128 bytes.
    static constexpr int groupSizeCount = 5;
    int m_groupSizeIndex;
};

// The bits that one unit has in every frame, and the pixels that they come from.
struct SFrameField
{
    const SFieldPattern* m_pPattern; // of frame size, pixel size and pixel order
    int m_srcGroupByteCount;         // source bytes side by side: 1, or 4 for blocks
    int m_byteOffset;                // the field's first byte in the frame
    int m_lowestBit;                 // number of the field's lowest bit in that byte
    unsigned char m_mask;            // the field's bits in that byte
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
    // Frames of 2 bytes with the 1-bit pixels of each pair swapped.
    static const SFieldPattern swappedPattern;

private:
    static const SFieldPattern* const patterns[2][frameByteCountMax + 1];
    static const SFieldPattern* const blockPatterns[frameByteCountMax + 1];
};
