// The configuration and the print parameters: what was set is what is read, from any thread.
#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace
{

// Puts the defaults back when a test is over.
class Configuration : public testing::Test
{
protected:
    void TearDown() override
    {
        GC_DPOption()->Set(SDPOption{});
        GC_CartInfo()->Set(SCartInfo{});
        GC_ColorGroup()->Set({});
        GC_DPConfig()->Set(SDPConfig{});
        DPD_PrintParam()->Set(SPrintParam{});
    }
};

// Parameters in which every value says `seed`.
SPrintParam PrintParam_Make(int seed)
{
    SPrintParam param;
    param.m_jobInfo = {seed + 1, seed + 2, seed + 3};
    param.m_jobInfo_CurPrint = {seed + 4, seed + 5, seed + 6};
    param.m_curPrint_JobWidth = seed + 7;
    param.m_dotSizeMode = EDotSizeMode::Middle;
    param.m_alignByteCountPerLine = seed + 8;
    for (int i = 0; i < 16; ++i)
    {
        param.m_maskData.m_mask[static_cast<std::size_t>(i)] = seed + 100 + i;
    }
    param.m_maskData.m_maskCount_1 = seed + 117;
    param.m_maskData.m_maskCount_2 = seed + 118;
    param.m_inkStripeParam = {seed + 201, seed + 202, seed + 203, seed + 204, seed + 205, seed + 206, seed + 207, 208};
    param.m_inkStripeColorData[seed + 2] = std::make_shared<const CBandData>();
    param.m_unitInfo_Horizon.m_units[seed + 3] = {seed + 3, seed + 31, seed + 32};
    param.m_unitInfo_Horizon.m_xMaxOffset_Right2Left = seed + 41;
    param.m_unitInfo_Horizon.m_xMaxOffset_Left2Right = seed + 42;
    return param;
}

// Runs `read` on several threads for as long as `write` runs on this one, a few hundred times.
void ReadWhileWriting(const std::function<void()>& read, const std::function<void(int)>& write)
{
    std::atomic<bool> bDone{false};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
    {
        readers.emplace_back(
            [&]
            {
                while (!bDone)
                {
                    read();
                }
            });
    }
    for (int round = 0; round < 300; ++round)
    {
        write(round);
        std::this_thread::yield();
    }
    bDone = true;
    for (auto& reader : readers)
    {
        reader.join();
    }
}

} // namespace

TEST_F(Configuration, EveryAccessorGivesTheOneObjectOfTheProcess)
{
    EXPECT_NE(GC_DPOption(), nullptr);
    EXPECT_EQ(GC_DPOption(), GC_DPOption());
    EXPECT_NE(GC_CartInfo(), nullptr);
    EXPECT_EQ(GC_CartInfo(), GC_CartInfo());
    EXPECT_NE(GC_ColorGroup(), nullptr);
    EXPECT_EQ(GC_ColorGroup(), GC_ColorGroup());
    EXPECT_NE(GC_DPConfig(), nullptr);
    EXPECT_EQ(GC_DPConfig(), GC_DPConfig());
    EXPECT_NE(DPD_PrintParam(), nullptr);
    EXPECT_EQ(DPD_PrintParam(), DPD_PrintParam());
}

TEST_F(Configuration, TheDataPathOptionsAreReadAsTheyWereSet)
{
    SDPOption option;
    option.m_dataMapStyle = EDataMapStyle::PlanePair;
    option.m_dataPushStyle = EDataPushStyle::ByUnit;
    option.m_printerSupportBits = EPrinterSupportBits::Multiple;
    option.m_printerDataWidth = 24;
    GC_DPOption()->Set(option);
    EXPECT_EQ(GC_DPOption()->DataMapStyle_Get(), EDataMapStyle::PlanePair);
    EXPECT_EQ(GC_DPOption()->DataPushStyle_Get(), EDataPushStyle::ByUnit);
    EXPECT_EQ(GC_DPOption()->PrinterSupportBits_Get(), EPrinterSupportBits::Multiple);
    EXPECT_EQ(GC_DPOption()->PrinterDataWidth_Get(), 24);
}

TEST_F(Configuration, AnOptionOutsideItsNamesIsKeptForItsReaderToRefuse)
{
    SDPOption option;
    option.m_dataPushStyle = static_cast<EDataPushStyle>(3);
    option.m_printerDataWidth = -1;
    GC_DPOption()->Set(option);
    EXPECT_EQ(static_cast<int>(GC_DPOption()->DataPushStyle_Get()), 3);
    EXPECT_EQ(GC_DPOption()->PrinterDataWidth_Get(), -1);
}

TEST_F(Configuration, TheCarriageIsReadAsItWasSet)
{
    SCartInfo info;
    info.m_units = {{4, 40, 400, 2}, {1, 10, 100, 0}, {4, 41, 401, 1}};
    info.m_headBaseInfo = {3, 400};
    GC_CartInfo()->Set(info);

    const auto unit = GC_CartInfo()->CartUnitInfo_Get(1);
    EXPECT_EQ(unit.m_unitId, 1);
    EXPECT_EQ(unit.m_colorIndex, 10);
    EXPECT_EQ(unit.m_headIndex, 100);
    EXPECT_EQ(unit.m_direction, 0);
    EXPECT_EQ(GC_CartInfo()->CartUnitInfo_Get(4).m_direction, 2) << "the first of two with one id";

    const auto units = GC_CartInfo()->CartUnitInfo_GetAll();
    ASSERT_EQ(units.size(), 3U);
    EXPECT_EQ(units[0].m_unitId, 4);
    EXPECT_EQ(units[1].m_unitId, 1);
    EXPECT_EQ(units[2].m_direction, 1);
    EXPECT_EQ(GC_CartInfo()->CartHeadBaseInfo_Get().m_headCount, 3);
    EXPECT_EQ(GC_CartInfo()->CartHeadBaseInfo_Get().m_bandWidth, 400);
}

TEST_F(Configuration, AnUnknownCartUnitIsAllZeroButForItsId)
{
    const auto unit = GC_CartInfo()->CartUnitInfo_Get(77);
    EXPECT_EQ(unit.m_unitId, 77);
    EXPECT_EQ(unit.m_colorIndex, 0);
    EXPECT_EQ(unit.m_headIndex, 0);
    EXPECT_EQ(unit.m_direction, 0);
    EXPECT_TRUE(GC_CartInfo()->CartUnitInfo_GetAll().empty());
}

TEST_F(Configuration, AColourGroupIsFoundByItsKeyAndItsUnitsByTheirIds)
{
    CColorGroupInfo group;
    group.m_units[5] = {2, 5};
    GC_ColorGroup()->Set({{CColorGroupInfo::Key_Pattern_Layout(), group}, {"other", CColorGroupInfo{}}});
    const auto* found = GC_ColorGroup()->ColorGroupInfo_By_Key(CColorGroupInfo::Key_Pattern_Layout());
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->UnitInfo_Get(5).m_unitPosition, 2);
    EXPECT_EQ(found->UnitInfo_Get(5).m_unitId, 5);
    EXPECT_EQ(found->UnitInfo_Get(6).m_unitPosition, 0);
    EXPECT_EQ(found->UnitInfo_Get(6).m_unitId, 6);
    EXPECT_NE(GC_ColorGroup()->ColorGroupInfo_By_Key("other"), nullptr);
    EXPECT_EQ(GC_ColorGroup()->ColorGroupInfo_By_Key("none"), nullptr);
    GC_ColorGroup()->Set({});
    EXPECT_EQ(GC_ColorGroup()->ColorGroupInfo_By_Key("other"), nullptr);
}

TEST_F(Configuration, AColourGroupThatWasHandedOutFollowsEverySetAndStaysWhenItsKeyIsGone)
{
    const auto group = [](int unitId, int position)
    {
        CColorGroupInfo info;
        info.m_units[unitId] = {position, unitId};
        return info;
    };
    GC_ColorGroup()->Set({{"m", group(5, 2)}, {"stays", group(5, 9)}});
    const CColorGroupInfo* pGroup = GC_ColorGroup()->ColorGroupInfo_By_Key("m");
    const CColorGroupInfo* pOther = GC_ColorGroup()->ColorGroupInfo_By_Key("stays");
    ASSERT_NE(pGroup, nullptr);
    EXPECT_NE(pGroup, pOther);

    // Another job's groups, with keys before and behind it.
    GC_ColorGroup()->Set({{"a", group(5, 7)}, {"m", group(6, 3)}, {"stays", group(5, 8)}, {"z", group(5, 6)}});
    EXPECT_EQ(GC_ColorGroup()->ColorGroupInfo_By_Key("m"), pGroup);
    EXPECT_EQ(pGroup->UnitInfo_Get(6).m_unitPosition, 3);
    EXPECT_EQ(pGroup->UnitInfo_Get(5).m_unitPosition, 0) << "the first job's unit is gone";
    EXPECT_EQ(pOther->UnitInfo_Get(5).m_unitPosition, 8);

    GC_ColorGroup()->Set({{"stays", group(5, 1)}});
    EXPECT_EQ(GC_ColorGroup()->ColorGroupInfo_By_Key("m"), nullptr);
    EXPECT_TRUE(pGroup->m_units.empty());
    EXPECT_EQ(pOther->UnitInfo_Get(5).m_unitPosition, 1);

    GC_ColorGroup()->Set({{"m", group(5, 4)}});
    EXPECT_EQ(GC_ColorGroup()->ColorGroupInfo_By_Key("m"), pGroup);
    EXPECT_EQ(pGroup->UnitInfo_Get(5).m_unitPosition, 4);
}

TEST_F(Configuration, TheLineGeneratorCountIsReadAsItWasSet)
{
    EXPECT_EQ(GC_DPConfig()->LineGeneratorCount_Of_DataMap_Get(), 1);
    GC_DPConfig()->Set(SDPConfig{6});
    EXPECT_EQ(GC_DPConfig()->LineGeneratorCount_Of_DataMap_Get(), 6);
}

TEST_F(Configuration, ThePrintParametersAreReadAsTheyWereSet)
{
    const SPrintParam param = PrintParam_Make(1000);
    DPD_PrintParam()->Set(param);
    const auto* read = DPD_PrintParam();
    EXPECT_EQ(read->JobInfo_Get().m_width, 1001);
    EXPECT_EQ(read->JobInfo_Get().m_height, 1002);
    EXPECT_EQ(read->JobInfo_Get().m_bitsPerPixel, 1003);
    EXPECT_EQ(read->JobInfo_CurPrint_Get().m_width, 1004);
    EXPECT_EQ(read->JobInfo_CurPrint_Get().m_height, 1005);
    EXPECT_EQ(read->JobInfo_CurPrint_Get().m_bitsPerPixel, 1006);
    EXPECT_EQ(read->CurPrint_JobWidth_Get(), 1007);
    EXPECT_EQ(read->DotSizeMode_Get(), EDotSizeMode::Middle);
    EXPECT_EQ(read->AlignByteCountPerLine(), 1008);
    EXPECT_EQ(read->MaskData_Ref().m_mask, param.m_maskData.m_mask);
    EXPECT_EQ(read->MaskData_Ref().m_maskCount_1, 1117);
    EXPECT_EQ(read->MaskData_Ref().m_maskCount_2, 1118);
    EXPECT_EQ(read->UnitInfo_Horizon().XMaxOffset_Right2Left_Get(), 1041);
    EXPECT_EQ(read->UnitInfo_Horizon().XMaxOffset_Left2Right_Get(), 1042);
}

TEST_F(Configuration, TheInkStripeParametersAreReadAsTheyWereSet)
{
    const SPrintParam param = PrintParam_Make(0);
    DPD_PrintParam()->Set(param);
    const auto stripe = DPD_PrintParam()->InkStripeParam_Get();
    EXPECT_EQ(stripe.m_mode, 201);
    EXPECT_EQ(stripe.leftStripeWidth, 202);
    EXPECT_EQ(stripe.rightStripeWidth, 203);
    EXPECT_EQ(stripe.unitPitch, 204);
    EXPECT_EQ(stripe.m_distance, 205);
    EXPECT_EQ(stripe.unitPosition, 206);
    EXPECT_EQ(stripe.unitPositionCount, 207);
    EXPECT_EQ(stripe.m_flags, 208);
    EXPECT_EQ(DPD_PrintParam()->InkStripeColorData_Get(2), param.m_inkStripeColorData.at(2).get());
    EXPECT_EQ(DPD_PrintParam()->InkStripeColorData_Get(3), nullptr);
}

TEST_F(Configuration, AUnitsHorizontalPlaceIsReadAsItWasSetAndZeroForAnUnknownUnit)
{
    DPD_PrintParam()->Set(PrintParam_Make(0));
    const auto& horizon = DPD_PrintParam()->UnitInfo_Horizon();
    EXPECT_EQ(horizon.HorizonInfo_Get(3).m_unitId, 3);
    EXPECT_EQ(horizon.HorizonInfo_Get(3).m_horizon_1, 31);
    EXPECT_EQ(horizon.HorizonInfo_Get(3).m_horizon_2, 32);
    EXPECT_EQ(horizon.HorizonInfo_Get(4).m_unitId, 4);
    EXPECT_EQ(horizon.HorizonInfo_Get(4).m_horizon_1, 0);
    EXPECT_EQ(horizon.HorizonInfo_Get(4).m_horizon_2, 0);
}

TEST_F(Configuration, TheParametersKeepTheirColourBandsAlive)
{
    std::weak_ptr<const CBandData> band;
    {
        SPrintParam param;
        auto created = std::make_shared<CBandData>();
        ASSERT_TRUE(created->Create(8, 1, 1, 1));
        param.m_inkStripeColorData[1] = created;
        band = created;
        DPD_PrintParam()->Set(param);
    }
    ASSERT_FALSE(band.expired());
    EXPECT_EQ(DPD_PrintParam()->InkStripeColorData_Get(1)->m_dataSize, 1);
    DPD_PrintParam()->Set(SPrintParam{});
    EXPECT_TRUE(band.expired());
}

TEST_F(Configuration, ManyThreadsReadWhileTheHostReplacesTheCarriage)
{
    std::atomic<int> tornCount{0};
    ReadWhileWriting(
        [&]
        {
            const auto units = GC_CartInfo()->CartUnitInfo_GetAll();
            for (const auto& unit : units)
            {
                tornCount += unit.m_direction == static_cast<int>(units.size()) ? 0 : 1;
            }
            static_cast<void>(GC_CartInfo()->CartUnitInfo_Get(1));
            const auto base = GC_CartInfo()->CartHeadBaseInfo_Get();
            tornCount += base.m_headCount == base.m_bandWidth ? 0 : 1;
        },
        [](int round)
        {
            const int count = 1 + round % 7;
            SCartInfo info;
            info.m_units.assign(static_cast<std::size_t>(count), {1, 0, 0, count});
            info.m_headBaseInfo = {count, count};
            GC_CartInfo()->Set(info);
        });
    EXPECT_EQ(tornCount, 0);
}

TEST_F(Configuration, ManyThreadsReadWhileTheHostReplacesTheOptions)
{
    ReadWhileWriting(
        []
        {
            static_cast<void>(GC_DPOption()->DataMapStyle_Get());
            static_cast<void>(GC_DPOption()->DataPushStyle_Get());
            static_cast<void>(GC_DPOption()->PrinterSupportBits_Get());
            static_cast<void>(GC_DPOption()->PrinterDataWidth_Get());
            static_cast<void>(GC_DPConfig()->LineGeneratorCount_Of_DataMap_Get());
            static_cast<void>(GC_ColorGroup()->ColorGroupInfo_By_Key("key"));
        },
        [](int round)
        {
            SDPOption option;
            option.m_printerDataWidth = round;
            GC_DPOption()->Set(option);
            GC_DPConfig()->Set(SDPConfig{round});
            GC_ColorGroup()->Set({{"key", CColorGroupInfo{}}});
        });
    EXPECT_EQ(GC_DPOption()->PrinterDataWidth_Get(), 299);
}

TEST_F(Configuration, ManyThreadsReadWhileTheHostReplacesThePrintParameters)
{
    std::atomic<int> tornCount{0};
    ReadWhileWriting(
        [&]
        {
            const auto job = DPD_PrintParam()->JobInfo_Get();
            const auto current = DPD_PrintParam()->JobInfo_CurPrint_Get();
            const auto stripe = DPD_PrintParam()->InkStripeParam_Get();
            const bool bDefault = job.m_width == 0;
            tornCount += bDefault || job.m_height == job.m_width + 1 ? 0 : 1;
            tornCount += current.m_width == 0 || current.m_bitsPerPixel == current.m_width + 2 ? 0 : 1;
            tornCount += stripe.m_mode == 0 || stripe.unitPositionCount == stripe.m_mode + 6 ? 0 : 1;
            static_cast<void>(DPD_PrintParam()->CurPrint_JobWidth_Get());
            static_cast<void>(DPD_PrintParam()->DotSizeMode_Get());
            static_cast<void>(DPD_PrintParam()->AlignByteCountPerLine());
            static_cast<void>(DPD_PrintParam()->InkStripeColorData_Get(1));
        },
        [](int round) { DPD_PrintParam()->Set(PrintParam_Make(round)); });
    EXPECT_EQ(tornCount, 0);
}
