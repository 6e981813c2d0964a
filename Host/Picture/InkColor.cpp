// Names of inks and their colours.
#include "Host/Picture/InkColor.h"

#include "Host/HostError.h"
#include "Host/Job/JobNames.h"
#include "Host/ShownText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <map>
#include <set>

namespace
{

struct SUsualInk
{
    std::string_view m_name; // words in lower case, a blank between them
    std::uint32_t m_color;
};

// About what a printed patch of the ink looks like. White and clear inks are a shade darker than paper, or nobody would
// see where they are.
constexpr std::array usualInks = {
    SUsualInk{"cyan", 0x00aeef},
    SUsualInk{"c", 0x00aeef},
    SUsualInk{"magenta", 0xec008c},
    SUsualInk{"m", 0xec008c},
    SUsualInk{"yellow", 0xfff200},
    SUsualInk{"y", 0xfff200},
    SUsualInk{"black", 0x231f20},
    SUsualInk{"k", 0x231f20},
    SUsualInk{"light cyan", 0x8fd8f7},
    SUsualInk{"lc", 0x8fd8f7},
    SUsualInk{"light magenta", 0xf59ac9},
    SUsualInk{"lm", 0xf59ac9},
    SUsualInk{"light yellow", 0xfff9a3},
    SUsualInk{"ly", 0xfff9a3},
    SUsualInk{"light black", 0x8c8a8b},
    SUsualInk{"lk", 0x8c8a8b},
    SUsualInk{"light light black", 0xc4c2c3},
    SUsualInk{"llk", 0xc4c2c3},
    SUsualInk{"grey", 0x58595b},
    SUsualInk{"gray", 0x58595b},
    SUsualInk{"light grey", 0xa7a9ac},
    SUsualInk{"light gray", 0xa7a9ac},
    SUsualInk{"red", 0xed1c24},
    SUsualInk{"green", 0x00a651},
    SUsualInk{"blue", 0x2e3192},
    SUsualInk{"orange", 0xf58220},
    SUsualInk{"violet", 0x662d91},
    SUsualInk{"purple", 0x7d3f98},
    SUsualInk{"pink", 0xf06eaa},
    SUsualInk{"brown", 0x8b5e3c},
    SUsualInk{"gold", 0xc5a24a},
    SUsualInk{"silver", 0xb4b7ba},
    SUsualInk{"white", 0xe4e4e4},
    SUsualInk{"w", 0xe4e4e4},
    SUsualInk{"clear", 0xe3e0cf},
    SUsualInk{"varnish", 0xe3e0cf},
    SUsualInk{"gloss", 0xe3e0cf},
    SUsualInk{"primer", 0xd9dfe6},
};

constexpr std::size_t longestShort = 3; // letters of an abbreviation, which must be all that the name says

// Hues of derived colours, and how they are told apart from one another.
constexpr int hueCount = 24;
constexpr int hueStep = 7; // to the next one if a hue is taken; shares no factor with their count

bool IsAlphanumeric(char letter)
{
    return std::isalnum(static_cast<unsigned char>(letter)) != 0;
}

std::string Lower_Of(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return lower;
}

// " light cyan left ": words in lower case, a blank before and behind each.
std::string Words_Of(std::string_view name)
{
    std::string words = " ";
    for (const char letter : Lower_Of(name))
    {
        if (IsAlphanumeric(letter))
        {
            words += letter;
        }
        else if (words.back() != ' ')
        {
            words += ' ';
        }
    }
    return words.back() == ' ' ? words : words + ' ';
}

// FNV-1a.
std::uint32_t Hash_Of(std::string_view text)
{
    std::uint32_t hash = 2166136261U;
    for (const char letter : text)
    {
        hash = (hash ^ static_cast<unsigned char>(letter)) * 16777619U;
    }
    return hash;
}

// Full colours, neither light nor dark; `hue` counts from red over green to blue.
std::uint32_t Hue_Color(int hue)
{
    constexpr double dark = 0.12;
    constexpr double light = 0.84;
    std::uint32_t color = 0;
    for (const int channel : {0, 1, 2})
    {
        // Distance on the circle from the channel's own hue, in sixths of it: below 1 full, above 2 none.
        const double at = 6.0 * hue / hueCount;
        const double turned = at - 2.0 * channel;
        const double distance = std::min({std::abs(turned), std::abs(turned - 6), std::abs(turned + 6)});
        const double part = dark + (light - dark) * std::clamp(2 - distance, 0.0, 1.0);
        color = color << 8U | static_cast<std::uint32_t>(part * 255);
    }
    return color;
}

bool IsInk(const SBoardUnitInfo& unit, const std::string& ink)
{
    const std::string wanted = Lower_Of(ink);
    return Lower_Of(unit.m_name) == wanted || (!unit.m_separation.empty() && Lower_Of(unit.m_separation) == wanted);
}

void Choices_Check(const SBoardInfo& info, const std::vector<SInkChoice>& choices)
{
    for (const SInkChoice& choice : choices)
    {
        if (std::ranges::none_of(info.m_units, [&](const SBoardUnitInfo& unit) { return IsInk(unit, choice.m_ink); }))
        {
            std::vector<std::string> known;
            for (const SBoardUnitInfo& unit : info.m_units)
            {
                const std::string& name = unit.m_name.empty() ? unit.m_separation : unit.m_name;
                if (!name.empty() && std::ranges::find(known, name) == known.end())
                {
                    known.push_back(name);
                }
            }
            throw CInputError("--ink names " + Text_Printable(choice.m_ink) + ", which no unit has; " +
                              (known.empty() ? "the units have no names" : "there are " + Names_List(known, "and")));
        }
    }
}

} // namespace

std::string Color_Text(std::uint32_t color)
{
    std::string text = "#";
    for (int shift = 20; shift >= 0; shift -= 4)
    {
        text += "0123456789abcdef"[color >> static_cast<unsigned>(shift) & 0xFU];
    }
    return text;
}

std::optional<std::uint32_t> Color_Parse(std::string_view text)
{
    constexpr std::size_t digits = 6;
    if (text.starts_with('#'))
    {
        text.remove_prefix(1);
    }
    const std::string lower = Lower_Of(text);
    if (lower.size() != digits || lower.find_first_not_of("0123456789abcdef") != std::string::npos)
    {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(std::stoul(lower, nullptr, 16));
}

std::optional<std::uint32_t> InkColor_Find(std::string_view name)
{
    std::string words = Words_Of(name);
    for (const std::string_view ending : {" tif ", " tiff "})
    {
        words = words.ends_with(ending) ? words.substr(0, words.size() - ending.size() + 1) : words;
    }
    std::optional<std::uint32_t> color;
    std::size_t longest = 0;
    std::size_t first = std::string::npos;
    for (const SUsualInk& ink : usualInks)
    {
        const std::size_t at = words.find(' ' + std::string(ink.m_name) + ' ');
        const std::size_t length = ink.m_name.size();
        if (length <= longestShort && length + 2 != words.size())
        {
            continue; // the C of "Spot C" is no cyan
        }
        if (at != std::string::npos && (length > longest || (length == longest && at < first)))
        {
            color = ink.m_color;
            longest = length;
            first = at;
        }
    }
    return color;
}

SInkChoice InkChoice_Parse(const std::string& text)
{
    const std::size_t at = text.rfind('=');
    const std::optional<std::uint32_t> color =
        at == std::string::npos || at == 0 ? std::nullopt : Color_Parse(std::string_view(text).substr(at + 1));
    if (!color)
    {
        throw CInputError("--ink is " + Text_Printable(text) +
                          "; it is NAME=#RRGGBB, a unit's name or separation, and six hexadecimal digits");
    }
    return {text.substr(0, at), *color};
}

std::vector<std::uint32_t> InkColors_Choose(const SBoardInfo& info, const std::vector<SInkChoice>& choices)
{
    Choices_Check(info, choices);
    std::vector<std::uint32_t> colors;
    std::map<std::string, int> hueOf; // of inks whose colours are derived
    std::set<int> taken;
    for (const SBoardUnitInfo& unit : info.m_units)
    {
        // What was said last counts.
        const auto given = std::find_if(choices.rbegin(), choices.rend(),
                                        [&](const SInkChoice& choice) { return IsInk(unit, choice.m_ink); });
        std::optional<std::uint32_t> color =
            given == choices.rend() ? InkColor_Find(unit.m_name) : std::optional(given->m_color);
        color = color ? color : InkColor_Find(unit.m_separation);
        if (!color)
        {
            const std::string name = unit.m_name.empty() ? "unit " + std::to_string(unit.m_unitId) : unit.m_name;
            const auto [found, bNew] = hueOf.try_emplace(name, static_cast<int>(Hash_Of(name) % hueCount));
            while (bNew && taken.size() < hueCount && !taken.insert(found->second).second)
            {
                found->second = (found->second + hueStep) % hueCount;
            }
            color = Hue_Color(found->second);
        }
        colors.push_back(*color);
    }
    return colors;
}
