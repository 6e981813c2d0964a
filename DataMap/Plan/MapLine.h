// One line that is alone: the pixels of one unit spread over the frames, without look-ups.
//
// What a style's MapData_Line asks first, on any thread. Through the engine one line would cost several times as much;
// so this is a way of its own, inline and with each style known to the compiler, since a short line takes no longer
// than a few calls. Nothing here allocates, locks or logs.
#pragma once

#include "DataMap/Kernel/MapKernelInUse.h"
#include "DataMap/Plan/StylePlans.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

class CMapLine
{
public:
    // Maps one line, if it is cut so. False, with nothing done, if the map has no such plan, or the plan has no way for
    // this unit's line alone.
    template<EMapCut cut>
    static bool Map(const CPrintUnitDataMap_Base& map, const SSrcBandDataParam& param, const unsigned char* src,
                    unsigned char* dst, int dstByteCount)
    {
        return Any_Map<cut>(std::make_index_sequence<std::size(stylePlans)>{}, map, param, src, dst, dstByteCount);
    }

    static bool IsAscending(const SSrcBandDataParam& param) { return param.m_unitDirection == unitDirection_Ascending; }

    // The board bytes that a source line of `lineBitCount` bits becomes: whole source bytes whatever the line's length,
    // the entry of a partial last one clipped to `dstByteCount`.
    static int BoardBytes_Clipped(int lineBitCount, int entrySize, int dstByteCount)
    {
        if (lineBitCount <= 0)
        {
            return 0;
        }
        const int whole = static_cast<int>(static_cast<unsigned>(lineBitCount) / 8) * entrySize;
        const bool bPartial = static_cast<unsigned>(lineBitCount) % 8 != 0;
        return bPartial ? whole + std::clamp(dstByteCount - whole, 0, entrySize) : whole;
    }

private:
    // A style that the compiler knows.
    template<std::size_t index>
    struct SKnownStyle
    {
        constexpr const SStylePlan* operator->() const { return &stylePlans[index]; }
        constexpr const SStylePlan& operator*() const { return stylePlans[index]; }
    };

    template<EMapCut cut, std::size_t... indices>
    static bool Any_Map(std::index_sequence<indices...> /*styles*/, const CPrintUnitDataMap_Base& map,
                        const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst, int dstByteCount)
    {
        return ((stylePlans[indices].m_cut == cut && stylePlans[indices].m_pIsOf(map) &&
                 Style_Map<cut, indices>(map, param, src, dst, dstByteCount)) ||
                ...);
    }

    template<EMapCut cut, std::size_t index>
    static bool Style_Map(const CPrintUnitDataMap_Base& map, const SSrcBandDataParam& param, const unsigned char* src,
                          unsigned char* dst, int dstByteCount)
    {
        constexpr SStylePlan style = stylePlans[index];
        const SMapPlan plan = SMapReader::Plan_Get(map, SKnownStyle<index>{});
        if (!plan.IsThere() || !plan.HasUnit(param.m_unitIndex))
        {
            return false;
        }
        const int frameByteCount = plan.m_frameByteCount;
        const auto strip = static_cast<unsigned>(style.m_firstStrip + style.m_stripStep * param.m_unitIndex);
        if constexpr (style.m_cut == Cut_BlockColumns)
        {
            Blocks_Store(IsAscending(param), src, dst + strip, frameByteCount);
            return true;
        }
        else
        {
            const SFieldPattern* pattern =
                frameByteCount <= SFieldPatterns::frameByteCountMax ? style.m_pPatterns[frameByteCount] : nullptr;
            if (pattern == nullptr)
            {
                return false;
            }
            const unsigned lowestBit = 8 - strip % 8 - static_cast<unsigned>(style.m_stripCount);
            const unsigned place = strip / 8 * 8 * static_cast<unsigned>(style.ColumnsPerGroup()) + lowestBit;
            const SMapKernel& kernel = MapKernel_Get();
            const FieldFunction Or = kernel.m_pField_Or[style.m_fieldKind][pattern->m_groupSizeIndex];
            const int entrySize = style.m_frameCount * frameByteCount;
            if constexpr (style.m_cut == Cut_Blocks)
            {
                unsigned char columns[blockCount * blockRoom];
                kernel.m_pBlocks_Interleave(src, IsAscending(param), columns);
                Or(*pattern, place, columns, sizeof(columns), dst, blockPixelCount * frameByteCount);
            }
            else if constexpr (style.m_cut == Cut_Quads)
            {
                Planes_Or(kernel, *pattern, place, src, param.m_lineBitCount / 8, entrySize, dst, dstByteCount / 2);
                SMapReader::Tail_Or(plan, param, src, dst, dstByteCount);
            }
            else
            {
                Or(*pattern, place, src, (param.m_lineBitCount + 7) >> 3, dst,
                   BoardBytes_Clipped(param.m_lineBitCount, entrySize, dstByteCount));
            }
            return true;
        }
    }

    // Four neighbouring bytes of every frame.
    static void Blocks_Store(bool bAscending, const unsigned char* src, unsigned char* dst, int frameByteCount)
    {
        unsigned char columns[blockCount * blockRoom];
        MapKernel_Get().m_pBlocks_Interleave(src, bAscending, columns);
        for (int i = 0; i < blockByteCount; ++i)
        {
            std::memcpy(dst + i * frameByteCount, columns + blockCount * i, blockCount);
        }
    }

    // Both planes of the whole source bytes: in each a frame is a field of two neighbouring pixels, as of a map with
    // 2-bit pixels.
    static void Planes_Or(const SMapKernel& kernel, const SFieldPattern& pattern, unsigned place,
                          const unsigned char* src, int byteCount, int entrySize, unsigned char* dst, int planeDistance)
    {
        const FieldFunction Or = kernel.m_pField_Or[Field_TwoBit][pattern.m_groupSizeIndex];
        constexpr int pieceSize = 4 * splitRoom; // source bytes
        unsigned char high[pieceSize / 2];
        unsigned char low[pieceSize / 2];
        for (int done = 0; done < byteCount; done += pieceSize)
        {
            const int count = std::min(pieceSize, byteCount - done);
            unsigned char* out = dst + done * entrySize;
            kernel.m_pPlanes_Split(src + done, count, high, low);
            Or(pattern, place, high, (count + 1) / 2, out, count * entrySize);
            Or(pattern, place, low, (count + 1) / 2, out + planeDistance, count * entrySize);
        }
    }
};
