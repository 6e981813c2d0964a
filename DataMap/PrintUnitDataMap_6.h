// The map of map style 7 for data at the printer's own bit depth: one byte column per unit, no bit re-ordered.
//
// The board line is a row of groups of `DataFrameWidth` bytes, one source byte of each unit per group; the unit index
// is the column. There is no table: ByteMapData_Buffer has no meaning here, and lines must be mapped through
// MapData_Line. Initialised on one thread, then read by any; units write disjoint columns, so they may be mapped in
// parallel.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"

class DATAMAPPING_API CPrintUnitDataMap_6 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_6();
    CPrintUnitDataMap_6(const CPrintUnitDataMap_6& other);
    CPrintUnitDataMap_6& operator=(const CPrintUnitDataMap_6& other);
    ~CPrintUnitDataMap_6() override;

    // Stores (does not OR) the bytes of the source line in the unit's column. `dstByteCount` is not looked at. Always
    // true.
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;
    // The columns of all units at the source's bits per pixel, in bits.
    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override;

    using CPrintUnitDataMap_Base::Init;
    // `srcBitCount`: bits per source pixel, 1 or 2; anything else is a log record and false. `dataFrameWidth`: byte
    // columns of the board line.
    bool Init(int srcBitCount, int dataFrameWidth);

protected:
    // A source byte stays one byte.
    void Init_MapDataSizeOfByte() override;

private:
    // Nothing to build; always true.
    bool Init_MapDataBuffer();

    friend struct SMapTestAccess;
};
