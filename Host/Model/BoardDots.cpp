// A table says what each bit of a scan position means.
#include "Host/Model/BoardDots.h"

#include "Host/Model/PageModel.h"

namespace
{

// What version 1 does not say, so far as the layout needs it.
SBoardInfo Info_Complete(SBoardInfo info)
{
    if (info.m_version > 1)
    {
        return info;
    }
    info.m_version = 2;
    info.m_linesPerPosition = info.m_dataPushStyle == "ByUnit" ? info.m_bitsPerPixel : 1;
    info.m_dotSizeMode = "Small"; // which bits a dot has; the bits themselves say its size
    info.m_pageWidth = 1;
    info.m_pageHeight = 1;
    return info;
}

} // namespace

CBoardDots::CBoardDots(const SBoardInfo& info)
{
    const SBoardInfo whole = Info_Complete(info);
    const CPageModel model(whole);
    m_lineBits = model.LineBits();
    m_linesPerPosition = whole.m_linesPerPosition;
    m_meanings.resize(static_cast<std::size_t>(m_lineBits) * static_cast<std::size_t>(m_linesPerPosition));
    const auto Meaning = [&](const SModelBit& bit) -> SMeaning&
    { return m_meanings[static_cast<std::size_t>(bit.m_line * m_lineBits + bit.m_bit)]; };
    for (const SBoardUnitInfo& unit : model.Info().m_units)
    {
        for (int nozzle = 0; nozzle < whole.m_nozzles; ++nozzle)
        {
            std::vector<SModelBit> pixel;
            for (const SModelBit& bit : model.Bits_Of(unit, nozzle, 0))
            {
                SMeaning& meaning = Meaning(bit);
                meaning.m_unit = static_cast<int>(m_units.size());
                meaning.m_nozzle = nozzle;
                meaning.m_bRepeat = model.Source_Of(0, bit).m_layout.place.bRepeat;
                if (!meaning.m_bRepeat)
                {
                    pixel.push_back(bit);
                }
            }
            if (pixel.size() == 2)
            {
                m_pixelBits = 2;
                Meaning(pixel[0]).m_bHigh = true;
                Meaning(pixel[0]).m_partnerLine = pixel[1].m_line - pixel[0].m_line;
                Meaning(pixel[0]).m_partnerBit = pixel[1].m_bit;
                Meaning(pixel[1]).m_partnerLine = pixel[0].m_line - pixel[1].m_line;
                Meaning(pixel[1]).m_partnerBit = pixel[0].m_bit;
            }
        }
        m_units.push_back({unit.m_unitId, {}});
    }
}

bool CBoardDots::IsFitting(const CBandData& band) const
{
    return band.m_bitsPerPixel == 1 && band.m_width == m_lineBits && band.m_height % m_linesPerPosition == 0;
}

SBandDots CBoardDots::Count(const CBandData& band) const
{
    SBandDots dots;
    dots.m_units = m_units;
    dots.m_stray = Dots_Visit(
        band, [&](const SBoardDot& dot)
        { ++dots.m_units[static_cast<std::size_t>(dot.m_unit)].m_dots[static_cast<std::size_t>(dot.m_value)]; });
    return dots;
}
