// The JSON of board files, through nlohmann-json, which only this file includes.
#include "Host/Output/BoardInfo.h"

#include "Host/Output/BandHeaderWords.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace
{

using CJson = nlohmann::ordered_json;

constexpr int formatVersion = 1;

std::string Json_Text(const CJson& json)
{
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace);
}

CJson BoardInfo_ToJson(const SBoardInfo& info)
{
    CJson units = CJson::array();
    for (const SBoardUnitInfo& unit : info.m_units)
    {
        units.push_back({{"UnitId", unit.m_unitId}, {"Direction", unit.m_direction}, {"Name", unit.m_name}});
    }
    return {{"DataMapStyle", info.m_dataMapStyle},
            {"DataPushStyle", info.m_dataPushStyle},
            {"PrinterSupportBits", info.m_printerSupportBits},
            {"Map", info.m_map},
            {"PrinterDataWidth", info.m_printerDataWidth},
            {"BitsPerUnit", info.m_bitsPerUnit},
            {"Nozzles", info.m_nozzles},
            {"BitsPerPixel", info.m_bitsPerPixel},
            {"Units", std::move(units)}};
}

CJson BandHeader_ToJson(const SBandHeader& header)
{
    CJson json;
    for (const SBandHeaderWord& word : g_bandHeaderWords)
    {
        json[std::string(word.m_name)] = header.*word.m_pWord;
    }
    json["m_bSkip"] = header.m_bSkip;
    return json;
}

} // namespace

std::string BoardInfo_Json(const SBoardInfo& info)
{
    return Json_Text(BoardInfo_ToJson(info));
}

SBoardInfo BoardInfo_Parse(const std::string& json)
{
    try
    {
        const CJson board = CJson::parse(json);
        SBoardInfo info;
        board.at("DataMapStyle").get_to(info.m_dataMapStyle);
        board.at("DataPushStyle").get_to(info.m_dataPushStyle);
        board.at("PrinterSupportBits").get_to(info.m_printerSupportBits);
        board.at("Map").get_to(info.m_map);
        board.at("PrinterDataWidth").get_to(info.m_printerDataWidth);
        board.at("BitsPerUnit").get_to(info.m_bitsPerUnit);
        board.at("Nozzles").get_to(info.m_nozzles);
        board.at("BitsPerPixel").get_to(info.m_bitsPerPixel);
        for (const CJson& unit : board.at("Units"))
        {
            info.m_units.push_back(
                {unit.at("UnitId").get<int>(), unit.at("Direction").get<int>(), unit.at("Name").get<std::string>()});
        }
        return info;
    }
    catch (const CJson::exception& error)
    {
        throw std::runtime_error(error.what());
    }
}

std::string BandHeader_Json(const SBandHeader& header, const SBoardInfo& info)
{
    return Json_Text({{"Format", "boardmap-band"},
                      {"Version", formatVersion},
                      {"Header", BandHeader_ToJson(header)},
                      {"Board", BoardInfo_ToJson(info)}});
}
