// One map, many threads: the same bytes as one thread alone, with nothing for the thread checker to see.
#include "Tests/DataMap/MapTestSupport.h"

#include <thread>

namespace
{
constexpr int threadCount = 8;
constexpr int lineCount = 64;

// The board line of line number `line`, mapped with `scratch`.
Bytes Line_Number(const CPrintUnitDataMap_Base& map, int line, void* scratch)
{
    std::mt19937 random(static_cast<unsigned>(line));
    const Bytes src = Bytes_Random(random, 50);
    Bytes dst(static_cast<std::size_t>((map.SrcPixelCount_2_BoardBitCount(400) + 7) / 8));
    SSrcBandDataParam param = Param_Make(line % 2, 400, 1 + line % 3);
    param.m_customParam = scratch;
    map.MapData_Line(param, src.data(), dst.data(), static_cast<int>(dst.size()));
    return dst;
}

// Every line of the map, by one thread.
std::vector<Bytes> Lines_All(const CPrintUnitDataMap_Base& map)
{
    const CMapScratch scratch(map);
    std::vector<Bytes> lines;
    for (int line = 0; line < lineCount; ++line)
    {
        lines.push_back(Line_Number(map, line, scratch.Get()));
    }
    return lines;
}
} // namespace

TEST(MapConcurrency, OneMapSharedByManyThreadsGivesEachTheSameBytes)
{
    for (const STwinStyle& style :
         {STwinStyle{ETwinStyle::Style_1, 1, 16, 1}, STwinStyle{ETwinStyle::Style_2, 1, 16, 2},
          STwinStyle{ETwinStyle::Style_5, 1, 16, 1}, STwinStyle{ETwinStyle::Style_6, 1, 16, 1},
          STwinStyle{ETwinStyle::Style_7, 1, 16, 3}, STwinStyle{ETwinStyle::Style_8, 1, 16, 1},
          STwinStyle{ETwinStyle::Style_03, 1, 32, 1}, STwinStyle{ETwinStyle::Style_03_01, 1, 8, 1}})
    {
        const auto map = Map_Make(style);
        const std::vector<Bytes> expected = Lines_All(*map);
        std::vector<std::vector<Bytes>> results(threadCount);
        std::vector<std::thread> threads;
        for (auto& result : results)
        {
            threads.emplace_back([&map, &result] { result = Lines_All(*map); });
        }
        for (auto& thread : threads)
        {
            thread.join();
        }
        for (const auto& result : results)
        {
            EXPECT_EQ(result, expected) << "style " << static_cast<int>(style.style);
        }
    }
}

TEST(MapConcurrency, UnitsOfOneBoardLineWithByteColumnsCanBeMappedInParallel)
{
    for (const STwinStyle& style :
         {STwinStyle{ETwinStyle::Style_6, 1, threadCount, 1}, STwinStyle{ETwinStyle::Style_7, 1, threadCount, 3}})
    {
        const auto map = Map_Make(style);
        std::mt19937 random(7);
        const Bytes src = Bytes_Random(random, 50);
        Bytes expected(static_cast<std::size_t>(map->SrcPixelCount_2_BoardBitCount(400) / 8));
        Bytes dst(expected.size());
        std::vector<std::thread> threads;
        for (int unit = 0; unit < threadCount; ++unit)
        {
            CBoardTwin(style).Line_Map({unit, 1, 400 - unit, src}, expected, static_cast<int>(expected.size()));
            threads.emplace_back(
                [&, unit] {
                    map->MapData_Line(Param_Make(unit, 400 - unit), src.data(), dst.data(),
                                      static_cast<int>(dst.size()));
                });
        }
        for (auto& thread : threads)
        {
            thread.join();
        }
        EXPECT_EQ(dst, expected);
    }
}
