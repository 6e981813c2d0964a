// From the job's values to the records of the configuration.
#include "Host/Job/JobApply.h"

#include "Host/Job/JobNames.h"
#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

namespace
{

SPrintParam PrintParam_Make(const SJob& job, int pageWidth, int pageHeight)
{
    SPrintParam param;
    param.m_jobInfo = {pageWidth, pageHeight, job.m_bitsPerPixel};
    param.m_jobInfo_CurPrint = param.m_jobInfo;
    param.m_curPrint_JobWidth = pageWidth;
    param.m_dotSizeMode = job.m_dotSizeMode;
    param.m_alignByteCountPerLine = job.m_alignByteCountPerLine;
    return param;
}

SCartInfo CartInfo_Make(const SJob& job)
{
    SCartInfo cart;
    for (const SJobUnit& unit : job.m_units)
    {
        const int index = static_cast<int>(cart.m_units.size());
        cart.m_units.push_back({unit.m_unitId, index, index, unit.m_direction});
    }
    cart.m_headBaseInfo = {static_cast<int>(cart.m_units.size()), job.m_nozzles};
    return cart;
}

// All units in one group, in the order in which the job lists them.
CColorGroupInfo ColorGroup_Make(const SJob& job)
{
    CColorGroupInfo group;
    for (const SJobUnit& unit : job.m_units)
    {
        const int position = static_cast<int>(group.m_units.size());
        group.m_units[unit.m_unitId] = {position, unit.m_unitId};
    }
    return group;
}

} // namespace

void Job_Apply(const SJob& job, int pageWidth, int pageHeight)
{
    GC_DPOption()->Set(job.m_dpOption);
    DPD_PrintParam()->Set(PrintParam_Make(job, pageWidth, pageHeight));
    GC_CartInfo()->Set(CartInfo_Make(job));
    GC_ColorGroup()->Set({{CColorGroupInfo::Key_Pattern_Layout(), ColorGroup_Make(job)}});
    GC_DPConfig()->Set(SDPConfig{});
}

SBoardInfo Job_BoardInfo(const SJob& job)
{
    const SDPOption& option = job.m_dpOption;
    SBoardInfo info;
    info.m_dataMapStyle = EnumName_Get(EnumNames_DataMapStyle(), static_cast<int>(option.m_dataMapStyle));
    info.m_dataPushStyle = EnumName_Get(EnumNames_DataPushStyle(), static_cast<int>(option.m_dataPushStyle));
    info.m_printerSupportBits =
        EnumName_Get(EnumNames_PrinterSupportBits(), static_cast<int>(option.m_printerSupportBits));
    info.m_map = MapClass_Name(job.m_map.m_class);
    info.m_printerDataWidth = option.m_printerDataWidth;
    info.m_bitsPerUnit = job.m_map.m_dstBitCount;
    info.m_nozzles = job.m_nozzles;
    info.m_bitsPerPixel = job.m_bitsPerPixel;
    for (const SJobUnit& unit : job.m_units)
    {
        info.m_units.push_back({unit.m_unitId, unit.m_direction, unit.m_name});
    }
    return info;
}
