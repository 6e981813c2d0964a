// The names of the job file: the enumerators behind its words, and the nearest known name to a mistyped one. Pure
// functions; any thread.
#pragma once

#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/PrintParam/PrintParamRecords.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// One enumerator: its name in the job file and its number in the configuration.
struct SEnumName
{
    std::string_view m_name;
    int m_value = 0;
};

// All enumerators, in the order of their numbers.
std::span<const SEnumName> EnumNames_DataMapStyle();
std::span<const SEnumName> EnumNames_DataPushStyle();
std::span<const SEnumName> EnumNames_PrinterSupportBits();
std::span<const SEnumName> EnumNames_DotSizeMode();
std::span<const SEnumName> EnumNames_Direction();

// The job file's own words, which are no numbers of the configuration: EStageKind and EStripeFill.
std::span<const SEnumName> EnumNames_StageKind();
std::span<const SEnumName> EnumNames_StripeFill();

// The name of an enumerator; it must be one of them.
std::string EnumName_Get(std::span<const SEnumName> names, int value);

// "Small (1), Middle (2) or Big (3)".
std::string EnumNames_Text(std::span<const SEnumName> names);

// Just the names.
std::vector<std::string> EnumNames_List(std::span<const SEnumName> names);

// "a, b or c", with another last word if wanted.
std::string Names_List(std::span<const std::string> names, std::string_view lastWord);

// The name that takes the fewest insertions, deletions and substitutions from `name`, whatever the case of its letters;
// nothing if more than half of the longer one of the two would have to change.
std::optional<std::string> Name_Nearest(std::string_view name, std::span<const std::string> known);
