// The band converter: maps one band with several line generators at once.
//
// A one-shot worker. The ink-stripe stage makes one for each board band, calls Create, waits with WaitExit and destroys
// it. The converter's thread hands out line indices through a buffer of 20 recycled elements and collects them when
// they are done; it never touches pixel data. An index may stand for a run of lines, see LineRun.h. When every line has
// come back the converter stops and joins its generators and ends.
//
// Create, WaitExit, Stop and the destructor are the owner's; the converter also calls Stop on itself.
#pragma once

#include "DataMap/DataMappingExport.h"
#include "KelCommon/KelBaseThread.h"
#include "KelCommon/KelThreadBuffer_T.h"

#include <cstdint>

class CBandData;
class CPrintUnitDataMap_Base;
class CUnit2Board;
class CUnit2Board_Line;

extern template class DATAMAPPING_API CKelBaseThread<CUnit2Board>;

class DATAMAPPING_API CUnit2Board : public CKelBaseThread<CUnit2Board>
{
public:
    CUnit2Board();
    // Member-wise: a copy shares every owned object with the original. Nothing in the library copies a converter.
    CUnit2Board(const CUnit2Board& other);
    CUnit2Board& operator=(const CUnit2Board& other);

    // Frees the buffer, the array and the generators. Neither stops nor waits: the threads must have ended.
    ~CUnit2Board() override;

    // Starts the generators, then the converter's own thread. `srcBands` (`srcBandCount` bands) is copied; the bands,
    // the destination and the map stay the caller's and must outlive the threads. The destination must be zero-filled
    // and decides how many lines there are. False, after log records, if a thread could not be started. No thread runs
    // then, nor after an exception, which passes.
    bool Create(int lineGeneratorCount, CBandData** srcBands, int srcBandCount, CBandData& dstBand,
                const CPrintUnitDataMap_Base& dataMap);

    // True, too, for a band that could not be finished: the log tells that.
    bool WaitExit(unsigned int timeoutMs) override;

    // Stops and joins all generators, then requests the end of the own loop. Any thread, the converter's own included.
    void Stop() override;

protected:
    bool OneLoop() override;
    bool Prepare() override;

private:
    enum EProcessState : std::int32_t
    {
        State_Initialize = 1,
        State_AddSourceLine = 2,
        State_Process = 3,
    };

    bool ProcessState_Run();
    bool Initialize();
    bool AddSourceLine();
    bool Process();
    bool Create_LineGenerator();
    bool Release_LineGenerator();
    bool Stop_LineGenerator();
    template<class Action>
    void LineGenerator_ForEach(Action action);

    std::int32_t m_processState = 0;
    CUnit2Board_Line** m_pLineGenerators = nullptr; // owned array of owned generators
    std::int32_t m_lineGeneratorCount = 1;
    std::int32_t m_addedLineCount = 0;    // lines handed out; the next line's index
    std::int32_t m_finishedLineCount = 0; // lines collected
    const CPrintUnitDataMap_Base* m_pDataMap = nullptr;
    CBandData** m_pSrcBands = nullptr; // owned copy of the caller's array
    std::int32_t m_srcBandCount = 0;
    CBandData* m_pDstBand = nullptr;
    CKelThreadBuffer_T<int>* m_pLineBuffer = nullptr; // owned; see CLineBuffer

    friend struct SConverterTestAccess;
};
