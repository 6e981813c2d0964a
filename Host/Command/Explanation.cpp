// Answers from the page model, and their words.
#include "Host/Command/Explanation.h"

#include "Host/ShownText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

namespace
{

using CJson = nlohmann::ordered_json;

bool IsStripe(EModelArea area)
{
    return area == EModelArea::LeftStripe || area == EModelArea::RightStripe;
}

std::string Role_Of(const SModelSource& source)
{
    if (source.m_layout.unitIndex < 0)
    {
        return "padding";
    }
    if (source.m_pUnit == nullptr)
    {
        return "no unit";
    }
    if (source.m_nozzle < 0)
    {
        return "no nozzle";
    }
    const std::string repeat = source.m_layout.place.bRepeat ? ", repeated" : "";
    if (source.m_layout.place.bDotCode)
    {
        return "drop size" + repeat;
    }
    if (source.m_pixelBitCount == 1)
    {
        return "ink" + repeat;
    }
    return (source.m_pixelBit == 0 ? "high bit" : "low bit") + repeat;
}

std::string Area_Name(EModelArea area)
{
    switch (area)
    {
    case EModelArea::Page:
        return "page";
    case EModelArea::Below:
        return "below-page";
    case EModelArea::FirstZone:
        return "first-zone";
    case EModelArea::LastZone:
        return "last-zone";
    case EModelArea::Margin:
        return "margin";
    case EModelArea::LeftStripe:
        return "left-stripe";
    case EModelArea::RightStripe:
        return "right-stripe";
    case EModelArea::Nothing:
        break;
    }
    return "nothing";
}

std::string Number_Of(std::int64_t number)
{
    return std::to_string(number);
}

std::string Positions_Text(std::int64_t count)
{
    return Number_Of(count) + (count == 1 ? " position" : " positions");
}

// What the carriage's road did to the position.
void Road_Explain(const CPageModel& model, SExplanation& explanation)
{
    const SBoardInfo& info = model.Info();
    const bool bLeftToRight = explanation.m_bLeftToRight;
    const SBoardPass pass = model.Pass_Get(explanation.m_swath);
    auto& rules = explanation.m_rules;
    if (!bLeftToRight)
    {
        rules.push_back({"direction", "swath " + Number_Of(explanation.m_swath) +
                                          " goes from right to left, so that the page's last column comes first"});
    }
    if (pass.m_firstZone > 0)
    {
        rules.push_back({"zone", std::string("the ") + (bLeftToRight ? "left" : "right") + " zone of " +
                                     Positions_Text(pass.m_firstZone) + " comes before the page"});
    }
    const int offset = CPageModel::Offset_Of(*explanation.m_source.m_pUnit, bLeftToRight);
    if (offset != 0)
    {
        rules.push_back({"offset", "the unit comes " + Positions_Text(offset) + " later (" +
                                       (bLeftToRight ? "Horizon_2" : "Horizon_1") + ")"});
    }
    if (info.m_linesPerPosition > 1)
    {
        rules.push_back({"push", "the bits of a pixel are pushed one after the other: line 2p has the high bits of "
                                 "position p, line 2p + 1 the low bits"});
    }
}

// What the layout did to the nozzle.
void Layout_Explain(const SBoardInfo& info, SExplanation& explanation)
{
    const SModelSource& source = explanation.m_source;
    const std::string& map = info.m_map;
    const std::string unit = Number_Of(source.m_pUnit->m_unitId);
    auto& rules = explanation.m_rules;
    const bool bBlocks = map == "03" || map == "03_01";
    if (map == "1")
    {
        rules.push_back({"pair", "layout 1 swaps the nozzles of a pair, and the two bytes of a frame: the even nozzle "
                                 "comes second"});
    }
    if (map == "8")
    {
        rules.push_back({"pair", "layout 8 puts the nozzles of a pair side by side"});
        rules.push_back({"plane", "the first half of the line has the high bits, the second the low bits"});
    }
    if (bBlocks)
    {
        constexpr int blockNozzles = 100;
        const int block = source.m_nozzle / blockNozzles;
        const bool bDescending = source.m_pUnit->m_direction == 1;
        rules.push_back({map == "03" ? "block" : "chunk",
                         "nozzle " + Number_Of(source.m_nozzle) + " is number " +
                             Number_Of(source.m_nozzle % blockNozzles) + " of quarter " + Number_Of(block) +
                             ", which stands in place " + Number_Of(bDescending ? 3 - block : block) +
                             " since the unit's Direction is " + Number_Of(source.m_pUnit->m_direction)});
        const bool bRepeat = std::ranges::any_of(explanation.m_bits, [](const SExplanationBit& bit)
                                                 { return bit.m_role.ends_with("repeated"); });
        if (bRepeat)
        {
            rules.push_back({"repeat", "the bit stands once more in the padding of the chunk before"});
        }
    }
    if (map == "6" || map == "7" || map == "03_01")
    {
        rules.push_back({"column", "the unit has byte columns of its own: byte " +
                                       (map == "03_01" ? Number_Of(std::int64_t{4} * source.m_pUnit->m_unitId) +
                                                             " on, four of them,"
                                                       : unit) +
                                       " of each " + Number_Of(info.m_printerDataWidth)});
    }
    if (map == "2" || map == "7")
    {
        rules.push_back({"drop-size", "any ink becomes the code of the drop size " + info.m_dotSizeMode});
    }
}

// "row 2037, column 3812 of the page, from page.Cyan.tif"; why there is none.
std::string Point_Text(const SExplanation& explanation, const SBoardInfo& info)
{
    const SModelPoint& point = explanation.m_source.m_point;
    const SBoardUnitInfo& unit = *explanation.m_source.m_pUnit;
    const std::string first = explanation.m_bLeftToRight ? "left" : "right";
    const std::string last = explanation.m_bLeftToRight ? "right" : "left";
    switch (point.m_area)
    {
    case EModelArea::Page:
        return "prints row " + Number_Of(point.m_row) + ", column " + Number_Of(point.m_column) + " of " +
               (info.m_pageCount > 1 ? "page " + Number_Of(explanation.m_page) : "the page") +
               (explanation.m_bHasPage
                    ? ", from " + Text_Printable(BoardUnit_Separation(info, unit, explanation.m_page))
                    : ", for which the unit has no separation, so that it is blank");
    case EModelArea::Below:
        return "is below the page: its row would be " + Number_Of(point.m_row) + ", the page's last one is " +
               Number_Of(info.m_pageHeight - 1);
    case EModelArea::FirstZone:
        return "is in the " + first + " zone, before the page, where the unit has no stripe";
    case EModelArea::LastZone:
        return "is in the " + last + " zone, behind the page, where the unit has no stripe";
    case EModelArea::Margin:
        return "is in the room that the units' offsets need, where this unit prints nothing";
    case EModelArea::LeftStripe:
    case EModelArea::RightStripe:
        return std::string("prints position ") + Number_Of(point.m_stripePosition) + " of the unit's " +
               (point.m_area == EModelArea::LeftStripe ? "left" : "right") + " ink stripe (" + unit.m_stripeColor + ")";
    case EModelArea::Nothing:
        break;
    }
    return unit.m_stripeColor.empty() ? "prints nothing: the unit has neither a separation nor ink stripes"
                                      : "prints nothing: the unit has no separation, and no ink stripe here";
}

// Who has no nozzle there.
std::string Gap_Text(const SModelSource& source)
{
    if (source.m_layout.unitIndex < 0)
    {
        return "is padding of the layout: no unit has it, and it is never set";
    }
    if (source.m_pUnit == nullptr)
    {
        return "is the place of unit " + Number_Of(source.m_layout.unitIndex) +
               ", which the job does not have: it is never set";
    }
    return "is behind the last nozzle of " + BoardUnit_Text(*source.m_pUnit) + ": it is never set";
}

std::string Bit_Text(const SExplanationBit& bit, const SBoardInfo& info)
{
    const std::int64_t at = bit.m_bit.m_bit;
    return "line " + Number_Of(bit.m_bit.m_line) + ", byte " + Number_Of(at / 8) + ", bit " + Number_Of(at % 8) +
           " (frame " + Number_Of(at / info.m_frameBits) + "; " + bit.m_role + ")";
}

// What is printed, and what the bits are.
std::string Value_Text(const SExplanation& explanation)
{
    const SModelSource& source = explanation.m_source;
    std::string text;
    const bool bSource = source.m_point.m_area == EModelArea::Page || IsStripe(source.m_point.m_area);
    if (source.m_point.m_area == EModelArea::Page && !explanation.m_bHasPage)
    {
        text += "; the nozzle does not fire";
    }
    else if (bSource && explanation.m_pixel)
    {
        const int most = (1 << source.m_pixelBitCount) - 1;
        text += std::string("; the ") + (IsStripe(source.m_point.m_area) ? "stripe" : "separation") + " has " +
                Number_Of(*explanation.m_pixel) + " of " + Number_Of(most) + " there, so the nozzle " +
                (*explanation.m_pixel != 0 ? "fires" : "does not fire");
    }
    else if (explanation.m_outputPixel)
    {
        text +=
            std::string("; by the output the nozzle ") + (*explanation.m_outputPixel != 0 ? "fires" : "does not fire");
    }
    return text;
}

std::string Bits_Text(const SExplanation& explanation, const SBoardInfo& info)
{
    if (explanation.m_band < 0)
    {
        return "The swath is blank and SkipBlank is set: the output has no band for it.";
    }
    if (explanation.m_bits.empty())
    {
        return "The layout has no place for this nozzle: it never fires.";
    }
    std::string text = explanation.m_bBitAsked         ? "The bit in question is"
                       : explanation.m_bits.size() > 1 ? "Its bits are"
                                                       : "Its bit is";
    for (const SExplanationBit& bit : explanation.m_bits)
    {
        text += (&bit == &explanation.m_bits.front() ? " " : "; ") + Bit_Text(bit, info);
        if (bit.m_found)
        {
            text += std::string(": ") + (*bit.m_found ? "1" : "0") + " in the output";
            if (bit.m_expected && *bit.m_expected != *bit.m_found)
            {
                text += std::string(", BUT ") + (*bit.m_expected ? "1" : "0") + " BY THE JOB";
            }
        }
        else if (bit.m_expected)
        {
            text += std::string(": ") + (*bit.m_expected ? "1" : "0") + " by the job";
        }
    }
    return text + ".";
}

std::string Paragraph_Make(const SExplanation& explanation, const SBoardInfo& info)
{
    const SModelSource& source = explanation.m_source;
    const std::string where = (explanation.m_band < 0 ? "" : "band " + Number_Of(explanation.m_band) + " (") +
                              (info.m_pageCount > 1 ? "page " + Number_Of(explanation.m_page) + ", " : "") + "swath " +
                              Number_Of(explanation.m_swath) + (explanation.m_band < 0 ? " (" : ", ") +
                              Direction_Text(explanation.m_bLeftToRight) + ")";
    if (source.m_nozzle < 0)
    {
        const SExplanationBit& bit = explanation.m_bits.front();
        const std::int64_t at = bit.m_bit.m_bit;
        std::string text = "Line " + Number_Of(bit.m_bit.m_line) + ", byte " + Number_Of(at / 8) + ", bit " +
                           Number_Of(at % 8) + " of " + where + " (frame " + Number_Of(at / info.m_frameBits) + ") " +
                           Gap_Text(source) + ".";
        if (bit.m_found)
        {
            text += std::string(" In the output it is ") + (*bit.m_found ? "1, WHICH IS WRONG." : "0.");
        }
        return text;
    }
    std::string name = BoardUnit_Text(*source.m_pUnit);
    name.front() = 'U';
    std::string text = name + ", nozzle " + Number_Of(source.m_nozzle) + ", at position " +
                       Number_Of(source.m_position) + " of " + where + " " + Point_Text(explanation, info) +
                       Value_Text(explanation) + ". " + Bits_Text(explanation, info);
    if (!explanation.m_rules.empty())
    {
        text += " How it came there:";
        for (const SExplanationRule& rule : explanation.m_rules)
        {
            text += (&rule == &explanation.m_rules.front() ? " " : "; ") + rule.m_text;
        }
        text += ".";
    }
    return text;
}

template<class T>
CJson Json_Of(const std::optional<T>& value)
{
    return value ? CJson(*value) : CJson(nullptr);
}

CJson Json_OrNull(std::int64_t number)
{
    return number < 0 ? CJson(nullptr) : CJson(number);
}

bool Bit_Found(const CBandData& band, const SModelBit& bit)
{
    const unsigned char* pLine = band.m_pData + std::int64_t{bit.m_line} * band.m_bytesPerLine;
    return (pLine[bit.m_bit / 8] >> (7 - bit.m_bit % 8) & 1) == 1;
}

// What is printed at the source, and what the bits are; `pixelBits`: all that the nozzle has there.
void Values_Take(const SExplanationSource& from, SExplanation& explanation, const std::vector<SModelBit>& pixelBits)
{
    explanation.m_page = from.m_page;
    if (from.m_pInk != nullptr && explanation.m_source.m_pUnit != nullptr)
    {
        explanation.m_bHasPage = from.m_pInk->HasPage(*explanation.m_source.m_pUnit);
    }
    if (from.m_pInk != nullptr)
    {
        explanation.m_pixel = CPageModel::Pixel_Of(explanation.m_source, *from.m_pInk);
    }
    if (explanation.m_band < 0)
    {
        return;
    }
    for (SExplanationBit& bit : explanation.m_bits)
    {
        const SModelSource source = from.m_model.Source_Of(explanation.m_swath, bit.m_bit);
        bit.m_role = Role_Of(source);
        const bool bNone = source.m_nozzle < 0;
        if (explanation.m_pixel || bNone)
        {
            bit.m_expected = !bNone && CPageModel::Bit_IsSet(source, *explanation.m_pixel);
        }
        if (from.m_pBand != nullptr)
        {
            bit.m_found = Bit_Found(*from.m_pBand, bit.m_bit);
        }
    }
    if (from.m_pBand != nullptr && explanation.m_source.m_nozzle >= 0)
    {
        int pixel = 0;
        for (const SModelBit& bit : pixelBits)
        {
            const SModelSource source = from.m_model.Source_Of(explanation.m_swath, bit);
            const int shift = source.m_layout.place.bDotCode ? 0 : source.m_pixelBitCount - 1 - source.m_pixelBit;
            pixel |= (Bit_Found(*from.m_pBand, bit) ? 1 : 0) << shift;
        }
        explanation.m_outputPixel = pixel;
    }
}

} // namespace

bool SExplanation::IsDifferent() const
{
    return std::ranges::any_of(m_bits, [](const SExplanationBit& bit)
                               { return bit.m_expected && bit.m_found && *bit.m_expected != *bit.m_found; });
}

const char* Direction_Text(bool bLeftToRight)
{
    return bLeftToRight ? "left to right" : "right to left";
}

SExplanation Nozzle_Explain(const SExplanationSource& from, const SBoardUnitInfo& unit, int nozzle, int position,
                            int swath, std::int64_t band)
{
    SExplanation explanation;
    explanation.m_band = band;
    explanation.m_swath = swath;
    explanation.m_bLeftToRight = from.m_model.IsLeftToRight(swath);
    SModelSource& source = explanation.m_source;
    source.m_layout.unitIndex = unit.m_unitId;
    source.m_layout.nozzle = nozzle;
    source.m_pUnit = &unit;
    source.m_position = position;
    source.m_nozzle = nozzle;
    source.m_pixelBitCount = from.m_model.Info().m_bitsPerPixel;
    source.m_point = from.m_model.Point_Get(unit, nozzle, position, swath);
    const std::vector<SModelBit> bits = from.m_model.Bits_Of(unit, nozzle, position);
    if (band >= 0)
    {
        std::ranges::transform(bits, std::back_inserter(explanation.m_bits),
                               [](const SModelBit& bit) {
                                   return SExplanationBit{bit, "", {}, {}};
                               });
    }
    Values_Take(from, explanation, bits);
    Road_Explain(from.m_model, explanation);
    Layout_Explain(from.m_model.Info(), explanation);
    return explanation;
}

SExplanation Bit_Explain(const SExplanationSource& from, int swath, std::int64_t band, const SModelBit& asked)
{
    SExplanation explanation;
    explanation.m_band = band;
    explanation.m_swath = swath;
    explanation.m_bLeftToRight = from.m_model.IsLeftToRight(swath);
    explanation.m_source = from.m_model.Source_Of(swath, asked);
    explanation.m_bBitAsked = true;
    explanation.m_bits.push_back({asked, "", {}, {}});
    const bool bNozzle = explanation.m_source.m_nozzle >= 0;
    Values_Take(from, explanation,
                bNozzle ? from.m_model.Bits_Of(*explanation.m_source.m_pUnit, explanation.m_source.m_nozzle,
                                               explanation.m_source.m_position)
                        : std::vector<SModelBit>());
    if (bNozzle)
    {
        Road_Explain(from.m_model, explanation);
        Layout_Explain(from.m_model.Info(), explanation);
    }
    return explanation;
}

std::string Explanation_Text(const SExplanation& explanation, const SBoardInfo& info)
{
    return Paragraph_Make(explanation, info) + '\n';
}

std::string Explanation_Json(const SExplanation& explanation, const SBoardInfo& info)
{
    const SModelSource& source = explanation.m_source;
    const SModelPoint& point = source.m_point;
    const bool bNozzle = source.m_nozzle >= 0;
    CJson bits = CJson::array();
    for (const SExplanationBit& bit : explanation.m_bits)
    {
        const std::int64_t at = bit.m_bit.m_bit;
        bits.push_back({{"Line", bit.m_bit.m_line},
                        {"Frame", at / info.m_frameBits},
                        {"Byte", at / 8},
                        {"Bit", at % 8},
                        {"Role", bit.m_role},
                        {"Expected", Json_Of(bit.m_expected)},
                        {"Output", Json_Of(bit.m_found)}});
    }
    CJson rules = CJson::array();
    for (const SExplanationRule& rule : explanation.m_rules)
    {
        rules.push_back({{"Rule", rule.m_name}, {"Text", rule.m_text}});
    }
    const bool bPage = bNozzle && point.m_area == EModelArea::Page;
    const CJson json = {{"Band", Json_OrNull(explanation.m_band)},
                        {"Page", explanation.m_page},
                        {"Swath", explanation.m_swath},
                        {"Direction", explanation.m_bLeftToRight ? "left-to-right" : "right-to-left"},
                        {"Position", source.m_position},
                        {"UnitId", Json_OrNull(source.m_layout.unitIndex)},
                        {"Name", source.m_pUnit == nullptr ? CJson(nullptr) : CJson(source.m_pUnit->m_name)},
                        {"Nozzle", Json_OrNull(source.m_nozzle)},
                        {"Area", bNozzle ? Area_Name(point.m_area) : "gap"},
                        {"Row", bNozzle ? Json_OrNull(point.m_row) : CJson(nullptr)},
                        {"Column", bNozzle ? Json_OrNull(point.m_column) : CJson(nullptr)},
                        {"StripePosition", bNozzle ? Json_OrNull(point.m_stripePosition) : CJson(nullptr)},
                        {"Separation", bPage && explanation.m_bHasPage
                                           ? CJson(BoardUnit_Separation(info, *source.m_pUnit, explanation.m_page))
                                           : CJson(nullptr)},
                        {"Value", Json_Of(explanation.m_pixel)},
                        {"OutputValue", Json_Of(explanation.m_outputPixel)},
                        {"Bits", std::move(bits)},
                        {"Rules", std::move(rules)},
                        {"Different", explanation.IsDifferent()},
                        {"Text", Paragraph_Make(explanation, info)}};
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace) + '\n';
}
