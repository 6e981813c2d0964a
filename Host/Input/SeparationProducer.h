// Feeds one print unit: turns its separations, page by page and swath by swath, into unit bands and queues them for the
// stage.
//
// The convert command makes one producer per print unit, each with a FIFO of its own, and starts it; from then on the
// producer runs on its own thread until the last page is through, until it is stopped, or until a separation cannot be
// read any further. One separation is open at a time. How far it runs ahead of the stage is bounded by the FIFO's pool
// of bands. It never makes a band, writes no log record of its own and knows nothing of what becomes of the bands.
#pragma once

#include "Host/Input/SeparationReader.h"
#include "Host/Trace.h"
#include "KelCommon/KelBaseThread.h"
#include "Platform/DataProcess/BandDataFIFO.h"

#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// Where the page's columns lie in the bands of one pass, in scan positions from the first that the carriage meets.
struct SPassLayout
{
    int positions = 0;     // of a band; 0: as many as the page has columns
    int imagePosition = 0; // where the first column stands that the carriage meets; the positions around have no ink
};

// How a page is cut into swaths and what the bands say of it.
struct SSwathPlan
{
    int nozzles = 0;             // rows per swath, at least 1
    bool bBidirectional = false; // every other swath runs right to left, its positions in reverse
    bool bByUnitPlanes = false;  // 2-bit pixels as two 1-bit lines per position: the high bits, then the low bits
    bool bBitsAsPixels = false;  // 2-bit pixels are described as pairs of 1-bit pixels: twice as wide, the same bytes
    SPassLayout leftToRight = {};
    SPassLayout rightToLeft = {}; // bidirectional pages only
    bool bMarkBlank = false;      // a swath without any ink is marked to be skipped
    int unitIndex = 0;
    int unitDirection = 0;

    // The swaths that are wanted, counted over all pages of the job.
    int firstStep = 0;
    int stepCount = -1; // -1: those of one page
};

// Opens the unit's separation of a page, from 0; null for a page that is blank for the unit. Throws CInputError. Called
// on the producer's thread, once for each page, in their order.
using CSeparationOpener = std::function<std::unique_ptr<CSeparationReader>(int page)>;

// The size of a unit band.
struct SUnitBandSize
{
    int width = 0;        // pixels per line: the nozzles, or twice as many when bits are described as pixels
    int height = 0;       // lines: scan positions, times two when pushed as planes
    int bitsPerPixel = 0; // 1 when pushed as planes or described as bits

    bool operator==(const SUnitBandSize&) const = default;
};

// How many swaths of `nozzles` rows cover `pageRows` rows.
int SwathCount_Get(int pageRows, int nozzles);

// The size of the bands that a separation becomes under `plan`, those of the longer pass. Throws CRunError if their
// lines cannot be counted.
SUnitBandSize UnitBandSize_Get(const SSeparationInfo& separation, const SSwathPlan& plan);

// The FIFO between a producer and the stage, which counts what the stage takes.
class CUnitBandFIFO : public CBandDataFIFO
{
public:
    using CBandDataFIFO::CBandDataFIFO;

    bool Full_WaitForOut(unsigned long timeoutMs) override;
    bool Full_Out(CBandData*& band, unsigned long timeoutMs) override;

    // Bands that the stage has taken so far. Any thread.
    int TakenCount_Get() const { return m_takenCount; }

    // Has the waits of who takes bands, and the queue's length, drawn. Before any thread uses the FIFO.
    void Trace_Set(const STraceTrack& consumer, const STraceQueue& queue);
    const STraceQueue& TraceQueue_Get() const { return m_queue; }

    // When the last Full_WaitForOut was over, if it is traced. The consumer's thread.
    CTrace::CTime WaitEnd_Get() const { return m_waitEnd; }

private:
    std::atomic<int> m_takenCount{0};
    STraceTrack m_consumer;
    STraceQueue m_queue;
    CTrace::CTime m_waitEnd;
};

// Makes a FIFO with a pool of `count` (at least 1) free bands of this size, their lines aligned to `alignBytes`. `name`
// is for log records. Throws CRunError, with the sizes, if a band cannot hold so much or there is no memory.
std::unique_ptr<CUnitBandFIFO> UnitBandPool_Create(const std::string& name, const SUnitBandSize& size, int count,
                                                   int alignBytes);

class CSeparationProducer : public CKelBaseThread<CSeparationProducer>
{
public:
    // `page` is the size and depth that all separations have. `fifo` stays the caller's, must outlive the producer, and
    // has bands of UnitBandSize_Get's size only.
    CSeparationProducer(const SSeparationInfo& page, CSeparationOpener opener, const SSwathPlan& plan,
                        CBandDataFIFO* fifo);
    CSeparationProducer(const CSeparationProducer&) = delete;
    CSeparationProducer& operator=(const CSeparationProducer&) = delete;
    ~CSeparationProducer() override; // stops the thread and waits for it

    // Why the producer ended before its page did: a CInputError of the separation, or what else was thrown; null as
    // long as nothing went wrong. A producer that failed never marks its FIFO completed. Any thread, any time.
    std::exception_ptr Error_Get() const;

    // Has its work and its waits drawn, and the queue's length with them. Before it is started.
    void Trace_Set(const STraceTrack& track, const STraceQueue& queue);

    // Swaths that have been queued. Any thread, any time.
    int QueuedCount_Get() const { return m_step - m_plan.firstStep; }

    // The page of the job that it is at, from 0. Any thread, any time.
    int Page_Get() const { return m_step / m_swathCount; }

protected:
    // One swath, or a wait of up to 100 ms for a free band.
    bool OneLoop() override;

private:
    bool Swath_Produce();
    bool Rows_Read();
    void Page_Open();
    void Band_Fill(CBandData& band) const;
    void Header_Fill(SBandHeader& header) const;
    void Swath_Next();
    void Margin_Clear(CBandData& band, int firstPosition, int positionCount) const;
    std::ptrdiff_t PositionBytes(const CBandData& band) const; // from one scan position to the next
    const SPassLayout& Pass() const { return IsReverse() ? m_plan.rightToLeft : m_plan.leftToRight; }
    int Swath() const { return m_step % m_swathCount; } // of the page
    bool IsReverse() const { return m_plan.bBidirectional && Swath() % 2 == 1; }
    int SwathRows() const;
    unsigned char* Row_At(int row) { return m_rows.data() + static_cast<std::size_t>(row) * m_rowStride; }

    SSeparationInfo m_page;
    CSeparationOpener m_opener;
    std::unique_ptr<CSeparationReader> m_reader; // of the open page; null: it is blank
    int m_openPage = -1;                         // -1: none yet
    SSwathPlan m_plan;
    CBandDataFIFO* m_pFIFO; // the caller's
    SUnitBandSize m_bandSize;
    int m_linesPerPosition;
    int m_swathCount; // of a page
    int m_stepEnd;    // behind the last swath that is wanted
    std::size_t m_rowBytes;
    std::size_t m_rowStride;
    std::vector<unsigned char> m_rows; // the swath being gathered

    // Where the job stands: a swath, counted over all pages. Kept from loop to loop, so that neither a full pipeline
    // nor a stop and a new start loses rows.
    std::atomic<int> m_step;
    int m_rowsRead = 0;  // of this swath
    bool m_bInk = false; // seen in this swath, or nobody wants to know

    STraceTrack m_track;
    STraceQueue m_queue;

    mutable std::mutex m_errorLock;
    std::exception_ptr m_error; // guarded by m_errorLock
};
