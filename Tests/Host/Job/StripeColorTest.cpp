// The colour bands of ink stripes, bit by bit, and the TIFF files that are none.
#include "Host/Job/StripeColor.h"

#include "Host/Job/JobGeometry.h"
#include "Tests/Host/Job/StripeTiff.h"
#include "Tests/Host/Job/TestJob.h"
#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>

namespace
{

// The stripe job with unit 1's colour, and other values where the test wants them. Stripes of three scan positions.
std::string Color_Text(const std::string& color, int nozzles, int bitsPerPixel, const std::string& push = "ByPixel")
{
    std::string text = Replaced(g_stripeJob, "\"Full\"", "'" + color + "'");
    text = Replaced(text, "Nozzles = 12", "Nozzles = " + std::to_string(nozzles));
    text = Replaced(text, "BitsPerPixel = 1", "BitsPerPixel = " + std::to_string(bitsPerPixel));
    text = Replaced(text, "\"ByPixel\"", "\"" + push + "\"");
    return Replaced(text, "StripeLength = 10", "StripeLength = 3");
}

// The colour band of unit 1: its lines' bytes.
std::vector<std::string> Lines_Of(const SJob& job)
{
    const std::map<int, std::shared_ptr<const CBandData>> colors = Job_StripeColors(job);
    const CBandData& band = *colors.at(1);
    EXPECT_EQ(band.m_bytesPerLine, Job_Geometry(job, 1, 1).m_unitBytesPerLine) << "as long as a stripe band's lines";
    EXPECT_EQ(band.m_dataSize, band.m_height * band.m_bytesPerLine);
    EXPECT_EQ(band.m_width, Job_UnitWidth(job));
    EXPECT_EQ(band.m_bitsPerPixel, Job_UnitBitsPerPixel(job));
    std::vector<std::string> lines;
    for (int line = 0; line < band.m_height; ++line)
    {
        const unsigned char* pLine = band.m_pData + std::ptrdiff_t{line} * band.m_bytesPerLine;
        lines.emplace_back(pLine, pLine + band.m_bytesPerLine);
    }
    return lines;
}

std::vector<std::string> Three(const std::string& line)
{
    return {line, line, line};
}

using Lines = std::vector<std::string>;

std::string Error_OfColor(const SJob& job)
{
    const std::string error = Error_Of<CInputError>([&] { StripeColor_Length(job, job.m_units.at(1)); });
    EXPECT_EQ(error, Error_Of<CInputError>([&] { Job_StripeColors(job); }));
    return error;
}

} // namespace

TEST(StripeColor, SolidOneBitStripesSetEveryNozzleAndNothingBeyond)
{
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Full", 12, 1))), Three("\xFF\xF0"));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("None", 12, 1))), Three(std::string(2, '\0')));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Full", 12, 1, "ByUnit"))), Three("\xFF\xF0"));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Full", 16, 1))), Three("\xFF\xFF"));
}

TEST(StripeColor, LinesHaveTheAlignmentOfUnitBands)
{
    const std::string text =
        Replaced(Color_Text("Full", 12, 1), "BitsPerPixel = 1", "BitsPerPixel = 1\nAlignByteCountPerLine = 4");
    EXPECT_EQ(Lines_Of(Job_Of(text)), Three(std::string("\xFF\xF0\0\0", 4)));
}

TEST(StripeColor, SolidTwoBitStripesHaveTheirDropInEveryPixel)
{
    // Five nozzles: the last two bits of the first byte's successor, the rest stays empty.
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("None", 5, 2))), Three(std::string(2, '\0')));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Small", 5, 2))), Three("\x55\x40"));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Middle", 5, 2))), Three("\xAA\x80"));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Big", 5, 2))), Three("\xFF\xC0"));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Full", 5, 2))), Three("\xFF\xC0"));
}

TEST(StripeColor, PushedByUnitTheHighBitsComeBeforeTheLowBits)
{
    const std::string none(1, '\0');
    const std::string all = "\xF8";
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Small", 5, 2, "ByUnit"))), (Lines{none, all, none, all, none, all}));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Middle", 5, 2, "ByUnit"))), (Lines{all, none, all, none, all, none}));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text("Full", 5, 2, "ByUnit"))), Lines(6, all));
}

TEST(StripeColor, PlanePairStripesKeepWholePixels)
{
    std::string text = Replaced(Color_Text("Small", 8, 2), "\"FramePerPixel\"", "\"PlanePair\"");
    EXPECT_EQ(Lines_Of(Job_Of(text)), Three("\x55\x55"));
    EXPECT_EQ(Job_StripeColors(Job_Of(text)).at(1)->m_width, 16);
    EXPECT_EQ(Job_StripeColors(Job_Of(text)).at(1)->m_bitsPerPixel, 1);
}

TEST(StripeColor, TiffRowsAreScanPositions)
{
    const CTestFolder folder;
    const std::string path = (folder / "stripe.tif").string();
    StripeTiff_Write(path, 12, 1, {"\x80\x10", "\x40\x20"});
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text(path, 12, 1))), (Lines{"\x80\x10", "\x40\x20"}));
    // 00 01 10 11 10, then 11 00 01 10 01.
    StripeTiff_Write(path, 5, 2, {"\x1B\x80", "\xC6\x40"});
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text(path, 5, 2))), (Lines{"\x1B\x80", "\xC6\x40"}));
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text(path, 5, 2, "ByUnit"))), (Lines{"\x38", "\x50", "\x90", "\xA8"}));
    StripeTiff_Write(path, 8, 2, {"\x1B\xE4"});
    const std::string planes = Replaced(Color_Text(path, 8, 2), "\"FramePerPixel\"", "\"PlanePair\"");
    EXPECT_EQ(Lines_Of(Job_Of(planes)), (Lines{"\x1B\xE4"}));
}

TEST(StripeColor, BitsBeyondTheLastNozzleOfATiffAreDropped)
{
    const CTestFolder folder;
    const std::string path = (folder / "stripe.tif").string();
    StripeTiff_Write(path, 12, 1, {"\x80\x1F"});
    EXPECT_EQ(Lines_Of(Job_Of(Color_Text(path, 12, 1))), (Lines{"\x80\x10"}));
}

TEST(StripeColor, LengthIsThatOfTheSolidStripeOrTheTiff)
{
    const CTestFolder folder;
    const std::string path = (folder / "stripe.tif").string();
    StripeTiff_Write(path, 12, 1, {"\x80\x10", "\x40\x20"});
    const SJob solid = Job_Of(Color_Text("Full", 12, 1));
    EXPECT_EQ(StripeColor_Length(solid, solid.m_units.at(1)), 3);
    const SJob file = Job_Of(Color_Text(path, 12, 1));
    EXPECT_EQ(StripeColor_Length(file, file.m_units.at(1)), 2);
}

TEST(StripeColor, UnitsThatGetNoStripesHaveNoColour)
{
    const std::string text = Replaced(g_stripeJob, "UnitId = 0", "UnitId = 0\nStripeColor = \"Full\"");
    const auto colors = Job_StripeColors(Job_Of(text));
    EXPECT_EQ(colors.size(), 2U);
    EXPECT_EQ(colors.count(0), 0U) << "it prints the page";
    EXPECT_EQ(colors.count(1), 1U);
    EXPECT_EQ(colors.count(3), 1U);
    // Without zones nothing is made, and no file is looked for.
    std::string noZones = Replaced(text, "\nLeftStripeWidth = 40\nRightStripeWidth = 40", "");
    noZones = Replaced(noZones, "\"None\"", "\"missing.tif\"");
    EXPECT_TRUE(Job_StripeColors(Job_Of(noZones)).empty());
}

TEST(StripeColor, UnitsOfOneColourShareItsBand)
{
    const auto shared = Job_StripeColors(Job_Of(Replaced(g_stripeJob, "\"None\"", "'Full'")));
    EXPECT_EQ(shared.at(1), shared.at(3));
    const auto apart = Job_StripeColors(Job_Of(std::string(g_stripeJob)));
    EXPECT_NE(apart.at(1), apart.at(3));
}

TEST(StripeColor, TiffsThatDoNotFitAreRefusedWithTheirPlace)
{
    const CTestFolder folder;
    const std::string path = (folder / "stripe.tif").string();
    const std::string place = "job.toml:26:15: unit 1: StripeColor " + path;
    StripeTiff_Write(path, 12, 2, {"\x80\x10\x10"});
    EXPECT_EQ(Error_OfColor(Job_Of(Color_Text(path, 12, 1))), place + " has 2 bits per pixel; BitsPerPixel is 1");
    StripeTiff_Write(path, 12, 1, {"\x80\x10"});
    EXPECT_EQ(Error_OfColor(Job_Of(Color_Text(path, 12, 2))), place + " has 1 bit per pixel; BitsPerPixel is 2");
    EXPECT_EQ(Error_OfColor(Job_Of(Color_Text(path, 13, 1))),
              place + " has 12 columns; it needs one for each nozzle, and Nozzles is 13");
    EXPECT_EQ(Error_OfColor(Job_Of(Color_Text(path, 11, 1))),
              place + " has 12 columns; it needs one for each nozzle, and Nozzles is 11");
    StripeTiff_Write(path, 12, 1, std::vector<std::string>(4, "\x80\x10"));
    EXPECT_EQ(Error_OfColor(Job_Of(Color_Text(path, 12, 1))),
              place + " has 4 rows; a stripe has StripeLength scan positions at most, which is 3");
    StripeTiff_Write(path, 12, 1, Three("\x80\x10"));
    EXPECT_EQ(Error_OfColor(Job_Of(Color_Text(path, 12, 1))), "no error");
}

TEST(StripeColor, FilesThatAreNoTiffAreRefused)
{
    const CTestFolder folder;
    const std::string path = (folder / "stripe.tif").string();
    const SJob job = Job_Of(Color_Text(path, 12, 1));
    const std::string place = "job.toml:26:15: unit 1: StripeColor " + path + ": ";
    EXPECT_TRUE(Error_OfColor(job).starts_with(place)) << Error_OfColor(job);
    File_Write(path, "no picture");
    EXPECT_TRUE(Error_OfColor(job).starts_with(place)) << Error_OfColor(job);
}

TEST(StripeColor, CodesAreThoseOfTheDrops)
{
    EXPECT_EQ(StripeFill_Code(EStripeFill::None, 1), 0);
    EXPECT_EQ(StripeFill_Code(EStripeFill::Full, 1), 1);
    EXPECT_EQ(StripeFill_Code(EStripeFill::None, 2), 0);
    EXPECT_EQ(StripeFill_Code(EStripeFill::Small, 2), 1);
    EXPECT_EQ(StripeFill_Code(EStripeFill::Middle, 2), 2);
    EXPECT_EQ(StripeFill_Code(EStripeFill::Big, 2), 3);
    EXPECT_EQ(StripeFill_Code(EStripeFill::Full, 2), 3);
}
