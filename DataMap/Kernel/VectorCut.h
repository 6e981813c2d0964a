// One unit's line becomes strips: planes, quads, nibbles, blocks; over any vectors. See VectorShuffle.h.
#pragma once

#include "DataMap/Kernel/VectorShuffle.h"

template<class V>
struct SVectorCut
{
    using Type = typename V::Type;
    using Shuffle = SVectorShuffle<V>;
    static constexpr int size = V::size;

    // Every byte's pairs of bits parted: the high bits in its high half, the low bits in its low half.
    static Type Pairs_Part(Type x)
    {
        // For each pair of pairs: what it becomes in the low half of the byte.
        alignas(16) static constexpr unsigned char table[16] = {0x00, 0x01, 0x10, 0x11, 0x02, 0x03, 0x12, 0x13,
                                                                0x20, 0x21, 0x30, 0x31, 0x22, 0x23, 0x32, 0x33};
        const Type parted = V::Set_Table(table);
        const Type low = V::Shuffle(parted, V::And(x, V::Set(0x0F)));
        const Type high = V::Shuffle(parted, V::And(V::template ShiftRight16<4>(x), V::Set(0x0F)));
        return V::Or(V::template ShiftLeft16<2>(high), low);
    }

    // The high bits of the pairs in both vectors, packed into one, and the low bits.
    static void Planes_Part(Type first, Type second, Type& high, Type& low)
    {
        if constexpr (V::bPartsPairs)
        {
            V::Planes_Part(first, second, high, low);
            return;
        }
        const Type a = Pairs_Part(first);
        const Type b = Pairs_Part(second);
        high = V::Pack16(V::Nibbles_Join(V::And(V::template ShiftRight16<4>(a), V::Set(0x0F))),
                         V::Nibbles_Join(V::And(V::template ShiftRight16<4>(b), V::Set(0x0F))));
        low = V::Pack16(V::Nibbles_Join(V::And(a, V::Set(0x0F))), V::Nibbles_Join(V::And(b, V::Set(0x0F))));
    }

    static void Planes_Split(const unsigned char* src, int byteCount, unsigned char* high, unsigned char* low)
    {
        int done = 0;
        for (; byteCount - done >= 2 * size; done += 2 * size)
        {
            Planes_Store(V::Load(src + done), V::Load(src + done + size), high + done / 2, low + done / 2);
        }
        const int rest = byteCount - done;
        if (rest > 0)
        {
            Planes_Store(Shuffle::First_Load(src + done, rest), Shuffle::Second_Load(src + done, rest), high + done / 2,
                         low + done / 2);
        }
    }

    static void Quads_Split(const unsigned char* src, int byteCount, unsigned char* even, unsigned char* odd)
    {
        for (int done = 0; done < byteCount; done += 2 * size)
        {
            const int rest = byteCount - done;
            const Type first = Shuffle::First_Load(src + done, rest);
            const Type second = Shuffle::Second_Load(src + done, rest);
            Type parts[2]; // half of each is of the high plane, half of the low
            if constexpr (V::bPartsPairs)
            {
                V::Quads_Part(first, second, parts[0], parts[1]);
            }
            else
            {
                Type planes[2];
                Planes_Part(first, second, planes[0], planes[1]);
                Planes_Part(planes[0], planes[1], parts[0], parts[1]);
            }
            V::Halves_Store(parts[0], even + done / 4, even + quadRoom + done / 4);
            V::Halves_Store(parts[1], odd + done / 4, odd + quadRoom + done / 4);
        }
    }

    static void Planes_Store(Type first, Type second, unsigned char* high, unsigned char* low)
    {
        Type values[2];
        Planes_Part(first, second, values[0], values[1]);
        V::Store(high, values[0]);
        V::Store(low, values[1]);
    }

    static void Nibbles_Expand(const unsigned char* table, const unsigned char* src, int byteCount, unsigned char* dst)
    {
        const Type bytes = V::Set_Table(table);
        const Type nibble = V::Set(0x0F);
        for (int done = 0; done < byteCount; done += size)
        {
            const int rest = byteCount - done;
            const Type x = rest >= size ? V::Load(src + done) : V::Load_Part(src + done, rest);
            const Type values[2] = {V::Shuffle(bytes, V::And(V::template ShiftRight16<4>(x), nibble)),
                                    V::Shuffle(bytes, V::And(x, nibble))};
            Type result[2];
            Shuffle::Interleave(values, result);
            V::Store(dst + 2 * done, result[0]);
            if (2 * rest > size)
            {
                V::Store(dst + 2 * done + size, result[1]);
            }
        }
    }
};

// The blocks of a line of 400 pixels, in vectors of 16 bytes.
template<class V>
struct SBlockCut
{
    using V16 = SVector16<V>;
    using Type = typename V16::Type;

    // By place. Nothing but the line's 50 bytes is read.
    static void Blocks_Load(const unsigned char* src, bool bAscending, Type (&blocks)[4])
    {
        alignas(16) static constexpr unsigned char ofSecond[16] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                                   0xFF, 0xFF, 0xFF, 0xFF, 0,    0,    0,    0};
        const Type end = V16::template Bytes_Drop<3>(V16::Load(src + 34)); // from byte 37 on, zeros behind the line
        const Type first = V16::Load(src);
        const Type second = Nibbles_Shift(V16::Load(src + 12), V16::And(V16::Load(src + 13), V16::Set_Table(ofSecond)));
        const Type third = V16::Load(src + 25);
        const Type fourth = Nibbles_Shift(end, V16::template Bytes_Drop<1>(end));
        blocks[0] = bAscending ? first : fourth;
        blocks[1] = bAscending ? second : third;
        blocks[2] = bAscending ? third : second;
        blocks[3] = bAscending ? fourth : first;
    }

    static void Blocks_Cut(const unsigned char* src, bool bAscending, unsigned char* dst)
    {
        Type blocks[4];
        Blocks_Load(src, bAscending, blocks);
        V::Store_Four(dst, blocks);
    }

    static void Blocks_Interleave(const unsigned char* src, bool bAscending, unsigned char* dst)
    {
        Type blocks[4];
        Blocks_Load(src, bAscending, blocks);
        Type result[4];
        SVectorShuffle<V16>::Interleave(blocks, result);
        V::Store_Four(dst, result);
    }

private:
    // Bytes that begin in the middle of those of `bytes`; `next`: the same bytes from the second on.
    static Type Nibbles_Shift(Type bytes, Type next)
    {
        const Type low = V16::Set(0x0F);
        return V16::Or(V16::template ShiftLeft16<4>(V16::And(bytes, low)),
                       V16::And(V16::template ShiftRight16<4>(next), low));
    }
};
