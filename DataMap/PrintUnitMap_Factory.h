// The map factory: chooses, constructs and initialises the one data map that a conversion stage uses for a whole job.
//
// A stage calls Init_DataMap once, on the thread that creates it and before any worker runs. The choice follows the
// data-path options of the global configuration and two values of the job; the factory only reads them and keeps no
// state. Inside the library only: nothing of it is exported.
//
// Every refusal is one log record, written by the function that refuses; a failed Init leaves the map's own records and
// then one of the builder. The one refusal without a record is an unknown push style.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"
#include "Platform/PrintParam/PrintParamRecords.h"

class CPrintUnitMap_Factory
{
public:
    // The initialised map for the configured map style, the caller's to delete; null if there is none. `srcBitCount`:
    // bits per source pixel of the current job. `dotSizeMode`: the job's drop size.
    static CPrintUnitDataMap_Base* Init_DataMap(int srcBitCount, EDotSizeMode dotSizeMode);

private:
    // Map styles 6 and 7, by push style and by the data that the printer takes.
    static CPrintUnitDataMap_Base* Init_DataMap_ByPush(int srcBitCount, EDotSizeMode dotSizeMode);
    static CPrintUnitDataMap_Base* Init_DataMap_ByUnit();
    static CPrintUnitDataMap_Base* Init_DataMap_ByPixel(int srcBitCount, EDotSizeMode dotSizeMode);
    static CPrintUnitDataMap_Base* Init_DataMap_ByPixel_SupportBits_1(int srcBitCount);
    static CPrintUnitDataMap_Base* Init_DataMap_ByPixel_SupportBits_2(int srcBitCount, EDotSizeMode dotSizeMode);
    static CPrintUnitDataMap_Base* Init_DataMap_ByPixel_SupportBits_Multiple(int srcBitCount);

    // The builders, by map class. A map whose Init fails is abandoned, on purpose: it is not deleted.
    static CPrintUnitDataMap_Base* Init_DataMap_Style_1();
    static CPrintUnitDataMap_Base* Init_DataMap_Style_03();
    static CPrintUnitDataMap_Base* Init_DataMap_Style_03_01();
    static CPrintUnitDataMap_Base* Init_DataMap_Style_8();
    static CPrintUnitDataMap_Base* Init_DataMap_Style_5(int srcBitCount);
    static CPrintUnitDataMap_Base* Init_DataMap_Style_6(int srcBitCount);
    static CPrintUnitDataMap_Base* Init_DataMap_Style_2(EDotSizeMode dotSizeMode);
    static CPrintUnitDataMap_Base* Init_DataMap_Style_7(EDotSizeMode dotSizeMode);

    friend struct SMapTestAccess;
};
