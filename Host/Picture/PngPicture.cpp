// Pixels through libpng, letters of stb_easy_font.
#include "Host/Picture/PngPicture.h"

#include "Host/HostError.h"

#include <png.h>
#include <stb/stb_easy_font.h>

#include <algorithm>
#include <csetjmp>
#include <limits>

namespace
{

constexpr std::int64_t scale = 2; // pixels of a unit
constexpr std::size_t mostColors = 256;
constexpr int letterHeight = 7; // of a capital, in the font's dots

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
    : m_sink(sink),
      m_width(frame.m_width * scale),
      m_height(frame.m_height * scale),
      m_letterColor(static_cast<unsigned char>(frame.m_colors.size() - 1))
{
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (m_width > most || m_height > most)
    {
        throw CInputError("the picture would have " + std::to_string(m_width) + " x " + std::to_string(m_height) +
                          " pixels, more than a PNG can have; --frames shows fewer frames");
    }
    m_pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, &Error_Callback, &Warning_Callback);
    m_pInfo = m_pPng == nullptr ? nullptr : png_create_info_struct(m_pPng);
    try
    {
        if (m_pInfo == nullptr)
        {
            throw CRunError(m_sink.Name() + ": libpng cannot be used");
        }
        Header_Write(frame);
    }
    catch (...)
    {
        png_destroy_write_struct(&m_pPng, &m_pInfo);
        throw;
    }
}

CPngPicture::~CPngPicture()
{
    png_destroy_write_struct(&m_pPng, &m_pInfo);
}

// No exception may pass through the library: the sink's waits until the library has returned.
void CPngPicture::Write_Callback(png_struct_def* pPng, unsigned char* pBytes, std::size_t size)
{
    auto& picture = *static_cast<CPngPicture*>(png_get_io_ptr(pPng));
    if (picture.m_error != nullptr)
    {
        return;
    }
    try
    {
        picture.m_sink.Write(pBytes, size);
    }
    catch (...)
    {
        picture.m_error = std::current_exception();
    }
}

void CPngPicture::Error_Callback(png_struct_def* pPng, const char* pMessage)
{
    auto& message = static_cast<CPngPicture*>(png_get_error_ptr(pPng))->m_message;
    std::size_t i = 0;
    for (; pMessage[i] != '\0' && i + 1 < message.size(); ++i)
    {
        message[i] = pMessage[i];
    }
    message[i] = '\0';
    png_longjmp(pPng, 1);
}

void CPngPicture::Warning_Callback(png_struct_def* /*pPng*/, const char* /*pMessage*/) {}

template<class TCall>
void CPngPicture::Library_Call(TCall call)
{
    static_assert(std::is_trivially_destructible_v<TCall>);
    // The library reports its errors by a long jump only; nothing between here and there has a destructor.
    if (setjmp(png_jmpbuf(m_pPng)) != 0) // NOLINT(cert-err52-cpp)
    {
        throw CRunError(m_sink.Name() + ": " + m_message.data());
    }
    call();
    if (m_error != nullptr)
    {
        std::rethrow_exception(m_error);
    }
}

void CPngPicture::Header_Write(const SPictureFrame& frame)
{
    std::array<png_color, mostColors> palette = {};
    const std::size_t count = frame.m_colors.size();
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::uint32_t color = frame.m_colors[i];
        palette.at(i) = {static_cast<png_byte>(color >> 16U), static_cast<png_byte>(color >> 8U),
                         static_cast<png_byte>(color)};
    }
    Library_Call(
        [this, &palette, count]
        {
            constexpr png_uint_32 most = std::numeric_limits<std::int32_t>::max();
            png_set_write_fn(m_pPng, this, &Write_Callback, nullptr);
            png_set_user_limits(m_pPng, most, most);
            png_set_IHDR(m_pPng, m_pInfo, static_cast<png_uint_32>(m_width), static_cast<png_uint_32>(m_height), 8,
                         PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                         PNG_FILTER_TYPE_DEFAULT);
            png_set_PLTE(m_pPng, m_pInfo, palette.data(), static_cast<int>(count));
            png_write_info(m_pPng, m_pInfo);
        });
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
    Library_Call(
        [this, end]
        {
            for (std::int64_t row = m_firstRow; row < end; ++row)
            {
                png_write_row(m_pPng, m_rows.data() + (row - m_firstRow) * m_width);
            }
        });
    m_rows.erase(m_rows.begin(), m_rows.begin() + static_cast<std::ptrdiff_t>(count));
    m_firstRow = end;
}

void CPngPicture::Finish()
{
    Above_Finish(m_height);
    Library_Call([this] { png_write_end(m_pPng, nullptr); });
}
