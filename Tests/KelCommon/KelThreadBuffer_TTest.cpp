// The recycling buffer: who owns the elements, what each operation waits for, what it logs.
#include "KelCommon/KelThreadBuffer_T.h"
#include "Tests/KelCommon/CountedElement.h"
#include "Tests/Platform/ScriptedWorker.h"
#include "Tests/Support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace std::chrono_literals;

namespace
{

using CBuffer = CKelThreadBuffer_T<SCountedElement>;
using PutOperation = bool (CBuffer::*)(SCountedElement*, unsigned long);
using TakeOperation = bool (CBuffer::*)(SCountedElement*&, unsigned long);
using FIFOAccess = CKelThreadPtrFIFO_T<SCountedElement>* (CBuffer::*)();

struct SRoad
{
    const char* name;
    PutOperation put;
    TakeOperation take;
    FIFOAccess fifo;
};
constexpr SRoad roads[] = {
    {"empty", &CBuffer::Empty_In, &CBuffer::Empty_Out, &CBuffer::EmptyFIFO},
    {"full", &CBuffer::Full_In, &CBuffer::Full_Out, &CBuffer::FullFIFO},
    {"in", &CBuffer::Wait_In, &CBuffer::Wait_Out, &CBuffer::InFIFO},
};

constexpr auto fullRecord = "2 failure @KelThreadPtrFIFO_T:144";

std::vector<SCountedElement*> Elements(int count)
{
    std::vector<SCountedElement*> elements;
    for (int i = 0; i < count; ++i)
    {
        elements.push_back(new SCountedElement(i));
    }
    return elements;
}

// A buffer of two elements, both taken out.
class KelThreadBuffer_TRoads : public testing::TestWithParam<SRoad>
{
protected:
    void SetUp() override
    {
        auto elements = Elements(2);
        ASSERT_TRUE(m_buffer.Create(elements.data(), 2));
        ASSERT_TRUE(m_buffer.Empty_Out(m_first, 0));
        ASSERT_TRUE(m_buffer.Empty_Out(m_second, 0));
    }

    bool Put(SCountedElement* element, unsigned long timeoutMs)
    {
        return (m_buffer.*GetParam().put)(element, timeoutMs);
    }
    bool Take(SCountedElement*& element, unsigned long timeoutMs)
    {
        return (m_buffer.*GetParam().take)(element, timeoutMs);
    }
    CKelThreadPtrFIFO_T<SCountedElement>& FIFO() { return *(m_buffer.*GetParam().fifo)(); }

    CBuffer m_buffer{"Unit2Board_Buffer"};
    SCountedElement* m_first = nullptr;
    SCountedElement* m_second = nullptr;
};

INSTANTIATE_TEST_SUITE_P(AllFIFOs, KelThreadBuffer_TRoads, testing::ValuesIn(roads),
                         [](const auto& road) { return std::string(road.param.name); });

} // namespace

TEST(KelThreadBuffer_T, CreateLeavesAllTwentyElementsFreeInTheirOrder)
{
    const CLogCapture capture;
    constexpr int count = 20;
    auto elements = Elements(count);
    CBuffer buffer("Unit2Board_Buffer");
    EXPECT_EQ(buffer.EmptyFIFO(), nullptr);
    ASSERT_TRUE(buffer.Create(elements.data(), count));
    EXPECT_FALSE(buffer.FullFIFO()->HasDataEvent().Wait(0, 0));
    EXPECT_FALSE(buffer.InFIFO()->HasDataEvent().Wait(0, 0));
    EXPECT_FALSE(buffer.EmptyFIFO()->HasSpaceEvent().Wait(0, 0));
    EXPECT_TRUE(buffer.FullFIFO()->HasSpaceEvent().Wait(0, 0));
    EXPECT_TRUE(buffer.InFIFO()->HasSpaceEvent().Wait(0, 0));

    SCountedElement* element = nullptr;
    for (int i = 0; i < count; ++i)
    {
        ASSERT_TRUE(buffer.Empty_Out(element, 0));
        EXPECT_EQ(element->m_value, i);
        ASSERT_TRUE(buffer.Full_In(element, 0)); // each FIFO has room for all
    }
    EXPECT_FALSE(buffer.Empty_Out(element, 0));
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST(KelThreadBuffer_T, ACountOfZeroOrLessThrowsTheFIFOsInt0AndLeavesTheElementsToTheCaller)
{
    for (const int count : {0, -3})
    {
        const CLogCapture capture;
        auto elements = Elements(1);
        {
            CBuffer buffer("Buffer");
            EXPECT_THROW(buffer.Create(elements.data(), count), int);
        }
        const auto text = "2 Argument is invalid. bufferLen = " + std::to_string(count);
        EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(text + " @KelThreadPtrFIFO_T:64"));
        EXPECT_EQ(elements[0]->m_value, 0);
        delete elements[0];
    }
}

TEST(KelThreadBuffer_T, DestructionDeletesTheElementsInEveryFIFOOnceAndNoneThatIsHeld)
{
    const int before = SCountedElement::LiveCount();
    SCountedElement* held = nullptr;
    {
        auto elements = Elements(6);
        CBuffer buffer("Buffer");
        ASSERT_TRUE(buffer.Create(elements.data(), 6));
        SCountedElement* element = nullptr;
        ASSERT_TRUE(buffer.Empty_Out(held, 0));
        ASSERT_TRUE(buffer.Empty_Out(element, 0));
        ASSERT_TRUE(buffer.Wait_In(element, 0));
        ASSERT_TRUE(buffer.Empty_Out(element, 0));
        ASSERT_TRUE(buffer.Full_In(element, 0));
        EXPECT_EQ(SCountedElement::LiveCount(), before + 6);
    }
    EXPECT_EQ(SCountedElement::LiveCount(), before + 1);
    delete held;
}

TEST(KelThreadBuffer_T, DestructionOfABufferOfIntsFreesThemToo)
{
    int* elements[] = {new int(1), new int(2)};
    CKelThreadBuffer_T<int> buffer("Ints");
    ASSERT_TRUE(buffer.Create(elements, 2));
}

TEST(KelThreadBuffer_T, ABufferThatWasNeverCreatedCanBeDestroyed)
{
    const CLogCapture capture;
    {
        const CBuffer buffer("Buffer");
    }
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST(KelThreadBuffer_T, WaitInRefusesANullElementAtOnceAndNamesTheBuffer)
{
    auto elements = Elements(1);
    CBuffer buffer("Unit2Board_Buffer");
    ASSERT_TRUE(buffer.Create(elements.data(), 1));
    SCountedElement* element = nullptr;
    ASSERT_TRUE(buffer.Empty_Out(element, 0));
    ASSERT_TRUE(buffer.Wait_In(element, 0)); // now the in FIFO is full: a wait would be one

    const CLogCapture capture;
    const CStopWatch watch;
    EXPECT_FALSE(buffer.Wait_In(nullptr, testPatienceMs));
    EXPECT_LT(watch.Elapsed(), testPatience / 2);
    EXPECT_THAT(capture.SummaryWithLines(),
                ElementsAre("2 add nullptr to buffer! buffer name = Unit2Board_Buffer @KelThreadBuffer_T:187"));
    EXPECT_THAT(capture.Records().at(0).function, HasSubstr("::Wait_In(T"));
}

TEST(KelThreadBuffer_T, WaitInOfANullElementQueuesNothing)
{
    auto elements = Elements(1);
    CBuffer buffer("Buffer");
    ASSERT_TRUE(buffer.Create(elements.data(), 1));
    EXPECT_FALSE(buffer.Wait_In(nullptr, 0));
    EXPECT_FALSE(buffer.InFIFO()->HasDataEvent().Wait(0, 0));
}

TEST_P(KelThreadBuffer_TRoads, WhatIsPutInComesOutOfTheSameFIFO)
{
    const CLogCapture capture;
    ASSERT_TRUE(Put(m_first, 0));
    ASSERT_TRUE(Put(m_second, 0));
    EXPECT_TRUE(FIFO().HasDataEvent().Wait(0, 0));
    EXPECT_FALSE(FIFO().HasSpaceEvent().Wait(0, 0));
    SCountedElement* element = nullptr;
    ASSERT_TRUE(Take(element, 0));
    EXPECT_EQ(element, m_first);
    delete element;
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST_P(KelThreadBuffer_TRoads, TakingFromAnEmptyFIFOLastsItsTimeOutAndLeavesThePointer)
{
    const CLogCapture capture;
    SCountedElement* element = m_first;
    const CStopWatch watch;
    EXPECT_FALSE(Take(element, 30));
    EXPECT_GE(watch.Elapsed(), 30ms);
    EXPECT_EQ(element, m_first);
    EXPECT_THAT(capture.Summary(), IsEmpty());
    Put(m_first, 0);
    Put(m_second, 0);
}

TEST_P(KelThreadBuffer_TRoads, TakingWaitsForAnElementThatComesInTime)
{
    std::thread producer(
        [&]
        {
            std::this_thread::sleep_for(10ms);
            Put(m_first, 0);
        });
    SCountedElement* element = nullptr;
    const CStopWatch watch;
    EXPECT_TRUE(Take(element, testPatienceMs));
    EXPECT_LT(watch.Elapsed(), testPatience / 2);
    producer.join();
    EXPECT_EQ(element, m_first);
    delete m_first;
    delete m_second;
}

TEST_P(KelThreadBuffer_TRoads, PuttingIntoAFullFIFOLastsItsTimeOutAndIsARecordForEachOfTheTwoTries)
{
    ASSERT_TRUE(Put(m_first, 0));
    ASSERT_TRUE(Put(m_second, 0));
    SCountedElement extra;
    const CLogCapture capture;
    const CStopWatch watch;
    EXPECT_FALSE(Put(&extra, 30));
    EXPECT_GE(watch.Elapsed(), 30ms);
    EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(fullRecord, fullRecord));
}

TEST_P(KelThreadBuffer_TRoads, PuttingWaitsForRoomThatComesInTimeAndHasLoggedItsFirstTry)
{
    ASSERT_TRUE(Put(m_first, 0));
    ASSERT_TRUE(Put(m_second, 0));
    auto extra = std::make_unique<SCountedElement>();
    SCountedElement* taken = nullptr;
    std::thread consumer(
        [&]
        {
            std::this_thread::sleep_for(10ms);
            Take(taken, 0);
        });
    const CLogCapture capture;
    EXPECT_TRUE(Put(extra.get(), testPatienceMs));
    consumer.join();
    EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(fullRecord));
    EXPECT_EQ(taken, m_first);
    static_cast<void>(extra.release()); // the FIFO's
    delete taken;
}
