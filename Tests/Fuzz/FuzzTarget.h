// What every fuzz target is: a function that takes any bytes, and bytes made into choices.
//
// A target must take every input: it reads them by a CFuzzInput, does what they say, and holds what comes out against
// what must come out by Fuzz_Expect, which ends the process where that fails. libFuzzer calls a target with inputs that
// it makes (preset fuzz); FuzzReplay.cpp calls it with those of the corpus and simple variations of them (every other
// configuration). A target keeps no state from one input to the next.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// The target's entry, by libFuzzer's name. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

inline void Fuzz_Expect(bool bHolds, const char* what)
{
    if (!bHolds)
    {
        std::fprintf(stderr, "this does not hold: %s\n", what);
        std::abort();
    }
}

// Takes choices from the front of an input. Behind its end every byte is 0, so that any input is a whole one.
class CFuzzInput
{
public:
    CFuzzInput(const std::uint8_t* bytes, std::size_t size) : m_pBytes(bytes), m_size(size) {}

    bool IsAtEnd() const { return m_position >= m_size; }
    unsigned Byte() { return IsAtEnd() ? 0 : m_pBytes[m_position++]; }

    // `first` to `last`, by two bytes.
    int Number(int first, int last)
    {
        const auto high = Byte();
        const auto value = high << 8U | Byte();
        return first + static_cast<int>(value % static_cast<unsigned>(last - first + 1));
    }

    bool Flag() { return Byte() % 2 != 0; }

    std::vector<unsigned char> Bytes(std::size_t count)
    {
        std::vector<unsigned char> bytes(count);
        std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<unsigned char>(Byte()); });
        return bytes;
    }

private:
    const std::uint8_t* m_pBytes;
    std::size_t m_size;
    std::size_t m_position = 0;
};
