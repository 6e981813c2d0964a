// The bytes of the board stream, written and read.
#include "Host/Output/BoardRaw.h"

#include "Host/HostError.h"
#include "Host/Output/BandHeaderWords.h"
#include "Host/Output/PathText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

// The first byte is no text, and the line ends show a transfer that took the stream for text.
constexpr std::string_view streamMagic = "\x89"
                                         "BMS\r\n\x1A\n";
constexpr std::uint32_t streamVersion = 1;
constexpr std::string_view bandMarker = "BAND";
constexpr std::string_view endMarker = "ENDB";

constexpr std::size_t wordBytes = 4;
constexpr std::size_t countBytes = 8;
constexpr std::size_t fixedHeaderBytes = 16; // magic, version, header length
constexpr std::size_t geometryWords = 5;     // width, height, bits per pixel, bytes per line, data size
constexpr std::size_t bandHeaderBytes = (g_bandHeaderWords.size() + 1 + geometryWords) * wordBytes;

// Bytes of a record, least significant first.
class CRecord
{
public:
    void Text_Put(std::string_view text) { m_bytes.insert(m_bytes.end(), text.begin(), text.end()); }
    void Number_Put(std::uint64_t value, std::size_t size)
    {
        for (std::size_t i = 0; i < size; ++i)
        {
            m_bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
        }
    }
    void Word_Put(std::int32_t value) { Number_Put(static_cast<std::uint32_t>(value), wordBytes); }
    void Send(CByteSink& sink) const { sink.Write(m_bytes.data(), m_bytes.size()); }

private:
    std::vector<unsigned char> m_bytes;
};

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
        const auto word = static_cast<std::uint32_t>(Number_Get(m_pNext, wordBytes));
        m_pNext += wordBytes;
        return static_cast<std::int32_t>(word);
    }

private:
    const unsigned char* m_pNext;
};

std::unique_ptr<CByteSink> Sink_Open(const std::filesystem::path& target)
{
    if (target == "-")
    {
        return std::make_unique<CStandardOutput>();
    }
    return std::make_unique<COutputFile>(target, ESpecialFile::WriteInPlace);
}

// What a band record says of its data.
struct SRawGeometry
{
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    std::int32_t m_bitsPerPixel = 0;
    std::int32_t m_bytesPerLine = 0;
    std::int32_t m_dataSize = 0;
};

// True if the numbers agree with each other: lines that hold their pixels, and as many bytes as the lines take.
bool Geometry_IsSound(const SRawGeometry& geometry)
{
    if (geometry.m_width < 0 || geometry.m_height < 0 || geometry.m_bitsPerPixel < 1 || geometry.m_bytesPerLine < 0)
    {
        return false;
    }
    const std::int64_t rowBytes = (std::int64_t{geometry.m_width} * geometry.m_bitsPerPixel + 7) / 8;
    return (rowBytes == 0 ? geometry.m_bytesPerLine == 0 : rowBytes <= geometry.m_bytesPerLine) &&
           std::int64_t{geometry.m_bytesPerLine} * geometry.m_height == geometry.m_dataSize;
}

} // namespace

CBoardRawWriter::CBoardRawWriter(const std::filesystem::path& target, const SBoardInfo& info)
    : CBoardRawWriter(Sink_Open(target), info)
{
}

CBoardRawWriter::CBoardRawWriter(std::unique_ptr<CByteSink> sink, const SBoardInfo& info) : m_sink(std::move(sink))
{
    const std::string json = BoardInfo_Json(info);
    CRecord header;
    header.Text_Put(streamMagic);
    header.Number_Put(streamVersion, wordBytes);
    header.Number_Put(fixedHeaderBytes + json.size(), wordBytes);
    header.Text_Put(json);
    header.Send(*m_sink);
}

void CBoardRawWriter::Band_WriteNext(const CBandData& band)
{
    CRecord record;
    record.Text_Put(bandMarker);
    for (const SBandHeaderWord& word : g_bandHeaderWords)
    {
        record.Word_Put(band.*word.m_pWord);
    }
    record.Word_Put(band.m_bSkip ? 1 : 0);
    record.Word_Put(band.m_width);
    record.Word_Put(band.m_height);
    record.Word_Put(band.m_bitsPerPixel);
    record.Word_Put(band.m_bytesPerLine);
    record.Word_Put(band.m_dataSize);
    record.Send(*m_sink);
    if (band.m_dataSize > 0)
    {
        m_sink->Write(band.m_pData, static_cast<std::size_t>(band.m_dataSize));
    }
}

void CBoardRawWriter::Finish_All()
{
    CRecord record;
    record.Text_Put(endMarker);
    record.Number_Put(static_cast<std::uint64_t>(BandCount()), countBytes);
    record.Send(*m_sink);
    m_sink->Finish();
}

CBoardRawReader::CBoardRawReader(const std::filesystem::path& file)
    : m_ownStream(std::make_unique<std::ifstream>(file, std::ios::binary)),
      m_pStream(m_ownStream.get()),
      m_name(Path_Text(file))
{
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
    {
        throw CInputError(m_name + ": is a folder, not a board stream");
    }
    if (!*m_pStream)
    {
        throw CInputError(m_name + ": cannot be opened");
    }
    Header_Read();
}

CBoardRawReader::CBoardRawReader(std::istream& stream, std::string name) : m_pStream(&stream), m_name(std::move(name))
{
    Header_Read();
}

void CBoardRawReader::Header_Read()
{
    constexpr std::size_t longestHeader = std::size_t{16} << 20U;
    std::array<unsigned char, fixedHeaderBytes> fixed = {};
    Bytes_Read(fixed.data(), fixed.size(), "its header");
    if (!std::equal(streamMagic.begin(), streamMagic.end(), fixed.begin(),
                    [](char left, unsigned char right) { return static_cast<unsigned char>(left) == right; }))
    {
        Refuse(0, "this is no board stream");
    }
    const std::uint64_t version = Number_Get(&fixed[streamMagic.size()], wordBytes);
    if (version != streamVersion)
    {
        Refuse(static_cast<std::int64_t>(streamMagic.size()), "the stream has version " + std::to_string(version) +
                                                                  "; this program reads version " +
                                                                  std::to_string(streamVersion));
    }
    const auto length = static_cast<std::size_t>(Number_Get(&fixed[streamMagic.size() + wordBytes], wordBytes));
    if (length < fixedHeaderBytes || length > longestHeader)
    {
        Refuse(static_cast<std::int64_t>(streamMagic.size() + wordBytes),
               "the header cannot be " + std::to_string(length) + " bytes long");
    }
    std::string json(length - fixedHeaderBytes, '\0');
    Bytes_Read(json.data(), json.size(), "its header");
    try
    {
        m_info = BoardInfo_Parse(json);
    }
    catch (const std::runtime_error& error)
    {
        Refuse(static_cast<std::int64_t>(fixedHeaderBytes), std::string("the board info is damaged: ") + error.what());
    }
}

bool CBoardRawReader::Band_Read(CBandData& band)
{
    if (m_bEnd)
    {
        return false;
    }
    const std::string part = "band " + std::to_string(m_bandCount);
    const std::int64_t recordOffset = m_offset;
    std::array<char, wordBytes> marker = {};
    Bytes_Read(marker.data(), marker.size(), "the record after " + std::to_string(m_bandCount) + " bands");
    const std::string_view found(marker.data(), marker.size());
    if (found == endMarker)
    {
        End_Read();
        return false;
    }
    if (found != bandMarker)
    {
        Refuse(recordOffset, "neither a band nor the end of the stream begins here");
    }

    std::array<unsigned char, bandHeaderBytes> bytes = {};
    Bytes_Read(bytes.data(), bytes.size(), part);
    CWordReader words(bytes.data());
    SBandHeader header;
    for (const SBandHeaderWord& word : g_bandHeaderWords)
    {
        header.*word.m_pWord = words.Word_Get();
    }
    const std::int32_t skip = words.Word_Get();
    const SRawGeometry geometry = {words.Word_Get(), words.Word_Get(), words.Word_Get(), words.Word_Get(),
                                   words.Word_Get()};
    if ((skip != 0 && skip != 1) || !Geometry_IsSound(geometry))
    {
        Refuse(recordOffset, "the sizes of " + part + " do not fit together");
    }
    // Lines rounded up to the length that they have are exactly that long.
    if (!band.Create(geometry.m_width, geometry.m_height, geometry.m_bitsPerPixel,
                     std::max(geometry.m_bytesPerLine, 1)))
    {
        throw CRunError(m_name + ": there is no memory for " + part + " of " + std::to_string(geometry.m_dataSize) +
                        " bytes");
    }
    header.m_bSkip = skip == 1;
    static_cast<SBandHeader&>(band) = header;
    Bytes_Read(band.m_pData, static_cast<std::size_t>(geometry.m_dataSize), part);
    ++m_bandCount;
    return true;
}

void CBoardRawReader::End_Read()
{
    std::array<unsigned char, countBytes> bytes = {};
    const std::int64_t offset = m_offset;
    Bytes_Read(bytes.data(), bytes.size(), "its end record");
    const std::uint64_t count = Number_Get(bytes.data(), bytes.size());
    if (count != static_cast<std::uint64_t>(m_bandCount))
    {
        Refuse(offset,
               "the stream counts " + std::to_string(count) + " bands but holds " + std::to_string(m_bandCount));
    }
    if (m_pStream->peek() != std::istream::traits_type::eof())
    {
        Refuse(m_offset, "there are bytes behind the end of the stream");
    }
    m_bEnd = true;
}

void CBoardRawReader::Bytes_Read(void* pData, std::size_t size, const std::string& part)
{
    m_pStream->read(static_cast<char*>(pData), static_cast<std::streamsize>(size));
    m_offset += m_pStream->gcount();
    if (static_cast<std::size_t>(m_pStream->gcount()) != size)
    {
        Refuse(m_offset, "the stream ends inside " + part + "; it was cut off");
    }
}

void CBoardRawReader::Refuse(std::int64_t offset, const std::string& text) const
{
    throw CInputError(m_name + ": byte " + std::to_string(offset) + ": " + text);
}
