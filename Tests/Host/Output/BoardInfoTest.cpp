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
    EXPECT_EQ(BoardInfo_Parse(BoardInfo_Json(info)), info);
}

TEST(BoardInfo, JsonIsOneLineOfAscii)
{
    const std::string json = BandHeader_Json(SBandHeader{}, TestInfo_Make());
    for (const char letter : json)
    {
        EXPECT_TRUE(letter >= ' ' && letter <= '~') << static_cast<int>(letter);
    }
}

TEST(BoardInfo, TextIsExactlyAsDocumented)
{
    SBoardInfo info = TestInfo_Make();
    info.m_units.pop_back();
    EXPECT_EQ(BoardInfo_Json(info),
              R"({"DataMapStyle":"FramePerPixel","DataPushStyle":"ByPixel","PrinterSupportBits":"OneBit","Map":"5",)"
              R"("PrinterDataWidth":16,"BitsPerUnit":1,"Nozzles":400,"BitsPerPixel":1,)"
              R"("Units":[{"UnitId":0,"Direction":1,"Name":"Cyan"}]})");
}

TEST(BoardInfo, BandHeaderNamesAllThirteenWordsAndTheSkipFlagInTheirOrder)
{
    const auto band = TestBand_Make(7, 8, 1);
    const auto json = nlohmann::ordered_json::parse(BandHeader_Json(*band, TestInfo_Make()));
    EXPECT_EQ(json.at("Format"), "boardmap-band");
    EXPECT_EQ(json.at("Version"), 1);
    EXPECT_EQ(json.at("Header").dump(),
              R"({"m_bandNo":7,"m_bandAttr":-1,"m_swathIndex":3007,"m_pageIndex":4007,"m_unitIndex":5007,)"
              R"("m_unitDirection":6007,"m_firstRow":7007,"m_rowCount":8007,"m_firstColumn":9007,)"
              R"("m_columnCount":10007,"m_reserved_11":11007,"m_reserved_12":12007,"m_reserved_13":13007,)"
              R"("m_bSkip":true})");
    EXPECT_EQ(BoardInfo_Parse(json.at("Board").dump()), TestInfo_Make());
}

TEST(BoardInfo, TextThatIsNoBoardInfoIsRefused)
{
    EXPECT_THROW(BoardInfo_Parse("no json"), std::runtime_error);
    EXPECT_THROW(BoardInfo_Parse("{}"), std::runtime_error);
    EXPECT_THROW(BoardInfo_Parse("[]"), std::runtime_error);
    std::string json = BoardInfo_Json(TestInfo_Make());
    json.replace(json.find("400"), 3, "\"a\"");
    EXPECT_THROW(BoardInfo_Parse(json), std::runtime_error);
}
