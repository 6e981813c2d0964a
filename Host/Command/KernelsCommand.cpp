// The command kernels: lists the library's kernels and sets one by name.
#include "Host/Command/KernelsCommand.h"

#include "DataMap/DataMapKernel.h"
#include "Host/Command/Answer.h"
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

int Kernels_Run(const CArguments& /*arguments*/)
{
    std::string text;
    for (const std::string& name : Names_Available())
    {
        text += name + (name == CDataMapKernel::Current_Get() ? "  (chosen)\n" : "\n");
    }
    Answer_Print(text);
    return Exit_Done;
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

const SCommand& Command_Kernels()
{
    static const SCommand command = {
        .m_name = "kernels",
        .m_summary = "List the kernels, versions of the mapping's inner loops, that this machine runs",
        .m_text = "From the definition to the most demanding; behind the one that conversions use without being told\n"
                  "stands \"(chosen)\".",
        .m_examples = {{"boardmap kernels", "the names that convert --kernel takes"}},
        .m_pRun = &Kernels_Run,
    };
    return command;
}
