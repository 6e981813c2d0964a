// How the pixels of one unit spread over board frames, byte by byte: what a kernel needs to know to place them.
//
// The patterns are constant tables, made by the compiler. Whoever maps a line picks one and adds the unit's place in
// the frame; the kernels read them from any thread.
#pragma once

// For each board byte from the first frame's field byte on: where its pixel comes from.
struct SFieldPattern
{
    static constexpr int lead = 16;  // board bytes in front of the field, which get nothing
    static constexpr int span = 128; // board bytes from the field on
    static constexpr int size = lead + span;

    enum ERow
    {
        Row_Source,    // index of the source byte; 0x80: the board byte gets nothing
        Row_PixelMask, // the pixel's bits in the source byte; where there is none: any pixel's
        Row_PixelBit,  // 8 x index of the source byte + number of the pixel's lowest bit in it
        Row_Target,    // 0xFF where the board byte gets a pixel, 0 elsewhere
        Row_Count
    };
    unsigned char m_rows[Row_Count][size];

    // 0 to groupSizeCount - 1: the frames that one source byte gives (eight; four of 2-bit pixels) take 8, 16, 32, 64
    // or 128 bytes.
    static constexpr int groupSizeCount = 5;
    int m_groupSizeIndex;
    int m_frameByteCount;
    bool m_bSwapPairs; // pixel k is in frame k ^ 1
};

// By the bytes of a frame, 0 to frameByteCountMax; null for frames without a pattern. There are patterns for frames of
// 2, 4, 8 and 16 bytes.
struct SFieldPatterns
{
    static constexpr int frameByteCountMax = 16;
    using ByFrame = const SFieldPattern * [frameByteCountMax + 1];

    ByFrame m_oneBit;  // one 1-bit pixel per frame
    ByFrame m_twoBit;  // one 2-bit pixel per frame
    ByFrame m_swapped; // one 1-bit pixel per frame, those of each pair swapped; 2 bytes only
    ByFrame m_block;   // four 1-bit pixels in four bytes of each frame, from four source bytes; not for 2 bytes
};
extern const SFieldPatterns fieldPatterns;
