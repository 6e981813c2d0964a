// The example jobs on the demonstration page, converted by the real program, against the checked twin: every bit of the
// board bands, from separations that this test reads in its own way.
#include "Host/Model/BoardTwin.h"
#include "Tests/Host/Command/CommandSupport.h"

#include "Host/Job/Job.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <memory>

namespace
{

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

// A unit band, pixel by pixel: `lines` lines of `width` pixels.
struct SBand
{
    int unitIndex = 0;
    int direction = 1;
    int width = 0;
    int lines = 0;
    int bits = 1;
    std::vector<unsigned char> data;

    int LineBytes() const { return (width * bits + 7) / 8; }
    void Pixel_Set(int line, int pixel, int value)
    {
        const int position = pixel * bits;
        data[static_cast<std::size_t>(line * LineBytes() + position / 8)] |=
            static_cast<unsigned char>(value << (8 - bits - position % 8));
    }
    STwinBand Twin() const { return {unitIndex, direction, width, bits, lines, LineBytes(), data}; }
};

// What the job's example says, worked out from the road that a carriage takes. Positions count from the first one that
// the carriage meets in the pass.
class CExample
{
public:
    explicit CExample(const std::string& name) : m_job(Job_Load(std::string(DEMO_PAGE_FOLDER) + '/' + name))
    {
        for (const SJobUnit& unit : m_job.m_units)
        {
            m_maxOffset[0] = std::max(m_maxOffset[0], unit.m_horizon_1);
            m_maxOffset[1] = std::max(m_maxOffset[1], unit.m_horizon_2);
            if (unit.HasSeparation() && !m_pages.contains(unit.m_separation))
            {
                m_pages[unit.m_separation] = Page_Read(unit.m_separation, m_job.m_bitsPerPixel);
            }
        }
    }

    int SwathCount() const { return (Page().height + m_job.m_nozzles - 1) / m_job.m_nozzles; }
    int UnitCount() const { return static_cast<int>(m_job.m_units.size()); }

    // The board band of a swath, bit by bit.
    STwinBoardBand Board_Make(int swath) const
    {
        const bool bLeftToRight = !m_job.m_bBidirectional || swath % 2 == 0;
        std::vector<SBand> bands;
        for (const SJobUnit& unit : m_job.m_units)
        {
            if (unit.HasSeparation())
            {
                bands.push_back(Image_Make(unit, swath, bLeftToRight));
            }
        }
        for (const SJobUnit& unit : m_job.m_units)
        {
            if (!unit.HasSeparation() && Stripes() > 0)
            {
                bands.push_back(Stripe_Make(unit, bLeftToRight));
            }
        }
        std::vector<STwinBand> twins;
        std::ranges::transform(bands, std::back_inserter(twins), &SBand::Twin);
        return CBoardTwin(Style()).Band_Map(twins);
    }

private:
    const SPage& Page() const { return m_pages.begin()->second; }
    bool IsPlanePair() const { return m_job.m_map.m_class == EMapClass::Map_8; }
    int Stripes() const { return m_job.m_inkStripe.m_leftStripeWidth + m_job.m_inkStripe.m_rightStripeWidth; }

    SBand Blank_Make(const SJobUnit& unit, bool bLeftToRight) const
    {
        SBand band;
        band.unitIndex = unit.m_unitId;
        band.direction = unit.m_direction;
        band.width = m_job.m_nozzles * (IsPlanePair() ? 2 : 1); // described bit by bit
        band.bits = IsPlanePair() ? 1 : m_job.m_bitsPerPixel;
        band.lines = Page().width + Stripes() + m_maxOffset[bLeftToRight ? 1 : 0];
        band.data.resize(static_cast<std::size_t>(band.lines) * static_cast<std::size_t>(band.LineBytes()));
        return band;
    }

    void Ink_Set(SBand& band, int line, int nozzle, int ink) const
    {
        if (IsPlanePair())
        {
            band.Pixel_Set(line, 2 * nozzle, ink / 2);
            band.Pixel_Set(line, 2 * nozzle + 1, ink % 2);
        }
        else
        {
            band.Pixel_Set(line, nozzle, ink);
        }
    }

    // The left zone, the unit's offset and the columns from left to right; or the right zone and everything mirrored.
    SBand Image_Make(const SJobUnit& unit, int swath, bool bLeftToRight) const
    {
        const SPage& page = m_pages.at(unit.m_separation);
        SBand band = Blank_Make(unit, bLeftToRight);
        const int begin = bLeftToRight ? m_job.m_inkStripe.m_leftStripeWidth + unit.m_horizon_2
                                       : m_job.m_inkStripe.m_rightStripeWidth + unit.m_horizon_1;
        for (int column = 0; column < page.width; ++column)
        {
            const int x = bLeftToRight ? column : page.width - 1 - column;
            for (int nozzle = 0; nozzle < m_job.m_nozzles; ++nozzle)
            {
                Ink_Set(band, begin + column, nozzle, page.At(x, swath * m_job.m_nozzles + nozzle));
            }
        }
        return band;
    }

    // The unit's slot in either zone: slots are a pitch apart, by unit position, and begin where the zones' outer edge
    // (left) or the image (right) is.
    SBand Stripe_Make(const SJobUnit& unit, bool bLeftToRight) const
    {
        SBand band = Blank_Make(unit, bLeftToRight);
        const SJobInkStripe& stripe = m_job.m_inkStripe;
        const int slot = unit.m_unitPosition * stripe.m_unitPitch;
        const int mirrored = (stripe.m_unitPositionCount - 1 - unit.m_unitPosition) * stripe.m_unitPitch;
        const int image = Page().width;
        const int leftZone = bLeftToRight ? unit.m_horizon_2
                                          : unit.m_horizon_1 + stripe.m_rightStripeWidth + image +
                                                stripe.m_leftStripeWidth - slot - stripe.m_unitPitch;
        const int rightZone = bLeftToRight ? unit.m_horizon_2 + stripe.m_leftStripeWidth + image +
                                                 stripe.m_rightStripeWidth - mirrored - stripe.m_unitPitch
                                           : unit.m_horizon_1 + mirrored;
        if (stripe.m_leftStripeWidth > 0)
        {
            Fill_Set(band, leftZone + (bLeftToRight ? slot : 0), unit);
        }
        if (stripe.m_rightStripeWidth > 0)
        {
            Fill_Set(band, rightZone, unit);
        }
        return band;
    }

    void Fill_Set(SBand& band, int firstLine, const SJobUnit& unit) const
    {
        EXPECT_EQ(unit.m_stripeColor.m_fill, EStripeFill::Full) << "the examples fill their stripes";
        for (int line = 0; line < m_job.m_inkStripe.m_stripeLength; ++line)
        {
            for (int nozzle = 0; nozzle < m_job.m_nozzles; ++nozzle)
            {
                Ink_Set(band, firstLine + line, nozzle, (1 << m_job.m_bitsPerPixel) - 1);
            }
        }
    }

    STwinStyle Style() const
    {
        static const std::map<EMapClass, ETwinStyle> styles = {
            {EMapClass::Map_1, ETwinStyle::Style_1},   {EMapClass::Map_2, ETwinStyle::Style_2},
            {EMapClass::Map_03, ETwinStyle::Style_03}, {EMapClass::Map_03_01, ETwinStyle::Style_03_01},
            {EMapClass::Map_5, ETwinStyle::Style_5},   {EMapClass::Map_6, ETwinStyle::Style_6},
            {EMapClass::Map_7, ETwinStyle::Style_7},   {EMapClass::Map_8, ETwinStyle::Style_8}};
        STwinStyle style;
        style.style = styles.at(m_job.m_map.m_class);
        style.srcBitCount = m_job.m_map.m_srcBitCount;
        style.frameWidth = m_job.m_dpOption.m_printerDataWidth;
        style.dotSizeMode = static_cast<int>(m_job.m_dotSizeMode);
        return style;
    }

    SJob m_job;
    std::map<std::string, SPage> m_pages; // by separation
    std::array<int, 2> m_maxOffset = {};  // right to left, left to right
};

std::vector<std::string> ExampleJobs_Get()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(DEMO_JOB_FOLDER))
    {
        names.push_back(entry.path().filename().string());
    }
#if defined(BOARDMAP_SANITIZED) // walking a page takes ten times as long: the two jobs of the demonstration
    std::erase_if(names, [](const std::string& name) { return !name.starts_with("demo-"); });
#endif
    std::ranges::sort(names);
    return names;
}

class ExampleJob : public CCommandTest, public testing::WithParamInterface<std::string>
{
};

} // namespace

// The demonstration jobs are compared whole; of the others a swath of either pass and the last.
TEST_P(ExampleJob, EveryBitOfTheDemoPageStandsWhereTheTwinPutsIt)
{
    const std::string name = GetParam();
    File_Write(std::string(DEMO_PAGE_FOLDER) + '/' + name, File_Read(std::string(DEMO_JOB_FOLDER) + '/' + name));
    const auto result = Boardmap_Run("convert \"" + std::string(DEMO_PAGE_FOLDER) + '/' + name + "\" -o boards.tif");
    ASSERT_EQ(result.status, 0) << result.error;

    const CExample example(name);
    const TiffPtr tiff(TIFFOpen(In("boards.tif").string().c_str(), "r"), &TIFFClose);
    ASSERT_NE(tiff, nullptr);
    ASSERT_EQ(TIFFNumberOfDirectories(tiff.get()), static_cast<unsigned>(example.SwathCount()));
    std::size_t inked = 0;
    for (int swath = 0; swath < example.SwathCount(); ++swath)
    {
        const bool bSample = swath == 4 || swath == 5 || swath + 1 == example.SwathCount();
        if (!name.starts_with("demo") && !bSample)
        {
            continue;
        }
        const STwinBoardBand twin = example.Board_Make(swath);
        ASSERT_EQ(TIFFSetDirectory(tiff.get(), static_cast<std::uint16_t>(swath)), 1);
        std::uint32_t rows = 0;
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &rows);
        ASSERT_EQ(rows, static_cast<unsigned>(twin.height));
        std::vector<unsigned char> row(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())));
        ASSERT_EQ(row.size(), static_cast<std::size_t>(twin.bytesPerLine));
        for (int line = 0; line < twin.height; ++line)
        {
            ASSERT_EQ(TIFFReadScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(line), 0), 1);
            const auto begin = twin.data.begin() + std::ptrdiff_t{line} * twin.bytesPerLine;
            ASSERT_TRUE(std::equal(row.begin(), row.end(), begin)) << "swath " << swath << " line " << line;
            inked += static_cast<std::size_t>(std::ranges::count_if(row, [](int byte) { return byte != 0; }));
        }
    }
    EXPECT_GT(inked, 1000U); // the page is not blank
}

INSTANTIATE_TEST_SUITE_P(Jobs, ExampleJob, testing::ValuesIn(ExampleJobs_Get()),
                         [](const auto& job)
                         {
                             std::string name = job.param.substr(0, job.param.rfind('.'));
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

TEST(DemoPage, TheGreySeparationHasAllFourDropSizes)
{
    const SPage page = Page_Read("page.Grey.tif", 2);
    std::array<std::size_t, 4> levels = {};
    for (const unsigned char ink : page.ink)
    {
        ++levels[ink];
    }
    for (const std::size_t count : levels)
    {
        EXPECT_GT(count, 1000U);
    }
}
