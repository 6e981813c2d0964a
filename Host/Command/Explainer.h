// Answers the questions of boardmap explain: finds the band, reads what is asked for, and has it explained. The places
// come from the page model; what is printed there from the separations, if there is a job, and from the output, if
// there is one.
#pragma once

#include "Host/Board/BoardReader.h"
#include "Host/Command/Explanation.h"
#include "Host/Job/JobPage.h"
#include "Host/Model/PageInk.h"
#include "Host/Model/PageModel.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

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

    // Of the unit that prints the page; `page` is the job's, from 0.
    SExplanation Pixel_Explain(int unitId, int row, int column, int page = 0);

    // The unit that prints this ink: its name or its separation's, in any case of letters. Throws CInputError if there
    // is none or more than one.
    int Unit_OfInk(const std::string& ink) const;

private:
    const SBoardUnitInfo& Unit_Get(int unitId) const;
    SExplanationSource Source_Get(int step) const;

    // The swath of a band, counted over all pages, and the band of a swath. Both make their band the one that is asked
    // about.
    int Step_OfBand(std::int64_t band);
    std::int64_t Band_OfStep(int step); // -1: there is none
    bool Band_Next();
    void Ink_Read(int step);
    bool IsSkipped(int step) const { return m_model->IsSkipped(Swath_Of(step), *m_ink); } // its ink is read
    int Swath_Of(int step) const { return step % m_model->SwathCount(); }
    int Page_Of(int step) const { return step / m_model->SwathCount(); }
    int StepCount() const { return static_cast<int>(m_model->Info().StepCount()); }
    int Step_OfReadBand() const { return m_band.m_pageIndex * m_model->SwathCount() + m_band.m_swathIndex; }
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
