// Making, expecting and running whole jobs.
#include "Tests/UnitData2BoardData/InkJob.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace
{

STwinBand Twin_Of(const SBandImage& image)
{
    return {image.header.UnitIndex(),
            image.header.UnitDirection(),
            image.width,
            image.bitsPerPixel,
            image.height,
            image.bytesPerLine,
            image.data};
}

STwinBand Twin_Of(const SModelBand& band)
{
    return {band.unitIndex, band.unitDirection, band.width, band.bitsPerPixel,
            band.height,    band.bytesPerLine,  band.data};
}

// Takes `count` board bands, or fewer if the stage ends before.
std::vector<SBandImage> Output_Take(CUnitData2BoardData_Base& stage, std::size_t count)
{
    std::vector<SBandImage> boards;
    bool bEnded = false;
    while (boards.size() < count)
    {
        CBandData* raw = nullptr;
        if (Output_Of(stage).Out(raw, 20))
        {
            boards.push_back(Image_Of(*raw));
            delete raw;
        }
        else if (bEnded)
        {
            break;
        }
        bEnded = stage.WaitExit(0); // and then once more
    }
    return boards;
}

// Stops a stage that has nothing left to do.
void Stage_End(CUnitData2BoardData_Base& stage)
{
    stage.Stop();
    EXPECT_TRUE(stage.WaitExit(withoutLimit));
    EXPECT_TRUE(stage.IsThreadSuccess());
    EXPECT_FALSE(Output_Of(stage).WaitForOut(0));
}

} // namespace

void Job_Configure(CConfigGuard& config, const SInkJob& job)
{
    config.m_option = job.option;
    config.m_param.m_jobInfo.m_bitsPerPixel = job.jobBits;
    config.m_param.m_dotSizeMode = job.dotSizeMode;
    config.m_config.m_lineGeneratorCount_Of_DataMap = job.lineGeneratorCount;
    Job_Configure(config, job.stripes);
}

SBandImage Image_Of(const CBandData& band)
{
    return {BandHeader_Get(band), band.m_width, band.m_height, band.m_bitsPerPixel, band.m_bytesPerLine, Data_Of(band)};
}

void Band_Fill(CBandData& band, const SBandImage& image, int alignBytes)
{
    EXPECT_TRUE(band.Create(image.width, image.height, image.bitsPerPixel, alignBytes));
    BandHeader_Set(band, image.header);
    std::copy(image.data.begin(), image.data.end(), band.m_pData);
}

std::unique_ptr<CBandData> Band_Of(const SBandImage& image, int alignBytes)
{
    auto band = std::make_unique<CBandData>();
    Band_Fill(*band, image, alignBytes);
    return band;
}

SBandImage Band_Noise(const SInkJob& job, std::mt19937& random, int unitIndex, int bandAttr)
{
    const CStripeModel model(job.stripes);
    SBandImage image;
    for (std::int32_t& headerWord : image.header.words)
    {
        headerWord = static_cast<std::int32_t>(random());
    }
    image.header.BandAttr_Set(bandAttr);
    image.header.words[4] = unitIndex;
    image.header.words[5] = static_cast<std::int32_t>(random() % 4);
    image.header.bSkip = random() % 2 == 0;
    image.width = job.stripes.bandWidth;
    image.height = model.LineCount(bandAttr);
    image.bitsPerPixel = job.stripes.bByUnit ? 1 : job.stripes.bitsPerPixel;
    image.bytesPerLine = model.BytesPerLine();
    image.data.resize(static_cast<std::size_t>(image.height * image.bytesPerLine));
    const bool bFull = random() % 8 == 0;
    for (int line = 0; line < image.height; ++line)
    {
        for (int bit = 0; bit < image.width * image.bitsPerPixel; ++bit)
        {
            if (bFull || random() % 2 == 0)
            {
                image.data[static_cast<std::size_t>(line * image.bytesPerLine + bit / 8)] |=
                    static_cast<unsigned char>(0x80 >> bit % 8);
            }
        }
    }
    return image;
}

SBandImage Board_Expected(const SInkJob& job, int number)
{
    const SStepImage& step = job.steps.at(static_cast<std::size_t>(number));
    const CStripeModel model(job.stripes);
    std::vector<STwinBand> twins;
    std::vector<int> units;
    for (const SBandImage& image : step)
    {
        twins.push_back(Twin_Of(image));
        units.push_back(image.header.UnitIndex());
    }
    std::vector<SModelBand> stripes;
    if (job.stripes.leftStripeWidth + job.stripes.rightStripeWidth > 0)
    {
        for (const int unit : model.RestUnits(units))
        {
            stripes.push_back(model.Band_Make(unit, step.front().header.BandAttr()));
        }
    }
    for (const SModelBand& stripe : stripes)
    {
        twins.push_back(Twin_Of(stripe));
    }
    const STwinBoardBand board = CBoardTwin(job.twin).Band_Map(twins);
    SBandImage expected{step.front().header, board.width, board.height, 1, board.bytesPerLine, board.data};
    expected.header.BandNo_Set(number);
    return expected;
}

std::vector<SBandImage> Job_Run(CUnitData2BoardData_Base& stage, const SInkJob& job)
{
    const std::size_t inputCount = job.steps.front().size();
    std::vector<std::unique_ptr<CTestPool>> fifos;
    std::vector<CBandDataFIFO*> inputs;
    for (std::size_t i = 0; i < inputCount; ++i)
    {
        fifos.push_back(Pool_Make(0, 2, 8, 1));
        inputs.push_back(fifos.back().get());
    }
    EXPECT_TRUE(stage.Create(false, inputs));
    std::thread producer(
        [&]
        {
            for (const SStepImage& step : job.steps)
            {
                for (std::size_t i = 0; i < inputCount; ++i)
                {
                    CBandData* band = nullptr;
                    while (!fifos[i]->Empty_Out(band, 20))
                    {
                        if (stage.WaitExit(0)) // it has failed: nothing will come back
                        {
                            return;
                        }
                    }
                    Band_Fill(*band, step[i], job.stripes.alignBytes);
                    EXPECT_TRUE(fifos[i]->Full_In(band, 0));
                }
            }
        });
    auto boards = Output_Take(stage, job.steps.size());
    producer.join();
    Stage_End(stage);
    return boards;
}

std::vector<SBandImage> Job_Run(CUnitData2BoardData_AllUnit_2& stage, const SInkJob& job)
{
    CBandSetFIFO input(2);
    EXPECT_TRUE(stage.Create(input));
    std::thread producer(
        [&]
        {
            for (const SStepImage& step : job.steps)
            {
                while (!input.HasSpaceEvent().Wait(20, 0))
                {
                    if (stage.WaitExit(0)) // it has failed: nothing will be taken
                    {
                        return;
                    }
                }
                std::vector<std::unique_ptr<CBandData>> bands;
                for (const SBandImage& image : step)
                {
                    bands.push_back(Band_Of(image, job.stripes.alignBytes));
                }
                EXPECT_TRUE(input.In(BandSet_Make(std::move(bands))));
            }
        });
    auto boards = Output_Take(stage, job.steps.size());
    producer.join();
    Stage_End(stage);
    return boards;
}
