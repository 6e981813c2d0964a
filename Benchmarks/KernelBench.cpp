// What the kernels of the data maps cost, next to the cheapest loop that touches the same bytes.
//
//   KernelBench [--kernel NAME] [--only TEXT] [--rounds N] [--json FILE]
//
// Every line of the result is a ratio of two things measured in turns on one thread, in cache where it does not say
// otherwise: many short rounds, the median of each side. README.md beside this file tells how to read it. Without
// --kernel it measures the kernel that the library chose.
#include "Benchmarks/KernelLimits.h"
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
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;
using Work = std::function<void()>;

struct SOptions
{
    std::string kernel;
    std::string only; // measures those lines only whose name begins so
    std::string json;
    int rounds = 41;
};

// One line of the result.
struct SFigure
{
    std::string name;
    std::string goal;
    double value = 0;
    std::string unit;
    double ratio = 0; // to the limit; 0: there is none
};

std::vector<SFigure> figures;

void Figure_Add(const SFigure& figure)
{
    std::printf("%-46s %9.3f %-14s %7.3f   %s\n", figure.name.c_str(), figure.value, figure.unit.c_str(), figure.ratio,
                figure.goal.c_str());
    std::fflush(stdout);
    figures.push_back(figure);
}

double Seconds_Of(const Work& work, int repeats)
{
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < repeats; ++i)
    {
        work();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() / repeats;
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// How often to repeat a work for one round of about 50 microseconds.
int Repeats_For(const Work& work)
{
    Seconds_Of(work, 100);
    return std::max(1, static_cast<int>(50e-6 / Seconds_Of(work, 100)));
}

struct SPairTimes
{
    double work = 0;
    double limit = 0;
};

// Both in turns, so that whatever else the machine does falls on both.
SPairTimes Pair_Measure(const SOptions& options, const Work& work, const Work& limit)
{
    const int workRepeats = Repeats_For(work);
    const int limitRepeats = Repeats_For(limit);
    std::vector<double> workTimes;
    std::vector<double> limitTimes;
    for (int i = 0; i < options.rounds; ++i)
    {
        workTimes.push_back(Seconds_Of(work, workRepeats));
        limitTimes.push_back(Seconds_Of(limit, limitRepeats));
    }
    return {Median(workTimes), Median(limitTimes)};
}

// The units of one board line, random pixels, and the board line.
struct SLineSet
{
    SLineSet(std::unique_ptr<CPrintUnitDataMap_Base> dataMap, int unitCount, int srcBitCount, int dstBytes)
        : map(std::move(dataMap)), plan(MapPlan_Get(*map)), dst(static_cast<std::size_t>(dstBytes) + 64)
    {
        std::mt19937 random(1);
        for (int unit = 0; unit < unitCount; ++unit)
        {
            Bytes& bytes = sources.emplace_back(static_cast<std::size_t>((srcBitCount + 7) / 8));
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random()); });
        }
        scratch = map->CustomParam_Create();
        for (int unit = 0; unit < unitCount; ++unit)
        {
            SSrcBandLine line;
            line.m_param.m_unitIndex = unit;
            line.m_param.m_unitDirection = 1;
            line.m_param.m_lineBitCount = srcBitCount;
            line.m_param.m_customParam = scratch;
            line.m_pLine = sources[static_cast<std::size_t>(unit)].data();
            lines.push_back(line);
        }
        auto address = reinterpret_cast<std::uintptr_t>(dst.data());
        board = dst.data() + (64 - address % 64) % 64; // as band memory begins
        boardBytes = dstBytes;
    }
    ~SLineSet() { map->CustomParam_Release(scratch); }
    SLineSet(const SLineSet&) = delete;
    SLineSet& operator=(const SLineSet&) = delete;

    void MapOneByOne() const
    {
        for (const SSrcBandLine& line : lines)
        {
            map->MapData_Line(line.m_param, line.m_pLine, board, boardBytes);
        }
    }
    // With a plan that was made before, as a line generator has one.
    void MapAll() const
    {
        CMapEngine::Lines_Map(plan, lines.data(), static_cast<int>(lines.size()), board, boardBytes);
    }

    std::unique_ptr<CPrintUnitDataMap_Base> map;
    SMapPlan plan;
    std::vector<Bytes> sources;
    std::vector<SSrcBandLine> lines;
    Bytes dst;
    unsigned char* board = nullptr;
    int boardBytes = 0;
    void* scratch = nullptr;
};

template<class TMap, class... TArguments>
std::unique_ptr<CPrintUnitDataMap_Base> Map_Make(TArguments... arguments)
{
    auto map = std::make_unique<TMap>();
    if (!map->Init(arguments...))
    {
        throw std::runtime_error("the map refuses its geometry");
    }
    return map;
}

const SLimitLoops& Limits_ForKernel()
{
    const std::string_view kernel = CDataMapKernel::Current_Get();
    return kernel.substr(0, 6) == "avx512" ? limitLoops64 : kernel == "avx2" ? limitLoops32 : limitLoops16;
}

// One style in one geometry.
struct SCase
{
    std::string name;
    std::function<std::unique_ptr<CPrintUnitDataMap_Base>()> make;
    int unitCount = 0;
    int srcBitCount = 0; // bits of a source line
    int boardBytes = 0;
};

// MapData_Line for every unit against `limit` for every unit.
void Line_Measure(const SOptions& options, const SCase& one, const std::string& goal,
                  const std::function<void(const SLineSet&, int unit)>& limit)
{
    const std::string name = "line, " + one.name;
    if (name.rfind(options.only, 0) != 0)
    {
        return;
    }
    const SLineSet set(one.make(), one.unitCount, one.srcBitCount, one.boardBytes);
    const SPairTimes times = Pair_Measure(
        options, [&] { set.MapOneByOne(); },
        [&]
        {
            for (int unit = 0; unit < one.unitCount; ++unit)
            {
                limit(set, unit);
            }
        });
    Figure_Add({name, goal, times.work / one.unitCount * 1e9, "ns/unit line", times.work / times.limit});
}

// All units in one pass, against a copy of the board line.
void All_Measure(const SOptions& options, const SCase& one)
{
    const std::string name = "all units, " + one.name;
    if (name.rfind(options.only, 0) != 0)
    {
        return;
    }
    const SLineSet set(one.make(), one.unitCount, one.srcBitCount, one.boardBytes);
    Bytes copy(static_cast<std::size_t>(one.boardBytes));
    const SPairTimes times = Pair_Measure(
        options, [&] { set.MapAll(); }, [&] { std::memcpy(copy.data(), set.board, copy.size()); });
    Figure_Add({name, ">= 8 GB/s", one.boardBytes / times.work * 1e-9, "GB/s", times.limit / times.work});
}

std::vector<SCase> FrameCases()
{
    std::vector<SCase> cases;
    for (const int pixels : {400, 4096})
    {
        const std::string tail = ", " + std::to_string(pixels) + " px";
        cases.push_back(
            {"style 1, 16 bits" + tail, [] { return Map_Make<CPrintUnitDataMap_1>(16); }, 16, pixels, 2 * pixels});
        for (const int width : {16, 32, 64, 128})
        {
            const std::string size = ", " + std::to_string(width) + " bits" + tail;
            const int boardBytes = width / 8 * pixels;
            cases.push_back({"style 2" + size,
                             [width] { return Map_Make<CPrintUnitDataMap_2>(EDotSizeMode::Big, width); }, width / 2,
                             pixels, boardBytes});
            cases.push_back({"style 5" + size, [width] { return Map_Make<CPrintUnitDataMap_5>(1, width); }, width,
                             pixels, boardBytes});
            cases.push_back({"style 5 2-bit" + size, [width] { return Map_Make<CPrintUnitDataMap_5>(2, width); },
                             width / 2, 2 * pixels, boardBytes});
        }
    }
    return cases;
}

void FrameLines_Measure(const SOptions& options)
{
    const SLimitLoops& limits = Limits_ForKernel();
    for (const SCase& one : FrameCases())
    {
        Line_Measure(options, one, "<= 1.5 x OR",
                     [&](const SLineSet& set, int unit)
                     { limits.m_pOr(set.board, set.boardBytes, static_cast<unsigned char>(unit)); });
    }
}

std::vector<SCase> ColumnCases(bool bDots)
{
    std::vector<SCase> cases;
    for (const int pixels : {400, 4096})
    {
        for (const int width : {16, 32, 64})
        {
            const std::string size = ", " + std::to_string(width) + " columns, " + std::to_string(pixels) + " px";
            if (bDots)
            {
                cases.push_back({"style 7" + size,
                                 [width] { return Map_Make<CPrintUnitDataMap_7>(EDotSizeMode::Big, width); }, width,
                                 pixels, pixels / 4 * width});
            }
            else
            {
                cases.push_back({"style 6" + size, [width] { return Map_Make<CPrintUnitDataMap_6>(1, width); }, width,
                                 pixels, pixels / 8 * width});
            }
        }
    }
    return cases;
}

std::vector<SCase> PlaneCases()
{
    std::vector<SCase> cases;
    for (const int pixels : {400, 4096})
    {
        for (const int width : {8, 16, 32, 64})
        {
            cases.push_back({"style 8, " + std::to_string(width) + " bits, " + std::to_string(pixels) + " px",
                             [width] { return Map_Make<CPrintUnitDataMap_8>(width); }, width, 2 * pixels,
                             2 * pixels * width / 8});
        }
    }
    return cases;
}

std::vector<SCase> BlockCases()
{
    std::vector<SCase> cases;
    for (const int width : {32, 64, 128})
    {
        cases.push_back({"style 03, " + std::to_string(width) + " bits, 400 px",
                         [width] { return Map_Make<CPrintUnitDataMap_03>(1, width); }, width / 4, 400,
                         100 * width / 8});
    }
    return cases;
}

std::vector<SCase> ChunkCases()
{
    std::vector<SCase> cases;
    for (const int width : {16, 64})
    {
        cases.push_back({"style 03_01, " + std::to_string(width) + " columns, 400 px",
                         [width] { return Map_Make<CPrintUnitDataMap_03_01>(1, width); }, width / 4, 400, 13 * width});
    }
    return cases;
}

void OtherLines_Measure(const SOptions& options)
{
    const SLimitLoops& limits = Limits_ForKernel();
    const std::string goal = "<= 2 x cheapest";
    const auto Or = [&](const SLineSet& set, int unit)
    { limits.m_pOr(set.board, set.boardBytes, static_cast<unsigned char>(unit)); };
    for (const SCase& one : BlockCases())
    {
        Line_Measure(options, one, goal, Or);
    }
    for (const SCase& one : ChunkCases())
    {
        Line_Measure(options, one, goal,
                     [&](const SLineSet& set, int unit)
                     { limits.m_pStore4(set.board + 4 * unit, 13, set.map->DataFrameWidth(), 1); });
    }
    for (const bool bDots : {false, true})
    {
        for (const SCase& one : ColumnCases(bDots))
        {
            Line_Measure(options, one, goal,
                         [&](const SLineSet& set, int unit)
                         {
                             const int width = set.map->DataFrameWidth();
                             limits.m_pStore(set.board + unit, set.boardBytes / width, width, 1);
                         });
        }
    }
    for (const SCase& one : PlaneCases())
    {
        Line_Measure(options, one, goal, Or);
    }
}

void AllUnits_Measure(const SOptions& options)
{
    for (const auto& cases :
         {FrameCases(), BlockCases(), ChunkCases(), ColumnCases(false), ColumnCases(true), PlaneCases()})
    {
        for (const SCase& one : cases)
        {
            All_Measure(options, one);
        }
    }
}

// Whole bands that no cache holds: all units of every line, against a copy of the board band.
void Memory_Measure(const SOptions& options)
{
    const std::string name = "all units from memory, style 5, 16 bits, 400 px";
    if (name.rfind(options.only, 0) != 0)
    {
        return;
    }
    constexpr int lineCount = 35'000;
    constexpr int srcStride = 50;
    constexpr int dstStride = 800;
    SLineSet set(Map_Make<CPrintUnitDataMap_5>(1, 16), 16, 400, dstStride);
    std::vector<Bytes> bands(16, Bytes(static_cast<std::size_t>(lineCount) * srcStride, 0x5A));
    Bytes board(static_cast<std::size_t>(lineCount) * dstStride, 1);
    Bytes copy(board.size(), 1);
    const Work map = [&]
    {
        for (std::size_t line = 0; line < lineCount; ++line)
        {
            for (std::size_t unit = 0; unit < bands.size(); ++unit)
            {
                set.lines[unit].m_pLine = bands[unit].data() + line * srcStride;
            }
            CMapEngine::Lines_Map(set.plan, set.lines.data(), 16, board.data() + line * dstStride, dstStride);
        }
    };
    std::vector<double> mapTimes;
    std::vector<double> copyTimes;
    for (int i = 0; i < std::min(options.rounds, 15); ++i)
    {
        mapTimes.push_back(Seconds_Of(map, 1));
        copyTimes.push_back(Seconds_Of([&] { std::memcpy(copy.data(), board.data(), board.size()); }, 1));
    }
    Figure_Add({name, ">= 0.6 x copy", static_cast<double>(board.size()) / Median(mapTimes) * 1e-9, "GB/s",
                Median(copyTimes) / Median(mapTimes)});
}

void Json_Write(const std::string& path)
{
    std::ofstream file(path);
    file << "{\"kernel\": \"" << CDataMapKernel::Current_Get() << "\", \"figures\": [\n";
    for (std::size_t i = 0; i < figures.size(); ++i)
    {
        const SFigure& one = figures[i];
        file << "  {\"name\": \"" << one.name << "\", \"goal\": \"" << one.goal << "\", \"figure\": " << one.value
             << ", \"unit\": \"" << one.unit << "\", \"ratio\": " << one.ratio << '}'
             << (i + 1 < figures.size() ? ",\n" : "\n");
    }
    file << "]}\n";
    if (!file.flush())
    {
        throw std::runtime_error("cannot write " + path);
    }
}

SOptions Options_Read(int argumentCount, char** arguments)
{
    SOptions options;
    for (int i = 1; i < argumentCount; i += 2)
    {
        const std::string_view name = arguments[i];
        if (i + 1 == argumentCount ||
            (name != "--kernel" && name != "--only" && name != "--rounds" && name != "--json"))
        {
            throw std::runtime_error("usage: KernelBench [--kernel NAME] [--only TEXT] [--rounds N] [--json FILE]");
        }
        const char* value = arguments[i + 1];
        if (name == "--kernel")
        {
            options.kernel = value;
        }
        else if (name == "--only")
        {
            options.only = value;
        }
        else if (name == "--json")
        {
            options.json = value;
        }
        else
        {
            options.rounds = std::max(1, std::stoi(value));
        }
    }
    return options;
}
} // namespace

int main(int argumentCount, char** arguments)
{
    try
    {
        const SOptions options = Options_Read(argumentCount, arguments);
        if (!options.kernel.empty() && !CDataMapKernel::Current_Set(options.kernel.c_str()))
        {
            throw std::runtime_error("no kernel " + options.kernel + " on this machine");
        }
        std::printf("kernel %s\n%-46s %9s %-14s %7s   %s\n", CDataMapKernel::Current_Get(), "work", "figure", "unit",
                    "ratio", "goal");
        FrameLines_Measure(options);
        OtherLines_Measure(options);
        AllUnits_Measure(options);
        Memory_Measure(options);
        if (!options.json.empty())
        {
            Json_Write(options.json);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
