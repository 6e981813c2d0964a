// The dot-size map of map style 6: 1-bit jobs on boards that take 2 bits per dot, one frame per pixel.
//
// Every set source pixel gets the 2-bit code of the one drop size that the job prints with (small 01, middle 10, big
// 11, most significant bit first). Unit u owns positions 2u and 2u + 1 of every frame; lines are mapped by the base's
// generic mapping. Initialised on one thread, then read by any; never changes after Init.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"
#include "Platform/PrintParam/PrintParamRecords.h"

class DATAMAPPING_API CPrintUnitDataMap_2 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_2();
    CPrintUnitDataMap_2(const CPrintUnitDataMap_2& other);
    CPrintUnitDataMap_2& operator=(const CPrintUnitDataMap_2& other);
    ~CPrintUnitDataMap_2() override;

    using CPrintUnitDataMap_Base::Init;
    // `dotSizeMode`: small, middle or big; anything else is a log record and false (the table, then without a set bit,
    // stays until destruction). `dataFrameWidth`: bits in one board data frame.
    bool Init(EDotSizeMode dotSizeMode, int dataFrameWidth);

private:
    // Fills the table for m_dotSizeMode; false if there is no such drop size.
    bool MapData();
    bool MapData_Small();
    bool MapData_Middle();
    bool MapData_Big();
    // Fills the table: every set pixel gets the 2-bit code `code`.
    void MapData_Fill(int code);

    std::int32_t m_dotSizeMode = 0; // the number of the mode

    friend struct SMapTestAccess;
};
