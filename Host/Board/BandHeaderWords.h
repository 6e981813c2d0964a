// The thirteen words of a band header by name, in their order, for everything that writes or reads them one by one.
#pragma once

#include "Platform/BandData/BandData.h"

#include <array>
#include <cstdint>
#include <string_view>

struct SBandHeaderWord
{
    std::string_view m_name;
    std::int32_t SBandHeader::*m_pWord;
};

inline constexpr std::array<SBandHeaderWord, 13> g_bandHeaderWords = {{
    {"m_bandNo", &SBandHeader::m_bandNo},
    {"m_bandAttr", &SBandHeader::m_bandAttr},
    {"m_swathIndex", &SBandHeader::m_swathIndex},
    {"m_pageIndex", &SBandHeader::m_pageIndex},
    {"m_unitIndex", &SBandHeader::m_unitIndex},
    {"m_unitDirection", &SBandHeader::m_unitDirection},
    {"m_firstRow", &SBandHeader::m_firstRow},
    {"m_rowCount", &SBandHeader::m_rowCount},
    {"m_firstColumn", &SBandHeader::m_firstColumn},
    {"m_columnCount", &SBandHeader::m_columnCount},
    {"m_reserved_11", &SBandHeader::m_reserved_11},
    {"m_reserved_12", &SBandHeader::m_reserved_12},
    {"m_reserved_13", &SBandHeader::m_reserved_13},
}};
