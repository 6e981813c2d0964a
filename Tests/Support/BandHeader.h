// The band header as a whole, for tests that fill and compare it. The words without a name are reached by position.
#pragma once

#include "Platform/BandData/BandData.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

struct STestBandHeader
{
    std::array<std::int32_t, 13> words = {};
    bool bSkip = false;

    bool operator==(const STestBandHeader&) const = default;

    void BandNo_Set(std::int32_t bandNo) { words[0] = bandNo; }
    std::int32_t BandAttr() const { return words[1]; }
    void BandAttr_Set(std::int32_t bandAttr) { words[1] = bandAttr; }
    std::int32_t UnitIndex() const { return words[4]; }
    std::int32_t UnitDirection() const { return words[5]; }
};

inline STestBandHeader BandHeader_Get(const CBandData& band)
{
    STestBandHeader header;
    const auto* const first = reinterpret_cast<const unsigned char*>(&band.m_bandNo);
    std::memcpy(header.words.data(), first, sizeof(header.words));
    header.bSkip = band.m_bSkip;
    return header;
}

inline void BandHeader_Set(CBandData& band, const STestBandHeader& header)
{
    auto* const first = reinterpret_cast<unsigned char*>(&band.m_bandNo);
    std::memcpy(first, header.words.data(), sizeof(header.words));
    band.m_bSkip = header.bSkip;
}
