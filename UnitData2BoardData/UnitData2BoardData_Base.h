// The conversion stage: a worker thread that turns the unit bands of one step after the other into board bands.
//
// The host constructs it, gives it one input FIFO per print unit with Create, and connects the next stage to
// OutputProcessor_Get. From then on the stage's own thread runs a state machine, one state operation per OneLoop:
//
//   1 Initialize -> 2 GetInputData -> 3 AllocateOutputBuffer -> 4 Process -> 5 ReleaseInputElement -> 2 ...
//
// Every wait is bounded to 100 ms, after which the same state runs again, so that a stop request is seen within about
// that time. The stage ends by itself when all inputs are completed, or when a state operation fails. It has no lock:
// the FIFOs carry all hand-over between threads. What it maps with, the data map, is chosen once in Create from the
// global configuration.
//
// Create, OutputProcessor_Get, Stop, WaitExit and the destructor are the owner's; everything protected runs on the
// stage's thread. The owner stops the stage and waits for it before destroying it.
#pragma once

#include "DataMap/DataMappingExport.h"
#include "KelCommon/KelBaseThread.h"
#include "UnitData2BoardData/InputElement.h"

#include <cstdint>
#include <vector>

class CBandData;
class CBandDataFIFO;
class CBandDataFIFO_S;
class CPrintUnitDataMap_Base;
class CUnitData2BoardData_Base;

extern template class DATAMAPPING_API CKelBaseThread<CUnitData2BoardData_Base>;

class DATAMAPPING_API CUnitData2BoardData_Base : public CKelBaseThread<CUnitData2BoardData_Base>
{
public:
    CUnitData2BoardData_Base();
    // Member-wise: a copy shares every owned object with the original. Nothing in the library copies a stage.
    CUnitData2BoardData_Base(const CUnitData2BoardData_Base& other);
    CUnitData2BoardData_Base& operator=(const CUnitData2BoardData_Base& other);

    // Frees the output FIFO with what is still queued in it, every band that the stage still holds (those of an
    // unfinished step too) and the map.
    ~CUnitData2BoardData_Base() override;

    void Stop() override;

protected:
    bool OneLoop() override;
    bool Prepare() override;
    void Finally() override;

public:
    // Sets the stage up from the current configuration and starts its thread. With `checkInput`, a step whose bands are
    // all marked to be skipped makes no board band. The FIFOs stay the caller's and must outlive the stage; their order
    // is the order in which bands are taken and mapped. False, after a log record, if the thread could not be started.
    virtual bool Create(bool checkInput, const std::vector<CBandDataFIFO*>& inputFIFOs);

protected:
    // The state operations. True: go on (without a change of state: the same state again); false: stop as failed.
    virtual bool Initialize();
    virtual bool GetInputData();
    virtual bool AllocateOutputBuffer();

    // ORs line `line` of `input` into the same line of the board band. An input without that line adds nothing.
    virtual bool MapBandData_Line_OneInput(int line, const CBandData& input);

    // Fills the board band from all inputs.
    virtual bool GenerateBandData();

    // Capacity of the output FIFO, in bands.
    virtual int OutputBufferCount_Get();

    // Gives every input band back to its pool, or deletes it if it has none.
    virtual bool Release_InputElement_Internal();

public:
    // The output FIFO, for the next stage to read from. The stage's; null before Create.
    CBandDataFIFO_S* OutputProcessor_Get();

protected:
    int AlignBytesPerLine(); // of board bands, in bytes
    void SetState_AllocateOutputBuffer();
    void SetState_Process();
    bool Process();
    bool ReleaseInputElement();
    bool MapBandData_Line_AllInput(int line);
    bool Check_InputData(); // true if all input bands agree in height and width

    std::int32_t m_processState = 0;                        // 1 to 5; 0 until Prepare
    CPrintUnitDataMap_Base* m_pDataMap = nullptr;           // owned
    CBandDataFIFO_S* m_pOutputFIFO = nullptr;               // owned
    std::vector<SInputElement>* m_pInputElements = nullptr; // owned; the bands of the step in progress
    CBandData* m_pOutputBand = nullptr;                     // owned until the output FIFO accepts it
    std::int32_t m_outputBandNo = 0;                        // number of the next board band
    bool m_bCheckInput = false;
    std::vector<CBandDataFIFO*>* m_pInputFIFOs = nullptr; // owned list; the FIFOs are the host's

private:
    enum EProcessState : std::int32_t
    {
        State_Initialize = 1,
        State_GetInputData = 2,
        State_AllocateOutputBuffer = 3,
        State_Process = 4,
        State_ReleaseInputElement = 5,
    };

    bool ProcessState_Run();
    bool AreInputsCompleted() const;
    bool InputElements_Gather();
    bool IsStepSkipped() const;
    bool Release_Input();
    void WriteDumpFile(CBandData& band); // a hook for board dumps; does nothing
};
