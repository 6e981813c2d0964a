// The field of one unit goes into board frames: the spreading loop, over any vectors. See VectorShuffle.h.
#pragma once

#include "DataMap/Kernel/MapKernel.h"
#include "DataMap/Kernel/Vector16.h"

#include <cstdint>

// A field's place, taken apart.
template<class V, EFieldKind kind>
struct SFieldPlace
{
    SFieldPlace(const SFieldPattern& pattern, unsigned place)
        : m_pPattern(pattern.m_rows[0] + SFieldPattern::lead - place / 8), m_lowestBit(place % 8)
    {
    }

    // A row of the pattern, from the first frame's first byte on.
    typename V::Type Row_Load(SFieldPattern::ERow row, int offset) const
    {
        return V::Load(m_pPattern + row * SFieldPattern::size + offset);
    }
    // All bits of the field in its byte, as far as they are among `bits`.
    typename V::Type Mask_Set(unsigned bits) const
    {
        constexpr unsigned field = kind == Field_OneBit || kind == Field_Block ? 0b01 : 0b11;
        return V::Set(static_cast<unsigned char>((field << m_lowestBit) & bits));
    }

    const unsigned char* m_pPattern;
    unsigned m_lowestBit;
};

// Spreads a field by choosing a source byte for each board byte and testing its pixel there: `vectorCount` vectors from
// the same source bytes. Two-bit pixels are tested bit by bit.
template<class V, int vectorCountOf, EFieldKind kind>
struct SSelectSpread
{
    using Type = typename V::Type;
    static constexpr int vectorCount = vectorCountOf;
    static constexpr bool bTwoBit = kind == Field_TwoBit;

    SSelectSpread(const SFieldPattern& pattern, unsigned place)
    {
        const SFieldPlace<V, kind> field(pattern, place);
        m_source = field.Row_Load(SFieldPattern::Row_Source, 0);
        m_value = field.Mask_Set(bTwoBit ? 0xAA : 0xFF);
        m_lowValue = field.Mask_Set(0x55);
        for (int i = 0; i < vectorCount; ++i)
        {
            const Type bits = field.Row_Load(SFieldPattern::Row_PixelMask, i * V::size);
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

    static void Or(const SFieldPattern& pattern, unsigned place, const unsigned char* src, int srcByteCount,
                   unsigned char* dst, int dstByteCount)
    {
        const TSpread spread(pattern, place);
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
        for (; stepCount > 0; --stepCount)
        {
            Step_Or(spread, Word_Load(src, spare, srcByteCount), dst);
            src += srcStep;
            spare -= srcStep;
            dst += stepByteCount;
        }
        if (rest > 0)
        {
            Rest_Or(spread, Word_Load(src, spare, srcByteCount), dst, rest);
        }
    }

private:
    // 8 bytes from `src` on, or as many as the line has left: 8 + `spare`.
    static std::uint64_t Word_Load(const unsigned char* src, int spare, int srcByteCount)
    {
        return spare >= 0          ? PartWord::Load(src)
               : srcByteCount >= 8 ? PartWord::Load(src + spare) >> (-8 * spare & 63)
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

// The field functions of a kernel, by kind and group size. TSpread<vectorCount, kind> spreads fields over vectors V.
template<class V, template<int, EFieldKind> class TSpread>
struct SFieldKernel
{
    template<EFieldKind kind, int groupByteCount>
    static constexpr FieldFunction Function_Get()
    {
        constexpr int vectorCount = groupByteCount > V::size ? groupByteCount / V::size : 1;
        return SFieldLoop < V, TSpread<vectorCount, kind>, groupByteCount, kind == Field_Block ? 4 : 1 > ::Or;
    }
    template<EFieldKind kind, int smallest>
    static constexpr void Functions_Set(FieldFunction (&functions)[SFieldPattern::groupSizeCount])
    {
        functions[0] = Function_Get<kind, smallest>();
        functions[1] = Function_Get < kind, smallest < 16 ? 16 : smallest > ();
        functions[2] = Function_Get<kind, 32>();
        functions[3] = Function_Get<kind, 64>();
        functions[4] = Function_Get<kind, 128>();
    }
    static constexpr void Functions_Set(SMapKernel& kernel)
    {
        Functions_Set<Field_OneBit, 8>(kernel.m_pField_Or[Field_OneBit]);
        Functions_Set<Field_Double, 8>(kernel.m_pField_Or[Field_Double]);
        Functions_Set<Field_TwoBit, 8>(kernel.m_pField_Or[Field_TwoBit]);
        Functions_Set<Field_Block, 32>(kernel.m_pField_Or[Field_Block]);
    }
};

// The field functions of vectors that have no better way.
template<class V>
struct SSelectField
{
    template<int vectorCount, EFieldKind kind>
    using Spread = SSelectSpread<V, vectorCount, kind>;
    using Kernel = SFieldKernel<V, Spread>;
};
