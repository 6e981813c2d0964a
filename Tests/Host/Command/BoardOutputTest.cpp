// The thread between the stage's output and the writer: order, ends, failures, and who waits for whom.
#include "Host/Command/BoardOutput.h"
#include "Host/HostError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <optional>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

constexpr unsigned patienceMs = 60'000;

// Keeps the numbers of the bands that it is given; on request it holds a band until it is let go, or refuses one.
class CTestWriter : public CBoardWriter
{
public:
    std::vector<int> m_bandNumbers;
    int m_refusedBand = -1;
    int m_heldBand = -1;
    std::promise<void> m_holding; // kept when the held band has arrived
    std::promise<void> m_release; // by the test

private:
    void Band_WriteNext(const CBandData& band) override
    {
        if (band.m_bandNo == m_heldBand)
        {
            m_holding.set_value();
            m_release.get_future().wait();
        }
        if (band.m_bandNo == m_refusedBand)
        {
            throw CRunError("the disk is full");
        }
        m_bandNumbers.push_back(band.m_bandNo);
    }
    void Finish_All() override { ADD_FAILURE() << "whether the output is complete is not for the thread to say"; }
};

class BoardOutput : public testing::Test
{
protected:
    static constexpr int capacity = 4;
    static constexpr int lineCount = 3;
    static constexpr int lineBytes = 2;

    void Band_Queue(int bandNo)
    {
        auto band = std::make_unique<CBandData>();
        ASSERT_TRUE(band->Create(lineBytes * 8, lineCount, 1, 1));
        band->m_bandNo = bandNo;
        ASSERT_TRUE(m_bands.In(band.get(), patienceMs));
        static_cast<void>(band.release()); // the FIFO's
    }

    void Bands_Queue(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            Band_Queue(i);
        }
    }

    CBandDataFIFO_S m_bands{capacity};
    CTestWriter m_writer;
};

} // namespace

TEST_F(BoardOutput, WritesEveryBandInOrderAndEndsWithTheStage)
{
    CBoardOutput output(m_bands, m_writer);
    ASSERT_TRUE(output.Start("CBoardOutput"));
    Bands_Queue(3 * capacity);
    m_bands.SetCompletedFlag();
    ASSERT_TRUE(output.WaitExit(patienceMs));
    EXPECT_TRUE(output.IsThreadSuccess());
    EXPECT_NO_THROW(output.Error_Check());
    EXPECT_THAT(m_writer.m_bandNumbers, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11));
    EXPECT_EQ(output.Count_Get().bands, 3 * capacity);
    EXPECT_EQ(output.Count_Get().lines, 3 * capacity * lineCount);
    EXPECT_EQ(output.Count_Get().bytes, 3 * capacity * lineCount * lineBytes);
}

TEST_F(BoardOutput, GoesOnWaitingWhileTheStageHasNotEnded)
{
    CBoardOutput output(m_bands, m_writer);
    ASSERT_TRUE(output.Start("CBoardOutput"));
    EXPECT_FALSE(output.WaitExit(250)); // longer than one of its waits
    Band_Queue(7);
    m_bands.SetCompletedFlag();
    ASSERT_TRUE(output.WaitExit(patienceMs));
    EXPECT_THAT(m_writer.m_bandNumbers, ElementsAre(7));
}

TEST_F(BoardOutput, AStageWithoutBandsEndsItToo)
{
    CBoardOutput output(m_bands, m_writer);
    m_bands.SetCompletedFlag();
    ASSERT_TRUE(output.Start("CBoardOutput"));
    ASSERT_TRUE(output.WaitExit(patienceMs));
    EXPECT_NO_THROW(output.Error_Check());
    EXPECT_EQ(output.Count_Get().bands, 0);
}

TEST_F(BoardOutput, ABandThatIsSlowToWriteKeepsNobodyFromQueueingTheNext)
{
    m_writer.m_heldBand = 0;
    CBoardOutput output(m_bands, m_writer);
    ASSERT_TRUE(output.Start("CBoardOutput"));
    Band_Queue(0);
    m_writer.m_holding.get_future().wait();
    for (int bandNo = 1; bandNo <= capacity; ++bandNo)
    {
        EXPECT_TRUE(m_bands.WaitForIn(0)) << bandNo;
        Band_Queue(bandNo);
    }
    EXPECT_FALSE(m_bands.WaitForIn(0)); // the bound
    EXPECT_EQ(output.Count_Get().bands, 0);
    m_writer.m_release.set_value();
    m_bands.SetCompletedFlag();
    ASSERT_TRUE(output.WaitExit(patienceMs));
    EXPECT_THAT(m_writer.m_bandNumbers, ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(BoardOutput, ABandThatCannotBeWrittenEndsTheThreadAndTheReasonIsKept)
{
    m_writer.m_refusedBand = 1;
    CBoardOutput output(m_bands, m_writer);
    Bands_Queue(capacity);
    m_bands.SetCompletedFlag();
    ASSERT_TRUE(output.Start("CBoardOutput"));
    ASSERT_TRUE(output.WaitExit(patienceMs));
    EXPECT_FALSE(output.IsThreadSuccess());
    for (int i = 0; i < 2; ++i) // it does not get lost by asking
    {
        try
        {
            output.Error_Check();
            ADD_FAILURE() << "no error";
        }
        catch (const CRunError& error)
        {
            EXPECT_STREQ(error.what(), "the disk is full");
        }
    }
    EXPECT_THAT(m_writer.m_bandNumbers, ElementsAre(0));
    EXPECT_EQ(output.Count_Get().bands, 1);
    EXPECT_TRUE(m_bands.WaitForOut(0)) << "the bands behind the refused one are not taken";
}

TEST_F(BoardOutput, AStopEndsAWaitForBands)
{
    CBoardOutput output(m_bands, m_writer);
    ASSERT_TRUE(output.Start("CBoardOutput"));
    output.Stop();
    ASSERT_TRUE(output.WaitExit(patienceMs));
    EXPECT_NO_THROW(output.Error_Check());
    EXPECT_THAT(m_writer.m_bandNumbers, IsEmpty());
}

TEST_F(BoardOutput, AStopLetsTheBandInHandBeWrittenAndTakesNoOther)
{
    m_writer.m_heldBand = 0;
    auto output = std::make_optional<CBoardOutput>(m_bands, m_writer);
    ASSERT_TRUE(output->Start("CBoardOutput"));
    Bands_Queue(capacity);
    m_writer.m_holding.get_future().wait();
    output->Stop();
    EXPECT_FALSE(output->WaitExit(0));
    m_writer.m_release.set_value();
    output.reset(); // waits
    EXPECT_THAT(m_writer.m_bandNumbers, ElementsAre(0));
    EXPECT_TRUE(m_bands.WaitForOut(0));
}
