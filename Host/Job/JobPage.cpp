// Opening a job's separations, and what an output says of the page.
#include "Host/Job/JobPage.h"

#include "Host/HostError.h"
#include "Host/Job/JobCheck.h"
#include "Host/Job/JobNames.h"
#include "Host/Job/StripeColor.h"
#include "Host/PathText.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

namespace
{

bool IsSame(const SSeparationInfo& one, const SSeparationInfo& other)
{
    return one.width == other.width && one.height == other.height && one.bitsPerPixel == other.bitsPerPixel &&
           one.xResolution == other.xResolution && one.yResolution == other.yResolution;
}

// The names of the job's pages, as the board info says them.
void Pages_Fill(const SJob& job, SBoardInfo& info)
{
    info.m_pageCount = job.m_pages.m_count;
    switch (job.m_pages.m_names)
    {
    case EPageNames::Single:
        break;
    case EPageNames::Pattern:
        info.m_pageNames = g_pageNames_Pattern;
        info.m_firstPage = job.m_pages.m_first;
        break;
    case EPageNames::List:
        info.m_pageNames = g_pageNames_List;
        break;
    }
}

SBoardUnitInfo BoardUnit_Make(const SJob& job, const SJobUnit& unit)
{
    SBoardUnitInfo info;
    info.m_unitId = unit.m_unitId;
    info.m_direction = unit.m_direction;
    info.m_name = unit.m_name;
    info.m_separation = unit.m_separation;
    info.m_unitPosition = unit.m_unitPosition;
    info.m_horizon_1 = unit.m_horizon_1;
    info.m_horizon_2 = unit.m_horizon_2;
    if (Job_HasStripes(job, unit))
    {
        info.m_stripeColor = unit.m_stripeColor.m_text;
        info.m_stripeLength = StripeColor_Length(job, unit);
    }
    return info;
}

} // namespace

CJobPage::CJobPage(std::filesystem::path file, CMistakeList& mistakes) : m_file(std::move(file))
{
    Open(mistakes);
}

CJobPage::CJobPage(std::filesystem::path file) : m_file(std::move(file))
{
    CMistakeList mistakes;
    Open(mistakes);
    mistakes.Errors_Throw();
}

void CJobPage::Open(CMistakeList& mistakes)
{
    CMistakeList own;
    m_bJob = Job_Read(m_file, m_job, own);
    if (m_bJob)
    {
        std::vector<SUnitSeparation> found;
        for (std::size_t i = 0; i < m_job.m_units.size() && !m_job.HasPageMistake(); ++i)
        {
            const bool bKnown = !m_job.m_mistaken.contains("CartInfo.Unit[" + std::to_string(i) + "].Separation");
            if (bKnown && m_job.m_units[i].HasSeparation())
            {
                Unit_Open(m_job.m_units[i], found, own);
            }
        }
        Presence_Check(own);
        Job_CheckSeparations(m_job, found, own);
        m_bPage = !own.HasErrors();
        if (m_bPage)
        {
            m_page = found.front().m_info;
            m_geometry = Job_Geometry(m_job, m_page.width, m_page.height);
        }
    }
    own.Sort();
    for (const SMistake& mistake : own.All())
    {
        mistakes.Add(mistake);
        if (mistake.m_bWarning)
        {
            m_warnings.push_back(mistake);
        }
    }
}

// Looks at the unit's pages, up to the first that is wrong. Of pages that say the same the first stands for all.
void CJobPage::Unit_Open(const SJobUnit& unit, std::vector<SUnitSeparation>& found, CMistakeList& mistakes)
{
    SPageUnit pages;
    pages.m_pUnit = &unit;
    pages.m_printed.resize(static_cast<std::size_t>(PageCount()));
    std::optional<SSeparationInfo> first;
    for (int page = 0; page < PageCount(); ++page)
    {
        const std::filesystem::path path = Job_SeparationPath(m_job, unit, page);
        std::error_code error;
        const bool bThere =
            !path.empty() && (!m_job.m_pages.m_bMissingBlank ||
                              std::filesystem::status(path, error).type() != std::filesystem::file_type::not_found);
        if (!bThere)
        {
            continue;
        }
        pages.m_printed[static_cast<std::size_t>(page)] = true;
        try
        {
            const SSeparationInfo info = SeparationInfo_Get(Path_Text(path));
            if (!first || !IsSame(info, *first))
            {
                found.push_back({&unit, page, info});
            }
            if (first && (info.width != first->width || info.height != first->height ||
                          info.bitsPerPixel != first->bitsPerPixel))
            {
                break;
            }
            first = first ? first : info;
        }
        catch (const CInputError& wrong)
        {
            mistakes.Add(Separation_Fault(m_job, unit, page, wrong));
            break;
        }
    }
    m_units.push_back(std::move(pages));
}

// A name that no file has is hardly meant, even where a page may lack a file.
void CJobPage::Presence_Check(CMistakeList& mistakes) const
{
    const auto IsPrinted = [](const SPageUnit& unit)
    { return std::ranges::find(unit.m_printed, true) != unit.m_printed.end(); };
    if (m_units.empty() || !m_job.m_pages.m_bMissingBlank || !m_job.m_mistaken.empty())
    {
        return;
    }
    const bool bAny = std::ranges::any_of(m_units, IsPrinted);
    for (const SPageUnit& unit : m_units)
    {
        if (IsPrinted(unit))
        {
            continue;
        }
        const int last = PageCount() - 1;
        const std::string files = last == 0 ? " is not there"
                                            : " and the others to " +
                                                  Text_Printable(Job_SeparationName(m_job, *unit.m_pUnit, last)) +
                                                  " are not there";
        SMistake mistake = Separation_Mistake(m_job, *unit.m_pUnit, 0, "separation-none", files,
                                              bAny ? "the unit prints nothing, since MissingIsBlank is true"
                                                   : "with MissingIsBlank, too, one page of one unit has a separation");
        mistake.m_bWarning = bAny;
        mistakes.Add(std::move(mistake));
        if (!bAny)
        {
            break;
        }
    }
}

std::unique_ptr<CSeparationReader> CJobPage::Reader_Open(const SPageUnit& unit, int page) const
{
    if (!unit.m_printed.at(static_cast<std::size_t>(page)))
    {
        return nullptr;
    }
    auto reader = std::make_unique<CSeparationReader>(Path_Text(Job_SeparationPath(m_job, *unit.m_pUnit, page)));
    const SSeparationInfo& info = reader->Info_Get();
    if (info.width != m_page.width || info.height != m_page.height || info.bitsPerPixel != m_page.bitsPerPixel)
    {
        throw CInputError(reader->Path() + ": has become " + std::to_string(info.width) + " x " +
                          std::to_string(info.height) + " pixels at " + std::to_string(info.bitsPerPixel) +
                          " bits since the job was checked");
    }
    return reader;
}

SBoardInfo Page_BoardInfo(const CJobPage& page, const std::string& generator)
{
    return Job_BoardInfo(page.Job(), page.PageInfo(), generator);
}

SBoardInfo Job_BoardInfo(const SJob& job, const SSeparationInfo& page, const std::string& generator)
{
    const SDPOption& option = job.m_dpOption;
    const SMapClass& map = MapClass_Get(job.m_map.m_class);
    SBoardInfo info;
    info.m_generator = generator;
    info.m_dataMapStyle = EnumName_Get(EnumNames_DataMapStyle(), static_cast<int>(option.m_dataMapStyle));
    info.m_dataPushStyle = EnumName_Get(EnumNames_DataPushStyle(), static_cast<int>(option.m_dataPushStyle));
    info.m_printerSupportBits =
        EnumName_Get(EnumNames_PrinterSupportBits(), static_cast<int>(option.m_printerSupportBits));
    info.m_map = map.m_pName;
    info.m_stage = EnumName_Get(EnumNames_StageKind(), static_cast<int>(job.m_stageKind));
    if (map.m_bDotSize)
    {
        info.m_dotSizeMode = EnumName_Get(EnumNames_DotSizeMode(), static_cast<int>(job.m_dotSizeMode));
    }
    info.m_printerDataWidth = option.m_printerDataWidth;
    info.m_printerDataWidthUnit = map.m_frameUnit == EFrameUnit::Bits ? "bits" : "byte columns";
    info.m_planes = map.m_bPlanePair ? 2 : 1;
    info.m_frameBits = static_cast<int>(MapClass_FrameBits(map.m_class, option.m_printerDataWidth) * info.m_planes);
    info.m_lineBits = Job_BoardWidth(job);
    info.m_bitsPerUnit = job.m_map.m_dstBitCount;
    info.m_nozzles = job.m_nozzles;
    info.m_bitsPerPixel = job.m_bitsPerPixel;
    info.m_linesPerPosition = Job_LinesPerScanPosition(job);
    info.m_bBidirectional = job.m_bBidirectional;
    info.m_bSkipBlank = job.m_bSkipBlank;
    info.m_pageWidth = page.width;
    info.m_pageHeight = page.height;
    info.m_xResolution = page.xResolution;
    info.m_yResolution = page.yResolution;
    Pages_Fill(job, info);
    const SJobInkStripe& stripe = job.m_inkStripe;
    info.m_leftZone = stripe.m_leftStripeWidth;
    info.m_rightZone = stripe.m_rightStripeWidth;
    info.m_unitPitch = stripe.m_unitPitch;
    info.m_unitPositionCount = stripe.m_unitPositionCount;
    info.m_maxOffset_1 = Job_MaxOffset(job, false);
    info.m_maxOffset_2 = Job_MaxOffset(job, true);
    std::ranges::transform(job.m_units, std::back_inserter(info.m_units),
                           [&](const SJobUnit& unit) { return BoardUnit_Make(job, unit); });
    return info;
}
