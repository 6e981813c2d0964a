// Pages, strips and descriptions through libtiff, held against the file before anything is decoded.
#include "Host/Board/BoardTiffReader.h"

#include "Host/Input/TiffExpansion.h"
#include "Host/Input/TiffFile.h"
#include "Host/PathText.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace
{

constexpr std::int64_t mostBlockBytes = std::int64_t{1} << 30; // of a strip

template<class T>
T Tag_GetOr(TIFF* tiff, std::uint32_t tag, T otherwise)
{
    T value = {};
    return TIFFGetField(tiff, tag, &value) == 1 ? value : otherwise;
}

} // namespace

struct CBoardTiffReader::SPageSize
{
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
    std::uint32_t m_rowsPerStrip = 0;
    std::uint64_t m_rowBytes = 0;
};

CBoardTiffReader::CBoardTiffReader(const std::filesystem::path& file) : CBoardReader(Path_Text(file), 0)
{
    try
    {
        m_file = std::make_unique<CTiffFile>(m_name, mostBlockBytes);
    }
    catch (const CInputError& error)
    {
        throw CBoardDamageError(m_name, {-1, -1, error.WithoutFile(), ""});
    }
    m_size = static_cast<std::int64_t>(m_file->Size());
    m_info = Description_Read().m_info;
}

CBoardTiffReader::~CBoardTiffReader() = default;

SBandDescription CBoardTiffReader::Description_Read() const
{
    const char* pText = nullptr;
    if (TIFFGetField(m_file->Handle(), TIFFTAG_IMAGEDESCRIPTION, &pText) != 1 || pText == nullptr)
    {
        Refuse("there is no image description", "a board band's has its header");
    }
    try
    {
        return BandHeader_Parse(pText);
    }
    catch (const std::runtime_error& error)
    {
        Refuse(std::string("the image description is no board band's: ") + error.what());
    }
}

CBoardTiffReader::SPageSize CBoardTiffReader::Size_Read() const
{
    TIFF* tiff = m_file->Handle();
    const auto bits = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    const auto samples = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    const auto photometric = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    if (bits != 1 || samples != 1 || photometric != PHOTOMETRIC_MINISWHITE || TIFFIsTiled(tiff) != 0)
    {
        Refuse(std::to_string(samples) + " samples of " + std::to_string(bits) + " bits, photometric interpretation " +
                   std::to_string(photometric) + (TIFFIsTiled(tiff) != 0 ? ", in tiles" : ", in strips"),
               "a board band has one of 1 bit, 0 for no ink (0), in strips");
    }
    SPageSize size;
    size.m_width = Tag_GetOr<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
    size.m_height = Tag_GetOr<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
    size.m_rowsPerStrip = std::min(Tag_GetOr<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, size.m_height), size.m_height);
    size.m_rowBytes = (std::uint64_t{size.m_width} + 7) / 8;
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    if (size.m_width < 1 || size.m_height < 1 || size.m_rowsPerStrip < 1 || size.m_width > most ||
        size.m_height > most || size.m_rowBytes * size.m_height > most)
    {
        Refuse(std::to_string(size.m_width) + " x " + std::to_string(size.m_height) + " pixels in strips of " +
                   std::to_string(size.m_rowsPerStrip) + " rows",
               "a board band has 1 to " + std::to_string(most) + " bytes");
    }
    return size;
}

// Every strip lies inside the file, and is large enough for what it is said to hold.
void CBoardTiffReader::Blocks_Check(const SPageSize& size) const
{
    TIFF* tiff = m_file->Handle();
    const auto compression = Tag_GetOr<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    const std::uint64_t expansion = TiffExpansion_Most(compression);
    if (expansion == 0)
    {
        Refuse("compression " + std::to_string(compression),
               "board bands have none (1), PackBits (32773), LZW (5) or Deflate (8)");
    }
    const std::uint32_t strips = (size.m_height - 1) / size.m_rowsPerStrip + 1;
    const std::uint64_t fileSize = m_file->Size();
    for (std::uint32_t i = 0; i < strips; ++i)
    {
        const std::uint64_t offset = TIFFGetStrileOffset(tiff, i);
        const std::uint64_t bytes = TIFFGetStrileByteCount(tiff, i);
        const std::string name = "strip " + std::to_string(i);
        if (offset == 0 || bytes == 0)
        {
            Refuse(name + " has no data");
        }
        if (offset > fileSize || bytes > fileSize - offset)
        {
            Refuse(name + " has " + std::to_string(bytes) + " bytes from " + std::to_string(offset) + " on",
                   "the file has " + std::to_string(fileSize) + "; it was cut off or is damaged");
        }
        const std::uint64_t rows =
            std::min<std::uint64_t>(size.m_rowsPerStrip, size.m_height - std::uint64_t{i} * size.m_rowsPerStrip);
        if (rows * size.m_rowBytes > bytes * expansion)
        {
            Refuse(name + " has " + std::to_string(bytes) + " bytes", "that cannot hold " + std::to_string(rows) +
                                                                          " rows of " +
                                                                          std::to_string(size.m_rowBytes) + " bytes");
        }
    }
}

void CBoardTiffReader::Rows_Read(CBandData& band, const SPageSize& size) const
{
    for (std::uint32_t row = 0; row < size.m_height; row += size.m_rowsPerStrip)
    {
        const std::uint32_t strip = row / size.m_rowsPerStrip;
        const auto bytes =
            static_cast<tmsize_t>(std::min<std::uint64_t>(size.m_rowsPerStrip, size.m_height - row) * size.m_rowBytes);
        m_file->Messages_Clear();
        if (TIFFReadEncodedStrip(m_file->Handle(), strip, band.m_pData + size.m_rowBytes * row, bytes) != bytes)
        {
            Refuse_WithMessage("strip " + std::to_string(strip) + " cannot be decoded");
        }
    }
}

bool CBoardTiffReader::Band_ReadNext(CBandData& band, SBoardPass& pass)
{
    if (m_bEnd)
    {
        return false;
    }
    TIFF* tiff = m_file->Handle();
    if (m_bRead)
    {
        if (TIFFLastDirectory(tiff) != 0)
        {
            m_bEnd = true;
            return false;
        }
        ++m_page;
        m_file->Messages_Clear();
        if (TIFFReadDirectory(tiff) != 1)
        {
            m_bEnd = true;
            Refuse_WithMessage("the page cannot be read (damaged or cut off)");
        }
        if (!m_file->ReadError().empty())
        {
            Refuse("a tag is missing"); // libtiff goes on without what it could not read
        }
    }
    m_bRead = true;
    const SBandDescription description = Description_Read();
    if (!(description.m_info == m_info))
    {
        Refuse("the board info is not that of the first page", "all bands of a file are of one job");
    }
    const SPageSize size = Size_Read();
    Blocks_Check(size);
    if (!band.Create(static_cast<int>(size.m_width), static_cast<int>(size.m_height), 1, 1))
    {
        throw CRunError(m_name + ": there is no memory for page " + std::to_string(m_page) + " of " +
                        std::to_string(size.m_rowBytes * size.m_height) + " bytes");
    }
    static_cast<SBandHeader&>(band) = description.m_header;
    pass = description.m_pass;
    Rows_Read(band, size);
    m_place = "page " + std::to_string(m_page);
    return true;
}

// The pages are a chain: what follows a damaged page is found if its own place in the chain is sound.
bool CBoardTiffReader::Resume_Next()
{
    return !m_bEnd && TIFFLastDirectory(m_file->Handle()) == 0;
}

void CBoardTiffReader::Refuse(const std::string& what, const std::string& fix) const
{
    const std::string& reason = m_file->ReadError();
    throw CBoardDamageError(m_name, reason.empty() ? SBoardDamage{-1, m_page, what, fix}
                                                   : SBoardDamage{-1, m_page, "cannot be read: " + reason, ""});
}

void CBoardTiffReader::Refuse_WithMessage(const std::string& what) const
{
    const std::string& message = m_file->FirstError().empty() ? m_file->FirstWarning() : m_file->FirstError();
    Refuse(message.empty() ? what : what + ": " + message);
}
