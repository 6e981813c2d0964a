// How long the band converter and its line generators ask the platform to wait: the time-outs as they reach it.
#include "Tests/Unit2Board/ConverterSupport.h"

#include "WaitJournal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace
{

// A buffer of four elements and a generator on it, without a thread: in state 2.
class GeneratorWait : public testing::Test
{
protected:
    GeneratorWait()
    {
        std::vector<int*> elements;
        for (int i = 0; i < 4; ++i)
        {
            elements.push_back(new int);
        }
        EXPECT_TRUE(m_buffer.Create(elements.data(), 4));
        SAccess::LineBuffer(m_generator) = &m_buffer;
        SAccess::DataMap(m_generator) = &m_job.map;
        SAccess::SrcBands(m_generator) = m_job.pointers.data();
        SAccess::SrcBandCount(m_generator) = 1;
        SAccess::DstBand(m_generator) = &m_job.dst;
        EXPECT_TRUE(SAccess::Prepare(m_generator));
        EXPECT_TRUE(SAccess::OneLoop(m_generator));
    }
    ~GeneratorWait() override { SAccess::Finally(m_generator); }

    CKelThreadBuffer_T<int> m_buffer{"Buffer"};
    SBandJob m_job{1, 8};
    CUnit2Board_Line m_generator;
};

} // namespace

TEST_F(GeneratorWait, ForALineItWaitsOnceFor100)
{
    const CWaitJournal journal;
    ASSERT_TRUE(SAccess::OneLoop(m_generator));
    EXPECT_THAT(journal.Event(&m_buffer.InFIFO()->HasDataEvent()), ElementsAre(100));
    EXPECT_THAT(journal.Events(), ElementsAre(100));
}

TEST_F(GeneratorWait, ForRoomForAFinishedLineItWaitsOnceFor100)
{
    int* element = nullptr;
    ASSERT_TRUE(m_buffer.Empty_Out(element, 0));
    *element = 3;
    ASSERT_TRUE(m_buffer.Wait_In(element, 0));
    ASSERT_TRUE(SAccess::OneLoop(m_generator)); // takes it
    ASSERT_TRUE(SAccess::OneLoop(m_generator)); // maps it
    int* extra = nullptr;
    while (m_buffer.Empty_Out(extra, 0))
    {
        ASSERT_TRUE(m_buffer.Full_In(extra, 0));
    }
    ASSERT_TRUE(m_buffer.Full_In(new int, 0)); // now it is full
    const CWaitJournal journal;
    EXPECT_FALSE(SAccess::OneLoop(m_generator));
    EXPECT_THAT(journal.Event(&m_buffer.FullFIFO()->HasSpaceEvent()), ElementsAre(100));
    EXPECT_THAT(journal.Events(), ElementsAre(100));
}

TEST(ConverterWait, ForFreeElementsItOnlyProbesAndForAFinishedLineItWaitsFor100)
{
    SBandJob job(1, 100);
    CUnit2Board converter;
    ASSERT_TRUE(SAccess::Setup(converter, job.dst, job.map));
    auto& buffer = *SAccess::LineBuffer(converter);
    const void* const free = &buffer.EmptyFIFO()->HasDataEvent();
    const void* const finished = &buffer.FullFIFO()->HasDataEvent();
    ASSERT_TRUE(SAccess::OneLoop(converter));
    {
        const CWaitJournal journal; // hands out all 20 elements
        ASSERT_TRUE(SAccess::OneLoop(converter));
        EXPECT_THAT(journal.Event(free), Not(IsEmpty()));
        EXPECT_THAT(journal.Events(), ElementsAre(0));
    }
    const CWaitJournal journal; // nothing has come back, and nothing is free
    ASSERT_TRUE(SAccess::OneLoop(converter));
    EXPECT_THAT(journal.Event(free), Each(0));
    EXPECT_THAT(journal.Event(finished), ElementsAre(0, 100));
    EXPECT_THAT(journal.Events(), ElementsAre(0, 100));
}

TEST(ConverterWait, AWholeBandAsksForProbesAnd100AndJoinsItsGeneratorsWithoutLimit)
{
    SBandJob job(1, 50);
    const CWaitJournal journal;
    {
        CUnit2Board converter;
        ASSERT_TRUE(job.Create(converter, 3));
        ASSERT_TRUE(converter.WaitExit(testPatienceMs));
    }
    EXPECT_THAT(journal.Events(), testing::IsSubsetOf({0, 100}));
    EXPECT_THAT(journal.Exits("CUnit2Board_Line"), ElementsAre(4294967295));
    EXPECT_THAT(journal.Exits("CUnit2Board"), ElementsAre(testPatienceMs));
}
