// What the band converter costs: whole bands of 1, 100 and 30,000 lines with 1, 2 and 4 line generators.
//
// One band is 16 units of 400 one-bit nozzles into 16-bit frames (style 5): 800 board bytes per line. Every benchmark
// reports, beside its own time, that of a plain copy of as many board bytes, taken in turns with it: the limit that any
// conversion is held against. BM_MapOnly maps the same lines on one thread without a converter: the difference to
// BM_Converter with one generator is what handing lines around costs.
#include "DataMap/PrintUnitDataMap_5.h"
#include "KelCommon/KelWait.h"
#include "Platform/BandData/BandData.h"
#include "Unit2Board/Unit2Board.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

namespace
{

constexpr int unitCount = 16;
constexpr int nozzleCount = 400;
constexpr int frameWidth = 16;

using Seconds = std::chrono::duration<double>;

template<class Work>
double Seconds_Of(Work work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return Seconds(std::chrono::steady_clock::now() - begin).count();
}

void Require(bool bSuccess, const char* what)
{
    if (!bSuccess)
    {
        throw std::runtime_error(what);
    }
}

// The bands of one step, random pixels, and the board band.
class CStep
{
public:
    explicit CStep(int lineCount)
    {
        Require(m_map.Init(1, frameWidth), "the map");
        const int boardBits = m_map.SrcPixelCount_2_BoardBitCount(nozzleCount);
        Require(m_board.Create(boardBits, lineCount, 1, 1) && m_copy.Create(boardBits, lineCount, 1, 1), "the board");
        std::mt19937 random(1);
        for (int unit = 0; unit < unitCount; ++unit)
        {
            auto& band = m_bands.emplace_back(std::make_unique<CBandData>());
            Require(band->Create(nozzleCount, lineCount, 1, 1), "a unit band");
            band->m_unitIndex = unit;
            std::generate_n(band->m_pData, band->m_dataSize, [&] { return static_cast<unsigned char>(random()); });
            m_pointers.push_back(band.get());
        }
        std::fill_n(m_copy.m_pData, m_copy.m_dataSize, static_cast<unsigned char>(1)); // memory that is really there
    }

    void Convert(int generatorCount)
    {
        CUnit2Board converter;
        Require(converter.Create(generatorCount, m_pointers.data(), unitCount, m_board, m_map), "the converter");
        Require(converter.WaitExit(kelWait_WithoutLimit), "the converter's end");
    }

    void MapOnly()
    {
        for (int line = 0; line < m_board.m_height; ++line)
        {
            for (const CBandData* band : m_pointers)
            {
                SSrcBandDataParam param;
                param.m_unitIndex = band->m_unitIndex;
                param.m_lineBitCount = nozzleCount;
                m_map.MapData_Line(param, band->m_pData + line * band->m_bytesPerLine,
                                   m_board.m_pData + line * m_board.m_bytesPerLine, m_board.m_bytesPerLine);
            }
        }
    }

    // Seconds for one copy of the board's bytes. Small boards are copied often, for the clock's sake.
    double CopySeconds()
    {
        const int rounds = std::max(1, 10'000 / m_board.m_height);
        return Seconds_Of(
                   [&]
                   {
                       for (int i = 0; i < rounds; ++i)
                       {
                           std::memcpy(m_copy.m_pData, m_board.m_pData, static_cast<std::size_t>(m_board.m_dataSize));
                           benchmark::ClobberMemory();
                       }
                   }) /
               rounds;
    }

private:
    CPrintUnitDataMap_5 m_map;
    std::vector<std::unique_ptr<CBandData>> m_bands;
    std::vector<CBandData*> m_pointers;
    CBandData m_board;
    CBandData m_copy;
};

// Runs `work` and the copy in turns and reports both.
template<class Work>
void Measure(benchmark::State& state, CStep& step, int lineCount, Work work)
{
    work(); // the first one pays for the memory's pages
    double workSeconds = 0;
    double copySeconds = 0;
    for (const auto _ : state)
    {
        const double seconds = Seconds_Of(work);
        state.SetIterationTime(seconds);
        workSeconds += seconds;
        copySeconds += step.CopySeconds();
    }
    const auto iterations = static_cast<double>(state.iterations());
    state.counters["copy_us"] = copySeconds / iterations * 1e6;
    state.counters["ratio"] = workSeconds / copySeconds;
    state.counters["lines_per_s"] = lineCount * iterations / workSeconds;
}

void BM_Converter(benchmark::State& state)
{
    const auto lineCount = static_cast<int>(state.range(0));
    const auto generatorCount = static_cast<int>(state.range(1));
    CStep step(lineCount);
    Measure(state, step, lineCount, [&] { step.Convert(generatorCount); });
}

void BM_MapOnly(benchmark::State& state)
{
    const auto lineCount = static_cast<int>(state.range(0));
    CStep step(lineCount);
    Measure(state, step, lineCount, [&] { step.MapOnly(); });
}

} // namespace

BENCHMARK(BM_MapOnly)->ArgName("lines")->Arg(1)->Arg(100)->Arg(30'000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Converter)
    ->ArgNames({"lines", "generators"})
    ->ArgsProduct({{1, 100, 30'000}, {1, 2, 4}})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
