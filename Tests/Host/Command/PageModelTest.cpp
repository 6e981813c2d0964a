// The page model against the real program: random jobs of every map, push style, pass, zone, offset and stripe are
// converted, and every bit, header word and pass of the output is what the model says, from the pixels to the bits and
// from the bits to the pixels.
#include "Tests/Host/Command/CommandSupport.h"

#include "Host/Board/BandHeaderWords.h"
#include "Host/Board/BoardReader.h"
#include "Host/Job/JobPage.h"
#include "Host/Model/PageInk.h"
#include "Host/Model/PageModel.h"
#include "Host/Model/StripeModel.h"
#include "Tests/Host/Job/StripeTiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <set>
#include <vector>

namespace
{

class PageModel : public CCommandTest
{
protected:
    int Number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_random); }

    void Page_Write(const std::string& name, int width, int height, int bits, bool bBlank)
    {
        std::vector<std::string> rows(static_cast<std::size_t>(height),
                                      std::string(static_cast<std::size_t>((width * bits + 7) / 8), '\0'));
        for (std::string& row : rows)
        {
            for (int bit = 0; bit < width * bits && !bBlank; ++bit)
            {
                row[static_cast<std::size_t>(bit / 8)] |= static_cast<char>(Number(0, 1) << (7 - bit % 8));
            }
        }
        StripeTiff_Write((m_folder / name).string(), width, bits, rows);
    }

    // A job for one of the map classes; its text is in job.toml, its separations beside it.
    void Job_WriteRandom(int board);

    // Every question about the output, answered both ways.
    void Output_Check(const std::string& output);

    std::mt19937 m_random{20};
    std::set<std::string> m_maps;
    int m_stripeJobs = 0;
    int m_bandsLeftOut = 0;
};

struct SBoard
{
    const char* m_pOptions;
    int m_bits;
    int m_width; // 0: any that is a multiple of 8; -1: any
    int m_nozzles;
    int m_nozzleStep;
};

constexpr std::array boards = {
    SBoard{"DataMapStyle = 1\n", 1, 16, 0, 1},
    SBoard{"DataMapStyle = 1\nDataPushStyle = 1\n", 2, 16, 0, 1},
    SBoard{"DataMapStyle = 3\n", 1, 64, 400, 1},
    SBoard{"DataMapStyle = 3\nDataPushStyle = 1\n", 2, 64, 400, 1},
    SBoard{"DataMapStyle = 4\n", 1, 19, 400, 1},
    SBoard{"DataMapStyle = 4\nDataPushStyle = 1\n", 2, 16, 400, 1},
    SBoard{"DataMapStyle = 6\nPrinterSupportBits = 1\n", 1, 0, 0, 1},
    SBoard{"DataMapStyle = 6\nDataPushStyle = 1\n", 2, 0, 0, 1},
    SBoard{"DataMapStyle = 6\nPrinterSupportBits = 2\n", 2, 0, 0, 1},
    SBoard{"DataMapStyle = 6\nPrinterSupportBits = 2\n", 1, 0, 0, 1},
    SBoard{"DataMapStyle = 6\nPrinterSupportBits = 5\n", 2, 0, 0, 1},
    SBoard{"DataMapStyle = 7\nPrinterSupportBits = 1\n", 1, -1, 0, 1},
    SBoard{"DataMapStyle = 7\nPrinterSupportBits = 2\n", 2, -1, 0, 1},
    SBoard{"DataMapStyle = 7\nPrinterSupportBits = 2\n", 1, -1, 0, 1},
    SBoard{"DataMapStyle = 7\nDataPushStyle = 1\n", 2, -1, 0, 1},
    SBoard{"DataMapStyle = 9\n", 2, 0, 0, 4},
};

void PageModel::Job_WriteRandom(int board)
{
    const SBoard& options = boards.at(static_cast<std::size_t>(board));
    const int width = options.m_width > 0 ? options.m_width : options.m_width == 0 ? 8 * Number(1, 4) : Number(2, 9);
    const int nozzles =
        options.m_nozzles > 0 ? options.m_nozzles : options.m_nozzleStep * Number(1, options.m_nozzleStep > 1 ? 9 : 37);
    const int columns = Number(1, 40);
    const int rows = std::max(1, nozzles * Number(0, 3) + Number(0, nozzles));
    const int unitCount = std::min(Number(1, 4), options.m_width == 64 ? 4 : 2);
    const int pitch = Number(1, 6);
    const int count = unitCount + Number(0, 2);
    const int zone = pitch * count;
    const bool bSkip = Number(0, 2) == 0;
    std::string text = "Version = 1\n[Stage]\nKind = \"" + std::string(Number(0, 3) == 0 ? "one-fifo" : "ink-stripe") +
                       "\"\nSkipBlank = " + (bSkip ? "true" : "false") + "\n[DPOption]\n" + options.m_pOptions +
                       "PrinterDataWidth = " + std::to_string(width) +
                       "\n[PrintParam]\nDotSizeMode = " + std::to_string(Number(1, 3)) +
                       "\nBitsPerPixel = " + std::to_string(options.m_bits) +
                       "\nAlignByteCountPerLine = " + std::to_string(1 << Number(0, 4)) +
                       "\nBidirectional = " + (Number(0, 3) == 0 ? "false" : "true") + "\n";
    if (Number(0, 4) > 0)
    {
        text += "[InkStripe]\nLeftStripeWidth = " + std::to_string(Number(0, 2) == 0 ? 0 : zone + Number(0, 5)) +
                "\nRightStripeWidth = " + std::to_string(Number(0, 2) == 0 ? 0 : zone + Number(0, 5)) +
                "\nUnitPitch = " + std::to_string(pitch) + "\nUnitPositionCount = " + std::to_string(count) + "\n";
    }
    text += "[CartInfo]\nNozzles = " + std::to_string(nozzles) + "\n";
    for (int i = 0; i < unitCount; ++i)
    {
        text += "[[CartInfo.Unit]]\nUnitId = " + std::to_string(unitCount - 1 - i) +
                "\nDirection = " + std::to_string(Number(1, 2)) + "\nHorizon_1 = " + std::to_string(Number(0, 5)) +
                "\nHorizon_2 = " + std::to_string(Number(0, 5)) + "\n";
        if (i == 0 || Number(0, 1) == 0)
        {
            const std::string name = "page." + std::to_string(i) + ".tif";
            Page_Write(name, columns, rows, options.m_bits, bSkip && Number(0, 2) == 0);
            text += "Separation = \"" + name + "\"\n";
        }
        else if (Number(0, 1) == 0)
        {
            Page_Write("stripe.tif", nozzles, 1, options.m_bits, false);
            text += "StripeColor = \"stripe.tif\"\n";
        }
        else
        {
            text += "StripeColor = \"Full\"\n";
        }
    }
    File_Write(In("job.toml"), text);
}

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
        Job_WriteRandom(i % static_cast<int>(boards.size()));
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
