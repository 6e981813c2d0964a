// Gathers the unit bands of a step from their FIFOs into one band set, for the stage that takes whole sets.
//
// The convert command makes one when the job asks for the one-FIFO stage. It runs on its own thread. The stage deletes
// the bands that it takes, while the FIFOs recycle theirs; so the feeder copies each band into a new one and gives the
// original back at once.
#pragma once

#include "Host/Trace.h"
#include "KelCommon/KelBaseThread.h"
#include "Platform/DataProcess/BandDataFIFO.h"
#include "UnitData2BoardData/UnitData2BoardData_AllUnit_2.h"

#include <memory>
#include <vector>

class CBandSetFeeder : public CKelBaseThread<CBandSetFeeder>
{
public:
    using CBandSetFIFO = CUnitData2BoardData_AllUnit_2::CBandSetFIFO;

    // `inputs` (at least one) and `output` stay the caller's and must outlive the thread. With `bDropBlank`, a set
    // whose bands are all marked to be skipped is not passed on.
    CBandSetFeeder(std::vector<CBandDataFIFO*> inputs, CBandSetFIFO& output, bool bDropBlank);
    CBandSetFeeder(const CBandSetFeeder&) = delete;
    CBandSetFeeder& operator=(const CBandSetFeeder&) = delete;
    ~CBandSetFeeder() override; // stops the thread and waits for it

    // Has its waits for room drawn, and the queue's length with them. Before it is started.
    void Trace_Set(const STraceTrack& track, const STraceQueue& queue);

    // Takes every set that is still queued and frees it with its bands; the FIFO itself would free the records only.
    static void Sets_Free(CBandSetFIFO& fifo);

protected:
    bool OneLoop() override;

private:
    bool Space_Wait() const;
    bool Step_Gather();
    bool Set_Push();
    bool IsStepBlank() const;
    bool AreInputsCompleted() const;

    std::vector<CBandDataFIFO*> m_inputs;
    CBandSetFIFO* m_pOutput;
    bool m_bDropBlank;
    STraceTrack m_track;
    STraceQueue m_queue;
    std::vector<std::unique_ptr<CBandData>> m_step; // copies of the bands gathered so far
};
