// The slots of the thread frame, the band converter and the pointer containers, as a program finds them that was built
// apart from the shared library.
#include "KelCommon/KelBaseThread.h"
#include "KelCommon/KelThreadBuffer_T.h"
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Tests/Support/ThreadSlots.h"
#include "Unit2Board/Unit2Board.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using testing::ElementsAreArray;

namespace
{

class COwnWorker : public CKelBaseThread<COwnWorker>
{
};

template<class TWorker>
void Slots_Expect()
{
    auto worker = std::make_unique<CThreadSlots<TWorker>>();
    ThreadSlots_Call(*worker);
    EXPECT_THAT(worker->m_calls, ElementsAreArray(threadSlotNames));
    bool bDestroyed = false;
    worker->m_pDestroyed = &bDestroyed;
    Slot_Delete(static_cast<TamBaseThread*>(worker.release()));
    EXPECT_TRUE(bDestroyed);
}

// Counts its destructions, which only a destructor of the right class calls.
struct SElement
{
    explicit SElement(int& destroyedCount) : m_pDestroyedCount(&destroyedCount) {}
    ~SElement() { ++*m_pDestroyedCount; }
    SElement(const SElement&) = delete;
    SElement& operator=(const SElement&) = delete;

    int* m_pDestroyedCount;
};

} // namespace

TEST(ThreadSlots, TheFrameHasItsTwelveOperationsBehindTheDestructor)
{
    Slots_Expect<COwnWorker>();
}

TEST(ThreadSlots, TheBandConverterOverridesInPlace)
{
    Slots_Expect<CUnit2Board>();
}

TEST(ThreadSlots, AConverterThatWasNeverStartedAnswersThroughItsOwnTable)
{
    auto converter = std::make_unique<CUnit2Board>();
    const void* const object = static_cast<TamBaseThread*>(converter.release());
    EXPECT_FALSE(Slot_Call<bool>(object, 2));    // not ready
    EXPECT_TRUE(Slot_Call<bool>(object, 4, 0U)); // has ended
    EXPECT_FALSE(Slot_Call<bool>(object, 8));    // but not with success
    EXPECT_TRUE(Slot_Call<bool>(object, 10));    // prepared
    Slot_Delete(object);
}

TEST(ContainerSlots, TheFIFOHasItsDestructor)
{
    int destroyedCount = 0;
    auto fifo = std::make_unique<CKelThreadPtrFIFO_T<SElement>>(3);
    fifo->In(new SElement(destroyedCount));
    fifo->In(new SElement(destroyedCount));
    Slot_Delete(fifo.release());
    EXPECT_EQ(destroyedCount, 2); // with what was queued
}

TEST(ContainerSlots, TheBufferHasCreateAndNoVirtualDestructor)
{
    static_assert(!std::has_virtual_destructor_v<CKelThreadBuffer_T<SElement>>);
    int destroyedCount = 0;
    {
        CKelThreadBuffer_T<SElement> buffer("buffer");
        SElement* elements[] = {new SElement(destroyedCount), new SElement(destroyedCount)};
        EXPECT_TRUE(TableEntry_Call<bool>(&buffer, 0, static_cast<SElement**>(elements), 2));
        SElement* element = nullptr;
        EXPECT_TRUE(buffer.Empty_Out(element, 0));
        EXPECT_EQ(element, elements[0]);
        EXPECT_TRUE(buffer.Empty_In(element, 0));
    }
    EXPECT_EQ(destroyedCount, 2);
}
