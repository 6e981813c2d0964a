// Mapping a line takes nothing from the heap: neither one source line nor all of a board line at once, with any kernel.
//
// A program of its own, because AllocationCount.cpp replaces the operators that everything allocates through.
#include "Tests/DataMap/KernelSupport.h"
#include "Tests/Support/AllocationCount.h"

namespace
{
const std::vector<STwinStyle> styles = {
    {ETwinStyle::Style_1, 1, 16, 1},  {ETwinStyle::Style_2, 1, 16, 3},  {ETwinStyle::Style_5, 1, 128, 1},
    {ETwinStyle::Style_5, 2, 16, 1},  {ETwinStyle::Style_6, 1, 16, 1},  {ETwinStyle::Style_7, 1, 16, 2},
    {ETwinStyle::Style_8, 1, 16, 1},  {ETwinStyle::Style_03, 1, 64, 1}, {ETwinStyle::Style_03_01, 1, 32, 1},
    {ETwinStyle::Style_5, 1, 264, 1}, {ETwinStyle::Style_6, 1, 300, 1},
};
} // namespace

TEST(MapAllocation, TheCounterSeesAMapBeingMade)
{
    const auto before = Allocation_Count();
    const auto map = Map_Make(styles[0]);
    EXPECT_GE(Allocation_Count(), before + 2); // the object and its table
}

TEST(MapAllocation, MappingALineTakesNothingFromTheHeap)
{
    const Bytes src(200, 0x5A);
    Bytes dst(60'000);
    for (const std::string& name : KernelNames_Available())
    {
        const CKernelGuard guard(name);
        for (const STwinStyle& style : styles)
        {
            const auto map = Map_Make(style);
            const CMapScratch scratch(*map);
            std::vector<SSrcBandLine> lines;
            for (const int unit : {0, 1, 2, 3, 4, 5, 5})
            {
                lines.push_back({Param_Make(unit, 400), src.data()});
                lines.back().m_param.m_customParam = scratch.Get();
            }
            const auto before = Allocation_Count();
            Lines_Map(*map, lines, dst.data(), 60'000);
            const bool bMapped = map->MapData_Line(lines[0].m_param, src.data(), dst.data(), 60'000);
            EXPECT_EQ(Allocation_Count(), before) << name << ", style " << static_cast<int>(style.style);
            EXPECT_TRUE(bMapped);
        }
    }
}
