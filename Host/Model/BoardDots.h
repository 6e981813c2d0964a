// Counts the dots of board bands: how many pixels of each unit are set, by their value, out of what the bits of a band
// are. It knows the layout from the board info alone, of either version. One thread at a time.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Platform/BandData/BandData.h"

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

    int LinesPerPosition() const { return m_linesPerPosition; }
    int PixelBits() const { return m_pixelBits; } // values of a dot: 1 bit, or 2

private:
    // What a set bit of a line means. The bits of a pixel: the more significant first.
    struct SMeaning
    {
        int m_unit = -1;                // place in the info; -1: nobody's
        bool m_bRepeat = false;         // says again what another bit says
        bool m_bHigh = false;           // the more significant of two
        int m_partnerLine = 0;          // the pixel's other bit: lines from here
        std::int64_t m_partnerBit = -1; // and bit of the line; -1: there is none
    };

    std::vector<SDotCount> m_units; // all 0
    std::int64_t m_lineBits = 0;
    int m_linesPerPosition = 1;
    int m_pixelBits = 1;
    std::vector<SMeaning> m_meanings; // of the bits of a position's lines, line after line
};
