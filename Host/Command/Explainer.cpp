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
    const CJson left = CJson::parse(BoardInfo_Json(a));
    const CJson right = CJson::parse(BoardInfo_Json(b));
    for (const auto& [key, value] : left.items())
    {
        if (value != right.at(key))
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

int CExplainer::Swath_OfBand(std::int64_t band)
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
        if (m_ink != nullptr)
        {
            m_ink->Swath_Read(m_band.m_swathIndex);
        }
        return m_band.m_swathIndex;
    }
    if (!m_model->Info().m_bSkipBlank)
    {
        Range_Check("--band", band, m_model->SwathCount());
        m_ink->Swath_Read(static_cast<int>(band));
        return static_cast<int>(band);
    }
    std::int64_t count = 0;
    for (int swath = 0; swath < m_model->SwathCount(); ++swath)
    {
        m_ink->Swath_Read(swath);
        count += m_model->IsSkipped(swath, *m_ink) ? 0 : 1;
        if (count == band + 1)
        {
            return swath;
        }
    }
    Range_Check("--band", band, count);
    return -1; // not reached: the band is not below the count
}

std::int64_t CExplainer::Band_OfSwath(int swath)
{
    if (m_reader != nullptr)
    {
        if (m_bandNo >= 0 && m_band.m_swathIndex > swath)
        {
            Output_Begin();
        }
        while (m_bandNo < 0 || m_band.m_swathIndex < swath)
        {
            if (!Band_Next())
            {
                Output_Begin();
                break;
            }
        }
        if (m_ink != nullptr)
        {
            m_ink->Swath_Read(swath);
        }
        return m_bandNo >= 0 && m_band.m_swathIndex == swath ? m_bandNo : -1;
    }
    if (!m_model->Info().m_bSkipBlank)
    {
        m_ink->Swath_Read(swath);
        return swath;
    }
    std::int64_t band = -1;
    for (int i = 0; i <= swath; ++i)
    {
        m_ink->Swath_Read(i);
        band += m_model->IsSkipped(i, *m_ink) ? 0 : 1;
    }
    return m_model->IsSkipped(swath, *m_ink) ? -1 : band;
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

SExplanationSource CExplainer::Source_Get() const
{
    return {*m_model, m_ink.get(), m_reader == nullptr ? nullptr : &m_band};
}

SExplanation CExplainer::Nozzle_Explain(int unitId, int nozzle, int position, std::int64_t band)
{
    const SBoardUnitInfo& unit = Unit_Get(unitId);
    Range_Check("--nozzle", nozzle, m_model->Info().m_nozzles);
    const int swath = Swath_OfBand(band);
    Range_Check("--position", position, m_model->PositionCount(m_model->IsLeftToRight(swath)));
    return ::Nozzle_Explain(Source_Get(), unit, nozzle, position, swath, band);
}

SExplanation CExplainer::Pixel_Explain(int unitId, int row, int column)
{
    const SBoardUnitInfo& unit = Unit_Get(unitId);
    if (unit.m_separation.empty())
    {
        throw CInputError(BoardUnit_Text(unit) + " does not print the page: it has no separation");
    }
    Range_Check("--row", row, m_model->Info().m_pageHeight);
    Range_Check("--column", column, m_model->Info().m_pageWidth);
    const int swath = row / m_model->Info().m_nozzles;
    const std::int64_t band = Band_OfSwath(swath);
    const int position = m_model->Position_OfColumn(unit, column, m_model->IsLeftToRight(swath));
    return ::Nozzle_Explain(Source_Get(), unit, row % m_model->Info().m_nozzles, position, swath, band);
}

SExplanation CExplainer::Bit_Explain(std::int64_t band, int line, std::int64_t byte, int bit)
{
    const int swath = Swath_OfBand(band);
    Range_Check("--line", line, m_model->LineCount(m_model->IsLeftToRight(swath)));
    Range_Check("--byte", byte, m_model->LineBytes());
    Range_Check("--bit", bit, std::min<std::int64_t>(8, m_model->LineBits() - byte * 8));
    return ::Bit_Explain(Source_Get(), swath, band, {line, byte * 8 + bit});
}
