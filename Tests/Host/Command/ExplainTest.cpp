// boardmap explain. What it says of random jobs is held against conversions alone: pages whose pixels are numbered, one
// binary digit after the other, are converted, and the digits that a bit of the output shows are the number of the
// pixel that it prints. No model and no layout is asked. The outputs that are explained are the real program's.
#include "Tests/Host/Command/RandomJob.h"

#include "Host/Board/BoardReader.h"
#include "Host/Command/Conversion.h"
#include "Host/Command/Explainer.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <set>
#include <tuple>

namespace
{

using testing::HasSubstr;
using CJson = nlohmann::json;

struct SBand
{
    int m_width = 0;
    int m_height = 0;
    int m_bytesPerLine = 0;
    std::vector<unsigned char> m_data;
};

// An output's bands, one after the other.
struct SBands
{
    std::vector<SBand> m_bands;

    void Add(const CBandData& band)
    {
        m_bands.push_back(
            {band.m_width, band.m_height, band.m_bytesPerLine, {band.m_pData, band.m_pData + band.m_dataSize}});
    }

    bool Bit_Get(std::size_t band, int line, std::int64_t bit) const
    {
        const SBand& data = m_bands[band];
        const auto at = static_cast<std::size_t>(std::int64_t{line} * data.m_bytesPerLine + bit / 8);
        return (data.m_data[at] >> (7 - bit % 8) & 1) == 1;
    }
};

// A bit of the output: band, line, bit of the line.
using CBitPlace = std::tuple<std::size_t, int, std::int64_t>;

class Explain : public CRandomJobTest
{
protected:
    // The board bands of job.toml as its separations are now, without a file.
    SBands Job_Convert() const
    {
        constexpr unsigned waitMs = 100;
        SBands bands;
        CJobPage page(In("job.toml"));
        CConversion conversion(page);
        conversion.Start();
        for (CBandData* pBand = nullptr;;)
        {
            if (conversion.Output()->Out(pBand, waitMs))
            {
                bands.Add(*std::unique_ptr<CBandData>(pBand));
            }
            else if (conversion.Output()->IsCompleted())
            {
                return bands;
            }
            conversion.Error_Check();
        }
    }

    // The same by the program, into "out".
    SBands Job_Output() const
    {
        const auto result = Boardmap_Run("convert job.toml --format raw -o out");
        EXPECT_EQ(result.status, 0) << result.error;
        SBands bands;
        const auto reader = CBoardReader::Open(In("out"));
        SBoardPass pass;
        for (CBandData band; reader->Band_Read(band, pass);)
        {
            bands.Add(band);
        }
        return bands;
    }

    // Which pixel each bit of the output prints: converts the job once for each digit of the pixels' numbers.
    // Leaves the separations with random values, which are in m_values, and their output in "out".
    void Job_Trace();

    // Holds the answers about some bits and pixels against the trace.
    void Answers_Check(CExplainer& explainer, bool bJob, bool bOutput);
    void Bit_Check(CExplainer& explainer, const CBitPlace& place, bool bJob, bool bOutput);

    int Random_Pick(std::size_t count) { return Number(0, static_cast<int>(count) - 1); }

    SBands m_blank;
    SBands m_output;
    std::map<SPixel, int> m_values;
    std::map<CBitPlace, SPixel> m_pixels; // of the bits that some pixel sets
    std::map<SPixel, std::set<CBitPlace>> m_bitsOf;
    std::map<CBitPlace, std::set<int>> m_setBy; // the values of its pixel that set the bit
    std::int64_t m_answers = 0;
    std::set<std::string> m_maps;
    std::set<EModelArea> m_areas;
    std::set<std::string> m_rules;
};

void Explain::Job_Trace()
{
    const int most = (1 << m_bits) - 1;
    std::vector<SPixel> pixels;
    std::map<SPixel, std::size_t> numbers;
    for (const auto& [unit, name] : m_pages)
    {
        for (int row = 0; row < m_rows; ++row)
        {
            for (int column = 0; column < m_columns; ++column)
            {
                numbers[{unit, row, column}] = pixels.size();
                pixels.push_back({unit, row, column});
            }
        }
    }
    Pages_Write([](const SPixel&) { return 0; });
    m_blank = Job_Convert();
    std::vector<SBands> solid; // by value less 1
    for (int value = 1; value <= most; ++value)
    {
        Pages_Write([&](const SPixel&) { return value; });
        solid.push_back(Job_Convert());
    }
    std::vector<SBands> digits;
    for (std::size_t digit = 1; digit < pixels.size(); digit *= 2)
    {
        Pages_Write([&](const SPixel& pixel) { return (numbers.at(pixel) & digit) != 0 ? most : 0; });
        digits.push_back(Job_Convert());
    }
    m_values.clear();
    Pages_Write([&](const SPixel& pixel) { return m_values[pixel] = Number(0, most); });
    m_output = Job_Output();
    m_pixels.clear();
    m_bitsOf.clear();
    m_setBy.clear();
    for (std::size_t band = 0; band < m_blank.m_bands.size(); ++band)
    {
        for (int line = 0; line < m_blank.m_bands[band].m_height; ++line)
        {
            for (std::int64_t bit = 0; bit < m_blank.m_bands[band].m_width; ++bit)
            {
                const bool bBase = m_blank.Bit_Get(band, line, bit);
                if (solid.back().Bit_Get(band, line, bit) == bBase)
                {
                    continue;
                }
                std::size_t number = 0;
                for (std::size_t i = 0; i < digits.size(); ++i)
                {
                    number |= (digits[i].Bit_Get(band, line, bit) ? std::size_t{1} : 0) << i;
                }
                const CBitPlace place = {band, line, bit};
                m_pixels[place] = pixels.at(number);
                m_bitsOf[pixels.at(number)].insert(place);
                for (int value = 1; value <= most; ++value)
                {
                    if (solid[static_cast<std::size_t>(value) - 1].Bit_Get(band, line, bit))
                    {
                        m_setBy[place].insert(value);
                    }
                }
            }
        }
    }
}

void Explain::Bit_Check(CExplainer& explainer, const CBitPlace& place, bool bJob, bool bOutput)
{
    const auto [band, line, bit] = place;
    const SExplanation answer =
        explainer.Bit_Explain(static_cast<std::int64_t>(band), line, bit / 8, static_cast<int>(bit % 8));
    const SModelSource& source = answer.m_source;
    const SModelPoint& point = source.m_point;
    const bool bSet = m_output.Bit_Get(band, line, bit);
    const std::string where = "band " + std::to_string(band) + ", line " + std::to_string(line) + ", bit " +
                              std::to_string(bit) + ": " + Explanation_Text(answer, explainer.Model().Info());
    ASSERT_EQ(answer.m_bits.size(), 1U) << where;
    EXPECT_EQ(answer.m_bits.front().m_found.has_value(), bOutput) << where;
    EXPECT_EQ(answer.m_bits.front().m_found.value_or(bSet), bSet) << where;
    EXPECT_EQ(answer.m_bits.front().m_expected.value_or(bSet), bSet) << where;
    EXPECT_EQ(answer.m_bits.front().m_expected.has_value(), bJob || source.m_nozzle < 0) << where;
    EXPECT_FALSE(answer.IsDifferent()) << where;
    const SBoardInfo& info = explainer.Model().Info();
    if (const auto found = m_pixels.find(place); found != m_pixels.end())
    {
        ASSERT_EQ(point.m_area, EModelArea::Page) << where;
        EXPECT_EQ((SPixel{source.m_pUnit->m_unitId, point.m_row, point.m_column}), found->second) << where;
        EXPECT_EQ(source.m_nozzle, found->second.row % info.m_nozzles) << where;
        EXPECT_EQ(source.m_position, line / info.m_linesPerPosition) << where;
        for (int value = 1; value < 1 << m_bits; ++value)
        {
            EXPECT_EQ(CPageModel::Bit_IsSet(source, value), m_setBy[place].contains(value)) << where;
        }
        EXPECT_EQ(answer.m_pixel.value_or(m_values[found->second]), m_values[found->second]) << where;
    }
    else if (m_blank.Bit_Get(band, line, bit))
    {
        EXPECT_TRUE(point.m_area == EModelArea::LeftStripe || point.m_area == EModelArea::RightStripe) << where;
    }
    else if (point.m_area == EModelArea::Page && source.m_nozzle >= 0)
    {
        // The zero of a drop size's code is the only bit of a pixel that none of its values sets.
        EXPECT_TRUE(source.m_layout.place.bDotCode && !source.m_layout.place.bDotBit) << where;
    }
    m_areas.insert(source.m_nozzle < 0 ? EModelArea::Nothing : point.m_area);
    for (const SExplanationRule& rule : answer.m_rules)
    {
        m_rules.insert(rule.m_name);
    }
    ++m_answers;
}

void Explain::Answers_Check(CExplainer& explainer, bool bJob, bool bOutput)
{
    // In the order of the bands, since going back to an earlier one reads the files anew.
    std::set<CBitPlace> places;
    for (int i = 0; i < 60; ++i)
    {
        const auto band = static_cast<std::size_t>(Random_Pick(m_output.m_bands.size()));
        const SBand& data = m_output.m_bands[band];
        places.insert({band, Number(0, data.m_height - 1), Number(0, data.m_width - 1)});
    }
    for (const CBitPlace& place : places)
    {
        Bit_Check(explainer, place, bJob, bOutput);
    }
    std::vector<SPixel> pixels;
    for (int i = 0; i < 40; ++i)
    {
        pixels.push_back(std::next(m_values.begin(), Random_Pick(m_values.size()))->first);
    }
    std::ranges::sort(pixels, {}, &SPixel::row);
    for (const SPixel& pixel : pixels)
    {
        const SExplanation answer = explainer.Pixel_Explain(pixel.unit, pixel.row, pixel.column);
        std::set<CBitPlace> bits;
        for (const SExplanationBit& bit : answer.m_bits)
        {
            const CBitPlace place = {static_cast<std::size_t>(answer.m_band), bit.m_bit.m_line, bit.m_bit.m_bit};
            if (m_pixels.contains(place))
            {
                bits.insert(place);
            }
            Bit_Check(explainer, place, bJob, bOutput);
        }
        EXPECT_EQ(bits, m_bitsOf[pixel]) << pixel.unit << " " << pixel.row << " " << pixel.column;
        if (bOutput && !bits.empty())
        {
            const int value = m_values[pixel];
            const bool bDot = answer.m_bits.front().m_role.starts_with("drop size");
            EXPECT_EQ(bDot ? *answer.m_outputPixel != 0 : *answer.m_outputPixel == value, bDot ? value != 0 : true);
        }
        const SExplanation nozzle =
            explainer.Nozzle_Explain(pixel.unit, answer.m_source.m_nozzle, answer.m_source.m_position, answer.m_band);
        EXPECT_EQ(nozzle.m_source.m_point, answer.m_source.m_point);
        EXPECT_EQ(Explanation_Json(nozzle, explainer.Model().Info()),
                  Explanation_Json(answer, explainer.Model().Info()));
    }
}

} // namespace

TEST_F(Explain, SaysOfRandomJobsWhatNumberedPixelsSay)
{
    constexpr int jobs = static_cast<int>(randomBoards.size());
    for (int i = 0; i < jobs; ++i)
    {
        Job_WriteRandom(i % static_cast<int>(randomBoards.size()), false);
        Job_Trace();
        CExplainer job(In("job.toml"), {});
        Answers_Check(job, true, false);
        CExplainer output({}, In("out"));
        Answers_Check(output, false, true);
        CExplainer both(In("job.toml"), In("out"));
        Answers_Check(both, true, true);
        m_maps.insert(both.Model().Info().m_map);
        if (HasFailure())
        {
            FAIL() << "job " << i << ":\n" << File_Read(In("job.toml"));
        }
    }
    EXPECT_EQ(m_maps.size(), 8U);
    EXPECT_EQ(m_areas.size(), 8U);
    EXPECT_GE(m_answers, 5000);
    EXPECT_EQ(m_rules, (std::set<std::string>{"block", "chunk", "column", "direction", "drop-size", "offset", "pair",
                                              "plane", "push", "repeat", "zone"}));
}

TEST_F(Explain, ANozzleIsFollowedToThePageAndToItsBit)
{
    SmallJob_Write();
    const auto result = Boardmap_Run("explain job.toml --unit 0 --nozzle 0 --position 7 --band 1");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.out,
              "Unit 0 (Cyan), nozzle 0, at position 7 of band 1 (swath 1, right to left) prints row 2, column 1 of the "
              "page, from c.tif; the separation has 1 of 1 there, so the nozzle fires. Its bit is line 7, byte 0, bit "
              "0 (frame 0; ink): 1 by the job. How it came there: swath 1 goes from right to left, so that the page's "
              "last column comes first; the right zone of 4 positions comes before the page; the unit comes 1 "
              "position later (Horizon_1).\n");
}

TEST_F(Explain, APixelIsFollowedToItsBitWithTheJobAndWithTheOutputAlone)
{
    SmallJob_Write();
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    for (const std::string files : {"job.toml", "out.tif", "job.toml out.tif", "out.tif job.toml"})
    {
        const auto result = Boardmap_Run("explain " + files + " --row 1 --column 0 --ink magenta --json");
        EXPECT_EQ(result.status, 0) << result.error;
        const CJson json = CJson::parse(result.out);
        const bool bJob = files.find("job") != std::string::npos;
        const bool bOutput = files.find("out") != std::string::npos;
        EXPECT_EQ(json["Band"], 0);
        EXPECT_EQ(json["UnitId"], 3);
        EXPECT_EQ(json["Nozzle"], 1);
        EXPECT_EQ(json["Position"], 8); // zone 6, offset 2
        EXPECT_EQ(json["Separation"], "m.tif");
        EXPECT_EQ(json["Value"], bJob ? CJson(1) : CJson());
        EXPECT_EQ(json["OutputValue"], bOutput ? CJson(1) : CJson());
        EXPECT_EQ(json["Bits"], CJson::array({{{"Line", 8},
                                               {"Frame", 1},
                                               {"Byte", 1},
                                               {"Bit", 3},
                                               {"Role", "ink"},
                                               {"Expected", bJob ? CJson(true) : CJson()},
                                               {"Output", bOutput ? CJson(true) : CJson()}}}));
        EXPECT_EQ(json["Different"], false);
    }
}

TEST_F(Explain, WhatPrintsNothingSaysWhy)
{
    SmallJob_Write();
    const auto Says = [&](const std::string& question, const std::string& words)
    {
        const auto result = Boardmap_Run("explain job.toml " + question);
        EXPECT_EQ(result.status, 0) << result.error;
        EXPECT_THAT(result.out, HasSubstr(words));
    };
    Says("--unit 0 --nozzle 0 --position 0 --band 0", "is in the left zone, before the page");
    Says("--unit 0 --nozzle 0 --position 15 --band 0", "the room that the units' offsets need");
    Says("--unit 0 --nozzle 0 --position 13 --band 0", "is in the right zone, behind the page");
    Says("--unit 0 --nozzle 1 --position 7 --band 1",
         "is below the page: its row would be 3, the page's last one is 2");
    Says("--unit 0 --nozzle 0 --position 6 --band 0", "has 0 of 1 there, so the nozzle does not fire");
    Says("--band 0 --line 6 --byte 0 --bit 2", "is the place of unit 2, which the job does not have: it is never set");
}

TEST_F(Explain, ABitThatTheJobDoesNotMakeIsAFailure)
{
    SmallJob_Write();
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw -o out").status, 0);
    std::string bytes = File_Read(In("out"));
    bytes[bytes.size() - 12 - 2] ^= 0x40; // byte 0 of the last line
    File_Write(In("out"), bytes);
    const auto result = Boardmap_Run("explain job.toml out --band 1 --line 14 --byte 0 --bit 1");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("is the place of unit 1, which the job does not have: it is never set. In the "
                                      "output it is 1, WHICH IS WRONG."));
    bytes[bytes.size() - 12 - 2] = static_cast<char>(0x80);
    File_Write(In("out"), bytes);
    const auto ink = Boardmap_Run("explain job.toml out --band 1 --line 14 --byte 0 --bit 0");
    EXPECT_EQ(ink.status, 1);
    EXPECT_THAT(ink.out, HasSubstr("1 in the output, BUT 0 BY THE JOB"));
    EXPECT_EQ(Boardmap_Run("explain out --band 1 --line 14 --byte 0 --bit 0").status, 0);
}

TEST_F(Explain, BlankSwathsThatAreLeftOutHaveNoBand)
{
    Separation_Write("a.tif", 8, 12, [](int, int y) { return y >= 8; });
    Job_Write("job.toml", {"a.tif"}, 4, "[Stage]\nSkipBlank = true\n");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    for (const std::string file : {"job.toml ", "out.tif "})
    {
        const auto blank = Boardmap_Run("explain " + file + "--row 5 --column 3 --unit 0");
        EXPECT_EQ(blank.status, 0) << blank.error;
        EXPECT_THAT(blank.out, HasSubstr("The swath is blank and SkipBlank is set: the output has no band for it."));
        const auto first = Boardmap_Run("explain " + file + "--unit 0 --nozzle 1 --position 3 --band 0 --json");
        EXPECT_EQ(CJson::parse(first.out)["Swath"], 2);
        EXPECT_EQ(CJson::parse(first.out)["Row"], 9);
        EXPECT_THAT(Boardmap_Run("explain " + file + "--unit 0 --nozzle 1 --position 3 --band 1").error,
                    HasSubstr("--band is 1; here it is 0 to 0"));
    }
}

// Version 1 says the bits of an output, but not where they are on the page: the job must.
TEST_F(Explain, AnOutputOfVersionOneIsExplainedWithItsJob)
{
    const std::string folder = VERSION_1_FOLDER "/";
    for (const std::string name : {"boards.raw", "boards.tif", "boards.lzw.tif"})
    {
        for (int column = 0; column < 4; ++column)
        {
            const std::string pixel = " --json --row 3 --ink Cyan --column " + std::to_string(column);
            const auto alone = Boardmap_Run("explain \"" + folder + "job.toml\"" + pixel);
            const auto both = Boardmap_Run("explain \"" + folder + "job.toml\" \"" + folder + name + "\"" + pixel);
            ASSERT_EQ(both.status, 0) << both.out << both.error;
            const CJson expected = CJson::parse(alone.out);
            const CJson json = CJson::parse(both.out);
            EXPECT_EQ(json["Value"], expected["Value"]);
            EXPECT_EQ(json["OutputValue"], expected["Value"]);
            EXPECT_EQ(json["Bits"].at(0)["Output"], expected["Bits"].at(0)["Expected"]);
            EXPECT_EQ(json["Position"], expected["Position"]);
        }
        const auto refused = Boardmap_Run("explain \"" + folder + name + "\" --row 3 --column 0 --ink Cyan");
        EXPECT_EQ(refused.status, 2);
        EXPECT_EQ(refused.out, "");
        EXPECT_THAT(refused.error, HasSubstr(name + ": is of version 1, which does not say where its bits are on the "
                                                    "page; give the job, too\n"));
    }
    std::string bytes = File_Read(std::filesystem::path(VERSION_1_FOLDER) / "boards.raw");
    bytes.at(bytes.size() - 12 - 1) ^= 1;
    File_Write(In("bad.raw"), bytes);
    const auto model = Boardmap_Run("info bad.raw --json");
    const CJson bands = CJson::parse(model.out)["Bands"];
    const auto wrong =
        Boardmap_Run("explain \"" + folder + "job.toml\" bad.raw --band " + std::to_string(bands.size() - 1) +
                     " --line " + std::to_string(bands.back()["Height"].get<int>() - 1) + " --byte " +
                     std::to_string(bands.back()["Width"].get<int>() / 8 - 1) + " --bit 7");
    EXPECT_EQ(wrong.status, 1) << wrong.error;
    EXPECT_THAT(wrong.out, HasSubstr("In the output it is 1, WHICH IS WRONG."));
}

TEST_F(Explain, WhatCannotBeAskedIsRefused)
{
    SmallJob_Write();
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    const auto Refuses = [&](const std::string& arguments, const std::string& words)
    {
        const auto result = Boardmap_Run("explain " + arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.error, HasSubstr(words));
        EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
    };
    Refuses("job.toml", "explain needs one of");
    Refuses("job.toml --unit 0 --nozzle 0 --position 0", "explain needs one of");
    Refuses("job.toml --row 0 --column 0 --ink Cyan --band 0", "explain needs one of");
    Refuses("job.toml job.toml --row 0 --column 0 --ink Cyan", "job.toml is one job too many");
    Refuses("none.toml --row 0 --column 0 --ink Cyan", "none.toml");
    Refuses("c.tif --row 0 --column 0 --ink Cyan", "c.tif");
    Refuses("job.toml --row 0 --column 0 --ink Cian", "--ink is Cian, which no unit prints; the page has Cyan and "
                                                      "Magenta");
    Refuses("job.toml --row 3 --column 0 --ink Cyan", "--row is 3; here it is 0 to 2");
    Refuses("job.toml --row 0 --column 4 --ink Cyan", "--column is 4; here it is 0 to 3");
    Refuses("job.toml --unit 1 --nozzle 0 --position 0 --band 0", "--unit is 1; the job has 0 and 3");
    Refuses("job.toml --unit 0 --nozzle 2 --position 0 --band 0", "--nozzle is 2; here it is 0 to 1");
    Refuses("job.toml --unit 0 --nozzle 0 --position 16 --band 0", "--position is 16; here it is 0 to 15");
    Refuses("out.tif --unit 0 --nozzle 0 --position 0 --band 2", "--band is 2; here it is 0 to 1");
    Refuses("job.toml --band 0 --line 16 --byte 0 --bit 0", "--line is 16; here it is 0 to 15");
    Refuses("job.toml --band 0 --line 0 --byte 2 --bit 0", "--byte is 2; here it is 0 to 1");
    Refuses("job.toml --band 0 --line 0 --byte 0 --bit 8", "--bit is 8; here it is 0 to 7");
    File_Write(In("job.toml"), File_Read(In("job.toml")) + "Horizon_1 = 3\n");
    Refuses("job.toml out.tif --row 0 --column 0 --ink Cyan", "was not made from job.toml as it is now: ");
    File_Write(In("cut.tif"), File_Read(In("out.tif")).substr(0, 40));
    Refuses("cut.tif --row 0 --column 0 --ink Cyan", "cut.tif");
}

#if !defined(_WIN32)

TEST_F(Explain, AClosedPipeFailsTheRun)
{
    SmallJob_Write();
    const auto closed = Shell_Run("{ sleep 0.2; \"$boardmap\" explain job.toml --row 0 --column 0 --ink Cyan; "
                                  "echo $? >status; } | true; sleep 1; cat status");
    EXPECT_EQ(closed.out, "1\n");
    EXPECT_THAT(closed.error, HasSubstr("standard output"));
}

#endif
