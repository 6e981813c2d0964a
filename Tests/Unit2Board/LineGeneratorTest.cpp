// The line generator: driven step by step on the test's thread, then on its own.
#include "Tests/Unit2Board/ConverterSupport.h"

#include <algorithm>
#include <type_traits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

using namespace std::chrono_literals;

class CWatchedGenerator : public CUnit2Board_Line
{
public:
    void Stop() override
    {
        ++m_stopCount;
        CUnit2Board_Line::Stop();
    }

    int m_stopCount = 0;
};

class LineGenerator : public testing::Test
{
protected:
    // A buffer with `elementCount` elements, and the generator as Create leaves it but without a thread.
    void Begin(int srcBandCount, int height, int elementCount = 4)
    {
        m_pJob = std::make_unique<SBandJob>(srcBandCount, height);
        std::vector<int*> elements;
        for (int i = 0; i < elementCount; ++i)
        {
            elements.push_back(new int);
        }
        ASSERT_TRUE(m_buffer.Create(elements.data(), elementCount));
        SAccess::LineBuffer(m_generator) = &m_buffer;
        SAccess::DataMap(m_generator) = &m_pJob->map;
        SAccess::SrcBands(m_generator) = m_pJob->pointers.data();
        SAccess::SrcBandCount(m_generator) = srcBandCount;
        SAccess::DstBand(m_generator) = &m_pJob->dst;
        ASSERT_TRUE(SAccess::Prepare(m_generator));
        ASSERT_EQ(State(), 1);
    }

    // The same, in state 3 with a line in hand.
    void Begin_WithLine(int srcBandCount, int height, int line)
    {
        Begin(srcBandCount, height);
        Line_HandOut(line);
        ASSERT_TRUE(Step());
        ASSERT_TRUE(Step());
        ASSERT_EQ(State(), 3);
    }

    void Line_HandOut(int line)
    {
        int* element = nullptr;
        ASSERT_TRUE(m_buffer.Empty_Out(element, 0));
        *element = line;
        ASSERT_TRUE(m_buffer.Wait_In(element, 0));
    }

    void Scratch_Release()
    {
        SAccess::Finally(m_generator);
        m_pJob->map.Scratches_Expect();
    }

    bool Step() { return SAccess::OneLoop(m_generator); }
    std::int32_t& State() { return SAccess::State(m_generator); }
    int* LineIndex() { return SAccess::LineIndex(m_generator); }

    std::unique_ptr<SBandJob> m_pJob;
    CKelThreadBuffer_T<int> m_buffer{"test"};
    CWatchedGenerator m_generator;
};

} // namespace

static_assert(std::is_base_of_v<CKelBaseThread<CUnit2Board_Line>, CUnit2Board_Line>);
static_assert(std::is_copy_constructible_v<CUnit2Board_Line> && std::is_copy_assignable_v<CUnit2Board_Line>);

TEST_F(LineGenerator, ANewOneHasNothing)
{
    CUnit2Board_Line generator;
    EXPECT_EQ(SAccess::State(generator), 0);
    EXPECT_EQ(SAccess::DataMap(generator), nullptr);
    EXPECT_EQ(SAccess::CustomParam(generator), nullptr);
    EXPECT_EQ(SAccess::SrcBands(generator), nullptr);
    EXPECT_EQ(SAccess::SrcBandCount(generator), 0);
    EXPECT_EQ(SAccess::DstBand(generator), nullptr);
    EXPECT_EQ(SAccess::LineBuffer(generator), nullptr);
    EXPECT_EQ(SAccess::LineIndex(generator), nullptr);
}

TEST_F(LineGenerator, TheMembersKeepTheirOrderInMemory)
{
    CUnit2Board_Line g;
    const std::vector<const void*> addresses = {
        &SAccess::State(g),        &SAccess::DataMap(g), &SAccess::CustomParam(g), &SAccess::SrcBands(g),
        &SAccess::SrcBandCount(g), &SAccess::DstBand(g), &SAccess::LineBuffer(g),  &SAccess::LineIndex(g)};
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

TEST_F(LineGenerator, State1MakesTheScratchObjectAndFinallyGivesItBack)
{
    Begin(1, 1);
    EXPECT_EQ(m_pJob->map.ScratchCount(), 0U);
    EXPECT_TRUE(Step());
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(m_pJob->map.ScratchCount(), 1U);
    EXPECT_NE(SAccess::CustomParam(m_generator), nullptr);
    Scratch_Release();
    EXPECT_EQ(SAccess::CustomParam(m_generator), nullptr);
}

TEST_F(LineGenerator, FinallyBeforeState1GivesTheMapANull)
{
    Begin(1, 1);
    SAccess::Finally(m_generator);
    EXPECT_EQ(m_pJob->map.NullReleaseCount(), 1);
}

TEST_F(LineGenerator, AnIdleOneComesBackToState2Every100Ms)
{
    Begin(1, 1);
    ASSERT_TRUE(Step());
    for (int i = 0; i < 2; ++i)
    {
        const CStopWatch watch;
        EXPECT_TRUE(Step());
        EXPECT_GE(watch.Elapsed(), 95ms);
        EXPECT_LT(watch.Elapsed(), 5000ms);
        EXPECT_EQ(State(), 2);
        EXPECT_EQ(LineIndex(), nullptr);
    }
    Scratch_Release();
}

TEST_F(LineGenerator, AQueuedLineIsTakenAtOnceOldestFirst)
{
    constexpr int lineCount = 20;
    Begin(1, lineCount, lineCount);
    for (int line = 0; line < lineCount; ++line)
    {
        Line_HandOut(line);
    }
    ASSERT_TRUE(Step());
    const CStopWatch watch;
    for (int line = 0; line < lineCount; ++line)
    {
        EXPECT_TRUE(Step());
        EXPECT_EQ(State(), 3);
        ASSERT_NE(LineIndex(), nullptr);
        EXPECT_EQ(*LineIndex(), line);
        EXPECT_EQ(m_pJob->map.CallCount(), static_cast<std::size_t>(line)); // mapped by the next step
        EXPECT_TRUE(Step());
        EXPECT_TRUE(Step());
    }
    EXPECT_LT(watch.Elapsed() / lineCount, 50ms); // no step waits
    Scratch_Release();
}

// Several at once, as a converter with few generators lets it.

TEST_F(LineGenerator, ALineThatComesDuringTheWaitIsTakenByTheSameStep)
{
    Begin(1, 9);
    ASSERT_TRUE(Step());
    std::thread converter(
        [&]
        {
            std::this_thread::sleep_for(2ms);
            Line_HandOut(2);
        });
    EXPECT_TRUE(Step());
    EXPECT_EQ(State(), 3);
    converter.join();
    ASSERT_NE(LineIndex(), nullptr);
    EXPECT_EQ(*LineIndex(), 2);
    Scratch_Release();
}

TEST_F(LineGenerator, MapsTheLineOfEverySourceBandInArrayOrder)
{
    Begin(3, 4);
    // Strides that differ from the lines' own lengths, and from each other.
    ASSERT_TRUE(m_pJob->dst.Create(60, 4, 1, 16));
    ASSERT_TRUE(m_pJob->sources[1]->Create(13, 4, 2, 32));
    m_pJob->sources[1]->m_unitDirection = 2;
    std::swap(m_pJob->pointers[0], m_pJob->pointers[2]); // units 12, 11, 10
    Line_HandOut(3);
    for (int step = 0; step < 3; ++step)
    {
        ASSERT_TRUE(Step());
    }
    EXPECT_EQ(State(), 4);

    const auto calls = m_pJob->map.Calls();
    ASSERT_EQ(calls.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i)
    {
        const CBandData& band = *m_pJob->pointers[i];
        EXPECT_EQ(calls[i].line, 3);
        EXPECT_EQ(calls[i].param.m_unitIndex, band.m_unitIndex);
        EXPECT_EQ(calls[i].param.m_unitDirection, band.m_unitDirection);
        EXPECT_EQ(calls[i].param.m_lineBitCount, i == 1 ? 26 : 24);
        EXPECT_EQ(calls[i].src, band.m_pData + 3 * (i == 1 ? 32 : 3));
        EXPECT_EQ(calls[i].dstByteCount, 16); // the stride, not the line's own 8 bytes
        EXPECT_EQ(calls[i].param.m_customParam, SAccess::CustomParam(m_generator));
    }
    EXPECT_EQ(calls[0].param.m_unitIndex, 12);
    Scratch_Release();
}

TEST_F(LineGenerator, HandsTheElementBackAsFinishedAndWaitsForTheNext)
{
    Begin_WithLine(2, 4, 1);
    ASSERT_TRUE(Step());
    int* held = LineIndex();
    ASSERT_NE(held, nullptr);
    EXPECT_TRUE(Step());
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(LineIndex(), nullptr);
    int* element = nullptr;
    ASSERT_TRUE(m_buffer.Full_Out(element, 0));
    EXPECT_EQ(element, held);
    EXPECT_EQ(*element, 1);
    ASSERT_TRUE(m_buffer.Empty_In(element, 0));
    Scratch_Release();
}

TEST_F(LineGenerator, WithoutSourceBandsEveryLineIsFinishedUntouched)
{
    const CLogCapture log;
    Begin_WithLine(0, 4, 2);
    EXPECT_TRUE(Step());
    EXPECT_EQ(State(), 4);
    EXPECT_TRUE(Step());
    EXPECT_TRUE(m_buffer.FullFIFO()->HasDataEvent().Wait(0, 0));
    EXPECT_EQ(m_pJob->map.CallCount(), 0U);
    EXPECT_THAT(log.Summary(), IsEmpty());
    Scratch_Release();
}

TEST_F(LineGenerator, ASourceBandThatIsTooShortIsSkippedWithARecordAndTheLineStillCounts)
{
    Begin_WithLine(3, 4, 2);
    ASSERT_TRUE(m_pJob->sources[1]->Create(24, 2, 1, 1)); // lines 0 and 1 only
    const CLogCapture log;
    EXPECT_TRUE(Step());
    EXPECT_EQ(State(), 4);
    EXPECT_TRUE(Step());
    EXPECT_THAT(Records_Text(log), ElementsAre("2 failure @Unit2Board_Line:144 MapBandData_Line_OneInput"));
    const auto calls = m_pJob->map.Calls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].param.m_unitIndex, 10);
    EXPECT_EQ(calls[1].param.m_unitIndex, 12);
    EXPECT_TRUE(m_buffer.FullFIFO()->HasDataEvent().Wait(0, 0));
    Scratch_Release();
}

TEST_F(LineGenerator, TheLastLineOfAShortSourceBandIsStillMapped)
{
    Begin_WithLine(1, 4, 1);
    ASSERT_TRUE(m_pJob->sources[0]->Create(24, 2, 1, 1));
    const CLogCapture log;
    EXPECT_TRUE(Step());
    EXPECT_THAT(log.Summary(), IsEmpty());
    EXPECT_EQ(m_pJob->map.CallCount(), 1U);
    Scratch_Release();
}

TEST_F(LineGenerator, AMapThatFailsLeavesTheOtherSourcesUnmappedAndEndsItWithItsElementInHand)
{
    Begin_WithLine(3, 4, 2);
    m_pJob->map.m_script = [](const SLineCall& call) { return call.param.m_unitIndex != 11; };
    const CLogCapture log;
    EXPECT_FALSE(Step());
    EXPECT_THAT(Records_Text(log), ElementsAre("2 failure @Unit2Board_Line:158 MapBandData_Line_OneInput",
                                               "2 failure @Unit2Board_Line:135 MapBandData_Line_AllInput",
                                               "2 failure @Unit2Board_Line:114 Process",
                                               "2 m_processState = 3 @Unit2Board_Line:68 OneLoop"));
    EXPECT_EQ(m_pJob->map.CallCount(), 2U);
    EXPECT_EQ(m_generator.m_stopCount, 1);
    EXPECT_NE(LineIndex(), nullptr);
    EXPECT_FALSE(m_buffer.FullFIFO()->HasDataEvent().Wait(0, 0));
    Scratch_Release();
}

TEST_F(LineGenerator, AFinishedLineThatCannotBeHandedBackEndsItWithItsElementInHand)
{
    Begin_WithLine(1, 4, 2);
    ASSERT_TRUE(Step());
    while (m_buffer.FullFIFO()->HasSpaceEvent().Wait(0, 0))
    {
        ASSERT_TRUE(m_buffer.FullFIFO()->In(new int(-1)));
    }
    const CLogCapture log;
    const CStopWatch watch;
    EXPECT_FALSE(Step());
    EXPECT_GE(watch.Elapsed(), 95ms); // it waited for room once
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @KelThreadPtrFIFO_T:144 In", "2 failure @KelThreadPtrFIFO_T:144 In",
                            "2 failure @Unit2Board_Line:124 AddDstData",
                            "2 m_processState = 4 @Unit2Board_Line:68 OneLoop"));
    EXPECT_EQ(m_generator.m_stopCount, 1);
    EXPECT_NE(LineIndex(), nullptr);
    Scratch_Release();
}

TEST_F(LineGenerator, AFullFIFOThatGetsRoomDuringTheWaitTakesTheLine)
{
    Begin_WithLine(1, 4, 2);
    ASSERT_TRUE(Step());
    while (m_buffer.FullFIFO()->HasSpaceEvent().Wait(0, 0))
    {
        ASSERT_TRUE(m_buffer.FullFIFO()->In(new int(-1)));
    }
    std::thread converter(
        [&]
        {
            std::this_thread::sleep_for(2ms);
            int* element = nullptr;
            EXPECT_TRUE(m_buffer.FullFIFO()->Out(element));
            delete element;
        });
    EXPECT_TRUE(Step());
    converter.join();
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(LineIndex(), nullptr);
    Scratch_Release();
}

TEST_F(LineGenerator, AStateThatDoesNotExistEndsIt)
{
    Begin(1, 1);
    for (const int state : {0, 5, -1})
    {
        State() = state;
        const CLogCapture log;
        const int stopCount = m_generator.m_stopCount;
        EXPECT_FALSE(Step());
        EXPECT_THAT(Records_Text(log),
                    ElementsAre("2 m_processState = " + std::to_string(state) + " @Unit2Board_Line:68 OneLoop"));
        EXPECT_EQ(m_generator.m_stopCount, stopCount + 1);
    }
}

TEST_F(LineGenerator, DestroyedWithALineInHandItDeletesTheElement)
{
    Begin(0, 1);
    auto generator = std::make_unique<CUnit2Board_Line>();
    SAccess::LineIndex(*generator) = new int(3); // the leak checker looks on
    EXPECT_EQ(*SAccess::LineIndex(*generator), 3);
}

TEST_F(LineGenerator, OnItsOwnThreadItMapsWhatIsHandedOutAndEndsOnRequest)
{
    const CLogCapture log;
    Begin(2, 4);
    CUnit2Board_Line generator;
    ASSERT_TRUE(generator.Create(m_buffer, m_pJob->map, m_pJob->pointers.data(), 2, m_pJob->dst));
    EXPECT_EQ(SAccess::SrcBands(generator), m_pJob->pointers.data()); // borrowed, not copied
    Line_HandOut(3);
    Line_HandOut(0);
    EXPECT_TRUE(Eventually([&] { return m_pJob->map.CallCount() == 4; }));
    for (const int line : {3, 0})
    {
        int* element = nullptr;
        ASSERT_TRUE(m_buffer.Full_Out(element, testPatienceMs));
        EXPECT_EQ(*element, line);
        ASSERT_TRUE(m_buffer.Empty_In(element, 0));
    }
    generator.Stop();
    EXPECT_TRUE(generator.WaitExit(withoutLimit));
    EXPECT_TRUE(generator.IsThreadSuccess());
    EXPECT_EQ(m_pJob->map.ScratchCount(), 1U);
    EXPECT_NE(m_pJob->map.Calls()[0].thread, std::this_thread::get_id());
    m_pJob->map.Scratches_Expect();
    EXPECT_THAT(log.Summary(), IsEmpty());
}

// Sitting through the poll would take up to 100 ms, 50 as a rule.
TEST_F(LineGenerator, AnIdleOneIsStoppedWithoutSittingThroughItsPoll)
{
    Begin(1, 1);
    const auto median = MedianRound_Get(
        stopRounds,
        [&](int round)
        {
            CUnit2Board_Line generator;
            EXPECT_TRUE(generator.Create(m_buffer, m_pJob->map, m_pJob->pointers.data(), 1, m_pJob->dst));
            EXPECT_TRUE(Eventually([&] { return m_pJob->map.ScratchCount() == static_cast<std::size_t>(round) + 1; }));
            std::this_thread::sleep_for(2ms);
            const CStopWatch watch;
            generator.Stop();
            EXPECT_TRUE(generator.WaitExit(withoutLimit));
            return watch.Elapsed();
        });
    EXPECT_LT(median, stopBound);
}

TEST_F(LineGenerator, ACopyShares)
{
    Begin_WithLine(1, 1, 0);
    CUnit2Board_Line constructed(m_generator);
    CUnit2Board_Line assigned;
    assigned = m_generator;
    for (CUnit2Board_Line* copy : {&constructed, &assigned})
    {
        EXPECT_EQ(SAccess::State(*copy), 3);
        EXPECT_EQ(SAccess::DataMap(*copy), &m_pJob->map);
        EXPECT_EQ(SAccess::CustomParam(*copy), SAccess::CustomParam(m_generator));
        EXPECT_EQ(SAccess::SrcBands(*copy), m_pJob->pointers.data());
        EXPECT_EQ(SAccess::SrcBandCount(*copy), 1);
        EXPECT_EQ(SAccess::DstBand(*copy), &m_pJob->dst);
        EXPECT_EQ(SAccess::LineBuffer(*copy), &m_buffer);
        EXPECT_EQ(SAccess::LineIndex(*copy), LineIndex());
        SAccess::LineIndex(*copy) = nullptr; // only one may delete it
    }
    Scratch_Release();
}
