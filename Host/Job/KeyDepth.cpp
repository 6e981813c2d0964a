// A look at the text's dots: strings and comments apart, only keys have several in a row.
#include "Host/Job/KeyDepth.h"

#include <algorithm>
#include <cstddef>

namespace
{

// Walks over the text, which stays the caller's.
class CKeyDepth
{
public:
    explicit CKeyDepth(std::string_view text) : m_text(text) {}

    std::optional<SFilePlace> Find(int most)
    {
        while (m_at < m_text.size())
        {
            const char letter = m_text[m_at];
            if (letter == '.' && ++m_dots >= most)
            {
                return m_keyPlace;
            }
            if (letter == '"' || letter == '\'')
            {
                m_bKeyBegun = true;
                String_Pass(letter);
                continue;
            }
            if (letter == '#')
            {
                m_at = std::min(m_text.find('\n', m_at), m_text.size());
                continue;
            }
            Step();
            const bool bEnds = letter != '.' && !IsKey(letter);
            m_dots = bEnds ? 0 : m_dots;
            m_bKeyBegun = !bEnds && (m_bKeyBegun || (letter != ' ' && letter != '\t'));
            m_keyPlace = m_bKeyBegun ? m_keyPlace : m_place;
        }
        return std::nullopt;
    }

private:
    // What may stand between the dots of a key.
    static bool IsKey(char letter)
    {
        return letter == ' ' || letter == '\t' || letter == '-' || letter == '_' || (letter >= '0' && letter <= '9') ||
               (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z') ||
               static_cast<unsigned char>(letter) >= 0x80U;
    }

    void Step()
    {
        const bool bLine = m_text[m_at] == '\n';
        m_place = bLine ? SFilePlace{m_place.m_line + 1, 1} : SFilePlace{m_place.m_line, m_place.m_column + 1};
        ++m_at;
    }

    // One of the four kinds of string, or as much of it as there is.
    void String_Pass(char quote)
    {
        const std::string_view rest = m_text.substr(m_at);
        const bool bLong = rest.size() >= 3 && rest[1] == quote && rest[2] == quote;
        const std::size_t width = bLong ? 3 : 1;
        Steps(width);
        while (m_at < m_text.size() && (bLong || m_text[m_at] != '\n'))
        {
            // Of more quotes than end a long string, the last ones do.
            const bool bMore = bLong && m_text.substr(std::min(m_at + width, m_text.size())).starts_with(quote);
            if (m_text.substr(m_at).starts_with(rest.substr(0, width)) && !bMore)
            {
                Steps(width);
                return;
            }
            Steps(m_text[m_at] == '\\' && quote == '"' ? 2 : 1);
        }
    }

    void Steps(std::size_t count)
    {
        for (; count > 0 && m_at < m_text.size(); --count)
        {
            Step();
        }
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    SFilePlace m_place;
    SFilePlace m_keyPlace;
    bool m_bKeyBegun = false;
    int m_dots = 0; // since the key began
};

} // namespace

std::optional<SFilePlace> KeyDepth_Find(std::string_view text, int most)
{
    return CKeyDepth(text).Find(most);
}
