// Picking a page's bands out of an output.
#include "Host/Command/PageBands.h"

#include "Host/Command/Explanation.h"
#include "Host/HostError.h"
#include "Host/Job/JobNames.h"
#include "Host/ShownText.h"

#include <vector>

void Band_CheckAgainst(const CPageModel& model, const CBandData& band, const std::string& place)
{
    if (band.m_swathIndex < 0 || band.m_swathIndex >= model.SwathCount())
    {
        throw CInputError(place + "m_swathIndex is " + std::to_string(band.m_swathIndex) + "; the page has " +
                          std::to_string(model.SwathCount()) + " swaths");
    }
    if (band.m_pageIndex < 0 || band.m_pageIndex >= model.PageCount())
    {
        throw CInputError(place + "m_pageIndex is " + std::to_string(band.m_pageIndex) + "; the job has " +
                          std::to_string(model.PageCount()) + (model.PageCount() == 1 ? " page" : " pages"));
    }
    const bool bLeftToRight = model.IsLeftToRight(band.m_swathIndex);
    if ((band.m_bandAttr == 1) != bLeftToRight)
    {
        throw CInputError(place + "m_bandAttr says " + Direction_Text(!bLeftToRight) + ", but swath " +
                          std::to_string(band.m_swathIndex) + " goes " + Direction_Text(bLeftToRight));
    }
    if (band.m_width != model.LineBits() || band.m_height != model.LineCount(bLeftToRight))
    {
        throw CInputError(place + "the band has " + std::to_string(band.m_height) + " lines of " +
                          std::to_string(band.m_width) + " bits; it should have " +
                          std::to_string(model.LineCount(bLeftToRight)) + " of " + std::to_string(model.LineBits()));
    }
}

CPageBands::CPageBands(const std::filesystem::path& output, std::optional<int> page)
    : m_reader(CBoardReader::Open(output)), m_page(page)
{
    const std::string name = Name_Shown(m_reader->Name());
    if (m_reader->BoardInfo().m_version < g_boardVersion)
    {
        throw CInputError(name + ": is of version 1, which does not say where its bits are on the page; convert the "
                                 "job again");
    }
    try
    {
        m_model = std::make_unique<CPageModel>(m_reader->BoardInfo());
    }
    catch (const CInputError& error)
    {
        throw CInputError(name + ": " + error.what());
    }
}

// The next band of the page; false behind the last one.
bool CPageBands::Band_Next()
{
    const int lastSwath = m_bBand ? m_band.m_swathIndex : -1;
    while (m_reader->Band_Read(m_band, m_pass))
    {
        m_pages.insert(m_band.m_pageIndex);
        m_page = m_page.value_or(m_band.m_pageIndex);
        if (m_band.m_pageIndex != *m_page)
        {
            continue;
        }
        const std::string place = Name_Shown(m_reader->Name()) + ": " + m_reader->Place() + ": ";
        Band_CheckAgainst(*m_model, m_band, place);
        if (m_band.m_swathIndex <= lastSwath)
        {
            throw CInputError(place + "m_swathIndex is " + std::to_string(m_band.m_swathIndex) + " behind swath " +
                              std::to_string(lastSwath) + " of the same page; swaths come in their order, once each");
        }
        ++m_bandCount;
        m_bandNo = m_reader->BandCount() - 1;
        m_bBand = true;
        return true;
    }
    m_bBand = false;
    m_bEnd = true;
    return false;
}

bool CPageBands::Swath_Read(int swath)
{
    while (!m_bEnd && (!m_bBand || m_band.m_swathIndex < swath))
    {
        Band_Next();
    }
    return m_bBand && m_band.m_swathIndex == swath;
}

void CPageBands::Finish()
{
    while (!m_bEnd)
    {
        Band_Next();
    }
    if (m_page && !m_pages.contains(*m_page))
    {
        std::vector<std::string> known;
        for (const int page : m_pages)
        {
            known.push_back(std::to_string(page));
        }
        throw CInputError(Name_Shown(m_reader->Name()) + ": --page is " + std::to_string(*m_page) +
                          (known.empty() ? "; the file has no band" : "; the file has " + Names_List(known, "and")));
    }
}
