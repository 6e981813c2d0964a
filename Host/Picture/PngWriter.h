// A PNG, row by row, through libpng, which only PngWriter.cpp includes. Nothing of the picture is kept here but the row
// in the making, so that a picture may be as high as a PNG can be. One thread at a time.
#pragma once

#include "Host/Output/ByteSink.h"

#include <array>
#include <cstdint>
#include <exception>
#include <vector>

struct png_struct_def;
struct png_info_def;

enum class EPngPixels
{
    Palette, // a byte for a pixel, the place of its colour
    Grey,    // a byte for a pixel, 0 is black
    Color,   // three bytes for a pixel: red, green, blue
};

struct SPngFormat
{
    std::int64_t m_width = 0; // pixels
    std::int64_t m_height = 0;
    EPngPixels m_pixels = EPngPixels::Color;
    std::vector<std::uint32_t> m_palette = {}; // 0xRRGGBB, 256 at most
    double m_xResolution = 0;                  // pixels per inch; 0: the file does not say it
    double m_yResolution = 0;
};

class CPngWriter
{
public:
    // The sink must outlive this, and is left open. `fix` is what the user can do about a picture that is larger than a
    // PNG can be. Throws CInputError about that, CRunError if the library fails, and what the sink throws.
    CPngWriter(CByteSink& sink, const SPngFormat& format, const char* pFix);
    ~CPngWriter();
    CPngWriter(const CPngWriter&) = delete;
    CPngWriter& operator=(const CPngWriter&) = delete;

    // From the top down, as many as the picture is high. Throws as the constructor does.
    void Row_Write(const unsigned char* pPixels);

    // Behind the last row, once.
    void Finish();

private:
    static void Write_Callback(png_struct_def* pPng, unsigned char* pBytes, std::size_t size);
    static void Error_Callback(png_struct_def* pPng, const char* pMessage);
    static void Warning_Callback(png_struct_def* pPng, const char* pMessage);

    // Calls the library; throws what went wrong. `call` must not need a destructor.
    template<class TCall>
    void Library_Call(TCall call);

    void Header_Write(const SPngFormat& format);

    CByteSink& m_sink;
    png_struct_def* m_pPng = nullptr;
    png_info_def* m_pInfo = nullptr;
    std::exception_ptr m_error;        // that the sink threw
    std::array<char, 128> m_message{}; // of the library, ended by 0
};
