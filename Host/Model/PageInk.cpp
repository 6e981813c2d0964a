// Rows of separations, kept for a swath.
#include "Host/Model/PageInk.h"

#include "Host/PathText.h"

#include <algorithm>
#include <cstddef>

int CPageInk::SRows::Get(int row, int column) const
{
    if (m_bytes.empty())
    {
        return 0;
    }
    const std::size_t bit = static_cast<std::size_t>(column) * static_cast<std::size_t>(m_bits);
    const std::size_t at = static_cast<std::size_t>(row) * m_rowBytes + bit / 8;
    const int shift = 8 - m_bits - static_cast<int>(bit % 8);
    return m_bytes.at(at) >> shift & ((1 << m_bits) - 1);
}

CPageInk::CPageInk(const CJobPage& page) : m_job(page)
{
    for (const SPageUnit& unit : page.Units())
    {
        m_units[unit.m_pUnit->m_unitId].m_pPages = &unit;
    }
    for (const SJobUnit& unit : page.Job().m_units)
    {
        SUnitInk& ink = m_units[unit.m_unitId];
        ink.m_pUnit = &unit;
        if (!unit.HasSeparation() && unit.m_stripeColor.IsGiven())
        {
            Stripe_Open(ink);
        }
    }
}

void CPageInk::Stripe_Open(SUnitInk& ink) const
{
    const int most = (1 << m_job.Job().m_bitsPerPixel) - 1;
    if (const std::optional<EStripeFill> fill = ink.m_pUnit->m_stripeColor.m_fill)
    {
        // None, Small, Middle and Big are the values 0 to 3; a 1-bit job has only none and full.
        ink.m_solid = *fill == EStripeFill::Full ? most : std::min(static_cast<int>(*fill), most);
        return;
    }
    if (m_job.Job().m_inkStripe.m_leftStripeWidth + m_job.Job().m_inkStripe.m_rightStripeWidth < 1)
    {
        return; // the file is never looked at, and need not be there
    }
    CSeparationReader reader(Path_Text(ink.m_pUnit->m_stripeColor.m_path));
    ink.m_stripe.m_bits = reader.BitsPerPixel();
    ink.m_stripe.m_rowBytes = static_cast<std::size_t>(reader.RowBytes());
    ink.m_stripe.m_bytes.resize(ink.m_stripe.m_rowBytes * static_cast<std::size_t>(reader.Height()));
    for (unsigned char* pRow = ink.m_stripe.m_bytes.data(); reader.Row_Read(pRow);)
    {
        pRow += ink.m_stripe.m_rowBytes;
        if (pRow == ink.m_stripe.m_bytes.data() + ink.m_stripe.m_bytes.size())
        {
            break;
        }
    }
}

void CPageInk::Swath_Read(int swath, int page)
{
    if (swath == m_swath && page == m_page)
    {
        return;
    }
    const bool bBegin = page != m_page || swath < m_swath;
    for (auto& [id, ink] : m_units)
    {
        if (ink.m_pPages == nullptr)
        {
            continue;
        }
        if (bBegin)
        {
            ink.m_reader = m_job.Reader_Open(*ink.m_pPages, page);
            ink.m_nextRow = 0;
        }
        if (ink.m_reader == nullptr)
        {
            ink.m_rows = {};
            ink.m_bBlank = true;
            continue;
        }
        const std::int64_t firstRow = std::int64_t{swath} * m_job.Job().m_nozzles;
        std::vector<unsigned char> skipped(static_cast<std::size_t>(ink.m_reader->RowBytes()));
        for (; ink.m_nextRow < firstRow && ink.m_reader->Row_Read(skipped.data()); ++ink.m_nextRow)
        {
        }
        Rows_Read(ink);
    }
    m_page = page;
    m_swath = swath;
}

void CPageInk::Rows_Read(SUnitInk& ink)
{
    const int rows = std::clamp(m_job.Height() - ink.m_nextRow, 0, m_job.Job().m_nozzles);
    SRows& kept = ink.m_rows;
    kept.m_bits = ink.m_reader->BitsPerPixel();
    kept.m_rowBytes = static_cast<std::size_t>(ink.m_reader->RowBytes());
    kept.m_bytes.resize(kept.m_rowBytes * static_cast<std::size_t>(rows));
    for (int row = 0; row < rows; ++row, ++ink.m_nextRow)
    {
        ink.m_reader->Row_Read(kept.m_bytes.data() + static_cast<std::size_t>(row) * kept.m_rowBytes);
    }
    ink.m_bBlank = std::ranges::all_of(kept.m_bytes, [](unsigned char byte) { return byte == 0; });
}

int CPageInk::Page_Get(const SBoardUnitInfo& unit, int row, int column) const
{
    const std::int64_t firstRow = std::int64_t{m_swath} * m_job.Job().m_nozzles;
    return Unit_Get(unit.m_unitId).m_rows.Get(static_cast<int>(row - firstRow), column);
}

int CPageInk::Stripe_Get(const SBoardUnitInfo& unit, int nozzle, int stripePosition) const
{
    const SUnitInk& ink = Unit_Get(unit.m_unitId);
    return ink.m_solid >= 0 ? ink.m_solid : ink.m_stripe.Get(stripePosition, nozzle);
}

bool CPageInk::IsBlank(const SBoardUnitInfo& unit, int /*swath*/) const
{
    return Unit_Get(unit.m_unitId).m_bBlank;
}

bool CPageInk::HasPage(const SBoardUnitInfo& unit) const
{
    return Unit_Get(unit.m_unitId).m_reader != nullptr;
}
