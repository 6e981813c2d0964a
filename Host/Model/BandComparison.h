// Holds one band of an output against the model, bit by bit: what differs, counted by unit, and the first differences
// in the order of the band. Several threads share the band's lines; each has a few lines in memory at a time, so that
// memory does not grow with the band.
#pragma once

#include "Host/Model/PageModel.h"
#include "Platform/BandData/BandData.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

inline constexpr std::size_t g_modelAreaCount = 8; // of EModelArea

// A bit that is not what it must be.
struct SBitDifference
{
    SModelBit m_bit;
    bool m_bFound = false; // as the output has it

    bool operator==(const SBitDifference&) const = default;
};

// What differs for one unit in a band.
struct SUnitDifference
{
    int m_unitId = -1;                                       // -1: padding, which belongs to no unit
    std::int64_t m_missing = 0;                              // bits that are 0 and must be 1
    std::int64_t m_extra = 0;                                // bits that are 1 and must be 0
    std::array<std::int64_t, g_modelAreaCount> m_areas = {}; // both, by EModelArea
    int m_firstLine = 0;
    int m_lastLine = 0;

    std::int64_t Count() const { return m_missing + m_extra; }
};

struct SBandDifference
{
    std::int64_t m_count = 0;             // of bits
    std::vector<SUnitDifference> m_units; // those that differ, by id, padding first
    std::vector<SBitDifference> m_first;
    std::int64_t m_lineCount = 0; // lines with a difference
    std::vector<std::string>
        m_patterns; // what the differences as a whole look like: "the lines stand in reverse order"
};

class CBandComparison
{
public:
    // `threadCount`: how many share the work, this one included; 0: as many as the machine runs at once.
    explicit CBandComparison(const CPageModel& model, int threadCount = 0);

    // Compares the lines that both have; the band's lines are as long as the model's. At most `most` differences are
    // returned one by one. `goOn` is called on this thread now and then; false breaks off, and the result says nothing.
    // Throws std::bad_alloc, or what the ink throws.
    SBandDifference Compare(int swath, const CBandData& band, const CModelInk& ink, std::size_t most,
                            const std::function<bool()>& goOn) const;

    // Looks whether the differences have a common cause that can be told from the bits: fills in m_patterns. Takes as
    // long as comparing the band on one thread.
    void Patterns_Find(int swath, const CBandData& band, const CModelInk& ink, SBandDifference& difference) const;

private:
    // Whose a bit of a line is: place of the unit in the info, or -1.
    struct SOwner
    {
        int m_unit = -1;
        int m_nozzle = -1;
    };
    struct SPart; // lines that one thread takes at a time, and what it found

    void Part_Compare(int swath, const CBandData& band, const CModelInk& ink, std::size_t most, SPart& part) const;
    void Line_Compare(int swath, int line, const unsigned char* pExpected, const unsigned char* pFound,
                      std::size_t most, SBandDifference& difference) const;
    void Bit_Count(int swath, const SBitDifference& bit, SBandDifference& difference) const;
    void Parts_Merge(std::vector<SPart>& parts, std::size_t most, SBandDifference& difference) const;

    const CPageModel& m_model;
    int m_threadCount;
    int m_partLines;              // lines of a part
    std::vector<SOwner> m_owners; // of the bits of a line
};
