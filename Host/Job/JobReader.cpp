// Reads the job file's tables through toml++, which only this file includes. All problems of the tables are collected,
// so that the one that is reported is the first of the file, and what is wrong comes before what is missing.
#include "Host/Job/JobReader.h"

#include "Host/HostError.h"
#include "Host/Job/JobNames.h"
#include "Host/Output/PathText.h"

#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <system_error>
#include <tuple>
#include <utility>

namespace
{

constexpr int supportedVersion = 1;
constexpr std::size_t longestFile = std::size_t{4} << 20U;
constexpr int highestUnitId = 511;
constexpr int mostUnitPositions = highestUnitId + 1;
// As many as the widest page has columns, so that no sum of a job's widths and offsets leaves 32 bits.
constexpr int mostScanPositions = 1 << 24;

// A key of a table, and a line that would be right where the key is missing.
struct SKey
{
    std::string m_name;
    std::string m_example;
};

// One of the file's tables: its name in messages ("[Stage]") and the keys that it may hold.
struct STable
{
    std::string m_name;
    std::vector<SKey> m_keys;
};

const STable& Table_Root()
{
    static const STable table = {"",
                                 {{"Version", "Version = 1"},
                                  {"Stage", ""},
                                  {"DPOption", ""},
                                  {"DPConfig", ""},
                                  {"PrintParam", ""},
                                  {"InkStripe", ""},
                                  {"CartInfo", ""}}};
    return table;
}

const STable& Table_Stage()
{
    static const STable table = {
        "[Stage]",
        {{"Kind", "Kind = \"ink-stripe\""}, {"SkipBlank", "SkipBlank = true"}, {"InputBands", "InputBands = 3"}}};
    return table;
}

const STable& Table_DPOption()
{
    static const STable table = {"[DPOption]",
                                 {{"DataMapStyle", "DataMapStyle = \"FramePerPixel\""},
                                  {"DataPushStyle", "DataPushStyle = \"ByPixel\""},
                                  {"PrinterSupportBits", "PrinterSupportBits = \"OneBit\""},
                                  {"PrinterDataWidth", "PrinterDataWidth = 16"}}};
    return table;
}

const STable& Table_DPConfig()
{
    static const STable table = {"[DPConfig]",
                                 {{"LineGeneratorCount_Of_DataMap", "LineGeneratorCount_Of_DataMap = 2"}}};
    return table;
}

const STable& Table_PrintParam()
{
    static const STable table = {"[PrintParam]",
                                 {{"DotSizeMode", "DotSizeMode = \"Small\""},
                                  {"BitsPerPixel", "BitsPerPixel = 1"},
                                  {"AlignByteCountPerLine", "AlignByteCountPerLine = 1"},
                                  {"Bidirectional", "Bidirectional = true"},
                                  {"MaskCount_1", "MaskCount_1 = 1"},
                                  {"MaskCount_2", "MaskCount_2 = 1"}}};
    return table;
}

const STable& Table_InkStripe()
{
    static const STable table = {"[InkStripe]",
                                 {{"LeftStripeWidth", "LeftStripeWidth = 64"},
                                  {"RightStripeWidth", "RightStripeWidth = 64"},
                                  {"UnitPitch", "UnitPitch = 8"},
                                  {"UnitPositionCount", "UnitPositionCount = 8"},
                                  {"StripeLength", "StripeLength = 8"}}};
    return table;
}

const STable& Table_CartInfo()
{
    static const STable table = {"[CartInfo]", {{"Nozzles", "Nozzles = 400"}, {"Unit", ""}}};
    return table;
}

const STable& Table_Unit()
{
    static const STable table = {"[[CartInfo.Unit]]",
                                 {{"UnitId", "UnitId = 0"},
                                  {"Direction", "Direction = 1"},
                                  {"Separation", "Separation = \"page.Cyan.tif\""},
                                  {"Name", "Name = \"Cyan\""},
                                  {"UnitPosition", "UnitPosition = 0"},
                                  {"Horizon_1", "Horizon_1 = 0"},
                                  {"Horizon_2", "Horizon_2 = 0"},
                                  {"StripeColor", "StripeColor = \"Full\""}}};
    return table;
}

const std::array<const STable*, 8>& Tables()
{
    static const std::array<const STable*, 8> tables = {&Table_Root(),     &Table_Stage(),      &Table_DPOption(),
                                                        &Table_DPConfig(), &Table_PrintParam(), &Table_InkStripe(),
                                                        &Table_CartInfo(), &Table_Unit()};
    return tables;
}

bool Table_HasKey(const STable& table, const std::string& name)
{
    return std::any_of(table.m_keys.begin(), table.m_keys.end(), [&](const SKey& key) { return key.m_name == name; });
}

std::vector<std::string> Table_KeyNames(const STable& table)
{
    std::vector<std::string> names;
    for (const SKey& key : table.m_keys)
    {
        names.push_back(key.m_name);
    }
    return names;
}

bool Node_IsTable(const toml::node& node)
{
    return node.is_table() || (node.is_array() && !node.as_array()->empty() && node.as_array()->is_array_of_tables());
}

SJobPlace Place_Of(const toml::source_region& source)
{
    return {std::max(1, static_cast<int>(source.begin.line)), std::max(1, static_cast<int>(source.begin.column))};
}

// What stands there, for a message.
std::string Node_Text(const toml::node& node)
{
    std::ostringstream text;
    if (const auto* pText = node.as_string())
    {
        text << "the text \"" << Text_Printable(pText->get()) << '"';
    }
    else if (const auto* pInteger = node.as_integer())
    {
        text << pInteger->get();
    }
    else if (const auto* pFraction = node.as_floating_point())
    {
        // With its point, without which it would look like the whole number that is asked for.
        text << pFraction->get();
        text << (text.str().find_first_of(".en") == std::string::npos ? ".0" : "");
    }
    else if (const auto* pFlag = node.as_boolean())
    {
        text << (pFlag->get() ? "true" : "false");
    }
    else
    {
        text << (node.is_table() ? "a table" : node.is_array() ? "an array" : "a date or time");
    }
    return text.str();
}

// Fills a job from the parsed tables.
class CJobReader
{
public:
    CJobReader(const std::filesystem::path& file, const toml::table& root) : m_folder(file.parent_path()), m_root(root)
    {
        m_job.m_file = Path_Text(file);
    }

    SJob Read();

private:
    // A table of the file while its keys are read; one that the file leaves out reads as empty.
    struct SOpenTable
    {
        const STable& m_table;
        const toml::table* m_pNode; // null: not in the file
        SJobPlace m_place;
        std::string m_key; // "DPOption", the beginning of its values' names in SJob::m_places; empty for a unit
    };

    // What is wrong goes before what is missing: a mistyped key is both.
    struct SProblem
    {
        bool m_bMissing = false;
        SJobPlace m_place;
        std::string m_text;
    };

    void Problem_Add(const SJobPlace& place, std::string text)
    {
        m_problems.push_back({false, place, std::move(text)});
    }
    void Missing_Add(const SJobPlace& place, std::string text) { m_problems.push_back({true, place, std::move(text)}); }
    void Problem_ThrowFirst() const;

    SOpenTable Table_Open(const STable& table, const std::string& key);
    void Table_CheckKeys(const STable& table, const toml::table& node);
    std::string UnknownKey_Text(const STable& table, const std::string& key, bool bTable) const;

    const toml::node* Value_Find(const SOpenTable& table, const std::string& key, bool bRequired);
    void Value_WrongType(const toml::node& node, const std::string& key, const std::string& wanted);
    template<class TInteger>
    void Integer_Read(const SOpenTable& table, const std::string& key, bool bRequired, int least, int most,
                      TInteger& value);
    void Flag_Read(const SOpenTable& table, const std::string& key, bool& bValue);
    std::optional<std::string> Text_Read(const SOpenTable& table, const std::string& key, bool bRequired);
    template<class TEnum>
    void Enum_Read(const SOpenTable& table, const std::string& key, bool bRequired, std::span<const SEnumName> names,
                   TEnum& value);
    std::optional<int> Enum_Value(const toml::node& node, const std::string& key, std::span<const SEnumName> names);

    void Version_Read();
    void Stage_Read();
    void StageKind_Read(const SOpenTable& table);
    void DPOption_Read();
    void DPConfig_Read();
    void PrintParam_Read();
    void Alignment_Read(const SOpenTable& table);
    void InkStripe_Read();
    void CartInfo_Read();
    void Units_Read(const SOpenTable& table);
    void Unit_Read(const toml::table& node);
    void Separation_Read(const SOpenTable& table, SJobUnit& unit);
    void StripeColor_Read(const SOpenTable& table, SJobUnit& unit);
    void Defaults_Fill();

    std::filesystem::path m_folder;
    const toml::table& m_root;
    SJob m_job;
    std::vector<SProblem> m_problems;
};

SJob CJobReader::Read()
{
    Version_Read();
    Table_CheckKeys(Table_Root(), m_root);
    Stage_Read();
    DPOption_Read();
    DPConfig_Read();
    PrintParam_Read();
    InkStripe_Read();
    CartInfo_Read();
    Problem_ThrowFirst();
    Defaults_Fill();
    return std::move(m_job);
}

void CJobReader::Problem_ThrowFirst() const
{
    const auto rank = [](const SProblem& problem)
    { return std::tuple(problem.m_bMissing, problem.m_place.m_line, problem.m_place.m_column); };
    const auto first =
        std::min_element(m_problems.begin(), m_problems.end(),
                         [&](const SProblem& left, const SProblem& right) { return rank(left) < rank(right); });
    if (first != m_problems.end())
    {
        throw CInputError(Job_PlaceText(m_job, first->m_place) + first->m_text);
    }
}

CJobReader::SOpenTable CJobReader::Table_Open(const STable& table, const std::string& key)
{
    SOpenTable open = {table, nullptr, {}, key};
    const toml::node* pNode = m_root.get(key);
    if (pNode == nullptr)
    {
        return open;
    }
    open.m_place = Place_Of(pNode->source());
    m_job.m_places[key] = open.m_place;
    open.m_pNode = pNode->as_table();
    if (open.m_pNode == nullptr)
    {
        Problem_Add(open.m_place, key + " is " + Node_Text(*pNode) + "; it is a table, written " + table.m_name);
        return open;
    }
    Table_CheckKeys(table, *open.m_pNode);
    return open;
}

void CJobReader::Table_CheckKeys(const STable& table, const toml::table& node)
{
    for (const auto& [key, value] : node)
    {
        const std::string name(key.str());
        if (!Table_HasKey(table, name))
        {
            Problem_Add(Place_Of(key.source()), UnknownKey_Text(table, name, Node_IsTable(value)));
        }
    }
}

std::string CJobReader::UnknownKey_Text(const STable& table, const std::string& key, bool bTable) const
{
    const bool bRoot = table.m_name.empty();
    const std::string printable = Text_Printable(key);
    std::string text = "unknown " + (bTable ? "table [" + printable + "]" : "key " + printable);
    text += bRoot ? "" : " in " + table.m_name;
    const std::vector<std::string> known = Table_KeyNames(table);
    for (const STable* pOther : Tables())
    {
        if (Table_HasKey(*pOther, key))
        {
            const bool bOtherRoot = pOther->m_name.empty();
            return text + "; it belongs " + (bOtherRoot ? "before the first table" : "in " + pOther->m_name);
        }
    }
    if (const std::optional<std::string> nearest = Name_Nearest(key, known))
    {
        return text + "; did you mean " + (bRoot && *nearest != "Version" ? "[" + *nearest + "]" : *nearest) + "?";
    }
    return text + "; known " + (bRoot ? "here are " : "are ") + Names_List(known, "and");
}

const toml::node* CJobReader::Value_Find(const SOpenTable& table, const std::string& key, bool bRequired)
{
    const toml::node* pNode = table.m_pNode == nullptr ? nullptr : table.m_pNode->get(key);
    if (pNode != nullptr)
    {
        if (!table.m_key.empty())
        {
            m_job.m_places[table.m_key + '.' + key] = Place_Of(pNode->source());
        }
        return pNode;
    }
    // A table that is there but is none has its problem already.
    if (bRequired && (table.m_pNode != nullptr || !m_job.m_places.contains(table.m_key)))
    {
        const auto& keys = table.m_table.m_keys;
        const auto found =
            std::find_if(keys.begin(), keys.end(), [&](const SKey& known) { return known.m_name == key; });
        Missing_Add(table.m_place,
                    key + " is missing from " + table.m_table.m_name + "; for example: " + found->m_example);
    }
    return nullptr;
}

void CJobReader::Value_WrongType(const toml::node& node, const std::string& key, const std::string& wanted)
{
    Problem_Add(Place_Of(node.source()), key + " is " + Node_Text(node) + "; it takes " + wanted);
}

template<class TInteger>
void CJobReader::Integer_Read(const SOpenTable& table, const std::string& key, bool bRequired, int least, int most,
                              TInteger& value)
{
    const toml::node* pNode = Value_Find(table, key, bRequired);
    if (pNode == nullptr)
    {
        return;
    }
    const auto* pInteger = pNode->as_integer();
    if (pInteger == nullptr)
    {
        Value_WrongType(*pNode, key, "a whole number");
    }
    else if (pInteger->get() < least || pInteger->get() > most)
    {
        Value_WrongType(*pNode, key,
                        std::to_string(least) + (most == least + 1 ? " or " : " to ") + std::to_string(most));
    }
    else
    {
        value = static_cast<TInteger>(pInteger->get());
    }
}

void CJobReader::Flag_Read(const SOpenTable& table, const std::string& key, bool& bValue)
{
    const toml::node* pNode = Value_Find(table, key, false);
    if (pNode == nullptr)
    {
        return;
    }
    if (const auto* pFlag = pNode->as_boolean())
    {
        bValue = pFlag->get();
        return;
    }
    Value_WrongType(*pNode, key, "true or false");
}

std::optional<std::string> CJobReader::Text_Read(const SOpenTable& table, const std::string& key, bool bRequired)
{
    const toml::node* pNode = Value_Find(table, key, bRequired);
    if (pNode == nullptr)
    {
        return std::nullopt;
    }
    if (const auto* pText = pNode->as_string())
    {
        return pText->get();
    }
    Value_WrongType(*pNode, key, "a text in quotes");
    return std::nullopt;
}

template<class TEnum>
void CJobReader::Enum_Read(const SOpenTable& table, const std::string& key, bool bRequired,
                           std::span<const SEnumName> names, TEnum& value)
{
    const toml::node* pNode = Value_Find(table, key, bRequired);
    if (pNode == nullptr)
    {
        return;
    }
    if (const std::optional<int> found = Enum_Value(*pNode, key, names))
    {
        value = static_cast<TEnum>(*found);
    }
}

std::optional<int> CJobReader::Enum_Value(const toml::node& node, const std::string& key,
                                          std::span<const SEnumName> names)
{
    const auto* pText = node.as_string();
    const auto* pInteger = node.as_integer();
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const SEnumName& name)
                                    {
                                        return (pText != nullptr && pText->get() == name.m_name) ||
                                               (pInteger != nullptr && pInteger->get() == name.m_value);
                                    });
    if (found != names.end())
    {
        return found->m_value;
    }
    const std::vector<std::string> known = EnumNames_List(names);
    const std::optional<std::string> nearest = pText == nullptr ? std::nullopt : Name_Nearest(pText->get(), known);
    const std::string what = pText == nullptr ? Node_Text(node) : '"' + Text_Printable(pText->get()) + '"';
    Problem_Add(Place_Of(node.source()), key + " is " + what + "; " +
                                             (nearest ? "did you mean \"" + *nearest + "\"? It" : std::string("it")) +
                                             " takes " + EnumNames_Text(names));
    return std::nullopt;
}

void CJobReader::Version_Read()
{
    // Before all else: what a newer version means by its other keys is unknown here.
    const toml::node* pNode = m_root.get("Version");
    if (pNode == nullptr)
    {
        throw CInputError(Job_PlaceText(m_job, SJobPlace{}) +
                          "Version is missing from the beginning of the job file; for example: Version = 1");
    }
    const auto* pInteger = pNode->as_integer();
    if (pInteger == nullptr || pInteger->get() != supportedVersion)
    {
        throw CInputError(Job_PlaceText(m_job, Place_Of(pNode->source())) + "Version is " + Node_Text(*pNode) +
                          "; this program reads version " + std::to_string(supportedVersion));
    }
    m_job.m_version = supportedVersion;
}

void CJobReader::Stage_Read()
{
    constexpr int fewestInputBands = 2;
    constexpr int mostInputBands = 64;
    const SOpenTable table = Table_Open(Table_Stage(), "Stage");
    StageKind_Read(table);
    Flag_Read(table, "SkipBlank", m_job.m_bSkipBlank);
    Integer_Read(table, "InputBands", false, fewestInputBands, mostInputBands, m_job.m_inputBands);
}

void CJobReader::StageKind_Read(const SOpenTable& table)
{
    const std::optional<std::string> kind = Text_Read(table, "Kind", false);
    if (!kind)
    {
        return;
    }
    for (const SEnumName& name : EnumNames_StageKind())
    {
        if (*kind == name.m_name)
        {
            m_job.m_stageKind = static_cast<EStageKind>(name.m_value);
            return;
        }
    }
    const std::vector<std::string> known = EnumNames_List(EnumNames_StageKind());
    const std::optional<std::string> nearest = Name_Nearest(*kind, known);
    Problem_Add(m_job.m_places.at("Stage.Kind"),
                "Kind is \"" + Text_Printable(*kind) + "\"; " +
                    (nearest ? "did you mean \"" + *nearest + "\"? It" : std::string("it")) + " takes " +
                    Names_List(known, "or"));
}

void CJobReader::DPOption_Read()
{
    // A table map's byte table grows with the square of the frame width: 64 MiB at 512 bits.
    constexpr int widestFrame = 512;
    const SOpenTable table = Table_Open(Table_DPOption(), "DPOption");
    SDPOption& option = m_job.m_dpOption;
    Enum_Read(table, "DataMapStyle", true, EnumNames_DataMapStyle(), option.m_dataMapStyle);
    Enum_Read(table, "DataPushStyle", false, EnumNames_DataPushStyle(), option.m_dataPushStyle);
    Enum_Read(table, "PrinterSupportBits", false, EnumNames_PrinterSupportBits(), option.m_printerSupportBits);
    Integer_Read(table, "PrinterDataWidth", true, 1, widestFrame, option.m_printerDataWidth);
}

void CJobReader::DPConfig_Read()
{
    constexpr int mostLineGenerators = 64;
    const SOpenTable table = Table_Open(Table_DPConfig(), "DPConfig");
    Integer_Read(table, "LineGeneratorCount_Of_DataMap", false, 1, mostLineGenerators, m_job.m_lineGeneratorCount);
}

void CJobReader::PrintParam_Read()
{
    constexpr int mostMasks = 16;
    const SOpenTable table = Table_Open(Table_PrintParam(), "PrintParam");
    Enum_Read(table, "DotSizeMode", false, EnumNames_DotSizeMode(), m_job.m_dotSizeMode);
    Integer_Read(table, "BitsPerPixel", true, 1, 2, m_job.m_bitsPerPixel);
    Alignment_Read(table);
    Flag_Read(table, "Bidirectional", m_job.m_bBidirectional);
    Integer_Read(table, "MaskCount_1", false, 1, mostMasks, m_job.m_maskCount_1);
    Integer_Read(table, "MaskCount_2", false, 1, mostMasks, m_job.m_maskCount_2);
}

void CJobReader::InkStripe_Read()
{
    const SOpenTable table = Table_Open(Table_InkStripe(), "InkStripe");
    SJobInkStripe& stripe = m_job.m_inkStripe;
    Integer_Read(table, "LeftStripeWidth", false, 0, mostScanPositions, stripe.m_leftStripeWidth);
    Integer_Read(table, "RightStripeWidth", false, 0, mostScanPositions, stripe.m_rightStripeWidth);
    Integer_Read(table, "UnitPitch", false, 0, mostScanPositions, stripe.m_unitPitch);
    Integer_Read(table, "UnitPositionCount", false, 1, mostUnitPositions, stripe.m_unitPositionCount);
    Integer_Read(table, "StripeLength", false, 1, mostScanPositions, stripe.m_stripeLength);
}

void CJobReader::Alignment_Read(const SOpenTable& table)
{
    // The widest is that of a band's first byte.
    constexpr int widestAlignment = CBandData::dataAlignment;
    const std::string key = "AlignByteCountPerLine";
    const toml::node* pNode = Value_Find(table, key, false);
    if (pNode == nullptr)
    {
        return;
    }
    const std::int64_t value = pNode->as_integer() == nullptr ? 0 : pNode->as_integer()->get();
    if (value < 1 || value > widestAlignment || !std::has_single_bit(static_cast<std::uint64_t>(value)))
    {
        Value_WrongType(*pNode, key, "1, 2, 4, 8, 16, 32 or 64");
        return;
    }
    m_job.m_alignByteCountPerLine = static_cast<int>(value);
}

void CJobReader::CartInfo_Read()
{
    const SOpenTable table = Table_Open(Table_CartInfo(), "CartInfo");
    Integer_Read(table, "Nozzles", true, 1, std::numeric_limits<int>::max(), m_job.m_nozzles);
    Units_Read(table);
}

void CJobReader::Units_Read(const SOpenTable& table)
{
    const toml::node* pNode = Value_Find(table, "Unit", false);
    if (pNode == nullptr)
    {
        if (table.m_pNode != nullptr || !m_job.m_places.contains("CartInfo"))
        {
            Missing_Add(table.m_place, "[[CartInfo.Unit]] is missing; a job needs one for each print unit");
        }
        return;
    }
    const toml::array* pUnits = pNode->as_array();
    if (pUnits == nullptr)
    {
        Problem_Add(Place_Of(pNode->source()),
                    "Unit is " + Node_Text(*pNode) + "; it is written [[CartInfo.Unit]], once for each print unit");
        return;
    }
    if (pUnits->empty())
    {
        Problem_Add(Place_Of(pNode->source()), "Unit is empty; a job needs a [[CartInfo.Unit]] for each print unit");
    }
    for (const toml::node& unit : *pUnits)
    {
        if (const toml::table* pUnit = unit.as_table())
        {
            Unit_Read(*pUnit);
        }
        else
        {
            Problem_Add(Place_Of(unit.source()), "Unit holds " + Node_Text(unit) +
                                                     "; it is written [[CartInfo.Unit]], once for each print unit");
        }
    }
}

void CJobReader::Unit_Read(const toml::table& node)
{
    Table_CheckKeys(Table_Unit(), node);
    const SOpenTable table = {Table_Unit(), &node, Place_Of(node.source()), ""};
    const auto place_of = [&](const char* pKey)
    {
        const toml::node* pNode = node.get(pKey);
        return pNode == nullptr ? table.m_place : Place_Of(pNode->source());
    };
    SJobUnit unit;
    unit.m_place_UnitId = place_of("UnitId");
    unit.m_place_Separation = place_of("Separation");
    unit.m_place_UnitPosition = place_of("UnitPosition");
    unit.m_stripeColor.m_place = place_of("StripeColor");
    unit.m_unitPosition = static_cast<int>(m_job.m_units.size());
    Integer_Read(table, "UnitId", true, 0, highestUnitId, unit.m_unitId);
    Enum_Read(table, "Direction", false, EnumNames_Direction(), unit.m_direction);
    Separation_Read(table, unit);
    unit.m_name = Text_Read(table, "Name", false).value_or("");
    Integer_Read(table, "UnitPosition", false, 0, mostUnitPositions - 1, unit.m_unitPosition);
    Integer_Read(table, "Horizon_1", false, 0, mostScanPositions, unit.m_horizon_1);
    Integer_Read(table, "Horizon_2", false, 0, mostScanPositions, unit.m_horizon_2);
    StripeColor_Read(table, unit);
    m_job.m_units.push_back(std::move(unit));
}

bool IsFileName(const std::string& text)
{
    const auto IsControl = [](char character) { return static_cast<unsigned char>(character) < 0x20; };
    return !text.empty() && std::none_of(text.begin(), text.end(), IsControl);
}

void CJobReader::Separation_Read(const SOpenTable& table, SJobUnit& unit)
{
    const std::optional<std::string> separation = Text_Read(table, "Separation", false);
    if (separation && !IsFileName(*separation))
    {
        Problem_Add(unit.m_place_Separation,
                    "Separation is \"" + Text_Printable(*separation) + "\"; it takes the name of a TIFF file");
    }
    unit.m_separation = separation.value_or("");
    unit.m_separationPath = m_folder / Path_FromText(unit.m_separation);
}

// A word is a solid stripe, and must be one of the known ones; a file has a dot or a folder in its name.
void CJobReader::StripeColor_Read(const SOpenTable& table, SJobUnit& unit)
{
    SJobStripeColor& color = unit.m_stripeColor;
    const std::optional<std::string> text = Text_Read(table, "StripeColor", false);
    if (!text)
    {
        return;
    }
    color.m_text = *text;
    for (const SEnumName& name : EnumNames_StripeFill())
    {
        if (*text == name.m_name)
        {
            color.m_fill = static_cast<EStripeFill>(name.m_value);
            return;
        }
    }
    if (IsFileName(*text) && text->find_first_of("./\\") != std::string::npos)
    {
        color.m_path = m_folder / Path_FromText(*text);
        return;
    }
    std::vector<std::string> known = EnumNames_List(EnumNames_StripeFill());
    const std::optional<std::string> nearest = Name_Nearest(*text, known);
    known.emplace_back("the name of a TIFF file, for example stripe.tif");
    Problem_Add(color.m_place, "StripeColor is \"" + Text_Printable(*text) + "\"; " +
                                   (nearest ? "did you mean \"" + *nearest + "\"? It" : std::string("it")) + " takes " +
                                   Names_List(known, "or"));
}

// What follows from other values where the file leaves it out.
void CJobReader::Defaults_Fill()
{
    SJobInkStripe& stripe = m_job.m_inkStripe;
    if (stripe.m_unitPositionCount == 0)
    {
        for (const SJobUnit& unit : m_job.m_units)
        {
            stripe.m_unitPositionCount = std::max(stripe.m_unitPositionCount, unit.m_unitPosition + 1);
        }
    }
    if (stripe.m_stripeLength == 0)
    {
        stripe.m_stripeLength = stripe.m_unitPitch;
    }
}

[[noreturn]] void File_Refuse(const std::filesystem::path& file, const std::string& reason)
{
    throw CInputError(Path_Text(file) + ": " + reason);
}

std::string SystemError_Text(int error)
{
    return error == 0 ? "unknown reason" : std::generic_category().message(error);
}

} // namespace

std::string JobText_Read(const std::filesystem::path& file)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
    {
        File_Refuse(file, "there is no such job file");
    }
    if (std::filesystem::is_directory(status))
    {
        File_Refuse(file, "is a folder, not a job file");
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    {
        File_Refuse(file, "is a device or a pipe, not a job file"); // opening it could wait for ever
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
    {
        File_Refuse(file, "cannot be opened: " + SystemError_Text(errno));
    }
    std::string text(longestFile + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (stream.bad())
    {
        File_Refuse(file, "cannot be read: " + SystemError_Text(errno));
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.empty())
    {
        File_Refuse(file, "the job file is empty");
    }
    if (text.size() > longestFile)
    {
        File_Refuse(file, "is longer than 4 MiB; a job file is a short text");
    }
    return text;
}

SJob JobText_Parse(const std::filesystem::path& file, const std::string& text)
{
    try
    {
        const toml::table root = toml::parse(text);
        return CJobReader(file, root).Read();
    }
    catch (const toml::parse_error& error)
    {
        SJob job;
        job.m_file = Path_Text(file);
        std::string description(error.description());
        if (description.find("invalid utf-8") != std::string::npos)
        {
            description = "a job file is UTF-8 text; here are bytes that are not";
        }
        throw CInputError(Job_PlaceText(job, Place_Of(error.source())) + Text_Printable(description));
    }
}
