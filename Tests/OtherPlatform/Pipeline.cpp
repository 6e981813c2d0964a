// Bands, their FIFOs, and the helpers of the maps. The FIFOs are KelCommon's templates; everything else is the plainest
// thing that keeps the promises of the headers.
#include "Platform/BandData/BandData.h"
#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/Helper/BitOperator.h"
#include "Platform/Helper/StaticHelper.h"
#include "Platform/ThreadStatus/ThreadStatus.h"

#include <algorithm>

CBandData::~CBandData()
{
    delete[] m_pData;
}

bool CBandData::Create(int width, int height, int bitsPerPixel, int alignBytes)
{
    delete[] m_pData;
    m_width = width;
    m_height = height;
    m_bitsPerPixel = bitsPerPixel;
    m_bytesPerLine = CStaticHelper::AlignBytesByBits(alignBytes, width * bitsPerPixel);
    m_dataSize = m_bytesPerLine * height;
    m_pData = new unsigned char[static_cast<std::size_t>(m_dataSize)]();
    return true;
}

CBandDataFIFO::CBandDataFIFO(const std::string& name) : m_buffer(name) {}

CBandDataFIFO::~CBandDataFIFO() = default;

bool CBandDataFIFO::Create(CBandData** bands, int count)
{
    return m_buffer.Create(bands, count);
}

bool CBandDataFIFO::Empty_Out(CBandData*& band, unsigned long timeoutMs)
{
    return m_buffer.Empty_Out(band, timeoutMs);
}

bool CBandDataFIFO::Full_In(CBandData* band, unsigned long timeoutMs)
{
    return m_buffer.Full_In(band, timeoutMs);
}

void CBandDataFIFO::SetCompletedFlag()
{
    m_bCompleted = true;
}

bool CBandDataFIFO::Full_WaitForOut(unsigned long timeoutMs)
{
    return m_buffer.FullFIFO()->HasDataEvent().Wait(timeoutMs, 0);
}

bool CBandDataFIFO::Full_Out(CBandData*& band, unsigned long timeoutMs)
{
    return m_buffer.Full_Out(band, timeoutMs);
}

bool CBandDataFIFO::Empty_In(CBandData* band, unsigned long timeoutMs)
{
    return m_buffer.Empty_In(band, timeoutMs);
}

bool CBandDataFIFO::IsCompleted()
{
    return m_bCompleted && !m_buffer.FullFIFO()->HasDataEvent().Wait(0, 0);
}

CBandDataFIFO_S::CBandDataFIFO_S(int capacity) : CKelThreadPtrFIFO_T(capacity) {}

CBandDataFIFO_S::~CBandDataFIFO_S() = default;

bool CBandDataFIFO_S::WaitForIn(unsigned timeoutMs)
{
    return HasSpaceEvent().Wait(timeoutMs, 0);
}

bool CBandDataFIFO_S::In(CBandData* band, unsigned timeoutMs)
{
    return HasSpaceEvent().Wait(timeoutMs, 0) && CKelThreadPtrFIFO_T::In(band);
}

void CBandDataFIFO_S::SetCompletedFlag()
{
    Completed_Set();
}

bool CBandDataFIFO_S::WaitForOut(unsigned timeoutMs)
{
    return HasDataEvent().Wait(timeoutMs, 0);
}

bool CBandDataFIFO_S::Out(CBandData*& band, unsigned timeoutMs)
{
    return HasDataEvent().Wait(timeoutMs, 0) && CKelThreadPtrFIFO_T::Out(band);
}

bool CBandDataFIFO_S::IsCompleted()
{
    return IsCompletedAndEmpty();
}

int CStaticHelper::AlignBytesByBits(int alignBytes, int bitCount)
{
    const int unitBits = 8 * alignBytes;
    return (bitCount + unitBits - 1) / unitBits * alignBytes;
}

bool CBitOperator::BitCopy(const unsigned char* src, int srcBitPos, unsigned char* dst, int dstBitPos, int bitCount,
                           int dstByteCount)
{
    if (std::min({srcBitPos, dstBitPos, bitCount}) < 0 || dstBitPos + bitCount > 8 * dstByteCount)
    {
        return false;
    }
    for (int i = 0; i < bitCount; ++i)
    {
        const int from = srcBitPos + i;
        const int to = dstBitPos + i;
        const unsigned mask = 0x80U >> (to % 8);
        const bool bSet = ((static_cast<unsigned>(src[from / 8]) << (from % 8)) & 0x80U) != 0;
        dst[to / 8] = static_cast<unsigned char>(bSet ? dst[to / 8] | mask : dst[to / 8] & ~mask);
    }
    return true;
}

CAutoReleaseThreadBusy::CAutoReleaseThreadBusy(ECustomThreadId id) : m_id(id) {}

CAutoReleaseThreadBusy::~CAutoReleaseThreadBusy()
{
    static_cast<void>(m_id); // nobody watches
}
