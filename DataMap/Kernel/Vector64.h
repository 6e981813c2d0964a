// Vectors of 64 bytes for the kernel files (AVX-512 F, BW, DQ and VL); what is said in Vector16.h holds here too.
#pragma once

#include "DataMap/Kernel/Vector32.h"

template<class TTag>
struct SVector64
{
    using Type = __m512i;
    using Half = SVector32<TTag>;
    static constexpr int size = 64;
    static constexpr bool bTransposesWords = false; // has no instruction that transposes the bits of 8 bytes
    static constexpr bool bLanesInOrder = false;
    static constexpr bool bPartsPairs = false; // has no better way to part pairs of bits than any vector

    // The first `count` bytes (0 to 64).
    static __mmask64 Part(int count) { return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1; }

    static Type Load(const unsigned char* bytes) { return _mm512_loadu_si512(bytes); }
    static void Store(unsigned char* bytes, Type value) { _mm512_storeu_si512(bytes, value); }
    static Type Load_Part(const unsigned char* bytes, int count) { return _mm512_maskz_loadu_epi8(Part(count), bytes); }
    static void Or_Part(unsigned char* bytes, Type value, int count)
    {
        // With masks of ones: GCC 12 warns of its own header otherwise.
        auto half = _mm512_maskz_extracti64x4_epi64(0x0F, value, 0);
        if (count >= 32)
        {
            Half::Store(bytes, Half::Or(Half::Load(bytes), half));
            bytes += 32;
            count -= 32;
            half = _mm512_maskz_extracti64x4_epi64(0x0F, value, 1);
        }
        Half::Or_Part(bytes, half, count);
    }
    static Type Zero() { return _mm512_setzero_si512(); }
    static Type Set(unsigned char value) { return _mm512_set1_epi8(static_cast<char>(value)); }
    static Type Set_Word(std::uint64_t value) { return _mm512_set1_epi64(static_cast<std::int64_t>(value)); }
    static Type Set_Table(const unsigned char* table)
    {
        return _mm512_maskz_broadcast_i32x4(0xFFFF, SVector16<TTag>::Load(table));
    }
    static Type And(Type a, Type b) { return _mm512_and_si512(a, b); }
    static Type Or(Type a, Type b) { return _mm512_or_si512(a, b); }
    template<int bits>
    static Type ShiftLeft16(Type a)
    {
        return _mm512_slli_epi16(a, bits);
    }
    template<int bits>
    static Type ShiftRight16(Type a)
    {
        return _mm512_srli_epi16(a, bits);
    }
    static Type Shuffle(Type table, Type index) { return _mm512_shuffle_epi8(table, index); }
    static Type Low8(Type a, Type b) { return _mm512_unpacklo_epi8(a, b); }
    static Type High8(Type a, Type b) { return _mm512_unpackhi_epi8(a, b); }
    template<int count>
    static void Lanes_Order(const Type (&values)[count], Type (&result)[count])
    {
        if constexpr (count == 2)
        {
            const Type low = _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0);
            const Type high = _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4);
            result[0] = _mm512_permutex2var_epi64(values[0], low, values[1]);
            result[1] = _mm512_permutex2var_epi64(values[0], high, values[1]);
        }
        else
        {
            constexpr int step = count / 4;
            for (int i = 0; i < step; ++i)
            {
                const Type* four = values + 4 * i;
                const Type even01 = Lanes_Pick<0x88>(four[0], four[1]);
                const Type even23 = Lanes_Pick<0x88>(four[2], four[3]);
                const Type odd01 = Lanes_Pick<0xDD>(four[0], four[1]);
                const Type odd23 = Lanes_Pick<0xDD>(four[2], four[3]);
                result[i] = Lanes_Pick<0x88>(even01, even23);
                result[step + i] = Lanes_Pick<0x88>(odd01, odd23);
                result[2 * step + i] = Lanes_Pick<0xDD>(even01, even23);
                result[3 * step + i] = Lanes_Pick<0xDD>(odd01, odd23);
            }
        }
    }
    static Type Pack16(Type a, Type b)
    {
        const Type order = _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0);
        return _mm512_maskz_permutexvar_epi64(0xFF, order, _mm512_packus_epi16(a, b));
    }
    static Type Nibbles_Join(Type a) { return _mm512_maddubs_epi16(a, _mm512_set1_epi16(0x0110)); }
    static void Store_Four(unsigned char* bytes, const __m128i (&values)[4])
    {
        const auto low = _mm256_inserti128_si256(_mm256_castsi128_si256(values[0]), values[1], 1);
        const auto high = _mm256_inserti128_si256(_mm256_castsi128_si256(values[2]), values[3], 1);
        Store(bytes, _mm512_maskz_inserti64x4(0xFF, _mm512_castsi256_si512(low), high, 1));
    }
    static void Halves_Store(Type value, unsigned char* low, unsigned char* high)
    {
        if (high == low + size / 2)
        {
            Store(low, value);
            return;
        }
        Half::Store(low, _mm512_maskz_extracti64x4_epi64(0x0F, value, 0));
        Half::Store(high, _mm512_maskz_extracti64x4_epi64(0x0F, value, 1));
    }
    static Type Select(Type x, Type bits, Type value)
    {
        return _mm512_maskz_mov_epi8(_mm512_test_epi8_mask(x, bits), value);
    }
    template<int bits>
    static void Bits_Exchange(Type& a, Type& b, Type mask)
    {
        constexpr int select = 0xCA; // first ? second : third
        const Type lowered = ShiftRight16<bits>(b);
        const Type raised = ShiftLeft16<bits>(a);
        a = _mm512_ternarylogic_epi64(ShiftRight16<bits>(mask), lowered, a, select);
        b = _mm512_ternarylogic_epi64(mask, raised, b, select);
    }

private:
    // Lanes of 16 bytes: two of a, then two of b.
    template<int lanes>
    static Type Lanes_Pick(Type a, Type b)
    {
        return _mm512_maskz_shuffle_i64x2(0xFF, a, b, lanes);
    }
};
