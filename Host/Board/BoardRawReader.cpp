// Records of the board stream, and the search for the next one behind damage.
#include "Host/Board/BoardRawReader.h"

#include "Host/Board/BoardRecord.h"
#include "Host/InputFile.h"
#include "Host/PathText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <utility>

namespace
{

std::uint64_t Number_Get(const unsigned char* pBytes, std::size_t size)
{
    std::uint64_t value = 0;
    for (std::size_t i = size; i > 0; --i)
    {
        value = value << 8U | pBytes[i - 1];
    }
    return value;
}

// Takes words from a record one after the other.
class CWordReader
{
public:
    explicit CWordReader(const unsigned char* pBytes) : m_pNext(pBytes) {}
    std::int32_t Word_Get()
    {
        const auto word = static_cast<std::uint32_t>(Number_Get(m_pNext, g_streamWordBytes));
        m_pNext += g_streamWordBytes;
        return static_cast<std::int32_t>(word);
    }

private:
    const unsigned char* m_pNext;
};

// -1, with the reason in errno, if it cannot be found out.
std::int64_t Stream_Size(std::istream& stream)
{
    errno = 0;
    stream.seekg(0, std::ios::end);
    const std::streamoff size = stream ? std::streamoff(stream.tellg()) : std::streamoff(-1);
    return stream.seekg(0) ? size : -1;
}

bool IsText(const unsigned char* pBytes, std::string_view text)
{
    return std::equal(text.begin(), text.end(), pBytes,
                      [](char left, unsigned char right) { return static_cast<unsigned char>(left) == right; });
}

} // namespace

struct CBoardRawReader::SRecord
{
    SBandHeader m_header;
    std::int32_t m_skip = 0;
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    std::int32_t m_bitsPerPixel = 0;
    std::int32_t m_bytesPerLine = 0;
    std::int32_t m_dataSize = 0;
    SBoardPass m_pass;
    std::int32_t m_blank = 0;
};

CBoardRawReader::CBoardRawReader(const std::filesystem::path& file)
    : CBoardReader(Path_Text(file), 0),
      m_ownStream(std::make_unique<std::ifstream>(InputFile_Open(file, "board file"))),
      m_pStream(m_ownStream.get())
{
    m_size = Stream_Size(*m_pStream);
    Header_Read();
}

CBoardRawReader::CBoardRawReader(std::istream& stream, std::string name)
    : CBoardReader(std::move(name), Stream_Size(stream)), m_pStream(&stream)
{
    Header_Read();
}

void CBoardRawReader::Header_Read()
{
    if (m_size < 0)
    {
        Refuse(-1, "cannot be read: " + SystemError_Text(errno));
    }
    constexpr std::size_t longestHeader = std::size_t{16} << 20U;
    std::array<unsigned char, g_streamFixedBytes> fixed = {};
    Bytes_Read(fixed.data(), fixed.size(), "its header");
    if (!IsText(fixed.data(), g_streamMagic))
    {
        Refuse(0, "this is no board stream");
    }
    constexpr std::size_t versionAt = g_streamMagic.size();
    constexpr std::size_t lengthAt = versionAt + g_streamWordBytes;
    const std::uint64_t version = Number_Get(&fixed[versionAt], g_streamWordBytes);
    if (version < 1 || version > static_cast<std::uint64_t>(g_boardVersion))
    {
        Refuse(versionAt, "the stream has version " + std::to_string(version),
               "this program reads versions 1 and " + std::to_string(g_boardVersion));
    }
    const auto length = static_cast<std::size_t>(Number_Get(&fixed[lengthAt], g_streamWordBytes));
    if (length < g_streamFixedBytes || length > longestHeader)
    {
        Refuse(lengthAt, "the header cannot be " + std::to_string(length) + " bytes long");
    }
    if (static_cast<std::int64_t>(length) > m_size)
    {
        Refuse(m_size, "the stream ends inside its header", "it was cut off");
    }
    std::string json(length - g_streamFixedBytes, '\0');
    Bytes_Read(json.data(), json.size(), "its header");
    try
    {
        m_info = BoardInfo_Parse(json, static_cast<int>(version));
    }
    catch (const std::runtime_error& error)
    {
        Refuse(g_streamFixedBytes, std::string("the board info is damaged: ") + error.what());
    }
}

void CBoardRawReader::Record_Parse(const unsigned char* pBytes, SRecord& record) const
{
    CWordReader words(pBytes);
    for (const SBandHeaderWord& word : g_bandHeaderWords)
    {
        record.m_header.*word.m_pWord = words.Word_Get();
    }
    record.m_skip = words.Word_Get();
    record.m_header.m_bSkip = record.m_skip == 1;
    record.m_width = words.Word_Get();
    record.m_height = words.Word_Get();
    record.m_bitsPerPixel = words.Word_Get();
    record.m_bytesPerLine = words.Word_Get();
    record.m_dataSize = words.Word_Get();
    if (m_info.m_version > 1)
    {
        for (const SBoardPassWord& word : g_streamPassWords)
        {
            record.m_pass.*word.m_pWord = words.Word_Get();
        }
        record.m_blank = words.Word_Get();
        record.m_pass.m_bBlank = record.m_blank == 1;
        record.m_pass.m_bLeftToRight = record.m_pass.m_columnStep == 1;
    }
}

// Whether the numbers agree with each other: lines that hold their pixels, and as many bytes as the lines take.
bool CBoardRawReader::IsRecordSound(const SRecord& record) const
{
    const bool bFlags = (record.m_skip == 0 || record.m_skip == 1) && (record.m_blank == 0 || record.m_blank == 1);
    const bool bStep = m_info.m_version == 1 || record.m_pass.m_columnStep == 1 || record.m_pass.m_columnStep == -1;
    if (!bFlags || !bStep || record.m_width < 0 || record.m_height < 0 || record.m_bitsPerPixel < 1 ||
        record.m_bytesPerLine < 0)
    {
        return false;
    }
    const std::int64_t rowBytes = (std::int64_t{record.m_width} * record.m_bitsPerPixel + 7) / 8;
    return (rowBytes == 0 ? record.m_bytesPerLine == 0 : rowBytes <= record.m_bytesPerLine) &&
           std::int64_t{record.m_bytesPerLine} * record.m_height == record.m_dataSize;
}

bool CBoardRawReader::Band_ReadNext(CBandData& band, SBoardPass& pass)
{
    if (m_bEnd)
    {
        return false;
    }
    const std::string part = "band " + std::to_string(BandCount());
    m_recordOffset = m_offset;
    std::array<unsigned char, g_streamWordBytes> marker = {};
    Bytes_Read(marker.data(), marker.size(), "the record after " + std::to_string(BandCount()) + " bands");
    if (IsText(marker.data(), g_endMarker))
    {
        End_Read();
        return false;
    }
    if (!IsText(marker.data(), g_bandMarker))
    {
        Refuse(m_recordOffset, "neither a band nor the end of the stream begins here");
    }
    std::array<unsigned char, BandRecord_Bytes(g_boardVersion)> bytes = {};
    Bytes_Read(bytes.data(), BandRecord_Bytes(m_info.m_version), part);
    SRecord record;
    Record_Parse(bytes.data(), record);
    if (!IsRecordSound(record))
    {
        Refuse(m_recordOffset, "the sizes of " + part + " do not fit together: " + std::to_string(record.m_width) +
                                   " x " + std::to_string(record.m_height) + " pixels at " +
                                   std::to_string(record.m_bitsPerPixel) + " bits, " +
                                   std::to_string(record.m_bytesPerLine) + " bytes per line, " +
                                   std::to_string(record.m_dataSize) + " bytes");
    }
    if (record.m_dataSize > m_size - m_offset)
    {
        Refuse(m_size, "the stream ends inside " + part, "it was cut off");
    }
    // Lines rounded up to the length that they have are exactly that long.
    if (!band.Create(record.m_width, record.m_height, record.m_bitsPerPixel, std::max(record.m_bytesPerLine, 1)))
    {
        throw CRunError(m_name + ": there is no memory for " + part + " of " + std::to_string(record.m_dataSize) +
                        " bytes");
    }
    static_cast<SBandHeader&>(band) = record.m_header;
    pass = record.m_pass;
    Bytes_Read(band.m_pData, static_cast<std::size_t>(record.m_dataSize), part);
    m_place = "byte " + std::to_string(m_recordOffset);
    return true;
}

void CBoardRawReader::End_Read()
{
    std::array<unsigned char, g_streamCountBytes> bytes = {};
    const std::int64_t offset = m_offset;
    Bytes_Read(bytes.data(), bytes.size(), "its end record");
    const std::uint64_t count = Number_Get(bytes.data(), bytes.size());
    m_bEnd = true;
    if (!m_bResumed && count != static_cast<std::uint64_t>(BandCount()))
    {
        Refuse(offset,
               "the stream counts " + std::to_string(count) + " bands but holds " + std::to_string(BandCount()));
    }
    if (m_offset < m_size)
    {
        Refuse(m_offset, "there are bytes behind the end of the stream");
    }
}

// Looks from the byte behind the damaged record's first on, in pieces that overlap by a marker.
bool CBoardRawReader::Resume_Next()
{
    constexpr std::int64_t pieceBytes = std::int64_t{1} << 20;
    constexpr std::int64_t markerBytes = g_streamWordBytes;
    std::vector<unsigned char> piece;
    for (std::int64_t begin = m_recordOffset + 1; !m_bEnd && m_size - begin >= markerBytes;
         begin += pieceBytes - markerBytes + 1)
    {
        piece.resize(static_cast<std::size_t>(std::min(pieceBytes, m_size - begin)));
        Offset_Set(begin);
        Bytes_Read(piece.data(), piece.size(), "the search for a band");
        for (std::size_t i = 0; i + g_streamWordBytes <= piece.size(); ++i)
        {
            const std::int64_t offset = begin + static_cast<std::int64_t>(i);
            if ((IsText(&piece[i], g_bandMarker) || IsText(&piece[i], g_endMarker)) && IsRecordAt(offset))
            {
                Offset_Set(offset);
                return true;
            }
        }
    }
    m_bEnd = true;
    return false;
}

// Whether a whole record begins here: a sound band that another record follows, or the end record at the stream's end.
bool CBoardRawReader::IsRecordAt(std::int64_t offset)
{
    const auto Marker_Is = [&](std::int64_t at, std::string_view text)
    {
        std::array<unsigned char, g_streamWordBytes> marker = {};
        if (m_size - at < static_cast<std::int64_t>(marker.size()))
        {
            return false;
        }
        Offset_Set(at);
        Bytes_Read(marker.data(), marker.size(), "the search for a band");
        return IsText(marker.data(), text);
    };
    if (Marker_Is(offset, g_endMarker))
    {
        return m_size - m_offset == static_cast<std::int64_t>(g_streamCountBytes);
    }
    const auto recordBytes = static_cast<std::int64_t>(BandRecord_Bytes(m_info.m_version));
    if (!Marker_Is(offset, g_bandMarker) || m_size - m_offset < recordBytes)
    {
        return false;
    }
    std::array<unsigned char, BandRecord_Bytes(g_boardVersion)> bytes = {};
    Bytes_Read(bytes.data(), static_cast<std::size_t>(recordBytes), "the search for a band");
    SRecord record;
    Record_Parse(bytes.data(), record);
    const std::int64_t next = m_offset + record.m_dataSize;
    return IsRecordSound(record) && next <= m_size &&
           (next == m_size || Marker_Is(next, g_bandMarker) || Marker_Is(next, g_endMarker));
}

void CBoardRawReader::Offset_Set(std::int64_t offset)
{
    m_pStream->clear();
    errno = 0;
    m_offset = offset;
    if (!m_pStream->seekg(offset))
    {
        Refuse(offset, "cannot be read: " + SystemError_Text(errno));
    }
}

void CBoardRawReader::Bytes_Read(void* pData, std::size_t size, const std::string& part)
{
    errno = 0;
    m_pStream->read(static_cast<char*>(pData), static_cast<std::streamsize>(size));
    m_offset += m_pStream->gcount();
    if (m_pStream->bad())
    {
        Refuse(m_offset, part + " cannot be read: " + SystemError_Text(errno));
    }
    if (static_cast<std::size_t>(m_pStream->gcount()) != size)
    {
        Refuse(m_offset, "the stream ends inside " + part, "it was cut off");
    }
}

void CBoardRawReader::Refuse(std::int64_t offset, const std::string& what, const std::string& fix) const
{
    throw CBoardDamageError(m_name, {offset, -1, what, fix});
}
