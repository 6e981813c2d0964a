// Vectors of 16 bytes for the kernel file of 64-bit ARM processors: the operations of Vector16Ssse3.h, each as that
// says.
#pragma once

#include "DataMap/Kernel/VectorPartWord.h"

#include <arm_neon.h>

#include <cstdint>

template<class TTag>
struct SVector16
{
    using Type = uint8x16_t;
    using PartWord = SPartWord<TTag>;
    using Half = SVector16;
    static constexpr int size = 16;
    static constexpr bool bTransposesWords = false;
    static constexpr bool bLanesInOrder = true;
    static constexpr bool bPartsPairs = false;

    static Type Load(const unsigned char* bytes) { return vld1q_u8(bytes); }
    static void Store(unsigned char* bytes, Type value) { vst1q_u8(bytes, value); }
    static Type Load_Part(const unsigned char* bytes, int count)
    {
        const std::uint64_t low = PartWord::Load_Part(bytes, count < 8 ? count : 8);
        const std::uint64_t high = count > 8 ? PartWord::Load_Part(bytes + 8, count - 8) : 0U;
        return vcombine_u8(vcreate_u8(low), vcreate_u8(high));
    }
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
    static Type Zero() { return vdupq_n_u8(0); }
    static Type Set(unsigned char value) { return vdupq_n_u8(value); }
    static Type Set_Word(std::uint64_t value) { return vreinterpretq_u8_u64(vdupq_n_u64(value)); }
    static Type Set_Table(const unsigned char* table) { return Load(table); }
    static Type And(Type a, Type b) { return vandq_u8(a, b); }
    static Type Or(Type a, Type b) { return vorrq_u8(a, b); }
    static Type Xor(Type a, Type b) { return veorq_u8(a, b); }
    template<int bits>
    static Type ShiftLeft16(Type a)
    {
        return vreinterpretq_u8_u16(vshlq_n_u16(vreinterpretq_u16_u8(a), bits));
    }
    template<int bits>
    static Type ShiftRight16(Type a)
    {
        return vreinterpretq_u8_u16(vshrq_n_u16(vreinterpretq_u16_u8(a), bits));
    }
    // An index above 15 gives 0; no table here has more, and all indices are below 16 or above 127.
    static Type Shuffle(Type table, Type index) { return vqtbl1q_u8(table, index); }
    static Type Low8(Type a, Type b) { return vzip1q_u8(a, b); }
    static Type High8(Type a, Type b) { return vzip2q_u8(a, b); }
    static Type Pack16(Type a, Type b) { return vuzp1q_u8(a, b); }
    static Type Nibbles_Join(Type a)
    {
        return Or(And(ShiftLeft16<4>(a), Set_Word(0x00F000F000F000F0)), ShiftRight16<8>(a));
    }
    static void Store_Four(unsigned char* bytes, const Type (&values)[4])
    {
        for (int i = 0; i < 4; ++i)
        {
            Store(bytes + 16 * i, values[i]);
        }
    }
    static Type Half_Load(const unsigned char* bytes) { return vcombine_u8(vld1_u8(bytes), vcreate_u8(0)); }
    static void Half_Store(unsigned char* bytes, Type value) { vst1_u8(bytes, vget_low_u8(value)); }
    static Type HighHalf(Type value) { return vextq_u8(value, value, 8); }
    template<int count>
    static Type Bytes_Drop(Type value)
    {
        return vextq_u8(value, Zero(), count);
    }
    static void Halves_Store(Type value, unsigned char* low, unsigned char* high)
    {
        Half_Store(low, value);
        vst1_u8(high, vget_high_u8(value));
    }
    static Type Select(Type x, Type bits, Type value) { return And(vtstq_u8(x, bits), value); }
    template<int bits>
    static void Bits_Exchange(Type& a, Type& b, Type mask)
    {
        const Type changed = And(Xor(ShiftLeft16<bits>(a), b), mask);
        b = Xor(b, changed);
        a = Xor(a, ShiftRight16<bits>(changed));
    }
};
