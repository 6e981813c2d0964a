// The small owning array.
#include "KelCommon/SBufferData.h"
#include "Tests/Support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{

// An element that no memory can be had for while the switch is on.
struct SScarceElement
{
    int m_value = 7;

    static inline bool g_bScarce = false;
    static void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept
    {
        return g_bScarce ? nullptr : ::operator new[](size, tag);
    }
    static void operator delete[](void* memory) { ::operator delete[](memory); }
};

} // namespace

TEST(SBufferData, StartsEmpty)
{
    const SBufferData<int*> buffer;
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.count, 0);
}

TEST(SBufferData, AnAllocatedBufferIsAllNullWhateverTheFlagSays)
{
    const CLogCapture capture;
    for (const bool bClear : {true, false})
    {
        SBufferData<int*> buffer;
        ASSERT_TRUE(buffer.AllocateBuffer(20, bClear));
        EXPECT_EQ(buffer.count, 20);
        EXPECT_EQ(std::count(buffer.data, buffer.data + 20, nullptr), 20);
    }
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST(SBufferData, AllocatingTheSameSizeKeepsTheBufferAndClearsIt)
{
    int value = 0;
    SBufferData<int*> buffer;
    ASSERT_TRUE(buffer.AllocateBuffer(3, true));
    int** const before = buffer.data;
    std::fill_n(buffer.data, 3, &value);
    ASSERT_TRUE(buffer.AllocateBuffer(3, true));
    EXPECT_EQ(buffer.data, before);
    EXPECT_EQ(std::count(buffer.data, buffer.data + 3, nullptr), 3);
}

TEST(SBufferData, AllocatingAnotherSizeMakesAnotherBuffer)
{
    int value = 0;
    SBufferData<int*> buffer;
    for (const int size : {3, 5, 2, 0, 4})
    {
        ASSERT_TRUE(buffer.AllocateBuffer(size, true));
        ASSERT_EQ(buffer.count, size);
        EXPECT_EQ(std::count(buffer.data, buffer.data + size, nullptr), size);
        std::fill_n(buffer.data, size, &value);
    }
}

TEST(SBufferData, ASizeOfZeroIsNoFailure)
{
    SBufferData<int*> buffer;
    EXPECT_TRUE(buffer.AllocateBuffer(0, true));
    EXPECT_EQ(buffer.count, 0);
}

TEST(SBufferData, NoMemoryIsTheAllocatorsRecordThenTheCallersAndLeavesTheBufferEmpty)
{
    SBufferData<SScarceElement> buffer;
    ASSERT_TRUE(buffer.AllocateBuffer(2, true));
    EXPECT_EQ(buffer.data[1].m_value, 7);
    SScarceElement::g_bScarce = true;
    const CLogCapture capture;
    EXPECT_FALSE(buffer.AllocateBuffer(20, true));
    SScarceElement::g_bScarce = false;
    EXPECT_THAT(capture.SummaryWithLines(),
                ElementsAre("2 Allocate memory failure. size = 20 @SBufferData:176", "2 failure @SBufferData:74"));
    EXPECT_THAT(capture.Records().at(0).function, HasSubstr("New_ElementBuffer(int)"));
    EXPECT_THAT(capture.Records().at(1).function, HasSubstr("AllocateBuffer(int, bool)"));
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.count, 0);
    EXPECT_TRUE(buffer.AllocateBuffer(20, true));
}

TEST(SBufferData, ANegativeSizeIsNoMemory)
{
    SBufferData<int*> buffer;
    const CLogCapture capture;
    EXPECT_FALSE(buffer.AllocateBuffer(-1, true));
    EXPECT_THAT(capture.SummaryWithLines(),
                ElementsAre("2 Allocate memory failure. size = -1 @SBufferData:176", "2 failure @SBufferData:74"));
}

TEST(SBufferData, DestructionFreesTheArrayAndNotWhatItPointsTo)
{
    int value = 5;
    {
        SBufferData<int*> buffer;
        ASSERT_TRUE(buffer.AllocateBuffer(1, true));
        buffer.data[0] = &value;
    }
    EXPECT_EQ(value, 5);
}

TEST(SBufferData, ReleaseBufferGivesTheArrayUp)
{
    SBufferData<int*> buffer;
    ASSERT_TRUE(buffer.AllocateBuffer(4, true));
    buffer.ReleaseBuffer();
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.count, 0);
}
