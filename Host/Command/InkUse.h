// The table of a page's ink: dots of each unit by drop size, how much of the page they cover, and what lies beside it.
// Pure functions; any thread.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Host/Model/SwathDots.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <string>
#include <vector>

struct SInkUse
{
    SBoardInfo m_info;
    int m_pixelBits = 1;
    std::vector<std::uint32_t> m_colors; // of the inks, 0xRRGGBB; like all below by unit as in the info
    std::vector<SPlacedDots> m_dots;
    std::int64_t m_stray = 0;   // bits that are no nozzle's
    std::int64_t m_outside = 0; // dots in the room for offsets
};

// Of these dots, without [0].
std::int64_t Dots_Total(const std::array<std::int64_t, 4>& dots);

// Dots on the page, of 100 that there could be.
double Coverage_Of(const SPlacedDots& dots, const SBoardInfo& info);

// A line for each unit below a line of headings, and what should not be there; every line ended.
std::string InkUse_Text(const SInkUse& use);

// [{"UnitId": 0, "Name": "Cyan", "Color": "#00aeef", "Page": {"Dots": 7, ...}, "Beside": ..., "Coverage": 1.5}]
nlohmann::ordered_json InkUse_Json(const SInkUse& use);

// Columns of text, as wide as they must be: the first two begin together, the others end together.
std::string Table_Text(const std::vector<std::vector<std::string>>& rows);
