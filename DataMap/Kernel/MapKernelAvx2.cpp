// The kernel for processors with vectors of 32 bytes (AVX2). The build compiles this file, and no other
// code, with these instructions; MapKernel_Get() hands it out only where they can run.
#include "DataMap/Kernel/Vector32.h"
#include "DataMap/Kernel/VectorKernel.h"

namespace
{
struct STag
{
};
using Vector = SVector32<STag>;
} // namespace

constinit const SMapKernel mapKernelAvx2 = VectorKernel_Make<Vector>("avx2");
