// Runs the real boardmap binary from a test, in a folder of the test's own, and looks at what it left behind. POSIX
// shell syntax.
#pragma once

#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <tiffio.h>
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

    SCommandResult Boardmap_Run(const std::string& arguments) const { return Shell_Run("\"$boardmap\" " + arguments); }

    // The names of the files in the test's folder.
    std::vector<std::string> Files() const { return m_folder.Names(); }

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

    CTestFolder m_folder;
    CTestFolder m_scratch; // beside it, so that the program's folder holds the program's files only
};
