// The pattern's grammar: any text, "%%", and "%d", "%3d" or "%03d" for the number.
#include "Host/PageName.h"

#include <string_view>

namespace
{

constexpr std::size_t mostDigits = 9; // that a number is filled up to

// A place for the number.
struct SPlace
{
    std::size_t m_begin = std::string::npos; // of the percent sign; npos: there is none
    std::size_t m_end = 0;
    bool m_bZeros = false;
    std::size_t m_digits = 0;
};

bool IsDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

// The place that begins with the percent sign at `at`; none (m_begin is npos) if it does not take a number.
SPlace Place_Read(std::string_view pattern, std::size_t at)
{
    SPlace place;
    std::size_t next = at + 1;
    if (next < pattern.size() && pattern[next] == '0')
    {
        place.m_bZeros = true;
        ++next;
    }
    if (next < pattern.size() && IsDigit(pattern[next]) && pattern[next] != '0')
    {
        place.m_digits = static_cast<std::size_t>(pattern[next] - '0');
        ++next;
    }
    if (next < pattern.size() && pattern[next] == 'd')
    {
        place.m_begin = at;
        place.m_end = next + 1;
    }
    return place;
}

bool IsPercent(std::string_view pattern, std::size_t at)
{
    return at + 1 < pattern.size() && pattern[at + 1] == '%';
}

// The first place at or behind `from`.
SPlace Place_Find(std::string_view pattern, std::size_t from)
{
    for (std::size_t at = pattern.find('%', from); at != std::string_view::npos; at = pattern.find('%', at))
    {
        if (!IsPercent(pattern, at))
        {
            return Place_Read(pattern, at);
        }
        at += 2;
    }
    return {};
}

std::string Percents_Undouble(std::string_view text)
{
    std::string single;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        single += text[i];
        i += text[i] == '%' ? 1 : 0;
    }
    return single;
}

} // namespace

std::optional<std::string> PagePattern_Fault(const std::string& pattern)
{
    int numbers = 0;
    for (std::size_t at = pattern.find('%'); at != std::string::npos; at = pattern.find('%', at))
    {
        if (IsPercent(pattern, at))
        {
            at += 2;
            continue;
        }
        const SPlace place = Place_Read(pattern, at);
        if (place.m_begin == std::string::npos)
        {
            return "a % begins the place of the page's number, %d, or up to " + std::to_string(mostDigits) +
                   " digits wide as in %04d; a percent sign itself is %%";
        }
        if (++numbers > 1)
        {
            return "the page's number stands in one place only";
        }
        at = place.m_end;
    }
    return std::nullopt;
}

bool PagePattern_HasNumber(const std::string& pattern)
{
    return Place_Find(pattern, 0).m_begin != std::string::npos;
}

std::string PageName_Make(const std::string& pattern, std::int64_t number)
{
    const SPlace place = Place_Find(pattern, 0);
    if (place.m_begin == std::string::npos)
    {
        return Percents_Undouble(pattern);
    }
    std::string digits = std::to_string(number);
    if (digits.size() < place.m_digits)
    {
        digits.insert(0, place.m_digits - digits.size(), place.m_bZeros ? '0' : ' ');
    }
    return Percents_Undouble(pattern.substr(0, place.m_begin)) + digits +
           Percents_Undouble(pattern.substr(place.m_end));
}

std::string PagePattern_Of(const std::string& text)
{
    std::string pattern;
    for (const char letter : text)
    {
        pattern += letter == '%' ? "%%" : std::string(1, letter);
    }
    return pattern;
}
