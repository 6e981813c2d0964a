// Board bands with a pattern that shows every wrong bit, for the writers' tests.
#pragma once

#include "Host/Board/BandHeaderWords.h"
#include "Host/Board/BoardInfo.h"
#include "Platform/BandData/BandData.h"

#include <cstring>
#include <memory>

// A band whose bytes follow from its number and whose header words are all different; the bytes between the lines'
// ends and the next lines' starts are set too, so that they show where they must not.
inline std::unique_ptr<CBandData> TestBand_Make(int bandNo, int width, int height, int alignBytes = 1)
{
    auto band = std::make_unique<CBandData>();
    if (!band->Create(width, height, 1, alignBytes))
    {
        return nullptr;
    }
    std::uint32_t state = 12345U + static_cast<std::uint32_t>(bandNo);
    for (int i = 0; i < band->m_dataSize; ++i)
    {
        state = state * 1664525U + 1013904223U;
        band->m_pData[i] = static_cast<unsigned char>(state >> 24U);
    }
    int word = 0;
    for (const SBandHeaderWord& headerWord : g_bandHeaderWords)
    {
        (*band).*headerWord.m_pWord = 1000 * ++word + bandNo;
    }
    band->m_bandNo = bandNo;
    band->m_bandAttr = -1;
    band->m_bSkip = bandNo % 2 == 1;
    return band;
}

// Every word other than its default.
inline SBoardInfo TestInfo_Make()
{
    SBoardInfo info;
    info.m_generator = "boardmap 1.2.3";
    info.m_dataMapStyle = "FramePerPixel";
    info.m_dataPushStyle = "ByPixel";
    info.m_printerSupportBits = "OneBit";
    info.m_map = "5";
    info.m_stage = "ink-stripe";
    info.m_dotSizeMode = "";
    info.m_printerDataWidth = 16;
    info.m_printerDataWidthUnit = "bits";
    info.m_frameBits = 16;
    info.m_lineBits = 6400;
    info.m_bitsPerUnit = 1;
    info.m_nozzles = 400;
    info.m_bitsPerPixel = 1;
    info.m_bBidirectional = true;
    info.m_bSkipBlank = true;
    info.m_pageWidth = 100;
    info.m_pageHeight = 900;
    info.m_xResolution = 600;
    info.m_yResolution = 300.5;
    info.m_leftZone = 40;
    info.m_rightZone = 24;
    info.m_unitPitch = 11;
    info.m_unitPositionCount = 2;
    info.m_maxOffset_1 = 3;
    info.m_maxOffset_2 = 7;
    info.m_units = {{0, 1, "Cyan", "page.Cyan.tif", 0, 3, 7, "", 0}, {3, 2, "Schwarz \"ü\"", "", 1, 0, 2, "Full", 10}};
    return info;
}

inline bool HeadersEqual(const SBandHeader& left, const SBandHeader& right)
{
    for (const SBandHeaderWord& word : g_bandHeaderWords)
    {
        if (left.*word.m_pWord != right.*word.m_pWord)
        {
            return false;
        }
    }
    return left.m_bSkip == right.m_bSkip;
}
