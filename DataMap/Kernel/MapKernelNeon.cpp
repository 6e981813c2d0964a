// The kernel for 64-bit ARM processors, which all have these instructions (NEON).
#include "DataMap/Kernel/Vector16.h"
#include "DataMap/Kernel/VectorKernel.h"

namespace
{
struct STag
{
};
using Vector = SVector16<STag>;
} // namespace

constinit const SMapKernel mapKernelNeon = VectorKernel_Make<Vector>("neon");
