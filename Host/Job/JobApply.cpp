// From the job's values to the records of the configuration.
#include "Host/Job/JobApply.h"

#include "Host/Job/JobGeometry.h"
#include "Host/Job/StripeColor.h"
#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

namespace
{

SInkStripeParam_Pixel InkStripeParam_Make(const SJobInkStripe& stripe)
{
    SInkStripeParam_Pixel param;
    param.leftStripeWidth = stripe.m_leftStripeWidth;
    param.rightStripeWidth = stripe.m_rightStripeWidth;
    param.unitPitch = stripe.m_unitPitch;
    param.unitPositionCount = stripe.m_unitPositionCount;
    return param;
}

CUnitInfo_Horizon UnitInfo_Horizon_Make(const SJob& job)
{
    CUnitInfo_Horizon horizon;
    for (const SJobUnit& unit : job.m_units)
    {
        horizon.m_units[unit.m_unitId] = {unit.m_unitId, unit.m_horizon_1, unit.m_horizon_2};
    }
    horizon.m_xMaxOffset_Right2Left = Job_MaxOffset(job, false);
    horizon.m_xMaxOffset_Left2Right = Job_MaxOffset(job, true);
    return horizon;
}

SPrintParam PrintParam_Make(const SJob& job, int pageWidth, int pageHeight)
{
    SPrintParam param;
    param.m_jobInfo = {pageWidth, pageHeight, job.m_bitsPerPixel};
    param.m_jobInfo_CurPrint = param.m_jobInfo;
    // What a stripe band of a scan position consists of; for style 8 it is not the job's depth.
    param.m_jobInfo_CurPrint.m_bitsPerPixel = Job_LinesPerScanPosition(job) * Job_UnitBitsPerPixel(job);
    // The stage divides by the masks: a pass covers all columns of the page.
    param.m_curPrint_JobWidth = pageWidth * job.m_maskCount_1;
    param.m_dotSizeMode = job.m_dotSizeMode;
    param.m_alignByteCountPerLine = job.m_alignByteCountPerLine;
    param.m_maskData.m_maskCount_1 = job.m_maskCount_1;
    param.m_maskData.m_maskCount_2 = job.m_maskCount_2;
    param.m_inkStripeParam = InkStripeParam_Make(job.m_inkStripe);
    param.m_inkStripeColorData = Job_StripeColors(job);
    param.m_unitInfo_Horizon = UnitInfo_Horizon_Make(job);
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
    cart.m_headBaseInfo = {static_cast<int>(cart.m_units.size()), Job_UnitWidth(job)};
    return cart;
}

// All units are one group.
CColorGroupInfo ColorGroup_Make(const SJob& job)
{
    CColorGroupInfo group;
    for (const SJobUnit& unit : job.m_units)
    {
        group.m_units[unit.m_unitId] = {unit.m_unitPosition, unit.m_unitId};
    }
    return group;
}

} // namespace

void Job_Apply(const SJob& job, int pageWidth, int pageHeight)
{
    const SPrintParam param = PrintParam_Make(job, pageWidth, pageHeight); // may throw: before anything is set
    GC_DPOption()->Set(job.m_dpOption);
    DPD_PrintParam()->Set(param);
    GC_CartInfo()->Set(CartInfo_Make(job));
    GC_ColorGroup()->Set({{CColorGroupInfo::Key_Pattern_Layout(), ColorGroup_Make(job)}});
    GC_DPConfig()->Set({job.m_lineGeneratorCount});
}
