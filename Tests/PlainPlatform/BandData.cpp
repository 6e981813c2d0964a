// Bands: their memory. Large blocks that are given back are cleared and kept, so that a band that is made for every
// step costs its stage neither fresh pages nor the clearing.
#include "Platform/BandData/BandData.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

namespace
{

constexpr std::size_t smallestKept = 64 * 1024; // bytes
constexpr std::size_t keptLimit = 16;           // blocks

// Zeroed blocks, by size.
class CKeptMemory
{
public:
    // A block of exactly this size; null if there is none.
    std::unique_ptr<unsigned char[]> Take(std::size_t size)
    {
        const std::lock_guard guard(m_lock);
        const auto found = m_blocks.find(size);
        return found == m_blocks.end() ? nullptr : std::move(m_blocks.extract(found).mapped());
    }

    void Give(std::unique_ptr<unsigned char[]> block, std::size_t size)
    {
        std::fill_n(block.get(), size, static_cast<unsigned char>(0));
        const std::lock_guard guard(m_lock);
        if (m_blocks.size() >= keptLimit)
        {
            m_blocks.erase(m_blocks.begin());
        }
        m_blocks.emplace(size, std::move(block));
    }

private:
    std::mutex m_lock;
    std::multimap<std::size_t, std::unique_ptr<unsigned char[]>> m_blocks;
};

CKeptMemory& Kept()
{
    static CKeptMemory kept;
    return kept;
}

} // namespace

CBandData::~CBandData()
{
    Release();
}

void CBandData::Release()
{
    if (m_pMemory != nullptr && m_memorySize >= smallestKept)
    {
        Kept().Give(std::move(m_pMemory), m_memorySize);
    }
    m_pMemory.reset();
}

bool CBandData::Create(int width, int height, int bitsPerPixel, int alignBytes)
{
    Release();
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
    m_memorySize = static_cast<std::size_t>(lineLength * height);
    m_pMemory = Kept().Take(m_memorySize);
    if (m_pMemory == nullptr)
    {
        m_pMemory.reset(new (std::nothrow) unsigned char[m_memorySize]());
    }
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
