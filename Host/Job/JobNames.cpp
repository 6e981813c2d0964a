// Enumerator tables and the comparison of names.
#include "Host/Job/JobNames.h"

#include "Host/Job/Job.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

namespace
{

template<class TEnum>
constexpr SEnumName Enumerator(std::string_view name, TEnum value)
{
    return {name, static_cast<int>(value)};
}

constexpr std::array dataMapStyles = {
    Enumerator("Frame16", EDataMapStyle::Frame16),
    Enumerator("Block", EDataMapStyle::Block),
    Enumerator("Block13", EDataMapStyle::Block13),
    Enumerator("FramePerPixel", EDataMapStyle::FramePerPixel),
    Enumerator("ByteInterleaved", EDataMapStyle::ByteInterleaved),
    Enumerator("PlanePair", EDataMapStyle::PlanePair),
};

constexpr std::array dataPushStyles = {
    Enumerator("ByUnit", EDataPushStyle::ByUnit),
    Enumerator("ByPixel", EDataPushStyle::ByPixel),
};

constexpr std::array printerSupportBits = {
    Enumerator("OneBit", EPrinterSupportBits::OneBit),
    Enumerator("TwoBit", EPrinterSupportBits::TwoBit),
    Enumerator("Multiple", EPrinterSupportBits::Multiple),
};

constexpr std::array dotSizeModes = {
    Enumerator("None", EDotSizeMode::None),
    Enumerator("Small", EDotSizeMode::Small),
    Enumerator("Middle", EDotSizeMode::Middle),
    Enumerator("Big", EDotSizeMode::Big),
};

constexpr std::array directions = {
    Enumerator("Descending", 1),
    Enumerator("Ascending", 2),
};

constexpr std::array stageKinds = {
    Enumerator("ink-stripe", EStageKind::InkStripe),
    Enumerator("base", EStageKind::Base),
    Enumerator("one-fifo", EStageKind::OneFIFO),
};

constexpr std::array stripeFills = {
    Enumerator("None", EStripeFill::None),     Enumerator("Small", EStripeFill::Small),
    Enumerator("Middle", EStripeFill::Middle), Enumerator("Big", EStripeFill::Big),
    Enumerator("Full", EStripeFill::Full),
};

char Letter_Lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// The edit distance of the two names, one row of the table at a time.
std::size_t Name_Distance(std::string_view left, std::string_view right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i)
    {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < right.size(); ++j)
        {
            const std::size_t substituted = diagonal + (Letter_Lower(left[i]) == Letter_Lower(right[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({substituted, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

} // namespace

std::span<const SEnumName> EnumNames_DataMapStyle()
{
    return dataMapStyles;
}
std::span<const SEnumName> EnumNames_DataPushStyle()
{
    return dataPushStyles;
}
std::span<const SEnumName> EnumNames_PrinterSupportBits()
{
    return printerSupportBits;
}
std::span<const SEnumName> EnumNames_DotSizeMode()
{
    return dotSizeModes;
}
std::span<const SEnumName> EnumNames_Direction()
{
    return directions;
}
std::span<const SEnumName> EnumNames_StageKind()
{
    return stageKinds;
}
std::span<const SEnumName> EnumNames_StripeFill()
{
    return stripeFills;
}

std::string EnumName_Get(std::span<const SEnumName> names, int value)
{
    const auto found =
        std::find_if(names.begin(), names.end(), [value](const SEnumName& name) { return name.m_value == value; });
    return found == names.end() ? std::to_string(value) : std::string(found->m_name);
}

std::string EnumNames_Text(std::span<const SEnumName> names)
{
    std::vector<std::string> texts;
    for (const SEnumName& name : names)
    {
        texts.push_back(std::string(name.m_name) + " (" + std::to_string(name.m_value) + ")");
    }
    return Names_List(texts, "or");
}

std::vector<std::string> EnumNames_List(std::span<const SEnumName> names)
{
    std::vector<std::string> list;
    for (const SEnumName& name : names)
    {
        list.emplace_back(name.m_name);
    }
    return list;
}

std::string Names_List(std::span<const std::string> names, std::string_view lastWord)
{
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        if (i > 0)
        {
            text += i + 1 < names.size() ? ", " : " " + std::string(lastWord) + " ";
        }
        text += names[i];
    }
    return text;
}

std::optional<std::string> Name_Nearest(std::string_view name, std::span<const std::string> known)
{
    // A key may be as long as the file; nothing that long is a slip of the finger.
    constexpr std::size_t longestName = 100;
    if (name.size() > longestName)
    {
        return std::nullopt;
    }
    std::optional<std::string> nearest;
    std::size_t nearestDistance = 0;
    for (const std::string& candidate : known)
    {
        const std::size_t distance = Name_Distance(name, candidate);
        if (2 * distance <= std::max(name.size(), candidate.size()) && (!nearest || distance < nearestDistance))
        {
            nearest = candidate;
            nearestDistance = distance;
        }
    }
    return nearest;
}
