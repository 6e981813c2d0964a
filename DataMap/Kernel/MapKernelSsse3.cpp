// The kernel for processors with vectors of 16 bytes (SSSE3). The build compiles this file, and no other
// code, with these instructions; MapKernel_Get() hands it out only where they can run.
#include "DataMap/Kernel/Vector16.h"
#include "DataMap/Kernel/VectorKernel.h"

namespace
{
struct STag
{
};
using Vector = SVector16<STag>;
} // namespace

constinit const SMapKernel mapKernelSsse3 = VectorKernel_Make<Vector>("ssse3");
