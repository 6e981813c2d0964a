// The pointer FIFO's operations, one by one, on one thread.
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "KelCommon/SBufferData.h"
#include "Platform/BandData/BandData.h"
#include "Tests/KelCommon/CountedElement.h"
#include "Tests/Platform/TestSignal.h"
#include "Tests/Support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{

using CIntFIFO = CKelThreadPtrFIFO_T<int>;
using CCountedFIFO = CKelThreadPtrFIFO_T<SCountedElement>;

template<class T>
bool HasData(CKelThreadPtrFIFO_T<T>& fifo)
{
    return fifo.HasDataEvent().Wait(0, 0);
}

template<class T>
bool HasSpace(CKelThreadPtrFIFO_T<T>& fifo)
{
    return fifo.HasSpaceEvent().Wait(0, 0);
}

constexpr auto fullRecord = "2 failure @KelThreadPtrFIFO_T:144";

} // namespace

static_assert(std::has_virtual_destructor_v<CIntFIFO>);

TEST(KelThreadPtrFIFO_T, IsEmptyWithRoomAfterConstruction)
{
    const CLogCapture capture;
    CIntFIFO fifo(3);
    EXPECT_FALSE(HasData(fifo));
    EXPECT_TRUE(HasSpace(fifo));
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST(KelThreadPtrFIFO_T, ACapacityOfZeroOrLessIsARecordAndThrowsTheInt0)
{
    for (const int capacity : {0, -1, std::numeric_limits<int>::min()})
    {
        const CLogCapture capture;
        try
        {
            CIntFIFO fifo(capacity);
            FAIL() << "constructed with " << capacity;
        }
        catch (int thrown)
        {
            EXPECT_EQ(thrown, 0);
        }
        const auto text = "2 Argument is invalid. bufferLen = " + std::to_string(capacity);
        EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(text + " @KelThreadPtrFIFO_T:64"));
        EXPECT_THAT(capture.Records().at(0).function, HasSubstr("CKelThreadPtrFIFO_T(int)"));
    }
}

TEST(KelThreadPtrFIFO_T, ElementsComeOutInTheOrderInWhichTheyWentInAlsoWhenTheRingWraps)
{
    CIntFIFO fifo(3);
    int values[10] = {};
    int* element = nullptr;
    int next = 0;
    ASSERT_TRUE(fifo.In(&values[0]));
    for (int i = 1; i < 10; ++i)
    {
        ASSERT_TRUE(fifo.In(&values[i]));
        ASSERT_TRUE(fifo.Out(element));
        EXPECT_EQ(element, &values[next++]);
    }
    ASSERT_TRUE(fifo.Out(element));
    EXPECT_EQ(element, &values[9]);
}

TEST(KelThreadPtrFIFO_T, OutOfAnEmptyFIFOIsFalseWithoutARecordAndLeavesThePointer)
{
    const CLogCapture capture;
    CIntFIFO fifo(2);
    int value = 0;
    int* element = &value;
    EXPECT_FALSE(fifo.Out(element));
    EXPECT_EQ(element, &value);

    ASSERT_TRUE(fifo.In(&value));
    ASSERT_TRUE(fifo.Out(element));
    int other = 0;
    element = &other;
    EXPECT_FALSE(fifo.Out(element));
    EXPECT_EQ(element, &other);
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST(KelThreadPtrFIFO_T, InOnAFullFIFOIsOneRecordEachTimeAndChangesNothing)
{
    CIntFIFO fifo(2);
    int values[3] = {};
    ASSERT_TRUE(fifo.In(&values[0]));
    ASSERT_TRUE(fifo.In(&values[1]));

    const CLogCapture capture;
    EXPECT_FALSE(fifo.In(&values[2]));
    EXPECT_FALSE(fifo.In(&values[2]));
    EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(fullRecord, fullRecord));
    EXPECT_THAT(capture.Records().at(0).function, HasSubstr("::In(T"));
    EXPECT_FALSE(HasSpace(fifo));

    int* element = nullptr;
    ASSERT_TRUE(fifo.Out(element));
    EXPECT_EQ(element, &values[0]);
    ASSERT_TRUE(fifo.Out(element));
    EXPECT_EQ(element, &values[1]);
    EXPECT_FALSE(fifo.Out(element));
}

TEST(KelThreadPtrFIFO_T, WithCapacityOneTheEventsAlternate)
{
    const CLogCapture capture;
    CIntFIFO fifo(1);
    int value = 0;
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_TRUE(fifo.In(&value));
        EXPECT_TRUE(HasData(fifo));
        EXPECT_FALSE(HasSpace(fifo));
        EXPECT_FALSE(fifo.In(&value));
        int* element = nullptr;
        EXPECT_TRUE(fifo.Out(element));
        EXPECT_EQ(element, &value);
        EXPECT_FALSE(HasData(fifo));
        EXPECT_TRUE(HasSpace(fifo));
    }
    EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(fullRecord, fullRecord, fullRecord));
}

TEST(KelThreadPtrFIFO_T, TheEventsChangeExactlyWithTheFirstAndTheLastElement)
{
    constexpr int capacity = 4;
    CIntFIFO fifo(capacity);
    int value = 0;
    for (int count = 1; count <= capacity; ++count)
    {
        ASSERT_TRUE(fifo.In(&value));
        EXPECT_TRUE(HasData(fifo)) << count;
        EXPECT_EQ(HasSpace(fifo), count < capacity) << count;
    }
    int* element = nullptr;
    for (int count = capacity - 1; count >= 0; --count)
    {
        ASSERT_TRUE(fifo.Out(element));
        EXPECT_EQ(HasData(fifo), count > 0) << count;
        EXPECT_TRUE(HasSpace(fifo)) << count;
    }
}

TEST(KelThreadPtrFIFO_T, TheEventsAreLeftAloneBetweenTheTransitions)
{
    CIntFIFO fifo(4);
    int value = 0;
    int* element = nullptr;
    ASSERT_TRUE(fifo.In(&value));
    // Somebody else's state must survive an In and an Out that are no transition.
    fifo.HasDataEvent().Reset();
    fifo.HasSpaceEvent().Reset();
    ASSERT_TRUE(fifo.In(&value));
    EXPECT_FALSE(HasData(fifo));
    ASSERT_TRUE(fifo.Out(element));
    EXPECT_FALSE(HasSpace(fifo));
    EXPECT_FALSE(HasData(fifo));
    ASSERT_TRUE(fifo.Out(element));
}

TEST(KelThreadPtrFIFO_T, ANullElementIsQueuedLikeAnyOther)
{
    CIntFIFO fifo(1);
    EXPECT_TRUE(fifo.In(nullptr));
    EXPECT_TRUE(HasData(fifo));
    int value = 0;
    int* element = &value;
    EXPECT_TRUE(fifo.Out(element));
    EXPECT_EQ(element, nullptr);
}

TEST(KelThreadPtrFIFO_T, ReleaseAllContentDeletesWhatIsQueuedAndStartsAfresh)
{
    const CLogCapture capture;
    CCountedFIFO fifo(4);
    const int before = SCountedElement::LiveCount();
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_TRUE(fifo.In(i == 2 ? nullptr : new SCountedElement(i)));
    }
    SCountedElement* element = nullptr;
    ASSERT_TRUE(fifo.Out(element)); // the indices stand in the middle of the ring
    delete element;
    EXPECT_EQ(SCountedElement::LiveCount(), before + 2);

    EXPECT_TRUE(fifo.ReleaseAllContent());

    EXPECT_EQ(SCountedElement::LiveCount(), before);
    EXPECT_FALSE(HasData(fifo));
    EXPECT_TRUE(HasSpace(fifo));
    EXPECT_FALSE(fifo.Out(element));
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_TRUE(fifo.In(new SCountedElement(i)));
    }
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_TRUE(fifo.Out(element));
        EXPECT_EQ(element->m_value, i);
        delete element;
    }
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST(KelThreadPtrFIFO_T, ReleaseAllContentPutsTheEventsRightAlsoOfAnEmptyFIFO)
{
    CIntFIFO fifo(2);
    fifo.HasDataEvent().Set();
    fifo.HasSpaceEvent().Reset();
    EXPECT_TRUE(fifo.ReleaseAllContent());
    EXPECT_FALSE(HasData(fifo));
    EXPECT_TRUE(HasSpace(fifo));
}

TEST(KelThreadPtrFIFO_T, DestructionDeletesWhatIsQueuedOnceAndNothingThatWasTaken)
{
    const CLogCapture capture;
    const int before = SCountedElement::LiveCount();
    SCountedElement* taken = nullptr;
    {
        CCountedFIFO fifo(5);
        for (int i = 0; i < 5; ++i)
        {
            ASSERT_TRUE(fifo.In(new SCountedElement(i)));
        }
        ASSERT_TRUE(fifo.Out(taken));
        EXPECT_EQ(SCountedElement::LiveCount(), before + 5);
    }
    EXPECT_EQ(SCountedElement::LiveCount(), before + 1);
    delete taken;
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST(KelThreadPtrFIFO_T, DestructionReleasesAThreadThatWaitsForData)
{
    auto fifo = std::make_unique<CIntFIFO>(1);
    CTestSignal entered;
    bool bReleased = false;
    std::thread waiter(
        [&, &event = fifo->HasDataEvent()]
        {
            entered.Raise();
            bReleased = event.Wait(testPatienceMs, 0);
        });
    ASSERT_TRUE(entered.Wait());
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // until it does wait
    fifo.reset();
    waiter.join();
    EXPECT_TRUE(bReleased);
}

TEST(KelThreadPtrFIFO_T, CarriesBandSetsAsOneStepsInput)
{
    using SBandSet = SBufferData<CBandData*>;
    CKelThreadPtrFIFO_T<SBandSet> fifo(2);
    auto* set = new SBandSet;
    ASSERT_TRUE(set->AllocateBuffer(2, true));
    set->data[0] = new CBandData;
    set->data[1] = new CBandData;
    ASSERT_TRUE(fifo.In(set));
    ASSERT_TRUE(fifo.In(nullptr)); // the end of the input

    SBandSet* taken = nullptr;
    ASSERT_TRUE(fifo.HasDataEvent().Wait(100, 0));
    ASSERT_TRUE(fifo.Out(taken));
    ASSERT_EQ(taken, set);
    ASSERT_EQ(taken->count, 2);
    delete taken->data[0];
    delete taken->data[1];
    delete taken;
    ASSERT_TRUE(fifo.Out(taken));
    EXPECT_EQ(taken, nullptr);
    ASSERT_TRUE(fifo.In(new SBandSet)); // a set without bands: deleted by the FIFO
}

// Waiting for many.
