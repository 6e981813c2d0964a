// Holds an output against its job, band by band: which bands there are, their sizes, headers and passes, and every bit.
// What is found is a list of differences, each with its place; nothing is printed here. Memory holds one band of the
// output and one swath of the separations.
#pragma once

#include "Host/Board/BoardReader.h"
#include "Host/Command/BandRange.h"
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
    int m_page = -1;
    int m_swath = -1;    // of the page
    std::string m_place; // in the output: "page 3", "byte 4711"; empty: none
    std::string m_what;

    // Of "bits":
    SBandDifference m_bits;
    std::vector<SBitReport> m_first;
};

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
    bool Band_Next(); // false behind the last one
    void Band_Take(); // the band that was read

    // A step is a swath, counted over all pages of the job.
    std::int64_t Step_Guess() const;      // whose band it is
    std::int64_t Page_Guess() const;      // of the band
    bool Steps_Miss(std::int64_t step);   // up to this one; false if the range ends before
    void Band_Compare(std::int64_t step); // with the step's ink read
    void Header_Compare(std::int64_t step);
    void Pass_Compare(std::int64_t step);
    void Bits_Compare(std::int64_t step);
    SBitReport Bit_Report(std::int64_t step, const SModelBit& bit) const;
    SDifference& Add(const std::string& kind, std::int64_t step, const std::string& what);
    std::string Step_Text(std::int64_t step) const; // "swath 3", "page 1, swath 3"
    void Ink_Read(std::int64_t step) { m_ink.Swath_Read(Swath_Of(step), Page_Of(step)); }
    bool IsSkipped(std::int64_t step);
    int Swath_Of(std::int64_t step) const { return static_cast<int>(step % m_model.SwathCount()); }
    int Page_Of(std::int64_t step) const { return static_cast<int>(step / m_model.SwathCount()); }
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
    std::int64_t m_step = 0;    // whose band comes next
    std::int64_t m_stepEnd = 0; // behind the last of the output
    int m_bandNo = 0;           // its number
};
