// From scan positions back to columns.
#include "Host/Model/SwathDots.h"

CSwathDots::CSwathDots(const CPageModel& model)
    : m_model(model),
      m_dots(model.Info()),
      m_firstColumn(-model.Info().m_leftZone),
      m_columnCount(model.Info().m_leftZone + model.Info().m_pageWidth + model.Info().m_rightZone),
      m_bytesPerDot((model.Info().m_units.size() + unitsPerByte - 1) / unitsPerByte),
      m_counts(model.Info().m_units.size())
{
}

void CSwathDots::Clear()
{
    m_bBlank = true;
}

void CSwathDots::Load(const CBandData& band)
{
    const SBoardInfo& info = m_model.Info();
    m_bytes.assign(static_cast<std::size_t>(info.m_nozzles) * static_cast<std::size_t>(m_columnCount) * m_bytesPerDot,
                   0);
    m_bBlank = false;
    const int swath = band.m_swathIndex;
    const SBoardPass pass = m_model.Pass_Get(swath);
    std::vector<int> offsets;
    for (const SBoardUnitInfo& unit : info.m_units)
    {
        offsets.push_back(CPageModel::Offset_Of(unit, pass.m_bLeftToRight));
    }
    const std::int64_t pageRows = info.m_pageHeight - std::int64_t{swath} * info.m_nozzles; // from this swath on
    m_strayCount += m_dots.Dots_Visit(
        band,
        [&](const SBoardDot& dot)
        {
            const auto unit = static_cast<std::size_t>(dot.m_unit);
            const int column = pass.m_firstLineColumn + (dot.m_position - offsets[unit]) * pass.m_columnStep;
            const int at = column - m_firstColumn;
            if (at < 0 || at >= m_columnCount)
            {
                ++m_outsideCount;
                return;
            }
            const bool bPage = column >= 0 && column < info.m_pageWidth && dot.m_nozzle < pageRows;
            auto& counts = bPage ? m_counts[unit].m_page : m_counts[unit].m_beside;
            ++counts[static_cast<std::size_t>(dot.m_value)];
            const std::size_t place = static_cast<std::size_t>(dot.m_nozzle) * static_cast<std::size_t>(m_columnCount) +
                                      static_cast<std::size_t>(at);
            m_bytes[place * m_bytesPerDot + unit / unitsPerByte] |=
                static_cast<unsigned char>(dot.m_value << (6 - dot.m_unit % unitsPerByte * 2));
        });
}
