// The bytes of the board stream, written.
#include "Host/Output/BoardRawWriter.h"

#include "Host/Board/BoardRecord.h"

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

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
    void Word_Put(std::int32_t value) { Number_Put(static_cast<std::uint32_t>(value), g_streamWordBytes); }
    void Send(CByteSink& sink) const { sink.Write(m_bytes.data(), m_bytes.size()); }

private:
    std::vector<unsigned char> m_bytes;
};

std::unique_ptr<CByteSink> Sink_Open(const std::filesystem::path& target)
{
    if (target == "-")
    {
        return std::make_unique<CStandardOutput>();
    }
    return std::make_unique<COutputFile>(target, ESpecialFile::WriteInPlace);
}

} // namespace

CBoardRawWriter::CBoardRawWriter(const std::filesystem::path& target, const SBoardInfo& info)
    : CBoardRawWriter(Sink_Open(target), info)
{
}

CBoardRawWriter::CBoardRawWriter(std::unique_ptr<CByteSink> sink, const SBoardInfo& info)
    : m_sink(std::move(sink)), m_info(info)
{
    const std::string json = BoardInfo_Json(info);
    CRecord header;
    header.Text_Put(g_streamMagic);
    header.Number_Put(static_cast<std::uint64_t>(g_boardVersion), g_streamWordBytes);
    header.Number_Put(g_streamFixedBytes + json.size(), g_streamWordBytes);
    header.Text_Put(json);
    header.Send(*m_sink);
}

void CBoardRawWriter::Band_WriteNext(const CBandData& band)
{
    CRecord record;
    record.Text_Put(g_bandMarker);
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
    const SBoardPass pass = BoardPass_Of(m_info, band);
    for (const SBoardPassWord& word : g_streamPassWords)
    {
        record.Word_Put(pass.*word.m_pWord);
    }
    record.Word_Put(Band_IsBlank(band) ? 1 : 0);
    record.Send(*m_sink);
    if (band.m_dataSize > 0)
    {
        m_sink->Write(band.m_pData, static_cast<std::size_t>(band.m_dataSize));
    }
}

void CBoardRawWriter::Finish_All()
{
    CRecord record;
    record.Text_Put(g_endMarker);
    record.Number_Put(static_cast<std::uint64_t>(BandCount()), g_streamCountBytes);
    record.Send(*m_sink);
    m_sink->Finish();
}
