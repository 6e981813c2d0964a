// How much a piece of compressed data can stand for, so that a short file cannot ask for much memory. Pure functions;
// any thread.
#pragma once

#include <cstdint>
#include <tiffio.h>

// The most bytes that one byte of compressed data can stand for; 0: it depends on more than the compression.
inline std::uint64_t TiffExpansion_Most(std::uint16_t compression)
{
    switch (compression)
    {
    case COMPRESSION_NONE:
        return 1;
    case COMPRESSION_PACKBITS:
        return 64; // 128 bytes for two
    case COMPRESSION_LZW:
        return 3072; // a string of nearly 4096 bytes for 12 bits
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
        return 1040; // 258 bytes for 2 bits
    default:
        return 0;
    }
}

// Whether `bytes` bytes of compressed data can be `rows` rows of `rowBytes` bytes.
inline bool TiffExpansion_Fits(std::uint16_t compression, std::uint64_t bytes, std::uint64_t rows,
                               std::uint64_t rowBytes)
{
    switch (compression)
    {
    case COMPRESSION_CCITTRLE: // every row begins on a byte of its own
    case COMPRESSION_CCITTRLEW:
        return rows <= bytes;
    case COMPRESSION_CCITTFAX3: // a row is a bit at least
    case COMPRESSION_CCITTFAX4:
        return rows / 8 <= bytes;
    default:
        break;
    }
    const std::uint64_t most = TiffExpansion_Most(compression);
    return most == 0 || rows * rowBytes / most <= bytes;
}
