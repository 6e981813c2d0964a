// Lists the library's kernels and sets one by name.
#include "Host/Command/Kernels.h"

#include "DataMap/DataMapKernel.h"
#include "Host/HostError.h"

#include <vector>

namespace
{
std::vector<std::string> Names_Available()
{
    std::vector<std::string> names;
    for (int i = 0; i < CDataMapKernel::Count_Get(); ++i)
    {
        const char* name = CDataMapKernel::Name_Get(i);
        if (CDataMapKernel::IsAvailable(name))
        {
            names.emplace_back(name);
        }
    }
    return names;
}
} // namespace

void Kernel_Use(const std::string& name)
{
    if (name.empty() || CDataMapKernel::Current_Set(name.c_str()))
    {
        return;
    }
    std::string known;
    for (const std::string& available : Names_Available())
    {
        known += (known.empty() ? "" : ", ") + available;
    }
    throw CInputError("--kernel: \"" + name + "\" is none of those that this machine runs: " + known);
}

void Kernels_Print(std::ostream& stream)
{
    for (const std::string& name : Names_Available())
    {
        stream << name << (name == CDataMapKernel::Current_Get() ? "  (chosen)" : "") << '\n';
    }
    stream << std::flush;
}
