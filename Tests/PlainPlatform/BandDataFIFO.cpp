// The band FIFOs: the queue, the contract's operations, and what stands behind them.
#include "PlainFIFO.h"
#include "PlainHook.h"
#include "PlainLog.h"

namespace
{

// Says to the test, if there is one, that a wait was asked for.
void Wait_Tell(const char* operation, unsigned long timeoutMs)
{
    if (CPlainWaitListener* const listener = SPlainHook::waitListener; listener != nullptr)
    {
        listener->FIFOWait(operation, timeoutMs);
    }
}

// An output queue.
class CPlainOutputQueue : public CPlainOutput::CQueue
{
public:
    explicit CPlainOutputQueue(int capacity) : m_bands(static_cast<std::size_t>(capacity)) {}

    bool WaitForIn(unsigned timeoutMs) override { return m_bands.Space_Wait(timeoutMs); }
    bool In(CBandData* band, unsigned timeoutMs) override { return m_bands.Put(band, timeoutMs); }
    void SetCompletedFlag() override
    {
        m_monitor.Change([this] { m_bCompleted = true; });
    }
    bool WaitForOut(unsigned timeoutMs) override { return m_bands.Data_Wait(timeoutMs); }
    bool Out(CBandData*& band, unsigned timeoutMs) override { return m_bands.Take(band, timeoutMs); }
    bool IsCompleted() override
    {
        return m_monitor.Look([this] { return m_bCompleted; }) && m_bands.IsEmpty();
    }

private:
    CPlainQueue m_bands;
    CPlainMonitor m_monitor; // guards m_bCompleted
    bool m_bCompleted = false;
};

} // namespace

// The queue.

CPlainQueue::~CPlainQueue()
{
    for (CBandData* band : m_bands)
    {
        delete band;
    }
}

bool CPlainQueue::Data_Wait(unsigned long timeoutMs)
{
    return m_monitor.Wait([this] { return HasData(); }, timeoutMs);
}

bool CPlainQueue::Space_Wait(unsigned long timeoutMs)
{
    return m_monitor.Wait([this] { return HasSpace(); }, timeoutMs);
}

bool CPlainQueue::Put(CBandData* band, unsigned long timeoutMs)
{
    return m_monitor.WaitAndChange([this] { return HasSpace(); }, timeoutMs, [&] { m_bands.push_back(band); });
}

bool CPlainQueue::Take(CBandData*& band, unsigned long timeoutMs)
{
    const auto Take = [&]
    {
        band = m_bands.front();
        m_bands.pop_front();
    };
    return m_monitor.WaitAndChange([this] { return HasData(); }, timeoutMs, Take);
}

bool CPlainQueue::IsEmpty()
{
    return m_monitor.Look([this] { return m_bands.empty(); });
}

// The input side.

bool CBandDataFIFO::Full_WaitForOut(unsigned long timeoutMs)
{
    Wait_Tell("Full_WaitForOut", timeoutMs);
    return m_pool.Full_WaitForOut(timeoutMs);
}

bool CBandDataFIFO::Full_Out(CBandData*& band, unsigned long timeoutMs)
{
    Wait_Tell("Full_Out", timeoutMs);
    return m_pool.Full_Out(band, timeoutMs);
}

bool CBandDataFIFO::Empty_In(CBandData* band, unsigned long timeoutMs)
{
    Wait_Tell("Empty_In", timeoutMs);
    return m_pool.Empty_In(band, timeoutMs);
}

bool CBandDataFIFO::IsCompleted()
{
    return m_pool.IsCompleted();
}

namespace
{

constexpr std::size_t unbounded = static_cast<std::size_t>(-1); // a pool's bound is the bands that it was given

} // namespace

CPlainPool::CPlainPool()
    : CBandDataFIFO(static_cast<CBandDataFIFO::CPool&>(*this)), m_empty(unbounded), m_full(unbounded)
{
}

CPlainPool::~CPlainPool() = default;

bool CPlainPool::Create(CBandData** bands, int count)
{
    for (int i = 0; i < count; ++i)
    {
        m_empty.Put(bands[i], 0);
    }
    return true;
}

bool CPlainPool::Empty_Out(CBandData*& band, unsigned long timeoutMs)
{
    return m_empty.Take(band, timeoutMs);
}

bool CPlainPool::Full_In(CBandData* band, unsigned long timeoutMs)
{
    return m_full.Put(band, timeoutMs);
}

void CPlainPool::SetCompletedFlag()
{
    m_monitor.Change([this] { m_bCompleted = true; });
}

bool CPlainPool::Full_WaitForOut(unsigned long timeoutMs)
{
    return m_full.Data_Wait(timeoutMs);
}

bool CPlainPool::Full_Out(CBandData*& band, unsigned long timeoutMs)
{
    return m_full.Take(band, timeoutMs);
}

bool CPlainPool::Empty_In(CBandData* band, unsigned long timeoutMs)
{
    return m_empty.Put(band, timeoutMs);
}

bool CPlainPool::IsCompleted()
{
    return m_monitor.Look([this] { return m_bCompleted; }) && m_full.IsEmpty();
}

// The output side.

std::unique_ptr<CPlainOutput::CQueue> CPlainOutput::Queue_Make(int capacity)
{
    if (capacity < 1)
    {
        PlainLog_CapacityRefused(capacity);
        throw 0;
    }
    return std::make_unique<CPlainOutputQueue>(capacity);
}

CBandDataFIFO_S::CBandDataFIFO_S(int capacity) : m_pQueue(CPlainOutput::Queue_Make(capacity)) {}

CBandDataFIFO_S::CBandDataFIFO_S(std::unique_ptr<CQueue> queue) : m_pQueue(std::move(queue)) {}

CBandDataFIFO_S::~CBandDataFIFO_S() = default;

bool CBandDataFIFO_S::WaitForIn(unsigned timeoutMs)
{
    Wait_Tell("WaitForIn", timeoutMs);
    return m_pQueue->WaitForIn(timeoutMs);
}

bool CBandDataFIFO_S::In(CBandData* band, unsigned timeoutMs)
{
    Wait_Tell("In", timeoutMs);
    return m_pQueue->In(band, timeoutMs);
}

void CBandDataFIFO_S::SetCompletedFlag()
{
    m_pQueue->SetCompletedFlag();
}
