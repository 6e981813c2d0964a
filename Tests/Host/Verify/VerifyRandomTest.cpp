// boardmap verify on random jobs of every map, push style, pass, zone, offset and stripe, with and without SkipBlank:
// their outputs of both formats are right, and a bit that was turned somewhere in them is found where it is.
#include "Tests/Host/Command/RandomJob.h"

#include "Host/Board/BoardReader.h"
#include "Host/Command/Verification.h"
#include "Host/Job/JobPage.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>

namespace
{

class VerifyRandom : public CRandomJobTest
{
protected:
    // A bit of the output, and where it stands in the file.
    struct SPlace
    {
        std::int64_t m_band = 0;
        int m_line = 0;
        std::int64_t m_bit = 0;
        std::size_t m_byte = 0; // of the file
    };

    SVerifyResult Output_Verify(const std::string& output) const
    {
        const CJobPage page(In("job.toml"));
        const auto reader = CBoardReader::Open(In(output));
        return CVerification(page, *reader, {}, 8, [](std::int64_t, std::int64_t) { return true; }).Run();
    }

    // Any bit of any band of out.raw, padding included.
    SPlace Place_Pick()
    {
        constexpr std::size_t recordBytes = 108;
        std::vector<SPlace> places;
        const auto reader = CBoardReader::Open(In("out.raw"));
        SBoardPass pass;
        for (CBandData band; reader->Band_Read(band, pass);)
        {
            SPlace place = {static_cast<std::int64_t>(places.size()), Number(0, band.m_height - 1),
                            Number(0, band.m_bytesPerLine * 8 - 1), 0};
            place.m_byte = std::stoul(reader->Place().substr(std::string("byte ").size())) + recordBytes +
                           static_cast<std::size_t>(std::int64_t{place.m_line} * band.m_bytesPerLine + place.m_bit / 8);
            places.push_back(place);
        }
        return places.empty() ? SPlace{-1}
                              : places.at(static_cast<std::size_t>(Number(0, static_cast<int>(places.size()) - 1)));
    }

    void Bit_Turn(const SPlace& place)
    {
        std::string bytes = File_Read(In("out.raw"));
        bytes.at(place.m_byte) = static_cast<char>(bytes.at(place.m_byte) ^ 0x80 >> place.m_bit % 8);
        File_Write(In("bad.raw"), bytes);
    }
};

TEST_F(VerifyRandom, OutputsAreRightAndATurnedBitIsFound)
{
    constexpr int jobs = 3 * static_cast<int>(randomBoards.size());
    std::set<std::string> maps;
    std::set<std::string> areas;
    int skipped = 0;
    for (int i = 0; i < jobs; ++i)
    {
        Job_WriteRandom(i % static_cast<int>(randomBoards.size()));
        SCOPED_TRACE("job " + std::to_string(i) + ":\n" + File_Read(In("job.toml")));
        const auto raw = Boardmap_Run("convert job.toml --format raw -o out.raw");
        ASSERT_EQ(raw.status, 0) << raw.error;
        const SVerifyResult good = Output_Verify("out.raw");
        ASSERT_EQ(good.m_differenceCount, 0) << good.m_differences.front().m_what;
        const SPlace place = Place_Pick();
        if (place.m_band < 0) // every swath is blank and left out, which a TIFF cannot say
        {
            ++skipped;
            continue;
        }
        ASSERT_GT(good.m_bands, 0);
        const auto tiff = Boardmap_Run("convert job.toml -o out.tif");
        ASSERT_EQ(tiff.status, 0) << tiff.error;
        const SVerifyResult same = Output_Verify("out.tif");
        ASSERT_EQ(same.m_differenceCount, 0) << same.m_differences.front().m_what;
        ASSERT_EQ(same.m_bytes, good.m_bytes);
        skipped += good.m_bands < CJobPage(In("job.toml")).Geometry().m_swathCount ? 1 : 0;

        Bit_Turn(place);
        const SVerifyResult bad = Output_Verify("bad.raw");
        // A bit in a band without any makes the band's word Blank wrong, too.
        ASSERT_GE(bad.m_differenceCount, 1);
        ASSERT_EQ(bad.m_bitDifferences, 1);
        const SDifference& difference = bad.m_differences.back();
        ASSERT_EQ(difference.m_kind, "bits");
        EXPECT_EQ(difference.m_band, place.m_band);
        ASSERT_EQ(difference.m_first.size(), 1U);
        const auto report = nlohmann::json::parse(difference.m_first.front().m_json);
        const auto& bit = report["Bits"].at(0);
        EXPECT_EQ(bit["Line"], place.m_line);
        EXPECT_EQ(bit["Byte"], place.m_bit / 8);
        EXPECT_EQ(bit["Bit"], place.m_bit % 8);
        EXPECT_NE(bit["Output"], bit["Expected"]);
        EXPECT_EQ(report["Different"], true);
        maps.insert(CBoardReader::Open(In("out.raw"))->BoardInfo().m_map);
        areas.insert(report["Area"]);
        if (HasFailure())
        {
            return;
        }
    }
    EXPECT_EQ(maps.size(), 8U);
    EXPECT_GE(areas.size(), 5U);
    EXPECT_GT(skipped, 0);
}

} // namespace
