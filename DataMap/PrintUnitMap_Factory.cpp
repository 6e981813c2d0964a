// The decision table of the map factory, and one builder per map class.
#include "DataMap/PrintUnitMap_Factory.h"

#include "DataMap/PlatformWord.h"
#include "DataMap/PrintUnitDataMap_03.h"
#include "DataMap/PrintUnitDataMap_03_01.h"
#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "DataMap/PrintUnitDataMap_6.h"
#include "DataMap/PrintUnitDataMap_7.h"
#include "DataMap/PrintUnitDataMap_8.h"
#include "KelCommon/KelLog.h"
#include "Platform/GlobalConfig/DPOption.h"

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap(int srcBitCount, EDotSizeMode dotSizeMode)
{
    switch (static_cast<int>(GC_DPOption()->DataMapStyle_Get()))
    {
    case DataMapStyle_Frame16:
        return Init_DataMap_Style_1();
    case DataMapStyle_Block:
        return Init_DataMap_Style_03();
    case DataMapStyle_Block13:
        return Init_DataMap_Style_03_01();
    case DataMapStyle_FramePerPixel:
    case DataMapStyle_ByteInterleaved:
        return Init_DataMap_ByPush(srcBitCount, dotSizeMode);
    case DataMapStyle_PlanePair:
        return Init_DataMap_Style_8();
    default:
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_ByPush(int srcBitCount, EDotSizeMode dotSizeMode)
{
    switch (static_cast<int>(GC_DPOption()->DataPushStyle_Get()))
    {
    case DataPushStyle_ByUnit:
        return Init_DataMap_ByUnit();
    case DataPushStyle_ByPixel:
        return Init_DataMap_ByPixel(srcBitCount, dotSizeMode);
    default:
        return nullptr; // the one refusal without a record
    }
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_ByUnit()
{
    switch (static_cast<int>(GC_DPOption()->DataMapStyle_Get()))
    {
    case DataMapStyle_FramePerPixel:
        return Init_DataMap_Style_5(1);
    case DataMapStyle_ByteInterleaved:
        return Init_DataMap_Style_6(1);
    default:
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_ByPixel(int srcBitCount, EDotSizeMode dotSizeMode)
{
    switch (static_cast<int>(GC_DPOption()->PrinterSupportBits_Get()))
    {
    case PrinterSupportBits_One:
        return Init_DataMap_ByPixel_SupportBits_1(srcBitCount);
    case PrinterSupportBits_Two:
        return Init_DataMap_ByPixel_SupportBits_2(srcBitCount, dotSizeMode);
    case PrinterSupportBits_Multiple:
        return Init_DataMap_ByPixel_SupportBits_Multiple(srcBitCount);
    default:
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
}

// The three functions below read the data width first and have no use for it: part of how the options are asked for.

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_ByPixel_SupportBits_1(int srcBitCount)
{
    static_cast<void>(GC_DPOption()->PrinterDataWidth_Get());
    if (srcBitCount == 1)
    {
        const int style = static_cast<int>(GC_DPOption()->DataMapStyle_Get());
        if (style == DataMapStyle_FramePerPixel)
        {
            return Init_DataMap_Style_5(1);
        }
        if (style == DataMapStyle_ByteInterleaved)
        {
            return Init_DataMap_Style_6(1);
        }
    }
    KEL_LOG(kelSeverity_Failure, "failure");
    return nullptr;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_ByPixel_SupportBits_2(int srcBitCount,
                                                                                  EDotSizeMode dotSizeMode)
{
    static_cast<void>(GC_DPOption()->PrinterDataWidth_Get());
    if (srcBitCount == 1 || srcBitCount == 2)
    {
        const int style = static_cast<int>(GC_DPOption()->DataMapStyle_Get());
        if (style == DataMapStyle_FramePerPixel)
        {
            return srcBitCount == 1 ? Init_DataMap_Style_2(dotSizeMode) : Init_DataMap_Style_5(2);
        }
        if (style == DataMapStyle_ByteInterleaved)
        {
            return srcBitCount == 1 ? Init_DataMap_Style_7(dotSizeMode) : Init_DataMap_Style_6(2);
        }
    }
    KEL_LOG(kelSeverity_Failure, "failure");
    return nullptr;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_ByPixel_SupportBits_Multiple(int srcBitCount)
{
    static_cast<void>(GC_DPOption()->PrinterDataWidth_Get());
    if (srcBitCount == 1 || srcBitCount == 2)
    {
        return Init_DataMap_Style_5(srcBitCount);
    }
    KEL_LOG(kelSeverity_Failure, "failure");
    return nullptr;
}

// The builders. `new` without a matching `delete` on the failing path is what they are meant to do.

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_Style_1()
{
    auto* map = new CPrintUnitDataMap_1();
    if (!map->Init(GC_DPOption()->PrinterDataWidth_Get()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
    return map;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_Style_03()
{
    auto* map = new CPrintUnitDataMap_03();
    if (!map->Init(1, GC_DPOption()->PrinterDataWidth_Get()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
    return map;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_Style_03_01()
{
    auto* map = new CPrintUnitDataMap_03_01();
    if (!map->Init(1, GC_DPOption()->PrinterDataWidth_Get()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
    return map;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_Style_8()
{
    auto* map = new CPrintUnitDataMap_8();
    if (!map->Init(GC_DPOption()->PrinterDataWidth_Get()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
    return map;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_Style_5(int srcBitCount)
{
    auto* map = new CPrintUnitDataMap_5();
    if (!map->Init(srcBitCount, GC_DPOption()->PrinterDataWidth_Get()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
    return map;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_Style_6(int srcBitCount)
{
    auto* map = new CPrintUnitDataMap_6();
    if (!map->Init(srcBitCount, GC_DPOption()->PrinterDataWidth_Get()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
    return map;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_Style_2(EDotSizeMode dotSizeMode)
{
    auto* map = new CPrintUnitDataMap_2();
    if (!map->Init(dotSizeMode, GC_DPOption()->PrinterDataWidth_Get()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
    return map;
}

CPrintUnitDataMap_Base* CPrintUnitMap_Factory::Init_DataMap_Style_7(EDotSizeMode dotSizeMode)
{
    auto* map = new CPrintUnitDataMap_7();
    if (!map->Init(dotSizeMode, GC_DPOption()->PrinterDataWidth_Get()))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return nullptr;
    }
    return map;
}
