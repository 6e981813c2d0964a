// One band of raster lines, and the header that travels with it.
//
// A unit band holds the pixels of one print unit for one step: its lines are scan positions, its pixels nozzles. A
// board band holds what the head-driver boards get for the same step. Bands are handed from thread to thread through
// FIFOs; at any moment one thread, or one FIFO, has a band, so a band has no lock.
#pragma once

#include "Platform/PlatformExport.h"

#include <cstddef>
#include <cstdint>

// The band header: thirteen 32-bit words and one bool, copied as a block from a unit band to its board band.
struct SBandHeader
{
    std::int32_t m_bandNo = 0;        // running number, per unit and per stage
    std::int32_t m_bandAttr = 0;      // pass: 1 = left to right, any other value = right to left
    std::int32_t m_swathIndex = 0;    // which swath of the page, from 0
    std::int32_t m_pageIndex = 0;     // which page of the job, from 0
    std::int32_t m_unitIndex = 0;     // the print unit that the band belongs to
    std::int32_t m_unitDirection = 0; // the unit's orientation, which the maps read
    std::int32_t m_firstRow = 0;      // page row under the first nozzle
    std::int32_t m_rowCount = 0;      // page rows that the band holds; the nozzles beyond them get no ink
    std::int32_t m_firstColumn = 0;   // leftmost page column of the band
    std::int32_t m_columnCount = 0;   // page columns that the band holds
    std::int32_t m_reserved_11 = 0;
    std::int32_t m_reserved_12 = 0;
    std::int32_t m_reserved_13 = 0;
    bool m_bSkip = false; // the band only travels along; it carries no data
};
static_assert(offsetof(SBandHeader, m_bandNo) == 0 * 4);
static_assert(offsetof(SBandHeader, m_bandAttr) == 1 * 4);
static_assert(offsetof(SBandHeader, m_unitIndex) == 4 * 4);
static_assert(offsetof(SBandHeader, m_unitDirection) == 5 * 4);
static_assert(offsetof(SBandHeader, m_bSkip) == 13 * 4);
static_assert(sizeof(SBandHeader) == 14 * 4);

class PLATFORM_API CBandData : public SBandHeader
{
public:
    // The alignment of m_pData in bytes: that of the widest vector register.
    static constexpr int dataAlignment = 64;

    CBandData() = default;
    CBandData(const CBandData&) = delete;
    CBandData& operator=(const CBandData&) = delete;
    ~CBandData();

    // Makes the band `height` lines of `width` pixels at `bitsPerPixel`, all zero, each line's length rounded up to a
    // multiple of `alignBytes` bytes. Replaces earlier data; the header stays. False if an argument is negative (bits
    // and alignment: below 1), if a size does not fit 32 bits, or if there is no memory; the band is then empty.
    // A band of no lines or no pixels is valid.
    bool Create(int width, int height, int bitsPerPixel, int alignBytes);

    // Makes the band `height` lines high without touching its memory: for a pool of bands whose steps differ in length.
    // False, with the band as it was, for more lines than Create made room for, or fewer than none.
    bool Height_Set(int height);

    unsigned char* m_pData = nullptr; // owned; line after line
    std::int32_t m_width = 0;         // pixels per line
    std::int32_t m_height = 0;        // lines
    std::int32_t m_bitsPerPixel = 0;
    std::int32_t m_bytesPerLine = 0; // from one line's start to the next
    std::int32_t m_dataSize = 0;     // bytes at m_pData

private:
    void Release();

    std::int32_t m_lineCapacity = 0;        // lines that the memory has room for
    unsigned char* m_pAllocation = nullptr; // owned; what m_pData was set to
    std::size_t m_allocatedSize = 0;        // its bytes
};
