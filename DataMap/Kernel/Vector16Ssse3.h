// The instructions of x86 processors for vectors of 16 bytes (SSSE3 and above); see Vector16.h.
#pragma once

#include <immintrin.h>

#include <cstdint>

template<class TTag>
struct SInstructions16
{
    using Type = __m128i;

    static Type Load(const unsigned char* bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)); }
    static void Store(unsigned char* bytes, Type value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value); }
    static Type Set_Words(std::uint64_t low, std::uint64_t high)
    {
        return _mm_set_epi64x(static_cast<std::int64_t>(high), static_cast<std::int64_t>(low));
    }
    static Type Zero() { return _mm_setzero_si128(); }
    static Type Set(unsigned char value) { return _mm_set1_epi8(static_cast<char>(value)); }
    static Type Set_Word(std::uint64_t value) { return _mm_set1_epi64x(static_cast<std::int64_t>(value)); }
    static Type And(Type a, Type b) { return _mm_and_si128(a, b); }
    static Type Or(Type a, Type b) { return _mm_or_si128(a, b); }
    static Type Xor(Type a, Type b) { return _mm_xor_si128(a, b); }
    template<int bits>
    static Type ShiftLeft16(Type a)
    {
        return _mm_slli_epi16(a, bits);
    }
    template<int bits>
    static Type ShiftRight16(Type a)
    {
        return _mm_srli_epi16(a, bits);
    }
    static Type Shuffle(Type table, Type index) { return _mm_shuffle_epi8(table, index); }
    static Type Low8(Type a, Type b) { return _mm_unpacklo_epi8(a, b); }
    static Type High8(Type a, Type b) { return _mm_unpackhi_epi8(a, b); }
    // The low bytes of the 16-bit words of a, then of b; the high bytes are 0.
    static Type Pack16(Type a, Type b) { return _mm_packus_epi16(a, b); }
    // The low halves of every two bytes as one byte, in a 16-bit word: the first byte's on top. High halves must be 0.
    static Type Nibbles_Join(Type a) { return _mm_maddubs_epi16(a, _mm_set1_epi16(0x0110)); }
    // The 8 bytes of a half: loaded with zeros behind them; the low one stored; the high one in the low one's place.
    static Type Half_Load(const unsigned char* bytes)
    {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
    }
    static void Half_Store(unsigned char* bytes, Type value)
    {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), value);
    }
    static Type HighHalf(Type value) { return _mm_unpackhi_epi64(value, value); }
    // Without its first `count` bytes, with zeros behind.
    template<int count>
    static Type Bytes_Drop(Type value)
    {
        return _mm_srli_si128(value, count);
    }
    // `value` where all bits of `bits` (a single one) are set in x, else 0.
    static Type Select(Type x, Type bits, Type value) { return And(_mm_cmpeq_epi8(And(x, bits), bits), value); }
};
