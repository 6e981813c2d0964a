// The JSON of board files, through nlohmann-json.
#include "Host/Board/BoardInfo.h"

#include "Host/Board/BandHeaderWords.h"
#include "Host/PageName.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace
{

using CJson = nlohmann::ordered_json;

constexpr std::int32_t leftToRight = 1;

std::string Json_Text(const CJson& json)
{
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace);
}

CJson Unit_ToJson(const SBoardUnitInfo& unit)
{
    return {{"UnitId", unit.m_unitId},
            {"Direction", unit.m_direction},
            {"Name", unit.m_name},
            {"Separation", unit.m_separation},
            {"UnitPosition", unit.m_unitPosition},
            {"Horizon_1", unit.m_horizon_1},
            {"Horizon_2", unit.m_horizon_2},
            {"StripeColor", unit.m_stripeColor},
            {"StripeLength", unit.m_stripeLength}};
}

CJson BoardInfo_ToJson(const SBoardInfo& info)
{
    CJson units = CJson::array();
    for (const SBoardUnitInfo& unit : info.m_units)
    {
        units.push_back(Unit_ToJson(unit));
    }
    CJson json = {{"Version", g_boardVersion},
                  {"Generator", info.m_generator},
                  {"DataMapStyle", info.m_dataMapStyle},
                  {"DataPushStyle", info.m_dataPushStyle},
                  {"PrinterSupportBits", info.m_printerSupportBits},
                  {"Map", info.m_map},
                  {"Stage", info.m_stage},
                  {"DotSizeMode", info.m_dotSizeMode},
                  {"PrinterDataWidth", info.m_printerDataWidth},
                  {"PrinterDataWidthUnit", info.m_printerDataWidthUnit},
                  {"FrameBits", info.m_frameBits},
                  {"Planes", info.m_planes},
                  {"LineBits", info.m_lineBits},
                  {"BitsPerUnit", info.m_bitsPerUnit},
                  {"Nozzles", info.m_nozzles},
                  {"BitsPerPixel", info.m_bitsPerPixel},
                  {"LinesPerPosition", info.m_linesPerPosition},
                  {"Bidirectional", info.m_bBidirectional},
                  {"SkipBlank", info.m_bSkipBlank},
                  {"Page",
                   {{"Width", info.m_pageWidth},
                    {"Height", info.m_pageHeight},
                    {"XResolution", info.m_xResolution},
                    {"YResolution", info.m_yResolution}}}};
    if (!info.m_pageNames.empty())
    {
        json["Pages"] = {{"Count", info.m_pageCount}, {"Names", info.m_pageNames}};
        if (info.m_pageNames == g_pageNames_Pattern)
        {
            json["Pages"]["First"] = info.m_firstPage;
        }
    }
    if (info.IsPart())
    {
        json["Part"] = {{"First", info.m_partFirst}, {"Last", info.m_partLast}};
    }
    json["Zones"] = {{"LeftStripeWidth", info.m_leftZone}, {"RightStripeWidth", info.m_rightZone},
                     {"UnitPitch", info.m_unitPitch},      {"UnitPositionCount", info.m_unitPositionCount},
                     {"MaxOffset_1", info.m_maxOffset_1},  {"MaxOffset_2", info.m_maxOffset_2}};
    json["Units"] = std::move(units);
    return json;
}

CJson BandHeader_ToJson(const SBandHeader& header)
{
    CJson json = CJson::object(); // null would call itself an object before it has the memory of one
    for (const SBandHeaderWord& word : g_bandHeaderWords)
    {
        json[std::string(word.m_name)] = header.*word.m_pWord;
    }
    json["m_bSkip"] = header.m_bSkip;
    return json;
}

CJson Pass_ToJson(const SBoardPass& pass)
{
    return {{"Direction", pass.m_bLeftToRight ? "left-to-right" : "right-to-left"},
            {"Positions", pass.m_positions},
            {"FirstLineColumn", pass.m_firstLineColumn},
            {"ColumnStep", pass.m_columnStep},
            {"FirstZone", pass.m_firstZone},
            {"LastZone", pass.m_lastZone},
            {"MaxOffset", pass.m_maxOffset},
            {"Blank", pass.m_bBlank}};
}

// Takes the values of one object. Numbers have to be what they are said to be: nlohmann-json by itself would cut a
// fraction and wrap what is too large.
class CObject
{
public:
    CObject(const CJson& json, const char* pName) : m_json(json)
    {
        if (!json.is_object())
        {
            throw std::runtime_error(std::string(pName) + " is no object");
        }
    }

    bool Has(const char* pKey) const { return m_json.contains(pKey); }

    const CJson& At(const char* pKey) const
    {
        const auto found = m_json.find(pKey);
        if (found == m_json.end())
        {
            throw std::runtime_error(std::string(pKey) + " is missing");
        }
        return *found;
    }
    template<class TInteger>
    void Take(const char* pKey, TInteger& value) const
    {
        const CJson& json = At(pKey);
        const bool bLarge =
            json.is_number_unsigned() &&
            json.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<TInteger>::max());
        if (!json.is_number_integer() || bLarge ||
            (!json.is_number_unsigned() && json.get<std::int64_t>() < std::numeric_limits<TInteger>::min()))
        {
            throw std::runtime_error(std::string(pKey) + " is " +
                                     json.dump(-1, ' ', true, CJson::error_handler_t::replace) +
                                     "; it is a whole number of " + std::to_string(8 * sizeof(TInteger)) + " bits");
        }
        value = json.get<TInteger>();
    }
    void Take(const char* pKey, bool& bValue) const { Value_Take(pKey, &CJson::is_boolean, "true or false", bValue); }
    void Take(const char* pKey, double& value) const { Value_Take(pKey, &CJson::is_number, "a number", value); }
    void Take(const char* pKey, std::string& value) const { Value_Take(pKey, &CJson::is_string, "a text", value); }

private:
    template<class T>
    void Value_Take(const char* pKey, bool (CJson::*pIs)() const noexcept, const char* pWanted, T& value) const
    {
        const CJson& json = At(pKey);
        if (!(json.*pIs)())
        {
            throw std::runtime_error(std::string(pKey) + " is no " + pWanted);
        }
        value = json.get<T>();
    }

    const CJson& m_json;
};

SBoardUnitInfo Unit_Parse(const CJson& json, int version)
{
    const CObject unit(json, "a unit");
    SBoardUnitInfo info;
    unit.Take("UnitId", info.m_unitId);
    unit.Take("Direction", info.m_direction);
    unit.Take("Name", info.m_name);
    if (version > 1)
    {
        unit.Take("Separation", info.m_separation);
        unit.Take("UnitPosition", info.m_unitPosition);
        unit.Take("Horizon_1", info.m_horizon_1);
        unit.Take("Horizon_2", info.m_horizon_2);
        unit.Take("StripeColor", info.m_stripeColor);
        unit.Take("StripeLength", info.m_stripeLength);
    }
    return info;
}

[[noreturn]] void Value_Refuse(const std::string& name, const std::string& value, const std::string& wanted)
{
    throw std::runtime_error(name + " is " + value + "; it is " + wanted);
}

void Pages_Parse(const CObject& board, SBoardInfo& info)
{
    const CObject pages(board.At("Pages"), "Pages");
    pages.Take("Count", info.m_pageCount);
    pages.Take("Names", info.m_pageNames);
    if (info.m_pageNames != g_pageNames_Pattern && info.m_pageNames != g_pageNames_List)
    {
        Value_Refuse("Names", '"' + info.m_pageNames + '"', "pattern or list");
    }
    if (info.m_pageNames == g_pageNames_Pattern)
    {
        pages.Take("First", info.m_firstPage);
    }
    if (info.m_pageCount < 1 || info.m_firstPage < 0)
    {
        Value_Refuse("Pages", std::to_string(info.m_pageCount) + " from " + std::to_string(info.m_firstPage) + " on",
                     "at least one, from 0 on");
    }
    if (info.StepCount() > std::numeric_limits<std::int32_t>::max())
    {
        Value_Refuse("Count", std::to_string(info.m_pageCount), "no more pages than have numbers for all their bands");
    }
}

void Part_Parse(const CObject& board, SBoardInfo& info)
{
    const CObject part(board.At("Part"), "Part");
    std::int64_t first = 0;
    part.Take("First", first);
    part.Take("Last", info.m_partLast);
    if (first < 0 || info.m_partLast < first || info.m_partLast >= info.StepCount())
    {
        Value_Refuse("Part", std::to_string(first) + " to " + std::to_string(info.m_partLast),
                     "inside of 0 to " + std::to_string(info.StepCount() - 1));
    }
    info.m_partFirst = first;
}

void Info_Parse_2(const CObject& board, SBoardInfo& info)
{
    board.Take("Generator", info.m_generator);
    board.Take("Stage", info.m_stage);
    board.Take("DotSizeMode", info.m_dotSizeMode);
    board.Take("PrinterDataWidthUnit", info.m_printerDataWidthUnit);
    board.Take("FrameBits", info.m_frameBits);
    board.Take("Planes", info.m_planes);
    board.Take("LineBits", info.m_lineBits);
    board.Take("LinesPerPosition", info.m_linesPerPosition);
    board.Take("Bidirectional", info.m_bBidirectional);
    board.Take("SkipBlank", info.m_bSkipBlank);
    const CObject page(board.At("Page"), "Page");
    page.Take("Width", info.m_pageWidth);
    page.Take("Height", info.m_pageHeight);
    page.Take("XResolution", info.m_xResolution);
    page.Take("YResolution", info.m_yResolution);
    if (board.Has("Pages"))
    {
        Pages_Parse(board, info);
    }
    if (board.Has("Part"))
    {
        Part_Parse(board, info);
    }
    const CObject zones(board.At("Zones"), "Zones");
    zones.Take("LeftStripeWidth", info.m_leftZone);
    zones.Take("RightStripeWidth", info.m_rightZone);
    zones.Take("UnitPitch", info.m_unitPitch);
    zones.Take("UnitPositionCount", info.m_unitPositionCount);
    zones.Take("MaxOffset_1", info.m_maxOffset_1);
    zones.Take("MaxOffset_2", info.m_maxOffset_2);
}

SBoardInfo Info_Parse(const CJson& json, int version)
{
    const CObject board(json, "the board info");
    SBoardInfo info;
    info.m_version = version;
    board.Take("DataMapStyle", info.m_dataMapStyle);
    board.Take("DataPushStyle", info.m_dataPushStyle);
    board.Take("PrinterSupportBits", info.m_printerSupportBits);
    board.Take("Map", info.m_map);
    board.Take("PrinterDataWidth", info.m_printerDataWidth);
    board.Take("BitsPerUnit", info.m_bitsPerUnit);
    board.Take("Nozzles", info.m_nozzles);
    board.Take("BitsPerPixel", info.m_bitsPerPixel);
    if (version > 1)
    {
        Info_Parse_2(board, info);
    }
    const CJson& units = board.At("Units");
    if (!units.is_array())
    {
        throw std::runtime_error("Units is no array");
    }
    for (const CJson& unit : units)
    {
        info.m_units.push_back(Unit_Parse(unit, version));
    }
    return info;
}

SBandHeader Header_Parse(const CJson& json)
{
    const CObject object(json, "Header");
    SBandHeader header;
    for (const SBandHeaderWord& word : g_bandHeaderWords)
    {
        object.Take(std::string(word.m_name).c_str(), header.*word.m_pWord);
    }
    object.Take("m_bSkip", header.m_bSkip);
    return header;
}

SBoardPass Pass_Parse(const CJson& json)
{
    const CObject object(json, "Pass");
    SBoardPass pass;
    std::string direction;
    object.Take("Direction", direction);
    if (direction != "left-to-right" && direction != "right-to-left")
    {
        throw std::runtime_error("Direction is \"" + direction + "\"; it is left-to-right or right-to-left");
    }
    pass.m_bLeftToRight = direction == "left-to-right";
    object.Take("Positions", pass.m_positions);
    object.Take("FirstLineColumn", pass.m_firstLineColumn);
    object.Take("ColumnStep", pass.m_columnStep);
    object.Take("FirstZone", pass.m_firstZone);
    object.Take("LastZone", pass.m_lastZone);
    object.Take("MaxOffset", pass.m_maxOffset);
    object.Take("Blank", pass.m_bBlank);
    return pass;
}

CJson Json_Parse(const std::string& text)
{
    try
    {
        return CJson::parse(text);
    }
    catch (const CJson::exception& error)
    {
        throw std::runtime_error(error.what());
    }
}

} // namespace

SBoardPass BoardPass_Of(const SBoardInfo& info, const SBandHeader& header)
{
    SBoardPass pass;
    pass.m_bLeftToRight = header.m_bandAttr == leftToRight;
    pass.m_columnStep = pass.m_bLeftToRight ? 1 : -1;
    pass.m_firstZone = pass.m_bLeftToRight ? info.m_leftZone : info.m_rightZone;
    pass.m_lastZone = pass.m_bLeftToRight ? info.m_rightZone : info.m_leftZone;
    pass.m_maxOffset = pass.m_bLeftToRight ? info.m_maxOffset_2 : info.m_maxOffset_1;
    pass.m_positions = pass.m_firstZone + info.m_pageWidth + pass.m_lastZone + pass.m_maxOffset;
    pass.m_firstLineColumn = pass.m_bLeftToRight ? -pass.m_firstZone : info.m_pageWidth - 1 + pass.m_firstZone;
    return pass;
}

bool Band_IsBlank(const CBandData& band)
{
    return std::all_of(band.m_pData, band.m_pData + band.m_dataSize, [](unsigned char byte) { return byte == 0; });
}

std::string BoardInfo_Json(const SBoardInfo& info)
{
    return Json_Text(BoardInfo_ToJson(info));
}

SBoardInfo BoardInfo_Parse(const std::string& json, int version)
{
    return Info_Parse(Json_Parse(json), version);
}

std::string BandHeader_Json(const SBandHeader& header, const SBoardPass& pass, const SBoardInfo& info)
{
    return Json_Text({{"Format", "boardmap-band"},
                      {"Version", g_boardVersion},
                      {"Header", BandHeader_ToJson(header)},
                      {"Pass", Pass_ToJson(pass)},
                      {"Board", BoardInfo_ToJson(info)}});
}

SBandDescription BandHeader_Parse(const std::string& json)
{
    const CJson root = Json_Parse(json);
    const CObject object(root, "the description");
    std::string format;
    int version = 0;
    object.Take("Format", format);
    object.Take("Version", version);
    if (format != "boardmap-band")
    {
        throw std::runtime_error("Format is \"" + format + "\"; it is boardmap-band");
    }
    if (version != 1 && version != g_boardVersion)
    {
        throw std::runtime_error("Version is " + std::to_string(version) + "; this program reads versions 1 and " +
                                 std::to_string(g_boardVersion));
    }
    SBandDescription description;
    description.m_header = Header_Parse(object.At("Header"));
    description.m_info = Info_Parse(object.At("Board"), version);
    if (version > 1)
    {
        description.m_pass = Pass_Parse(object.At("Pass"));
    }
    return description;
}

std::string BoardUnit_Separation(const SBoardInfo& info, const SBoardUnitInfo& unit, int page)
{
    if (info.m_pageNames == g_pageNames_Pattern && !PagePattern_Fault(unit.m_separation))
    {
        return PageName_Make(unit.m_separation, std::int64_t{info.m_firstPage} + page);
    }
    return (info.m_pageNames == g_pageNames_List ? "the list that begins with " : "") + unit.m_separation;
}

std::string BoardUnit_Text(const SBoardUnitInfo& unit)
{
    return "unit " + std::to_string(unit.m_unitId) + (unit.m_name.empty() ? "" : " (" + unit.m_name + ")");
}
