// Bytes on their way into a text: through zlib and into base64, as they come. A browser takes them out again by
// DecompressionStream("deflate"). Memory is that of the text, which has letters, digits, "+", "/" and "=" only, so that
// it may stand in any other. One thread at a time.
#pragma once

#include <array>
#include <memory>
#include <span>
#include <string>

struct z_stream_s;

class CDeflatedText
{
public:
    // Throws CRunError if the library has no memory.
    CDeflatedText();

    void Add(std::span<const unsigned char> bytes);

    // The text, complete; once.
    std::string Finish();

private:
    struct SRelease
    {
        void operator()(z_stream_s* pStream) const;
    };

    void Run(int flush);
    void Base64_Add(std::span<const unsigned char> bytes, bool bLast);

    std::unique_ptr<z_stream_s, SRelease> m_stream;
    std::string m_text;
    std::array<unsigned char, 3> m_rest = {}; // bytes that make no whole group yet
    std::size_t m_restSize = 0;
};

// The same at once.
std::string Text_Deflate(const std::string& text);
