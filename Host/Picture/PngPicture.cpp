// Boxes as pixels, letters of stb_easy_font.
#include "Host/Picture/PngPicture.h"

#include <stb/stb_easy_font.h>

#include <algorithm>

namespace
{

constexpr std::int64_t scale = 2; // pixels of a unit
constexpr int letterHeight = 7;   // of a capital, in the font's dots

// As the font writes it.
struct SVertex
{
    float m_x;
    float m_y;
    float m_z;
    unsigned char m_color[4];
};
constexpr std::size_t mostVerticesPerLetter = 80; // the font's busiest letter has 17 quads

// A letter that the font has for each of the text.
std::string Ascii_Text(const std::string& text)
{
    std::string ascii;
    for (const char letter : text)
    {
        const auto byte = static_cast<unsigned char>(letter);
        if ((byte & 0xC0U) == 0x80U) // goes with the one before it
        {
            continue;
        }
        ascii += byte >= ' ' && byte < 0x7F ? letter : '?';
    }
    return ascii;
}

} // namespace

CPngPicture::CPngPicture(CByteSink& sink, const SPictureFrame& frame)
    : m_width(frame.m_width * scale),
      m_height(frame.m_height * scale),
      m_letterColor(static_cast<unsigned char>(frame.m_colors.size() - 1)),
      m_writer(sink, {m_width, m_height, EPngPixels::Palette, frame.m_colors}, "--frames shows fewer frames")
{
}

void CPngPicture::Pixels_Fill(const SPictureBox& box, unsigned char color)
{
    const std::int64_t left = std::max<std::int64_t>(box.m_x, 0);
    const std::int64_t right = std::min(box.m_x + box.m_width, m_width);
    const std::int64_t top = std::max(box.m_y, m_firstRow);
    const std::int64_t bottom = std::min(box.m_y + box.m_height, m_height);
    if (left >= right || top >= bottom)
    {
        return;
    }
    const auto needed = static_cast<std::size_t>((bottom - m_firstRow) * m_width);
    if (m_rows.size() < needed)
    {
        m_rows.resize(needed);
    }
    for (std::int64_t y = top; y < bottom; ++y)
    {
        std::fill_n(m_rows.begin() + ((y - m_firstRow) * m_width + left), right - left, color);
    }
}

void CPngPicture::Box_Draw(const SPictureBox& box, std::size_t fill, std::size_t edge)
{
    const SPictureBox outer = {box.m_x * scale, box.m_y * scale, box.m_width * scale, box.m_height * scale};
    Pixels_Fill({outer.m_x, outer.m_y, outer.m_width + 1, outer.m_height + 1}, static_cast<unsigned char>(edge));
    Pixels_Fill({outer.m_x + 1, outer.m_y + 1, outer.m_width - 1, outer.m_height - 1},
                static_cast<unsigned char>(fill));
}

void CPngPicture::Text_Draw(std::int64_t x, std::int64_t y, const std::string& text, ETextAnchor anchor, ETextSize size)
{
    std::string ascii = Ascii_Text(text);
    std::vector<SVertex> vertices(ascii.size() * mostVerticesPerLetter);
    const int quads = stb_easy_font_print(0, 0, ascii.data(), nullptr, vertices.data(),
                                          static_cast<int>(vertices.size() * sizeof(SVertex)));
    const std::int64_t dot = size == ETextSize::Big ? scale + 1 : scale; // pixels of a dot of the font
    const std::int64_t width = stb_easy_font_width(ascii.data()) * dot;
    const std::int64_t left = x * scale - (anchor == ETextAnchor::Middle ? width / 2 : 0);
    const std::int64_t top = y * scale - (letterHeight + 1) * dot;
    for (int i = 0; i < quads; ++i)
    {
        const SVertex& first = vertices[static_cast<std::size_t>(i) * 4];
        const SVertex& opposite = vertices[static_cast<std::size_t>(i) * 4 + 2];
        Pixels_Fill({left + static_cast<std::int64_t>(first.m_x) * dot,
                     top + static_cast<std::int64_t>(first.m_y) * dot,
                     static_cast<std::int64_t>(opposite.m_x - first.m_x) * dot,
                     static_cast<std::int64_t>(opposite.m_y - first.m_y) * dot},
                    m_letterColor);
    }
}

void CPngPicture::Above_Finish(std::int64_t y)
{
    const std::int64_t end = std::min(y * scale, m_height);
    if (end <= m_firstRow)
    {
        return;
    }
    const auto count = static_cast<std::size_t>((end - m_firstRow) * m_width);
    m_rows.resize(std::max(m_rows.size(), count));
    for (std::int64_t row = m_firstRow; row < end; ++row)
    {
        m_writer.Row_Write(m_rows.data() + (row - m_firstRow) * m_width);
    }
    m_rows.erase(m_rows.begin(), m_rows.begin() + static_cast<std::ptrdiff_t>(count));
    m_firstRow = end;
}

void CPngPicture::Finish()
{
    Above_Finish(m_height);
    m_writer.Finish();
}
