// The configuration that a job leaves behind.
#include "Host/Job/JobApply.h"

#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/PrintParam/PrintParamGlobal.h"
#include "Tests/Host/Job/TestJob.h"

#include <gtest/gtest.h>

namespace
{

// A configuration in which nothing is as a job would have it, and the defaults again afterwards.
class JobApply : public testing::Test
{
protected:
    JobApply()
    {
        SPrintParam param;
        param.m_curPrint_JobWidth = -1;
        param.m_inkStripeParam.leftStripeWidth = 7;
        DPD_PrintParam()->Set(param);
        GC_ColorGroup()->Set({{"other", CColorGroupInfo{}}});
        GC_DPConfig()->Set({17});
    }
    ~JobApply() override
    {
        GC_DPOption()->Set(SDPOption{});
        DPD_PrintParam()->Set(SPrintParam{});
        GC_CartInfo()->Set(SCartInfo{});
        GC_ColorGroup()->Set({});
        GC_DPConfig()->Set(SDPConfig{});
    }
};

} // namespace

TEST_F(JobApply, EveryAccessorReturnsWhatTheJobSays)
{
    Job_Apply(Job_Of(std::string(g_fullJob)), 5000, 7000);

    EXPECT_EQ(GC_DPOption()->DataMapStyle_Get(), EDataMapStyle::FramePerPixel);
    EXPECT_EQ(GC_DPOption()->DataPushStyle_Get(), EDataPushStyle::ByPixel);
    EXPECT_EQ(GC_DPOption()->PrinterSupportBits_Get(), EPrinterSupportBits::TwoBit);
    EXPECT_EQ(GC_DPOption()->PrinterDataWidth_Get(), 32);

    for (const SRipJobInfo& info : {DPD_PrintParam()->JobInfo_Get(), DPD_PrintParam()->JobInfo_CurPrint_Get()})
    {
        EXPECT_EQ(info.m_width, 5000);
        EXPECT_EQ(info.m_height, 7000);
        EXPECT_EQ(info.m_bitsPerPixel, 1);
    }
    EXPECT_EQ(DPD_PrintParam()->CurPrint_JobWidth_Get(), 10000) << "divided by MaskCount_1 it is the page again";
    EXPECT_EQ(DPD_PrintParam()->DotSizeMode_Get(), EDotSizeMode::Big);
    EXPECT_EQ(DPD_PrintParam()->AlignByteCountPerLine(), 4);
    EXPECT_EQ(DPD_PrintParam()->MaskData_Ref().m_maskCount_1, 2);
    EXPECT_EQ(DPD_PrintParam()->MaskData_Ref().m_maskCount_2, 3);

    const SInkStripeParam_Pixel stripe = DPD_PrintParam()->InkStripeParam_Get();
    EXPECT_EQ(stripe.leftStripeWidth, 40);
    EXPECT_EQ(stripe.rightStripeWidth, 24);
    EXPECT_EQ(stripe.unitPitch, 11);
    EXPECT_EQ(stripe.unitPositionCount, 9);
    const CUnitInfo_Horizon& horizon = DPD_PrintParam()->UnitInfo_Horizon();
    EXPECT_EQ(horizon.XMaxOffset_Right2Left_Get(), 4);
    EXPECT_EQ(horizon.XMaxOffset_Left2Right_Get(), 6);
    EXPECT_EQ(horizon.HorizonInfo_Get(5).m_unitId, 5);
    EXPECT_EQ(horizon.HorizonInfo_Get(5).m_horizon_1, 4);
    EXPECT_EQ(horizon.HorizonInfo_Get(5).m_horizon_2, 6);
    EXPECT_EQ(horizon.HorizonInfo_Get(15).m_horizon_1, 0);
    EXPECT_EQ(horizon.HorizonInfo_Get(15).m_horizon_2, 0);
    EXPECT_EQ(DPD_PrintParam()->InkStripeColorData_Get(5), nullptr) << "the base stage makes no stripes";

    const std::vector<SCartUnitInfo> units = GC_CartInfo()->CartUnitInfo_GetAll();
    ASSERT_EQ(units.size(), 2U);
    EXPECT_EQ(units[0].m_unitId, 5);
    EXPECT_EQ(units[0].m_direction, 2);
    EXPECT_EQ(units[0].m_colorIndex, 0);
    EXPECT_EQ(units[1].m_unitId, 15);
    EXPECT_EQ(units[1].m_direction, 1);
    EXPECT_EQ(units[1].m_headIndex, 1);
    EXPECT_EQ(GC_CartInfo()->CartHeadBaseInfo_Get().m_headCount, 2);
    EXPECT_EQ(GC_CartInfo()->CartHeadBaseInfo_Get().m_bandWidth, 400);

    const CColorGroupInfo* pGroup = GC_ColorGroup()->ColorGroupInfo_By_Key(CColorGroupInfo::Key_Pattern_Layout());
    ASSERT_NE(pGroup, nullptr);
    EXPECT_EQ(pGroup->m_units.size(), 2U);
    EXPECT_EQ(pGroup->UnitInfo_Get(5).m_unitPosition, 3);
    EXPECT_EQ(pGroup->UnitInfo_Get(5).m_unitId, 5);
    EXPECT_EQ(pGroup->UnitInfo_Get(15).m_unitPosition, 1);
    EXPECT_EQ(GC_ColorGroup()->ColorGroupInfo_By_Key("other"), nullptr);

    EXPECT_EQ(GC_DPConfig()->LineGeneratorCount_Of_DataMap_Get(), 7);
}

TEST_F(JobApply, TwoBitJobKeepsItsDepthWhenItIsPushedByUnit)
{
    std::string text = Replaced(g_smallJob, "BitsPerPixel = 1", "BitsPerPixel = 2");
    text = Replaced(text, "PrinterDataWidth", "DataPushStyle = \"ByUnit\"\nPrinterDataWidth");
    Job_Apply(Job_Of(text), 10, 20);
    EXPECT_EQ(DPD_PrintParam()->JobInfo_Get().m_bitsPerPixel, 2);
    EXPECT_EQ(DPD_PrintParam()->JobInfo_CurPrint_Get().m_bitsPerPixel, 2);
    EXPECT_EQ(DPD_PrintParam()->CurPrint_JobWidth_Get(), 10);
}

TEST_F(JobApply, StripesArriveWithTheirColours)
{
    std::string text = Replaced(g_stripeJob, "UnitId = 0", "UnitId = 0\nHorizon_1 = 8\nHorizon_2 = 1");
    text = Replaced(text, "UnitId = 1", "UnitId = 1\nHorizon_1 = 2\nHorizon_2 = 5\nUnitPosition = 2");
    Job_Apply(Job_Of(text), 100, 20);

    EXPECT_EQ(DPD_PrintParam()->UnitInfo_Horizon().XMaxOffset_Right2Left_Get(), 8);
    EXPECT_EQ(DPD_PrintParam()->UnitInfo_Horizon().XMaxOffset_Left2Right_Get(), 5) << "of another unit";
    EXPECT_EQ(DPD_PrintParam()->InkStripeColorData_Get(0), nullptr);
    EXPECT_EQ(DPD_PrintParam()->InkStripeColorData_Get(2), nullptr);
    const CBandData* pColor = DPD_PrintParam()->InkStripeColorData_Get(1);
    ASSERT_NE(pColor, nullptr);
    EXPECT_EQ(pColor->m_dataSize, 10 * 2);
    EXPECT_EQ(pColor->m_pData[0], 0xFF);
    ASSERT_NE(DPD_PrintParam()->InkStripeColorData_Get(3), nullptr);
    EXPECT_EQ(DPD_PrintParam()->InkStripeColorData_Get(3)->m_pData[0], 0);

    EXPECT_EQ(GC_CartInfo()->CartUnitInfo_GetAll().size(), 4U) << "units without a band are units of the cart";
    const CColorGroupInfo* pGroup = GC_ColorGroup()->ColorGroupInfo_By_Key(CColorGroupInfo::Key_Pattern_Layout());
    ASSERT_NE(pGroup, nullptr);
    EXPECT_EQ(pGroup->UnitInfo_Get(1).m_unitPosition, 2);
    EXPECT_EQ(pGroup->UnitInfo_Get(3).m_unitPosition, 3);
}

TEST_F(JobApply, PlanePairJobsAreDescribedBitByBit)
{
    std::string text = Replaced(g_smallJob, "\"FramePerPixel\"", "\"PlanePair\"");
    text = Replaced(text, "BitsPerPixel = 1", "BitsPerPixel = 2");
    Job_Apply(Job_Of(text), 10, 20);
    EXPECT_EQ(GC_CartInfo()->CartHeadBaseInfo_Get().m_bandWidth, 800);
    EXPECT_EQ(DPD_PrintParam()->JobInfo_CurPrint_Get().m_bitsPerPixel, 1);
    EXPECT_EQ(DPD_PrintParam()->JobInfo_Get().m_bitsPerPixel, 2);
}

TEST_F(JobApply, NothingIsSetWhenAStripeColourCannotBeRead)
{
    const SJob job = Job_Of(Replaced(g_stripeJob, "\"Full\"", "\"no-such-folder/stripe.tif\""));
    EXPECT_THROW(Job_Apply(job, 100, 20), CInputError);
    EXPECT_EQ(DPD_PrintParam()->CurPrint_JobWidth_Get(), -1);
    EXPECT_EQ(GC_DPConfig()->LineGeneratorCount_Of_DataMap_Get(), 17);
    EXPECT_TRUE(GC_CartInfo()->CartUnitInfo_GetAll().empty());
    EXPECT_EQ(GC_DPOption()->PrinterDataWidth_Get(), SDPOption{}.m_printerDataWidth);
}
