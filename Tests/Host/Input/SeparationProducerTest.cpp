// The producer of unit bands, run as the thread that it is.
#include "Host/Input/SeparationProducer.h"

#include "Host/HostError.h"
#include "Tests/Host/Input/TiffMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <thread>

namespace
{

using namespace std::chrono_literals;

constexpr unsigned exitMs = 10000;

// What a consumer saw of one band.
struct SBandCopy
{
    SBandHeader header;
    std::vector<unsigned char> data;
    int bytesPerLine = 0;

    const unsigned char* Line(int line) const { return data.data() + line * bytesPerLine; }
};

// A separation, its FIFO and its producer.
class CProduction
{
public:
    CProduction(const SInk& ink, const SSwathPlan& plan, int bandCount, int alignBytes = 1)
    {
        Tiff_Write(m_folder / "page.tif", ink,
                   {.name = "page", .compression = COMPRESSION_PACKBITS, .rowsPerStrip = 5});
        Producer_Make(plan, bandCount, alignBytes);
    }
    CProduction(const std::string& tiffBytes, const SSwathPlan& plan, int bandCount)
    {
        File_Write(m_folder / "page.tif", tiffBytes);
        Producer_Make(plan, bandCount, 1);
    }

    CSeparationProducer& Producer() { return *m_producer; }
    CBandDataFIFO& FIFO() { return *m_fifo; }
    std::string Path() const { return (m_folder / "page.tif").string(); }

    void Start() { ASSERT_TRUE(m_producer->Start("producer")); }

    // Takes bands until the producer has no more, giving each back to the pool.
    std::vector<SBandCopy> Bands_Take()
    {
        std::vector<SBandCopy> bands;
        while (auto band = Band_Take())
        {
            bands.push_back(*band);
        }
        return bands;
    }

    // The next band; none when the page is complete, the producer has failed, or nothing comes for seconds.
    std::optional<SBandCopy> Band_Take()
    {
        const auto end = std::chrono::steady_clock::now() + 20s;
        CBandData* band = nullptr;
        while (!m_fifo->Full_Out(band, 10))
        {
            const bool bFailed = m_producer->Error_Get() != nullptr;
            if (m_fifo->IsCompleted() || (bFailed && !m_fifo->Full_WaitForOut(0)))
            {
                return std::nullopt;
            }
            if (std::chrono::steady_clock::now() > end)
            {
                ADD_FAILURE() << "no band";
                return std::nullopt;
            }
        }
        SBandCopy copy{*band, {band->m_pData, band->m_pData + band->m_dataSize}, band->m_bytesPerLine};
        EXPECT_TRUE(m_fifo->Empty_In(band, 0));
        return copy;
    }

    // How many bands there are in the FIFO, free and full; takes them all out and deletes them.
    int Bands_Count()
    {
        int count = 0;
        CBandData* band = nullptr;
        while (m_fifo->Empty_Out(band, 0) || m_fifo->Full_Out(band, 0))
        {
            delete band;
            ++count;
        }
        return count;
    }

    std::string Error_Text()
    {
        try
        {
            std::rethrow_exception(m_producer->Error_Get());
        }
        catch (const CInputError& error)
        {
            return std::string("input: ") + error.what();
        }
        catch (const CRunError& error)
        {
            return std::string("run: ") + error.what();
        }
    }

private:
    void Producer_Make(const SSwathPlan& plan, int bandCount, int alignBytes)
    {
        const SSeparationInfo page = SeparationInfo_Get(Path());
        m_fifo = UnitBandPool_Create("unit", UnitBandSize_Get(page, plan), bandCount, alignBytes);
        const auto Open = [this](int) { return std::make_unique<CSeparationReader>(Path()); };
        m_producer = std::make_unique<CSeparationProducer>(page, Open, plan, m_fifo.get());
    }

    CTestFolder m_folder;
    std::unique_ptr<CBandDataFIFO> m_fifo;
    std::unique_ptr<CSeparationProducer> m_producer;
};

// Compares a band with the page, pixel by pixel, and checks that nothing else is set in it.
void Band_Expect(const SBandCopy& band, const SInk& ink, const SSwathPlan& plan)
{
    const bool bPlanes = plan.bByUnitPlanes && ink.bitsPerPixel == 2;
    const int lineBits = bPlanes ? 1 : ink.bitsPerPixel;
    SInk lines = Ink_Blank(band.bytesPerLine * 8 / lineBits, ink.width * (bPlanes ? 2 : 1), lineBits);
    for (int row = 0; row < band.header.m_rowCount; ++row)
    {
        for (int column = 0; column < ink.width; ++column)
        {
            const int position = band.header.m_bandAttr == 1 ? column : ink.width - 1 - column;
            const unsigned value = ink.Pixel_Get(band.header.m_firstRow + row, column);
            if (bPlanes)
            {
                lines.Pixel_Set(2 * position, row, value / 2);
                lines.Pixel_Set(2 * position + 1, row, value % 2);
            }
            else
            {
                lines.Pixel_Set(position, row, value);
            }
        }
    }
    EXPECT_EQ(band.data, lines.bytes);
}

bool WaitFor(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!condition() && std::chrono::steady_clock::now() < end)
    {
        std::this_thread::sleep_for(1ms);
    }
    return condition();
}

// Stops the producer and says how long its thread took to end.
std::chrono::nanoseconds Stop_Measure(CSeparationProducer& producer)
{
    const auto begin = std::chrono::steady_clock::now();
    producer.Stop();
    EXPECT_TRUE(producer.WaitExit(exitMs));
    return std::chrono::steady_clock::now() - begin;
}

// A page of 16 columns and 24 rows, deflated in strips of 8 rows of which the second is damaged.
std::string DamagedSecondStrip()
{
    const CTestFolder folder;
    const SInk ink = Ink_Random(16, 24, 1, 7);
    Tiff_Write(folder / "whole.tif", ink,
               {.name = "whole", .compression = COMPRESSION_ADOBE_DEFLATE, .rowsPerStrip = 8});
    std::string bytes = File_Read(folder / "whole.tif");
    bytes[PixelData_Find(folder / "whole.tif", 1).first] = '\xFF';
    return bytes;
}

} // namespace

TEST(SeparationProducer, APageBecomesItsSwathsAndTheLastIsPadded)
{
    const SInk ink = Ink_Random(37, 20, 1, 1);
    const SSwathPlan plan{.nozzles = 8, .unitIndex = 3, .unitDirection = 2};
    CProduction production(ink, plan, 2);
    production.Start();
    const auto bands = production.Bands_Take();
    ASSERT_EQ(bands.size(), 3U);
    for (int i = 0; i < 3; ++i)
    {
        SCOPED_TRACE(i);
        const SBandHeader& header = bands[static_cast<std::size_t>(i)].header;
        EXPECT_EQ(header.m_bandNo, i);
        EXPECT_EQ(header.m_bandAttr, 1);
        EXPECT_EQ(header.m_swathIndex, i);
        EXPECT_EQ(header.m_pageIndex, 0);
        EXPECT_EQ(header.m_unitIndex, 3);
        EXPECT_EQ(header.m_unitDirection, 2);
        EXPECT_EQ(header.m_firstRow, i * 8);
        EXPECT_EQ(header.m_rowCount, i < 2 ? 8 : 4);
        EXPECT_EQ(header.m_firstColumn, 0);
        EXPECT_EQ(header.m_columnCount, 37);
        EXPECT_EQ(header.m_reserved_11, 0);
        EXPECT_EQ(header.m_reserved_12, 0);
        EXPECT_EQ(header.m_reserved_13, 0);
        EXPECT_FALSE(header.m_bSkip);
        Band_Expect(bands[static_cast<std::size_t>(i)], ink, plan);
    }
    EXPECT_TRUE(production.Producer().WaitExit(exitMs));
    EXPECT_TRUE(production.Producer().IsThreadSuccess());
    EXPECT_EQ(production.Producer().Error_Get(), nullptr);
}

TEST(SeparationProducer, APartOfAJobHasTheSwathsThatItHasInTheWhole)
{
    const SInk ink = Ink_Random(37, 20, 1, 1); // three swaths
    const SSwathPlan plan{.nozzles = 8, .bBidirectional = true, .firstStep = 4, .stepCount = 4};
    CProduction production(ink, plan, 2);
    production.Start();
    const auto bands = production.Bands_Take();
    ASSERT_EQ(bands.size(), 4U);
    for (int i = 0; i < 4; ++i)
    {
        SCOPED_TRACE(i);
        const SBandCopy& band = bands[static_cast<std::size_t>(i)];
        EXPECT_EQ(band.header.m_bandNo, i);
        EXPECT_EQ(band.header.m_pageIndex, (4 + i) / 3);
        EXPECT_EQ(band.header.m_swathIndex, (4 + i) % 3);
        EXPECT_EQ(band.header.m_firstRow, (4 + i) % 3 * 8);
        EXPECT_EQ(band.header.m_bandAttr, (4 + i) % 3 == 1 ? 2 : 1);
        Band_Expect(band, ink, plan);
    }
    EXPECT_EQ(production.Producer().QueuedCount_Get(), 4);
}

TEST(SeparationProducer, APageThatIsAWholeNumberOfSwathsHasNoEmptyOneBehind)
{
    const SInk ink = Ink_Random(9, 16, 1, 1);
    CProduction production(ink, {.nozzles = 8}, 1);
    production.Start();
    EXPECT_EQ(production.Bands_Take().size(), 2U);
}

TEST(SeparationProducer, APageLowerThanTheHeadIsOneSwath)
{
    const SInk ink = Ink_Random(9, 5, 1, 1);
    const SSwathPlan plan{.nozzles = 400};
    CProduction production(ink, plan, 1);
    production.Start();
    const auto bands = production.Bands_Take();
    ASSERT_EQ(bands.size(), 1U);
    EXPECT_EQ(bands[0].header.m_rowCount, 5);
    Band_Expect(bands[0], ink, plan);
}

TEST(SeparationProducer, EveryOtherSwathRunsRightToLeftWhenBidirectional)
{
    for (const int bitsPerPixel : {1, 2})
    {
        const SInk ink = Ink_Random(37, 30, bitsPerPixel, 1);
        const SSwathPlan plan{.nozzles = 8, .bBidirectional = true};
        CProduction production(ink, plan, 2, 16);
        production.Start();
        const auto bands = production.Bands_Take();
        ASSERT_EQ(bands.size(), 4U);
        for (std::size_t i = 0; i < bands.size(); ++i)
        {
            EXPECT_EQ(bands[i].header.m_bandAttr, i % 2 == 0 ? 1 : 2);
            Band_Expect(bands[i], ink, plan);
        }
    }
}

TEST(SeparationProducer, PushedByUnitEveryPositionIsTwoLines)
{
    const SInk ink = Ink_Random(37, 30, 2, 1);
    const SSwathPlan plan{.nozzles = 9, .bBidirectional = true, .bByUnitPlanes = true};
    CProduction production(ink, plan, 2);
    production.Start();
    const auto bands = production.Bands_Take();
    ASSERT_EQ(bands.size(), 4U);
    for (const auto& band : bands)
    {
        EXPECT_EQ(band.data.size(), 37U * 2 * 2);
        Band_Expect(band, ink, plan);
    }
}

TEST(SeparationProducer, OnlyASwathWithoutAnyInkIsMarkedBlank)
{
    SInk ink = Ink_Blank(37, 32, 1);
    ink.Pixel_Set(15, 36, 1); // the last pixel of the second swath
    ink.Pixel_Set(24, 0, 1);  // the first pixel of the fourth
    for (const bool bMarkBlank : {false, true})
    {
        CProduction production(ink, {.nozzles = 8, .bMarkBlank = bMarkBlank}, 1);
        production.Start();
        std::vector<bool> skipped;
        for (const auto& band : production.Bands_Take())
        {
            skipped.push_back(band.header.m_bSkip);
        }
        EXPECT_EQ(skipped, (std::vector<bool>{bMarkBlank, false, bMarkBlank, false}));
    }
}

TEST(SeparationProducer, NothingOfABandsFormerUseIsLeft)
{
    const SInk ink = Ink_Random(37, 20, 1, 1);
    const SSwathPlan plan{.nozzles = 8, .bMarkBlank = true};
    CProduction production(ink, plan, 1, 32);
    CBandData* band = nullptr;
    ASSERT_TRUE(production.FIFO().Empty_Out(band, 0));
    std::fill_n(band->m_pData, band->m_dataSize, static_cast<unsigned char>(0xFF));
    static_cast<SBandHeader&>(*band) = {91, 92, 93, 94, 95, 96, 97, 98, 99, 100, 101, 102, 103, true};
    ASSERT_TRUE(production.FIFO().Empty_In(band, 0));
    production.Start();
    const auto bands = production.Bands_Take();
    ASSERT_EQ(bands.size(), 3U);
    for (const auto& copy : bands)
    {
        EXPECT_EQ(copy.bytesPerLine, 32);
        Band_Expect(copy, ink, plan);
    }
    EXPECT_EQ(bands[0].header.m_bandNo, 0);
    EXPECT_EQ(bands[0].header.m_firstColumn, 0);
    EXPECT_EQ(bands[0].header.m_reserved_11, 0);
    EXPECT_EQ(bands[0].header.m_reserved_13, 0);
    EXPECT_FALSE(bands[0].header.m_bSkip);
}

TEST(SeparationProducer, ASeparationThatBreaksHalfWayIsAnErrorAndNoShortPage)
{
    CProduction production(DamagedSecondStrip(), {.nozzles = 4}, 6);
    production.Start();
    EXPECT_EQ(production.Bands_Take().size(), 2U); // the swaths before the damage
    EXPECT_TRUE(production.Producer().WaitExit(exitMs));
    EXPECT_THAT(production.Error_Text(),
                testing::StartsWith("input: " + production.Path() + ": row 8 (strip 1) cannot be decoded"));
    EXPECT_FALSE(production.Producer().IsThreadSuccess());
    EXPECT_FALSE(production.FIFO().IsCompleted());
    EXPECT_EQ(production.Bands_Count(), 6);
}

TEST(SeparationProducer, AFailedProducerThatIsStartedAgainFailsAgain)
{
    CProduction production(DamagedSecondStrip(), {.nozzles = 24}, 1);
    for (int i = 0; i < 2; ++i)
    {
        production.Start();
        EXPECT_TRUE(production.Producer().WaitExit(exitMs));
        EXPECT_NE(production.Producer().Error_Get(), nullptr);
        EXPECT_FALSE(production.FIFO().IsCompleted());
        EXPECT_FALSE(production.FIFO().Full_WaitForOut(0));
    }
}

TEST(SeparationProducer, ABandOfTheWrongSizeIsAnError)
{
    CProduction production(Ink_Random(37, 20, 1, 1), {.nozzles = 8, .unitIndex = 4}, 1);
    CBandData* band = nullptr;
    ASSERT_TRUE(production.FIFO().Empty_Out(band, 0));
    ASSERT_TRUE(band->Create(8, 36, 1, 1));
    ASSERT_TRUE(production.FIFO().Empty_In(band, 0));
    production.Start();
    EXPECT_TRUE(production.Producer().WaitExit(exitMs));
    EXPECT_EQ(production.Error_Text(), "run: unit 4: the pool has a band of the wrong size");
}

TEST(SeparationProducer, StoppedWithAFullFIFOItEndsAtOnceAndLeavesEveryBand)
{
    CProduction production(Ink_Random(37, 80, 1, 1), {.nozzles = 8}, 2);
    production.Start();
    // Both bands are full, and the producer has begun to wait for a third.
    ASSERT_TRUE(WaitFor([&] { return production.FIFO().ProducerStall_Get().m_count > 0; }));
    EXPECT_LT(Stop_Measure(production.Producer()), 2s);
    EXPECT_FALSE(production.FIFO().IsCompleted());
    EXPECT_EQ(production.Producer().Error_Get(), nullptr);
    EXPECT_EQ(production.Bands_Count(), 2);
}

TEST(SeparationProducer, StoppedWithAnEmptyPoolItEndsAtOnceAndQueuesNothing)
{
    CProduction production(Ink_Random(37, 80, 1, 1), {.nozzles = 8}, 1);
    CBandData* band = nullptr;
    ASSERT_TRUE(production.FIFO().Empty_Out(band, 0));
    const std::unique_ptr<CBandData> held(band);
    production.Start();
    ASSERT_TRUE(WaitFor([&] { return production.FIFO().ProducerStall_Get().m_count > 0; }));
    EXPECT_LT(Stop_Measure(production.Producer()), 2s);
    EXPECT_FALSE(production.FIFO().IsCompleted());
    EXPECT_EQ(production.Bands_Count(), 0);
}

TEST(SeparationProducer, StoppedAndStartedAgainItLosesNoRow)
{
    const SInk ink = Ink_Random(37, 200, 1, 1);
    const SSwathPlan plan{.nozzles = 8};
    CProduction production(ink, plan, 1);
    std::vector<SBandCopy> bands;
    while (bands.size() < 25)
    {
        production.Start();
        auto band = production.Band_Take();
        ASSERT_TRUE(band.has_value());
        bands.push_back(*band);
        Stop_Measure(production.Producer());
    }
    production.Start();
    EXPECT_FALSE(production.Band_Take().has_value());
    EXPECT_TRUE(production.FIFO().IsCompleted());
    for (std::size_t i = 0; i < bands.size(); ++i)
    {
        EXPECT_EQ(bands[i].header.m_bandNo, static_cast<int>(i));
        Band_Expect(bands[i], ink, plan);
    }
}

TEST(SeparationProducer, StoppedAmidstASwathItGoesOnWithTheNextRow)
{
    const SInk ink = Ink_Random(300, 2000, 1, 1);
    const SSwathPlan plan{.nozzles = 1000};
    // A producer that gets the processor to itself is through with a swath before the stop comes: then another page.
    bool bStoppedAmidst = false;
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (!bStoppedAmidst && std::chrono::steady_clock::now() < end)
    {
        CProduction production(ink, plan, 2);
        int stops = 0;
        while (!production.FIFO().Full_WaitForOut(0) && std::chrono::steady_clock::now() < end)
        {
            production.Start();
            std::this_thread::sleep_for(std::chrono::microseconds(stops % 100));
            Stop_Measure(production.Producer());
            ++stops;
        }
        bStoppedAmidst = stops > 1;
        production.Start();
        const auto bands = production.Bands_Take();
        ASSERT_EQ(bands.size(), 2U);
        Band_Expect(bands[0], ink, plan);
        Band_Expect(bands[1], ink, plan);
    }
    EXPECT_TRUE(bStoppedAmidst);
}

TEST(SeparationProducer, DestroyedWhileItRunsItStopsFirst)
{
    for (int i = 0; i < 20; ++i)
    {
        CProduction production(Ink_Random(37, 80, 1, 1), {.nozzles = 8}, 1);
        production.Start();
        production.Band_Take();
    }
}

TEST(SeparationProducer, CompletedOnlyOnceTheLastBandIsTaken)
{
    CProduction production(Ink_Random(37, 16, 1, 1), {.nozzles = 8}, 2);
    production.Start();
    ASSERT_TRUE(production.Producer().WaitExit(exitMs));
    EXPECT_FALSE(production.FIFO().IsCompleted());
    ASSERT_TRUE(production.Band_Take().has_value());
    EXPECT_FALSE(production.FIFO().IsCompleted());
    ASSERT_TRUE(production.Band_Take().has_value());
    EXPECT_TRUE(production.FIFO().IsCompleted());
}

TEST(SwathPlan, APageNeedsAsManySwathsAsCoverIt)
{
    EXPECT_EQ(SwathCount_Get(1, 400), 1);
    EXPECT_EQ(SwathCount_Get(400, 400), 1);
    EXPECT_EQ(SwathCount_Get(401, 400), 2);
    EXPECT_EQ(SwathCount_Get(2147483647, 1), 2147483647);
    EXPECT_EQ(SwathCount_Get(2147483647, 400), 5368710);
}

TEST(SwathPlan, ABandIsAsWideAsTheHeadAndAsHighAsThePageIsWide)
{
    EXPECT_EQ(UnitBandSize_Get({"", 5000, 7000, 1}, {.nozzles = 400}), (SUnitBandSize{400, 5000, 1}));
    EXPECT_EQ(UnitBandSize_Get({"", 5000, 7000, 2}, {.nozzles = 400}), (SUnitBandSize{400, 5000, 2}));
    EXPECT_EQ(UnitBandSize_Get({"", 5000, 7000, 1}, {.nozzles = 400, .bByUnitPlanes = true}),
              (SUnitBandSize{400, 5000, 1}));
    EXPECT_EQ(UnitBandSize_Get({"", 5000, 7000, 2}, {.nozzles = 400, .bByUnitPlanes = true}),
              (SUnitBandSize{400, 10000, 1}));
}

TEST(SwathPlan, LinesBeyondABandsCountAreRefused)
{
    try
    {
        UnitBandSize_Get({"", 1500000000, 1, 2}, {.nozzles = 1, .bByUnitPlanes = true});
        FAIL();
    }
    catch (const CRunError& error)
    {
        EXPECT_STREQ(error.what(), "a unit band of 3000000000 lines; a band can hold 2147483647");
    }
}

TEST(UnitBandPool, AllItsBandsAreFreeAndOfTheSameSize)
{
    const auto fifo = UnitBandPool_Create("unit", {400, 30, 2}, 3, 64);
    EXPECT_FALSE(fifo->Full_WaitForOut(0));
    for (int i = 0; i < 3; ++i)
    {
        CBandData* raw = nullptr;
        ASSERT_TRUE(fifo->Empty_Out(raw, 0));
        const std::unique_ptr<CBandData> band(raw);
        EXPECT_EQ(band->m_width, 400);
        EXPECT_EQ(band->m_height, 30);
        EXPECT_EQ(band->m_bitsPerPixel, 2);
        EXPECT_EQ(band->m_bytesPerLine, 128);
    }
    CBandData* none = nullptr;
    EXPECT_FALSE(fifo->Empty_Out(none, 0));
}

TEST(UnitBandPool, ABandThatCannotHoldItsLinesIsRefusedWithTheSizes)
{
    try
    {
        UnitBandPool_Create("unit", {400, 50000000, 1}, 2, 1);
        FAIL();
    }
    catch (const CRunError& error)
    {
        EXPECT_STREQ(error.what(), "a unit band of 400 nozzles x 50000000 lines at 1 bit needs 2500000000 bytes; a "
                                   "band can hold 2147483647");
    }
    EXPECT_THROW(UnitBandPool_Create("unit", {400, 25000000, 2}, 2, 1), CRunError);
}

TEST(SeparationProducer, EachPassHasItsOwnMarginsAroundTheImageWhateverTheBandHeldBefore)
{
    for (const int bits : {1, 2})
    {
        const SInk ink = Ink_Random(37, 32, bits, 3);
        SSwathPlan plan{.nozzles = 8, .bBidirectional = true, .bByUnitPlanes = true};
        plan.leftToRight = {.positions = 50, .imagePosition = 6};
        plan.rightToLeft = {.positions = 45, .imagePosition = 3};
        SSwathPlan bare = plan;
        bare.leftToRight = {};
        bare.rightToLeft = {};
        CProduction production(ink, plan, 1); // one band, used for every swath
        CProduction reference(ink, bare, 1);
        production.Start();
        reference.Start();
        const auto bands = production.Bands_Take();
        const auto images = reference.Bands_Take();
        ASSERT_EQ(bands.size(), 4U);
        for (std::size_t i = 0; i < bands.size(); ++i)
        {
            const SPassLayout& pass = i % 2 == 0 ? plan.leftToRight : plan.rightToLeft;
            const auto bytesPerPosition = static_cast<std::size_t>(bits * bands[i].bytesPerLine);
            std::vector<unsigned char> expected(static_cast<std::size_t>(pass.positions) * bytesPerPosition, 0);
            std::copy(images[i].data.begin(), images[i].data.end(),
                      expected.begin() +
                          static_cast<std::ptrdiff_t>(static_cast<std::size_t>(pass.imagePosition) * bytesPerPosition));
            EXPECT_EQ(bands[i].data, expected) << "swath " << i << ", " << bits << " bits";
            EXPECT_EQ(bands[i].header.m_columnCount, 37);
        }
    }
}

TEST(SeparationProducer, ThePoolHasRoomForTheLongerPassThatThePageUses)
{
    SSwathPlan plan{.nozzles = 8, .bBidirectional = true};
    plan.leftToRight = {.positions = 50, .imagePosition = 6};
    plan.rightToLeft = {.positions = 60, .imagePosition = 3};
    const SSeparationInfo page{"page.tif", 37, 20, 1};
    EXPECT_EQ(UnitBandSize_Get(page, plan), (SUnitBandSize{8, 60, 1}));
    plan.bBidirectional = false;
    EXPECT_EQ(UnitBandSize_Get(page, plan), (SUnitBandSize{8, 50, 1}));
}

TEST(SeparationProducer, TwoBitPixelsDescribedAsBitsAreTwiceAsWideWithTheSameBytes)
{
    const SInk ink = Ink_Random(21, 16, 2, 4);
    const SSwathPlan pixels{.nozzles = 8};
    const SSwathPlan bits{.nozzles = 8, .bBitsAsPixels = true};
    EXPECT_EQ(UnitBandSize_Get({"page.tif", 21, 16, 2}, bits), (SUnitBandSize{16, 21, 1}));
    CProduction asPixels(ink, pixels, 1);
    CProduction asBits(ink, bits, 1);
    asPixels.Start();
    asBits.Start();
    const auto expected = asPixels.Bands_Take();
    const auto bands = asBits.Bands_Take();
    ASSERT_EQ(bands.size(), expected.size());
    for (std::size_t i = 0; i < bands.size(); ++i)
    {
        EXPECT_EQ(bands[i].data, expected[i].data);
    }
}
