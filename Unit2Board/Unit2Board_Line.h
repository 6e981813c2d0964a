// A line generator: one of the worker threads of the band converter.
//
// The converter makes, starts, stops, joins and deletes its generators; nobody else does. A generator takes a line
// index from the converter's line buffer, maps that line of every source band into the same line of the destination
// band, and hands the index back as finished. Where an index stands for a run of lines it maps them one after the
// other. Generators share the map and the source bands, which nobody writes, and the destination band, of which each
// writes only the lines whose index it holds; so the bands have no lock. What the map needs per thread is the
// generator's own scratch object.
//
// It allocates nothing per line.
#pragma once

#include "DataMap/Plan/MapEngine.h"
#include "KelCommon/KelBaseThread.h"
#include "KelCommon/KelThreadBuffer_T.h"

#include <cstdint>

class CBandData;
class CPrintUnitDataMap_Base;

class CUnit2Board_Line : public CKelBaseThread<CUnit2Board_Line>
{
public:
    CUnit2Board_Line() = default;
    CUnit2Board_Line(const CUnit2Board_Line& other) = default;
    CUnit2Board_Line& operator=(const CUnit2Board_Line& other) = default;

    // Deletes the buffer element that is still held, if any. The thread must have ended.
    ~CUnit2Board_Line() override;

    // Starts the thread. Everything stays the caller's, the array of source bands too, and must outlive the thread.
    // False, after a log record, if the thread could not be started.
    bool Create(CKelThreadBuffer_T<int>& buffer, const CPrintUnitDataMap_Base& dataMap, CBandData** srcBands,
                int srcBandCount, CBandData& dstBand);

    // Before Create: an index stands for the `lineRun` lines that begin there, as far as the band has them. Without it,
    // for one line.
    void LineRun_Set(int lineRun) { m_lineRun = lineRun; }

protected:
    bool OneLoop() override;
    bool Prepare() override;
    void Finally() override;

private:
    enum EProcessState : std::int32_t
    {
        State_CreateParam = 1,
        State_TakeLine = 2,
        State_Process = 3,
        State_AddDstData = 4,
    };

    bool ProcessState_Run();
    bool CustomParam_Make();
    bool Line_Take();
    bool Process();
    bool AddDstData();
    bool MapBandData_Run(int firstLine);
    bool MapBandData_Line_AllInput(int lineIndex);
    void MapBandData_Line_OnePass(int lineIndex);
    bool MapBandData_Line_OneInput(int lineIndex, const CBandData& srcBand);
    SSrcBandLine SrcLine_Get(int lineIndex, const CBandData& srcBand) const;

    std::int32_t m_processState = 0;
    const CPrintUnitDataMap_Base* m_pDataMap = nullptr;
    void* m_pCustomParam = nullptr;    // the map's scratch object; made and released on this thread
    CBandData** m_pSrcBands = nullptr; // the converter's array
    std::int32_t m_srcBandCount = 0;
    CBandData* m_pDstBand = nullptr;
    CKelThreadBuffer_T<int>* m_pLineBuffer = nullptr; // the converter's
    int* m_pLineIndex = nullptr;                      // the element held; owned while it is

    // Not part of what is published of a generator.
    std::int32_t m_lineRun = 1;
    SMapPlan m_plan; // the map's, if it is the library's own: all bands of a line are then mapped at once

    friend struct SConverterTestAccess;
};
