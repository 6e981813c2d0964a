// Finding the band that a question is about.
#include "Host/Command/Explainer.h"

#include "Host/Command/Command.h"
#include "Host/Command/PageBands.h"
#include "Host/HostError.h"
#include "Host/Job/JobNames.h"
#include "Host/PathText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <utility>

namespace
{

using CJson = nlohmann::ordered_json;

std::string Lower_Of(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

void Range_Check(const std::string& name, std::int64_t value, std::int64_t count)
{
    if (value < 0 || value >= count)
    {
        throw CInputError(name + " is " + std::to_string(value) + "; here it is 0 to " + std::to_string(count - 1));
    }
}

// The first name whose value the two infos do not share; empty if they are the same but for the program.
std::string Info_Difference(SBoardInfo a, const SBoardInfo& b)
{
    a.m_generator = b.m_generator;
    a.m_partFirst = b.m_partFirst;
    a.m_partLast = b.m_partLast;
    const CJson left = CJson::parse(BoardInfo_Json(a));
    const CJson right = CJson::parse(BoardInfo_Json(b));
    for (const auto& [key, value] : left.items())
    {
        if (!right.contains(key) || value != right.at(key))
        {
            return key;
        }
    }
    for (const auto& [key, value] : right.items())
    {
        if (!left.contains(key))
        {
            return key;
        }
    }
    return "";
}

// What both versions say.
std::string Info_Difference_1(const SBoardInfo& a, const SBoardInfo& b)
{
    if (a.m_map != b.m_map || a.m_printerDataWidth != b.m_printerDataWidth)
    {
        return a.m_map != b.m_map ? "Map" : "PrinterDataWidth";
    }
    return a.m_nozzles != b.m_nozzles             ? "Nozzles"
           : a.m_bitsPerPixel != b.m_bitsPerPixel ? "BitsPerPixel"
           : a.m_units.size() != b.m_units.size() ? "Units"
                                                  : "";
}

} // namespace

CExplainer::CExplainer(const std::filesystem::path& job, const std::filesystem::path& output) : m_output(output)
{
    if (!job.empty())
    {
        m_page = std::make_unique<CJobPage>(job);
        m_ink = std::make_unique<CPageInk>(*m_page);
        m_model = std::make_unique<CPageModel>(Page_BoardInfo(*m_page, ProgramName_Get()));
    }
    if (output.empty())
    {
        return;
    }
    Output_Begin();
    const SBoardInfo& info = m_reader->BoardInfo();
    if (m_page == nullptr)
    {
        if (info.m_version < g_boardVersion)
        {
            throw CInputError(Name_Shown(m_reader->Name()) +
                              ": is of version 1, which does not say where its bits are on the "
                              "page; give the job, too");
        }
        try
        {
            m_model = std::make_unique<CPageModel>(info);
        }
        catch (const CInputError& error)
        {
            throw CInputError(Name_Shown(m_reader->Name()) + ": " + error.what());
        }
        return;
    }
    const std::string difference = info.m_version < g_boardVersion ? Info_Difference_1(m_model->Info(), info)
                                                                   : Info_Difference(m_model->Info(), info);
    if (!difference.empty())
    {
        throw CInputError(Name_Shown(m_reader->Name()) + ": was not made from " + Path_Shown(job) + " as it is now: " +
                          difference + " differs; convert the job again, or give one of the two only");
    }
}

CExplainer::~CExplainer() = default;

void CExplainer::Output_Begin()
{
    m_reader = CBoardReader::Open(m_output);
    m_bandNo = -1;
}

// The band's sizes are what the model says, or none of its answers would hold.
bool CExplainer::Band_Next()
{
    if (!m_reader->Band_Read(m_band, m_pass))
    {
        return false;
    }
    ++m_bandNo;
    const std::string place = Name_Shown(m_reader->Name()) + ": " + m_reader->Place() + ": ";
    Band_CheckAgainst(*m_model, m_band, place);
    return true;
}

void CExplainer::Ink_Read(int step)
{
    if (m_ink != nullptr)
    {
        m_ink->Swath_Read(Swath_Of(step), Page_Of(step));
    }
}

int CExplainer::Step_OfBand(std::int64_t band)
{
    if (m_reader != nullptr)
    {
        if (band < m_bandNo)
        {
            Output_Begin();
        }
        while (m_bandNo < band)
        {
            if (!Band_Next())
            {
                const std::int64_t count = m_bandNo + 1;
                Output_Begin();
                Range_Check("--band", band, count);
            }
        }
        Ink_Read(Step_OfReadBand());
        return Step_OfReadBand();
    }
    if (!m_model->Info().m_bSkipBlank)
    {
        Range_Check("--band", band, StepCount());
        Ink_Read(static_cast<int>(band));
        return static_cast<int>(band);
    }
    std::int64_t count = 0;
    for (int step = 0; step < StepCount(); ++step)
    {
        Ink_Read(step);
        count += IsSkipped(step) ? 0 : 1;
        if (count == band + 1)
        {
            return step;
        }
    }
    Range_Check("--band", band, count);
    return -1; // not reached: the band is not below the count
}

std::int64_t CExplainer::Band_OfStep(int step)
{
    if (m_reader != nullptr)
    {
        if (m_bandNo >= 0 && Step_OfReadBand() > step)
        {
            Output_Begin();
        }
        while (m_bandNo < 0 || Step_OfReadBand() < step)
        {
            if (!Band_Next())
            {
                Output_Begin();
                break;
            }
        }
        Ink_Read(step);
        return m_bandNo >= 0 && Step_OfReadBand() == step ? m_bandNo : -1;
    }
    if (!m_model->Info().m_bSkipBlank)
    {
        Ink_Read(step);
        return step;
    }
    std::int64_t band = -1;
    for (int i = 0; i <= step; ++i)
    {
        Ink_Read(i);
        band += IsSkipped(i) ? 0 : 1;
    }
    return IsSkipped(step) ? -1 : band;
}

const SBoardUnitInfo& CExplainer::Unit_Get(int unitId) const
{
    if (const SBoardUnitInfo* pUnit = m_model->Unit_Find(unitId))
    {
        return *pUnit;
    }
    std::vector<std::string> known;
    for (const SBoardUnitInfo& unit : m_model->Info().m_units)
    {
        known.push_back(std::to_string(unit.m_unitId));
    }
    throw CInputError("--unit is " + std::to_string(unitId) + "; the job has " + Names_List(known, "and"));
}

int CExplainer::Unit_OfInk(const std::string& ink) const
{
    const std::string wanted = Lower_Of(ink);
    std::vector<std::string> found;
    std::vector<std::string> known;
    int id = -1;
    for (const SBoardUnitInfo& unit : m_model->Info().m_units)
    {
        if (unit.m_separation.empty())
        {
            continue;
        }
        known.push_back(unit.m_name.empty() ? unit.m_separation : unit.m_name);
        if (Lower_Of(unit.m_name) == wanted || Lower_Of(unit.m_separation) == wanted)
        {
            found.push_back(std::to_string(unit.m_unitId));
            id = unit.m_unitId;
        }
    }
    if (found.empty())
    {
        throw CInputError("--ink is " + Text_Printable(ink) + ", which no unit prints; the page has " +
                          Names_List(known, "and"));
    }
    if (found.size() > 1)
    {
        throw CInputError("--ink " + Text_Printable(ink) + " is printed by the units " + Names_List(found, "and") +
                          "; say which one with --unit");
    }
    return id;
}

SExplanationSource CExplainer::Source_Get(int step) const
{
    return {*m_model, m_ink.get(), m_reader == nullptr ? nullptr : &m_band, Page_Of(step)};
}

SExplanation CExplainer::Nozzle_Explain(int unitId, int nozzle, int position, std::int64_t band)
{
    const SBoardUnitInfo& unit = Unit_Get(unitId);
    Range_Check("--nozzle", nozzle, m_model->Info().m_nozzles);
    const int step = Step_OfBand(band);
    Range_Check("--position", position, m_model->PositionCount(m_model->IsLeftToRight(Swath_Of(step))));
    return ::Nozzle_Explain(Source_Get(step), unit, nozzle, position, Swath_Of(step), band);
}

SExplanation CExplainer::Pixel_Explain(int unitId, int row, int column, int page)
{
    const SBoardUnitInfo& unit = Unit_Get(unitId);
    if (unit.m_separation.empty())
    {
        throw CInputError(BoardUnit_Text(unit) + " does not print the page: it has no separation");
    }
    Range_Check("--page", page, m_model->PageCount());
    Range_Check("--row", row, m_model->Info().m_pageHeight);
    Range_Check("--column", column, m_model->Info().m_pageWidth);
    const int swath = row / m_model->Info().m_nozzles;
    const int step = page * m_model->SwathCount() + swath;
    const SBoardInfo* pOutput = m_reader == nullptr ? nullptr : &m_reader->BoardInfo();
    if (pOutput != nullptr && pOutput->IsPart() && (step < pOutput->m_partFirst || step > pOutput->m_partLast))
    {
        throw CInputError(Name_Shown(m_reader->Name()) + ": is the part of the bands " +
                          std::to_string(pOutput->m_partFirst) + " to " + std::to_string(pOutput->m_partLast) +
                          " of the job; the row is in band " + std::to_string(step));
    }
    const std::int64_t band = Band_OfStep(step);
    const int position = m_model->Position_OfColumn(unit, column, m_model->IsLeftToRight(swath));
    return ::Nozzle_Explain(Source_Get(step), unit, row % m_model->Info().m_nozzles, position, swath, band);
}

SExplanation CExplainer::Bit_Explain(std::int64_t band, int line, std::int64_t byte, int bit)
{
    const int step = Step_OfBand(band);
    Range_Check("--line", line, m_model->LineCount(m_model->IsLeftToRight(Swath_Of(step))));
    Range_Check("--byte", byte, m_model->LineBytes());
    Range_Check("--bit", bit, std::min<std::int64_t>(8, m_model->LineBits() - byte * 8));
    return ::Bit_Explain(Source_Get(step), Swath_Of(step), band, {line, byte * 8 + bit});
}
