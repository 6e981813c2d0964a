// Vectors of 16 bytes for the kernel files of x86 processors (SSSE3 and above).
//
// Everything here is a template over a tag that each kernel file declares in its unnamed namespace. So every file has
// its own copies, compiled with its own instructions, and none of them can be linked into code for other processors.
#pragma once

#include "DataMap/Kernel/VectorPartWord.h"

#include <immintrin.h>

#include <cstdint>

// The operations that the algorithms in VectorKernel.h need. Low8 and High8 interleave the bytes of the low and the
// high halves of each 16 bytes; Lanes_Order then puts what came of `count` vectors into one order.
template<class TTag>
struct SVector16
{
    using Type = __m128i;
    using PartWord = SPartWord<TTag>;
    using Half = SVector16; // there is no smaller one
    static constexpr int size = 16;
    static constexpr bool bTransposesWords = false; // has no instruction that transposes the bits of 8 bytes
    static constexpr bool bLanesInOrder = true;     // what Low8 and High8 make needs no Lanes_Order
    static constexpr bool bPartsPairs = false;      // has no better way to part pairs of bits than any vector

    static Type Load(const unsigned char* bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)); }
    static void Store(unsigned char* bytes, Type value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value); }
    static Type Load_Part(const unsigned char* bytes, int count)
    {
        const std::uint64_t low = PartWord::Load_Part(bytes, count < 8 ? count : 8);
        const std::uint64_t high = count > 8 ? PartWord::Load_Part(bytes + 8, count - 8) : 0U;
        return _mm_set_epi64x(static_cast<std::int64_t>(high), static_cast<std::int64_t>(low));
    }
    // ORs the first `count` bytes (0 to 15). Piece by piece rather than under a mask, in all vectors: a masked load has
    // to wait until the bytes that were written just before have reached the cache.
    static void Or_Part(unsigned char* bytes, Type value, int count)
    {
        if (count >= 8)
        {
            Half_Store(bytes, Or(Half_Load(bytes), value));
            bytes += 8;
            count -= 8;
            value = HighHalf(value);
        }
        if (count > 0)
        {
            unsigned char all[size];
            Store(all, value);
            for (int i = 0; i < count; ++i)
            {
                bytes[i] = static_cast<unsigned char>(bytes[i] | all[i]);
            }
        }
    }
    static Type Zero() { return _mm_setzero_si128(); }
    static Type Set(unsigned char value) { return _mm_set1_epi8(static_cast<char>(value)); }
    static Type Set_Word(std::uint64_t value) { return _mm_set1_epi64x(static_cast<std::int64_t>(value)); }
    static Type Set_Table(const unsigned char* table) { return Load(table); }
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
    // Four vectors of 16 bytes, in as few stores as there can be: they may be loaded at once soon.
    static void Store_Four(unsigned char* bytes, const Type (&values)[4])
    {
        for (int i = 0; i < 4; ++i)
        {
            Store(bytes + 16 * i, values[i]);
        }
    }
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
    // Both halves of a vector, each to its place.
    static void Halves_Store(Type value, unsigned char* low, unsigned char* high)
    {
        Half_Store(low, value);
        Half_Store(high, HighHalf(value));
    }
    // `value` where all bits of `bits` (a single one) are set in x, else 0.
    static Type Select(Type x, Type bits, Type value) { return And(_mm_cmpeq_epi8(And(x, bits), bits), value); }
    // Exchanges the bits `mask` of b with the bits of a that stand `bits` below them.
    template<int bits>
    static void Bits_Exchange(Type& a, Type& b, Type mask)
    {
        const Type changed = And(Xor(ShiftLeft16<bits>(a), b), mask);
        b = Xor(b, changed);
        a = Xor(a, ShiftRight16<bits>(changed));
    }
};
