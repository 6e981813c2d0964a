// The host's stages: a converter that loses a line generator ends the run and is named, instead of the hour.
#include "Host/Command/StageWatch.h"

#include "DataMap/PrintUnitDataMap_5.h"
#include "Host/Command/Conversion.h"
#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Tests/Support/ConfigGuard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace
{

enum class ELine
{
    Fails,
    Throws,
};

class CBrokenMap : public CPrintUnitDataMap_5
{
public:
    explicit CBrokenMap(ELine line) : m_line(line) {}

    bool MapData_Line(const SSrcBandDataParam& /*param*/, const unsigned char* /*src*/, unsigned char* /*dst*/,
                      int /*dstByteCount*/) const override
    {
        if (m_line == ELine::Throws)
        {
            throw std::runtime_error("a line");
        }
        return false;
    }

private:
    ELine m_line;
};

class CStage : public CWatchedStage<CUnitData2BoardData_S_AllUnit>
{
public:
    using CWatchedStage::CWatchedStage;

    void Map_Replace(std::unique_ptr<CPrintUnitDataMap_Base> map)
    {
        delete m_pDataMap;
        m_pDataMap = map.release();
    }
};

} // namespace

TEST(StageWatch, AConverterThatLosesALineGeneratorEndsTheStageWithinASecondAndIsNamed)
{
    for (const ELine line : {ELine::Fails, ELine::Throws})
    {
        CConfigGuard config;
        config.m_param.m_maskData.m_maskCount_1 = 1;
        config.m_param.m_maskData.m_maskCount_2 = 1;
        config.m_colorGroups = {{patternLayoutGroup, SGroupSetup()}};
        config.Apply();
        CBandDataFIFO unit("unit 0");
        auto* pBand = new CBandData();
        ASSERT_TRUE(pBand->Create(16, 40, 1, 1));
        ASSERT_TRUE(unit.Create(&pBand, 1));
        const CFailureRecords records;
        CStageWatch watch(records);
        CStage stage(watch);
        ASSERT_TRUE(stage.Create(false, {&unit}));
        auto map = std::make_unique<CBrokenMap>(line);
        ASSERT_TRUE(map->Init(1, 16));
        stage.Map_Replace(std::move(map));
        ASSERT_TRUE(unit.Empty_Out(pBand, 100));
        ASSERT_TRUE(unit.Full_In(pBand, 100));
        EXPECT_TRUE(stage.WaitExit(10000)) << "the hour";
        stage.Stop();
        ASSERT_TRUE(stage.WaitExit(kelWait_WithoutLimit));
        EXPECT_FALSE(stage.IsThreadSuccess());
        EXPECT_TRUE(records.HasLostWorker());
        EXPECT_EQ(watch.BandCount_Get(), 0);
        EXPECT_EQ(watch.State_Get(), 4);
        EXPECT_THAT(records.Text_Get(),
                    testing::HasSubstr(line == ELine::Throws ? "name = CUnit2Board_Line" : "Unit2Board_Line:114"));
    }
}

TEST(StageWatch, StatesHaveTheNamesOfTheLibrarysOperations)
{
    EXPECT_EQ(StageState_Text(2), "2 GetInputData");
    EXPECT_EQ(StageState_Text(5), "5 ReleaseInputElement");
    EXPECT_EQ(StageState_Text(9), "9");
}
