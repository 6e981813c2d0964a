// The instructions of 64-bit ARM processors for vectors of 16 bytes (NEON): the operations of Vector16Ssse3.h, each as
// that says.
#pragma once

#include <arm_neon.h>

#include <cstdint>

template<class TTag>
struct SInstructions16
{
    using Type = uint8x16_t;

    static Type Load(const unsigned char* bytes) { return vld1q_u8(bytes); }
    static void Store(unsigned char* bytes, Type value) { vst1q_u8(bytes, value); }
    static Type Set_Words(std::uint64_t low, std::uint64_t high)
    {
        return vcombine_u8(vcreate_u8(low), vcreate_u8(high));
    }
    static Type Zero() { return vdupq_n_u8(0); }
    static Type Set(unsigned char value) { return vdupq_n_u8(value); }
    static Type Set_Word(std::uint64_t value) { return vreinterpretq_u8_u64(vdupq_n_u64(value)); }
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
    static Type Half_Load(const unsigned char* bytes) { return vcombine_u8(vld1_u8(bytes), vcreate_u8(0)); }
    static void Half_Store(unsigned char* bytes, Type value) { vst1_u8(bytes, vget_low_u8(value)); }
    static Type HighHalf(Type value) { return vextq_u8(value, value, 8); }
    template<int count>
    static Type Bytes_Drop(Type value)
    {
        return vextq_u8(value, Zero(), count);
    }
    static Type Select(Type x, Type bits, Type value) { return And(vtstq_u8(x, bits), value); }
};
