// Loads of part of a vector, word by word, for the kernel files. A template over each kernel file's tag: see
// Vector16.h.
#pragma once

#include <cstdint>
#include <cstring>

// Words of up to 8 bytes, first byte lowest.
template<class TTag>
struct SPartWord
{
    using Word = std::uint64_t;

    template<class T>
    static Word Load_As(const unsigned char* bytes)
    {
        T value;
        std::memcpy(&value, bytes, sizeof(value));
        return value;
    }
    static Word Load(const unsigned char* bytes) { return Load_As<Word>(bytes); }

    // The first `count` bytes (0 to 8), zeros behind them; nothing beyond them is read.
    static Word Load_Part(const unsigned char* bytes, int count)
    {
        if (count >= 8)
        {
            return Load(bytes);
        }
        if (count >= 4)
        {
            return Load_As<std::uint32_t>(bytes) | Load_As<std::uint32_t>(bytes + count - 4) << (8 * (count - 4));
        }
        if (count >= 2)
        {
            return Load_As<std::uint16_t>(bytes) | Load_As<std::uint16_t>(bytes + count - 2) << (8 * (count - 2));
        }
        return count == 1 ? bytes[0] : 0U;
    }
};
