// A table says what each bit of a scan position means; bytes without ink are passed over.
#include "Host/Model/BoardDots.h"

#include "Host/Model/PageModel.h"

#include <algorithm>

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

bool Bit_Get(const unsigned char* pLine, std::int64_t bit)
{
    return (pLine[bit / 8] >> (7 - bit % 8) & 1) == 1;
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
    const std::int64_t lineBytes = (m_lineBits + 7) / 8;
    for (int line = 0; line < band.m_height; ++line)
    {
        const unsigned char* pLine = band.m_pData + std::int64_t{line} * band.m_bytesPerLine;
        const SMeaning* pMeanings = m_meanings.data() + line % m_linesPerPosition * m_lineBits;
        for (std::int64_t byte = 0; byte < lineBytes; ++byte)
        {
            if (pLine[byte] == 0)
            {
                continue;
            }
            for (std::int64_t bit = byte * 8; bit < std::min(byte * 8 + 8, m_lineBits); ++bit)
            {
                const SMeaning& meaning = pMeanings[bit];
                if (!Bit_Get(pLine, bit) || meaning.m_bRepeat)
                {
                    continue;
                }
                if (meaning.m_unit < 0)
                {
                    ++dots.m_stray;
                    continue;
                }
                const bool bPartner =
                    meaning.m_partnerBit >= 0 &&
                    Bit_Get(pLine + std::int64_t{meaning.m_partnerLine} * band.m_bytesPerLine, meaning.m_partnerBit);
                if (!bPartner || meaning.m_bHigh) // a pixel with both bits is counted at the first
                {
                    ++dots.m_units[static_cast<std::size_t>(meaning.m_unit)]
                          .m_dots[meaning.m_bHigh ? (bPartner ? 3U : 2U) : 1U];
                }
            }
        }
    }
    return dots;
}
