// Maps: any lines of any layout, by every kernel that this machine runs, through MapData_Line and all at once, against
// the twin. Sources and destination are exactly as long as a map may touch, so that the address checker sees more.
#include "DataMap/DataMapKernel.h"
#include "DataMap/Plan/MapEngine.h"
#include "Tests/DataMap/MapTestSupport.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace
{

constexpr ETwinStyle allStyles[] = {ETwinStyle::Style_1,  ETwinStyle::Style_2,    ETwinStyle::Style_5,
                                    ETwinStyle::Style_6,  ETwinStyle::Style_7,    ETwinStyle::Style_8,
                                    ETwinStyle::Style_03, ETwinStyle::Style_03_01};

struct SLine
{
    SSrcBandDataParam param;
    std::unique_ptr<unsigned char[]> src; // on the heap, and no byte longer than it needs to be
    std::size_t size = 0;
};

STwinStyle Layout_Take(CFuzzInput& input)
{
    STwinStyle layout = {allStyles[input.Byte() % std::size(allStyles)], input.Number(1, 2), 16, input.Number(1, 3)};
    switch (layout.style)
    {
    case ETwinStyle::Style_1:
        break;
    case ETwinStyle::Style_5:
        layout.frameWidth = input.Number(1, 100) * layout.srcBitCount; // 2-bit pixels need an even frame
        break;
    case ETwinStyle::Style_8:
        layout.frameWidth = input.Number(1, 9) * 8;
        break;
    case ETwinStyle::Style_03:
        layout.frameWidth = input.Number(16, 80) * 2;
        break;
    case ETwinStyle::Style_03_01:
        layout.frameWidth = input.Number(4, 40);
        break;
    default:
        layout.frameWidth = input.Number(2, 70);
        break;
    }
    return layout;
}

SLine Line_Take(CFuzzInput& input, const STwinStyle& layout)
{
    const bool bBlocks = layout.style == ETwinStyle::Style_03 || layout.style == ETwinStyle::Style_03_01;
    SLine line;
    line.param = Param_Make(input.Number(0, layout.UnitCount() - 1), input.Number(0, 1200), input.Number(0, 3));
    line.size = bBlocks ? 50 : static_cast<std::size_t>((line.param.m_lineBitCount + 7) / 8);
    line.src = std::make_unique<unsigned char[]>(line.size);
    const auto pattern = input.Bytes(input.Byte() % 16 + 1); // short, so that inputs stay short
    const unsigned turn = input.Byte();
    for (std::size_t i = 0; i < line.size; ++i)
    {
        line.src[i] = static_cast<unsigned char>(pattern[i % pattern.size()] + turn * (i / pattern.size()));
    }
    return line;
}

Bytes Twin_Map(const STwinStyle& layout, const std::vector<SLine>& lines, Bytes dst, int dstByteCount)
{
    for (const SLine& line : lines)
    {
        CBoardTwin(layout).Line_Map({line.param.m_unitIndex,
                                     line.param.m_unitDirection,
                                     line.param.m_lineBitCount,
                                     {line.src.get(), line.size}},
                                    dst, dstByteCount);
    }
    return dst;
}

Bytes OneByOne_Map(const CPrintUnitDataMap_Base& map, const std::vector<SLine>& lines, Bytes dst, int dstByteCount)
{
    const CMapScratch scratch(map);
    for (const SLine& line : lines)
    {
        SSrcBandDataParam param = line.param;
        param.m_customParam = scratch.Get();
        Fuzz_Expect(map.MapData_Line(param, line.src.get(), dst.data(), dstByteCount), "no line is refused");
    }
    return dst;
}

Bytes AllAtOnce_Map(const SMapPlan& plan, const std::vector<SLine>& lines, Bytes dst, int dstByteCount)
{
    std::vector<SSrcBandLine> all;
    for (const SLine& line : lines)
    {
        all.push_back({line.param, line.src.get()});
    }
    CMapEngine::Lines_Map(plan, all.data(), static_cast<int>(all.size()), dst.data(), dstByteCount);
    return dst;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    CFuzzInput input(bytes, size);
    const STwinStyle layout = Layout_Take(input);
    std::vector<SLine> lines;
    for (int count = input.Number(1, 12); count > 0; --count)
    {
        lines.push_back(Line_Take(input, layout));
    }
    const int dstByteCount = input.Number(0, 9000);
    std::size_t needed = 1; // a board line is never a null pointer
    for (const SLine& line : lines)
    {
        needed =
            std::max(needed, static_cast<std::size_t>(DstSize_Needed(layout, line.param.m_lineBitCount, dstByteCount)));
    }
    const Bytes before(needed, static_cast<unsigned char>(input.Flag() ? input.Byte() : 0));
    const Bytes expected = Twin_Map(layout, lines, before, dstByteCount);
    const auto map = Map_Make(layout);
    const SMapPlan plan = MapPlan_Get(*map);
    for (int i = 0; i < CDataMapKernel::Count_Get(); ++i)
    {
        if (CDataMapKernel::Current_Set(CDataMapKernel::Name_Get(i)))
        {
            Fuzz_Expect(OneByOne_Map(*map, lines, before, dstByteCount) == expected, "one line after the other");
            Fuzz_Expect(!plan.IsThere() || AllAtOnce_Map(plan, lines, before, dstByteCount) == expected,
                        "all lines at once");
        }
    }
    return 0;
}
