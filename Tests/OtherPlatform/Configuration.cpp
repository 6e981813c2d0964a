// Configuration and print parameters: what the host set is what a stage reads. The accessors hand the records through.
#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

#include <algorithm>

namespace
{

// One object for the whole process, never destroyed.
template<class T>
T* Only_Get()
{
    static T* only = new T();
    return only;
}

} // namespace

CSerialize_CartUnit* GC_CartInfo()
{
    return Only_Get<CSerialize_CartUnit>();
}

SCartUnitInfo CSerialize_CartUnit::CartUnitInfo_Get(int unitId) const
{
    const auto found = std::find_if(m_info.m_units.begin(), m_info.m_units.end(),
                                    [unitId](const SCartUnitInfo& unit) { return unit.m_unitId == unitId; });
    SCartUnitInfo none;
    none.m_unitId = unitId;
    return found == m_info.m_units.end() ? none : *found;
}

std::vector<SCartUnitInfo> CSerialize_CartUnit::CartUnitInfo_GetAll() const
{
    return m_info.m_units;
}

SCartHeadBaseInfo CSerialize_CartUnit::CartHeadBaseInfo_Get() const
{
    return m_info.m_headBaseInfo;
}

const std::string& CColorGroupInfo::Key_Pattern_Layout()
{
    return *Only_Get<std::string>();
}

SColorGroupUnitInfo CColorGroupInfo::UnitInfo_Get(int unitId) const
{
    const auto found = m_units.find(unitId);
    return found == m_units.end() ? SColorGroupUnitInfo{0, unitId} : found->second;
}

const CColorGroupInfo* CSerialize_ColorGroupInfo::ColorGroupInfo_By_Key(const std::string& key) const
{
    const auto found = m_groups.find(key);
    return found == m_groups.end() ? nullptr : &found->second;
}

CSerialize_ColorGroupInfo* GC_ColorGroup()
{
    return Only_Get<CSerialize_ColorGroupInfo>();
}

CSerialize_DPConfig* GC_DPConfig()
{
    return Only_Get<CSerialize_DPConfig>();
}

CSerialize_DPOption* GC_DPOption()
{
    return Only_Get<CSerialize_DPOption>();
}

void CSerialize_DPOption::Set(const SDPOption& option)
{
    m_option = option;
}

EDataMapStyle CSerialize_DPOption::DataMapStyle_Get() const
{
    return m_option.m_dataMapStyle;
}

EDataPushStyle CSerialize_DPOption::DataPushStyle_Get() const
{
    return m_option.m_dataPushStyle;
}

EPrinterSupportBits CSerialize_DPOption::PrinterSupportBits_Get() const
{
    return m_option.m_printerSupportBits;
}

int CSerialize_DPOption::PrinterDataWidth_Get() const
{
    return m_option.m_printerDataWidth;
}

CPrintParamGlobal* DPD_PrintParam()
{
    return Only_Get<CPrintParamGlobal>();
}

void CPrintParamGlobal::Set(const SPrintParam& param)
{
    m_param = param;
}

SRipJobInfo CPrintParamGlobal::JobInfo_Get() const
{
    return m_param.m_jobInfo;
}

SRipJobInfo CPrintParamGlobal::JobInfo_CurPrint_Get() const
{
    return m_param.m_jobInfo_CurPrint;
}

int CPrintParamGlobal::CurPrint_JobWidth_Get() const
{
    return m_param.m_curPrint_JobWidth;
}

EDotSizeMode CPrintParamGlobal::DotSizeMode_Get() const
{
    return m_param.m_dotSizeMode;
}

int CPrintParamGlobal::AlignByteCountPerLine() const
{
    return m_param.m_alignByteCountPerLine;
}

const SMaskData& CPrintParamGlobal::MaskData_Ref() const
{
    return m_param.m_maskData;
}

SInkStripeParam_Pixel CPrintParamGlobal::InkStripeParam_Get() const
{
    return m_param.m_inkStripeParam;
}

const CBandData* CPrintParamGlobal::InkStripeColorData_Get(int unitId) const
{
    const auto found = m_param.m_inkStripeColorData.find(unitId);
    return found == m_param.m_inkStripeColorData.end() ? nullptr : found->second.get();
}

const CUnitInfo_Horizon& CPrintParamGlobal::UnitInfo_Horizon() const
{
    return m_param.m_unitInfo_Horizon;
}
