// The converter's state machine, driven step by step on the test's thread: no generator, no thread of its own. The test
// plays the generators by moving elements from the in FIFO to the full FIFO.
#include "Tests/Unit2Board/ConverterSupport.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <type_traits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

using namespace std::chrono_literals;

class ConverterState : public testing::Test
{
protected:
    // A new converter for a band of `height` lines, in state 1.
    void Begin(int height)
    {
        m_pConverter = std::make_unique<CWatchedConverter>();
        m_pJob = std::make_unique<SBandJob>(1, height);
        ASSERT_TRUE(SAccess::Setup(*m_pConverter, m_pJob->dst, m_pJob->map));
    }

    // The same, as far as state 3 with as many lines handed out as possible.
    void Begin_HandedOut(int height)
    {
        Begin(height);
        ASSERT_TRUE(Step());
        ASSERT_TRUE(Step());
        ASSERT_EQ(State(), 3);
    }

    bool Step() { return SAccess::OneLoop(*m_pConverter); }
    std::int32_t& State() { return SAccess::State(*m_pConverter); }
    int AddedCount() { return SAccess::AddedCount(*m_pConverter); }
    int FinishedCount() { return SAccess::FinishedCount(*m_pConverter); }
    CKelThreadBuffer_T<int>& Buffer() { return *SAccess::LineBuffer(*m_pConverter); }

    bool HasFreeElement() { return Buffer().EmptyFIFO()->HasDataEvent().Wait(0, 0); }
    bool HasFinishedLine() { return Buffer().FullFIFO()->HasDataEvent().Wait(0, 0); }

    // Finishes one line, as a generator would: its index, or -1 if none is queued.
    int Line_Finish()
    {
        int* element = nullptr;
        if (!Buffer().InFIFO()->Out(element))
        {
            return -1;
        }
        const int line = *element;
        EXPECT_TRUE(Buffer().FullFIFO()->In(element));
        return line;
    }

    // Fills a FIFO to its brim with elements of the test's making.
    static void Fill(CKelThreadPtrFIFO_T<int>& fifo)
    {
        while (fifo.HasSpaceEvent().Wait(0, 0))
        {
            ASSERT_TRUE(fifo.In(new int(-1)));
        }
    }

    // How many elements it holds, which are gone then.
    static int Count_Of(CKelThreadPtrFIFO_T<int>& fifo)
    {
        int count = 0;
        for (int* element = nullptr; fifo.Out(element); ++count)
        {
            delete element;
        }
        return count;
    }

    std::unique_ptr<SBandJob> m_pJob;
    std::unique_ptr<CWatchedConverter> m_pConverter;
};

} // namespace

static_assert(std::is_base_of_v<CKelBaseThread<CUnit2Board>, CUnit2Board>);
static_assert(std::is_copy_constructible_v<CUnit2Board> && std::is_copy_assignable_v<CUnit2Board>);
static_assert(std::has_virtual_destructor_v<CUnit2Board>);

TEST_F(ConverterState, ANewConverterHasOneGeneratorToMakeAndNothingElse)
{
    CUnit2Board converter;
    EXPECT_EQ(SAccess::State(converter), 0);
    EXPECT_EQ(SAccess::Generators(converter), nullptr);
    EXPECT_EQ(SAccess::GeneratorCount(converter), 1);
    EXPECT_EQ(SAccess::DataMap(converter), nullptr);
    EXPECT_EQ(SAccess::SrcBands(converter), nullptr);
    EXPECT_EQ(SAccess::SrcBandCount(converter), 0);
    EXPECT_EQ(SAccess::DstBand(converter), nullptr);
    EXPECT_EQ(SAccess::LineBuffer(converter), nullptr);
    EXPECT_TRUE(converter.WaitExit(0));
}

TEST_F(ConverterState, TheMembersKeepTheirOrderInMemory)
{
    CUnit2Board c;
    const std::vector<const void*> addresses = {
        &SAccess::State(c),         &SAccess::Generators(c), &SAccess::GeneratorCount(c), &SAccess::AddedCount(c),
        &SAccess::FinishedCount(c), &SAccess::DataMap(c),    &SAccess::SrcBands(c),       &SAccess::SrcBandCount(c),
        &SAccess::DstBand(c),       &SAccess::LineBuffer(c)};
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

TEST_F(ConverterState, TheBufferHasItsNameAndTwentyFreeElements)
{
    Begin(1);
    const CLogCapture log;
    EXPECT_FALSE(Buffer().Wait_In(nullptr, 0));
    EXPECT_THAT(log.Summary(),
                ElementsAre("2 add nullptr to buffer! buffer name = Unit2Board_Buffer @KelThreadBuffer_T"));
    int count = 0;
    for (int* element = nullptr; Buffer().EmptyFIFO()->Out(element); ++count)
    {
        delete element;
    }
    EXPECT_EQ(count, 20);
    EXPECT_FALSE(HasFinishedLine());
    EXPECT_FALSE(Buffer().InFIFO()->HasDataEvent().Wait(0, 0));
}

TEST_F(ConverterState, PreparingLeadsToState1AndState1ClearsTheCounters)
{
    Begin(3);
    EXPECT_EQ(State(), 1);
    SAccess::AddedCount(*m_pConverter) = 7;
    SAccess::FinishedCount(*m_pConverter) = 8;
    EXPECT_TRUE(Step());
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(AddedCount(), 0);
    EXPECT_EQ(FinishedCount(), 0);
}

TEST_F(ConverterState, ABandWithoutLinesGoesStraightTo3AndStopsThere)
{
    const CLogCapture log;
    const CStopWatch watch;
    constexpr int rounds = 20;
    for (int i = 1; i <= rounds; ++i)
    {
        Begin(0);
        EXPECT_TRUE(Step());
        EXPECT_TRUE(Step());
        EXPECT_EQ(State(), 3);
        EXPECT_FALSE(Buffer().InFIFO()->HasDataEvent().Wait(0, 0));
        EXPECT_EQ(m_pConverter->m_stopCount, 0);
        EXPECT_TRUE(Step());
        EXPECT_EQ(m_pConverter->m_stopCount, 1);
    }
    EXPECT_LT(watch.Elapsed() / rounds, 50ms); // no step waits
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(ConverterState, HandsOutTwentyLinesInTheirOrderAndNoMore)
{
    Begin_HandedOut(45);
    EXPECT_EQ(AddedCount(), 20);
    EXPECT_FALSE(HasFreeElement());
    for (int line = 0; line < 20; ++line)
    {
        EXPECT_EQ(Line_Finish(), line);
    }
    EXPECT_EQ(Line_Finish(), -1);
}

TEST_F(ConverterState, HandsOutNoMoreLinesThanTheBandHas)
{
    Begin_HandedOut(4);
    EXPECT_EQ(AddedCount(), 4);
    EXPECT_TRUE(HasFreeElement());
    State() = 2;
    EXPECT_TRUE(Step());
    EXPECT_EQ(State(), 3);
    EXPECT_EQ(AddedCount(), 4);
}

TEST_F(ConverterState, HandingOutResumesAsSoonAsOneElementIsBack)
{
    Begin_HandedOut(45);
    const CStopWatch watch;
    for (int line = 0; line < 25; ++line)
    {
        EXPECT_EQ(Line_Finish(), line);
        EXPECT_TRUE(Step()); // collects it
        EXPECT_EQ(FinishedCount(), line + 1);
        EXPECT_EQ(State(), 2);
        EXPECT_TRUE(Step()); // hands out the next
        EXPECT_EQ(AddedCount(), 21 + line);
        EXPECT_EQ(State(), 3);
    }
    EXPECT_LT(watch.Elapsed(), 2500ms); // 50 steps, none of which waits
}

TEST_F(ConverterState, CollectsAllThatHasComeBackInOneStep)
{
    Begin_HandedOut(45);
    for (int i = 0; i < 12; ++i)
    {
        Line_Finish();
    }
    EXPECT_TRUE(Step());
    EXPECT_EQ(FinishedCount(), 12);
    EXPECT_EQ(State(), 2);
    EXPECT_FALSE(HasFinishedLine());
    EXPECT_TRUE(Step());
    EXPECT_EQ(AddedCount(), 32);
}

TEST_F(ConverterState, WithNothingToDoWaits100MsForALineAndThenLooksForFreeElements)
{
    Begin_HandedOut(45);
    const CStopWatch watch;
    EXPECT_TRUE(Step());
    EXPECT_GE(watch.Elapsed(), 95ms);
    EXPECT_LT(watch.Elapsed(), 5000ms);
    EXPECT_EQ(State(), 2);
    EXPECT_EQ(FinishedCount(), 0);
    EXPECT_TRUE(Step());
    EXPECT_EQ(State(), 3);
}

TEST_F(ConverterState, ALineThatComesBackDuringTheWaitEndsItAndIsCollectedByTheNextStep)
{
    // A machine that is slow with one of the two threads misses the wait: then once more.
    bool bMet = false;
    for (int attempt = 0; attempt < 20 && !bMet; ++attempt)
    {
        Begin_HandedOut(45);
        std::thread generator(
            [&]
            {
                std::this_thread::sleep_for(10ms);
                Line_Finish();
            });
        EXPECT_TRUE(Step());
        bMet = State() == 3 && FinishedCount() == 0;
        generator.join();
        EXPECT_TRUE(Step());
        EXPECT_LE(FinishedCount(), 1);
        bMet = bMet && FinishedCount() == 1 && State() == 2;
    }
    EXPECT_TRUE(bMet);
}

TEST_F(ConverterState, WithFreeElementsLeftItSwitchesBetween2And3WithoutWaiting)
{
    Begin_HandedOut(5);
    const CStopWatch watch;
    for (int i = 0; i < 200; ++i)
    {
        EXPECT_EQ(State(), 3);
        EXPECT_TRUE(Step());
        EXPECT_EQ(State(), 2);
        EXPECT_TRUE(Step());
    }
    EXPECT_LT(watch.Elapsed(), 2000ms);
    EXPECT_EQ(m_pConverter->m_stopCount, 0);
}

TEST_F(ConverterState, StopsOnceWhenAllLinesAreBack)
{
    const CLogCapture log;
    Begin_HandedOut(3);
    Line_Finish();
    Line_Finish();
    EXPECT_TRUE(Step());
    EXPECT_EQ(m_pConverter->m_stopCount, 0);
    EXPECT_TRUE(Step());
    Line_Finish();
    EXPECT_TRUE(Step());
    EXPECT_EQ(m_pConverter->m_stopCount, 1);
    EXPECT_EQ(State(), 3);
    EXPECT_EQ(FinishedCount(), 3);
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(ConverterState, OnlyTheNumberOfLinesThatComeBackCounts)
{
    Begin_HandedOut(3);
    for (int i = 0; i < 3; ++i)
    {
        int* element = nullptr;
        ASSERT_TRUE(Buffer().InFIFO()->Out(element));
        *element = -7;
        ASSERT_TRUE(Buffer().FullFIFO()->In(element));
    }
    EXPECT_TRUE(Step());
    EXPECT_EQ(m_pConverter->m_stopCount, 1);
}

TEST_F(ConverterState, TheHeightIsReadAgainWhenLinesAreCollected)
{
    Begin_HandedOut(5);
    Line_Finish();
    Line_Finish();
    m_pJob->dst.m_height = 2;
    EXPECT_TRUE(Step());
    EXPECT_EQ(m_pConverter->m_stopCount, 1);
}

// The event says that there is an element, the FIFO has none.
TEST_F(ConverterState, AFreeElementThatCannotBeTakenEndsTheConverter)
{
    Begin_HandedOut(45);
    State() = 2;
    Buffer().EmptyFIFO()->HasDataEvent().Set();
    const CLogCapture log;
    EXPECT_FALSE(Step());
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @Unit2Board:114 AddSourceLine", "2 m_processState = 2 @Unit2Board:75 OneLoop"));
    EXPECT_EQ(m_pConverter->m_stopCount, 1);
    EXPECT_EQ(AddedCount(), 20);
}

TEST_F(ConverterState, ALineThatCannotBeQueuedEndsTheConverterAndLeaksNoElement)
{
    Begin(45);
    ASSERT_TRUE(Step());
    Fill(*Buffer().InFIFO());
    const CLogCapture log;
    EXPECT_FALSE(Step());
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @KelThreadPtrFIFO_T:144 In", "2 failure @KelThreadPtrFIFO_T:144 In",
                            "2 failure @Unit2Board:118 AddSourceLine", "2 m_processState = 2 @Unit2Board:75 OneLoop"));
    EXPECT_EQ(m_pConverter->m_stopCount, 1);
    EXPECT_EQ(AddedCount(), 0);
}

TEST_F(ConverterState, AFinishedLineThatCannotBeTakenEndsTheConverter)
{
    Begin_HandedOut(45);
    Buffer().FullFIFO()->HasDataEvent().Set();
    const CLogCapture log;
    EXPECT_FALSE(Step());
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @Unit2Board:131 Process", "2 m_processState = 3 @Unit2Board:75 OneLoop"));
    EXPECT_EQ(m_pConverter->m_stopCount, 1);
}

TEST_F(ConverterState, AnElementThatCannotBeRecycledEndsTheConverterAndLeaksNoElement)
{
    Begin_HandedOut(45);
    Line_Finish();
    Fill(*Buffer().EmptyFIFO());
    const CLogCapture log;
    EXPECT_FALSE(Step());
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @KelThreadPtrFIFO_T:144 In", "2 failure @KelThreadPtrFIFO_T:144 In",
                            "2 failure @Unit2Board:135 Process", "2 m_processState = 3 @Unit2Board:75 OneLoop"));
    EXPECT_EQ(m_pConverter->m_stopCount, 1);
    EXPECT_EQ(FinishedCount(), 0);
}

TEST_F(ConverterState, AStateThatDoesNotExistEndsTheConverter)
{
    Begin(1);
    for (const int state : {0, 4, -1})
    {
        State() = state;
        const CLogCapture log;
        const int stopCount = m_pConverter->m_stopCount;
        EXPECT_FALSE(Step());
        EXPECT_THAT(Records_Text(log),
                    ElementsAre("2 m_processState = " + std::to_string(state) + " @Unit2Board:75 OneLoop"));
        EXPECT_EQ(m_pConverter->m_stopCount, stopCount + 1);
    }
}

// Who waits for the converter sees its thread end, and destroys it.
TEST_F(ConverterState, ASinkThatThrowsLeavesNoGeneratorRunning)
{
    Begin(1);
    State() = 4;
    const int sink = LogListener_Add([](const SLogEntry&) { throw std::runtime_error("a sink of the host's own"); });
    EXPECT_THROW(Step(), std::runtime_error);
    LogListener_Remove(sink);
    EXPECT_EQ(m_pConverter->m_stopCount, 1);
}

TEST_F(ConverterState, ReleasingTheGeneratorsLeavesNoneToStop)
{
    Begin(1);
    ASSERT_NE(SAccess::Generators(*m_pConverter), nullptr);
    SAccess::GeneratorCount(*m_pConverter) = 0;
    EXPECT_TRUE(SAccess::Release_LineGenerator(*m_pConverter));
    EXPECT_EQ(SAccess::Generators(*m_pConverter), nullptr);
    EXPECT_EQ(SAccess::GeneratorCount(*m_pConverter), 0);

    SAccess::GeneratorCount(*m_pConverter) = 5; // without an array the count says nothing
    EXPECT_TRUE(SAccess::Release_LineGenerator(*m_pConverter));
    EXPECT_EQ(SAccess::GeneratorCount(*m_pConverter), 5);
    EXPECT_TRUE(SAccess::Stop_LineGenerator(*m_pConverter));
    m_pConverter->Stop();
}

namespace
{

void Members_ExpectShared(CUnit2Board& copy, CUnit2Board& original)
{
    EXPECT_EQ(SAccess::State(copy), SAccess::State(original));
    EXPECT_EQ(SAccess::Generators(copy), SAccess::Generators(original));
    EXPECT_EQ(SAccess::GeneratorCount(copy), SAccess::GeneratorCount(original));
    EXPECT_EQ(SAccess::AddedCount(copy), SAccess::AddedCount(original));
    EXPECT_EQ(SAccess::FinishedCount(copy), SAccess::FinishedCount(original));
    EXPECT_EQ(SAccess::DataMap(copy), SAccess::DataMap(original));
    EXPECT_EQ(SAccess::SrcBands(copy), SAccess::SrcBands(original));
    EXPECT_EQ(SAccess::SrcBandCount(copy), SAccess::SrcBandCount(original));
    EXPECT_EQ(SAccess::DstBand(copy), SAccess::DstBand(original));
    EXPECT_EQ(SAccess::LineBuffer(copy), SAccess::LineBuffer(original));
}

// Takes from a copy what only one of the two may free.
void Owned_Forget(CUnit2Board& copy)
{
    SAccess::Generators(copy) = nullptr;
    SAccess::SrcBands(copy) = nullptr;
    SAccess::LineBuffer(copy) = nullptr;
}

} // namespace

TEST_F(ConverterState, ACopySharesEverythingWithItsOriginal)
{
    SBandJob job(2, 4);
    CUnit2Board original;
    ASSERT_TRUE(job.Create(original, 2));
    ASSERT_TRUE(original.WaitExit(testPatienceMs));
    ASSERT_EQ(SAccess::FinishedCount(original), 4);

    CUnit2Board constructed(original);
    CUnit2Board assigned;
    assigned = original;
    for (CUnit2Board* copy : {&constructed, &assigned})
    {
        Members_ExpectShared(*copy, original);
        Owned_Forget(*copy);
    }
}
