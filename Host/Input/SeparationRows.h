// The three ways to get at the rows of a TIFF page, each with the least memory that the page's layout allows.
//
// Made and called by the separation reader, on its thread. A row source hands out the rows from the top, each once, as
// the file's samples packed from the high bits on; it knows nothing of ink.
#pragma once

#include "Host/Input/TiffFile.h"

#include <algorithm>
#include <cstdint>
#include <memory>

// The page's layout, checked: sizes in pixels and bytes, all above zero.
struct STiffPage
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bitsPerPixel = 0;
    std::uint16_t compression = 0;
    std::uint16_t fillOrder = 0;
    bool bTiled = false;
    std::uint32_t rowsPerStrip = 0; // at most the height; 0 for tiles
    std::uint32_t tileWidth = 0;    // 0 for strips
    std::uint32_t tileHeight = 0;   // 0 for strips
    std::uint64_t rowBytes = 0;     // packed, without padding beyond the last byte
    std::uint64_t tileRowBytes = 0; // the same of one tile

    std::uint32_t TilesAcross() const { return (width - 1) / tileWidth + 1; }
    // The bytes of the decoded strip or tile `index`.
    std::uint64_t PlainBytes(std::uint32_t index) const
    {
        const std::uint64_t rowsBefore = std::uint64_t{index} * rowsPerStrip;
        return bTiled ? tileRowBytes * tileHeight
                      : std::min<std::uint64_t>(rowsPerStrip, height - rowsBefore) * rowBytes;
    }
};

class CSeparationRows
{
public:
    // The leanest source for the page: uncompressed strips are read a row at a time from the file, compressed ones are
    // decoded a row at a time, and a row of tiles (or a strip, for a codec that knows no rows) is decoded into one
    // buffer, which may have `maxBlockBytes` bytes; a page that needs more is refused with a CInputError.
    static std::unique_ptr<CSeparationRows> Create(CTiffFile& file, const STiffPage& page, std::int64_t maxBlockBytes);

    virtual ~CSeparationRows() = default;

    // Writes row `row` (from 0) as page.rowBytes bytes. Rows are asked for in order; one that FirstRow_Get gives may
    // follow any earlier one. Throws CInputError that names the
    // row and its strip or tile; no row can be asked for after that.
    virtual void Row_Read(std::uint32_t row, unsigned char* bytes) = 0;

    // The row from which on the page has to be read for this one.
    virtual std::uint32_t FirstRow_Get(std::uint32_t row) const = 0;
};
