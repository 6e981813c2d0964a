// SSrcBandDataParam: what a data map is told about one source line.
//
// The thread that maps a line fills one record per line from the source band, on its stack, and keeps ownership of
// everything that the record points to. A map only reads it.
#pragma once

#include <cstddef>
#include <cstdint>

// The orientation of a unit, as its bands and the carriage tell it: its blocks of pixels in ascending order. Any other
// value means descending order.
constexpr std::int32_t unitDirection_Ascending = 2;

// Packed to 4 bytes: the pointer follows the third integer directly.
#pragma pack(push, 4)
struct SSrcBandDataParam
{
    std::int32_t m_unitIndex = 0;     // print unit: selects the unit's table rows, or its slot in the board line
    std::int32_t m_unitDirection = 0; // unitDirection_Ascending, or any other value for descending
    std::int32_t m_lineBitCount = 0;  // significant bits of the source line: pixels x bits per pixel
    void* m_customParam = nullptr;    // the calling thread's object from the map's CustomParam_Create, or null
};
#pragma pack(pop)

static_assert(offsetof(SSrcBandDataParam, m_unitIndex) == 0);
static_assert(offsetof(SSrcBandDataParam, m_unitDirection) == 4);
static_assert(offsetof(SSrcBandDataParam, m_lineBitCount) == 8);
static_assert(offsetof(SSrcBandDataParam, m_customParam) == 12);
static_assert(sizeof(SSrcBandDataParam) == 12 + sizeof(void*));
static_assert(alignof(SSrcBandDataParam) == 4);
