// Sizes and memory of a band.
#include "Platform/BandData/BandData.h"

#include "Platform/BandData/BandMemory.h"

#include <limits>

static_assert(CBandData::dataAlignment == CBandMemory::alignment);

CBandData::~CBandData()
{
    Release();
}

bool CBandData::Create(int width, int height, int bitsPerPixel, int alignBytes)
{
    Release();
    if (width < 0 || height < 0 || bitsPerPixel < 1 || alignBytes < 1)
    {
        return false;
    }
    constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
    const std::int64_t lineBits = std::int64_t{width} * bitsPerPixel;
    const std::int64_t lineBytes = ((lineBits + 7) / 8 + alignBytes - 1) / alignBytes * alignBytes;
    if (lineBits > limit || lineBytes > limit || lineBytes * height > limit)
    {
        return false;
    }
    const std::int64_t dataSize = lineBytes * height;
    m_allocatedSize = static_cast<std::size_t>(dataSize);
    m_pAllocation = CBandMemory::Allocate(m_allocatedSize);
    if (m_pAllocation == nullptr)
    {
        return false;
    }
    m_pData = m_pAllocation;
    m_width = width;
    m_height = height;
    m_lineCapacity = height;
    m_bitsPerPixel = bitsPerPixel;
    m_bytesPerLine = static_cast<std::int32_t>(lineBytes);
    m_dataSize = static_cast<std::int32_t>(dataSize);
    return true;
}

bool CBandData::Height_Set(int height)
{
    if (height < 0 || height > m_lineCapacity)
    {
        return false;
    }
    m_height = height;
    m_dataSize = height * m_bytesPerLine;
    return true;
}

void CBandData::Release()
{
    CBandMemory::Release(m_pAllocation, m_allocatedSize);
    m_pAllocation = nullptr;
    m_pData = nullptr;
    m_width = 0;
    m_height = 0;
    m_lineCapacity = 0;
    m_bitsPerPixel = 0;
    m_bytesPerLine = 0;
    m_dataSize = 0;
}
