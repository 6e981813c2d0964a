// Runs the real boardmap binary from a test, in a folder of the test's own, and looks at what it left behind. Through
// the POSIX shell, or the Windows command processor.
#pragma once

#include "Tests/Support/TestFolder.h"

#if defined(_WIN32)
#include "Tests/Host/Command/ProgramRun.h"
#endif

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <tiffio.h>
#include <utility>
#include <vector>

struct SCommandResult
{
    int status = 0;
    std::string out;
    std::string error;
};

// A test with a folder of its own, in which the program runs.
class CCommandTest : public testing::Test
{
protected:
    std::filesystem::path In(const std::string& name) const { return m_folder / name; }

#if defined(_WIN32)

    static constexpr const char* intoFile = ">";

    // Runs the program in the test's folder. `arguments` is UTF-8, an empty one is ''; a last ">name" takes standard
    // output.
    SCommandResult Boardmap_Run(std::string arguments) const
    {
        for (auto at = arguments.find("''"); at != std::string::npos; at = arguments.find("''"))
        {
            arguments.replace(at, 2, "\"\"");
        }
        const auto redirection = arguments.find('>');
        const bool bRedirected = redirection != std::string::npos;
        const CProgramRun run("\"" BOARDMAP_PROGRAM "\" " + arguments.substr(0, redirection), m_folder.Path(),
                              bRedirected ? In(arguments.substr(redirection + 1)) : m_scratch / "out",
                              m_scratch / "error");
        return {run.Wait(), bRedirected ? "" : Text_Read(m_scratch / "out"), Text_Read(m_scratch / "error")};
    }

#else

    // Takes standard output through a pipe into the file whose name follows.
    static constexpr const char* intoFile = "| cat >";

    // Runs a shell line in the test's folder; $boardmap is the program.
    SCommandResult Shell_Run(const std::string& line) const
    {
        const std::string script = m_scratch.Path().string() + "/script";
        const std::string out = m_scratch.Path().string() + "/out";
        const std::string error = m_scratch.Path().string() + "/error";
        File_Write(script,
                   "cd '" + m_folder.Path().string() + "' && boardmap='" BOARDMAP_PROGRAM "' && " + line + '\n');
        SCommandResult result;
        const int status = std::system(("sh '" + script + "' >'" + out + "' 2>'" + error + "'").c_str());
        result.status = status / 256; // the shell's exit status
        result.out = File_Read(out);
        result.error = File_Read(error);
        return result;
    }

    SCommandResult Boardmap_Run(const std::string& arguments) const
    {
        return Shell_Run("\"$boardmap\" " + arguments);
    }

    // Sends the program a signal when it has begun to count bands; one that a shell makes its jobs ignore, too. The
    // output is what it wrote, and then the last line of what it said; neither leaves a file in the test's folder.
    SCommandResult Boardmap_Interrupt(const std::string& arguments, const std::string& signal) const
    {
        const std::string log = '\'' + m_scratch.Path().string() + "/log'";
        return Shell_Run(": >" + log + "\nenv --default-signal=INT \"$boardmap\" " + arguments +
                         " --progress plain 2>" + log +
                         " &\npid=$!\n"
                         "while kill -0 $pid && ! grep -q bands " +
                         log + "; do sleep 0.02; done\nkill -" + signal + " $pid; wait $pid; status=$?\ntail -n 1 " +
                         log + "; exit $status");
    }

#endif

    // Each of these command lines, arguments and what the error has to say, is bad input: exit status 2, no answer, and
    // no file more or less.
    void Refusals_Check(const std::vector<std::pair<std::string, std::string>>& lines) const
    {
        const auto files = Files();
        for (const auto& [arguments, text] : lines)
        {
            const auto result = Boardmap_Run(arguments);
            EXPECT_EQ(result.status, 2) << arguments;
            EXPECT_NE(result.error.find(text), std::string::npos) << arguments << ": " << result.error;
            EXPECT_EQ(result.out, "") << arguments;
            EXPECT_EQ(Files(), files) << arguments;
        }
    }

    // The names of the files in the test's folder.
    std::vector<std::string> Files() const
    {
        return m_folder.Names();
    }

    // A 1-bit separation in which pixel (x, y) has ink where `ink` says so.
    template<class Ink>
    void Separation_Write(const std::string& name, int width, int height, Ink ink) const
    {
        TIFF* tiff = TIFFOpen(In(name).string().c_str(), "w");
        ASSERT_NE(tiff, nullptr);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 64);
        std::vector<unsigned char> row(static_cast<std::size_t>(width + 7) / 8);
        for (int y = 0; y < height; ++y)
        {
            std::fill(row.begin(), row.end(), static_cast<unsigned char>(0));
            for (int x = 0; x < width; ++x)
            {
                if (ink(x, y))
                {
                    row[static_cast<std::size_t>(x) / 8] |= static_cast<unsigned char>(0x80 >> (x % 8));
                }
            }
            ASSERT_EQ(TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0), 1);
        }
        TIFFClose(tiff);
    }

    // A job of one 1-bit unit per named separation, frames of 8 bits.
    void Job_Write(const std::string& name, const std::vector<std::string>& separations, int nozzles,
                   const std::string& stage = "") const
    {
        std::ostringstream text;
        text << "Version = 1\n"
             << stage
             << "[DPOption]\nDataMapStyle = 6\nDataPushStyle = 2\nPrinterSupportBits = 1\nPrinterDataWidth = 8\n"
             << "[PrintParam]\nBitsPerPixel = 1\nBidirectional = true\n[CartInfo]\nNozzles = " << nozzles << '\n';
        int unit = 0;
        for (const std::string& separation : separations)
        {
            text << "[[CartInfo.Unit]]\nUnitId = " << unit++ << "\nSeparation = \"" << separation << "\"\n";
        }
        File_Write(In(name), text.str());
    }

    // A page of 4 x 3 for two units of 2 nozzles, an offset and a zone: small enough to follow by hand.
    void SmallJob_Write() const
    {
        Separation_Write("c.tif", 4, 3, [](int x, int y) { return x == 1 && y == 2; });
        Separation_Write("m.tif", 4, 3, [](int x, int) { return x == 0; });
        File_Write(In("job.toml"),
                   "Version = 1\n[DPOption]\nDataMapStyle = 6\nDataPushStyle = 2\nPrinterSupportBits = 1\n"
                   "PrinterDataWidth = 8\n[PrintParam]\nBitsPerPixel = 1\nBidirectional = true\n[InkStripe]\n"
                   "LeftStripeWidth = 6\nRightStripeWidth = 4\nUnitPitch = 2\nUnitPositionCount = 2\n"
                   "[CartInfo]\nNozzles = 2\n"
                   "[[CartInfo.Unit]]\nUnitId = 0\nName = \"Cyan\"\nSeparation = \"c.tif\"\nHorizon_1 = 1\n"
                   "[[CartInfo.Unit]]\nUnitId = 3\nName = \"Magenta\"\nSeparation = \"m.tif\"\nHorizon_2 = 2\n");
    }

#if defined(_WIN32)
    // What the system ends lines with is no matter of these tests.
    static std::string Text_Read(const std::filesystem::path& file)
    {
        std::string text = File_Read(file);
        for (auto at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n"))
        {
            text.erase(at, 1);
        }
        return text;
    }
#endif

    CTestFolder m_folder;
    CTestFolder m_scratch; // beside it, so that the program's folder holds the program's files only
};
