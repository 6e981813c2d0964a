// What the loops over vectors share: interleaving, and loads that stop at the end of a line.
//
// Only kernel files include the headers of vectors; what is said about tags in Vector16.h is what keeps their
// instructions apart. Two tricks are everywhere. Where a length is no multiple of the vector, the last vector begins
// earlier and does some bytes again: they come out the same. And interleaving works like shuffling cards: merging the
// first half of the pile with the second, log2 n times, leaves n columns interleaved.
#pragma once

#include "DataMap/Kernel/MapKernel.h"
#include "DataMap/Kernel/Vector16.h"

template<class V>
struct SVectorShuffle
{
    using Type = typename V::Type;
    static constexpr int size = V::size;

    // Interleaves the bytes of `count` vectors (1, 2, 4, 8 or 16); the result is in order, vector by vector. From array
    // to array at every step: a compiler that sees an array copied takes it for memory.
    template<int count, int merged = 2>
    static void Interleave(const Type (&values)[count], Type (&result)[count])
    {
        if constexpr (count == 1)
        {
            result[0] = values[0];
        }
        else if constexpr (merged == count && V::bLanesInOrder)
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

    // The first vector of the `count` bytes of `src` and the second, zeros behind the bytes.
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
};
