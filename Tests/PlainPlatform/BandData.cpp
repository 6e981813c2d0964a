// Bands: their memory.
#include "Platform/BandData/BandData.h"

#include <cstddef>
#include <limits>
#include <new>

bool CBandData::Create(int width, int height, int bitsPerPixel, int alignBytes)
{
    m_pMemory.reset();
    m_pData = nullptr;
    m_width = m_height = m_bitsPerPixel = m_bytesPerLine = m_dataSize = 0;
    if (width < 0 || height < 0 || bitsPerPixel < 1 || alignBytes < 1)
    {
        return false;
    }
    const std::int64_t lineBytes = (std::int64_t{width} * bitsPerPixel + 7) / 8;
    const std::int64_t lineLength = (lineBytes + alignBytes - 1) / alignBytes * alignBytes;
    if (lineLength > std::numeric_limits<std::int32_t>::max() ||
        lineLength * height > std::numeric_limits<std::int32_t>::max())
    {
        return false;
    }
    m_pMemory.reset(new (std::nothrow) unsigned char[static_cast<std::size_t>(lineLength * height)]());
    m_pData = m_pMemory.get();
    if (m_pData == nullptr)
    {
        return false;
    }
    m_width = width;
    m_height = height;
    m_bitsPerPixel = bitsPerPixel;
    m_bytesPerLine = static_cast<std::int32_t>(lineLength);
    m_dataSize = static_cast<std::int32_t>(lineLength * height);
    return true;
}
