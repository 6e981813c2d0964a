// Holds an output against its job, band by band: which bands there are, their sizes, headers and passes, and every bit.
// What is found is a list of differences, each with its place; nothing is printed here. Memory holds one band of the
// output and one swath of the separations.
#pragma once

#include "Host/Board/BoardReader.h"
#include "Host/Job/JobPage.h"
#include "Host/Model/BandComparison.h"
#include "Host/Model/PageInk.h"
#include "Host/Model/PageModel.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// A bit that differs, as boardmap explain says it.
struct SBitReport
{
    std::string m_text; // a paragraph, with a line end
    std::string m_json; // an object, with a line end
};

struct SDifference
{
    std::string m_kind; // "info", "damage", "missing", "extra", "order", "size", "header", "pass", "bits"
    int m_band = -1;    // number of the band that should stand there; -1: none
    int m_swath = -1;
    std::string m_place; // in the output: "page 3", "byte 4711"; empty: none
    std::string m_what;

    // Of "bits":
    SBandDifference m_bits;
    std::vector<SBitReport> m_first;
};

struct SBandRange
{
    std::int64_t m_first = 0;
    std::int64_t m_last = -1; // -1: to the end

    bool IsAll() const { return m_first == 0 && m_last < 0; }
    bool Has(std::int64_t band) const { return band >= m_first && (m_last < 0 || band <= m_last); }
};

// "3", "3..5", "3..", "..5". Throws CInputError for anything else.
SBandRange BandRange_Parse(const std::string& text);

struct SVerifyResult
{
    std::int64_t m_bands = 0; // compared
    std::int64_t m_lines = 0;
    std::int64_t m_bytes = 0;
    std::int64_t m_bitDifferences = 0;
    std::int64_t m_differenceCount = 0;     // of any kind; a band's bits are one
    std::vector<SDifference> m_differences; // the first of them
    double m_seconds = 0;
    bool m_bInterrupted = false;
};

class CVerification
{
public:
    // `onProgress` gets the bands and bytes done, on the calling thread; false breaks off. All of them must outlive
    // this.
    CVerification(const CJobPage& page, CBoardReader& reader, SBandRange range, std::size_t mostBits,
                  std::function<bool(std::int64_t bands, std::int64_t bytes)> onProgress);

    // Throws CInputError for damaged separations, or if the range has no band.
    SVerifyResult Run();

private:
    void Info_Compare();
    bool Band_Next();             // false behind the last one
    void Band_Take();             // the band that was read
    int Swath_Guess() const;      // whose band it is
    bool Swaths_Miss(int swath);  // up to this one; false if the range ends before
    void Band_Compare(int swath); // with the swath's ink read
    void Header_Compare(int swath);
    void Pass_Compare(int swath);
    void Bits_Compare(int swath);
    SBitReport Bit_Report(int swath, const SModelBit& bit) const;
    SDifference& Add(const std::string& kind, int swath, const std::string& what);
    bool IsSkipped(int swath);
    bool IsBehind() const { return m_range.m_last >= 0 && m_bandNo > m_range.m_last; }

    CBoardReader& m_reader;
    SBandRange m_range;
    std::size_t m_mostBits; // that are still to be reported one by one
    int m_patternBands;     // that are still looked at for a common cause
    std::function<bool(std::int64_t, std::int64_t)> m_onProgress;
    SBoardInfo m_info;
    CPageModel m_model;
    CPageInk m_ink;
    CBandComparison m_comparison;
    SVerifyResult m_result;

    CBandData m_band;
    SBoardPass m_pass;
    std::string m_bandPlace;
    int m_swath = 0;  // whose band comes next
    int m_bandNo = 0; // its number
};
