// The kernel for processors with vectors of 16 bytes (SSSE3). The build compiles this file, and no other
// code, with these instructions; MapKernel_Get() hands it out only where they can run.
#include "DataMap/Vector16.h"
#include "DataMap/VectorKernel.h"

namespace
{
struct STag
{
};
using Vector = SVector16<STag>;
using Kernel = SVectorKernel<Vector>;
} // namespace

const SMapKernel mapKernelSsse3 = {"ssse3",
                                   &SSelectField<Vector>::functions,
                                   nullptr,
                                   Kernel::Rows_Transpose,
                                   Kernel::Columns_Map<false>,
                                   Kernel::Columns_Map<true>,
                                   Kernel::Planes_Split,
                                   Kernel::Quads_Split,
                                   SBlockKernel<Vector>::Blocks_Cut,
                                   SBlockKernel<Vector>::Blocks_Interleave,
                                   Kernel::Nibbles_Expand};
