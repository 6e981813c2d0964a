// The accessors of the global configuration and of the print parameters.
#include "PlainSetup.h"

#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/GlobalConfig/DPOption.h"

namespace
{

// What `container` has under `key`; otherwise `none`.
template<class Container, class Value>
Value Value_Find(const Container& container, int key, Value none)
{
    const auto found = container.find(key);
    return found == container.end() ? none : found->second;
}

} // namespace

SPlainSetup& PlainSetup_Get()
{
    static SPlainSetup setup;
    return setup;
}

// The options.

CSerialize_DPOption* GC_DPOption()
{
    static CSerialize_DPOption option;
    return &option;
}

EDataMapStyle CSerialize_DPOption::DataMapStyle_Get() const
{
    return static_cast<EDataMapStyle>(PlainSetup_Get().dataMapStyle);
}

EDataPushStyle CSerialize_DPOption::DataPushStyle_Get() const
{
    return static_cast<EDataPushStyle>(PlainSetup_Get().dataPushStyle);
}

EPrinterSupportBits CSerialize_DPOption::PrinterSupportBits_Get() const
{
    return static_cast<EPrinterSupportBits>(PlainSetup_Get().printerSupportBits);
}

int CSerialize_DPOption::PrinterDataWidth_Get() const
{
    return PlainSetup_Get().printerDataWidth;
}

CSerialize_DPConfig* GC_DPConfig()
{
    static CSerialize_DPConfig config;
    return &config;
}

int CSerialize_DPConfig::LineGeneratorCount_Of_DataMap_Get() const
{
    return PlainSetup_Get().lineGeneratorCount;
}

// The carriage.

CSerialize_CartUnit* GC_CartInfo()
{
    static CSerialize_CartUnit cart;
    return &cart;
}

const SCartUnitInfo& CSerialize_CartUnit::CartUnitInfo_Get(int unitId) const
{
    static const SCartUnitInfo none;
    for (const SCartUnitInfo& unit : PlainSetup_Get().units)
    {
        if (unit.w1 == unitId)
        {
            return unit;
        }
    }
    return none;
}

const std::list<SCartUnitInfo>& CSerialize_CartUnit::CartUnitInfo_GetAll() const
{
    return PlainSetup_Get().units;
}

const SCartHeads& CSerialize_CartUnit::CartHeadBaseInfo_Get() const
{
    return PlainSetup_Get().heads;
}

// The colour groups: there is one, that of the current pattern layout, or none.

CSerialize_ColorGroupInfo* GC_ColorGroup()
{
    static CSerialize_ColorGroupInfo groups;
    return &groups;
}

int CColorGroupInfo::Key_Pattern_Layout()
{
    return 17;
}

const CColorGroupInfo* CSerialize_ColorGroupInfo::ColorGroupInfo_By_Key(int key) const
{
    static const CColorGroupInfo group;
    return PlainSetup_Get().bHasGroup && key == CColorGroupInfo::Key_Pattern_Layout() ? &group : nullptr;
}

SColorGroupUnitInfo CColorGroupInfo::UnitInfo_Get(int unitId) const
{
    return {Value_Find(PlainSetup_Get().groupPositions, unitId, std::int32_t{0})};
}

// The print parameters.

CPrintParamGlobal* DPD_PrintParam()
{
    static CPrintParamGlobal param;
    return &param;
}

const SRipJobInfo& CPrintParamGlobal::JobInfo_Get() const
{
    return PlainSetup_Get().jobInfo;
}

const SRipJobInfo& CPrintParamGlobal::JobInfo_CurPrint_Get() const
{
    return PlainSetup_Get().jobInfo_CurPrint;
}

int CPrintParamGlobal::CurPrint_JobWidth_Get() const
{
    return PlainSetup_Get().jobWidth;
}

EDotSizeMode CPrintParamGlobal::DotSizeMode_Get() const
{
    return static_cast<EDotSizeMode>(PlainSetup_Get().dotSizeMode);
}

int CPrintParamGlobal::AlignByteCountPerLine() const
{
    return PlainSetup_Get().alignByteCountPerLine;
}

const SPlainMask& CPrintParamGlobal::MaskData_Ref() const
{
    return PlainSetup_Get().mask;
}

const SInkStripeParam_Pixel& CPrintParamGlobal::InkStripeParam_Get() const
{
    return PlainSetup_Get().inkStripes;
}

const CBandData* CPrintParamGlobal::InkStripeColorData_Get(int unitId) const
{
    return Value_Find(PlainSetup_Get().inkStripeColors, unitId, std::shared_ptr<const CBandData>()).get();
}

const CUnitInfo_Horizon& CPrintParamGlobal::UnitInfo_Horizon() const
{
    static const CUnitInfo_Horizon horizon;
    return horizon;
}

SPlainHorizon CUnitInfo_Horizon::HorizonInfo_Get(int unitId) const
{
    return Value_Find(PlainSetup_Get().horizons, unitId, SPlainHorizon{});
}

int CUnitInfo_Horizon::XMaxOffset_Right2Left_Get() const
{
    return PlainSetup_Get().xMaxOffset_Right2Left;
}

int CUnitInfo_Horizon::XMaxOffset_Left2Right_Get() const
{
    return PlainSetup_Get().xMaxOffset_Left2Right;
}
