// The map of configuration map style 1: 1-bit unit data onto boards with 16-bit frames, one bit per unit, sixteen
// units.
//
// The frames of two neighbouring pixels share a group of four bytes in which pixel order and byte order are reversed;
// the rest is the base's generic mapping. Initialised on one thread, then read by any; never changes after Init.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"

class DATAMAPPING_API CPrintUnitDataMap_1 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_1();
    CPrintUnitDataMap_1(const CPrintUnitDataMap_1& other);
    CPrintUnitDataMap_1& operator=(const CPrintUnitDataMap_1& other);
    ~CPrintUnitDataMap_1() override;

    using CPrintUnitDataMap_Base::Init;
    // `dataFrameWidth`: bits in one board data frame. Only 16 has a table: any other width is a log record with the
    // width, and false.
    bool Init(int dataFrameWidth);

    // The class's use in one example: a local map, initialised for 16-bit frames and destroyed again.
    static void Usage();

protected:
    // One source byte becomes 8 frames: as many bytes as the frame has bits.
    void Init_MapDataSizeOfByte() override;

private:
    bool Init_DataWidth_16();

    friend struct SMapTestAccess;
};
