// Vectors of 16 bytes and loads of part of one, for the kernel files.
//
// Everything here is a template over a tag that each kernel file declares in its unnamed namespace. So every file has
// its own copies, compiled with its own instructions, and none of them can be linked into code for other processors.
#pragma once

#include "DataMap/Kernel/CpuFeature.h"
#include "DataMap/Kernel/VectorPartWord.h"

#include <cstdint>

#if defined(DATAMAPPING_ARM_KERNELS)
#include "DataMap/Kernel/Vector16Neon.h"
#else
#include "DataMap/Kernel/Vector16Ssse3.h"
#endif

// The operations that the algorithms in VectorKernel.h need. Low8 and High8 interleave the bytes of the low and the
// high halves of each 16 bytes; Lanes_Order then puts what came of `count` vectors into one order.
template<class TTag>
struct SVector16 : SInstructions16<TTag>
{
    using Processor = SInstructions16<TTag>;
    using Type = typename Processor::Type;
    using PartWord = SPartWord<TTag>;
    using Half = SVector16; // there is no smaller one
    static constexpr int size = 16;
    static constexpr bool bTransposesWords = false; // has no instruction that transposes the bits of 8 bytes
    static constexpr bool bLanesInOrder = true;     // what Low8 and High8 make needs no Lanes_Order
    static constexpr bool bPartsPairs = false;      // has no better way to part pairs of bits than any vector

    static Type Load_Part(const unsigned char* bytes, int count)
    {
        return Processor::Set_Words(PartWord::Load_Part(bytes, count < 8 ? count : 8),
                                    count > 8 ? PartWord::Load_Part(bytes + 8, count - 8) : 0U);
    }
    // ORs the first `count` bytes (0 to 15). Piece by piece rather than under a mask, in all vectors: a masked load has
    // to wait until the bytes that were written just before have reached the cache.
    static void Or_Part(unsigned char* bytes, Type value, int count)
    {
        if (count >= 8)
        {
            Processor::Half_Store(bytes, Processor::Or(Processor::Half_Load(bytes), value));
            bytes += 8;
            count -= 8;
            value = Processor::HighHalf(value);
        }
        if (count > 0)
        {
            unsigned char all[size];
            Processor::Store(all, value);
            for (int i = 0; i < count; ++i)
            {
                bytes[i] = static_cast<unsigned char>(bytes[i] | all[i]);
            }
        }
    }
    static Type Set_Table(const unsigned char* table) { return Processor::Load(table); }
    // Four vectors of 16 bytes, in as few stores as there can be: they may be loaded at once soon.
    static void Store_Four(unsigned char* bytes, const Type (&values)[4])
    {
        for (int i = 0; i < 4; ++i)
        {
            Processor::Store(bytes + 16 * i, values[i]);
        }
    }
    // Both halves of a vector, each to its place.
    static void Halves_Store(Type value, unsigned char* low, unsigned char* high)
    {
        Processor::Half_Store(low, value);
        Processor::Half_Store(high, Processor::HighHalf(value));
    }
    // Exchanges the bits `mask` of b with the bits of a that stand `bits` below them.
    template<int bits>
    static void Bits_Exchange(Type& a, Type& b, Type mask)
    {
        const Type moved = Processor::template ShiftLeft16<bits>(a);
        const Type changed = Processor::And(Processor::Xor(moved, b), mask);
        b = Processor::Xor(b, changed);
        a = Processor::Xor(a, Processor::template ShiftRight16<bits>(changed));
    }
};
