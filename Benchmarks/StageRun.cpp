// The job, the producer, and the other end of the stage.
#include "Benchmarks/StageRun.h"

#include "Benchmarks/Figures.h"
#include "DataMap/DataMapKernel.h"
#include "KelCommon/KelWait.h"
#include "Tests/Support/PlatformSetup.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <map>
#include <random>

namespace
{

struct SOption
{
    const char* name;
    int SStageCase::*value;
};

constexpr SOption options[] = {
    {"--units", &SStageCase::units},           {"--stripes", &SStageCase::stripes},
    {"--generators", &SStageCase::generators}, {"--nozzles", &SStageCase::nozzles},
    {"--lines", &SStageCase::lines},           {"--frame", &SStageCase::frame},
    {"--inflight", &SStageCase::inFlight},     {"--bits", &SStageCase::bits},
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
void Job_Configure(const SStageCase& one)
{
    constexpr int stripeWidth = 64;
    Platform_Set(SOptionSetup{SMapStyle::FramePerPixel, SPushStyle::ByPixel,
                              one.bits == 2 ? SSupportBits::TwoBit : SSupportBits::OneBit, one.frame});
    Platform_Set(SConfigSetup{one.generators});
    SCartSetup cart;
    SGroupSetup group;
    SPrintSetup print;
    auto color = std::make_shared<CBandData>();
    Require(color->Create(one.nozzles, stripeWidth / 2, one.bits, 1), "the stripes' colour");
    for (int id = 0; id < one.units + one.stripes; ++id)
    {
        cart.m_units.push_back({id, 0, 0, 0});
        group.m_positions[id] = 0;
        print.m_inkStripeColorData[id] = color;
    }
    cart.m_headBaseInfo.m_bandWidth = one.nozzles;
    Platform_Set(cart);
    Platform_Set(std::map<std::string, SGroupSetup>{{patternLayoutGroup, group}});
    print.m_jobInfo.m_bitsPerPixel = one.bits;
    print.m_jobInfo_CurPrint.m_bitsPerPixel = one.bits;
    print.m_maskData.m_maskCount_1 = 1;
    print.m_maskData.m_maskCount_2 = 1;
    print.m_curPrint_JobWidth = one.lines;
    if (one.stripes > 0)
    {
        print.m_curPrint_JobWidth = one.lines - 2 * stripeWidth;
        print.m_inkStripeParam.leftStripeWidth = stripeWidth;
        print.m_inkStripeParam.rightStripeWidth = stripeWidth;
        print.m_inkStripeParam.unitPitch = stripeWidth;
        print.m_inkStripeParam.unitPositionCount = 1;
    }
    Platform_Set(print);
}

} // namespace

std::string SStageCase::Options() const
{
    std::string text = "--pattern " + pattern + (kernel.empty() ? "" : " --kernel " + kernel);
    for (const SOption& option : options)
    {
        text += std::string(" ") + option.name + ' ' + std::to_string(this->*option.value);
    }
    return text;
}

void SStageCase::Option_Set(const std::string& name, const std::string& value)
{
    if (name == "--pattern" || name == "--kernel")
    {
        (name == "--pattern" ? pattern : kernel) = value;
        return;
    }
    const auto option =
        std::find_if(std::begin(options), std::end(options), [&](const SOption& one) { return name == one.name; });
    Require(option != std::end(options), "an option of a case");
    this->*option->value = std::stoi(value);
}

CKernelInUse::CKernelInUse(const std::string& name) : m_before(CDataMapKernel::Current_Get())
{
    Require(name.empty() || CDataMapKernel::Current_Set(name.c_str()), "a kernel that this machine can run");
}

CKernelInUse::~CKernelInUse()
{
    CDataMapKernel::Current_Set(m_before.c_str());
}

CStageRun::CStageRun(const SStageCase& one)
{
    Job_Configure(one);
    std::vector<CBandDataFIFO*> inputs;
    for (int unit = 0; unit < one.units; ++unit)
    {
        std::vector<CBandData*> bands;
        for (int i = 0; i < one.inFlight; ++i)
        {
            bands.push_back(new CBandData());
            CBandData& band = *bands.back();
            Require(band.Create(one.nozzles, one.lines, one.bits, 1), "a unit band");
            band.m_unitIndex = unit;
            band.m_bandAttr = 1;
            if (i == 0)
            {
                Band_Fill(band, one.pattern);
            }
            std::copy_n(bands.front()->m_pData, band.m_dataSize, band.m_pData);
        }
        m_fifos.push_back(std::make_unique<CTestPool>("unit"));
        m_fifos.back()->Create(bands.data(), one.inFlight);
        inputs.push_back(m_fifos.back().get());
    }
    Require(m_stage.Create(false, inputs), "the stage");
    m_producer = std::thread([this] { Bands_Give(); });
}

CStageRun::~CStageRun()
{
    m_bEnd = true;
    m_producer.join();
    m_stage.Stop();
    m_stage.WaitExit(kelWait_WithoutLimit);
}

std::vector<double> CStageRun::Bands_Take(int count)
{
    m_allowed += count;
    CTestOutputEnd output(*m_stage.OutputProcessor_Get());
    std::vector<double> seconds;
    auto last = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i)
    {
        CBandData* raw = nullptr;
        while (!output.Out(raw, kelWait_Retried))
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

void CStageRun::Bands_Give()
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
