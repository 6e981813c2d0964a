// The kernel for processors with vectors of 64 bytes (AVX-512 F, BW, DQ and VL). The build compiles this file, and no
// other code, with these instructions; MapKernel_Get() hands it out only where they can run.
#include "DataMap/Vector64.h"
#include "DataMap/VectorKernel.h"

namespace
{
struct STag
{
};
using Vector = SVector64<STag>;
using Kernel = SVectorKernel<Vector>;
} // namespace

const SMapKernel mapKernelAvx512 = {"avx512",
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
