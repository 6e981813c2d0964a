// Explain is asked about every nozzle, and its words are kept.
#include "Host/Report/PageWords.h"

#include "Host/Command/Explanation.h"
#include "Host/Report/PagePlanes.h"
#include "Host/ShownText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace
{

using CJson = nlohmann::ordered_json;

// Texts by their places in a list, each once.
class CTextList
{
public:
    int Place_Of(const std::string& text)
    {
        const auto [found, bNew] = m_places.try_emplace(text, static_cast<int>(m_texts.size()));
        if (bNew)
        {
            m_texts.push_back(text);
        }
        return found->second;
    }
    const std::vector<std::string>& Texts() const { return m_texts; }

private:
    std::map<std::string, int> m_places;
    std::vector<std::string> m_texts;
};

bool IsRepeat(const SModelSource& source)
{
    return source.m_layout.place.bRepeat;
}

// The bit of a dot's value (CBoardDots) that this one of the nozzle's bits is.
int Mask_Of(const std::vector<SModelSource>& sources, std::size_t i)
{
    const auto count = std::ranges::count_if(sources, [](const SModelSource& source) { return !IsRepeat(source); });
    if (count != 2)
    {
        return 1;
    }
    if (sources[i].m_pixelBit >= 0)
    {
        return sources[i].m_pixelBit == 0 ? 2 : 1;
    }
    return i == 0 ? 2 : 1; // of a code, the more significant one comes first
}

CJson Places_Make(const CPageModel& model, const SBoardUnitInfo& unit, int nozzle, CTextList& roles)
{
    const SExplanation explanation = Nozzle_Explain({model}, unit, nozzle, 0, 0, 0);
    std::vector<SModelSource> sources;
    std::ranges::transform(explanation.m_bits, std::back_inserter(sources),
                           [&](const SExplanationBit& bit) { return model.Source_Of(0, bit.m_bit); });
    CJson places = CJson::array();
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        const SExplanationBit& bit = explanation.m_bits[i];
        places.push_back(
            CJson::array({bit.m_bit.m_line, bit.m_bit.m_bit, roles.Place_Of(bit.m_role), sources[i].m_pixelBit,
                          sources[i].m_layout.place.bDotBit ? 1 : 0, Mask_Of(sources, i)}));
    }
    return places;
}

CJson Rules_Make(const CPageModel& model, const SBoardUnitInfo& unit, int nozzle, int swath, CTextList& rules)
{
    CJson list = CJson::array();
    for (const SExplanationRule& rule : Nozzle_Explain({model}, unit, nozzle, 0, swath, 0).m_rules)
    {
        list.push_back(rule.m_name == "direction" ? -1 : rules.Place_Of(rule.m_text));
    }
    return list;
}

// Where the left and the right stripe of the unit begin in a swath.
CJson Stripes_Find(const CPageModel& model, const SBoardUnitInfo& unit, int swath)
{
    int left = -1;
    int right = -1;
    for (int position = 0; position < model.PositionCount(model.IsLeftToRight(swath)); ++position)
    {
        const SModelPoint point = model.Point_Get(unit, 0, position, swath);
        left = point.m_area == EModelArea::LeftStripe ? position - point.m_stripePosition : left;
        right = point.m_area == EModelArea::RightStripe ? position - point.m_stripePosition : right;
    }
    return CJson::array({left, right});
}

// Whether the unit has a separation of the page.
bool IsPrinted(const CJobPage& job, const SBoardUnitInfo& unit, int page)
{
    return std::ranges::any_of(job.Units(),
                               [&](const SPageUnit& candidate) {
                                   return candidate.m_pUnit->m_unitId == unit.m_unitId &&
                                          candidate.m_printed.at(static_cast<std::size_t>(page));
                               });
}

} // namespace

CJson PageWords_Json(const CPageModel& model, const CJobPage& job, int page)
{
    const CJson board = CJson::parse(BoardInfo_Json(model.Info()));
    const int rightToLeft = model.SwathCount() > 1 && !model.IsLeftToRight(1) ? 1 : 0; // a swath that goes so, if any
    CTextList roles;
    CTextList rules;
    CJson units = CJson::array();
    for (std::size_t i = 0; i < model.Info().m_units.size(); ++i)
    {
        const SBoardUnitInfo& unit = model.Info().m_units[i];
        CJson places = CJson::array();
        CJson leftToRightRules = CJson::array();
        CJson rightToLeftRules = CJson::array();
        for (int nozzle = 0; nozzle < model.Info().m_nozzles; ++nozzle)
        {
            places.push_back(Places_Make(model, unit, nozzle, roles));
            leftToRightRules.push_back(Rules_Make(model, unit, nozzle, 0, rules));
            rightToLeftRules.push_back(Rules_Make(model, unit, nozzle, rightToLeft, rules));
        }
        units.push_back(
            {{"Info", board["Units"][i]},
             {"Text", BoardUnit_Text(unit)},
             {"HasPage", IsPrinted(job, unit, page)},
             {"SeparationShown", Text_Printable(BoardUnit_Separation(model.Info(), unit, page))},
             {"Stripes", CJson::array({Stripes_Find(model, unit, rightToLeft), Stripes_Find(model, unit, 0)})},
             {"Places", std::move(places)},
             {"Rules", CJson::array({std::move(leftToRightRules), std::move(rightToLeftRules)})}});
    }
    CJson directions = CJson::array();
    for (int swath = 0; swath < model.SwathCount(); ++swath)
    {
        std::string text;
        if (!model.Info().m_units.empty() && !model.IsLeftToRight(swath))
        {
            text = Nozzle_Explain({model}, model.Info().m_units.front(), 0, 0, swath, 0).m_rules.front().m_text;
        }
        directions.push_back(text);
    }
    return {{"Roles", roles.Texts()},
            {"Rules", rules.Texts()},
            {"Directions", std::move(directions)},
            {"DropSize", DropSize_Of(model.Info())},
            {"Units", std::move(units)}};
}
