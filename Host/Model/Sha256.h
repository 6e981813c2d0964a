// SHA-256 of bytes that come piece by piece, as FIPS 180-4 defines it: `info` names board data by it, and every system
// has a tool that makes the same number. Not meant for secrets. One thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

class CSha256
{
public:
    void Add(std::span<const unsigned char> bytes);

    // 64 hexadecimal digits, in lower case. Once, after the last bytes.
    std::string Text_Finish();

private:
    static constexpr std::size_t blockBytes = 64;

    void Block_Add(const unsigned char* pBlock);

    std::array<std::uint32_t, 8> m_state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                            0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<unsigned char, blockBytes> m_block = {};
    std::size_t m_used = 0; // bytes of m_block
    std::uint64_t m_bytes = 0;
};
