// zlib and base64.
#include "Host/Report/DeflatedText.h"

#include "Host/HostError.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace
{

constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

void CDeflatedText::SRelease::operator()(z_stream_s* pStream) const
{
    deflateEnd(pStream);
    delete pStream;
}

CDeflatedText::CDeflatedText()
{
    auto stream = std::make_unique<z_stream>();
    if (deflateInit(stream.get(), Z_DEFAULT_COMPRESSION) != Z_OK)
    {
        throw CRunError("zlib cannot be used");
    }
    m_stream.reset(stream.release());
}

void CDeflatedText::Add(std::span<const unsigned char> bytes)
{
    constexpr std::size_t most = std::numeric_limits<uInt>::max() / 2;
    while (!bytes.empty())
    {
        const auto part = bytes.first(std::min(bytes.size(), most));
        m_stream->next_in = const_cast<Bytef*>(part.data()); // which it only reads
        m_stream->avail_in = static_cast<uInt>(part.size());
        Run(Z_NO_FLUSH);
        bytes = bytes.subspan(part.size());
    }
}

void CDeflatedText::Run(int flush)
{
    std::array<unsigned char, 1 << 14> out{};
    do
    {
        m_stream->next_out = out.data();
        m_stream->avail_out = static_cast<uInt>(out.size());
        deflate(m_stream.get(), flush);
        Base64_Add({out.data(), out.size() - m_stream->avail_out}, false);
    } while (m_stream->avail_out == 0);
}

void CDeflatedText::Base64_Add(std::span<const unsigned char> bytes, bool bLast)
{
    const auto Group_Put = [this](std::size_t count)
    {
        const unsigned group = static_cast<unsigned>(m_rest[0]) << 16U | static_cast<unsigned>(m_rest[1]) << 8U |
                               static_cast<unsigned>(m_rest[2]);
        for (unsigned i = 0; i < 4; ++i)
        {
            m_text += i <= count ? digits[group >> (18U - 6U * i) & 63U] : '=';
        }
        m_rest = {};
        m_restSize = 0;
    };
    for (const unsigned char byte : bytes)
    {
        m_rest.at(m_restSize++) = byte;
        if (m_restSize == m_rest.size())
        {
            Group_Put(m_restSize);
        }
    }
    if (bLast && m_restSize > 0)
    {
        Group_Put(m_restSize);
    }
}

std::string CDeflatedText::Finish()
{
    m_stream->next_in = nullptr;
    m_stream->avail_in = 0;
    Run(Z_FINISH);
    Base64_Add({}, true);
    return std::move(m_text);
}

std::string Text_Deflate(const std::string& text)
{
    CDeflatedText deflated;
    deflated.Add({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
    return deflated.Finish();
}
