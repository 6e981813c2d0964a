// Vectors of 32 bytes for the kernel files (AVX2 and above); what is said in Vector16.h holds here too.
#pragma once

#include "DataMap/Kernel/Vector16.h"

template<class TTag>
struct SVector32
{
    using Type = __m256i;
    using Half = SVector16<TTag>;
    static constexpr int size = 32;
    static constexpr bool bTransposesWords = false; // has no instruction that transposes the bits of 8 bytes
    static constexpr bool bLanesInOrder = false;
    static constexpr bool bPartsPairs = false; // has no better way to part pairs of bits than any vector

    static Type Load(const unsigned char* bytes) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)); }
    static void Store(unsigned char* bytes, Type value)
    {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value);
    }
    static Type Load_Part(const unsigned char* bytes, int count)
    {
        const __m128i low = count >= 16 ? Half::Load(bytes) : Half::Load_Part(bytes, count);
        const __m128i high = count > 16 ? Half::Load_Part(bytes + 16, count - 16) : Half::Zero();
        return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
    }
    static void Or_Part(unsigned char* bytes, Type value, int count)
    {
        if (count >= 16)
        {
            Half::Store(bytes, Half::Or(Half::Load(bytes), _mm256_castsi256_si128(value)));
            bytes += 16;
            count -= 16;
            value = _mm256_permute2x128_si256(value, value, 0x11);
        }
        Half::Or_Part(bytes, _mm256_castsi256_si128(value), count);
    }
    static Type Zero() { return _mm256_setzero_si256(); }
    static Type Set(unsigned char value) { return _mm256_set1_epi8(static_cast<char>(value)); }
    static Type Set_Word(std::uint64_t value) { return _mm256_set1_epi64x(static_cast<std::int64_t>(value)); }
    static Type Set_Table(const unsigned char* table) { return _mm256_broadcastsi128_si256(Half::Load(table)); }
    static Type And(Type a, Type b) { return _mm256_and_si256(a, b); }
    static Type Or(Type a, Type b) { return _mm256_or_si256(a, b); }
    static Type Xor(Type a, Type b) { return _mm256_xor_si256(a, b); }
    template<int bits>
    static Type ShiftLeft16(Type a)
    {
        return _mm256_slli_epi16(a, bits);
    }
    template<int bits>
    static Type ShiftRight16(Type a)
    {
        return _mm256_srli_epi16(a, bits);
    }
    static Type Shuffle(Type table, Type index) { return _mm256_shuffle_epi8(table, index); }
    static Type Low8(Type a, Type b) { return _mm256_unpacklo_epi8(a, b); }
    static Type High8(Type a, Type b) { return _mm256_unpackhi_epi8(a, b); }
    template<int count>
    static void Lanes_Order(const Type (&values)[count], Type (&result)[count])
    {
        for (int i = 0; i < count / 2; ++i)
        {
            result[i] = _mm256_permute2x128_si256(values[2 * i], values[2 * i + 1], 0x20);
            result[count / 2 + i] = _mm256_permute2x128_si256(values[2 * i], values[2 * i + 1], 0x31);
        }
    }
    static Type Pack16(Type a, Type b) { return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8); }
    static Type Nibbles_Join(Type a) { return _mm256_maddubs_epi16(a, _mm256_set1_epi16(0x0110)); }
    static void Store_Four(unsigned char* bytes, const __m128i (&values)[4])
    {
        Store(bytes, _mm256_inserti128_si256(_mm256_castsi128_si256(values[0]), values[1], 1));
        Store(bytes + size, _mm256_inserti128_si256(_mm256_castsi128_si256(values[2]), values[3], 1));
    }
    static void Halves_Store(Type value, unsigned char* low, unsigned char* high)
    {
        Half::Store(low, _mm256_castsi256_si128(value));
        Half::Store(high, _mm256_extracti128_si256(value, 1));
    }
    static Type Select(Type x, Type bits, Type value) { return And(_mm256_cmpeq_epi8(And(x, bits), bits), value); }
    template<int bits>
    static void Bits_Exchange(Type& a, Type& b, Type mask)
    {
        const Type changed = And(Xor(ShiftLeft16<bits>(a), b), mask);
        b = Xor(b, changed);
        a = Xor(a, ShiftRight16<bits>(changed));
    }
};
