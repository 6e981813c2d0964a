// One band of raster lines, and the header that travels with it. A band has no lock.
//
// The header is thirteen 32-bit words and one bool without a gap. Five of them have names; the others only travel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

class CBandData
{
public:
    CBandData() = default;
    CBandData(const CBandData&) = delete;
    CBandData& operator=(const CBandData&) = delete;
    ~CBandData();

    // Makes the band `height` zeroed lines, each line's length a multiple of `alignBytes` bytes. False if that cannot
    // be.
    bool Create(int width, int height, int bitsPerPixel, int alignBytes);

    unsigned char* m_pData = nullptr; // line after line
    std::int32_t m_dataSize = 0;      // bytes at m_pData
    std::int32_t m_bytesPerLine = 0;  // from one line's start to the next
    std::int32_t m_bitsPerPixel = 0;
    std::int32_t m_height = 0; // lines
    std::int32_t m_width = 0;  // pixels per line

    // The header.
    std::int32_t m_bandNo = 0;
    std::int32_t m_bandAttr = 0;
    std::int32_t m_travelling_A[2] = {};
    std::int32_t m_unitIndex = 0;
    std::int32_t m_unitDirection = 0;
    std::int32_t m_travelling_B[7] = {};
    bool m_bSkip = false;

private:
    void Release();

    std::unique_ptr<unsigned char[]> m_pMemory; // what Create set m_pData to
    std::size_t m_memorySize = 0;
};
