// Whole steps of the base stage, on its thread, against board bands that the checked twin places bit by bit.
#include "Host/Model/BoardTwin.h"
#include "Tests/Support/ConfigGuard.h"
#include "Tests/UnitData2BoardData/StageSupport.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <set>

namespace
{

// A job that the base stage can run, and the layout that it must give.
struct STableJob
{
    SOptionSetup option;
    EDotSizeMode dotSizeMode = SDotSize::Small;
    int jobBits = 1;  // bits per pixel of the job
    int bandBits = 1; // bits per pixel of the unit bands
    STwinStyle twin;
    int unitLimit = 16;
};

STableJob Job_Random()
{
    STableJob job;
    const int kind = *rc::gen::inRange(0, 5);
    const int width = *rc::gen::element(8, 16, 24, 32, 64, 128);
    job.option.m_printerDataWidth = kind == 0 ? 16 : width;
    job.twin.frameWidth = job.option.m_printerDataWidth;
    job.option.m_dataPushStyle = SPushStyle::ByPixel;
    switch (kind)
    {
    case 0:
        job.option.m_dataMapStyle = SMapStyle::Frame16;
        job.twin.style = ETwinStyle::Style_1;
        break;
    case 1:
        job.option.m_dataMapStyle = SMapStyle::FramePerPixel;
        job.option.m_printerSupportBits = SSupportBits::TwoBit;
        job.dotSizeMode = *rc::gen::element(SDotSize::Small, SDotSize::Middle, SDotSize::Big);
        job.twin.style = ETwinStyle::Style_2;
        job.twin.dotSizeMode = static_cast<int>(job.dotSizeMode);
        break;
    case 2:
        job.option.m_dataMapStyle = SMapStyle::FramePerPixel;
        job.option.m_printerSupportBits = SSupportBits::OneBit;
        break;
    case 3:
        job.option.m_dataMapStyle = SMapStyle::FramePerPixel;
        job.option.m_printerSupportBits = SSupportBits::TwoBit;
        job.jobBits = 2;
        job.bandBits = 2;
        job.twin.srcBitCount = 2;
        break;
    default: // the job's own depth does not matter when data is pushed by unit
        job.option.m_dataMapStyle = SMapStyle::FramePerPixel;
        job.option.m_dataPushStyle = SPushStyle::ByUnit;
        job.jobBits = 2;
        break;
    }
    const bool bTwoBitUnits = kind == 1 || kind == 3;
    job.unitLimit = bTwoBitUnits ? job.twin.frameWidth / 2 : job.twin.frameWidth;
    return job;
}

// A band of random pixels. Bits beyond the width are zero: a producer's promise.
std::unique_ptr<CBandData> Band_Random(int unit, int width, int height, int bits, int align)
{
    auto band = std::make_unique<CBandData>();
    band->Create(width, height, bits, align);
    band->m_unitIndex = unit;
    band->m_unitDirection = *rc::gen::inRange(0, 4);
    const auto pixels = *rc::gen::container<std::vector<unsigned char>>(static_cast<std::size_t>(width * height),
                                                                        rc::gen::arbitrary<unsigned char>());
    for (int line = 0; line < height; ++line)
    {
        for (int pixel = 0; pixel < width; ++pixel)
        {
            const int value = pixels[static_cast<std::size_t>(line * width + pixel)] & ((1 << bits) - 1);
            const int position = pixel * bits;
            band->m_pData[line * band->m_bytesPerLine + position / 8] |=
                static_cast<unsigned char>(value << (8 - bits - position % 8));
        }
    }
    return band;
}

STwinBand Twin_Of(const CBandData& band)
{
    return {band.m_unitIndex,
            band.m_unitDirection,
            band.m_width,
            band.m_bitsPerPixel,
            band.m_height,
            band.m_bytesPerLine,
            {band.m_pData, static_cast<std::size_t>(band.m_dataSize)}};
}

} // namespace

RC_GTEST_PROP(StageTwin, EveryBoardBandOfARandomJobIsTheOneThatTheTwinPlaces, ())
{
    CConfigGuard config;
    const STableJob job = Job_Random();
    config.m_option = job.option;
    config.m_param.m_jobInfo.m_bitsPerPixel = job.jobBits;
    config.m_param.m_dotSizeMode = job.dotSizeMode;
    config.Apply();

    const int unitCount = *rc::gen::inRange(1, std::min(job.unitLimit, 6) + 1);
    const auto units =
        *rc::gen::unique<std::vector<int>>(static_cast<std::size_t>(unitCount), rc::gen::inRange(0, job.unitLimit));
    const int width = *rc::gen::inRange(1, 60);
    const int height = *rc::gen::inRange(0, 5);
    const int align = *rc::gen::element(1, 2, 8);
    const int stepCount = *rc::gen::inRange(1, 5);

    std::vector<STwinBoardBand> expected;
    std::vector<std::vector<std::unique_ptr<CBandData>>> steps;
    for (int step = 0; step < stepCount; ++step)
    {
        std::vector<STwinBand> twins;
        auto& bands = steps.emplace_back();
        for (const int unit : units)
        {
            bands.push_back(Band_Random(unit, width, height, job.bandBits, align));
            twins.push_back(Twin_Of(*bands.back()));
        }
        expected.push_back(CBoardTwin(job.twin).Band_Map(twins));
    }

    std::vector<std::unique_ptr<CTestPool>> fifos;
    std::vector<CBandDataFIFO*> inputs;
    for (std::size_t u = 0; u < units.size(); ++u)
    {
        std::vector<CBandData*> pool;
        for (auto& bands : steps)
        {
            pool.push_back(bands[u].release());
        }
        fifos.push_back(std::make_unique<CTestPool>("unit"));
        RC_ASSERT(fifos.back()->Create(pool.data(), stepCount));
        inputs.push_back(fifos.back().get());
    }
    CUnitData2BoardData_Base stage;
    RC_ASSERT(stage.Create(false, inputs));
    for (int step = 0; step < stepCount; ++step)
    {
        for (auto& fifo : fifos)
        {
            CBandData* band = nullptr;
            RC_ASSERT(fifo->Empty_Out(band, 10000));
            RC_ASSERT(fifo->Full_In(band, 10000));
        }
        CBandData* raw = nullptr;
        RC_ASSERT(Output_Of(stage).Out(raw, 10000));
        const std::unique_ptr<CBandData> board(raw);
        const STwinBoardBand& twin = expected[static_cast<std::size_t>(step)];
        RC_ASSERT(board->m_bandNo == step);
        RC_ASSERT(board->m_width == twin.width);
        RC_ASSERT(board->m_height == twin.height);
        RC_ASSERT(board->m_bytesPerLine == twin.bytesPerLine);
        RC_ASSERT(std::vector<unsigned char>(board->m_pData, board->m_pData + board->m_dataSize) == twin.data);
    }
    stage.Stop();
    RC_ASSERT(stage.WaitExit(4294967295U));
}
