// The kernel for processors with vectors of 64 bytes (AVX-512 F, BW, DQ and VL). The build compiles this file, and no
// other code, with these instructions; MapKernel_Get() hands it out only where they can run.
#include "DataMap/Kernel/Vector64.h"
#include "DataMap/Kernel/VectorKernel.h"

namespace
{
struct STag
{
};
using Vector = SVector64<STag>;
} // namespace

constinit const SMapKernel mapKernelAvx512 = VectorKernel_Make<Vector>("avx512");
