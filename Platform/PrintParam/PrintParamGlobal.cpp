// Reads and replaces the print parameters under one lock.
#include "Platform/PrintParam/PrintParamGlobal.h"

void CPrintParamGlobal::Set(const SPrintParam& param)
{
    const std::lock_guard guard(m_lock);
    m_param = param;
}

SRipJobInfo CPrintParamGlobal::JobInfo_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_param.m_jobInfo;
}

SRipJobInfo CPrintParamGlobal::JobInfo_CurPrint_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_param.m_jobInfo_CurPrint;
}

int CPrintParamGlobal::CurPrint_JobWidth_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_param.m_curPrint_JobWidth;
}

EDotSizeMode CPrintParamGlobal::DotSizeMode_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_param.m_dotSizeMode;
}

int CPrintParamGlobal::AlignByteCountPerLine() const
{
    const std::lock_guard guard(m_lock);
    return m_param.m_alignByteCountPerLine;
}

const SMaskData& CPrintParamGlobal::MaskData_Ref() const
{
    return m_param.m_maskData;
}

SInkStripeParam_Pixel CPrintParamGlobal::InkStripeParam_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_param.m_inkStripeParam;
}

const CBandData* CPrintParamGlobal::InkStripeColorData_Get(int unitId) const
{
    const std::lock_guard guard(m_lock);
    const auto found = m_param.m_inkStripeColorData.find(unitId);
    return found == m_param.m_inkStripeColorData.end() ? nullptr : found->second.get();
}

const CUnitInfo_Horizon& CPrintParamGlobal::UnitInfo_Horizon() const
{
    return m_param.m_unitInfo_Horizon;
}

CPrintParamGlobal* DPD_PrintParam()
{
    static CPrintParamGlobal param;
    return &param;
}
