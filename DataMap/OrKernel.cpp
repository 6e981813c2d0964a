// The OR loops: byte by byte as the definition, in 64-bit words where that gives the same bytes.
#include "DataMap/OrKernel.h"

#include <cstdint>
#include <cstring>

namespace
{
using Word = std::uint64_t;
constexpr int wordSize = sizeof(Word);

Word Word_Load(const unsigned char* bytes)
{
    Word word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

void Word_Or(unsigned char* dst, const unsigned char* src)
{
    const Word word = Word_Load(dst) | Word_Load(src);
    std::memcpy(dst, &word, sizeof(word));
}

// True if a word-wide step would read source bytes that the same step is about to change: the destination begins 1 to
// wordSize - 1 bytes behind the source. At every other distance the byte order of the definition cannot be told apart.
bool Ranges_Chain(const unsigned char* dst, const unsigned char* src)
{
    const auto distance = reinterpret_cast<std::uintptr_t>(dst) - reinterpret_cast<std::uintptr_t>(src);
    return distance - 1 < wordSize - 1; // a distance of 0 wraps to the largest value
}
} // namespace

void COrKernel::Or_Bytes_Scalar(unsigned char* dst, const unsigned char* src, int count)
{
    for (int i = 0; i < count; ++i)
    {
        dst[i] = static_cast<unsigned char>(dst[i] | src[i]);
    }
}

void COrKernel::Or_Bytes(unsigned char* dst, const unsigned char* src, int count)
{
    int done = 0;
    if (!Ranges_Chain(dst, src))
    {
        for (; count - done >= wordSize; done += wordSize)
        {
            Word_Or(dst + done, src + done);
        }
    }
    Or_Bytes_Scalar(dst + done, src + done, count - done);
}
