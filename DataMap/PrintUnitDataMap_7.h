// The dot-size map of map style 7: 1-bit jobs on boards that take 2 bits per dot, one byte column per unit.
//
// The board line is a row of groups of `DataFrameWidth` bytes, one byte (four pixels) of each unit per group; the unit
// index is the column. Every set source pixel gets the 2-bit code of the job's drop size. One table of 256 entries of
// two bytes serves all units, so ByteMapData_Buffer is only valid for unit 0, and lines must be mapped through
// MapData_Line. Initialised on one thread, then read by any; units write disjoint columns, so they may be mapped in
// parallel.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"
#include "Platform/PrintParam/PrintParamRecords.h"

class DATAMAPPING_API CPrintUnitDataMap_7 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_7();
    CPrintUnitDataMap_7(const CPrintUnitDataMap_7& other);
    CPrintUnitDataMap_7& operator=(const CPrintUnitDataMap_7& other);
    ~CPrintUnitDataMap_7() override;

    // Stores (does not OR) the unit's column: two board bytes per source byte, the last one dropped if the line does
    // not reach into its four pixels. `dstByteCount` is not looked at. Always true.
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;
    // The columns of all units at two bits per pixel, in bits.
    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override;

    using CPrintUnitDataMap_Base::Init;
    // `dotSizeMode`: small, middle or big; anything else is a log record and false. `dataFrameWidth`: byte columns of
    // the board line.
    virtual bool Init(EDotSizeMode dotSizeMode, int dataFrameWidth);

private:
    // Fills the table for m_dotSizeMode; false if there is no such drop size.
    bool MapData();
    bool MapData_Small();
    bool MapData_Middle();
    bool MapData_Big();
    // Fills the 256 entries: every set pixel gets the 2-bit code `code`.
    void MapData_Fill(int code);

    std::int32_t m_dotSizeMode = 0; // the number of the mode

    friend struct SMapTestAccess;
};
