// The names, table by table.
#include "Host/Job/JobTables.h"

#include <algorithm>
#include <array>

const SJobTable& JobTable_Root()
{
    static const SJobTable table = {"",
                                    {{"Version", "Version = 1"},
                                     {"Stage", ""},
                                     {"DPOption", ""},
                                     {"DPConfig", ""},
                                     {"PrintParam", ""},
                                     {"InkStripe", ""},
                                     {"Pages", ""},
                                     {"CartInfo", ""}}};
    return table;
}

const SJobTable& JobTable_Stage()
{
    static const SJobTable table = {
        "[Stage]",
        {{"Kind", "Kind = \"ink-stripe\""}, {"SkipBlank", "SkipBlank = true"}, {"InputBands", "InputBands = 3"}}};
    return table;
}

const SJobTable& JobTable_DPOption()
{
    static const SJobTable table = {"[DPOption]",
                                    {{"DataMapStyle", "DataMapStyle = \"FramePerPixel\""},
                                     {"DataPushStyle", "DataPushStyle = \"ByPixel\""},
                                     {"PrinterSupportBits", "PrinterSupportBits = \"OneBit\""},
                                     {"PrinterDataWidth", "PrinterDataWidth = 16"}}};
    return table;
}

const SJobTable& JobTable_DPConfig()
{
    static const SJobTable table = {"[DPConfig]",
                                    {{"LineGeneratorCount_Of_DataMap", "LineGeneratorCount_Of_DataMap = 2"}}};
    return table;
}

const SJobTable& JobTable_PrintParam()
{
    static const SJobTable table = {"[PrintParam]",
                                    {{"DotSizeMode", "DotSizeMode = \"Small\""},
                                     {"BitsPerPixel", "BitsPerPixel = 1"},
                                     {"AlignByteCountPerLine", "AlignByteCountPerLine = 1"},
                                     {"Bidirectional", "Bidirectional = true"},
                                     {"MaskCount_1", "MaskCount_1 = 1"},
                                     {"MaskCount_2", "MaskCount_2 = 1"}}};
    return table;
}

const SJobTable& JobTable_InkStripe()
{
    static const SJobTable table = {"[InkStripe]",
                                    {{"LeftStripeWidth", "LeftStripeWidth = 64"},
                                     {"RightStripeWidth", "RightStripeWidth = 64"},
                                     {"UnitPitch", "UnitPitch = 8"},
                                     {"UnitPositionCount", "UnitPositionCount = 8"},
                                     {"StripeLength", "StripeLength = 8"}}};
    return table;
}

const SJobTable& JobTable_Pages()
{
    static const SJobTable table = {
        "[Pages]", {{"First", "First = 1"}, {"Last", "Last = 12"}, {"MissingIsBlank", "MissingIsBlank = true"}}};
    return table;
}

const SJobTable& JobTable_CartInfo()
{
    static const SJobTable table = {"[CartInfo]", {{"Nozzles", "Nozzles = 400"}, {"Unit", ""}}};
    return table;
}

const SJobTable& JobTable_Unit()
{
    static const SJobTable table = {"[[CartInfo.Unit]]",
                                    {{"UnitId", "UnitId = 0"},
                                     {"Direction", "Direction = 1"},
                                     {"Separation", "Separation = \"page.Cyan.tif\""},
                                     {"Separations", R"(Separations = ["page1.Cyan.tif", "page2.Cyan.tif"])"},
                                     {"Name", "Name = \"Cyan\""},
                                     {"UnitPosition", "UnitPosition = 0"},
                                     {"Horizon_1", "Horizon_1 = 0"},
                                     {"Horizon_2", "Horizon_2 = 0"},
                                     {"StripeColor", "StripeColor = \"Full\""}}};
    return table;
}

std::span<const SJobTable* const> JobTables()
{
    static const std::array<const SJobTable*, 9> tables = {
        &JobTable_Root(),      &JobTable_Stage(), &JobTable_DPOption(), &JobTable_DPConfig(), &JobTable_PrintParam(),
        &JobTable_InkStripe(), &JobTable_Pages(), &JobTable_CartInfo(), &JobTable_Unit()};
    return tables;
}

bool JobTable_HasKey(const SJobTable& table, const std::string& name)
{
    return std::any_of(table.m_keys.begin(), table.m_keys.end(),
                       [&](const SJobKey& key) { return key.m_name == name; });
}

std::vector<std::string> JobTable_KeyNames(const SJobTable& table)
{
    std::vector<std::string> names;
    for (const SJobKey& key : table.m_keys)
    {
        names.push_back(key.m_name);
    }
    return names;
}

const std::string& JobTable_Example(const SJobTable& table, const std::string& name)
{
    return std::find_if(table.m_keys.begin(), table.m_keys.end(),
                        [&](const SJobKey& key) { return key.m_name == name; })
        ->m_example;
}
