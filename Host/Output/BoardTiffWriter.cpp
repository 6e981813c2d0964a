// Board bands through libtiff, which writes into a COutputFile by way of the callbacks here; its messages are kept for
// the one error text and never reach standard error.
#include "Host/Output/BoardTiffWriter.h"

#include "Host/HostError.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace
{

constexpr std::int64_t stripBytes = std::int64_t{1} << 20U;

COutputFile& File_Of(thandle_t handle)
{
    return *static_cast<COutputFile*>(handle);
}

tmsize_t Tiff_Read(thandle_t handle, void* pData, tmsize_t size)
{
    return static_cast<tmsize_t>(File_Of(handle).TryRead(pData, static_cast<std::size_t>(size)));
}

tmsize_t Tiff_Write(thandle_t handle, void* pData, tmsize_t size)
{
    return File_Of(handle).TryWrite(pData, static_cast<std::size_t>(size)) ? size : -1;
}

toff_t Tiff_Seek(thandle_t handle, toff_t offset, int whence)
{
    COutputFile& file = File_Of(handle);
    const std::int64_t start = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.Position() : file.Size();
    file.Position_Set(start + static_cast<std::int64_t>(offset));
    return static_cast<toff_t>(file.Position());
}

toff_t Tiff_Size(thandle_t handle)
{
    return static_cast<toff_t>(File_Of(handle).Size());
}

int Tiff_Close(thandle_t)
{
    return 0;
}

// Of fixed size: what is thrown where there is no memory for it would pass through libtiff, which is C.
using TiffMessage = std::array<char, 500>;

// Keeps the first message; the later ones are its consequences.
int Tiff_KeepError(TIFF*, void* pUserData, const char*, const char* pFormat, va_list arguments)
{
    auto& message = *static_cast<TiffMessage*>(pUserData);
    if (message.front() == '\0')
    {
        std::vsnprintf(message.data(), message.size(), pFormat, arguments);
    }
    return 1;
}

int Tiff_DropWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

std::uint16_t Compression_Tag(EBoardCompression compression)
{
    switch (compression)
    {
    case EBoardCompression::None:
        break;
    case EBoardCompression::PackBits:
        return COMPRESSION_PACKBITS;
    case EBoardCompression::Lzw:
        return COMPRESSION_LZW;
    case EBoardCompression::Deflate:
        return COMPRESSION_ADOBE_DEFLATE;
    }
    return COMPRESSION_NONE;
}

// The most that the compression may make of a page's rows.
std::int64_t Compressed_Most(std::int64_t bytesPerRow, std::int64_t rowCount, EBoardCompression compression)
{
    constexpr std::int64_t packBitsRun = 128;   // bytes behind one count byte
    constexpr std::int64_t deflateShare = 1000; // bytes stored as they are, to one byte that says so
    const std::int64_t size = bytesPerRow * rowCount;
    switch (compression)
    {
    case EBoardCompression::None:
        break;
    case EBoardCompression::PackBits:
        return size + (bytesPerRow / packBitsRun + 1) * rowCount;
    case EBoardCompression::Lzw:
        return size + size / 2; // codes of up to 12 bits for single bytes
    case EBoardCompression::Deflate:
        return size + size / deflateShare;
    }
    return size;
}

std::int64_t Strip_RowCount(std::int64_t bytesPerRow, std::int64_t rowCount)
{
    return std::clamp(stripBytes / std::max<std::int64_t>(bytesPerRow, 1), std::int64_t{1},
                      std::max<std::int64_t>(rowCount, 1));
}

std::size_t Row_Bytes(const CBandData& band)
{
    return (static_cast<std::size_t>(band.m_width) + 7) / 8;
}

} // namespace

SBoardTiffSize BoardTiff_Size(const SBoardInfo& info)
{
    constexpr int bitsPerByte = 8;
    const int offset = info.m_bBidirectional ? std::max(info.m_maxOffset_1, info.m_maxOffset_2) : info.m_maxOffset_2;
    SBoardTiffSize size;
    size.m_bandCount = info.LastStep() - info.FirstStep() + 1;
    size.m_bBandCountExact = !info.m_bSkipBlank;
    size.m_bandLineCount =
        (std::int64_t{info.m_leftZone} + info.m_pageWidth + info.m_rightZone + offset) * info.m_linesPerPosition;
    size.m_bandBytesPerLine = (info.m_lineBits + bitsPerByte - 1) / bitsPerByte;
    return size;
}

bool BoardTiff_NeedsBigTiff(const SBoardTiffSize& size, EBoardCompression compression, std::int64_t descriptionSize)
{
    constexpr std::int64_t classicLimit = std::numeric_limits<std::uint32_t>::max();
    constexpr std::int64_t directoryBytes = 1024; // the tags of a page but its description and strips
    constexpr std::int64_t bytesPerStrip = 64;    // two words in the directory, and a small strip's overhead
    const std::int64_t rowsPerStrip = Strip_RowCount(size.m_bandBytesPerLine, size.m_bandLineCount);
    const std::int64_t stripCount = (size.m_bandLineCount + rowsPerStrip - 1) / rowsPerStrip;
    const std::int64_t pageBytes = Compressed_Most(size.m_bandBytesPerLine, size.m_bandLineCount, compression) +
                                   directoryBytes + descriptionSize + stripCount * bytesPerStrip;
    // Divided, since the product may pass 64 bits.
    return size.m_bandCount > 0 && pageBytes > (classicLimit - directoryBytes) / size.m_bandCount;
}

struct CBoardTiffWriter::STiff
{
    TiffMessage m_message = {};
    TIFF* m_pHandle = nullptr;

    STiff(COutputFile& file, bool bBigTiff)
    {
        TIFFOpenOptions* pOptions = TIFFOpenOptionsAlloc();
        if (pOptions == nullptr)
        {
            throw std::bad_alloc();
        }
        TIFFOpenOptionsSetErrorHandlerExtR(pOptions, &Tiff_KeepError, &m_message);
        TIFFOpenOptionsSetWarningHandlerExtR(pOptions, &Tiff_DropWarning, nullptr);
        m_pHandle = TIFFClientOpenExt(file.Name().c_str(), bBigTiff ? "w8" : "w", &file, &Tiff_Read, &Tiff_Write,
                                      &Tiff_Seek, &Tiff_Close, &Tiff_Size, nullptr, nullptr, pOptions);
        TIFFOpenOptionsFree(pOptions);
    }
    // Of an output that is given up, nothing is written any more: after a failure libtiff may not find what it would
    // write.
    ~STiff()
    {
        constexpr int readOnly = 0; // O_RDONLY, on every system
        if (m_pHandle != nullptr)
        {
            TIFFSetMode(m_pHandle, readOnly);
        }
        Close();
    }
    STiff(const STiff&) = delete;
    STiff& operator=(const STiff&) = delete;

    void Close()
    {
        if (TIFF* pHandle = std::exchange(m_pHandle, nullptr))
        {
            TIFFClose(pHandle);
        }
    }
};

CBoardTiffWriter::CBoardTiffWriter(const std::filesystem::path& target, const SBoardInfo& info,
                                   const SBoardTiffSize& size, EBoardCompression compression)
    : CBoardTiffWriter(std::make_unique<COutputFile>(target, ESpecialFile::Refuse), info, size, compression)
{
}

CBoardTiffWriter::CBoardTiffWriter(std::unique_ptr<COutputFile> file, const SBoardInfo& info,
                                   const SBoardTiffSize& size, EBoardCompression compression)
    : m_file(std::move(file)), m_info(info), m_size(size), m_compression(compression)
{
    // Header and pass words of any value are no longer than this beyond their names.
    constexpr std::int64_t longestWords = 22 * 12;
    const auto descriptionSize =
        static_cast<std::int64_t>(BandHeader_Json(SBandHeader{}, SBoardPass{}, info).size()) + longestWords;
    m_tiff = std::make_unique<STiff>(*m_file, BoardTiff_NeedsBigTiff(size, compression, descriptionSize));
    if (m_tiff->m_pHandle == nullptr)
    {
        Failure_Throw("cannot be written");
    }
}

CBoardTiffWriter::~CBoardTiffWriter() = default;

void CBoardTiffWriter::Band_WriteNext(const CBandData& band)
{
    if (band.m_bitsPerPixel != 1 || band.m_width < 1 || band.m_height < 1)
    {
        throw CRunError(m_file->Name() + ": band " + std::to_string(BandCount()) + " has " +
                        std::to_string(band.m_height) + " lines of " + std::to_string(band.m_width) + " pixels at " +
                        std::to_string(band.m_bitsPerPixel) + " bits; a TIFF page needs lines of 1-bit pixels");
    }
    const auto rowsPerStrip =
        static_cast<std::uint32_t>(Strip_RowCount(static_cast<std::int64_t>(Row_Bytes(band)), band.m_height));
    Tags_Set(band, rowsPerStrip);
    Strips_Write(band, rowsPerStrip);
    if (TIFFWriteDirectory(m_tiff->m_pHandle) == 0)
    {
        Failure_Throw("cannot write band " + std::to_string(BandCount()));
    }
}

void CBoardTiffWriter::Tags_Set(const CBandData& band, std::uint32_t rowsPerStrip)
{
    TIFF* pTiff = m_tiff->m_pHandle;
    TIFFSetField(pTiff, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
    TIFFSetField(pTiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(band.m_width));
    TIFFSetField(pTiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(band.m_height));
    TIFFSetField(pTiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(pTiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(pTiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(pTiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(pTiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
    TIFFSetField(pTiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(pTiff, TIFFTAG_COMPRESSION, Compression_Tag(m_compression));
    TIFFSetField(pTiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    Text_Set(TIFFTAG_SOFTWARE, "boardmap");
    Text_Set(TIFFTAG_IMAGEDESCRIPTION, Description_Make(band));
    PageNumber_Set();
}

// libtiff takes a text for set when there was no memory for it, and reads it when it writes the page. When there was
// none for the list of texts, it has counted the text nevertheless, and walks over the list's end when it is closed: it
// is left open then, for the process to end.
void CBoardTiffWriter::Text_Set(std::uint32_t tag, const std::string& text)
{
    TIFF* pTiff = m_tiff->m_pHandle;
    const char* pKept = nullptr;
    const bool bSet = TIFFSetField(pTiff, tag, text.c_str()) == 1;
    if (!bSet || TIFFGetField(pTiff, tag, &pKept) != 1 || pKept == nullptr)
    {
        if (bSet)
        {
            TIFFUnsetField(pTiff, tag);
        }
        else
        {
            m_tiff->m_pHandle = nullptr;
        }
        throw CRunError(m_file->Name() + ": there is no memory for the " + std::to_string(text.size()) +
                        " bytes that band " + std::to_string(BandCount()) + " says of itself");
    }
}

std::string CBoardTiffWriter::Description_Make(const CBandData& band) const
{
    SBoardPass pass = BoardPass_Of(m_info, band);
    pass.m_bBlank = Band_IsBlank(band);
    return BandHeader_Json(band, pass, m_info);
}

void CBoardTiffWriter::PageNumber_Set()
{
    // The tag has 16 bits for each number; a total of 0 says that it is not known.
    constexpr std::int64_t highestNumber = std::numeric_limits<std::uint16_t>::max();
    if (BandCount() > highestNumber)
    {
        return;
    }
    const bool bTotalKnown = m_size.m_bBandCountExact && m_size.m_bandCount <= highestNumber;
    TIFFSetField(m_tiff->m_pHandle, TIFFTAG_PAGENUMBER, static_cast<int>(BandCount()),
                 static_cast<int>(bTotalKnown ? m_size.m_bandCount : 0));
}

void CBoardTiffWriter::Strips_Write(const CBandData& band, std::uint32_t rowsPerStrip)
{
    const auto height = static_cast<std::uint32_t>(band.m_height);
    for (std::uint32_t row = 0; row < height; row += rowsPerStrip)
    {
        const std::uint32_t rowCount = std::min(rowsPerStrip, height - row);
        // libtiff changes the bytes only for another fill order or a predictor; neither is set.
        auto* pRows = const_cast<unsigned char*>(Strip_Rows(band, row, rowCount));
        const auto size = static_cast<tmsize_t>(Row_Bytes(band) * rowCount);
        if (TIFFWriteEncodedStrip(m_tiff->m_pHandle, row / rowsPerStrip, pRows, size) != size)
        {
            Failure_Throw("cannot write band " + std::to_string(BandCount()));
        }
    }
}

// The rows one after the other: the band's own bytes where its lines are no longer than a row, else a copy.
const unsigned char* CBoardTiffWriter::Strip_Rows(const CBandData& band, std::uint32_t firstRow, std::uint32_t rowCount)
{
    const std::size_t rowBytes = Row_Bytes(band);
    const auto bytesPerLine = static_cast<std::size_t>(band.m_bytesPerLine);
    const unsigned char* pLine = band.m_pData + bytesPerLine * firstRow;
    if (bytesPerLine == rowBytes)
    {
        return pLine;
    }
    m_packedRows.resize(rowBytes * rowCount);
    for (std::uint32_t i = 0; i < rowCount; ++i)
    {
        std::memcpy(m_packedRows.data() + rowBytes * i, pLine + bytesPerLine * i, rowBytes);
    }
    return m_packedRows.data();
}

void CBoardTiffWriter::Finish_All()
{
    if (BandCount() == 0)
    {
        throw CRunError(m_file->Name() + ": there is no board band, and a TIFF without pages cannot be read" +
                        (m_info.IsPart() ? "; a board stream (--format raw) can be joined without any" : ""));
    }
    m_tiff->Close();
    if (m_tiff->m_message.front() != '\0')
    {
        Failure_Throw("cannot be completed");
    }
    m_file->Finish();
}

void CBoardTiffWriter::Failure_Throw(const std::string& what) const
{
    const std::string reason = m_file->Failure_Text().empty() ? m_tiff->m_message.data() : m_file->Failure_Text();
    throw CRunError(m_file->Name() + ": " + what + ": " + reason);
}
