// Names taken apart, maps looked up, and the text put together.
#include "Host/Job/JobDraft.h"

#include "Host/HostError.h"
#include "Host/Job/JobNames.h"
#include "Host/PageName.h"
#include "Host/ShownText.h"
#include "Host/TextStream.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <map>
#include <set>
#include <string_view>

namespace
{

constexpr int widestFrame = 512;
constexpr std::string_view separators = "._-";

std::string Stem_Of(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

// What stands in the last brackets, if the name ends with them.
std::optional<std::string> Bracketed_Of(const std::string& stem)
{
    const std::size_t open = stem.rfind('(');
    if (!stem.ends_with(')') || open == std::string::npos || open + 2 == stem.size())
    {
        return std::nullopt;
    }
    return stem.substr(open + 1, stem.size() - open - 2);
}

// How much all begin with, back to behind a separator, so that no ink loses its first letters.
std::size_t Common_Length(const std::vector<std::string>& stems)
{
    std::size_t length = stems.front().size();
    for (const std::string& stem : stems)
    {
        const auto [end, other] = std::ranges::mismatch(stems.front(), stem);
        length = std::min(length, static_cast<std::size_t>(end - stems.front().begin()));
    }
    const std::size_t separator = length == 0 ? std::string::npos : stems.front().find_last_of(separators, length - 1);
    return separator == std::string::npos ? 0 : separator + 1;
}

bool IsDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

// A name around its page's number.
struct SNumberedName
{
    std::string m_before; // as in a pattern
    std::string m_digits; // empty: there are none
    std::string m_behind; // as in a pattern
};

// Around the first run of digits, or the last, that is in the file's name and not in its last brackets.
SNumberedName Name_Split(const std::string& name, bool bLast)
{
    constexpr std::size_t mostDigits = 9;
    const std::size_t folder = name.rfind('/') == std::string::npos ? 0 : name.rfind('/') + 1;
    const std::string stem = Stem_Of(name.substr(folder));
    const std::size_t bracket = Bracketed_Of(stem) ? stem.rfind('(') : stem.size();
    std::size_t begin = std::string::npos;
    std::size_t end = 0;
    for (std::size_t i = 0; i < bracket; ++i)
    {
        const bool bBegins = IsDigit(stem[i]) && (i == 0 || !IsDigit(stem[i - 1]));
        if (bBegins && (bLast || begin == std::string::npos))
        {
            begin = i;
            end = i;
            while (end < bracket && IsDigit(stem[end]))
            {
                ++end;
            }
        }
    }
    if (begin == std::string::npos || end - begin > mostDigits)
    {
        return {PagePattern_Of(name), "", ""};
    }
    return {PagePattern_Of(name.substr(0, folder + begin)), stem.substr(begin, end - begin),
            PagePattern_Of(name.substr(folder + end))};
}

// The names by what is around their numbers; each with its place in the list and its digits.
using CNumberedInks = std::vector<std::pair<std::pair<std::string, std::string>, std::map<std::size_t, std::string>>>;

CNumberedInks Inks_Split(const std::vector<std::string>& names, bool bLast)
{
    CNumberedInks inks;
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        const SNumberedName name = Name_Split(names[i], bLast);
        const auto around = std::pair(name.m_before, name.m_behind);
        auto ink = std::ranges::find(inks, around, [](const auto& entry) { return entry.first; });
        if (ink == inks.end())
        {
            ink = inks.insert(ink, {around, {}});
        }
        ink->second[i] = name.m_digits;
    }
    return inks;
}

// How the numbers are written: "%d", "%04d".
std::string Number_Pattern(const std::vector<std::string>& digits)
{
    const bool bZeros =
        std::ranges::any_of(digits, [](const std::string& text) { return text.size() > 1 && text[0] == '0'; });
    const auto [shortest, longest] =
        std::ranges::minmax(digits, {}, [](const std::string& text) { return text.size(); });
    if (bZeros && shortest.size() != longest.size())
    {
        throw CInputError("the pages' numbers in the names, " + shortest + " and " + longest +
                          " for example, are not all written with zeros before them to one length, or all without");
    }
    return bZeros ? "%0" + std::to_string(longest.size()) + 'd' : "%d";
}

std::string Lower_Of(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](char letter)
                           { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; });
    return text;
}

// A text of a TOML file, UTF-8, in its quotes.
std::string Toml_Text(const std::string& text)
{
    std::string escaped;
    for (const char letter : text)
    {
        escaped += letter == '"' || letter == '\\' ? "\\" : "";
        escaped += letter;
    }
    return '"' + Name_Shown(escaped) + '"';
}

// Whether the map gets pixels of the depth that it is made for.
bool IsDepthRight(const SDPOption& option, const SJobMap& map, int bitsPerPixel)
{
    const bool bByPixel = option.m_dataPushStyle == EDataPushStyle::ByPixel;
    if (MapClass_Get(map.m_class).m_bPlanePair)
    {
        return bByPixel && bitsPerPixel == 2;
    }
    return (bByPixel ? bitsPerPixel : 1) == map.m_srcBitCount;
}

std::string Style_Text(EMapClass mapClass)
{
    return std::string("style ") + MapClass_Name(mapClass);
}

[[noreturn]] void Style_Refuse(EMapClass mapClass, const std::string& what)
{
    throw CInputError("--style: " + Style_Text(mapClass) + ' ' + what);
}

// A line of the job: the key in its column, the value in its own, a comment behind it.
void Value_Add(CTextStream& text, const std::string& key, const std::string& value, const std::string& comment)
{
    constexpr int keyColumns = 18;
    constexpr int valueColumns = 17;
    text << std::left << std::setw(keyColumns) << key << " = ";
    if (comment.empty())
    {
        text << value << '\n';
        return;
    }
    text << std::setw(valueColumns) << value << " # " << comment << '\n';
}

void Enum_Add(CTextStream& text, const std::string& key, std::span<const SEnumName> names, int value,
              const std::string& comment)
{
    Value_Add(text, key, Toml_Text(EnumName_Get(names, value)), comment);
}

std::string Bits_Text(int bits)
{
    return std::to_string(bits) + (bits == 1 ? " bit" : " bits");
}

void Head_Add(CTextStream& text, const SDraftOptions& options, const std::vector<SDraftFile>& files)
{
    const SSeparationInfo& info = files.front().m_info;
    const int pages = options.m_pages ? options.m_pages->Count() : 1;
    text << (pages == 1 ? "# A page of " : "# " + std::to_string(pages) + " pages of ") << info.width << " x "
         << info.height << " pixels of " << Bits_Text(info.bitsPerPixel);
    if (info.HasResolution())
    {
        text << ", " << info.xResolution << " x " << info.yResolution << " per inch";
    }
    text << ", in " << files.size() << (files.size() == 1 ? " separation.\n" : " separations.\n")
         << "# boardmap check says whether the job can run, and what a run will be.\nVersion = 1\n";
}

void Option_Add(CTextStream& text, const SDPOption& option, const SJobMap& map)
{
    const SMapClass& row = MapClass_Get(map.m_class);
    text << "\n# What the head-driver boards take: " << Style_Text(map.m_class) << " of their layouts.\n[DPOption]\n";
    Enum_Add(text, "DataMapStyle", EnumNames_DataMapStyle(), static_cast<int>(option.m_dataMapStyle), "");
    Enum_Add(text, "DataPushStyle", EnumNames_DataPushStyle(), static_cast<int>(option.m_dataPushStyle),
             option.m_dataPushStyle == EDataPushStyle::ByPixel ? "a line of whole pixels"
                                                               : "the bits of a pixel in lines of their own");
    if (SupportBits_IsUsed(option))
    {
        Enum_Add(text, "PrinterSupportBits", EnumNames_PrinterSupportBits(),
                 static_cast<int>(option.m_printerSupportBits), "bits of a pixel that the boards take");
    }
    const int units = MapClass_UnitCount(map, option.m_printerDataWidth);
    Value_Add(text, "PrinterDataWidth", std::to_string(option.m_printerDataWidth),
              std::string(row.m_frameUnit == EFrameUnit::Bits ? "bits" : "bytes") +
                  " in a frame: " + std::to_string(units) + (units == 1 ? " unit" : " units") +
                  (row.m_widthOnly > 0 ? "; the only width of these boards" : " at most; the boards' own, if larger"));
}

void Page_Add(CTextStream& text, const SDraftOptions& options, const SJobMap& map, int bitsPerPixel)
{
    text << "\n[PrintParam]\n";
    Value_Add(text, "BitsPerPixel", std::to_string(bitsPerPixel), "of every separation");
    if (MapClass_Get(map.m_class).m_bDotSize)
    {
        Value_Add(text, "DotSizeMode", "\"Middle\"", "the drop of every dot: Small, Middle or Big");
    }
    Value_Add(text, "Bidirectional", options.m_bBidirectional ? "true" : "false",
              options.m_bBidirectional ? "every other swath is printed from right to left"
                                       : "every swath is printed from left to right");
    if (options.m_pages)
    {
        text << "\n# The pages, one after the other: their numbers stand in the separations' names, where %d "
                "is.\n[Pages]\n";
        Value_Add(text, "First", std::to_string(options.m_pages->m_first), "");
        Value_Add(text, "Last", std::to_string(options.m_pages->m_last), "");
        if (options.m_pages->m_bMissing)
        {
            Value_Add(text, "MissingIsBlank", "true", "a page without a file of an ink has none of it");
        }
    }
    const SMapClass& row = MapClass_Get(map.m_class);
    text << "\n[CartInfo]\n";
    Value_Add(text, "Nozzles", std::to_string(options.m_nozzles),
              "of a head: rows of a swath" + (row.m_nozzlesOnly > 0 ? std::string("; the only number of these boards")
                                              : row.m_nozzlesMultiple > 1
                                                  ? "; a multiple of " + std::to_string(row.m_nozzlesMultiple)
                                                  : std::string()));
}

void Units_Add(CTextStream& text, const SDraftOptions& options, const std::vector<SDraftFile>& files)
{
    text << "\n# The print units, by their places in a frame. Horizon_1 and Horizon_2 are a unit's offsets from right "
            "to "
            "left and\n# from left to right, in scan positions; they are 0 where they are left out.\n";
    int unit = 0;
    for (const SDraftFile& file : files)
    {
        text << (unit == 0 ? "" : "\n") << "[[CartInfo.Unit]]\n";
        Value_Add(text, "UnitId", std::to_string(unit++), "");
        if (!file.m_ink.empty())
        {
            Value_Add(text, "Name", Toml_Text(file.m_ink), "");
        }
        Value_Add(text, "Separation", Toml_Text(file.m_file), "");
        if (MapClass_Get(options.m_map).m_bDirected)
        {
            Value_Add(text, "Direction", "\"Descending\"", "or \"Ascending\": the order of the unit's blocks");
        }
    }
}

} // namespace

std::vector<std::string> Inks_FromNames(const std::vector<std::string>& names)
{
    std::vector<std::string> stems;
    std::ranges::transform(names, std::back_inserter(stems), &Stem_Of);
    // Some of a page's names may have brackets; the others are compared with each other.
    std::vector<std::string> plain;
    std::ranges::copy_if(stems, std::back_inserter(plain),
                         [](const std::string& stem) { return !Bracketed_Of(stem).has_value(); });
    std::size_t common = plain.empty() ? 0 : Common_Length(plain);
    if (plain.size() == 1)
    {
        const std::size_t dot = plain.front().rfind('.');
        common = dot == std::string::npos ? plain.front().size() : dot + 1;
    }
    std::vector<std::string> inks;
    inks.reserve(stems.size());
    for (const std::string& stem : stems)
    {
        inks.push_back(Bracketed_Of(stem).value_or(stem.substr(std::min(common, stem.size()))));
    }
    return inks;
}

std::optional<SPageNames> Pages_FromNames(const std::vector<std::string>& names)
{
    // A number with nothing but the extension behind it tells several heads of an ink as well, unless it is all that
    // differs.
    const auto HasPages = [](const CNumberedInks& inks)
    {
        return std::ranges::any_of(
            inks, [&](const auto& ink)
            { return ink.second.size() > 1 && (inks.size() == 1 || !Stem_Of('-' + ink.first.second).ends_with('-')); });
    };
    const CNumberedInks first = Inks_Split(names, false);
    const CNumberedInks last = Inks_Split(names, true);
    const CNumberedInks& inks = HasPages(last) && (last.size() <= first.size() || !HasPages(first)) ? last : first;
    if (!HasPages(inks))
    {
        return std::nullopt;
    }
    std::vector<std::string> digits;
    std::set<int> numbers;
    SPageNames pages;
    for (const auto& [around, files] : inks)
    {
        for (const auto& [file, text] : files)
        {
            if (text.empty())
            {
                return std::nullopt; // a name without a number, twice
            }
            digits.push_back(text);
            numbers.insert(std::stoi(text));
        }
    }
    const std::string number = Number_Pattern(digits);
    pages.m_pages.m_first = *numbers.begin();
    pages.m_pages.m_last = *numbers.rbegin();
    for (const auto& [around, files] : inks)
    {
        pages.m_pages.m_bMissing = pages.m_pages.m_bMissing || files.size() < numbers.size();
        pages.m_patterns.push_back(around.first + number + around.second);
        pages.m_files.push_back(files.begin()->first);
    }
    for (int page = pages.m_pages.m_first; page < pages.m_pages.m_last; ++page)
    {
        if (!numbers.contains(page))
        {
            throw CInputError("there are separations of the pages " + std::to_string(pages.m_pages.m_first) + " to " +
                              std::to_string(pages.m_pages.m_last) + ", but none of page " + std::to_string(page));
        }
    }
    return pages;
}

int Ink_Order(const std::string& ink)
{
    constexpr std::array<std::array<std::string_view, 2>, 4> process = {
        {{"cyan", "c"}, {"magenta", "m"}, {"yellow", "y"}, {"black", "k"}}};
    const std::string lower = Lower_Of(ink);
    const auto found =
        std::ranges::find_if(process, [&](const auto& names) { return names[0] == lower || names[1] == lower; });
    return static_cast<int>(found - process.begin());
}

std::optional<SDPOption> Map_Options(EMapClass mapClass, int bitsPerPixel)
{
    for (const EDataPushStyle push : {EDataPushStyle::ByPixel, EDataPushStyle::ByUnit})
    {
        for (const SEnumName& style : EnumNames_DataMapStyle())
        {
            for (const SEnumName& support : EnumNames_PrinterSupportBits())
            {
                SDPOption option;
                option.m_dataMapStyle = static_cast<EDataMapStyle>(style.m_value);
                option.m_dataPushStyle = push;
                option.m_printerSupportBits = static_cast<EPrinterSupportBits>(support.m_value);
                const SJobMap map = Job_MapClass(option, bitsPerPixel);
                if (map.m_class == mapClass && IsDepthRight(option, map, bitsPerPixel))
                {
                    return option;
                }
            }
        }
    }
    return std::nullopt;
}

bool SupportBits_IsUsed(const SDPOption& option)
{
    return option.m_dataPushStyle == EDataPushStyle::ByPixel &&
           (option.m_dataMapStyle == EDataMapStyle::FramePerPixel ||
            option.m_dataMapStyle == EDataMapStyle::ByteInterleaved);
}

std::optional<int> Map_FrameWidth(const SJobMap& map, int unitCount)
{
    const SMapClass& row = MapClass_Get(map.m_class);
    for (int width = row.m_widthLeast; width <= widestFrame; ++width)
    {
        const bool bRight = (row.m_widthOnly == 0 || width == row.m_widthOnly) && width % row.m_widthMultiple == 0;
        if (bRight && MapClass_UnitCount(map, width) >= unitCount)
        {
            return width;
        }
    }
    return std::nullopt;
}

std::string JobDraft_Make(const SDraftOptions& options, const std::vector<SDraftFile>& files)
{
    const int bitsPerPixel = files.front().m_info.bitsPerPixel;
    std::optional<SDPOption> option = Map_Options(options.m_map, bitsPerPixel);
    if (!option)
    {
        Style_Refuse(options.m_map, "does not take separations of " + Bits_Text(bitsPerPixel) + " per pixel, but of " +
                                        Bits_Text(3 - bitsPerPixel));
    }
    const SJobMap map = Job_MapClass(*option, bitsPerPixel);
    const std::optional<int> width = Map_FrameWidth(map, static_cast<int>(files.size()));
    if (!width)
    {
        const int only = MapClass_Get(map.m_class).m_widthOnly;
        Style_Refuse(options.m_map, "has room for " +
                                        std::to_string(MapClass_UnitCount(map, only > 0 ? only : widestFrame)) +
                                        " units, and here are " + std::to_string(files.size()) + " separations");
    }
    option->m_printerDataWidth = *width;
    CTextStream text;
    Head_Add(text, options, files);
    Option_Add(text, *option, map);
    Page_Add(text, options, map, bitsPerPixel);
    Units_Add(text, options, files);
    return text.str();
}
