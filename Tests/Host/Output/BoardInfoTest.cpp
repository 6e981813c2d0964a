// The JSON of board files.
#include "Host/Board/BoardInfo.h"

#include "Tests/Host/Output/TestBand.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>

TEST(BoardInfo, ComesBackFromItsJsonAsItWas)
{
    const SBoardInfo info = TestInfo_Make();
    EXPECT_EQ(BoardInfo_Parse(BoardInfo_Json(info), 2), info);
}

TEST(BoardInfo, JsonIsOneLineOfAscii)
{
    const std::string json = BandHeader_Json(SBandHeader{}, SBoardPass{}, TestInfo_Make());
    for (const char letter : json)
    {
        EXPECT_TRUE(letter >= ' ' && letter <= '~') << static_cast<int>(letter);
    }
}

TEST(BoardInfo, TextIsExactlyAsDocumented)
{
    SBoardInfo info = TestInfo_Make();
    info.m_units.pop_back();
    EXPECT_EQ(
        BoardInfo_Json(info),
        R"({"Version":2,"Generator":"boardmap 1.2.3","DataMapStyle":"FramePerPixel","DataPushStyle":"ByPixel",)"
        R"("PrinterSupportBits":"OneBit","Map":"5","Stage":"ink-stripe","DotSizeMode":"","PrinterDataWidth":16,)"
        R"("PrinterDataWidthUnit":"bits","FrameBits":16,"Planes":1,"LineBits":6400,"BitsPerUnit":1,"Nozzles":400,)"
        R"("BitsPerPixel":1,"LinesPerPosition":1,"Bidirectional":true,"SkipBlank":true,)"
        R"("Page":{"Width":100,"Height":900,"XResolution":600.0,"YResolution":300.5},)"
        R"("Zones":{"LeftStripeWidth":40,"RightStripeWidth":24,"UnitPitch":11,"UnitPositionCount":2,)"
        R"("MaxOffset_1":3,"MaxOffset_2":7},"Units":[{"UnitId":0,"Direction":1,"Name":"Cyan",)"
        R"("Separation":"page.Cyan.tif","UnitPosition":0,"Horizon_1":3,"Horizon_2":7,"StripeColor":"","StripeLength":0}]})");
}

TEST(BoardInfo, VersionOneStaysReadable)
{
    const SBoardInfo info = BoardInfo_Parse(
        R"({"DataMapStyle":"FramePerPixel","DataPushStyle":"ByPixel","PrinterSupportBits":"OneBit","Map":"5",)"
        R"("PrinterDataWidth":16,"BitsPerUnit":1,"Nozzles":400,"BitsPerPixel":1,)"
        R"("Units":[{"UnitId":4,"Direction":2,"Name":"Cyan"}]})",
        1);
    EXPECT_EQ(info.m_version, 1);
    EXPECT_EQ(info.m_map, "5");
    EXPECT_EQ(info.m_nozzles, 400);
    ASSERT_EQ(info.m_units.size(), 1U);
    EXPECT_EQ(info.m_units[0], (SBoardUnitInfo{4, 2, "Cyan", "", 0, 0, 0, "", 0}));
}

TEST(BoardInfo, NumbersThatAreNoneOfTheirWordsAreRefused)
{
    const std::string json = BoardInfo_Json(TestInfo_Make());
    for (const std::string wrong :
         {"4294967696", "-2147483649", "400.5", "1e30", "true", "null", "18446744073709551615"})
    {
        std::string text = json;
        text.replace(text.find("\"Nozzles\":400") + 10, 3, wrong);
        EXPECT_THROW(BoardInfo_Parse(text, 2), std::runtime_error) << wrong;
    }
}

TEST(BoardInfo, PassSaysWhereTheFirstLineStandsFromEitherSide)
{
    SBandHeader header;
    header.m_bandAttr = 1;
    // 40 positions of the left zone, 100 columns, 24 of the right zone, and room for the offset.
    EXPECT_EQ(BoardPass_Of(TestInfo_Make(), header), (SBoardPass{true, 171, -40, 1, 40, 24, 7, false}));
    header.m_bandAttr = 2;
    EXPECT_EQ(BoardPass_Of(TestInfo_Make(), header), (SBoardPass{false, 167, 123, -1, 24, 40, 3, false}));
}

TEST(BoardInfo, BandDescriptionsComeBackAsTheyWere)
{
    const auto band = TestBand_Make(7, 8, 1);
    const SBoardPass pass = {false, 167, 123, -1, 24, 40, 3, true};
    const SBandDescription read = BandHeader_Parse(BandHeader_Json(*band, pass, TestInfo_Make()));
    EXPECT_TRUE(HeadersEqual(read.m_header, *band));
    EXPECT_EQ(read.m_pass, pass);
    EXPECT_EQ(read.m_info, TestInfo_Make());
}

TEST(BoardInfo, BandHeaderNamesAllThirteenWordsAndTheSkipFlagInTheirOrder)
{
    const auto band = TestBand_Make(7, 8, 1);
    const auto json = nlohmann::ordered_json::parse(BandHeader_Json(*band, SBoardPass{}, TestInfo_Make()));
    EXPECT_EQ(json.at("Format"), "boardmap-band");
    EXPECT_EQ(json.at("Version"), 2);
    EXPECT_EQ(json.at("Header").dump(),
              R"({"m_bandNo":7,"m_bandAttr":-1,"m_swathIndex":3007,"m_pageIndex":4007,"m_unitIndex":5007,)"
              R"("m_unitDirection":6007,"m_firstRow":7007,"m_rowCount":8007,"m_firstColumn":9007,)"
              R"("m_columnCount":10007,"m_reserved_11":11007,"m_reserved_12":12007,"m_reserved_13":13007,)"
              R"("m_bSkip":true})");
    EXPECT_EQ(BoardInfo_Parse(json.at("Board").dump(), 2), TestInfo_Make());
}

TEST(BoardInfo, TextThatIsNoBoardInfoIsRefused)
{
    EXPECT_THROW(BoardInfo_Parse("no json", 2), std::runtime_error);
    EXPECT_THROW(BoardInfo_Parse("{}", 2), std::runtime_error);
    EXPECT_THROW(BoardInfo_Parse("[]", 2), std::runtime_error);
    std::string json = BoardInfo_Json(TestInfo_Make());
    json.replace(json.find("400"), 3, "\"a\"");
    EXPECT_THROW(BoardInfo_Parse(json, 2), std::runtime_error);
}
