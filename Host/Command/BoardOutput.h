// Takes the board bands of a stage to the writer, on a thread of its own: while one is on its way to the disk, the
// stage maps the next ones into its output FIFO, and the command's main thread keeps an eye on the rest.
//
// The convert command makes one per job, after the stage has started. It takes bands in their order until the stage has
// ended and nothing is left, until it is stopped, or until a band cannot be written; what it leaves in the FIFO stays
// there. It never completes the output: that is decided by who knows that the whole job went well.
#pragma once

#include "Host/Output/BoardWriter.h"
#include "Host/Trace.h"
#include "KelCommon/KelBaseThread.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"

#include <cstdint>
#include <exception>
#include <mutex>

// What has been written.
struct SBoardCount
{
    std::int64_t bands = 0;
    std::int64_t lines = 0;
    std::int64_t bytes = 0;
};

class CBoardOutput : public CKelBaseThread<CBoardOutput>
{
public:
    // Both stay the caller's and must outlive the thread, which alone uses the writer while it runs.
    CBoardOutput(CBandDataFIFO_S& bands, CBoardWriter& writer);
    CBoardOutput(const CBoardOutput&) = delete;
    CBoardOutput& operator=(const CBoardOutput&) = delete;
    ~CBoardOutput() override; // stops the thread and waits for it, for as long as the band in hand takes

    // Has its work and its waits drawn, and the length of the stage's output with them. Before it is started.
    void Trace_Set(const STraceTrack& track, const STraceQueue& queue);

    // Any thread, any time.
    SBoardCount Count_Get() const;

    // Throws what the writer threw, if it did.
    void Error_Check() const;

protected:
    // One band, or a wait of up to 100 ms for one.
    bool OneLoop() override;

private:
    void Band_Write();

    CBandDataFIFO_S* m_pBands;
    CBoardWriter* m_pWriter;
    STraceTrack m_track;
    STraceQueue m_queue;
    mutable std::mutex m_lock; // guards the two below
    SBoardCount m_count;
    std::exception_ptr m_error;
};
