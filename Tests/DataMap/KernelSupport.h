// What the kernel tests share: the kernels that run here, one forced for the length of a test, and memory with an end.
#pragma once

#include "DataMap/DataMapKernel.h"
#include "DataMap/Kernel/MapKernel.h"
#include "DataMap/Plan/MapEngine.h"
#include "Tests/DataMap/MapTestSupport.h"

#include <cstring>

// The names of the kernels that this machine can run; the definition first.
inline std::vector<std::string> KernelNames_Available()
{
    std::vector<std::string> names;
    for (int i = 0; i < CDataMapKernel::Count_Get(); ++i)
    {
        if (CDataMapKernel::IsAvailable(CDataMapKernel::Name_Get(i)))
        {
            names.emplace_back(CDataMapKernel::Name_Get(i));
        }
    }
    return names;
}

// Uses a kernel while it lives, and then again the one before.
class CKernelGuard
{
public:
    explicit CKernelGuard(const std::string& name) : m_before(CDataMapKernel::Current_Get())
    {
        if (!CDataMapKernel::Current_Set(name.c_str()))
        {
            throw std::invalid_argument("no kernel " + name);
        }
    }
    ~CKernelGuard() { CDataMapKernel::Current_Set(m_before); }
    CKernelGuard(const CKernelGuard&) = delete;
    CKernelGuard& operator=(const CKernelGuard&) = delete;

private:
    const char* m_before;
};

// A style as it is, but for a class name of its own: by contract it is mapped through MapData_Line and the look-ups.
template<class TMap>
class CLookUpMap : public TMap
{
};

// All lines at once where the map has a plan, else one after the other: as a line generator has a map map them.
inline void Lines_Map(const CPrintUnitDataMap_Base& map, const std::vector<SSrcBandLine>& lines, unsigned char* dst,
                      int dstByteCount)
{
    const SMapPlan plan = MapPlan_Get(map);
    if (plan.IsThere())
    {
        CMapEngine::Lines_Map(plan, lines.data(), static_cast<int>(lines.size()), dst, dstByteCount);
        return;
    }
    for (const SSrcBandLine& line : lines)
    {
        map.MapData_Line(line.m_param, line.m_pLine, dst, dstByteCount);
    }
}

// The record of a kernel by its name; null if it is not compiled in.
inline const SMapKernel* Kernel_Named(const std::string& name)
{
    const SMapKernel* const all[] = {
        &mapKernelScalar,
#if defined(DATAMAPPING_X86_KERNELS)
        &mapKernelSsse3,
        &mapKernelAvx2,
        &mapKernelAvx512,
        &mapKernelAvx512Gfni,
#elif defined(DATAMAPPING_ARM_KERNELS)
        &mapKernelNeon,
#endif
    };
    for (const SMapKernel* kernel : all)
    {
        if (name == kernel->m_name)
        {
            return kernel;
        }
    }
    return nullptr;
}

// Bytes at a chosen distance from a 64-byte boundary, exactly as many as asked for: on the heap, so that the address
// checker sees a read behind them, and with guard bytes on both sides, so that every build sees a write.
class CFencedBytes
{
public:
    CFencedBytes(const Bytes& content, std::size_t misalignment)
        : m_size(content.size()), m_block(new unsigned char[fence + 64 + misalignment + m_size + fence])
    {
        const auto address = reinterpret_cast<std::uintptr_t>(m_block.get() + fence);
        m_offset = fence + (64 - address % 64) % 64 + misalignment;
        std::fill_n(m_block.get(), m_offset, guard);
        std::copy(content.begin(), content.end(), Get());
        std::fill_n(Get() + m_size, fence, guard);
    }

    unsigned char* Get() const { return m_block.get() + m_offset; }
    Bytes Content() const { return Bytes(Get(), Get() + m_size); }
    bool FenceHolds() const
    {
        const auto IsGuard = [](unsigned char value) { return value == guard; };
        return std::all_of(m_block.get(), m_block.get() + m_offset, IsGuard) &&
               std::all_of(Get() + m_size, Get() + m_size + fence, IsGuard);
    }

private:
    static constexpr std::size_t fence = 160;
    static constexpr unsigned char guard = 0x5A;

    std::size_t m_size;
    std::unique_ptr<unsigned char[]> m_block;
    std::size_t m_offset = 0;
};

// Source bytes in a heap block of exactly their size, `misalignment` bytes behind its begin: one read too many, on
// either side of the block, is an error of the address checker.
class CExactBytes
{
public:
    CExactBytes(const Bytes& content, std::size_t misalignment)
        : m_block(new unsigned char[misalignment + content.size()]), m_misalignment(misalignment)
    {
        std::copy(content.begin(), content.end(), m_block.get() + misalignment);
    }
    const unsigned char* Get() const { return m_block.get() + m_misalignment; }

private:
    std::unique_ptr<unsigned char[]> m_block;
    std::size_t m_misalignment;
};
