// The ink-stripe stage fed by one FIFO: every element is the set of bands of a whole step.
//
// The producer allocates the record, its array and the bands with `new`; from the moment the stage takes an element all
// of it is the stage's, which deletes the bands when their step is done. A null element is the end of the input. There
// is no skip test and no pool.
#pragma once

#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "KelCommon/SBufferData.h"
#include "UnitData2BoardData/UnitData2BoardData_S_AllUnit.h"

class DATAMAPPING_API CUnitData2BoardData_AllUnit_2 : public CUnitData2BoardData_S_AllUnit
{
public:
    using CBandSetFIFO = CKelThreadPtrFIFO_T<SBufferData<CBandData*>>;

    CUnitData2BoardData_AllUnit_2();
    // Member-wise: a copy shares every owned object with the original. Nothing in the library copies a stage.
    CUnitData2BoardData_AllUnit_2(const CUnitData2BoardData_AllUnit_2& other);
    CUnitData2BoardData_AllUnit_2& operator=(const CUnitData2BoardData_AllUnit_2& other);
    ~CUnitData2BoardData_AllUnit_2() override;

    // Sets the stage up from the current configuration and starts its thread. The FIFO stays the caller's and must
    // outlive the stage. The output FIFO holds a single band. False, after a log record, if the thread could not be
    // started.
    bool Create(CBandSetFIFO& inputFIFO);

protected:
    bool GetInputData() override;
    bool Release_InputElement_Internal() override;

    CBandSetFIFO* m_pInputBufferFIFO = nullptr; // the host's

private:
    // Inherited, but without use here: this stage has no FIFO per unit.
    using CUnitData2BoardData_S_AllUnit::Create;

    bool BandSet_Take(SBufferData<CBandData*>*& bandSet);
};
