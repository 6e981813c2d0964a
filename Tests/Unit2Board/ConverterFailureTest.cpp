// Generators that fail in the middle of a band: what the others do, what the owner sees, and that it can clean up.
#include "Tests/Unit2Board/ConverterSupport.h"

#include <set>
#include <stdexcept>

using testing::ElementsAre;

namespace
{

// Waits until exactly one generator has ended, and returns its index; -1 if that takes too long.
int EndedGenerator_Wait(CUnit2Board& converter)
{
    int ended = -1;
    Eventually(
        [&]
        {
            for (int i = 0; i < SAccess::GeneratorCount(converter); ++i)
            {
                if (SAccess::Generators(converter)[i]->WaitExit(0))
                {
                    ended = i;
                }
            }
            return ended >= 0;
        });
    return ended;
}

// Runs `job` with `generatorCount` generators of which one fails on a line, as far as its owner can get: the converter
// is still at work after every other line is done, and ends when the owner stops it.
void Converter_ExpectStuckUntilStopped(SBandJob& job, int generatorCount, std::size_t expectedCalls)
{
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, generatorCount));
    const int failed = EndedGenerator_Wait(converter);
    ASSERT_GE(failed, 0);
    EXPECT_FALSE(SAccess::Generators(converter)[failed]->IsThreadSuccess());
    ASSERT_TRUE(Eventually([&] { return job.map.CallCount() == expectedCalls; }));

    EXPECT_FALSE(converter.WaitExit(100));
    for (int i = 0; i < generatorCount; ++i)
    {
        EXPECT_EQ(SAccess::Generators(converter)[i]->WaitExit(0), i == failed);
    }
    EXPECT_EQ(converter.m_stopCount, 0);
    converter.Stop();
    EXPECT_TRUE(converter.WaitExit(withoutLimit));
    EXPECT_TRUE(converter.IsThreadSuccess());
    EXPECT_EQ(job.map.CallCount(), expectedCalls);
    job.map.Scratches_Expect();
}

} // namespace

TEST(ConverterFailure, AGeneratorThatFailsOnALineEndsAloneAndTheBandIsNeverFinished)
{
    const CLogCapture log;
    SBandJob job(3, 60);
    job.map.m_script = [](const SLineCall& call) { return call.line != 33 || call.param.m_unitIndex != 11; };
    Converter_ExpectStuckUntilStopped(job, 3, 3 * 60 - 1);
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @Unit2Board_Line:158 MapBandData_Line_OneInput",
                            "2 failure @Unit2Board_Line:135 MapBandData_Line_AllInput",
                            "2 failure @Unit2Board_Line:114 Process",
                            "2 m_processState = 3 @Unit2Board_Line:68 OneLoop", "2 failure @Unit2Board:227 WaitExit"));
    std::vector<int> unitsOfTheLine;
    for (const SLineCall& call : job.map.Calls())
    {
        if (call.line == 33)
        {
            unitsOfTheLine.push_back(call.param.m_unitIndex);
        }
    }
    EXPECT_THAT(unitsOfTheLine, ElementsAre(10, 11));
}

TEST(ConverterFailure, TheOnlyGeneratorFailingLeavesAllLaterLinesUndone)
{
    SBandJob job(1, 60);
    job.map.m_script = [](const SLineCall& call) { return call.line != 5; };
    Converter_ExpectStuckUntilStopped(job, 1, 6);
}

TEST(ConverterFailure, WithEveryOtherLineDoneTheConverterSwitchesStatesWithoutWaiting)
{
    SBandJob job(1, 30);
    job.map.m_script = [](const SLineCall& call) { return call.line != 3; };
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 2));
    ASSERT_GE(EndedGenerator_Wait(converter), 0);
    ASSERT_TRUE(Eventually([&] { return job.map.CallCount() == 30; }));
    const int loopCount = converter.m_loopCount;
    EXPECT_TRUE(Eventually([&] { return converter.m_loopCount > loopCount + 500; }));
    EXPECT_FALSE(converter.WaitExit(0));
    converter.Stop();
    EXPECT_TRUE(converter.WaitExit(withoutLimit));
}

TEST(ConverterFailure, AMapThatThrowsEndsItsGeneratorInTheThreadFrame)
{
    const CLogCapture log;
    SBandJob job(2, 40);
    job.map.m_script = [](const SLineCall& call)
    {
        if (call.line == 21 && call.param.m_unitIndex == 10)
        {
            throw std::runtime_error("a map of the host's own");
        }
        return true;
    };
    Converter_ExpectStuckUntilStopped(job, 3, 2 * 40 - 1);
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 Thread terminated with an exception. name = CUnit2Board_Line @KelBaseThread:72 "
                            "CustomThreadProc",
                            "2 failure @Unit2Board:227 WaitExit"));
}

TEST(ConverterFailure, AScratchObjectThatCannotBeMadeEndsEveryGenerator)
{
    const CLogCapture log;
    SBandJob job(1, 40);
    job.map.m_bScratchThrows = true;
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 2));
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(SAccess::Generators(converter)[i]->WaitExit(testPatienceMs));
    }
    EXPECT_EQ(job.map.NullReleaseCount(), 2); // Finally ran all the same
    EXPECT_FALSE(converter.WaitExit(0));
    converter.Stop();
    EXPECT_TRUE(converter.WaitExit(withoutLimit));
    EXPECT_EQ(job.map.CallCount(), 0U);
    EXPECT_THAT(log.SummaryWithLines(),
                ElementsAre("2 Thread terminated with an exception. name = CUnit2Board_Line @KelBaseThread:72",
                            "2 Thread terminated with an exception. name = CUnit2Board_Line @KelBaseThread:72",
                            "2 failure @Unit2Board:227"));
}

TEST(ConverterFailure, AllGeneratorsMayFailAndTheConverterStillStops)
{
    const CLogCapture log;
    SBandJob job(1, 100);
    job.map.m_script = [](const SLineCall&) { return false; };
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 4));
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_TRUE(SAccess::Generators(converter)[i]->WaitExit(testPatienceMs));
    }
    EXPECT_EQ(job.map.CallCount(), 4U); // one line each
    converter.Stop();
    EXPECT_TRUE(converter.WaitExit(withoutLimit));
    EXPECT_EQ(log.Records().size(), 16U);
    job.map.Scratches_Expect();
}

// The converter's own thread fails while its generators wait for lines: it stops them itself, and the owner sees no
// more than that it has ended.
TEST(ConverterFailure, AConverterThatFailsJoinsItsGeneratorsBeforeItEnds)
{
    const CLogCapture log;
    SBandJob job(1, 40);
    CTurnstile turnstile;
    job.map.m_script = [&](const SLineCall&) { return turnstile.Pass(); };
    CUnit2Board converter;
    ASSERT_TRUE(job.Create(converter, 2));
    ASSERT_TRUE(turnstile.WaitEntered(2));
    ASSERT_TRUE(Eventually([&] { return !SAccess::LineBuffer(converter)->EmptyFIFO()->HasDataEvent().Wait(0, 0); }));
    SAccess::LineBuffer(converter)->FullFIFO()->HasDataEvent().Set(); // a finished line that is not there
    ASSERT_TRUE(Eventually([&] { return log.Records().size() == 2; }));
    EXPECT_FALSE(converter.WaitExit(20)); // it waits for the two lines that are being mapped
    turnstile.Admit(40);
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_FALSE(converter.IsThreadSuccess());
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(SAccess::Generators(converter)[i]->WaitExit(0));
    }
    EXPECT_EQ(job.map.CallCount(), 2U);
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @Unit2Board:131 Process", "2 m_processState = 3 @Unit2Board:75 OneLoop",
                            "2 failure @Unit2Board:227 WaitExit"));
}
