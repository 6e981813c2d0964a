// What of a text a terminal gets as it is.
#include "Host/ShownText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>

namespace
{

struct SCharacter
{
    char32_t m_code = 0;
    std::size_t m_size = 1; // bytes
    bool m_bValid = false;
};

// The first character of a text that is not empty.
SCharacter Character_First(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80U)
    {
        return {first, 1, true};
    }
    const std::size_t size = first >= 0xF0U ? 4 : first >= 0xE0U ? 3 : 2;
    if (first < 0xC2U || first > 0xF4U || text.size() < size)
    {
        return {};
    }
    char32_t code = first & (0xFFU >> (size + 1));
    for (const char next : text.substr(1, size - 1))
    {
        const auto byte = static_cast<unsigned char>(next);
        if ((byte & 0xC0U) != 0x80U)
        {
            return {};
        }
        code = code << 6U | (byte & 0x3FU);
    }
    constexpr std::array<char32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
    const bool bSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < least.at(size) || code > 0x10FFFF || bSurrogate ? SCharacter{} : SCharacter{code, size, true};
}

bool IsHidden(char32_t code)
{
    struct SRange
    {
        char32_t m_first;
        char32_t m_last;
    };
    constexpr std::array<SRange, 8> hidden = {{{0x00, 0x1F},         // control characters
                                               {0x7F, 0x9F},         // more of them
                                               {0x061C, 0x061C},     // a mark of the reading direction
                                               {0x200B, 0x200F},     // without width, marks of the reading direction
                                               {0x2028, 0x202E},     // separators, embeddings, overrides
                                               {0x2060, 0x206F},     // without width, isolates
                                               {0xFEFF, 0xFEFF},     // a byte order mark
                                               {0xE0000, 0xE0FFF}}}; // tags
    for (const SRange& range : hidden)
    {
        if (code >= range.m_first && code <= range.m_last)
        {
            return true;
        }
    }
    return false;
}

std::string Escape_Make(const char* format, unsigned value)
{
    std::array<char, 16> escape = {};
    std::snprintf(escape.data(), escape.size(), format, value);
    return escape.data();
}

std::string Shown_Make(std::string_view text, std::string_view keptControls)
{
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty())
    {
        const SCharacter character = Character_First(text);
        const bool bKept = keptControls.find(text.front()) != std::string_view::npos;
        if (character.m_bValid && (bKept || !IsHidden(character.m_code)))
        {
            shown += text.substr(0, character.m_size);
        }
        else
        {
            shown += !character.m_bValid         ? Escape_Make("\\x%02x", static_cast<unsigned char>(text.front()))
                     : character.m_code > 0xFFFF ? Escape_Make("\\U%08x", character.m_code)
                                                 : Escape_Make("\\u%04x", character.m_code);
        }
        text.remove_prefix(character.m_size);
    }
    return shown;
}

} // namespace

std::string Text_Shown(std::string_view text)
{
    return Shown_Make(text, "\n\t");
}

std::string Name_Shown(std::string_view name)
{
    return Shown_Make(name, "");
}

bool Text_IsUtf8(std::string_view text)
{
    while (!text.empty())
    {
        const SCharacter character = Character_First(text);
        if (!character.m_bValid)
        {
            return false;
        }
        text.remove_prefix(character.m_size);
    }
    return true;
}

std::string Text_Printable(std::string_view text)
{
    std::size_t length = std::min<std::size_t>(text.size(), 120);
    // Cut between characters, not inside one of several bytes.
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U)
    {
        ++length;
    }
    return Name_Shown(text.substr(0, length)) + (length < text.size() ? "..." : "");
}
