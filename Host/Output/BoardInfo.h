// What a board file says of itself: the options that its bands were mapped with, and the words of each band's header,
// as JSON. The writers put it into their files, the readers take it out again. Pure functions; any thread.
#pragma once

#include "Platform/BandData/BandData.h"

#include <string>
#include <vector>

// One print unit whose pixels are in the bands.
struct SBoardUnitInfo
{
    int m_unitId = 0;    // its place in a board data frame
    int m_direction = 0; // 1 = descending, 2 = ascending block order
    std::string m_name;  // the job's label, UTF-8; may be empty

    bool operator==(const SBoardUnitInfo&) const = default;
};

// The layout of a board line. Enumerations by their names in the job file.
struct SBoardInfo
{
    std::string m_dataMapStyle;
    std::string m_dataPushStyle;
    std::string m_printerSupportBits;
    std::string m_map;          // the style of the data map: "1", "2", "5"
    int m_printerDataWidth = 0; // bits in one board data frame
    int m_bitsPerUnit = 0;      // bits that one unit has in a frame
    int m_nozzles = 0;          // frames in a line
    int m_bitsPerPixel = 0;     // of the separations
    std::vector<SBoardUnitInfo> m_units;

    bool operator==(const SBoardInfo&) const = default;
};

// {"DataMapStyle": ..., "Units": [...]}, ASCII, one line.
std::string BoardInfo_Json(const SBoardInfo& info);

// The inverse. Throws std::runtime_error, which says what is wrong, if the text is no such JSON.
SBoardInfo BoardInfo_Parse(const std::string& json);

// {"Format": "boardmap-band", "Version": 1, "Header": {...}, "Board": {...}}, ASCII, one line: the thirteen header
// words and the skip flag under their names, and the board info.
std::string BandHeader_Json(const SBandHeader& header, const SBoardInfo& info);
