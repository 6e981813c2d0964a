// The worked example of a map style: 1-bit unit data onto boards that keep four bits of every frame for each unit, of
// which the last one fires the nozzle.
//
// Pixel k of every unit lands in frame k; unit u owns positions 4 u to 4 u + 3 of it and sets the last of them. Lines
// are mapped by the base's generic mapping. Docs/design.md walks through this file. Initialised on one thread, then
// read by any; never changes after Init.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"

class DATAMAPPING_API CPrintUnitDataMap_Nibble : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_Nibble();
    CPrintUnitDataMap_Nibble(const CPrintUnitDataMap_Nibble& other);
    CPrintUnitDataMap_Nibble& operator=(const CPrintUnitDataMap_Nibble& other);
    ~CPrintUnitDataMap_Nibble() override;

    using CPrintUnitDataMap_Base::Init;
    // `dataFrameWidth`: bits in one board data frame, 4 for each unit. False, after a log record, if that is no
    // multiple of 4.
    bool Init(int dataFrameWidth);
};
