// The vector kernels' algorithms, written once over the vectors of Vector16.h, Vector32.h and Vector64.h.
//
// A kernel file names the vector it works with and gets its functions from SVectorKernel. Only kernel files include
// this; what is said about tags in Vector16.h is what keeps their instructions apart.
//
// Two tricks are everywhere. Where a length is no multiple of the vector, the last vector begins earlier and does some
// bytes again: they come out the same. And interleaving works like shuffling cards: merging the first half of the pile
// with the second, log2 n times, leaves n columns interleaved.
#pragma once

#include "DataMap/MapKernel.h"
#include "DataMap/Vector16.h"

#include <cstddef>

template<class V>
struct SVectorKernel
{
    using Type = typename V::Type;
    using Half = SVectorKernel<typename V::Half>;
    using PartWord = SPartWord<V>;
    static constexpr int size = V::size;
    static constexpr bool bSmallest = size == 16;

    // Interleaves the bytes of `count` vectors (2, 4, 8 or 16); the result is in order, vector by vector.
    template<int count>
    static void Interleave(Type (&values)[count])
    {
        for (int merged = 1; merged < count; merged *= 2)
        {
            Type next[count];
            for (int i = 0; i < count / 2; ++i)
            {
                next[2 * i] = V::Low8(values[i], values[i + count / 2]);
                next[2 * i + 1] = V::High8(values[i], values[i + count / 2]);
            }
            for (int i = 0; i < count; ++i)
            {
                values[i] = next[i];
            }
        }
        V::Lanes_Order(values);
    }

    // Bit 7 - i of value[r]'s bytes changes places with bit 7 - r of value[i]'s.
    static void Bits_Transpose(Type (&values)[8])
    {
        const Type high4 = V::Set(0xF0);
        const Type high2 = V::Set(0xCC);
        const Type high1 = V::Set(0xAA);
        for (int i = 0; i < 4; ++i)
        {
            V::template Bits_Exchange<4>(values[i], values[i + 4], high4);
        }
        for (int i = 0; i < 4; ++i)
        {
            const int first = i / 2 * 4 + i % 2;
            V::template Bits_Exchange<2>(values[first], values[first + 2], high2);
        }
        for (int i = 0; i < 8; i += 2)
        {
            V::template Bits_Exchange<1>(values[i], values[i + 1], high1);
        }
    }

    // 8 rows of `count` bytes (at most `size`) from `offset` on become 8 x size bytes of frames.
    static void Rows_Block(const unsigned char* const* rows, int offset, int count, bool bSwapPairs, unsigned char* dst)
    {
        Type values[8];
        for (int row = 0; row < 8; ++row)
        {
            const unsigned char* src = rows[row];
            values[row] = src == nullptr  ? V::Zero()
                          : count == size ? V::Load(src + offset)
                                          : V::Load_Part(src + offset, count);
        }
        if constexpr (V::bTransposesWords)
        {
            Interleave(values);
            V::Words_Transpose(values, bSwapPairs);
        }
        else
        {
            Frames_Make(values, bSwapPairs);
        }
        for (int i = 0; i < 8; ++i)
        {
            V::Store(dst + i * size, values[i]);
        }
    }

    // What vectors without an instruction for it make of 8 rows.
    static void Frames_Make(Type (&values)[8], bool bSwapPairs)
    {
        Bits_Transpose(values);
        if (bSwapPairs)
        {
            for (int i = 0; i < 8; i += 2)
            {
                const Type even = values[i];
                values[i] = values[i + 1];
                values[i + 1] = even;
            }
        }
        Interleave(values);
    }

    static void Rows_Transpose(const unsigned char* const* rows, int offset, int byteCount, bool bSwapPairs,
                               unsigned char* dst)
    {
        if constexpr (!bSmallest)
        {
            if (byteCount <= size / 2)
            {
                Half::Rows_Transpose(rows, offset, byteCount, bSwapPairs, dst);
                return;
            }
        }
        int done = 0;
        for (; byteCount - done >= size; done += size)
        {
            Rows_Block(rows, offset + done, size, bSwapPairs, dst + 8 * done);
        }
        if (done == 0)
        {
            Rows_Block(rows, offset, byteCount, bSwapPairs, dst);
        }
        else if (done < byteCount)
        {
            Rows_Block(rows, offset + byteCount - size, size, bSwapPairs, dst + 8 * (byteCount - size));
        }
    }

    template<bool bStore>
    static void Write(unsigned char* dst, Type value)
    {
        V::Store(dst, bStore ? value : V::Or(V::Load(dst), value));
    }

    template<bool bStore, int count>
    static void Columns_Block(const unsigned char* const* columns, int offset, unsigned char* dst)
    {
        Type values[count];
        for (int i = 0; i < count; ++i)
        {
            values[i] = V::Load(columns[i] + offset);
        }
        if constexpr (count > 1)
        {
            Interleave(values);
        }
        for (int i = 0; i < count; ++i)
        {
            Write<bStore>(dst + offset * count + i * size, values[i]);
        }
    }

    // All columns of the board line, `count` of them.
    template<bool bStore, int count>
    static void Columns_All(const unsigned char* const* columns, int byteCount, unsigned char* dst)
    {
        if (byteCount < size)
        {
            if constexpr (!bSmallest)
            {
                Half::template Columns_All<bStore, count>(columns, byteCount, dst);
            }
            else
            {
                Columns_OneByOne<bStore>(columns, count, byteCount, dst, count);
            }
            return;
        }
        int done = 0;
        for (; byteCount - done >= size; done += size)
        {
            Columns_Block<bStore, count>(columns, done, dst);
        }
        if (done < byteCount)
        {
            Columns_Block<bStore, count>(columns, byteCount - size, dst);
        }
    }

    // `count` columns, one after the other, null ones left out.
    template<bool bStore>
    static void Columns_OneByOne(const unsigned char* const* columns, int count, int byteCount, unsigned char* dst,
                                 int columnCount)
    {
        for (int column = 0; column < count; ++column)
        {
            const unsigned char* src = columns[column];
            unsigned char* out = dst + column;
            for (int i = 0; src != nullptr && i < byteCount; ++i)
            {
                *out = bStore ? src[i] : static_cast<unsigned char>(*out | src[i]);
                out += columnCount;
            }
        }
    }

    static bool Columns_ArePresent(const unsigned char* const* columns, int count)
    {
        bool bPresent = true;
        for (int i = 0; i < count; ++i)
        {
            bPresent = bPresent && columns[i] != nullptr;
        }
        return bPresent;
    }

    // 16 bytes of each of 8 or 16 columns among `columnCount`. Smallest vectors only.
    template<bool bStore, int count>
    static void Tile_Block(const unsigned char* const* columns, int offset, unsigned char* dst, int columnCount)
    {
        Type values[count];
        for (int i = 0; i < count; ++i)
        {
            values[i] = V::Load(columns[i] + offset);
        }
        Interleave(values);
        for (int i = 0; i < size; ++i)
        {
            unsigned char* out = dst + (offset + i) * columnCount;
            if constexpr (count == size)
            {
                Write<bStore>(out, values[i]);
            }
            else
            {
                const __m128i value = i % 2 == 0 ? values[i / 2] : _mm_unpackhi_epi64(values[i / 2], values[i / 2]);
                auto* word = reinterpret_cast<__m128i*>(out);
                _mm_storel_epi64(word, bStore ? value : V::Or(_mm_loadl_epi64(word), value));
            }
        }
    }

    template<bool bStore, int count>
    static void Tile_Map(const unsigned char* const* columns, int byteCount, unsigned char* dst, int columnCount)
    {
        if (byteCount < size || !Columns_ArePresent(columns, count))
        {
            Columns_OneByOne<bStore>(columns, count, byteCount, dst, columnCount);
            return;
        }
        int done = 0;
        for (; byteCount - done >= size; done += size)
        {
            Tile_Block<bStore, count>(columns, done, dst, columnCount);
        }
        if (done < byteCount)
        {
            Tile_Block<bStore, count>(columns, byteCount - size, dst, columnCount);
        }
    }

    // Any number of columns, any of them null.
    template<bool bStore>
    static void Columns_Tiles(const unsigned char* const* columns, int columnCount, int byteCount, unsigned char* dst)
    {
        if constexpr (!bSmallest)
        {
            Half::template Columns_Tiles<bStore>(columns, columnCount, byteCount, dst);
        }
        else
        {
            int first = 0;
            for (; columnCount - first >= 16; first += 16)
            {
                Tile_Map<bStore, 16>(columns + first, byteCount, dst + first, columnCount);
            }
            for (; columnCount - first >= 8; first += 8)
            {
                Tile_Map<bStore, 8>(columns + first, byteCount, dst + first, columnCount);
            }
            Columns_OneByOne<bStore>(columns + first, columnCount - first, byteCount, dst + first, columnCount);
        }
    }

    template<bool bStore>
    static void Columns_Map(const unsigned char* const* columns, int columnCount, int byteCount, unsigned char* dst)
    {
        if (!Columns_ArePresent(columns, columnCount))
        {
            Columns_Tiles<bStore>(columns, columnCount, byteCount, dst);
            return;
        }
        switch (columnCount)
        {
        case 1:
            Columns_All<bStore, 1>(columns, byteCount, dst);
            break;
        case 2:
            Columns_All<bStore, 2>(columns, byteCount, dst);
            break;
        case 4:
            Columns_All<bStore, 4>(columns, byteCount, dst);
            break;
        case 8:
            Columns_All<bStore, 8>(columns, byteCount, dst);
            break;
        case 16:
            Columns_All<bStore, 16>(columns, byteCount, dst);
            break;
        default:
            Columns_Tiles<bStore>(columns, columnCount, byteCount, dst);
            break;
        }
    }

    // Every byte's pairs of bits parted: the high bits in its high half, the low bits in its low half.
    static Type Pairs_Part(Type x)
    {
        // For each pair of pairs: what it becomes in the low half of the byte.
        alignas(16) static constexpr unsigned char table[16] = {0x00, 0x01, 0x10, 0x11, 0x02, 0x03, 0x12, 0x13,
                                                                0x20, 0x21, 0x30, 0x31, 0x22, 0x23, 0x32, 0x33};
        const Type low = V::Shuffle(V::Set_Table(table), V::And(x, V::Set(0x0F)));
        const Type high =
            V::Shuffle(V::Set_Table(table), V::And(V::template ShiftRight16<4>(x), V::Set(0x0F)));
        return V::Or(V::template ShiftLeft16<2>(high), low);
    }

    static void Planes_Block(Type first, Type second, unsigned char* high, unsigned char* low)
    {
        const Type a = Pairs_Part(first);
        const Type b = Pairs_Part(second);
        V::Store(high, V::Pack16(High_Join(a), High_Join(b)));
        V::Store(low, V::Pack16(Low_Join(a), Low_Join(b)));
    }

    // The high halves of two neighbouring bytes as the low byte of their word; the low halves likewise.
    static Type High_Join(Type x)
    {
        const Type mask = V::template ShiftRight16<8>(V::Set(0xF0));
        return V::Or(V::And(x, mask), V::template ShiftRight16<12>(x));
    }
    static Type Low_Join(Type x)
    {
        const Type mask = V::template ShiftRight16<8>(V::Set(0xF0));
        const Type second = V::And(V::template ShiftRight16<8>(x), V::template ShiftRight16<8>(V::Set(0x0F)));
        return V::Or(V::And(V::template ShiftLeft16<4>(x), mask), second);
    }

    static void Planes_Split(const unsigned char* src, int byteCount, unsigned char* high, unsigned char* low)
    {
        int done = 0;
        for (; byteCount - done >= 2 * size; done += 2 * size)
        {
            Planes_Block(V::Load(src + done), V::Load(src + done + size), high + done / 2, low + done / 2);
        }
        const int rest = byteCount - done;
        if (rest > 0)
        {
            const Type first = rest >= size ? V::Load(src + done) : V::Load_Part(src + done, rest);
            const Type second = rest > size ? V::Load_Part(src + done + size, rest - size) : V::Zero();
            Planes_Block(first, second, high + done / 2, low + done / 2);
        }
    }

    static void Nibbles_Expand(const unsigned char* table, const unsigned char* src, int byteCount, unsigned char* dst)
    {
        const Type bytes = V::Set_Table(table);
        const Type nibble = V::Set(0x0F);
        for (int done = 0; done < byteCount; done += size)
        {
            const int rest = byteCount - done;
            const Type x = rest >= size ? V::Load(src + done) : V::Load_Part(src + done, rest);
            Type values[2] = {V::Shuffle(bytes, V::And(V::template ShiftRight16<4>(x), nibble)),
                              V::Shuffle(bytes, V::And(x, nibble))};
            Interleave(values);
            V::Store(dst + 2 * done, values[0]);
            if (2 * rest > size)
            {
                V::Store(dst + 2 * done + size, values[1]);
            }
        }
    }
};

// Spreads a field by choosing a source byte for each board byte and testing its pixel there: `vectorCount` vectors from
// the same source bytes. Two-bit pixels are tested bit by bit.
template<class V, int vectorCountOf, bool bTwoBit>
struct SSelectSpread
{
    using Type = typename V::Type;
    static constexpr int vectorCount = vectorCountOf;

    explicit SSelectSpread(const SFrameField& field)
    {
        const int begin = SFieldPattern::lead - field.m_byteOffset;
        m_source = V::Load(field.m_pPattern->m_source + begin);
        m_value = V::Set(bTwoBit ? static_cast<unsigned char>(field.m_mask & 0xAA) : field.m_mask);
        m_lowValue = V::Set(static_cast<unsigned char>(field.m_mask & 0x55));
        for (int i = 0; i < vectorCount; ++i)
        {
            const Type bits = V::Load(field.m_pPattern->m_pixelMask + begin + i * V::size);
            m_bits[i] = bTwoBit ? V::And(bits, V::Set(0xAA)) : bits;
            m_lowBits[i] = V::And(bits, V::Set(0x55));
        }
    }

    Type Source_Spread(std::uint64_t source) const { return V::Shuffle(V::Set_Word(source), m_source); }
    Type Combine(Type old, Type source, int index) const
    {
        const Type value = V::Or(old, V::Select(source, m_bits[index], m_value));
        return bTwoBit ? V::Or(value, V::Select(source, m_lowBits[index], m_lowValue)) : value;
    }

    Type m_source;
    Type m_value;
    Type m_lowValue;
    Type m_bits[vectorCountOf];
    Type m_lowBits[vectorCountOf];
};

// ORs a field, vector by vector. `groupByteCount`: board bytes of eight (2-bit pixels: four) frames.
template<class V, class TSpread, int groupByteCount>
struct SFieldLoop
{
    using PartWord = SPartWord<V>;
    static constexpr int vectorCount = TSpread::vectorCount;
    static constexpr int stepByteCount = vectorCount * V::size;
    static constexpr int stepGroupCount = stepByteCount / groupByteCount;

    static void Step_Or(const TSpread& spread, std::uint64_t word, unsigned char* dst)
    {
        const auto source = spread.Source_Spread(word);
        for (int i = 0; i < vectorCount; ++i)
        {
            unsigned char* out = dst + i * V::size;
            V::Store(out, spread.Combine(V::Load(out), source, i));
        }
    }

    static void Or(const SFrameField& field, const unsigned char* src, int srcByteCount, unsigned char* dst,
                   int dstByteCount)
    {
        const TSpread spread(field);
        const std::ptrdiff_t srcStep = stepGroupCount * field.m_srcGroupByteCount;
        const unsigned char* const srcEnd = src + srcByteCount;
        while (dstByteCount >= 4 * stepByteCount && srcEnd - src >= 3 * srcStep + 8)
        {
            Step_Or(spread, PartWord::Load(src), dst);
            Step_Or(spread, PartWord::Load(src + srcStep), dst + stepByteCount);
            Step_Or(spread, PartWord::Load(src + 2 * srcStep), dst + 2 * stepByteCount);
            Step_Or(spread, PartWord::Load(src + 3 * srcStep), dst + 3 * stepByteCount);
            src += 4 * srcStep;
            dst += 4 * stepByteCount;
            dstByteCount -= 4 * stepByteCount;
        }
        for (; dstByteCount >= stepByteCount && srcEnd - src >= 8; dstByteCount -= stepByteCount)
        {
            Step_Or(spread, PartWord::Load(src), dst);
            src += srcStep;
            dst += stepByteCount;
        }
        for (; dstByteCount >= stepByteCount; dstByteCount -= stepByteCount)
        {
            Step_Or(spread, Word_BeforeEnd(src, srcEnd, srcByteCount), dst);
            src += srcStep;
            dst += stepByteCount;
        }
        if (dstByteCount > 0)
        {
            Rest_Or(spread, Word_BeforeEnd(src, srcEnd, srcByteCount), dst, dstByteCount);
        }
    }

private:
    // Up to 8 bytes from `src` on, nothing read behind `srcEnd` or before the line.
    static std::uint64_t Word_BeforeEnd(const unsigned char* src, const unsigned char* srcEnd, int srcByteCount)
    {
        const auto count = static_cast<int>(srcEnd - src);
        if (count >= 8)
        {
            return PartWord::Load(src);
        }
        return srcByteCount >= 8 ? PartWord::Load(srcEnd - 8) >> (64 - 8 * count) : PartWord::Load_Part(src, count);
    }

    // Less than a step.
    static void Rest_Or(const TSpread& spread, std::uint64_t word, unsigned char* dst, int dstByteCount)
    {
        const auto source = spread.Source_Spread(word);
        for (int i = 0; i < vectorCount && dstByteCount > 0; ++i)
        {
            if (dstByteCount >= V::size)
            {
                V::Store(dst, spread.Combine(V::Load(dst), source, i));
            }
            else
            {
                V::Or_Part(dst, spread.Combine(V::Zero(), source, i), dstByteCount);
            }
            dst += V::size;
            dstByteCount -= V::size;
        }
    }
};

template<class V, int groupByteCount>
inline constexpr int fieldVectorCount = groupByteCount > V::size ? groupByteCount / V::size : 1;

// The field functions of vectors that have no better way.
template<class V>
struct SSelectField
{
    template<int groupByteCount, bool bTwoBit>
    using Loop = SFieldLoop<V, SSelectSpread<V, fieldVectorCount<V, groupByteCount>, bTwoBit>, groupByteCount>;

    static constexpr SFieldFunctions functions = {
        {Loop<8, false>::Or, Loop<16, false>::Or, Loop<32, false>::Or, Loop<64, false>::Or, Loop<128, false>::Or},
        {Loop<8, false>::Or, Loop<16, false>::Or, Loop<32, false>::Or, Loop<64, false>::Or, Loop<128, false>::Or},
        {Loop<8, true>::Or, Loop<16, true>::Or, Loop<32, true>::Or, Loop<64, true>::Or, Loop<128, true>::Or}};
};
