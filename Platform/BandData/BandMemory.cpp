// Blocks from the system, and the list of those that are kept.
//
// A block in use begins with a line that says what block it is; the data follows some lines later, not always as many:
// bands of one step are read side by side, and if all began at the same place of a page they would crowd each other out
// of the cache.
//
// All bytes of a block behind its first line are zero except while a band has them: fresh memory is, and the data is
// cleared when it is given back. So a kept block serves any band that fits, at any place, and who takes it does not
// wait until it is cleared.
//
// Under AddressSanitizer everything of a block that is not data is forbidden, and all of it while it is kept, as the
// general allocator would have it.
#include "Platform/BandData/BandMemory.h"

#include "Compiler/KelCompiler.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace
{

constexpr std::size_t pageSize = 4096;
constexpr std::size_t hugePageSize = std::size_t{2} << 20;
constexpr std::size_t lineSize = CBandMemory::alignment;

// A block of whole pages. While it is in use this record stands in its first line.
struct SBlock
{
    unsigned char* begin; // of a page; null: no block
    std::size_t size;
    void* memory; // what the system gave: the block, or something in front of it
};
static_assert(sizeof(SBlock) <= lineSize);

constexpr std::size_t RoundUp(std::size_t size, std::size_t unit)
{
    return (size + unit - 1) / unit * unit;
}

// The begin of the block, within whose first page the data begins.
unsigned char* BlockBegin_Of(unsigned char* data)
{
    return data - reinterpret_cast<std::uintptr_t>(data) % pageSize;
}

unsigned char* Data_Place(const SBlock& block)
{
    constexpr unsigned places = pageSize / lineSize - 1;
    static std::atomic<unsigned> next{0};
    const unsigned place = next++ * 5 % places; // 5: the lines behind the first one are soon wanted too
    return block.begin + (1 + place) * lineSize;
}

// Room for the data at any of its places, in whole pages; in whole huge pages where that wastes less than a quarter.
std::size_t BlockSize_Of(std::size_t dataSize)
{
    const std::size_t size = RoundUp(dataSize + pageSize, pageSize);
    const std::size_t huge = RoundUp(size, hugePageSize);
    return huge - size < huge / 4 ? huge : size;
}

// The system's part. Fresh memory is zero.

#if defined(__linux__)

SBlock Block_Make(std::size_t size)
{
    const bool bHuge = size % hugePageSize == 0;
    const std::size_t reserve = bHuge ? size + hugePageSize : size;
    void* memory = mmap(nullptr, reserve, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
    {
        return {};
    }
    if (bHuge)
    {
        // Huge pages lie at multiples of their size; the memory before and behind them goes back.
        auto* begin = static_cast<unsigned char*>(memory);
        const auto address = reinterpret_cast<std::uintptr_t>(memory);
        const std::size_t before = RoundUp(address, hugePageSize) - address;
        if (before > 0)
        {
            munmap(begin, before);
        }
        munmap(begin + before + size, hugePageSize - before);
        memory = begin + before;
        madvise(memory, size, MADV_HUGEPAGE); // a wish
    }
    return {static_cast<unsigned char*>(memory), size, memory};
}

void Block_Free(const SBlock& block)
{
    KEL_MEMORY_PERMIT(block.begin, block.size);
    munmap(block.memory, block.size);
}

#else

SBlock Block_Make(std::size_t size)
{
    // calloc, because it hands out large blocks as untouched zero pages instead of clearing them a second time.
    void* memory = std::calloc(size + pageSize, 1);
    if (memory == nullptr)
    {
        return {};
    }
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    return {static_cast<unsigned char*>(memory) + (RoundUp(address, pageSize) - address), size, memory};
}

void Block_Free(const SBlock& block)
{
    KEL_MEMORY_PERMIT(block.begin, block.size);
    std::free(block.memory);
}

#endif

using Blocks = std::vector<SBlock>;

void Blocks_Free(const Blocks& blocks)
{
    std::for_each(blocks.begin(), blocks.end(), Block_Free);
}

// The kept blocks, and the count of everything. Blocks that are to be freed are handed to the caller, who does it when
// the lock is free again.
class CKeptBlocks
{
public:
    // Never destroyed: bands may outlive whatever is.
    static CKeptBlocks& Get()
    {
        static auto* kept = new CKeptBlocks();
        return *kept;
    }

    // The smallest kept block that has the size and not half as much again. No block if there is none; the caller then
    // makes one of that size, which counts as in use from now on: a block that comes back meanwhile is one more, not
    // the same.
    SBlock Take(std::size_t size)
    {
        const std::lock_guard guard(m_lock);
        auto best = m_blocks.end();
        for (auto i = m_blocks.begin(); i != m_blocks.end(); ++i)
        {
            const bool bFits = i->size >= size && i->size - size <= size / 2;
            if (bFits && (best == m_blocks.end() || i->size < best->size))
            {
                best = i;
            }
        }
        if (best == m_blocks.end())
        {
            ++m_statistic.m_freshBlocks;
            InUse_Add(size);
            return {};
        }
        const SBlock block = *best;
        m_blocks.erase(best);
        m_statistic.m_keptBytes -= Size(block);
        ++m_statistic.m_reusedBlocks;
        InUse_Add(block.size);
        return block;
    }

    // There was no memory for the block that Take has counted.
    void Fresh_Discount(std::size_t size)
    {
        const std::lock_guard guard(m_lock);
        --m_statistic.m_freshBlocks;
        m_statistic.m_inUseBytes -= static_cast<std::int64_t>(size);
    }

    // Kept blocks for which there is no room any more.
    Blocks Surplus()
    {
        const std::lock_guard guard(m_lock);
        return Surplus_Take();
    }

    // Keeps a block that is no longer in use. Returns those for which there is no room any more, perhaps itself.
    Blocks Keep(const SBlock& block)
    {
        const std::lock_guard guard(m_lock);
        m_statistic.m_inUseBytes -= Size(block);
        m_statistic.m_keptBytes += Size(block);
        m_blocks.push_back(block);
        if (++m_roundCount >= CBandMemory::blocksPerRound)
        {
            m_roundCount = 0;
            m_formerPeak = std::exchange(m_peak, m_statistic.m_inUseBytes);
        }
        return Surplus_Take();
    }

    Blocks All_Take()
    {
        const std::lock_guard guard(m_lock);
        m_statistic.m_keptBytes = 0;
        return std::exchange(m_blocks, {});
    }

    Blocks Reuse_Set(bool bOn)
    {
        const std::lock_guard guard(m_lock);
        m_bOn = bOn;
        return Surplus_Take();
    }

    SBandMemoryStatistic Statistic_Get()
    {
        const std::lock_guard guard(m_lock);
        SBandMemoryStatistic statistic = m_statistic;
        statistic.m_peakBytes = Peak();
        return statistic;
    }

private:
    static std::int64_t Size(const SBlock& block) { return static_cast<std::int64_t>(block.size); }
    std::int64_t Peak() const { return std::max(m_peak, m_formerPeak); }

    void InUse_Add(std::size_t size)
    {
        m_statistic.m_inUseBytes += static_cast<std::int64_t>(size);
        m_peak = std::max(m_peak, m_statistic.m_inUseBytes);
    }

    // The oldest first.
    Blocks Surplus_Take()
    {
        const std::int64_t inUse = m_statistic.m_inUseBytes;
        const std::int64_t limit = m_bOn && inUse > 0 ? Peak() - inUse : 0;
        Blocks surplus;
        auto i = m_blocks.begin();
        for (; i != m_blocks.end() && m_statistic.m_keptBytes > limit; ++i)
        {
            m_statistic.m_keptBytes -= Size(*i);
            surplus.push_back(*i);
        }
        m_blocks.erase(m_blocks.begin(), i);
        return surplus;
    }

    std::mutex m_lock;
    Blocks m_blocks; // the oldest first
    SBandMemoryStatistic m_statistic;
    std::int64_t m_peak = 0; // the most bytes in use in this round
    std::int64_t m_formerPeak = 0;
    int m_roundCount = 0;
    bool m_bOn = true;
};

// When the library is unloaded.
struct SCloser
{
    ~SCloser() { CBandMemory::Reuse_Set(false); }
} g_closer;

unsigned char* Block_Allocate(std::size_t dataSize)
{
    const std::size_t size = BlockSize_Of(dataSize);
    SBlock block = CKeptBlocks::Get().Take(size);
    if (block.begin == nullptr)
    {
        block = Block_Make(size);
        if (block.begin == nullptr)
        {
            CBandMemory::Trim(); // kept blocks of other sizes may be what is missing
            block = Block_Make(size);
        }
        if (block.begin == nullptr)
        {
            CKeptBlocks::Get().Fresh_Discount(size);
            return nullptr;
        }
        Blocks_Free(CKeptBlocks::Get().Surplus());
    }
    unsigned char* data = Data_Place(block);
    KEL_MEMORY_PERMIT(block.begin, lineSize);
    new (block.begin) SBlock(block);
    KEL_MEMORY_FORBID(block.begin, block.size);
    KEL_MEMORY_PERMIT(data, dataSize);
    return data;
}

void Block_Release(unsigned char* data, std::size_t dataSize)
{
    std::memset(data, 0, dataSize);
    unsigned char* begin = BlockBegin_Of(data);
    KEL_MEMORY_PERMIT(begin, lineSize);
    const SBlock block = *std::launder(reinterpret_cast<SBlock*>(begin));
    KEL_MEMORY_FORBID(begin, block.size);
    Blocks_Free(CKeptBlocks::Get().Keep(block));
}

// Small blocks are the general allocator's, aligned by hand; its own pointer stands in front of the data.

std::size_t SmallRoom_Of(std::size_t dataSize)
{
    return RoundUp(dataSize + sizeof(void*) + lineSize, sizeof(void*));
}

unsigned char* Small_Allocate(std::size_t dataSize)
{
    const std::size_t room = SmallRoom_Of(dataSize);
    void* memory = std::calloc(room, 1);
    if (memory == nullptr)
    {
        return nullptr;
    }
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(memory) + sizeof(memory);
    unsigned char* data = static_cast<unsigned char*>(memory) + sizeof(memory) + (RoundUp(begin, lineSize) - begin);
    std::memcpy(data - sizeof(memory), &memory, sizeof(memory));
    KEL_MEMORY_FORBID(memory, room);
    KEL_MEMORY_PERMIT(data, dataSize);
    return data;
}

void Small_Release(unsigned char* data, [[maybe_unused]] std::size_t dataSize)
{
    void* memory = nullptr;
    KEL_MEMORY_PERMIT(data - sizeof(memory), sizeof(memory));
    std::memcpy(&memory, data - sizeof(memory), sizeof(memory));
    KEL_MEMORY_PERMIT(memory, SmallRoom_Of(dataSize));
    std::free(memory);
}

} // namespace

unsigned char* CBandMemory::Allocate(std::size_t size)
{
    return size >= smallestKept ? Block_Allocate(size) : Small_Allocate(size);
}

void CBandMemory::Release(unsigned char* data, std::size_t size)
{
    if (data != nullptr)
    {
        size >= smallestKept ? Block_Release(data, size) : Small_Release(data, size);
    }
}

std::int64_t CBandMemory::Trim()
{
    const Blocks blocks = CKeptBlocks::Get().All_Take();
    std::int64_t bytes = 0;
    for (const SBlock& block : blocks)
    {
        bytes += static_cast<std::int64_t>(block.size);
    }
    Blocks_Free(blocks);
    return bytes;
}

void CBandMemory::Reuse_Set(bool bOn)
{
    Blocks_Free(CKeptBlocks::Get().Reuse_Set(bOn));
}

SBandMemoryStatistic CBandMemory::Statistic_Get()
{
    return CKeptBlocks::Get().Statistic_Get();
}
