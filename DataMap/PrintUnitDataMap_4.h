// An unfinished sibling of the map of style 1: it has a geometry but no table, and its Init always fails.
//
// Nothing but its own Usage makes one: constructor and destructor are private, and the map factory does not know it.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"

class DATAMAPPING_API CPrintUnitDataMap_4 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_4(const CPrintUnitDataMap_4& other);
    CPrintUnitDataMap_4& operator=(const CPrintUnitDataMap_4& other);

    using CPrintUnitDataMap_Base::Init;
    // Sets the geometry of `dataFrameWidth` bits per frame, one bit per unit; then a log record and false, always.
    bool Init(int dataFrameWidth);

    // The class's use in one example: a local map, initialised for 16-bit frames and destroyed again.
    static void Usage();

private:
    CPrintUnitDataMap_4();
    ~CPrintUnitDataMap_4() override;

    friend struct SMapTestAccess;
};
