// The demonstration page, converted by the real program, against the checked twin: every bit of every board band, from
// separations that this test reads in its own way.
#include "Tests/Host/Command/CommandSupport.h"
#include "Tests/Twin/BoardTwin.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace
{

using DemoPage = CCommandTest;
using TiffPtr = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

// A page of ink values, a byte per pixel.
struct SPage
{
    int width = 0;
    int height = 0;
    std::vector<unsigned char> ink;

    int At(int x, int y) const
    {
        return y < height
                   ? ink[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]
                   : 0;
    }
};

SPage Page_Read(const std::string& name, int bits)
{
    SPage page;
    const std::string file = std::string(DEMO_PAGE_FOLDER) + '/' + name;
    const TiffPtr tiff(TIFFOpen(file.c_str(), "r"), &TIFFClose);
    if (tiff == nullptr)
    {
        ADD_FAILURE() << file << " is missing; Scripts/demo-page build/demo makes it";
        return page;
    }
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &page.width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &page.height);
    std::uint16_t photometric = 0;
    TIFFGetField(tiff.get(), TIFFTAG_PHOTOMETRIC, &photometric);
    const int most = (1 << bits) - 1;
    std::vector<unsigned char> row(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())));
    for (int y = 0; y < page.height; ++y)
    {
        EXPECT_EQ(TIFFReadScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(y), 0), 1);
        for (int x = 0; x < page.width; ++x)
        {
            const int position = x * bits;
            const int sample = row[static_cast<std::size_t>(position) / 8] >> (8 - bits - position % 8) & most;
            const int ink = photometric == PHOTOMETRIC_MINISBLACK ? most - sample : sample;
            page.ink.push_back(static_cast<unsigned char>(ink));
        }
    }
    return page;
}

// The unit band of one swath, pixel by pixel.
std::vector<unsigned char> UnitBand_Make(const SPage& page, int swath, int nozzles, int bits, int lineBytes)
{
    std::vector<unsigned char> data(static_cast<std::size_t>(page.width) * static_cast<std::size_t>(lineBytes));
    for (int line = 0; line < page.width; ++line)
    {
        const int x = swath % 2 == 0 ? line : page.width - 1 - line;
        for (int nozzle = 0; nozzle < nozzles; ++nozzle)
        {
            const int position = nozzle * bits;
            data[static_cast<std::size_t>(line * lineBytes + position / 8)] |=
                static_cast<unsigned char>(page.At(x, swath * nozzles + nozzle) << (8 - bits - position % 8));
        }
    }
    return data;
}

void Bands_Compare(const std::filesystem::path& file, const std::vector<SPage>& pages, const STwinStyle& style,
                   int bits)
{
    constexpr int nozzles = 400;
    const int lineBytes = (nozzles * bits + 7) / 8;
    const SPage& first = pages.front();
    const int swathCount = (first.height + nozzles - 1) / nozzles;
    const TiffPtr tiff(TIFFOpen(file.string().c_str(), "r"), &TIFFClose);
    ASSERT_NE(tiff, nullptr);
    ASSERT_EQ(TIFFNumberOfDirectories(tiff.get()), static_cast<unsigned>(swathCount));
    std::size_t inked = 0;
    for (int swath = 0; swath < swathCount; ++swath)
    {
        std::vector<std::vector<unsigned char>> data;
        std::vector<STwinBand> bands;
        for (const SPage& page : pages)
        {
            data.push_back(UnitBand_Make(page, swath, nozzles, bits, lineBytes));
        }
        for (std::size_t unit = 0; unit < pages.size(); ++unit)
        {
            bands.push_back({static_cast<int>(unit), 1, nozzles, bits, first.width, lineBytes, data[unit]});
        }
        const STwinBoardBand twin = CBoardTwin(style).Band_Map(bands);
        ASSERT_EQ(TIFFSetDirectory(tiff.get(), static_cast<std::uint16_t>(swath)), 1);
        std::vector<unsigned char> row(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())));
        ASSERT_EQ(row.size(), static_cast<std::size_t>(twin.bytesPerLine));
        for (int line = 0; line < twin.height; ++line)
        {
            ASSERT_EQ(TIFFReadScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(line), 0), 1);
            const auto begin = twin.data.begin() + std::ptrdiff_t{line} * twin.bytesPerLine;
            ASSERT_TRUE(std::equal(row.begin(), row.end(), begin)) << "swath " << swath << " line " << line;
            inked +=
                static_cast<std::size_t>(std::count_if(row.begin(), row.end(), [](int byte) { return byte != 0; }));
        }
    }
    EXPECT_GT(inked, 10000U); // the page is not blank
}

} // namespace

TEST_F(DemoPage, EveryBitOfTheFourColoursStandsWhereTheTwinPutsIt)
{
    const std::string job = std::string(DEMO_PAGE_FOLDER) + "/demo-cmyk.toml";
    std::filesystem::copy_file(std::string(DEMO_JOB_FOLDER) + "/demo-cmyk.toml", job,
                               std::filesystem::copy_options::overwrite_existing);
    const auto result = Boardmap_Run("convert '" + job + "' -o boards.tif");
    ASSERT_EQ(result.status, 0) << result.error;
    STwinStyle style;
    Bands_Compare(In("boards.tif"),
                  {Page_Read("page.Cyan.tif", 1), Page_Read("page.Magenta.tif", 1), Page_Read("page.Yellow.tif", 1),
                   Page_Read("page.Black.tif", 1)},
                  style, 1);
}

TEST_F(DemoPage, EveryBitOfTheGreyPageStandsWhereTheTwinPutsIt)
{
    const std::string job = std::string(DEMO_PAGE_FOLDER) + "/demo-grey.toml";
    std::filesystem::copy_file(std::string(DEMO_JOB_FOLDER) + "/demo-grey.toml", job,
                               std::filesystem::copy_options::overwrite_existing);
    const auto result = Boardmap_Run("convert '" + job + "' -o boards.tif");
    ASSERT_EQ(result.status, 0) << result.error;
    const SPage page = Page_Read("page.Grey.tif", 2);
    std::array<std::size_t, 4> levels = {};
    for (const unsigned char ink : page.ink)
    {
        ++levels[ink];
    }
    for (const std::size_t count : levels)
    {
        EXPECT_GT(count, 1000U); // all four drop sizes are there
    }
    STwinStyle style;
    style.srcBitCount = 2;
    Bands_Compare(In("boards.tif"), {page}, style, 2);
}
