// Byte columns become a board line, ORed or stored: the interleaving loops, over any vectors. See VectorShuffle.h.
#pragma once

#include "DataMap/Kernel/VectorShuffle.h"

template<class V>
struct SVectorColumns
{
    using Type = typename V::Type;
    using Half = SVectorColumns<typename V::Half>;
    using Shuffle = SVectorShuffle<V>;
    static constexpr int size = V::size;

    template<bool bStore>
    static void Write(unsigned char* dst, Type value)
    {
        V::Store(dst, bStore ? value : V::Or(V::Load(dst), value));
    }

    // A vector of each column, interleaved.
    template<int count>
    static void Columns_Interleave(const unsigned char* const* columns, int offset, Type (&result)[count])
    {
        Type values[count];
        for (int i = 0; i < count; ++i)
        {
            values[i] = V::Load(columns[i] + offset);
        }
        Shuffle::Interleave(values, result);
    }

    template<bool bStore, int count>
    static void Columns_Block(const unsigned char* const* columns, int offset, unsigned char* dst)
    {
        Type result[count];
        Columns_Interleave(columns, offset, result);
        for (int i = 0; i < count; ++i)
        {
            Write<bStore>(dst + offset * count + i * size, result[i]);
        }
    }

    // All columns of the board line, `count` of them.
    template<bool bStore, int count>
    static void Columns_All(const unsigned char* const* columns, int byteCount, unsigned char* dst)
    {
        if (byteCount < size)
        {
            if constexpr (size > 16)
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
        Type result[count];
        Columns_Interleave(columns, offset, result);
        unsigned char* out = dst + offset * columnCount;
        for (int i = 0; i < size; ++i)
        {
            if constexpr (count == size)
            {
                Write<bStore>(out, result[i]);
            }
            else
            {
                const Type value = i % 2 == 0 ? result[i / 2] : V::HighHalf(result[i / 2]);
                V::Half_Store(out, bStore ? value : V::Or(V::Half_Load(out), value));
            }
            out += columnCount;
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
        const int last = byteCount - size;
        for (int done = 0; done < byteCount; done += size)
        {
            done = done < last ? done : last;
            Tile_Block<bStore, count>(columns, done, dst, columnCount);
        }
    }

    // Any number of columns, any of them null.
    template<bool bStore>
    static void Columns_Tiles(const unsigned char* const* columns, int columnCount, int byteCount, unsigned char* dst)
    {
        if constexpr (size > 16)
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
            return Columns_All<bStore, 1>(columns, byteCount, dst);
        case 2:
            return Columns_All<bStore, 2>(columns, byteCount, dst);
        case 4:
            return Columns_All<bStore, 4>(columns, byteCount, dst);
        case 8:
            return Columns_All<bStore, 8>(columns, byteCount, dst);
        case 16:
            return Columns_All<bStore, 16>(columns, byteCount, dst);
        default:
            return Columns_Tiles<bStore>(columns, columnCount, byteCount, dst);
        }
    }
};
