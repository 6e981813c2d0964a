// What a bit of an output, or a nozzle at a scan position, shows of the page, and why: the answer of boardmap explain,
// and the words for it. The places come from the page model; what is printed there from the separations, if there is a
// job, and from the output, if there is one.
#pragma once

#include "Host/Board/BoardReader.h"
#include "Host/Job/JobPage.h"
#include "Host/Model/PageInk.h"
#include "Host/Model/PageModel.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// One thing that moved the pixel to its bits.
struct SExplanationRule
{
    std::string m_name; // a fixed name for programs: "zone", "offset"
    std::string m_text; // a sentence without its full stop
};

// One bit of the answer.
struct SExplanationBit
{
    SModelBit m_bit;
    std::string m_role;             // "ink", "high bit", "drop size", "padding"
    std::optional<bool> m_expected; // by the job
    std::optional<bool> m_found;    // in the output
};

struct SExplanation
{
    std::int64_t m_band = -1; // running number in the output; -1: the swath is blank and has no band
    int m_swath = 0;
    bool m_bLeftToRight = true;
    SModelSource m_source; // of the nozzle; of the bit if one was asked for
    std::vector<SExplanationBit> m_bits;
    std::optional<int> m_pixel;       // what the job's separation or stripe has there; 0 where there is nothing
    std::optional<int> m_outputPixel; // what the output's bits say that it is: all bits that the nozzle has there
    std::vector<SExplanationRule> m_rules;
    bool m_bBitAsked = false;

    // The output is not what the job makes.
    bool IsDifferent() const;
};

// The place that the model gives a bit, for a line of a report: "unit 3 (Cyan), nozzle 37, position 12, page row 437,
// column 4, page.Cyan.tif"; "padding" where no unit prints.
std::string Source_Text(const SModelSource& source);

// A paragraph, with a line end; and one JSON object in ASCII, with a line end.
std::string Explanation_Text(const SExplanation& explanation, const SBoardInfo& info);
std::string Explanation_Json(const SExplanation& explanation, const SBoardInfo& info);

// Answers questions about a job, an output, or a job and its output. One thread.
class CExplainer
{
public:
    // One of the two may be empty. Throws CInputError: the job or the output cannot be read, the output is of version 1
    // and there is no job, or the two do not belong together.
    CExplainer(const std::filesystem::path& job, const std::filesystem::path& output);
    ~CExplainer();
    CExplainer(const CExplainer&) = delete;
    CExplainer& operator=(const CExplainer&) = delete;

    const CPageModel& Model() const { return *m_model; }

    // What is out of range throws CInputError, which says the range. `band` is a running number in the output.
    SExplanation Nozzle_Explain(int unitId, int nozzle, int position, std::int64_t band);
    SExplanation Bit_Explain(std::int64_t band, int line, std::int64_t byte, int bit);

    // Of the unit that prints the page.
    SExplanation Pixel_Explain(int unitId, int row, int column);

    // The unit that prints this ink: its name or its separation's, in any case of letters. Throws CInputError if there
    // is none or more than one.
    int Unit_OfInk(const std::string& ink) const;

private:
    const SBoardUnitInfo& Unit_Get(int unitId) const;
    SExplanation Nozzle_Make(const SBoardUnitInfo& unit, int nozzle, int position, int swath, std::int64_t band);
    void Values_Take(SExplanation& explanation, const std::vector<SModelBit>& pixelBits);
    bool Bit_Found(const SModelBit& bit) const;

    // The swath of a band and the band of a swath. Both make their band the one that is asked about.
    int Swath_OfBand(std::int64_t band);
    std::int64_t Band_OfSwath(int swath); // -1: there is none
    bool Band_Next();
    void Output_Begin();

    std::unique_ptr<CJobPage> m_page; // null: the output alone
    std::unique_ptr<CPageInk> m_ink;
    std::filesystem::path m_output;
    std::unique_ptr<CBoardReader> m_reader; // null: the job alone
    CBandData m_band;                       // read last
    SBoardPass m_pass;
    std::int64_t m_bandNo = -1; // of m_band
    std::unique_ptr<CPageModel> m_model;
};
