// Eight rows of pixels become frames: the transposing loop, over any vectors. See VectorShuffle.h.
#pragma once

#include "DataMap/Kernel/VectorShuffle.h"

template<class V>
struct SVectorTranspose
{
    using Type = typename V::Type;
    using Half = SVectorTranspose<typename V::Half>;
    using Shuffle = SVectorShuffle<V>;
    static constexpr int size = V::size;

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
        return row == nullptr ? V::Zero() : Shuffle::First_Load(row + offset, count);
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
            Shuffle::Interleave(values, frames);
            for (Type& frame : frames)
            {
                frame = V::Words_Transpose(frame, bSwapPairs);
            }
        }
        else
        {
            Bits_Transpose(values);
            if (bSwapPairs)
            {
                const Type swapped[8] = {values[1], values[0], values[3], values[2],
                                         values[5], values[4], values[7], values[6]};
                Shuffle::Interleave(swapped, frames);
            }
            else
            {
                Shuffle::Interleave(values, frames);
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
        if constexpr (size > 16)
        {
            if (byteCount <= size / 2)
            {
                Half::Rows_Transpose(rows, offset, byteCount, bSwapPairs, dst);
                return;
            }
        }
        if (byteCount < size)
        {
            Rows_Block(rows, offset, byteCount, bSwapPairs, dst);
            return;
        }
        const int last = byteCount - size;
        for (int done = 0; done < byteCount; done += size)
        {
            done = done < last ? done : last;
            Rows_Block(rows, offset + done, size, bSwapPairs, dst + 8 * done);
        }
    }
};
