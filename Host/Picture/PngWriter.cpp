// Rows through libpng, whose errors are long jumps and which no exception may pass.
#include "Host/Picture/PngWriter.h"

#include "Host/HostError.h"

#include <png.h>

#include <cmath>
#include <csetjmp>
#include <limits>
#include <string>
#include <type_traits>

namespace
{

constexpr std::size_t mostColors = 256;
constexpr double metresPerInch = 0.0254;

int ColorType_Of(EPngPixels pixels)
{
    switch (pixels)
    {
    case EPngPixels::Palette:
        return PNG_COLOR_TYPE_PALETTE;
    case EPngPixels::Grey:
        return PNG_COLOR_TYPE_GRAY;
    case EPngPixels::Color:
        break;
    }
    return PNG_COLOR_TYPE_RGB;
}

png_uint_32 PerMetre_Of(double perInch)
{
    constexpr double most = std::numeric_limits<std::int32_t>::max();
    const double perMetre = std::round(perInch / metresPerInch);
    return perMetre > 0 && perMetre < most ? static_cast<png_uint_32>(perMetre) : 0;
}

} // namespace

CPngWriter::CPngWriter(CByteSink& sink, const SPngFormat& format, const char* pFix) : m_sink(sink)
{
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (format.m_width > most || format.m_height > most)
    {
        throw CInputError("the picture would have " + std::to_string(format.m_width) + " x " +
                          std::to_string(format.m_height) + " pixels, more than a PNG can have; " + pFix);
    }
    m_pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, &Error_Callback, &Warning_Callback);
    m_pInfo = m_pPng == nullptr ? nullptr : png_create_info_struct(m_pPng);
    try
    {
        if (m_pInfo == nullptr)
        {
            throw CRunError(m_sink.Name() + ": libpng cannot be used");
        }
        Header_Write(format);
    }
    catch (...)
    {
        png_destroy_write_struct(&m_pPng, &m_pInfo);
        throw;
    }
}

CPngWriter::~CPngWriter()
{
    png_destroy_write_struct(&m_pPng, &m_pInfo);
}

// No exception may pass through the library: the sink's waits until the library has returned.
void CPngWriter::Write_Callback(png_struct_def* pPng, unsigned char* pBytes, std::size_t size)
{
    auto& writer = *static_cast<CPngWriter*>(png_get_io_ptr(pPng));
    if (writer.m_error != nullptr)
    {
        return;
    }
    try
    {
        writer.m_sink.Write(pBytes, size);
    }
    catch (...)
    {
        writer.m_error = std::current_exception();
    }
}

void CPngWriter::Error_Callback(png_struct_def* pPng, const char* pMessage)
{
    auto& message = static_cast<CPngWriter*>(png_get_error_ptr(pPng))->m_message;
    std::size_t i = 0;
    for (; pMessage[i] != '\0' && i + 1 < message.size(); ++i)
    {
        message[i] = pMessage[i];
    }
    message[i] = '\0';
    png_longjmp(pPng, 1);
}

void CPngWriter::Warning_Callback(png_struct_def* /*pPng*/, const char* /*pMessage*/) {}

template<class TCall>
void CPngWriter::Library_Call(TCall call)
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

void CPngWriter::Header_Write(const SPngFormat& format)
{
    std::array<png_color, mostColors> palette = {};
    const std::size_t count = format.m_palette.size();
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::uint32_t color = format.m_palette[i];
        palette.at(i) = {static_cast<png_byte>(color >> 16U), static_cast<png_byte>(color >> 8U),
                         static_cast<png_byte>(color)};
    }
    Library_Call(
        [this, &format, &palette, count]
        {
            constexpr png_uint_32 most = std::numeric_limits<std::int32_t>::max();
            png_set_write_fn(m_pPng, this, &Write_Callback, nullptr);
            png_set_user_limits(m_pPng, most, most);
            png_set_IHDR(m_pPng, m_pInfo, static_cast<png_uint_32>(format.m_width),
                         static_cast<png_uint_32>(format.m_height), 8, ColorType_Of(format.m_pixels),
                         PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            if (count > 0)
            {
                png_set_PLTE(m_pPng, m_pInfo, palette.data(), static_cast<int>(count));
            }
            const png_uint_32 x = PerMetre_Of(format.m_xResolution);
            const png_uint_32 y = PerMetre_Of(format.m_yResolution);
            if (x > 0 && y > 0)
            {
                png_set_pHYs(m_pPng, m_pInfo, x, y, PNG_RESOLUTION_METER);
            }
            png_write_info(m_pPng, m_pInfo);
        });
}

void CPngWriter::Row_Write(const unsigned char* pPixels)
{
    Library_Call([this, pPixels] { png_write_row(m_pPng, pPixels); });
}

void CPngWriter::Finish()
{
    Library_Call([this] { png_write_end(m_pPng, nullptr); });
}
