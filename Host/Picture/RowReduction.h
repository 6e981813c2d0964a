// Makes one pixel of a square of dots, while the dots come row by row: their average, channel by channel. The squares
// at the right and lower edge may be cut off; they are the average of what they have. Memory is one row of sums. One
// thread at a time.
#pragma once

#include "Host/Picture/PngWriter.h"

#include <cstdint>
#include <vector>

class CRowReduction
{
public:
    // Rows of `width` dots with `channels` bytes each go to `writer` as rows of Reduced_Of(width, reduce) pixels.
    CRowReduction(CPngWriter& writer, std::int64_t width, int channels, int reduce);

    void Row_Add(const unsigned char* pDots);

    // Behind the last row: writes what is left, and ends the picture.
    void Finish();

    static std::int64_t Reduced_Of(std::int64_t count, int reduce) { return (count + reduce - 1) / reduce; }

private:
    void Row_Write();

    CPngWriter& m_writer;
    std::int64_t m_width;
    int m_channels;
    int m_reduce;
    int m_rows = 0; // in the sums
    std::vector<std::uint64_t> m_sums;
    std::vector<unsigned char> m_row;
};
