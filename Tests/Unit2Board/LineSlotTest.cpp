// The slots of the line generator, which the shared library keeps to itself.
#include "Tests/Support/ThreadSlots.h"
#include "Unit2Board/Unit2Board_Line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

TEST(LineSlots, TheLineGeneratorOverridesInPlace)
{
    auto worker = std::make_unique<CThreadSlots<CUnit2Board_Line>>();
    ThreadSlots_Call(*worker);
    EXPECT_THAT(worker->m_calls, testing::ElementsAreArray(threadSlotNames));
    bool bDestroyed = false;
    worker->m_pDestroyed = &bDestroyed;
    Slot_Delete(static_cast<TamBaseThread*>(worker.release()));
    EXPECT_TRUE(bDestroyed);
}

TEST(LineSlots, AGeneratorThatWasNeverStartedAnswersThroughItsOwnTable)
{
    CUnit2Board_Line generator;
    const void* const object = static_cast<TamBaseThread*>(&generator);
    EXPECT_TRUE(Slot_Call<bool>(object, 4, 0U)); // has ended
    EXPECT_FALSE(Slot_Call<bool>(object, 8));    // but not with success
    EXPECT_TRUE(Slot_Call<bool>(object, 10));    // prepared
}
