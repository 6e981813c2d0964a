// Finds the dots of board bands: which pixels of each unit are set, and their values, out of what the bits of a band
// are; and counts them. It knows the layout from the board info alone, of either version. One thread at a time.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Platform/BandData/BandData.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

// Dots of a unit, by the value of the pixel: of 1 bit, 1; of 2 bits, 1 small, 2 middle, 3 big.
struct SDotCount
{
    int m_unitId = -1;
    std::array<std::int64_t, 4> m_dots = {}; // [0] is not used

    std::int64_t Total() const { return m_dots[1] + m_dots[2] + m_dots[3]; }
    bool operator==(const SDotCount&) const = default;
};

// A pixel that is set.
struct SBoardDot
{
    int m_unit = 0;     // place in the info
    int m_nozzle = 0;   // of the unit
    int m_position = 0; // scan position of the band
    int m_value = 0;    // 1 to 3
};

struct SBandDots
{
    std::vector<SDotCount> m_units; // in the info's order
    std::int64_t m_stray = 0;       // bits that are set and no nozzle's
};

class CBoardDots
{
public:
    // Throws CInputError if the info contradicts itself.
    explicit CBoardDots(const SBoardInfo& info);

    // The dots of a band whose lines are as long as the info says, and no others' (IsFitting).
    SBandDots Count(const CBandData& band) const;
    bool IsFitting(const CBandData& band) const;

    // Calls `visit` with every SBoardDot of such a band, position after position. Returns the bits that are set and no
    // nozzle's.
    template<class TVisit>
    std::int64_t Dots_Visit(const CBandData& band, TVisit visit) const;

    int LinesPerPosition() const { return m_linesPerPosition; }
    int PixelBits() const { return m_pixelBits; } // values of a dot: 1 bit, or 2

private:
    // What a set bit of a line means. The bits of a pixel: the more significant first.
    struct SMeaning
    {
        int m_unit = -1; // place in the info; -1: nobody's
        int m_nozzle = -1;
        bool m_bRepeat = false;         // says again what another bit says
        bool m_bHigh = false;           // the more significant of two
        int m_partnerLine = 0;          // the pixel's other bit: lines from here
        std::int64_t m_partnerBit = -1; // and bit of the line; -1: there is none
    };

    static bool Bit_Get(const unsigned char* pLine, std::int64_t bit)
    {
        return (pLine[bit / 8] >> (7 - bit % 8) & 1) == 1;
    }

    std::vector<SDotCount> m_units; // all 0
    std::int64_t m_lineBits = 0;
    int m_linesPerPosition = 1;
    int m_pixelBits = 1;
    std::vector<SMeaning> m_meanings; // of the bits of a position's lines, line after line
};

template<class TVisit>
std::int64_t CBoardDots::Dots_Visit(const CBandData& band, TVisit visit) const
{
    std::int64_t stray = 0;
    const std::int64_t lineBytes = (m_lineBits + 7) / 8;
    for (int line = 0; line < band.m_height; ++line)
    {
        const unsigned char* pLine = band.m_pData + std::int64_t{line} * band.m_bytesPerLine;
        const SMeaning* pMeanings = m_meanings.data() + line % m_linesPerPosition * m_lineBits;
        for (std::int64_t byte = 0; byte < lineBytes; ++byte)
        {
            if (pLine[byte] == 0)
            {
                continue;
            }
            for (std::int64_t bit = byte * 8; bit < std::min(byte * 8 + 8, m_lineBits); ++bit)
            {
                const SMeaning& meaning = pMeanings[bit];
                if (!Bit_Get(pLine, bit) || meaning.m_bRepeat)
                {
                    continue;
                }
                if (meaning.m_unit < 0)
                {
                    ++stray;
                    continue;
                }
                const bool bPartner =
                    meaning.m_partnerBit >= 0 &&
                    Bit_Get(pLine + std::int64_t{meaning.m_partnerLine} * band.m_bytesPerLine, meaning.m_partnerBit);
                if (!bPartner || meaning.m_bHigh) // a pixel with both bits is visited at the first
                {
                    const int value = meaning.m_bHigh ? (bPartner ? 3 : 2) : 1;
                    visit(SBoardDot{meaning.m_unit, meaning.m_nozzle, line / m_linesPerPosition, value});
                }
            }
        }
    }
    return stray;
}
