// Maps board lines with one kernel, for an instruction counter to watch: KernelCount KERNEL STYLE line|all LINES
//
// All print units of a board with 400 pixels each, one unit's line after the other or all in one pass.
// CheckKernelCounts.cmake runs it twice and takes the difference, so that what is not mapping does not count. Prints
// the bytes of a board line.
#include "DataMap/DataMapKernel.h"
#include "DataMap/Plan/MapEngine.h"
#include "DataMap/PrintUnitDataMap_03.h"
#include "DataMap/PrintUnitDataMap_03_01.h"
#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "DataMap/PrintUnitDataMap_6.h"
#include "DataMap/PrintUnitDataMap_7.h"
#include "DataMap/PrintUnitDataMap_8.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

namespace
{

constexpr int pixelCount = 400;

struct SBoard
{
    std::unique_ptr<CPrintUnitDataMap_Base> map; // null if there is no such style
    int unitCount = 16;
    int bitsPerPixel = 1;
};

template<class TMap, class... TArguments>
SBoard Board_Make(int unitCount, int bitsPerPixel, TArguments... arguments)
{
    auto map = std::make_unique<TMap>();
    return map->Init(arguments...) ? SBoard{std::move(map), unitCount, bitsPerPixel} : SBoard{};
}

SBoard Board_Make(std::string_view style)
{
    constexpr auto bigDrop = static_cast<EDotSizeMode>(3);
    return style == "1"           ? Board_Make<CPrintUnitDataMap_1>(16, 1, 16)
           : style == "2"         ? Board_Make<CPrintUnitDataMap_2>(8, 1, bigDrop, 16)
           : style == "5"         ? Board_Make<CPrintUnitDataMap_5>(16, 1, 1, 16)
           : style == "5_two_bit" ? Board_Make<CPrintUnitDataMap_5>(8, 2, 2, 16)
           : style == "6"         ? Board_Make<CPrintUnitDataMap_6>(16, 1, 1, 16)
           : style == "7"         ? Board_Make<CPrintUnitDataMap_7>(16, 1, bigDrop, 16)
           : style == "8"         ? Board_Make<CPrintUnitDataMap_8>(16, 2, 16)
           : style == "03"        ? Board_Make<CPrintUnitDataMap_03>(8, 1, 1, 32)
           : style == "03_01"     ? Board_Make<CPrintUnitDataMap_03_01>(4, 1, 1, 16)
                                  : SBoard{};
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 5 || !CDataMapKernel::Current_Set(arguments[1]))
    {
        return 2;
    }
    const SBoard board = Board_Make(arguments[2]);
    if (board.map == nullptr)
    {
        return 2;
    }
    const CPrintUnitDataMap_Base& map = *board.map;
    const SMapPlan plan = MapPlan_Get(map); // as a line generator does, once
    const bool bAll = std::string_view(arguments[3]) == "all";
    const int lineBitCount = pixelCount * board.bitsPerPixel;
    // Lines of two planes are described by their bits.
    const bool bPlanes = std::string_view(arguments[2]) == "8";
    const int byteCount = map.SrcPixelCount_2_BoardBitCount(bPlanes ? lineBitCount : pixelCount) / 8;
    const std::vector<unsigned char> src(static_cast<std::size_t>(lineBitCount / 8), 0xA5);
    std::vector<unsigned char> dst(static_cast<std::size_t>(byteCount));
    std::vector<SSrcBandLine> lines(static_cast<std::size_t>(board.unitCount));
    void* scratch = map.CustomParam_Create();
    for (int unit = 0; unit < board.unitCount; ++unit)
    {
        SSrcBandLine& line = lines[static_cast<std::size_t>(unit)];
        line.m_param.m_unitIndex = unit;
        line.m_param.m_lineBitCount = lineBitCount;
        line.m_param.m_customParam = scratch;
        line.m_pLine = src.data();
    }
    for (int i = std::atoi(arguments[4]); i > 0; --i)
    {
        if (bAll)
        {
            CMapEngine::Lines_Map(plan, lines.data(), board.unitCount, dst.data(), byteCount);
            continue;
        }
        for (const SSrcBandLine& line : lines)
        {
            map.MapData_Line(line.m_param, line.m_pLine, dst.data(), byteCount);
        }
    }
    map.CustomParam_Release(scratch);
    std::printf("%d\n", byteCount);
    const bool bMapped = std::any_of(dst.begin(), dst.end(), [](unsigned char byte) { return byte != 0; });
    return bMapped ? 0 : 1;
}
