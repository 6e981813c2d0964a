// Counting over, the words and numbers.
#include "Host/Command/InkUse.h"

#include "Host/Picture/InkColor.h"
#include "Host/ShownText.h"
#include "Host/TextStream.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace
{

using CJson = nlohmann::ordered_json;

constexpr std::size_t leftColumns = 2; // that begin together

// Letters, for UTF-8.
std::size_t Width_Of(const std::string& text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char letter) { return (static_cast<unsigned char>(letter) & 0xC0U) != 0x80U; }));
}

std::string Percent_Text(double percent)
{
    CTextStream text;
    text.setf(std::ios::fixed);
    text.precision(2);
    text << percent << " %";
    return text.str();
}

CJson Dots_ToJson(const std::array<std::int64_t, 4>& dots, int pixelBits)
{
    CJson json = {{"Dots", Dots_Total(dots)}};
    if (pixelBits == 2)
    {
        json["Small"] = dots[1];
        json["Middle"] = dots[2];
        json["Big"] = dots[3];
    }
    return json;
}

} // namespace

std::int64_t Dots_Total(const std::array<std::int64_t, 4>& dots)
{
    return dots[1] + dots[2] + dots[3];
}

double Coverage_Of(const SPlacedDots& dots, const SBoardInfo& info)
{
    const double places = static_cast<double>(info.m_pageWidth) * static_cast<double>(info.m_pageHeight);
    return 100.0 * static_cast<double>(Dots_Total(dots.m_page)) / places;
}

std::string Table_Text(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows)
    {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            widths[i] = std::max(widths[i], Width_Of(row[i]));
        }
    }
    std::string text;
    for (const auto& row : rows)
    {
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            const std::string blanks(widths[i] - Width_Of(row[i]), ' ');
            text += i == 0 ? "" : "  ";
            text += i < leftColumns ? row[i] + blanks : blanks + row[i];
        }
        text += '\n';
    }
    return text;
}

std::string InkUse_Text(const SInkUse& use)
{
    const bool bSizes = use.m_pixelBits == 2;
    std::vector<std::vector<std::string>> rows = {{"unit", "ink", "color", "dots on the page", "coverage"}};
    if (bSizes)
    {
        rows[0].insert(rows[0].end(), {"small", "middle", "big"});
    }
    rows[0].emplace_back("dots beside it");
    for (std::size_t i = 0; i < use.m_dots.size(); ++i)
    {
        const SBoardUnitInfo& unit = use.m_info.m_units[i];
        const SPlacedDots& dots = use.m_dots[i];
        const std::string& name = unit.m_name.empty() ? unit.m_separation : unit.m_name;
        std::vector<std::string> row = {std::to_string(unit.m_unitId), Text_Printable(name),
                                        Color_Text(use.m_colors[i]), std::to_string(Dots_Total(dots.m_page)),
                                        Percent_Text(Coverage_Of(dots, use.m_info))};
        for (const std::size_t value : {1U, 2U, 3U})
        {
            if (bSizes)
            {
                row.push_back(std::to_string(dots.m_page.at(value)));
            }
        }
        row.push_back(std::to_string(Dots_Total(dots.m_beside)));
        rows.push_back(row);
    }
    std::string text = Table_Text(rows);
    if (use.m_stray > 0)
    {
        text += "bits that are set and no nozzle's: " + std::to_string(use.m_stray) + '\n';
    }
    if (use.m_outside > 0)
    {
        text += "dots in the room for offsets, outside of the picture: " + std::to_string(use.m_outside) + '\n';
    }
    return text;
}

CJson InkUse_Json(const SInkUse& use)
{
    CJson list = CJson::array();
    for (std::size_t i = 0; i < use.m_dots.size(); ++i)
    {
        const SBoardUnitInfo& unit = use.m_info.m_units[i];
        list.push_back({{"UnitId", unit.m_unitId},
                        {"Name", unit.m_name},
                        {"Color", Color_Text(use.m_colors[i])},
                        {"Page", Dots_ToJson(use.m_dots[i].m_page, use.m_pixelBits)},
                        {"Beside", Dots_ToJson(use.m_dots[i].m_beside, use.m_pixelBits)},
                        {"Coverage", Coverage_Of(use.m_dots[i], use.m_info)}});
    }
    return list;
}
