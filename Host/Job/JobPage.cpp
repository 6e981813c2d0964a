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
#include <utility>

namespace
{

// Null, with a mistake that names the unit and its line, if the separation cannot be read.
std::unique_ptr<CSeparationReader> Reader_Open(const SJob& job, const SJobUnit& unit, CMistakeList& mistakes)
{
    try
    {
        return std::make_unique<CSeparationReader>(Path_Text(unit.m_separationPath));
    }
    catch (const CInputError& error)
    {
        mistakes.Add(Separation_Fault(job, unit, error));
        return nullptr;
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
        std::vector<std::optional<SSeparationInfo>> infos;
        for (const SJobUnit& unit : m_job.m_units)
        {
            if (unit.HasSeparation())
            {
                auto reader = Reader_Open(m_job, unit, own);
                infos.push_back(reader == nullptr ? std::nullopt : std::optional(reader->Info_Get()));
                m_units.push_back({&unit, std::move(reader)});
            }
        }
        Job_CheckSeparations(m_job, infos, own);
        m_bPage = !own.HasErrors();
        if (m_bPage)
        {
            m_page = infos.front().value();
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
