// Sums of squares of dots.
#include "Host/Picture/RowReduction.h"

#include <algorithm>
#include <cstddef>

CRowReduction::CRowReduction(CPngWriter& writer, std::int64_t width, int channels, int reduce)
    : m_writer(writer), m_width(width), m_channels(channels), m_reduce(reduce)
{
    if (reduce > 1)
    {
        m_sums.resize(static_cast<std::size_t>(Reduced_Of(width, reduce) * channels));
        m_row.resize(m_sums.size());
    }
}

void CRowReduction::Row_Add(const unsigned char* pDots)
{
    if (m_reduce == 1)
    {
        m_writer.Row_Write(pDots);
        return;
    }
    std::uint64_t* pSum = m_sums.data();
    int inSquare = 0;
    for (std::int64_t x = 0; x < m_width; ++x, pDots += m_channels)
    {
        if (inSquare == m_reduce)
        {
            inSquare = 0;
            pSum += m_channels;
        }
        ++inSquare;
        for (int channel = 0; channel < m_channels; ++channel)
        {
            pSum[channel] += pDots[channel];
        }
    }
    if (++m_rows == m_reduce)
    {
        Row_Write();
    }
}

void CRowReduction::Row_Write()
{
    for (std::size_t i = 0; i < m_sums.size(); ++i)
    {
        const std::int64_t first = static_cast<std::int64_t>(i) / m_channels * m_reduce;
        const auto dots = static_cast<std::uint64_t>(m_rows) *
                          static_cast<std::uint64_t>(std::min<std::int64_t>(m_reduce, m_width - first));
        m_row[i] = static_cast<unsigned char>((m_sums[i] + dots / 2) / dots);
    }
    m_writer.Row_Write(m_row.data());
    std::ranges::fill(m_sums, std::uint64_t{0});
    m_rows = 0;
}

void CRowReduction::Finish()
{
    if (m_rows > 0)
    {
        Row_Write();
    }
    m_writer.Finish();
}
