// The general map with one frame per pixel: 1-bit or 2-bit unit data, each unit with its own bits of every frame.
//
// Pixel k of every unit lands in frame k; unit u owns positions SrcBitCount x u to SrcBitCount x u + SrcBitCount - 1 of
// it, most significant bit first. Lines are mapped by the base's generic mapping. Initialised on one thread, then read
// by any; never changes after Init.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"

class DATAMAPPING_API CPrintUnitDataMap_5 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_5();
    CPrintUnitDataMap_5(const CPrintUnitDataMap_5& other);
    CPrintUnitDataMap_5& operator=(const CPrintUnitDataMap_5& other);
    ~CPrintUnitDataMap_5() override;

    using CPrintUnitDataMap_Base::Init;
    // `srcBitCount`: bits per source pixel, 1 or 2; anything else is a log record from the base and one from here, and
    // false. `dataFrameWidth`: bits in one board data frame.
    virtual bool Init(int srcBitCount, int dataFrameWidth);

private:
    // Builds the table; always true.
    bool Init_MapDataBuffer();

    friend struct SMapTestAccess;
};
