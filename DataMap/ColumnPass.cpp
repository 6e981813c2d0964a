// Byte columns into a board line: all at once by the kernel in use, one alone by plain stores.
#include "DataMap/ColumnPass.h"

#include "DataMap/MapKernelInUse.h"

#include <algorithm>

void CColumnPass::Clear()
{
    std::fill_n(m_columns, m_columnCount, nullptr);
}

void CColumnPass::Columns_Store(int byteCount, unsigned char* dst) const
{
    MapKernel_Get().m_pColumns_Store(m_columns, m_columnCount, byteCount, dst);
}

void CColumnPass::Column_Store(const unsigned char* src, int byteCount, unsigned char* dst, int columnCount)
{
    int i = 0;
    for (; byteCount - i >= 4; i += 4)
    {
        dst[0] = src[i];
        dst[columnCount] = src[i + 1];
        dst[2 * columnCount] = src[i + 2];
        dst[3 * columnCount] = src[i + 3];
        dst += 4 * columnCount;
    }
    for (; i < byteCount; ++i)
    {
        *dst = src[i];
        dst += columnCount;
    }
}
