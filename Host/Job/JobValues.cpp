// Values of toml++ nodes, and the texts of what is wrong with them.
#include "Host/Job/JobValues.h"

#include "Host/ShownText.h"
#include "Host/TextStream.h"

#include <algorithm>
#include <utility>

namespace
{

bool Node_IsTable(const toml::node& node)
{
    return node.is_table() || (node.is_array() && !node.as_array()->empty() && node.as_array()->is_array_of_tables());
}

std::string Key_Of(const std::string& tableKey, const std::string& key)
{
    return tableKey.empty() ? key : tableKey + '.' + key;
}

} // namespace

SJobPlace Node_Place(const toml::source_region& source)
{
    return {std::max(1, static_cast<int>(source.begin.line)), std::max(1, static_cast<int>(source.begin.column))};
}

std::string Node_Text(const toml::node& node)
{
    CTextStream text;
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

CJobValues::CJobValues(const toml::table& root, SJob& job, CMistakeList& mistakes)
    : m_root(root), m_job(job), m_mistakes(mistakes)
{
}

SOpenTable CJobValues::Table_Open(const SJobTable& table, const std::string& key)
{
    SOpenTable open = {table, nullptr, {}, key};
    const toml::node* pNode = m_root.get(key);
    if (pNode == nullptr)
    {
        return open;
    }
    open.m_place = Node_Place(pNode->source());
    m_job.m_places[key] = open.m_place;
    open.m_pNode = pNode->as_table();
    if (open.m_pNode == nullptr)
    {
        m_job.m_mistaken.insert(key);
        for (const SJobKey& known : table.m_keys)
        {
            m_job.m_mistaken.insert(Key_Of(key, known.m_name));
        }
        m_mistakes.Add({false, m_job.m_file, open.m_place, "table", key + " is " + Node_Text(*pNode),
                        "it is a table, written " + table.m_name});
        return open;
    }
    Keys_Check(table, *open.m_pNode, key);
    return open;
}

void CJobValues::Keys_Check(const SJobTable& table, const toml::table& node, const std::string& tableKey)
{
    for (const auto& [key, value] : node)
    {
        const std::string name(key.str());
        if (!JobTable_HasKey(table, name))
        {
            UnknownKey_Add(table, tableKey, name, Node_IsTable(value), Node_Place(key.source()));
        }
    }
}

void CJobValues::UnknownKey_Add(const SJobTable& table, const std::string& tableKey, const std::string& key,
                                bool bTable, const SJobPlace& place)
{
    const bool bRoot = table.m_name.empty();
    const std::string printable = Text_Printable(key);
    std::string what = "unknown " + (bTable ? "table [" + printable + "]" : "key " + printable);
    what += bRoot ? "" : " in " + table.m_name;
    const auto Add = [&](std::string fix) {
        m_mistakes.Add({false, m_job.m_file, place, "unknown-key", std::move(what), std::move(fix)});
    };
    for (const SJobTable* pOther : JobTables())
    {
        if (JobTable_HasKey(*pOther, key))
        {
            const std::string& other = pOther->m_name;
            const bool bOtherRoot = other.empty();
            m_meant.insert(bOtherRoot || other.starts_with("[[") ? key : other.substr(1, other.size() - 2) + '.' + key);
            return Add("it belongs " + (bOtherRoot ? "before the first table" : "in " + other));
        }
    }
    const std::vector<std::string> known = JobTable_KeyNames(table);
    if (const std::optional<std::string> nearest = Name_Nearest(key, known))
    {
        m_meant.insert(Key_Of(tableKey, *nearest));
        return Add("did you mean " + (bRoot && *nearest != "Version" ? "[" + *nearest + "]" : *nearest) + "?");
    }
    Add(std::string("known ") + (bRoot ? "here are " : "are ") + Names_List(known, "and"));
}

const toml::node* CJobValues::Value_Find(const SOpenTable& table, const std::string& key, bool bRequired)
{
    const toml::node* pNode = table.m_pNode == nullptr ? nullptr : table.m_pNode->get(key);
    if (pNode != nullptr)
    {
        m_job.m_places[Key_Of(table.m_key, key)] = Node_Place(pNode->source());
        return pNode;
    }
    // A table that is there but is none has its mistake already.
    if (bRequired && !m_job.m_mistaken.contains(table.m_key))
    {
        Missing_Add(table, key, key + " is missing from " + table.m_table.m_name,
                    "for example: " + JobTable_Example(table.m_table, key));
    }
    return nullptr;
}

void CJobValues::Wrong_Add(const SOpenTable& table, const std::string& key, const SJobPlace& place, std::string what,
                           std::string fix)
{
    m_job.m_mistaken.insert(Key_Of(table.m_key, key));
    m_mistakes.Add({false, m_job.m_file, place, "value", std::move(what), std::move(fix)});
}

void CJobValues::WrongType_Add(const SOpenTable& table, const std::string& key, const toml::node& node,
                               const std::string& wanted)
{
    Wrong_Add(table, key, Node_Place(node.source()), key + " is " + Node_Text(node), "it takes " + wanted);
}

void CJobValues::Missing_Add(const SOpenTable& table, const std::string& key, std::string what, std::string fix)
{
    m_job.m_mistaken.insert(Key_Of(table.m_key, key));
    m_missing.push_back(
        {Key_Of(table.m_key, key), {false, m_job.m_file, table.m_place, "missing", std::move(what), std::move(fix)}});
}

void CJobValues::Finish()
{
    for (SMissing& missing : m_missing)
    {
        const std::string table = missing.m_key.substr(0, missing.m_key.find('.'));
        if (!m_meant.contains(missing.m_key) && !m_meant.contains(table))
        {
            m_mistakes.Add(std::move(missing.m_mistake));
        }
    }
    m_missing.clear();
}

void CJobValues::Integer_Read(const SOpenTable& table, const std::string& key, bool bRequired, int least, int most,
                              int& value)
{
    const toml::node* pNode = Value_Find(table, key, bRequired);
    if (pNode == nullptr)
    {
        return;
    }
    const auto* pInteger = pNode->as_integer();
    if (pInteger == nullptr)
    {
        WrongType_Add(table, key, *pNode, "a whole number");
    }
    else if (pInteger->get() < least || pInteger->get() > most)
    {
        WrongType_Add(table, key, *pNode,
                      std::to_string(least) + (most == least + 1 ? " or " : " to ") + std::to_string(most));
    }
    else
    {
        value = static_cast<int>(pInteger->get());
    }
}

void CJobValues::Flag_Read(const SOpenTable& table, const std::string& key, bool& bValue)
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
    WrongType_Add(table, key, *pNode, "true or false");
}

std::optional<std::string> CJobValues::Text_Read(const SOpenTable& table, const std::string& key)
{
    const toml::node* pNode = Value_Find(table, key, false);
    if (pNode == nullptr)
    {
        return std::nullopt;
    }
    if (const auto* pText = pNode->as_string())
    {
        return pText->get();
    }
    WrongType_Add(table, key, *pNode, "a text in quotes");
    return std::nullopt;
}

std::optional<int> CJobValues::Enum_Find(const SOpenTable& table, const std::string& key, bool bRequired,
                                         std::span<const SEnumName> names)
{
    const toml::node* pNode = Value_Find(table, key, bRequired);
    if (pNode == nullptr)
    {
        return std::nullopt;
    }
    const auto* pText = pNode->as_string();
    const auto* pInteger = pNode->as_integer();
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
    const std::string what = pText == nullptr ? Node_Text(*pNode) : '"' + Text_Printable(pText->get()) + '"';
    Wrong_Add(table, key, Node_Place(pNode->source()), key + " is " + what,
              (nearest ? "did you mean \"" + *nearest + "\"? It" : std::string("it")) + " takes " +
                  EnumNames_Text(names));
    return std::nullopt;
}
