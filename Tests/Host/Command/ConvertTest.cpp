// boardmap convert from outside: what it prints, what it exits with, and what is on the disk afterwards.
#include "Tests/Host/Command/CommandSupport.h"

#if defined(_WIN32)
#include "Host/Command/Convert.h"
#endif
#include "Host/Board/BoardReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <memory>
#include <thread>

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace
{

using Convert = CCommandTest;

bool Pattern(int x, int y)
{
    return (x * 7 + y * 13) % 5 == 0;
}

// The bands of a raw stream, data only.
std::vector<std::vector<unsigned char>> RawBands_Read(const std::filesystem::path& file)
{
    const std::unique_ptr<CBoardReader> reader = CBoardReader::Open(file);
    std::vector<std::vector<unsigned char>> bands;
    CBandData band;
    SBoardPass pass;
    while (reader->Band_Read(band, pass))
    {
        bands.emplace_back(band.m_pData, band.m_pData + band.m_dataSize);
    }
    return bands;
}

std::vector<std::vector<unsigned char>> TiffBands_Read(const std::filesystem::path& file)
{
    const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(file.string().c_str(), "r"), &TIFFClose);
    std::vector<std::vector<unsigned char>> bands;
    if (tiff == nullptr)
    {
        return bands;
    }
    do
    {
        std::uint32_t rows = 0;
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &rows);
        const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize(tiff.get()));
        auto& band = bands.emplace_back(rows * rowBytes);
        for (std::uint32_t row = 0; row < rows; ++row)
        {
            EXPECT_EQ(TIFFReadScanline(tiff.get(), band.data() + row * rowBytes, row, 0), 1);
        }
    } while (TIFFReadDirectory(tiff.get()) == 1);
    return bands;
}

// A page that takes a while: its conversion still runs when the first progress line is out.
void LongPage_Write(const std::filesystem::path& file)
{
    TIFF* tiff = TIFFOpen(file.string().c_str(), "w");
    ASSERT_NE(tiff, nullptr);
    constexpr int width = 20000;
    constexpr int height = 60000;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1000);
    std::vector<unsigned char> row(width / 8, 0x00);
    for (std::uint32_t y = 0; y < height; ++y)
    {
        TIFFWriteScanline(tiff, row.data(), y, 0);
    }
    TIFFClose(tiff);
}

} // namespace

TEST_F(Convert, WritesOneTiffPagePerSwathWithEveryBitInItsPlace)
{
    constexpr int width = 37;
    constexpr int height = 50;
    constexpr int nozzles = 20;
    Separation_Write("a.tif", width, height, &Pattern);
    Separation_Write("b.tif", width, height, [](int x, int y) { return !Pattern(x, y); });
    Job_Write("job.toml", {"a.tif", "b.tif"}, nozzles);
    const auto result = Boardmap_Run("convert job.toml");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_THAT(result.out, StartsWith("job.boards.tif: 3 bands, 111 lines, 2220 bytes of board data\n"));
    const auto bands = TiffBands_Read(In("job.boards.tif"));
    ASSERT_EQ(bands.size(), 3U);
    for (int swath = 0; swath < 3; ++swath)
    {
        for (int line = 0; line < width; ++line)
        {
            const int x = swath == 1 ? width - 1 - line : line; // the middle swath runs right to left
            for (int nozzle = 0; nozzle < nozzles; ++nozzle)
            {
                const int y = swath * nozzles + nozzle;
                int expected = 0;
                if (y < height)
                {
                    expected = Pattern(x, y) ? 0x80 : 0x40; // unit 0 is a frame's first bit, unit 1 its second
                }
                const auto at = static_cast<std::size_t>(line * nozzles + nozzle); // 8-bit frames: a byte each
                ASSERT_EQ(bands[static_cast<std::size_t>(swath)][at], expected)
                    << "swath " << swath << " line " << line << " nozzle " << nozzle;
            }
        }
    }
    EXPECT_THAT(Files(), ElementsAre("a.tif", "b.tif", "job.boards.tif", "job.toml"));
}

TEST_F(Convert, TheRawStreamHoldsTheSameBandsInAFileAndOnStandardOutput)
{
    Separation_Write("a.tif", 40, 30, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 8);
    ASSERT_EQ(Boardmap_Run("convert job.toml").status, 0);
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw").status, 0);
    const auto piped = Boardmap_Run(std::string("convert job.toml --format raw -o - ") + intoFile + "piped.raw");
    EXPECT_EQ(piped.status, 0);
    EXPECT_THAT(piped.error, StartsWith("standard output: 4 bands")); // the summary stays out of the data
    EXPECT_EQ(File_Read(In("job.boards.raw")), File_Read(In("piped.raw")));
    EXPECT_EQ(RawBands_Read(In("piped.raw")), TiffBands_Read(In("job.boards.tif")));
}

TEST_F(Convert, EveryCompressionGivesTheSamePixels)
{
    Separation_Write("a.tif", 40, 30, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 16);
    ASSERT_EQ(Boardmap_Run("convert job.toml -o none.tif").status, 0);
    for (const std::string name : {"packbits", "lzw", "deflate"})
    {
        ASSERT_EQ(Boardmap_Run("convert job.toml --compress " + name + " -o " + name + ".tif").status, 0);
        EXPECT_EQ(TiffBands_Read(In(name + ".tif")), TiffBands_Read(In("none.tif"))) << name;
    }
}

TEST_F(Convert, SkipBlankLeavesTheSwathsWithoutInkOut)
{
    Separation_Write("a.tif", 40, 40, [](int x, int y) { return y == 25 && x == 3; });
    Separation_Write("b.tif", 40, 40, [](int x, int y) { return y == 26 && x == 3; });
    Job_Write("job.toml", {"a.tif", "b.tif"}, 10, "[Stage]\nSkipBlank = true\n");
    const auto result = Boardmap_Run("convert job.toml --format raw");
    EXPECT_EQ(result.status, 0) << result.error;
    const auto reader = CBoardReader::Open(In("job.boards.raw"));
    CBandData band;
    SBoardPass pass;
    ASSERT_TRUE(reader->Band_Read(band, pass));
    EXPECT_EQ(band.m_bandNo, 0);
    EXPECT_EQ(band.m_swathIndex, 2);
    EXPECT_FALSE(reader->Band_Read(band, pass));
}

TEST_F(Convert, EveryStageGivesTheSameBandsForATableMap)
{
    Separation_Write("a.tif", 60, 70, &Pattern);
    Separation_Write("b.tif", 60, 70, [](int x, int y) { return y >= 30 && y < 60 && !Pattern(x, y); });
    for (const std::string skip : {"true", "false"})
    {
        std::vector<std::vector<std::vector<unsigned char>>> results;
        for (const std::string kind : {"base", "ink-stripe", "one-fifo"})
        {
            Job_Write("job.toml", {"b.tif", "b.tif", "a.tif"}, 10,
                      "[Stage]\nKind = \"" + kind + "\"\nSkipBlank = " + skip + '\n');
            const auto result = Boardmap_Run("convert job.toml --format raw");
            ASSERT_EQ(result.status, 0) << result.error;
            results.push_back(RawBands_Read(In("job.boards.raw")));
        }
        EXPECT_EQ(results[0].size(), 7U);
        EXPECT_EQ(results[1], results[0]);
        EXPECT_EQ(results[2], results[0]);
    }
}

TEST_F(Convert, TheOneFIFOStageSkipsBlankSwathsToo)
{
    Separation_Write("a.tif", 40, 40, [](int x, int y) { return y == 25 && x == 3; });
    Job_Write("job.toml", {"a.tif", "a.tif"}, 10, "[Stage]\nKind = \"one-fifo\"\nSkipBlank = true\n");
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw").status, 0);
    EXPECT_EQ(RawBands_Read(In("job.boards.raw")).size(), 1U);
}

TEST_F(Convert, HelpAndVersionAreNoErrors)
{
    for (const std::string arguments : {"--help", "convert --help", "--version"})
    {
        const auto result = Boardmap_Run(arguments);
        EXPECT_EQ(result.status, 0) << arguments;
        EXPECT_THAT(result.out, HasSubstr("boardmap")) << arguments;
        EXPECT_THAT(result.error, IsEmpty()) << arguments;
    }
}

TEST_F(Convert, BadUsageExitsWithTwoAndSaysWhy)
{
    Separation_Write("a.tif", 8, 8, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 8);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "subcommand is required"},
        {"convert", "JOB is required"},
        {"convert job.toml --format png", "--format: \"png\" is none of tiff, raw;"},
        {"convert job.toml --progress maybe", "--progress: \"maybe\" is none of auto, bar, plain, none;"},
        {"convert job.toml --unknown", "--unknown"},
        {"convert job.toml -o ''", "--output"},
        {"convert job.toml -o -", "--output -: a TIFF cannot be written to standard output"},
        {"convert job.toml --format raw --compress lzw", "--compress: only TIFF pages are compressed"},
        {"convert job.toml --log missing/log.txt", "missing/log.txt: cannot be opened for writing"},
    };
    for (const auto& [arguments, message] : cases)
    {
        const auto result = Boardmap_Run(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_THAT(result.error, HasSubstr(message)) << arguments;
        EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
    }
    EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml"));
}

TEST_F(Convert, ABrokenJobFileIsOneLineWithItsPlace)
{
    Separation_Write("a.tif", 8, 8, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 8);
    std::string text = File_Read(In("job.toml"));
    text.replace(text.find("PrinterDataWidth = 8"), 20, "PrinterDataWidth = 17");
    File_Write(In("job.toml"), text);
    const auto result = Boardmap_Run("convert job.toml");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.error, "job.toml:6:20: PrinterDataWidth is 17; style 5 needs a multiple of 8\n");
    EXPECT_THAT(result.out, IsEmpty());
}

TEST_F(Convert, AllMistakesOfAJobAndItsSeparationsAreSaidAtOnce)
{
    Separation_Write("a.tif", 8, 8, &Pattern);
    Separation_Write("b.tif", 9, 8, &Pattern);
    Job_Write("job.toml", {"a.tif", "none.tif", "b.tif"}, 8, "[Stage]\nInputBands = 1\n");
    const auto result = Boardmap_Run("convert job.toml");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.error,
              "job.toml:3:14: InputBands is 1; it takes 2 to 64\n"
              "job.toml:19:14: unit 1: Separation none.tif: there is no such file\n"
              "job.toml:22:14: unit 2: Separation b.tif has 9 x 8 pixels, but a.tif has 8 x 8 pixels; all "
              "separations of a page have one size\n");
    EXPECT_THAT(result.out, IsEmpty());
}

TEST_F(Convert, AMistypedCommandNamesItsNearest)
{
    const auto nearest = Boardmap_Run("convrt job.toml");
    EXPECT_EQ(nearest.status, 2);
    EXPECT_EQ(nearest.error, "convrt: there is no such command; did you mean convert? boardmap --help lists them\n");
    EXPECT_EQ(Boardmap_Run("xyz").error,
              "xyz: there is no such command; the commands are init, check, convert, join, layout, "
              "explain, preview, report, verify, info and kernels\n");
}

TEST_F(Convert, TheVersionIsPrintedForEveryCommand)
{
    const auto version = Boardmap_Run("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.out, StartsWith("boardmap "));
    for (const std::string line : {"-V", "convert --version", "convert -V", "check -V", "init -V", "kernels -V"})
    {
        EXPECT_EQ(Boardmap_Run(line).out, version.out) << line;
        EXPECT_EQ(Boardmap_Run(line).status, 0) << line;
    }
}

TEST_F(Convert, AWriteProtectedOutputStaysAsItIs)
{
    Separation_Write("a.tif", 8, 8, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 8);
    File_Write(In("kept.tif"), "earlier");
    std::filesystem::permissions(In("kept.tif"), std::filesystem::perms::owner_read);
    const auto result = Boardmap_Run("convert job.toml -o kept.tif");
    std::filesystem::permissions(In("kept.tif"), std::filesystem::perms::owner_all);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.error, "kept.tif: is write-protected; name another file, or allow writing to it\n");
    EXPECT_EQ(File_Read(In("kept.tif")), "earlier");
}

TEST_F(Convert, SeparationsOfDifferentResolutionsAreAWarning)
{
    for (const std::string name : {"a.tif", "b.tif", "c.tif"})
    {
        Separation_Write(name, 8, 8, &Pattern);
        TIFF* tiff = TIFFOpen(In(name).string().c_str(), "r+");
        ASSERT_NE(tiff, nullptr);
        // The second is the first's in centimetres.
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, name == "b.tif" ? RESUNIT_CENTIMETER : RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, name == "a.tif" ? 600.0 : name == "b.tif" ? 236.22 : 300.0);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, name == "b.tif" ? 236.22 : 600.0);
        ASSERT_EQ(TIFFRewriteDirectory(tiff), 1);
        TIFFClose(tiff);
    }
    Job_Write("job.toml", {"a.tif", "b.tif", "c.tif"}, 8);
    const auto result = Boardmap_Run("convert job.toml --json");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error,
              "job.toml:20:14: warning: unit 2: Separation c.tif has 300 x 600 pixels per inch, but a.tif "
              "has 600 x 600 pixels per inch; the pixels are printed one to one; make all separations of "
              "a page with one resolution\n");
    EXPECT_THAT(result.out, HasSubstr("\"Bands\":1,\"Lines\":8,"));
    EXPECT_THAT(result.out, HasSubstr("\"Rule\":\"separation-resolution\""));
}

TEST_F(Convert, AMissingSeparationIsOneLineThatNamesIt)
{
    Job_Write("job.toml", {"nowhere.tif"}, 8);
    const auto result = Boardmap_Run("convert job.toml");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error, HasSubstr("nowhere.tif"));
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1);
    EXPECT_THAT(Files(), ElementsAre("job.toml"));
}

TEST_F(Convert, ASeparationThatBreaksHalfWayLeavesNothingAndKeepsAnOlderResult)
{
    Separation_Write("a.tif", 400, 600, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 50);
    File_Write(In("job.boards.tif"), "an older result");
    // Spoil the data of a late strip, and keep the file's structure: PackBits data that never ends its rows.
    std::string bytes = File_Read(In("a.tif"));
    TIFF* tiff = TIFFOpen(In("a.tif").string().c_str(), "r");
    ASSERT_NE(tiff, nullptr);
    const std::uint64_t offset = TIFFGetStrileOffset(tiff, 7);
    const std::uint64_t size = TIFFGetStrileByteCount(tiff, 7);
    TIFFClose(tiff);
    bytes.replace(offset, size, std::string(size, '\x80')); // 0x80 is PackBits' "nothing"
    File_Write(In("a.tif"), bytes);
    const auto result = Boardmap_Run("convert job.toml");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error, HasSubstr("a.tif"));
    EXPECT_THAT(result.error, HasSubstr("row 448")); // the first row of strip 7
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
    EXPECT_EQ(File_Read(In("job.boards.tif")), "an older result");
    EXPECT_THAT(Files(), ElementsAre("a.tif", "job.boards.tif", "job.toml"));
}

#if !defined(_WIN32)

TEST_F(Convert, AFullDiskFailsTheRunAndAClosedPipeToo)
{
    Separation_Write("a.tif", 4000, 100, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 50);
    const auto full = Boardmap_Run("convert job.toml --format raw -o /dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.error, HasSubstr("/dev/full"));
    EXPECT_EQ(std::count(full.error.begin(), full.error.end(), '\n'), 1) << full.error;
    const auto closed =
        Shell_Run("{ \"$boardmap\" convert job.toml --format raw -o -; echo $? >status; } | true; cat status");
    EXPECT_EQ(closed.out, "1\n");
    EXPECT_THAT(closed.error, HasSubstr("standard output"));
}

#endif

TEST_F(Convert, NothingThatTheJobReadsIsWrittenTo)
{
    Separation_Write("a.tif", 16, 16, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 16);
    std::error_code noLinks; // a system that has no symbolic links for us: another name for the same file does
    std::filesystem::create_symlink("a.tif", In("link.tif"), noLinks);
    if (noLinks)
    {
        std::filesystem::create_hard_link(In("a.tif"), In("link.tif"));
    }
    std::filesystem::create_hard_link(In("a.tif"), In("hard.tif"));
    const std::string separation = File_Read(In("a.tif"));
    const std::string job = File_Read(In("job.toml"));
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"-o a.tif", "a.tif: the job reads this file; name another file\n"},
        {"-o ./link.tif", "./link.tif: the job reads this file; name another file\n"},
        {"-o hard.tif", "hard.tif: the job reads this file; name another file\n"},
        {"-o job.toml", "job.toml: this is the job file itself; name another file\n"},
        {"--log a.tif", "a.tif: the job reads this file; name another file\n"},
        {"--log job.toml", "job.toml: this is the job file itself; name another file\n"},
        {"-o x.tif --log ./x.tif", "./x.tif: the board data goes to this file; name another one for --log\n"},
    };
    for (const auto& [arguments, message] : cases)
    {
        const auto result = Boardmap_Run("convert job.toml " + arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.error, message);
    }
    EXPECT_EQ(File_Read(In("a.tif")), separation);
    EXPECT_EQ(File_Read(In("job.toml")), job);
    EXPECT_THAT(Files(), ElementsAre("a.tif", "hard.tif", "job.toml", "link.tif"));
}

#if !defined(_WIN32)

TEST_F(Convert, APipeIsNoJobFile)
{
    const auto result = Shell_Run("mkfifo pipe.toml && \"$boardmap\" convert pipe.toml");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.error, "pipe.toml: is a device or a pipe, not a job file\n");
}

TEST_F(Convert, NamesReachTheTerminalOnOneLineAndWithoutControls)
{
    for (const char* command :
         {"check", "convert", "layout", "info", "explain --unit 0 --nozzle 0 --position 0 --band 0"})
    {
        const auto result =
            Shell_Run(std::string("\"$boardmap\" ") + command + " \"$(printf 'a\\033[31m\\nb\\342\\200\\256c')\"");
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.out + result.error, StartsWith("a\\u001b[31m\\u000ab\\u202ec: there is no such file\n"))
            << command;
        EXPECT_THAT(result.out + result.error, Not(AnyOf(HasSubstr("\x1B"), HasSubstr("\xE2\x80\xAE")))) << command;
    }
}

TEST_F(Convert, AFileSizeLimitFailsTheRunAndLeavesNoFile)
{
    Separation_Write("a.tif", 4000, 100, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 50);
    const auto result = Shell_Run("ulimit -f 8; \"$boardmap\" convert job.toml");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("job.boards.tif"));
    EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml"));
}

#endif

TEST_F(Convert, FilesMayHaveNamesInAnyScript)
{
    Separation_Write("a.tif", 16, 16, &Pattern);
    const std::u8string separation = u8"gr\u00FC\u00DFe \u65E5\u672C.tif";
    std::filesystem::rename(In("a.tif"), m_folder.Path() / separation);
    Job_Write("job.toml", {{separation.begin(), separation.end()}}, 16);
    const std::u8string job = u8"\u4ED5\u4E8B.toml";
    std::filesystem::rename(In("job.toml"), m_folder.Path() / job);
    const std::u8string arguments = u8"convert \u4ED5\u4E8B.toml --log \u00FC.log";
    const auto result = Boardmap_Run({arguments.begin(), arguments.end()});
    EXPECT_EQ(result.status, 0) << result.error;
    const std::u8string output = u8"\u4ED5\u4E8B.boards.tif";
    EXPECT_THAT(result.out, StartsWith(std::string(output.begin(), output.end()) + ": 1 band, "));
    for (const std::u8string& name : {separation, job, output, std::u8string(u8"\u00FC.log")})
    {
        EXPECT_GT(std::filesystem::file_size(m_folder.Path() / name), 0U);
    }
    EXPECT_EQ(Files().size(), 4U);

    const std::u8string missing = u8"convert \u4ED5.toml";
    const std::u8string message = u8"\u4ED5.toml: there is no such file\n";
    EXPECT_EQ(Boardmap_Run({missing.begin(), missing.end()}).error, std::string(message.begin(), message.end()));
}

TEST_F(Convert, LibraryRecordsGoToStandardErrorAndToAFileOnRequest)
{
    Separation_Write("a.tif", 16, 16, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 16);
    const auto quiet = Boardmap_Run("convert job.toml");
    EXPECT_THAT(quiet.error, IsEmpty());
    const auto verbose = Boardmap_Run("convert job.toml -v");
    EXPECT_THAT(verbose.error, HasSubstr("UnitData2BoardData_Base"));
    EXPECT_THAT(verbose.error, HasSubstr("Complete : CUnitData2BoardData_Base"));
    ASSERT_EQ(Boardmap_Run("convert job.toml --log run.log").status, 0);
    ASSERT_EQ(Boardmap_Run("convert job.toml --log run.log").status, 0);
    const std::string log = File_Read(In("run.log"));
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2); // the second run appends
    EXPECT_THAT(log, HasSubstr("Complete : CUnitData2BoardData_Base"));
}

TEST_F(Convert, ProgressIsPlainLinesABarOrNothing)
{
    Separation_Write("a.tif", 16, 16, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 8);
    EXPECT_THAT(Boardmap_Run("convert job.toml --progress plain").error, HasSubstr("2/2 bands"));
    const auto bar = Boardmap_Run("convert job.toml --progress bar");
    EXPECT_THAT(bar.error, HasSubstr("[############################] 2/2 bands"));
    EXPECT_THAT(bar.error, HasSubstr("\r"));
    EXPECT_THAT(Boardmap_Run("convert job.toml --progress none").error, IsEmpty());
    EXPECT_THAT(Boardmap_Run("convert job.toml --progress auto").error, IsEmpty()); // not a terminal
}

#if !defined(_WIN32)

TEST_F(Convert, AnInterruptEndsTheRunInOrderWithStatus130AndLeavesNoFile)
{
    const std::vector<std::string> units(8, "big.tif");
    LongPage_Write(In("big.tif"));
    for (const auto& [signal, kind] :
         {std::pair<std::string, std::string>{"INT", "base"}, {"TERM", "ink-stripe"}, {"INT", "one-fifo"}})
    {
        Job_Write("job.toml", units, 400, "[Stage]\nKind = \"" + kind + "\"\n");
        const auto result = Boardmap_Interrupt("convert job.toml", signal);
        EXPECT_EQ(result.status, 130) << result.out << result.error;
        EXPECT_EQ(result.out, "interrupted; nothing was written\n");
        EXPECT_THAT(Files(), ElementsAre("big.tif", "job.toml"));
    }
}

#else

// Without a console there is nobody to send an interrupt to another process: the command runs in this one.
TEST_F(Convert, AnInterruptEndsTheRunInOrderAndLeavesNoFile)
{
    LongPage_Write(In("big.tif"));
    for (const std::string kind : {"base", "ink-stripe", "one-fifo"})
    {
        Job_Write("job.toml", std::vector<std::string>(8, "big.tif"), 400, "[Stage]\nKind = \"" + kind + "\"\n");
        SConvertOptions options;
        options.m_job = In("job.toml");
        options.m_output = In("job.boards.tif");
        options.m_progress = EProgress::None;
        std::thread user(
            [this]
            {
                while (Files().size() < 3) // until there is a file in the making
                {
                    std::this_thread::yield();
                }
                std::raise(SIGINT);
            });
        EXPECT_FALSE(Convert_Run(options));
        user.join();
        EXPECT_THAT(Files(), ElementsAre("big.tif", "job.toml"));
    }
}

#endif

#if !defined(BOARDMAP_SANITIZED) // the sanitizers' own address space is larger than any limit

TEST_F(Convert, APageLargerThanTheMemoryLimitIsNoHardship)
{
    // 8,000 columns x 600,000 rows, uncompressed in one strip: 600 MB of pixels, on disk a hole with ink in its last
    // row.
    constexpr std::uint32_t width = 8000;
    constexpr std::uint32_t height = 600000;
    constexpr std::uint32_t dataSize = width / 8 * height;
    const auto Word = [](std::uint32_t value, int bytes)
    {
        std::string text;
        for (int i = 0; i < bytes; ++i)
        {
            text += static_cast<char>(value >> (8 * i) & 0xFF);
        }
        return text;
    };
    constexpr std::uint32_t headerSize = 8 + 2 + 9 * 12 + 4;
    const std::vector<std::array<std::uint32_t, 2>> tags = {{256, width}, {257, height}, {258, 1},
                                                            {259, 1},     {262, 0},      {273, headerSize},
                                                            {277, 1},     {278, height}, {279, dataSize}};
    std::string header = "II" + Word(42, 2) + Word(8, 4) + Word(static_cast<std::uint32_t>(tags.size()), 2);
    for (const auto& [tag, value] : tags)
    {
        header += Word(tag, 2) + Word(4, 2) + Word(1, 4) + Word(value, 4);
    }
    header += Word(0, 4);
    ASSERT_EQ(header.size(), headerSize);
    File_Write(In("tall.tif"), header);
    std::filesystem::resize_file(In("tall.tif"), headerSize + std::uint64_t{dataSize});
    {
        std::fstream stream(In("tall.tif"), std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(headerSize + std::streamoff{dataSize} - 1);
        stream.put('\x01'); // the last pixel of the last row
    }
    Job_Write("job.toml", {"tall.tif"}, 1000, "[Stage]\nSkipBlank = true\n");
#if defined(_WIN32)
    const auto result = Boardmap_Run("convert job.toml"); // nothing limits it, so it is taken at its word
    const auto peak = result.out.find("peak memory ");
    ASSERT_NE(peak, std::string::npos) << result.error;
    EXPECT_THAT(result.out, HasSubstr(" MB\n"));
    EXPECT_LT(std::stoi(result.out.substr(peak + 12)), 400);
#else
    const auto result = Shell_Run("ulimit -v 400000 && MALLOC_ARENA_MAX=2 \"$boardmap\" convert job.toml");
#endif
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, StartsWith("job.boards.tif: 1 band, 8000 lines"));
    const auto bands = TiffBands_Read(In("job.boards.tif"));
    ASSERT_EQ(bands.size(), 1U);
    EXPECT_EQ(std::count(bands[0].begin(), bands[0].end(), 0), static_cast<long>(bands[0].size()) - 1);
    EXPECT_EQ(bands[0][999], 0x80); // swath 599 runs right to left: the last column comes first, nozzle 999
}

#endif
