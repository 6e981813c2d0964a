// What a bit of an output, or a nozzle at a scan position, shows of the page, and why, with the words for it: the
// answer of boardmap explain, and what boardmap verify says of bits that differ. Nothing is read here; any thread.
#pragma once

#include "Host/Model/PageModel.h"
#include "Platform/BandData/BandData.h"

#include <cstdint>
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
    int m_page = 0;           // of the job, from 0
    int m_swath = 0;          // of the page
    bool m_bHasPage = true;   // the unit has a separation on the page, as far as that is known
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

// What an answer is taken from: the places from the model; the values from the job's ink of the swath, and from the
// band of the output. Either of the two may be missing.
struct SExplanationSource
{
    const CPageModel& m_model;
    const CModelInk* m_pInk = nullptr;
    const CBandData* m_pBand = nullptr;
    int m_page = 0; // that the swath is of
};

// A nozzle at a scan position; `band` is -1 if the swath has none. The nozzle and the position exist.
SExplanation Nozzle_Explain(const SExplanationSource& from, const SBoardUnitInfo& unit, int nozzle, int position,
                            int swath, std::int64_t band);

// A bit of a band. The bit exists.
SExplanation Bit_Explain(const SExplanationSource& from, int swath, std::int64_t band, const SModelBit& asked);

// "left to right".
const char* Direction_Text(bool bLeftToRight);

// A paragraph, with a line end; and one JSON object in ASCII, with a line end.
std::string Explanation_Text(const SExplanation& explanation, const SBoardInfo& info);
std::string Explanation_Json(const SExplanation& explanation, const SBoardInfo& info);
