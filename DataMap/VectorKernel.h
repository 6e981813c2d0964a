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

    // Interleaves the bytes of `count` vectors (2, 4, 8 or 16); the result is in order, vector by vector. From array to
    // array at every step: a compiler that sees an array copied takes it for memory.
    template<int count, int merged = 2>
    static void Interleave(const Type (&values)[count], Type (&result)[count])
    {
        if constexpr (merged == count && V::bLanesInOrder)
        {
            Halves_Merge(values, result);
        }
        else
        {
            Type next[count];
            Halves_Merge(values, next);
            if constexpr (merged == count)
            {
                V::Lanes_Order(next, result);
            }
            else
            {
                Interleave<count, 2 * merged>(next, result);
            }
        }
    }

    template<int count>
    static void Halves_Merge(const Type (&values)[count], Type (&result)[count])
    {
        for (int i = 0; i < count / 2; ++i)
        {
            result[2 * i] = V::Low8(values[i], values[i + count / 2]);
            result[2 * i + 1] = V::High8(values[i], values[i + count / 2]);
        }
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

    static Type Row_Load(const unsigned char* row, int offset, int count)
    {
        return row == nullptr ? V::Zero() : First_Load(row + offset, count);
    }

    // 8 rows of `count` bytes (at most `size`) from `offset` on become 8 x size bytes of frames.
    static void Rows_Block(const unsigned char* const* rows, int offset, int count, bool bSwapPairs, unsigned char* dst)
    {
        // One after the other first: an array that is filled between branches would stay in memory.
        const Type row0 = Row_Load(rows[0], offset, count);
        const Type row1 = Row_Load(rows[1], offset, count);
        const Type row2 = Row_Load(rows[2], offset, count);
        const Type row3 = Row_Load(rows[3], offset, count);
        const Type row4 = Row_Load(rows[4], offset, count);
        const Type row5 = Row_Load(rows[5], offset, count);
        const Type row6 = Row_Load(rows[6], offset, count);
        const Type row7 = Row_Load(rows[7], offset, count);
        Type values[8] = {row0, row1, row2, row3, row4, row5, row6, row7};
        Type frames[8];
        if constexpr (V::bTransposesWords)
        {
            Interleave(values, frames);
            V::Words_Transpose(frames, bSwapPairs);
        }
        else
        {
            Bits_Transpose(values);
            if (bSwapPairs)
            {
                const Type swapped[8] = {values[1], values[0], values[3], values[2],
                                         values[5], values[4], values[7], values[6]};
                Interleave(swapped, frames);
            }
            else
            {
                Interleave(values, frames);
            }
        }
        for (int i = 0; i < 8; ++i)
        {
            V::Store(dst + i * size, frames[i]);
        }
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
            Type result[count];
            Interleave(values, result);
            for (int i = 0; i < count; ++i)
            {
                Write<bStore>(dst + offset * count + i * size, result[i]);
            }
        }
        else
        {
            Write<bStore>(dst + offset, values[0]);
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
        Type result[count];
        Interleave(values, result);
        for (int i = 0; i < size; ++i)
        {
            unsigned char* out = dst + (offset + i) * columnCount;
            if constexpr (count == size)
            {
                Write<bStore>(out, result[i]);
            }
            else
            {
                const __m128i value = i % 2 == 0 ? result[i / 2] : _mm_unpackhi_epi64(result[i / 2], result[i / 2]);
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
            Planes_Store(First_Load(src + done, rest), Second_Load(src + done, rest), high + done / 2, low + done / 2);
        }
    }

    static void Quads_Split(const unsigned char* src, int byteCount, unsigned char* even, unsigned char* odd)
    {
        for (int done = 0; done < byteCount; done += 2 * size)
        {
            const int rest = byteCount - done;
            const Type first = First_Load(src + done, rest);
            const Type second = Second_Load(src + done, rest);
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

    static Type First_Load(const unsigned char* src, int count)
    {
        return count >= size ? V::Load(src) : V::Load_Part(src, count);
    }
    static Type Second_Load(const unsigned char* src, int count)
    {
        return count >= 2 * size ? V::Load(src + size)
               : count > size    ? V::Load_Part(src + size, count - size)
                                 : V::Zero();
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
            Interleave(values, result);
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
struct SBlockKernel
{
    using V16 = SVector16<V>;
    using Type = typename V16::Type;

    // By place. Nothing but the line's 50 bytes is read.
    static void Blocks_Load(const unsigned char* src, bool bAscending, Type (&blocks)[4])
    {
        const Type lastOfSecond = _mm_set_epi32(0, -1, -1, -1);
        const Type end = _mm_srli_si128(V16::Load(src + 34), 3); // from byte 37 on, zeros behind the line
        const Type first = V16::Load(src);
        const Type second = Nibbles_Shift(V16::Load(src + 12), V16::And(V16::Load(src + 13), lastOfSecond));
        const Type third = V16::Load(src + 25);
        const Type fourth = Nibbles_Shift(end, _mm_srli_si128(end, 1));
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
        SVectorKernel<V16>::Interleave(blocks, result);
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

// Spreads a field by choosing a source byte for each board byte and testing its pixel there: `vectorCount` vectors from
// the same source bytes. Two-bit pixels are tested bit by bit.
template<class V, int vectorCountOf, bool bTwoBit>
struct SSelectSpread
{
    using Type = typename V::Type;
    static constexpr int vectorCount = vectorCountOf;

    SSelectSpread(const unsigned char* pattern, unsigned /*lowestBit*/, unsigned mask)
    {
        m_source = V::Load(pattern + SFieldPattern::Row_Source * SFieldPattern::size);
        m_value = V::Set(static_cast<unsigned char>(bTwoBit ? mask & 0xAA : mask));
        m_lowValue = V::Set(static_cast<unsigned char>(mask & 0x55));
        for (int i = 0; i < vectorCount; ++i)
        {
            const Type bits = V::Load(pattern + SFieldPattern::Row_PixelMask * SFieldPattern::size + i * V::size);
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

// ORs a field, vector by vector. `groupByteCount`: board bytes of eight (2-bit pixels: four) frames, which take
// `columnCount` source bytes.
template<class V, class TSpread, int groupByteCount, int columnCount>
struct SFieldLoop
{
    using PartWord = SPartWord<V>;
    static constexpr int vectorCount = TSpread::vectorCount;
    static constexpr int stepByteCount = vectorCount * V::size;
    static constexpr int srcStep = stepByteCount / groupByteCount * columnCount;

    static void Step_Or(const TSpread& spread, std::uint64_t word, unsigned char* dst)
    {
        const auto source = spread.Source_Spread(word);
        for (int i = 0; i < vectorCount; ++i)
        {
            unsigned char* out = dst + i * V::size;
            V::Store(out, spread.Combine(V::Load(out), source, i));
        }
    }

    static void Or(const unsigned char* pattern, unsigned lowestBit, unsigned mask, const unsigned char* src,
                   int srcByteCount, unsigned char* dst, int dstByteCount)
    {
        const TSpread spread(pattern, lowestBit, mask);
        int stepCount = dstByteCount > 0 ? static_cast<int>(static_cast<unsigned>(dstByteCount) / stepByteCount) : 0;
        const int rest = dstByteCount - stepCount * stepByteCount;
        int spare = srcByteCount - 8; // source bytes behind the 8 that a step loads; below 0 it may not load them
        for (; stepCount >= 4 && spare >= 3 * srcStep; stepCount -= 4)
        {
            Step_Or(spread, PartWord::Load(src), dst);
            Step_Or(spread, PartWord::Load(src + srcStep), dst + stepByteCount);
            Step_Or(spread, PartWord::Load(src + 2 * srcStep), dst + 2 * stepByteCount);
            Step_Or(spread, PartWord::Load(src + 3 * srcStep), dst + 3 * stepByteCount);
            src += 4 * srcStep;
            spare -= 4 * srcStep;
            dst += 4 * stepByteCount;
        }
        for (; stepCount > 0 && spare >= 0; --stepCount)
        {
            Step_Or(spread, PartWord::Load(src), dst);
            src += srcStep;
            spare -= srcStep;
            dst += stepByteCount;
        }
        for (; stepCount > 0; --stepCount)
        {
            Step_Or(spread, Word_AtEnd(src, spare, srcByteCount), dst);
            src += srcStep;
            spare -= srcStep;
            dst += stepByteCount;
        }
        if (rest > 0)
        {
            Rest_Or(spread, spare >= 0 ? PartWord::Load(src) : Word_AtEnd(src, spare, srcByteCount), dst, rest);
        }
    }

private:
    // The 8 + `spare` bytes from `src` on, less than 8, that are left of the line.
    static std::uint64_t Word_AtEnd(const unsigned char* src, int spare, int srcByteCount)
    {
        return srcByteCount >= 8 ? PartWord::Load(src + spare) >> (-8 * spare & 63)
                                 : PartWord::Load_Part(src, 8 + spare);
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

// The field functions of a kernel. TSpread<vectorCount, kind> spreads fields over vectors V.
template<class V, template<int, EFieldKind> class TSpread>
struct SFieldKernel
{
    template<EFieldKind kind, int groupByteCount>
    static constexpr FieldFunction Function_Get()
    {
        constexpr int vectorCount = groupByteCount > V::size ? groupByteCount / V::size : 1;
        return SFieldLoop < V, TSpread<vectorCount, kind>, groupByteCount, kind == Field_Block ? 4 : 1 > ::Or;
    }

    static constexpr SFieldFunctions functions = {
        {{Function_Get<Field_OneBit, 8>(), Function_Get<Field_OneBit, 16>(), Function_Get<Field_OneBit, 32>(),
          Function_Get<Field_OneBit, 64>(), Function_Get<Field_OneBit, 128>()},
         {Function_Get<Field_Double, 8>(), Function_Get<Field_Double, 16>(), Function_Get<Field_Double, 32>(),
          Function_Get<Field_Double, 64>(), Function_Get<Field_Double, 128>()},
         {Function_Get<Field_TwoBit, 8>(), Function_Get<Field_TwoBit, 16>(), Function_Get<Field_TwoBit, 32>(),
          Function_Get<Field_TwoBit, 64>(), Function_Get<Field_TwoBit, 128>()},
         {nullptr, nullptr, Function_Get<Field_Block, 32>(), Function_Get<Field_Block, 64>(),
          Function_Get<Field_Block, 128>()}}};
};

// The field functions of vectors that have no better way.
template<class V>
struct SSelectField
{
    template<int vectorCount, EFieldKind kind>
    using Spread = SSelectSpread<V, vectorCount, kind == Field_TwoBit>;
    static constexpr const SFieldFunctions& functions = SFieldKernel<V, Spread>::functions;
};

// The kernel of vectors V, whose fields and pairs of bits may have a better way than its other loops. A constant: no
// instruction of a kernel runs before it was chosen.
template<class V>
constexpr SMapKernel VectorKernel_Make(const char* name, const SFieldFunctions& fields = SSelectField<V>::functions,
                                       const PairFunction* pPairs = nullptr)
{
    using Kernel = SVectorKernel<V>;
    using Block = SBlockKernel<V>;
    return {name,
            &fields,
            pPairs,
            Kernel::Rows_Transpose,
            Kernel::template Columns_Map<false>,
            Kernel::template Columns_Map<true>,
            Kernel::Planes_Split,
            Kernel::Quads_Split,
            Block::Blocks_Cut,
            Block::Blocks_Interleave,
            Kernel::Nibbles_Expand};
}
