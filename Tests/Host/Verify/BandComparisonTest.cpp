// The comparison of one band: any number of threads says the same, and a comparison can be broken off.
#include "Host/Model/BandComparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace
{

// A page of noise.
class CNoise : public CModelInk
{
public:
    int Page_Get(const SBoardUnitInfo& unit, int row, int column) const override
    {
        if (m_bThrow)
        {
            throw std::out_of_range("no such row");
        }
        return (unit.m_unitId * 7 + row * 31 + column * 17 + row * column) % 5 == 0 ? 1 : 0;
    }
    int Stripe_Get(const SBoardUnitInfo& /*unit*/, int /*nozzle*/, int /*position*/) const override { return 0; }
    bool IsBlank(const SBoardUnitInfo& /*unit*/, int /*swath*/) const override { return false; }

    bool m_bThrow = false;
};

class BandComparison : public testing::Test
{
protected:
    void SetUp() override
    {
        m_info.m_map = "5";
        m_info.m_printerDataWidth = 16;
        m_info.m_nozzles = 40;
        m_info.m_bitsPerPixel = 1;
        m_info.m_pageWidth = 5000;
        m_info.m_pageHeight = 40;
        m_info.m_units.resize(2);
        m_info.m_units[1].m_unitId = 1;
        for (SBoardUnitInfo& unit : m_info.m_units)
        {
            unit.m_direction = 1;
            unit.m_separation = "page.tif";
        }
        const CPageModel model(m_info);
        ASSERT_TRUE(m_band.Create(static_cast<int>(model.LineBits()), model.LineCount(true), 1, 1));
        model.Lines_Make(0, 0, {m_band.m_pData, static_cast<std::size_t>(m_band.m_dataSize)}, m_ink);
    }

    SBoardInfo m_info;
    CNoise m_ink;
    CBandData m_band;
};

TEST_F(BandComparison, AnyNumberOfThreadsSaysTheSame)
{
    for (int at = 5; at < m_band.m_dataSize; at += 997)
    {
        m_band.m_pData[at] ^= 0x40;
    }
    const CPageModel model(m_info);
    const SBandDifference one = CBandComparison(model, 1).Compare(0, m_band, m_ink, 20, nullptr);
    EXPECT_EQ(one.m_count, (m_band.m_dataSize - 5 + 996) / 997);
    ASSERT_EQ(one.m_first.size(), 20U);
    EXPECT_EQ(one.m_first.front().m_bit, (SModelBit{0, 41}));
    for (const int threads : {2, 3, 8})
    {
        const SBandDifference more = CBandComparison(model, threads).Compare(0, m_band, m_ink, 20, nullptr);
        EXPECT_EQ(more.m_count, one.m_count);
        EXPECT_EQ(more.m_lineCount, one.m_lineCount);
        EXPECT_EQ(more.m_first, one.m_first);
        ASSERT_EQ(more.m_units.size(), one.m_units.size());
        for (std::size_t i = 0; i < one.m_units.size(); ++i)
        {
            EXPECT_EQ(more.m_units[i].m_unitId, one.m_units[i].m_unitId);
            EXPECT_EQ(more.m_units[i].m_missing, one.m_units[i].m_missing);
            EXPECT_EQ(more.m_units[i].m_extra, one.m_units[i].m_extra);
            EXPECT_EQ(more.m_units[i].m_firstLine, one.m_units[i].m_firstLine);
            EXPECT_EQ(more.m_units[i].m_lastLine, one.m_units[i].m_lastLine);
        }
    }
}

TEST_F(BandComparison, ItCanBeBrokenOff)
{
    int calls = 0;
    const auto Stop = [&]
    {
        ++calls;
        return false;
    };
    const CPageModel model(m_info);
    CBandComparison(model, 1).Compare(0, m_band, m_ink, 1, Stop);
    EXPECT_EQ(calls, 1);
}

TEST_F(BandComparison, WhatTheInkThrowsArrivesFromAnyThread)
{
    m_ink.m_bThrow = true;
    const CPageModel model(m_info);
    for (const int threads : {1, 4})
    {
        EXPECT_THROW(CBandComparison(model, threads).Compare(0, m_band, m_ink, 1, nullptr), std::out_of_range);
    }
}

} // namespace
