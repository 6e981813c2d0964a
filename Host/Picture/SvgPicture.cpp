// The elements of an SVG.
#include "Host/Picture/SvgPicture.h"

#include "Host/Picture/InkColor.h"

namespace
{

constexpr std::int64_t writtenBytes = 1 << 16; // at a time, or more

// For text between tags.
std::string Xml_Text(const std::string& text)
{
    std::string escaped;
    for (const char letter : text)
    {
        switch (letter)
        {
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '&':
            escaped += "&amp;";
            break;
        default:
            escaped += static_cast<unsigned char>(letter) < ' ' ? ' ' : letter;
        }
    }
    return escaped;
}

} // namespace

CSvgPicture::CSvgPicture(CByteSink& sink, const SPictureFrame& frame) : m_sink(sink)
{
    for (const std::uint32_t color : frame.m_colors)
    {
        m_colors.push_back(Color_Text(color));
    }
    m_text << R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" << frame.m_width << R"(" height=")" << frame.m_height
           << R"(" font-family="sans-serif" font-size="11">)"
           << "\n<rect width=\"100%\" height=\"100%\" fill=\"" << m_colors.front() << "\"/>\n";
}

void CSvgPicture::Box_Draw(const SPictureBox& box, std::size_t fill, std::size_t edge)
{
    m_text << R"(<rect x=")" << box.m_x << R"(" y=")" << box.m_y << R"(" width=")" << box.m_width << R"(" height=")"
           << box.m_height << R"(" fill=")" << m_colors.at(fill) << R"(" stroke=")" << m_colors.at(edge) << "\"/>\n";
}

void CSvgPicture::Text_Draw(std::int64_t x, std::int64_t y, const std::string& text, ETextAnchor anchor, ETextSize size)
{
    m_text << R"(<text x=")" << x << R"(" y=")" << y << '"' << (size == ETextSize::Big ? R"( font-size="14")" : "")
           << (anchor == ETextAnchor::Middle ? R"( text-anchor="middle")" : "") << '>' << Xml_Text(text) << "</text>\n";
}

void CSvgPicture::Above_Finish(std::int64_t /*y*/)
{
    if (m_text.tellp() >= writtenBytes)
    {
        const std::string text = m_text.str();
        m_sink.Write(text.data(), text.size());
        m_text.str("");
    }
}

void CSvgPicture::Finish()
{
    m_text << "</svg>\n";
    const std::string text = m_text.str();
    m_sink.Write(text.data(), text.size());
}
