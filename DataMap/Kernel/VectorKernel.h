// A kernel made of the loops over vectors: a kernel file names the vector that it works with.
#pragma once

#include "DataMap/Kernel/VectorColumns.h"
#include "DataMap/Kernel/VectorCut.h"
#include "DataMap/Kernel/VectorField.h"
#include "DataMap/Kernel/VectorTranspose.h"

// The kernel of vectors V, whose fields may have a better way than its other loops. A constant: no instruction of a
// kernel runs before it was chosen.
template<class V, class TField = typename SSelectField<V>::Kernel>
constexpr SMapKernel VectorKernel_Make(const char* name)
{
    SMapKernel kernel = {};
    kernel.m_name = name;
    kernel.m_pRows_Transpose = SVectorTranspose<V>::Rows_Transpose;
    kernel.m_pColumns_Or = SVectorColumns<V>::template Columns_Map<false>;
    kernel.m_pColumns_Store = SVectorColumns<V>::template Columns_Map<true>;
    kernel.m_pPlanes_Split = SVectorCut<V>::Planes_Split;
    kernel.m_pQuads_Split = SVectorCut<V>::Quads_Split;
    kernel.m_pBlocks_Cut = SBlockCut<V>::Blocks_Cut;
    kernel.m_pBlocks_Interleave = SBlockCut<V>::Blocks_Interleave;
    kernel.m_pNibbles_Expand = SVectorCut<V>::Nibbles_Expand;
    TField::Functions_Set(kernel);
    return kernel;
}
