// The list of kernels, the choice among them, and the one in use.
#include "DataMap/DataMapKernel.h"

#include "DataMap/Kernel/CpuFeature.h"
#include "DataMap/Kernel/MapKernelInUse.h"

#include <iterator>
#include <string_view>

namespace
{
struct SKernelEntry
{
    const SMapKernel* m_pKernel;
    bool (*m_pCanRun)(const SCpuFeatures& features);
};

// From the definition to the most demanding; the last that can run is the best.
constexpr SKernelEntry kernels[] = {
    {&mapKernelScalar, [](const SCpuFeatures& /*features*/) { return true; }},
#if defined(DATAMAPPING_X86_KERNELS)
    {&mapKernelSsse3, [](const SCpuFeatures& features) { return features.m_bSsse3; }},
    {&mapKernelAvx2, [](const SCpuFeatures& features) { return features.m_bAvx2; }},
    {&mapKernelAvx512, [](const SCpuFeatures& features) { return features.m_bAvx512; }},
    {&mapKernelAvx512Gfni, [](const SCpuFeatures& features) { return features.m_bAvx512Gfni; }},
#elif defined(DATAMAPPING_ARM_KERNELS)
    {&mapKernelNeon, [](const SCpuFeatures& /*features*/) { return true; }},
#endif
};

const SMapKernel& Kernel_Best()
{
    const SCpuFeatures features = CpuFeatures_Get();
    const SMapKernel* best = &mapKernelScalar;
    for (const SKernelEntry& entry : kernels)
    {
        best = entry.m_pCanRun(features) ? entry.m_pKernel : best;
    }
    return *best;
}

// Null if there is none of this name, or none that can run here.
const SMapKernel* Kernel_Find(const char* name)
{
    const SCpuFeatures features = CpuFeatures_Get();
    for (const SKernelEntry& entry : kernels)
    {
        if (name != nullptr && std::string_view(entry.m_pKernel->m_name) == name && entry.m_pCanRun(features))
        {
            return entry.m_pKernel;
        }
    }
    return nullptr;
}
} // namespace

std::atomic<const SMapKernel*> mapKernelInUse = nullptr;

// The first caller's choice counts, unless a kernel has been set meanwhile.
const SMapKernel& MapKernel_Choose()
{
    const SMapKernel* none = nullptr;
    const SMapKernel& best = Kernel_Best();
    return mapKernelInUse.compare_exchange_strong(none, &best) ? best : *none;
}

int CDataMapKernel::Count_Get()
{
    return static_cast<int>(std::size(kernels));
}

const char* CDataMapKernel::Name_Get(int index)
{
    return index >= 0 && index < Count_Get() ? kernels[index].m_pKernel->m_name : nullptr;
}

bool CDataMapKernel::IsAvailable(const char* name)
{
    return Kernel_Find(name) != nullptr;
}

const char* CDataMapKernel::Current_Get()
{
    return MapKernel_Get().m_name;
}

bool CDataMapKernel::Current_Set(const char* name)
{
    const SMapKernel* kernel = Kernel_Find(name);
    if (kernel == nullptr)
    {
        return false;
    }
    mapKernelInUse.store(kernel, std::memory_order_relaxed);
    return true;
}
