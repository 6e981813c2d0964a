// The producer of unit bands; see the header.
//
// The rows of a swath are read before a band is asked for: reading goes on while the stage still holds every band, and
// a separation that turns out to be damaged leaves no band in the producer's hands.
#include "Host/Input/SeparationProducer.h"

#include "Host/HostError.h"
#include "Host/Input/SwathTurn.h"
#include "KelCommon/KelWait.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

namespace
{

int Positions_Get(const SPassLayout& pass, int pageColumns)
{
    return pass.positions > 0 ? pass.positions : pageColumns;
}

std::string Size_Text(const SUnitBandSize& size)
{
    return "a unit band of " + std::to_string(size.width) + " nozzles x " + std::to_string(size.height) + " lines at " +
           std::to_string(size.bitsPerPixel) + (size.bitsPerPixel == 1 ? " bit" : " bits");
}

std::int64_t DataSize_Get(const SUnitBandSize& size, int alignBytes)
{
    const std::int64_t lineBytes = (std::int64_t{size.width} * size.bitsPerPixel + 7) / 8;
    return (lineBytes + alignBytes - 1) / alignBytes * alignBytes * size.height;
}

// Every byte equals its neighbour and the first is 0: memcmp looks at blank rows much faster than a loop over bytes.
bool HasInk(const unsigned char* row, std::size_t bytes)
{
    return row[0] != 0 || std::memcmp(row, row + 1, bytes - 1) != 0;
}

std::unique_ptr<CBandData> Band_Create(const SUnitBandSize& size, int alignBytes)
{
    auto band = std::make_unique<CBandData>();
    if (!band->Create(size.width, size.height, size.bitsPerPixel, alignBytes))
    {
        const std::int64_t dataSize = DataSize_Get(size, alignBytes);
        constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
        throw CRunError(Size_Text(size) + " needs " + std::to_string(dataSize) + " bytes; " +
                        (dataSize > limit ? "a band can hold " + std::to_string(limit) : "there is no memory for it"));
    }
    return band;
}

} // namespace

void CUnitBandFIFO::Trace_Set(const STraceTrack& consumer, const STraceQueue& queue)
{
    m_consumer = consumer;
    m_queue = queue;
}

bool CUnitBandFIFO::Full_WaitForOut(unsigned long timeoutMs)
{
    const bool bFound = m_consumer.Stall_Watch(
        m_queue, [&] { return CBandDataFIFO::Full_WaitForOut(timeoutMs); },
        [&] { return ConsumerStall_Get().m_count; });
    m_waitEnd = m_consumer.Now();
    return bFound;
}

bool CUnitBandFIFO::Full_Out(CBandData*& band, unsigned long timeoutMs)
{
    const bool bTaken = m_consumer.Stall_Watch(
        m_queue, [&] { return CBandDataFIFO::Full_Out(band, timeoutMs); }, [&] { return ConsumerStall_Get().m_count; });
    m_takenCount += bTaken ? 1 : 0;
    if (bTaken)
    {
        m_queue.Change(-1);
    }
    return bTaken;
}

int SwathCount_Get(int pageRows, int nozzles)
{
    return (pageRows - 1) / nozzles + 1;
}

SUnitBandSize UnitBandSize_Get(const SSeparationInfo& separation, const SSwathPlan& plan)
{
    const int linesPerPosition = SwathLinesPerPosition_Get(separation.bitsPerPixel, plan.bByUnitPlanes);
    const int positions = std::max(Positions_Get(plan.leftToRight, separation.width),
                                   plan.bBidirectional ? Positions_Get(plan.rightToLeft, separation.width) : 0);
    const std::int64_t lines = std::int64_t{positions} * linesPerPosition;
    if (lines > std::numeric_limits<std::int32_t>::max())
    {
        throw CRunError("a unit band of " + std::to_string(lines) + " lines; a band can hold " +
                        std::to_string(std::numeric_limits<std::int32_t>::max()));
    }
    const int bitsPerPixel = separation.bitsPerPixel / linesPerPosition;
    const int pixelsPerNozzle = plan.bBitsAsPixels ? bitsPerPixel : 1;
    return {plan.nozzles * pixelsPerNozzle, static_cast<int>(lines), bitsPerPixel / pixelsPerNozzle};
}

std::unique_ptr<CUnitBandFIFO> UnitBandPool_Create(const std::string& name, const SUnitBandSize& size, int count,
                                                   int alignBytes)
{
    std::vector<std::unique_ptr<CBandData>> bands;
    bands.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i)
    {
        bands.push_back(Band_Create(size, alignBytes));
    }
    std::vector<CBandData*> pointers;
    std::ranges::transform(bands, std::back_inserter(pointers), [](const auto& band) { return band.get(); });
    auto fifo = std::make_unique<CUnitBandFIFO>(name);
    if (!fifo->Create(pointers.data(), count))
    {
        throw CRunError("the band FIFO " + name + " does not take its " + std::to_string(count) + " bands");
    }
    std::ranges::for_each(bands, [](auto& band) { static_cast<void>(band.release()); }); // the FIFO's now
    return fifo;
}

CSeparationProducer::CSeparationProducer(const SSeparationInfo& page, CSeparationOpener opener, const SSwathPlan& plan,
                                         CBandDataFIFO* fifo)
    : m_page(page),
      m_opener(std::move(opener)),
      m_plan(plan),
      m_pFIFO(fifo),
      m_bandSize(UnitBandSize_Get(page, plan)),
      m_linesPerPosition(SwathLinesPerPosition_Get(page.bitsPerPixel, plan.bByUnitPlanes)),
      m_swathCount(SwathCount_Get(page.height, plan.nozzles)),
      m_stepEnd(plan.firstStep + (plan.stepCount < 0 ? m_swathCount : plan.stepCount)),
      m_rowBytes((static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.bitsPerPixel) + 7) / 8),
      m_rowStride(SwathRowStride_Get(m_rowBytes)),
      m_rows(static_cast<std::size_t>(std::min(plan.nozzles, page.height)) * m_rowStride),
      m_step(plan.firstStep)
{
}

CSeparationProducer::~CSeparationProducer()
{
    Stop();
    WaitExit(std::numeric_limits<unsigned int>::max());
}

void CSeparationProducer::Trace_Set(const STraceTrack& track, const STraceQueue& queue)
{
    m_track = track;
    m_queue = queue;
}

std::exception_ptr CSeparationProducer::Error_Get() const
{
    const std::lock_guard guard(m_errorLock);
    return m_error;
}

bool CSeparationProducer::OneLoop()
{
    if (Error_Get() != nullptr)
    {
        return false;
    }
    try
    {
        return Swath_Produce();
    }
    catch (...)
    {
        const std::lock_guard guard(m_errorLock);
        m_error = std::current_exception();
        return false;
    }
}

bool CSeparationProducer::Swath_Produce()
{
    if (m_step < m_stepEnd)
    {
        CBandData* freeBand = nullptr;
        const bool bBand = Rows_Read() && m_track.Stall_Watch(
                                              m_queue, [&] { return m_pFIFO->Empty_Out(freeBand, kelWait_Retried); },
                                              [&] { return m_pFIFO->ProducerStall_Get().m_count; });
        if (!bBand)
        {
            return true;
        }
        std::unique_ptr<CBandData> band(freeBand);
        const CTrace::CTime begin = m_track.Now();
        Band_Fill(*band);
        m_track.Span_Add("turn", begin, {{"page", band->m_pageIndex}, {"swath", band->m_swathIndex}});
        m_queue.Change(1); // before it can be taken
        if (!m_pFIFO->Full_In(band.get(), kelWait_Retried))
        {
            throw CRunError("unit " + std::to_string(m_plan.unitIndex) + ": the band FIFO is full beyond its pool");
        }
        static_cast<void>(band.release()); // the FIFO's now
        Swath_Next();
    }
    if (m_step == m_stepEnd)
    {
        m_pFIFO->SetCompletedFlag();
        Stop();
    }
    return true;
}

// Reads what is missing of the swath; false if a stop was requested meanwhile.
bool CSeparationProducer::Rows_Read()
{
    if (m_rowsRead == SwathRows())
    {
        return true;
    }
    const CTrace::CTime begin = m_track.Now();
    if (Page_Get() != m_openPage)
    {
        Page_Open();
    }
    if (m_reader == nullptr)
    {
        m_rowsRead = SwathRows();
        m_bInk = !m_plan.bMarkBlank;
        return true;
    }
    for (; m_rowsRead < SwathRows(); ++m_rowsRead)
    {
        if (IsStopRequested())
        {
            return false;
        }
        unsigned char* row = Row_At(m_rowsRead);
        m_reader->Row_Read(row);
        m_bInk = m_bInk || !m_plan.bMarkBlank || HasInk(row, m_rowBytes);
    }
    m_track.Span_Add("read", begin, {{"page", Page_Get()}, {"swath", Swath()}, {"rows", m_rowsRead}});
    return true;
}

// The page that the job stands at, from the swath on at which it stands.
void CSeparationProducer::Page_Open()
{
    m_reader.reset();
    m_reader = m_opener(Page_Get());
    if (m_reader != nullptr)
    {
        m_reader->Rows_Skip(Swath() * m_plan.nozzles);
    }
    m_openPage = Page_Get();
}

void CSeparationProducer::Band_Fill(CBandData& band) const
{
    const SPassLayout& pass = Pass();
    const int positions = Positions_Get(pass, m_page.width);
    if (band.m_width != m_bandSize.width || band.m_bitsPerPixel != m_bandSize.bitsPerPixel ||
        !band.Height_Set(positions * m_linesPerPosition))
    {
        throw CRunError("unit " + std::to_string(m_plan.unitIndex) + ": the pool has a band of the wrong size");
    }
    Header_Fill(band);
    if (m_reader == nullptr)
    {
        Margin_Clear(band, 0, positions);
        return;
    }
    const int imageEnd = pass.imagePosition + m_page.width;
    Margin_Clear(band, 0, pass.imagePosition);
    Margin_Clear(band, imageEnd, positions - imageEnd);

    SSwathShape shape;
    shape.rowCount = m_rowsRead;
    shape.columnCount = m_page.width;
    shape.nozzles = m_plan.nozzles;
    shape.bitsPerPixel = m_page.bitsPerPixel;
    shape.bReverse = IsReverse();
    shape.bUnitPlanes = m_plan.bByUnitPlanes;
    shape.rowStride = m_rowStride;
    shape.lineStride = static_cast<std::size_t>(band.m_bytesPerLine);
    Swath_Turn(m_rows.data(), band.m_pData + pass.imagePosition * PositionBytes(band), shape);
}

void CSeparationProducer::Margin_Clear(CBandData& band, int firstPosition, int positionCount) const
{
    const std::ptrdiff_t positionBytes = PositionBytes(band);
    std::memset(band.m_pData + firstPosition * positionBytes, 0,
                static_cast<std::size_t>(positionCount * positionBytes));
}

std::ptrdiff_t CSeparationProducer::PositionBytes(const CBandData& band) const
{
    return std::ptrdiff_t{band.m_bytesPerLine} * m_linesPerPosition;
}

void CSeparationProducer::Header_Fill(SBandHeader& header) const
{
    header = SBandHeader{};
    header.m_bandNo = QueuedCount_Get();
    header.m_bandAttr = IsReverse() ? 2 : 1;
    header.m_swathIndex = Swath();
    header.m_pageIndex = Page_Get();
    header.m_unitIndex = m_plan.unitIndex;
    header.m_unitDirection = m_plan.unitDirection;
    header.m_firstRow = Swath() * m_plan.nozzles;
    header.m_rowCount = m_rowsRead;
    header.m_columnCount = m_page.width;
    header.m_bSkip = m_plan.bMarkBlank && !m_bInk;
}

void CSeparationProducer::Swath_Next()
{
    ++m_step;
    m_rowsRead = 0;
    m_bInk = false;
}

int CSeparationProducer::SwathRows() const
{
    return std::min(m_plan.nozzles, m_page.height - Swath() * m_plan.nozzles);
}
