// The host's stages: what ends a run in time, where the library alone would wait, and what the user is told of it.
#include "Host/Command/StageWatch.h"

#include "DataMap/PrintUnitDataMap_5.h"
#include "Host/Command/Conversion.h"
#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Tests/Support/ConfigGuard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <memory>
#include <stdexcept>
#include <thread>

namespace
{

// What a map does at one of its lines, or, for the last two, when it is asked how long a board line is.
enum class EMistake
{
    LineFails,
    LineThrows,
    LinesTakeLong,
    NoMemory,
    LengthThrows,
};

class CBrokenMap : public CPrintUnitDataMap_5
{
public:
    explicit CBrokenMap(EMistake mistake) : m_mistake(mistake) {}

    bool MapData_Line(const SSrcBandDataParam& /*param*/, const unsigned char* /*src*/, unsigned char* /*dst*/,
                      int /*dstByteCount*/) const override
    {
        if (m_mistake == EMistake::LineThrows)
        {
            throw std::runtime_error("a line");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(m_mistake == EMistake::LinesTakeLong ? 500 : 0));
        return m_mistake == EMistake::LinesTakeLong;
    }

    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override
    {
        if (m_mistake == EMistake::LengthThrows)
        {
            throw std::runtime_error("a length");
        }
        return m_mistake == EMistake::NoMemory ? std::numeric_limits<int>::max()
                                               : CPrintUnitDataMap_5::SrcPixelCount_2_BoardBitCount(srcPixelCount);
    }

private:
    EMistake m_mistake;
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

protected:
    bool AllocateOutputBuffer() override { return ABoardBandThatCannotBeMadeFails(); }

private:
    // The library abandons such a band; the leak checker knows it by this name.
    bool ABoardBandThatCannotBeMadeFails()
    {
        const bool bMade = CWatchedStage::AllocateOutputBuffer();
        return bMade;
    }
};

// A stage of one unit that has a band, whose map makes a mistake.
class CStageWatchTest : public testing::Test
{
protected:
    void Start(EMistake mistake)
    {
        m_stage.reset(); // of a former start
        m_config.m_param.m_maskData.m_maskCount_1 = 1;
        m_config.m_param.m_maskData.m_maskCount_2 = 1;
        m_config.m_colorGroups = {{patternLayoutGroup, SGroupSetup()}};
        m_config.Apply();
        m_unit = std::make_unique<CBandDataFIFO>("unit 0");
        auto* pBand = new CBandData();
        ASSERT_TRUE(pBand->Create(16, 40, 1, 1));
        ASSERT_TRUE(m_unit->Create(&pBand, 1));
        m_records = std::make_unique<CFailureRecords>();
        m_watch = std::make_unique<CStageWatch>(*m_records);
        m_stage = std::make_unique<CStage>(*m_watch);
        ASSERT_TRUE(m_stage->Create(false, {m_unit.get()}));
        auto map = std::make_unique<CBrokenMap>(mistake);
        ASSERT_TRUE(map->Init(1, 16));
        m_stage->Map_Replace(std::move(map));
        ASSERT_TRUE(m_unit->Empty_Out(pBand, 100));
        ASSERT_TRUE(m_unit->Full_In(pBand, 100));
    }

    // The stage ends in time, without success.
    void End()
    {
        EXPECT_TRUE(m_stage->WaitExit(10000)) << "it goes on";
        m_stage->Stop();
        ASSERT_TRUE(m_stage->WaitExit(kelWait_WithoutLimit));
        EXPECT_FALSE(m_stage->IsThreadSuccess());
        EXPECT_EQ(m_watch->BandCount_Get(), 0);
    }

    CConfigGuard m_config;
    std::unique_ptr<CBandDataFIFO> m_unit;
    std::unique_ptr<CFailureRecords> m_records;
    std::unique_ptr<CStageWatch> m_watch;
    std::unique_ptr<CStage> m_stage;
};

} // namespace

TEST_F(CStageWatchTest, AConverterThatLosesALineGeneratorEndsTheStageWithinASecondAndIsNamed)
{
    for (const EMistake mistake : {EMistake::LineFails, EMistake::LineThrows})
    {
        Start(mistake);
        End();
        EXPECT_TRUE(m_records->HasLostWorker());
        EXPECT_EQ(m_watch->State_Get(), 4);
        EXPECT_THAT(
            m_records->Text_Get(),
            testing::HasSubstr(mistake == EMistake::LineThrows ? "name = CUnit2Board_Line" : "Unit2Board_Line:114"));
    }
}

TEST_F(CStageWatchTest, ARequestToStopEndsAConverterInTheMiddleOfABand)
{
    Start(EMistake::LinesTakeLong); // 40 of them, on two threads
    while (m_watch->State_Get() != 4)
    {
        std::this_thread::yield();
    }
    m_stage->Stop();
    const auto begin = std::chrono::steady_clock::now();
    End();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_FALSE(m_records->HasLostWorker());
}

TEST_F(CStageWatchTest, HowMuchMemoryWasWantedForABoardBandIsTold)
{
    Start(EMistake::NoMemory);
    End();
    EXPECT_EQ(m_watch->Failure_Text(), "there is no memory for a board band of 2147483647 bits x 40 lines, 10737418240 "
                                       "bytes, and the stripe bands beside it");
}

TEST_F(CStageWatchTest, WhatAStepOfTheStageThrowsIsTold)
{
    Start(EMistake::LengthThrows);
    End();
    EXPECT_EQ(m_watch->Failure_Text(), "a length");
}

TEST(StageWatchText, StatesHaveTheNamesOfTheLibrarysOperations)
{
    EXPECT_EQ(StageState_Text(2), "2 GetInputData");
    EXPECT_EQ(StageState_Text(5), "5 ReleaseInputElement");
    EXPECT_EQ(StageState_Text(9), "9");
}
