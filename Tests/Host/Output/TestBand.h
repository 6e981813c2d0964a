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

inline SBoardInfo TestInfo_Make()
{
    return {"FramePerPixel", "ByPixel", "OneBit", "5", 16, 1, 400, 1, {{0, 1, "Cyan"}, {3, 2, "Schwarz \"ü\""}}};
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
