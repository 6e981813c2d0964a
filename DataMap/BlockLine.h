// A unit's line of 400 pixels as the four blocks of 100 of the block styles (03 and 03_01).
//
// The maps cut a line up when they map it, on any thread, into a record on their stack.
#pragma once

struct SBlockLine
{
    static constexpr int blockCount = 4;
    static constexpr int blockPixelCount = 100;
    static constexpr int blockByteCount = 13;
    static constexpr int srcByteCount = 50;
    static constexpr int room = 16; // bytes per block, zeros behind the block's own

    // Block k: pixels 100 k to 100 k + 99. A block that begins on a byte keeps the four pixels behind it; the others
    // end in four zeros.
    unsigned char m_blocks[blockCount][room];

    // Cuts up the 50 bytes of `src`.
    void Cut(const unsigned char* src);

    // The blocks side by side: byte i of the block at place p is result[4 i + p], 4 x `room` bytes. Ascending: block k
    // at place k; otherwise at place 3 - k.
    void Interleave(bool bAscending, unsigned char* result) const;
};
