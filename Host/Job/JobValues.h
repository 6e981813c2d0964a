// Takes the values of a job file's tables, one after the other, and adds a mistake for each that is wrong, missing or
// unknown. Only the job reader uses it, while it fills a job; toml++ is included here and there alone.
#pragma once

#include "Host/Job/Job.h"
#include "Host/Job/JobNames.h"
#include "Host/Job/JobTables.h"
#include "Host/Mistake.h"

#include <toml++/toml.h>

#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

// A table of the file while its keys are read; one that the file leaves out reads as empty.
struct SOpenTable
{
    const SJobTable& m_table;
    const toml::table* m_pNode; // null: not in the file
    SJobPlace m_place;
    std::string m_key; // "DPOption", "CartInfo.Unit[2]": the beginning of its values' names in SJob::m_places
};

// What stands there, for a message, and where.
std::string Node_Text(const toml::node& node);
SJobPlace Node_Place(const toml::source_region& source);

class CJobValues
{
public:
    // Places and mistaken keys go into `job`, mistakes into `mistakes`; both are the caller's and outlive this.
    CJobValues(const toml::table& root, SJob& job, CMistakeList& mistakes);

    SOpenTable Table_Open(const SJobTable& table, const std::string& key);
    void Keys_Check(const SJobTable& table, const toml::table& node, const std::string& tableKey);

    // The values; `value` stays as it is if the file has none or a wrong one.
    void Integer_Read(const SOpenTable& table, const std::string& key, bool bRequired, int least, int most, int& value);
    void Flag_Read(const SOpenTable& table, const std::string& key, bool& bValue);
    std::optional<std::string> Text_Read(const SOpenTable& table, const std::string& key);
    template<class TEnum>
    void Enum_Read(const SOpenTable& table, const std::string& key, bool bRequired, std::span<const SEnumName> names,
                   TEnum& value)
    {
        if (const std::optional<int> found = Enum_Find(table, key, bRequired, names))
        {
            value = static_cast<TEnum>(*found);
        }
    }

    // The node of a key, for values that are read another way. Null, with a mistake if it is required.
    const toml::node* Value_Find(const SOpenTable& table, const std::string& key, bool bRequired);

    // A value of this key is wrong.
    void Wrong_Add(const SOpenTable& table, const std::string& key, const SJobPlace& place, std::string what,
                   std::string fix);
    void WrongType_Add(const SOpenTable& table, const std::string& key, const toml::node& node,
                       const std::string& wanted);
    void Missing_Add(const SOpenTable& table, const std::string& key, std::string what, std::string fix);

    // All tables are read: passes on what is missing, but for keys that are only mistyped.
    void Finish();

private:
    struct SMissing
    {
        std::string m_key;
        SMistake m_mistake;
    };

    std::optional<int> Enum_Find(const SOpenTable& table, const std::string& key, bool bRequired,
                                 std::span<const SEnumName> names);
    void UnknownKey_Add(const SJobTable& table, const std::string& tableKey, const std::string& key, bool bTable,
                        const SJobPlace& place);

    const toml::table& m_root;
    SJob& m_job;
    CMistakeList& m_mistakes;
    std::vector<SMissing> m_missing;
    std::set<std::string> m_meant; // keys that an unknown one was probably meant to be
};
