// Writes small TIFF files for the stripe-colour tests. Test code only; any thread.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// A TIFF page of ink, 0 = none, from the rows' packed bytes.
inline void StripeTiff_Write(const std::filesystem::path& path, int width, int bitsPerPixel,
                             std::vector<std::string> rows)
{
    TIFF* tiff = TIFFOpen(path.string().c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(rows.size()));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bitsPerPixel);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1);
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        TIFFWriteScanline(tiff, rows[i].data(), static_cast<std::uint32_t>(i), 0);
    }
    TIFFClose(tiff);
}
