// Checks of a separation's header, and the polarity of its rows; see the header.
#include "Host/Input/SeparationReader.h"

#include "Host/Input/SeparationRows.h"
#include "Host/Input/TiffExpansion.h"
#include "Host/Input/TiffFile.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace
{

template<class T>
T Tag_GetOr(TIFF* tiff, std::uint32_t tag, T otherwise)
{
    T value = {};
    return TIFFGetField(tiff, tag, &value) == 1 ? value : otherwise;
}

std::string Photometric_Name(std::uint16_t photometric)
{
    switch (photometric)
    {
    case PHOTOMETRIC_RGB:
        return "an RGB image";
    case PHOTOMETRIC_PALETTE:
        return "a palette image";
    case PHOTOMETRIC_MASK:
        return "a transparency mask";
    case PHOTOMETRIC_SEPARATED:
        return "a CMYK image";
    default:
        return "an image of photometric interpretation " + std::to_string(photometric);
    }
}

} // namespace

CSeparationReader::CSeparationReader(const std::string& path, const SSeparationLimit& limit)
    : m_limit(limit), m_file(std::make_unique<CTiffFile>(path, limit.maxBlockBytes))
{
    m_info.path = path;
    const STiffPage page = Page_Read();
    m_info.width = static_cast<int>(page.width);
    m_info.height = static_cast<int>(page.height);
    m_info.bitsPerPixel = page.bitsPerPixel;
    Resolution_Read();
    m_rowBytes = static_cast<int>(page.rowBytes);
    const auto paddingBits = page.rowBytes * 8 - std::uint64_t{page.width} * page.bitsPerPixel;
    m_lastByteMask = static_cast<unsigned char>(0xFFU << paddingBits);
    m_rows = CSeparationRows::Create(*m_file, page, limit.maxBlockBytes);
}

CSeparationReader::~CSeparationReader() = default;

void CSeparationReader::Resolution_Read()
{
    constexpr double centimetresPerInch = 2.54;
    TIFF* tiff = m_file->Handle();
    const auto unit = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    const double factor = unit == RESUNIT_INCH ? 1.0 : unit == RESUNIT_CENTIMETER ? centimetresPerInch : 0.0;
    const double x = factor * static_cast<double>(Tag_GetOr<float>(tiff, TIFFTAG_XRESOLUTION, 0));
    const double y = factor * static_cast<double>(Tag_GetOr<float>(tiff, TIFFTAG_YRESOLUTION, 0));
    if (std::isfinite(x) && std::isfinite(y) && x > 0 && y > 0)
    {
        m_info.xResolution = x;
        m_info.yResolution = y;
    }
}

bool CSeparationReader::Row_Read(unsigned char* row)
{
    if (m_nextRow == m_info.height)
    {
        return false;
    }
    m_rows->Row_Read(static_cast<std::uint32_t>(m_nextRow), row);
    ++m_nextRow;
    if (m_bInvert)
    {
        std::transform(row, row + m_rowBytes, row,
                       [](unsigned char byte) { return static_cast<unsigned char>(~byte); });
    }
    row[m_rowBytes - 1] &= m_lastByteMask;
    return true;
}

void CSeparationReader::Rows_Skip(int count)
{
    const int next = m_nextRow + count;
    if (count < 1 || next >= m_info.height)
    {
        m_nextRow = std::min(next, m_info.height);
        return;
    }
    std::vector<unsigned char> row(static_cast<std::size_t>(m_rowBytes));
    m_nextRow = std::max(m_nextRow, static_cast<int>(m_rows->FirstRow_Get(static_cast<std::uint32_t>(next))));
    for (; m_nextRow < next; ++m_nextRow)
    {
        m_rows->Row_Read(static_cast<std::uint32_t>(m_nextRow), row.data());
    }
}

STiffPage CSeparationReader::Page_Read()
{
    STiffPage page;
    Pixel_Check(page);
    Size_Check(page);
    Layout_Check(page);
    Data_Check(page);
    SinglePage_Check();
    return page;
}

void CSeparationReader::Pixel_Check(STiffPage& page)
{
    TIFF* tiff = m_file->Handle();
    const auto samples = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    if (samples != 1)
    {
        m_file->Fail(std::to_string(samples) + " samples per pixel; a separation needs 1");
    }
    page.bitsPerPixel = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    if (page.bitsPerPixel != 1 && page.bitsPerPixel != 2)
    {
        m_file->Fail(std::to_string(page.bitsPerPixel) + " bits per sample; a separation needs 1 or 2");
    }
    const auto format = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID)
    {
        m_file->Fail("sample format " + std::to_string(format) + "; a separation needs unsigned samples (1)");
    }
    std::uint16_t photometric = 0;
    if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric) != 1)
    {
        m_file->Fail("the photometric interpretation is missing: nothing says whether 0 is black or white");
    }
    if (photometric != PHOTOMETRIC_MINISWHITE && photometric != PHOTOMETRIC_MINISBLACK)
    {
        m_file->Fail(Photometric_Name(photometric) + "; a separation needs black and white, either of them 0");
    }
    m_bInvert = photometric == PHOTOMETRIC_MINISBLACK;
    Value_Check("Orientation", "a separation needs the first row on top and the first column at the left (1)");
    Value_Check("FillOrder", "it is 1, the high bits first, or 2");
    const auto orientation = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (orientation != ORIENTATION_TOPLEFT)
    {
        m_file->Fail("orientation " + std::to_string(orientation) +
                     "; a separation needs the first row on top and the first column at the left (1)");
    }
}

// A value that does not exist is no value to libtiff, which would go on as if the tag were not there.
void CSeparationReader::Value_Check(const std::string& name, const char* pWanted) const
{
    for (const std::string* pMessage : {&m_file->FirstError(), &m_file->FirstWarning()})
    {
        const std::size_t begin = pMessage->find("Bad value");
        if (begin != std::string::npos && pMessage->find('"' + name + '"') != std::string::npos)
        {
            m_file->Fail("bad value" + pMessage->substr(begin + std::string_view("Bad value").size()) + "; " + pWanted);
        }
    }
}

void CSeparationReader::Size_Check(STiffPage& page)
{
    page.width = Tag_GetOr<std::uint32_t>(m_file->Handle(), TIFFTAG_IMAGEWIDTH, 0);
    page.height = Tag_GetOr<std::uint32_t>(m_file->Handle(), TIFFTAG_IMAGELENGTH, 0);
    if (page.width < 1 || page.height < 1)
    {
        m_file->Fail("the page is " + std::to_string(page.width) + " columns by " + std::to_string(page.height) +
                     " rows; there is nothing to print");
    }
    if (page.width > static_cast<std::uint32_t>(m_limit.maxWidth))
    {
        m_file->Fail(std::to_string(page.width) + " columns; a separation can have " +
                     std::to_string(m_limit.maxWidth));
    }
    if (page.height > static_cast<std::uint32_t>(m_limit.maxHeight))
    {
        m_file->Fail(std::to_string(page.height) + " rows; a separation can have " + std::to_string(m_limit.maxHeight));
    }
    page.rowBytes = (std::uint64_t{page.width} * page.bitsPerPixel + 7) / 8;
}

void CSeparationReader::Layout_Check(STiffPage& page)
{
    TIFF* tiff = m_file->Handle();
    page.compression = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (TIFFIsCODECConfigured(page.compression) != 1)
    {
        m_file->Fail("compression " + std::to_string(page.compression) + " is none that can be read here");
    }
    page.fillOrder = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
    page.bTiled = TIFFIsTiled(tiff) != 0;
    if (!page.bTiled)
    {
        const auto rowsPerStrip = Tag_GetOr<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, page.height);
        page.rowsPerStrip = std::clamp<std::uint32_t>(rowsPerStrip, 1, page.height);
        return;
    }
    page.tileWidth = Tag_GetOr<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
    page.tileHeight = Tag_GetOr<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
    if (page.tileWidth == 0 || page.tileHeight == 0 || page.tileWidth % 16 != 0)
    {
        m_file->Fail("tiles of " + std::to_string(page.tileWidth) + " columns by " + std::to_string(page.tileHeight) +
                     " rows; a tile's columns must be a multiple of 16");
    }
    page.tileRowBytes = std::uint64_t{page.tileWidth} * page.bitsPerPixel / 8;
}

void CSeparationReader::Data_Check(const STiffPage& page)
{
    if (m_file->FirstWarning().find("StripByteCounts") != std::string::npos)
    {
        m_file->Fail_WithMessage("the strips' sizes are missing or wrong");
    }
    const std::uint32_t count =
        page.bTiled ? TIFFNumberOfTiles(m_file->Handle()) : TIFFNumberOfStrips(m_file->Handle());
    for (std::uint32_t i = 0; i < count; ++i)
    {
        Block_Check(page, i);
    }
}

void CSeparationReader::Block_Check(const STiffPage& page, std::uint32_t index)
{
    const std::uint64_t offset = TIFFGetStrileOffset(m_file->Handle(), index);
    const std::uint64_t size = TIFFGetStrileByteCount(m_file->Handle(), index);
    const std::string name = (page.bTiled ? "tile " : "strip ") + std::to_string(index);
    if (offset == 0 || size == 0)
    {
        m_file->Fail(name + " has no data");
    }
    if (offset > m_file->Size() || size > m_file->Size() - offset)
    {
        m_file->Fail(name + " lies beyond the end of the file (" + std::to_string(size) + " bytes from " +
                     std::to_string(offset) + " on, the file has " + std::to_string(m_file->Size()) +
                     "): the file is truncated or damaged");
    }
    if (page.compression == COMPRESSION_NONE)
    {
        const std::uint64_t needed = page.PlainBytes(index);
        if (size < needed)
        {
            m_file->Fail(name + " has " + std::to_string(size) + " bytes; its rows need " + std::to_string(needed));
        }
    }
    else if (size > static_cast<std::uint64_t>(m_limit.maxBlockBytes))
    {
        m_file->Fail(name + " has " + std::to_string(size) + " bytes of compressed data; at most " +
                     std::to_string(m_limit.maxBlockBytes) + " can be decoded (write the file with smaller strips)");
    }
    else
    {
        const std::uint64_t rowBytes = page.bTiled ? page.tileRowBytes : page.rowBytes;
        const std::uint64_t rows = page.PlainBytes(index) / rowBytes;
        // What is small is decoded, which says more of what is wrong.
        constexpr std::uint64_t small = std::uint64_t{1} << 20U;
        if (page.PlainBytes(index) > small && !TiffExpansion_Fits(page.compression, size, rows, rowBytes))
        {
            m_file->Fail(name + " has " + std::to_string(size) + " bytes of compressed data, which cannot be " +
                         std::to_string(rows) + " rows of " + std::to_string(rowBytes) + " bytes");
        }
    }
}

void CSeparationReader::SinglePage_Check()
{
    TIFF* tiff = m_file->Handle();
    if (TIFFLastDirectory(tiff) != 0)
    {
        return;
    }
    while (TIFFLastDirectory(tiff) == 0)
    {
        m_file->Messages_Clear();
        if (TIFFReadDirectory(tiff) != 1)
        {
            m_file->Fail_WithMessage("what follows the first page cannot be read (damaged or truncated)");
        }
        if ((Tag_GetOr<std::uint32_t>(tiff, TIFFTAG_SUBFILETYPE, 0) & FILETYPE_REDUCEDIMAGE) == 0)
        {
            m_file->Fail("the file has more than one page; a separation is a file of its own");
        }
    }
    m_file->Messages_Clear();
    if (TIFFSetDirectory(tiff, 0) != 1)
    {
        m_file->Fail_WithMessage("the first page cannot be read a second time");
    }
}

SSeparationInfo SeparationInfo_Get(const std::string& path)
{
    return CSeparationReader(path).Info_Get();
}
