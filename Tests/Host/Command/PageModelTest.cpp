// The page model against the real program: random jobs of every map, push style, pass, zone, offset and stripe are
// converted, and every bit, header word and pass of the output is what the model says, from the pixels to the bits and
// from the bits to the pixels.
#include "Tests/Host/Command/RandomJob.h"

#include "Host/Board/BandHeaderWords.h"
#include "Host/Board/BoardReader.h"
#include "Host/Job/JobPage.h"
#include "Host/Model/PageInk.h"
#include "Host/Model/PageModel.h"
#include "Host/Model/StripeModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <set>
#include <vector>

namespace
{

class PageModel : public CRandomJobTest
{
protected:
    // Every question about the output, answered both ways.
    void Output_Check(const std::string& output);

    std::set<std::string> m_maps;
    int m_stripeJobs = 0;
    int m_bandsLeftOut = 0;
};

bool Bit_Get(const CBandData& band, const SModelBit& bit)
{
    return (band.m_pData[bit.m_line * band.m_bytesPerLine + bit.m_bit / 8] >> (7 - bit.m_bit % 8) & 1) == 1;
}

// From bits to pixels, for some bits; and from each of those pixels back to the bit.
void Bits_Check(const CPageModel& model, int swath, const CBandData& band, const CPageInk& ink, std::mt19937& random)
{
    for (int i = 0; i < 400; ++i)
    {
        const SModelBit bit = {std::uniform_int_distribution<int>(0, band.m_height - 1)(random),
                               std::uniform_int_distribution<std::int64_t>(0, band.m_width - 1)(random)};
        const SModelSource source = model.Source_Of(swath, bit);
        ASSERT_EQ(CPageModel::Bit_IsSet(source, CPageModel::Pixel_Of(source, ink)), Bit_Get(band, bit))
            << "line " << bit.m_line << ", bit " << bit.m_bit;
        if (source.m_nozzle < 0)
        {
            continue;
        }
        const auto back = model.Bits_Of(*source.m_pUnit, source.m_nozzle, source.m_position);
        EXPECT_NE(std::ranges::find(back, bit), back.end()) << "line " << bit.m_line << ", bit " << bit.m_bit;
        if (source.m_point.m_area == EModelArea::Page)
        {
            EXPECT_EQ(model.Position_OfColumn(*source.m_pUnit, source.m_point.m_column, model.IsLeftToRight(swath)),
                      source.m_position);
            const SBoardPass pass = model.Pass_Get(swath);
            const int offset = CPageModel::Offset_Of(*source.m_pUnit, pass.m_bLeftToRight);
            EXPECT_EQ(pass.m_firstLineColumn + (source.m_position - offset) * pass.m_columnStep,
                      source.m_point.m_column);
        }
    }
}

void PageModel::Output_Check(const std::string& output)
{
    const CJobPage page(In("job.toml"));
    const auto reader = CBoardReader::Open(In(output));
    EXPECT_EQ(reader->BoardInfo(), Page_BoardInfo(page, reader->BoardInfo().m_generator));
    const CPageModel model(reader->BoardInfo());
    CPageInk ink(page);
    CBandData band;
    SBoardPass pass;
    int bandNo = 0;
    for (int swath = 0; swath < model.SwathCount(); ++swath)
    {
        ink.Swath_Read(swath);
        if (model.IsSkipped(swath, ink))
        {
            ++m_bandsLeftOut;
            continue;
        }
        ASSERT_TRUE(reader->Band_Read(band, pass));
        const SBandHeader header = model.Header_Get(swath, bandNo++, ink);
        for (const SBandHeaderWord& word : g_bandHeaderWords)
        {
            EXPECT_EQ(band.*word.m_pWord, header.*word.m_pWord) << word.m_name;
        }
        EXPECT_EQ(band.m_bSkip, header.m_bSkip);
        SBoardPass expected = model.Pass_Get(swath);
        expected.m_bBlank = Band_IsBlank(band);
        EXPECT_EQ(pass, expected);
        ASSERT_EQ(band.m_width, model.LineBits());
        ASSERT_EQ(band.m_height, model.LineCount(pass.m_bLeftToRight));
        std::vector<unsigned char> bytes(static_cast<std::size_t>(band.m_dataSize));
        model.Lines_Make(swath, 0, bytes, ink);
        ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), band.m_pData)) << "swath " << swath;
        Bits_Check(model, swath, band, ink, m_random);
    }
    EXPECT_FALSE(reader->Band_Read(band, pass));
    m_maps.insert(model.Info().m_map);
    m_stripeJobs += Job_HasStripes(page.Job()) ? 1 : 0;
}

} // namespace

TEST_F(PageModel, SaysEveryBitHeaderAndPassOfRandomJobsOfEveryBoard)
{
    int converted = 0;
    for (int i = 0; i < 96; ++i)
    {
        Job_WriteRandom(i % static_cast<int>(randomBoards.size()));
        const std::string format = i % 2 == 0 ? "raw" : "tiff";
        const auto result = Boardmap_Run("convert job.toml -o out --format " + format);
        if (result.status == 1 && result.error.find("there is no board band") != std::string::npos)
        {
            continue; // every swath is blank
        }
        ASSERT_EQ(result.status, 0) << File_Read(In("job.toml")) << result.error;
        Output_Check("out");
        if (HasFailure())
        {
            FAIL() << "job " << i << ":\n" << File_Read(In("job.toml"));
        }
        ++converted;
    }
    EXPECT_GT(converted, 80);
    EXPECT_EQ(m_maps.size(), 8U);
    EXPECT_GT(m_stripeJobs, 10);
    EXPECT_GT(m_bandsLeftOut, 0);
}
