// Which value of the job file goes where in a job, and between which limits.
#include "Host/Job/JobReader.h"

#include "Host/HostError.h"
#include "Host/Job/JobTables.h"
#include "Host/Job/JobValues.h"
#include "Host/Job/KeyDepth.h"
#include "Host/PageName.h"
#include "Host/PathText.h"
#include "Platform/BandData/BandData.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace
{

constexpr int supportedVersion = 1;
constexpr int highestUnitId = 511;
constexpr int mostUnitPositions = highestUnitId + 1;
// As many as the widest page has columns, so that no sum of a job's widths and offsets leaves 32 bits.
constexpr int mostScanPositions = 1 << 24;
constexpr int mostPages = 100000;
constexpr int highestPageNumber = 999999999;

bool IsFileName(const std::string& text)
{
    const auto IsControl = [](char character) { return static_cast<unsigned char>(character) < 0x20; };
    return !text.empty() && std::none_of(text.begin(), text.end(), IsControl);
}

// Fills a job from the parsed tables.
class CJobReader
{
public:
    CJobReader(const std::filesystem::path& file, const toml::table& root, CMistakeList& mistakes)
        : m_root(root), m_values(root, m_job, mistakes)
    {
        m_job.m_file = Path_Text(file);
        m_job.m_folder = file.parent_path();
    }

    SJob Read();

private:
    void Version_Read();
    void Stage_Read();
    void StageKind_Read(const SOpenTable& table);
    void DPOption_Read();
    void DPConfig_Read();
    void PrintParam_Read();
    void Alignment_Read(const SOpenTable& table);
    void InkStripe_Read();
    void Pages_Read();
    void CartInfo_Read();
    void Units_Read(const SOpenTable& table);
    void Unit_Read(const toml::table& node);
    void Separation_Read(const SOpenTable& table, SJobUnit& unit);
    void Separations_Read(const SOpenTable& table, SJobUnit& unit);
    void Separation_Take(const SOpenTable& table, const toml::node& node, SJobUnit& unit);
    void Pattern_Check(const SOpenTable& table, const SJobUnit& unit);
    void Pages_Count();
    void StripeColor_Read(const SOpenTable& table, SJobUnit& unit);
    void Defaults_Fill();

    const toml::table& m_root;
    SJob m_job;
    CJobValues m_values;
};

SJob CJobReader::Read()
{
    Version_Read();
    m_values.Keys_Check(JobTable_Root(), m_root, "");
    Stage_Read();
    DPOption_Read();
    DPConfig_Read();
    PrintParam_Read();
    InkStripe_Read();
    Pages_Read();
    CartInfo_Read();
    Pages_Count();
    m_values.Finish();
    Defaults_Fill();
    return std::move(m_job);
}

void CJobReader::Version_Read()
{
    // Before all else: what a newer version means by its other keys is unknown here.
    const toml::node* pNode = m_root.get("Version");
    if (pNode == nullptr)
    {
        throw CInputError(
            {SMistake{false, m_job.m_file, SJobPlace{}, "version",
                      "Version is missing from the beginning of the job file", "for example: Version = 1"}});
    }
    const auto* pInteger = pNode->as_integer();
    if (pInteger == nullptr || pInteger->get() != supportedVersion)
    {
        throw CInputError(
            {SMistake{false, m_job.m_file, Node_Place(pNode->source()), "version", "Version is " + Node_Text(*pNode),
                      "this program reads version " + std::to_string(supportedVersion)}});
    }
    m_job.m_version = supportedVersion;
}

void CJobReader::Stage_Read()
{
    constexpr int fewestInputBands = 2;
    constexpr int mostInputBands = 64;
    const SOpenTable table = m_values.Table_Open(JobTable_Stage(), "Stage");
    StageKind_Read(table);
    m_values.Flag_Read(table, "SkipBlank", m_job.m_bSkipBlank);
    m_values.Integer_Read(table, "InputBands", false, fewestInputBands, mostInputBands, m_job.m_inputBands);
}

void CJobReader::StageKind_Read(const SOpenTable& table)
{
    const std::optional<std::string> kind = m_values.Text_Read(table, "Kind");
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
    m_values.Wrong_Add(table, "Kind", m_job.m_places.at("Stage.Kind"), "Kind is \"" + Text_Printable(*kind) + '"',
                       (nearest ? "did you mean \"" + *nearest + "\"? It" : std::string("it")) + " takes " +
                           Names_List(known, "or"));
}

void CJobReader::DPOption_Read()
{
    // A table map's byte table grows with the square of the frame width: 64 MiB at 512 bits.
    constexpr int widestFrame = 512;
    const SOpenTable table = m_values.Table_Open(JobTable_DPOption(), "DPOption");
    SDPOption& option = m_job.m_dpOption;
    m_values.Enum_Read(table, "DataMapStyle", true, EnumNames_DataMapStyle(), option.m_dataMapStyle);
    m_values.Enum_Read(table, "DataPushStyle", false, EnumNames_DataPushStyle(), option.m_dataPushStyle);
    m_values.Enum_Read(table, "PrinterSupportBits", false, EnumNames_PrinterSupportBits(), option.m_printerSupportBits);
    m_values.Integer_Read(table, "PrinterDataWidth", true, 1, widestFrame, option.m_printerDataWidth);
}

void CJobReader::DPConfig_Read()
{
    constexpr int mostLineGenerators = 64;
    const SOpenTable table = m_values.Table_Open(JobTable_DPConfig(), "DPConfig");
    m_values.Integer_Read(table, "LineGeneratorCount_Of_DataMap", false, 1, mostLineGenerators,
                          m_job.m_lineGeneratorCount);
}

void CJobReader::PrintParam_Read()
{
    constexpr int mostMasks = 16;
    const SOpenTable table = m_values.Table_Open(JobTable_PrintParam(), "PrintParam");
    m_values.Enum_Read(table, "DotSizeMode", false, EnumNames_DotSizeMode(), m_job.m_dotSizeMode);
    m_values.Integer_Read(table, "BitsPerPixel", true, 1, 2, m_job.m_bitsPerPixel);
    Alignment_Read(table);
    m_values.Flag_Read(table, "Bidirectional", m_job.m_bBidirectional);
    m_values.Integer_Read(table, "MaskCount_1", false, 1, mostMasks, m_job.m_maskCount_1);
    m_values.Integer_Read(table, "MaskCount_2", false, 1, mostMasks, m_job.m_maskCount_2);
}

void CJobReader::InkStripe_Read()
{
    const SOpenTable table = m_values.Table_Open(JobTable_InkStripe(), "InkStripe");
    SJobInkStripe& stripe = m_job.m_inkStripe;
    m_values.Integer_Read(table, "LeftStripeWidth", false, 0, mostScanPositions, stripe.m_leftStripeWidth);
    m_values.Integer_Read(table, "RightStripeWidth", false, 0, mostScanPositions, stripe.m_rightStripeWidth);
    m_values.Integer_Read(table, "UnitPitch", false, 0, mostScanPositions, stripe.m_unitPitch);
    m_values.Integer_Read(table, "UnitPositionCount", false, 1, mostUnitPositions, stripe.m_unitPositionCount);
    m_values.Integer_Read(table, "StripeLength", false, 1, mostScanPositions, stripe.m_stripeLength);
}

// With First and Last the names are patterns, whatever is in them; without, a percent sign is one.
void CJobReader::Pages_Read()
{
    const SOpenTable table = m_values.Table_Open(JobTable_Pages(), "Pages");
    SJobPages& pages = m_job.m_pages;
    pages.m_place = table.m_place;
    m_values.Flag_Read(table, "MissingIsBlank", pages.m_bMissingBlank);
    const bool bFirst = table.m_pNode != nullptr && table.m_pNode->contains("First");
    if (!bFirst && (table.m_pNode == nullptr || !table.m_pNode->contains("Last")))
    {
        return;
    }
    pages.m_names = EPageNames::Pattern;
    int last = 0;
    m_values.Integer_Read(table, "First", false, 0, highestPageNumber, pages.m_first);
    m_values.Integer_Read(table, "Last", true, 0, highestPageNumber, last);
    if (m_job.m_mistaken.contains("Pages.First") || m_job.m_mistaken.contains("Pages.Last"))
    {
        return;
    }
    if (last < pages.m_first || last - pages.m_first >= mostPages)
    {
        m_values.Wrong_Add(table, "Last", m_job.m_places.at("Pages.Last"), "Last is " + std::to_string(last),
                           "First is " + std::to_string(pages.m_first) + ", and a job has 1 to " +
                               std::to_string(mostPages) + " pages");
        return;
    }
    pages.m_count = last - pages.m_first + 1;
}

void CJobReader::Alignment_Read(const SOpenTable& table)
{
    // The widest is that of a band's first byte.
    constexpr int widestAlignment = CBandData::dataAlignment;
    const std::string key = "AlignByteCountPerLine";
    const toml::node* pNode = m_values.Value_Find(table, key, false);
    if (pNode == nullptr)
    {
        return;
    }
    const std::int64_t value = pNode->as_integer() == nullptr ? 0 : pNode->as_integer()->get();
    if (value < 1 || value > widestAlignment || !std::has_single_bit(static_cast<std::uint64_t>(value)))
    {
        m_values.WrongType_Add(table, key, *pNode, "1, 2, 4, 8, 16, 32 or 64");
        return;
    }
    m_job.m_alignByteCountPerLine = static_cast<int>(value);
}

void CJobReader::CartInfo_Read()
{
    const SOpenTable table = m_values.Table_Open(JobTable_CartInfo(), "CartInfo");
    m_values.Integer_Read(table, "Nozzles", true, 1, std::numeric_limits<int>::max(), m_job.m_nozzles);
    Units_Read(table);
}

void CJobReader::Units_Read(const SOpenTable& table)
{
    const std::string how = "it is written [[CartInfo.Unit]], once for each print unit";
    const toml::node* pNode = m_values.Value_Find(table, "Unit", false);
    if (pNode == nullptr)
    {
        if (!m_job.m_mistaken.contains("CartInfo"))
        {
            m_values.Missing_Add(table, "Unit", "[[CartInfo.Unit]] is missing", "a job needs one for each print unit");
        }
        return;
    }
    const toml::array* pUnits = pNode->as_array();
    if (pUnits == nullptr)
    {
        m_values.Wrong_Add(table, "Unit", Node_Place(pNode->source()), "Unit is " + Node_Text(*pNode), how);
        return;
    }
    if (pUnits->empty())
    {
        m_values.Wrong_Add(table, "Unit", Node_Place(pNode->source()), "Unit is empty",
                           "a job needs a [[CartInfo.Unit]] for each print unit");
    }
    for (const toml::node& unit : *pUnits)
    {
        if (const toml::table* pUnit = unit.as_table())
        {
            Unit_Read(*pUnit);
        }
        else
        {
            m_values.Wrong_Add(table, "Unit", Node_Place(unit.source()), "Unit holds " + Node_Text(unit), how);
        }
    }
}

void CJobReader::Unit_Read(const toml::table& node)
{
    const std::string tableKey = "CartInfo.Unit[" + std::to_string(m_job.m_units.size()) + ']';
    m_values.Keys_Check(JobTable_Unit(), node, tableKey);
    const SOpenTable table = {JobTable_Unit(), &node, Node_Place(node.source()), tableKey};
    const auto place_of = [&](const char* pKey)
    {
        const toml::node* pNode = node.get(pKey);
        return pNode == nullptr ? table.m_place : Node_Place(pNode->source());
    };
    SJobUnit unit;
    unit.m_place_UnitId = place_of("UnitId");
    unit.m_place_Separation = place_of("Separation");
    unit.m_place_UnitPosition = place_of("UnitPosition");
    unit.m_stripeColor.m_place = place_of("StripeColor");
    unit.m_unitPosition = static_cast<int>(m_job.m_units.size());
    m_values.Integer_Read(table, "UnitId", true, 0, highestUnitId, unit.m_unitId);
    m_values.Enum_Read(table, "Direction", false, EnumNames_Direction(), unit.m_direction);
    Separation_Read(table, unit);
    Separations_Read(table, unit);
    unit.m_name = m_values.Text_Read(table, "Name").value_or("");
    m_values.Integer_Read(table, "UnitPosition", false, 0, mostUnitPositions - 1, unit.m_unitPosition);
    m_values.Integer_Read(table, "Horizon_1", false, 0, mostScanPositions, unit.m_horizon_1);
    m_values.Integer_Read(table, "Horizon_2", false, 0, mostScanPositions, unit.m_horizon_2);
    StripeColor_Read(table, unit);
    m_job.m_units.push_back(std::move(unit));
}

void CJobReader::Separation_Read(const SOpenTable& table, SJobUnit& unit)
{
    const std::optional<std::string> separation = m_values.Text_Read(table, "Separation");
    if (separation && !IsFileName(*separation))
    {
        m_values.Wrong_Add(table, "Separation", unit.m_place_Separation,
                           "Separation is \"" + Text_Printable(*separation) + '"', "it takes the name of a TIFF file");
        return;
    }
    unit.m_separation = separation.value_or("");
    if (m_job.m_pages.m_names == EPageNames::Pattern && unit.HasSeparation())
    {
        Pattern_Check(table, unit);
    }
}

void CJobReader::Pattern_Check(const SOpenTable& table, const SJobUnit& unit)
{
    const std::string what = "Separation is \"" + Text_Printable(unit.m_separation) + '"';
    if (const std::optional<std::string> fault = PagePattern_Fault(unit.m_separation))
    {
        m_values.Wrong_Add(table, "Separation", unit.m_place_Separation, what, *fault);
    }
    else if (m_job.m_pages.m_count > 1 && !PagePattern_HasNumber(unit.m_separation))
    {
        m_values.Wrong_Add(table, "Separation", unit.m_place_Separation, what,
                           "each page has a file of its own: %d is where its number stands, as in page%d.tif");
    }
}

void CJobReader::Separations_Read(const SOpenTable& table, SJobUnit& unit)
{
    const toml::node* pNode = m_values.Value_Find(table, "Separations", false);
    if (pNode == nullptr)
    {
        return;
    }
    const SJobPlace place = Node_Place(pNode->source());
    const toml::array* pNames = pNode->as_array();
    if (pNames == nullptr)
    {
        m_values.WrongType_Add(table, "Separations", *pNode, "a list of names, one for each page");
        m_job.m_mistaken.insert(table.m_key + ".Separation");
        return;
    }
    if (unit.HasSeparation() || m_job.m_pages.m_names == EPageNames::Pattern)
    {
        m_values.Wrong_Add(table, "Separations", place,
                           unit.HasSeparation() ? "the unit has both Separation and Separations"
                                                : "Separations is a list, and [Pages] has First or Last",
                           "a job names its pages one way: by a pattern with First and Last, or by lists");
    }
    unit.m_place_Separation = place;
    for (const toml::node& name : *pNames)
    {
        Separation_Take(table, name, unit);
    }
    const auto named = std::ranges::find_if(unit.m_separations, [](const std::string& name) { return !name.empty(); });
    if (named != unit.m_separations.end())
    {
        unit.m_separation = *named;
    }
    else if (!m_job.m_mistaken.contains(table.m_key + ".Separations"))
    {
        m_values.Wrong_Add(table, "Separations", place, "Separations names no file",
                           "a unit that prints on no page has no Separations");
    }
    // Whatever is wrong with the list, the unit is one that prints.
    if (m_job.m_mistaken.contains(table.m_key + ".Separations"))
    {
        m_job.m_mistaken.insert(table.m_key + ".Separation");
    }
}

// One name of the list; empty for a page that the unit does not print.
void CJobReader::Separation_Take(const SOpenTable& table, const toml::node& node, SJobUnit& unit)
{
    const auto* pName = node.as_string();
    if (pName == nullptr || (!pName->get().empty() && !IsFileName(pName->get())))
    {
        m_values.Wrong_Add(table, "Separations", Node_Place(node.source()), "Separations holds " + Node_Text(node),
                           "it takes the names of TIFF files, or \"\" for a page without this ink");
    }
    unit.m_separations.push_back(pName == nullptr ? "" : pName->get());
    unit.m_places_Separation.push_back(Node_Place(node.source()));
}

// The pages that lists tell; all of them tell the same.
void CJobReader::Pages_Count()
{
    SJobPages& pages = m_job.m_pages;
    const auto HasList = [](const SJobUnit& unit) { return !unit.m_separations.empty(); };
    const auto first = std::ranges::find_if(m_job.m_units, HasList);
    if (pages.m_names == EPageNames::Pattern || first == m_job.m_units.end())
    {
        return;
    }
    pages.m_names = EPageNames::List;
    pages.m_count = static_cast<int>(std::min(first->m_separations.size(), std::size_t{mostPages}));
    for (std::size_t i = 0; i < m_job.m_units.size(); ++i)
    {
        const SJobUnit& unit = m_job.m_units[i];
        const std::string key = "CartInfo.Unit[" + std::to_string(i) + ']';
        const std::size_t count = HasList(unit) ? unit.m_separations.size() : 1;
        const bool bKnown = !m_job.m_mistaken.contains(key + ".Separation");
        if (!bKnown || !unit.HasSeparation() || (HasList(unit) && count == first->m_separations.size()))
        {
            continue;
        }
        const SOpenTable table = {JobTable_Unit(), nullptr, unit.m_place_Separation, key};
        m_values.Wrong_Add(table, "Separation", unit.m_place_Separation,
                           HasList(unit)
                               ? "Separations has " + std::to_string(count) + (count == 1 ? " name" : " names")
                               : "Separation names one file",
                           "Separations of unit " + std::to_string(first->m_unitId) + " has " +
                               std::to_string(first->m_separations.size()) +
                               ", and all units have as many; \"\" is a page without this ink");
    }
    if (first->m_separations.size() > std::size_t{mostPages})
    {
        const SOpenTable table = {JobTable_Unit(), nullptr, first->m_place_Separation,
                                  "CartInfo.Unit[" + std::to_string(first - m_job.m_units.begin()) + ']'};
        m_values.Wrong_Add(table, "Separations", first->m_place_Separation,
                           "Separations has " + std::to_string(first->m_separations.size()) + " names",
                           "a job has " + std::to_string(mostPages) + " pages at most");
    }
}

// A word is a solid stripe, and must be one of the known ones; a file has a dot or a folder in its name.
void CJobReader::StripeColor_Read(const SOpenTable& table, SJobUnit& unit)
{
    SJobStripeColor& color = unit.m_stripeColor;
    const std::optional<std::string> text = m_values.Text_Read(table, "StripeColor");
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
        color.m_path = m_job.m_folder / Path_FromText(*text);
        return;
    }
    std::vector<std::string> known = EnumNames_List(EnumNames_StripeFill());
    const std::optional<std::string> nearest = Name_Nearest(*text, known);
    known.emplace_back("the name of a TIFF file, for example stripe.tif");
    m_values.Wrong_Add(table, "StripeColor", color.m_place, "StripeColor is \"" + Text_Printable(*text) + '"',
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

} // namespace

SJob JobText_Parse(const std::filesystem::path& file, const std::string& text, CMistakeList& mistakes)
{
    constexpr int mostKeyParts = 16; // a job's own keys have three
    if (const std::optional<SFilePlace> place = KeyDepth_Find(text, mostKeyParts))
    {
        throw CInputError({SMistake{false, Path_Text(file), *place, "syntax",
                                    "here is a key of more than " + std::to_string(mostKeyParts) + " parts",
                                    "a job's keys have at most three"}});
    }
    try
    {
        const toml::table root = toml::parse(text);
        return CJobReader(file, root, mistakes).Read();
    }
    catch (const toml::parse_error& error)
    {
        std::string description(error.description());
        if (description.find("invalid utf-8") != std::string::npos)
        {
            description = "a job file is UTF-8 text; here are bytes that are not";
        }
        throw CInputError(
            {SMistake{false, Path_Text(file), Node_Place(error.source()), "syntax", Text_Printable(description), ""}});
    }
}
