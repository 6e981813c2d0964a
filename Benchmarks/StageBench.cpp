// The ink-stripe stage from end to end, band after band: unit bands in, board bands out, in steady state.
//
//   StageBench [--curves generators|units|frame|nozzles|inflight|none] [--units N] [--generators N] [--nozzles N]
//              [--lines N] [--frame BITS] [--inflight N] [--bits 1|2] [--pattern noise|full|none|checker]
//              [--stripes N] [--kernel NAME] [--bands N] [--rounds N] [--json FILE]
//
// One producer thread gives filled bands as fast as the stage takes them, without touching their pixels; the main
// thread takes the board bands and deletes them. A figure is the time from one board band to the next, held against a
// plain copy of the same bytes on one core, measured in turns with it. Without options it measures the table: the
// goal's band (16 units, 400 nozzles, 35,000 lines, 2 generators), other numbers of generators, other contents, and one
// and two generators on lines that the scalar kernel maps, where neither memory nor the hand-over of lines is the wall.
// --curves varies one parameter and leaves the others. README.md beside this file tells how to read the result.
#include "Benchmarks/Figures.h"
#include "DataMap/DataMapKernel.h"
#include "KelCommon/KelWait.h"
#include "Platform/BandData/BandMemory.h"
#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/PrintParam/PrintParamGlobal.h"
#include "UnitData2BoardData/UnitData2BoardData_S_AllUnit.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <random>
#include <thread>

namespace
{

struct SCase
{
    int units = 16;  // with a band of their own
    int stripes = 0; // more units, which print stripes
    int generators = 2;
    int nozzles = 400;
    int lines = 35'000;
    int frame = 16;   // bits
    int inFlight = 3; // bands of every unit
    int bits = 1;     // per pixel
    std::string pattern = "noise";
    std::string kernel; // of the data maps; empty: the one that the library chose
};

void Band_Fill(CBandData& band, const std::string& pattern)
{
    const auto size = static_cast<std::size_t>(band.m_dataSize);
    if (pattern == "noise")
    {
        std::mt19937 random(static_cast<unsigned>(band.m_unitIndex));
        std::generate_n(band.m_pData, size, [&] { return static_cast<unsigned char>(random()); });
        return;
    }
    if (pattern == "checker")
    {
        for (int line = 0; line < band.m_height; ++line)
        {
            std::memset(band.m_pData + line * band.m_bytesPerLine, line % 2 == 0 ? 0xAA : 0x55,
                        static_cast<std::size_t>(band.m_bytesPerLine));
        }
        return;
    }
    Require(pattern == "full" || pattern == "none", "a pattern: noise, full, none, checker");
    std::memset(band.m_pData, pattern == "full" ? 0xFF : 0, size);
}

// The job: 1-bit pixels into one frame per pixel, or 2-bit pixels into 2-bit codes.
void Job_Configure(const SCase& one)
{
    constexpr int stripeWidth = 64;
    const bool bTwoBits = one.bits == 2;
    GC_DPOption()->Set({EDataMapStyle::FramePerPixel, EDataPushStyle::ByPixel,
                        bTwoBits ? EPrinterSupportBits::TwoBit : EPrinterSupportBits::OneBit, one.frame});
    GC_DPConfig()->Set({one.generators});
    SCartInfo cart;
    CColorGroupInfo group;
    SPrintParam param;
    auto color = std::make_shared<CBandData>();
    Require(color->Create(one.nozzles, stripeWidth / 2, one.bits, 1), "the stripes' colour");
    for (int id = 0; id < one.units + one.stripes; ++id)
    {
        cart.m_units.push_back({id, 0, 0, 0});
        group.m_units[id] = {0, id};
        param.m_inkStripeColorData[id] = color;
    }
    cart.m_headBaseInfo.m_bandWidth = one.nozzles;
    GC_CartInfo()->Set(cart);
    GC_ColorGroup()->Set({{CColorGroupInfo::Key_Pattern_Layout(), group}});
    param.m_jobInfo.m_bitsPerPixel = one.bits;
    param.m_jobInfo_CurPrint.m_bitsPerPixel = one.bits;
    param.m_maskData.m_maskCount_1 = 1;
    param.m_maskData.m_maskCount_2 = 1;
    param.m_curPrint_JobWidth = one.lines;
    if (one.stripes > 0)
    {
        param.m_curPrint_JobWidth = one.lines - 2 * stripeWidth;
        param.m_inkStripeParam.leftStripeWidth = stripeWidth;
        param.m_inkStripeParam.rightStripeWidth = stripeWidth;
        param.m_inkStripeParam.unitPitch = stripeWidth;
        param.m_inkStripeParam.unitPositionCount = 1;
    }
    DPD_PrintParam()->Set(param);
}

// Has the maps use the named kernel for as long as it lives.
class CKernelInUse
{
public:
    explicit CKernelInUse(const std::string& name) : m_before(CDataMapKernel::Current_Get())
    {
        Require(name.empty() || CDataMapKernel::Current_Set(name.c_str()), "a kernel that this machine can run");
    }
    ~CKernelInUse() { CDataMapKernel::Current_Set(m_before.c_str()); }
    CKernelInUse(const CKernelInUse&) = delete;
    CKernelInUse& operator=(const CKernelInUse&) = delete;

private:
    std::string m_before;
};

// The stage with its inputs and its producer.
class CStageRun
{
public:
    explicit CStageRun(const SCase& one)
    {
        Job_Configure(one);
        for (int unit = 0; unit < one.units; ++unit)
        {
            std::vector<CBandData*> bands;
            for (int i = 0; i < one.inFlight; ++i)
            {
                bands.push_back(new CBandData());
                Require(bands.back()->Create(one.nozzles, one.lines, one.bits, 1), "a unit band");
                bands.back()->m_unitIndex = unit;
                bands.back()->m_bandAttr = 1;
                Band_Fill(*bands.back(), one.pattern);
            }
            m_fifos.push_back(std::make_unique<CBandDataFIFO>("unit"));
            m_fifos.back()->Create(bands.data(), one.inFlight);
            m_inputs.push_back(m_fifos.back().get());
        }
        Require(m_stage.Create(false, m_inputs), "the stage");
        m_producer = std::thread([this] { Bands_Give(); });
    }

    ~CStageRun()
    {
        m_bEnd = true;
        m_producer.join();
        m_stage.Stop();
        m_stage.WaitExit(kelWait_WithoutLimit);
    }
    CStageRun(const CStageRun&) = delete;
    CStageRun& operator=(const CStageRun&) = delete;

    // Lets `count` steps go; the times between their board bands.
    std::vector<double> Bands_Take(int count)
    {
        m_allowed += count;
        std::vector<double> seconds;
        auto last = std::chrono::steady_clock::now();
        for (int i = 0; i < count; ++i)
        {
            CBandData* raw = nullptr;
            while (!m_stage.OutputProcessor_Get()->Out(raw, kelWait_Retried))
            {
                Require(!m_stage.WaitExit(0), "the stage's success");
            }
            const std::unique_ptr<CBandData> board(raw);
            m_boardBytes = board->m_dataSize;
            const auto now = std::chrono::steady_clock::now();
            if (i > 0) // the first one had to start up
            {
                seconds.push_back(std::chrono::duration<double>(now - last).count());
            }
            last = now;
        }
        return seconds;
    }

    int BoardBytes() const { return m_boardBytes; }

private:
    void Bands_Give()
    {
        while (!m_bEnd)
        {
            if (m_given == m_allowed)
            {
                std::this_thread::sleep_for(std::chrono::microseconds(200));
                continue;
            }
            for (auto& fifo : m_fifos)
            {
                CBandData* band = nullptr;
                while (!fifo->Empty_Out(band, kelWait_Retried))
                {
                    if (m_bEnd)
                    {
                        return;
                    }
                }
                fifo->Full_In(band, kelWait_Retried);
            }
            ++m_given;
        }
    }

    std::vector<std::unique_ptr<CBandDataFIFO>> m_fifos;
    std::vector<CBandDataFIFO*> m_inputs;
    CUnitData2BoardData_S_AllUnit m_stage;
    std::thread m_producer;
    std::atomic<bool> m_bEnd{false};
    std::atomic<int> m_allowed{0};
    int m_given = 0; // the producer's
    int m_boardBytes = 0;
};

// A plain copy of `size` bytes on one core, from and to memory that is warm.
class CCopy
{
public:
    explicit CCopy(std::size_t size) : m_from(size, 1), m_to(size, 2) {}

    double Seconds()
    {
        return Seconds_Of([this] { std::memcpy(m_to.data(), m_from.data(), m_from.size()); });
    }

private:
    std::vector<unsigned char> m_from;
    std::vector<unsigned char> m_to;
};

struct SEffort
{
    int rounds;
    int bands; // per round
};

void Case_Measure(CFigures& figures, const SCase& one, const SEffort& effort, const std::string& name,
                  const std::string& goal)
{
    const CKernelInUse kernel(one.kernel);
    CStageRun run(one);
    run.Bands_Take(effort.bands); // memory and threads become warm
    CCopy copy(static_cast<std::size_t>(run.BoardBytes()));
    copy.Seconds();
    const auto freshBefore = CBandMemory::Statistic_Get().m_freshBlocks;
    std::vector<double> bands;
    std::vector<double> copies;
    for (int round = 0; round < effort.rounds; ++round)
    {
        const auto seconds = run.Bands_Take(effort.bands);
        bands.insert(bands.end(), seconds.begin(), seconds.end());
        for (int i = 0; i < 3; ++i)
        {
            copies.push_back(copy.Seconds());
        }
    }
    const double band = Median_Of(bands);
    figures.Add({name, goal, run.BoardBytes() / band / 1e9, "GB/s", Median_Of(copies) / band});
    const auto fresh = CBandMemory::Statistic_Get().m_freshBlocks - freshBefore;
    figures.Add({"  fresh blocks per band, " + name, "0", static_cast<double>(fresh) / (effort.rounds * effort.bands),
                 "blocks", 0});
}

std::string Name_Of(const SCase& one)
{
    return "stage, " + std::to_string(one.units) + " units x " + std::to_string(one.nozzles) + " x " +
           std::to_string(one.lines) + (one.kernel.empty() ? "" : ", kernel " + one.kernel) + ", " +
           std::to_string(one.generators) + " generators";
}

void Table_Measure(CFigures& figures, const SCase& base, const SEffort& effort)
{
    for (const int generators : {1, 2, 4})
    {
        SCase one = base;
        one.generators = generators;
        Case_Measure(figures, one, effort, Name_Of(one), generators == 2 ? ">= 0.6 x copy" : "");
    }
    for (const int generators : {1, 2})
    {
        SCase one = base;
        one.kernel = "scalar";
        one.nozzles = 4096;
        one.lines = std::max(base.lines / 10, 20);
        one.generators = generators;
        Case_Measure(figures, one, effort, Name_Of(one), "");
    }
    for (const char* pattern : {"full", "none", "checker"})
    {
        SCase one = base;
        one.pattern = pattern;
        Case_Measure(figures, one, effort, std::string("stage, all lines: ") + pattern, "");
    }
    SCase twoBits = base;
    twoBits.bits = 2;
    twoBits.frame = 32;
    Case_Measure(figures, twoBits, effort, "stage, 2-bit pixels into 32-bit frames", "");
    SCase stripes = base;
    stripes.units = base.units / 2;
    stripes.stripes = base.units - stripes.units;
    Case_Measure(figures, stripes, effort, "stage, half of the units print stripes", "");
}

// Varies one parameter.
void Curve_Measure(CFigures& figures, const SCase& base, const SEffort& effort, const std::string& what)
{
    struct SCurve
    {
        const char* name;
        int SCase::*parameter;
        std::vector<int> values;
    };
    const SCurve curves[] = {
        {"generators", &SCase::generators, {1, 2, 3, 4, 6, 8}},
        {"units", &SCase::units, {1, 2, 4, 8, 12, 16}},
        {"frame", &SCase::frame, {16, 32, 64, 128}},
        {"nozzles", &SCase::nozzles, {100, 200, 400, 1000, 2000, 4096}},
        {"inflight", &SCase::inFlight, {1, 2, 3, 4, 6}},
    };
    for (const SCurve& curve : curves)
    {
        if (what != curve.name)
        {
            continue;
        }
        for (const int value : curve.values)
        {
            SCase one = base;
            one.*curve.parameter = value;
            Case_Measure(figures, one, effort, "curve " + what + ' ' + std::to_string(value), "");
        }
        return;
    }
    Require(false, "a curve: generators, units, frame, nozzles, inflight");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try
    {
        std::map<std::string, std::string> options = {
            {"--curves", "none"}, {"--units", "16"},  {"--generators", "2"}, {"--nozzles", "400"},
            {"--lines", "35000"}, {"--frame", "16"},  {"--inflight", "3"},   {"--bits", "1"},
            {"--pattern", ""},    {"--stripes", "0"}, {"--rounds", "5"},     {"--bands", "9"},
            {"--kernel", ""},     {"--json", ""},
        };
        Options_Read(argumentCount, arguments, options);
        const auto number = [&](const char* name) { return std::stoi(options[name]); };
        SCase one;
        one.units = number("--units");
        one.generators = number("--generators");
        one.nozzles = number("--nozzles");
        one.lines = number("--lines");
        one.frame = number("--frame");
        one.inFlight = number("--inflight");
        one.bits = number("--bits");
        one.stripes = number("--stripes");
        one.kernel = options["--kernel"];
        one.pattern = options["--pattern"].empty() ? one.pattern : options["--pattern"];
        const SEffort effort = {number("--rounds"), number("--bands")};
        CFigures figures;
        if (options["--curves"] != "none")
        {
            Curve_Measure(figures, one, effort, options["--curves"]);
        }
        else if (!options["--pattern"].empty())
        {
            Case_Measure(figures, one, effort, Name_Of(one) + ", " + one.pattern, "");
        }
        else
        {
            Table_Measure(figures, one, effort);
        }
        if (!options["--json"].empty())
        {
            figures.Json_Write(options["--json"]);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "StageBench: %s\n", error.what());
        return 1;
    }
}
