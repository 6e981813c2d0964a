// The OR loops against their scalar definition, and the definition against plain words; the bit positions beside them.
#include "DataMap/OrKernel.h"
#include "DataMap/BitPosition.h"
#include "Tests/DataMap/MapTestSupport.h"

#include <rapidcheck/gtest.h>

namespace
{
using OrFunction = void (*)(unsigned char*, const unsigned char*, int);

// The memory after `function` ORed `count` bytes from one offset of it to another.
Bytes Memory_After(OrFunction function, Bytes memory, int dstOffset, int srcOffset, int count)
{
    function(memory.data() + dstOffset, memory.data() + srcOffset, count);
    return memory;
}
} // namespace

TEST(BitPosition, PositionZeroIsTheMostSignificantBitOfTheFirstByte)
{
    Bytes bytes(3);
    BitPosition_Set(bytes.data(), 0);
    BitPosition_Set(bytes.data(), 9);
    BitPosition_Set(bytes.data(), 23);
    EXPECT_EQ(bytes, (Bytes{0x80, 0x40, 0x01}));
    EXPECT_EQ(BitPosition_Mask(6), 0x02);
    EXPECT_EQ(BitPosition_Mask(14), 0x02);
}

TEST(BitPosition, SettingABitKeepsTheOthers)
{
    Bytes bytes = {0x81};
    BitPosition_Set(bytes.data(), 3);
    EXPECT_EQ(bytes, Bytes{0x91});
}

class COrKernelTest : public testing::TestWithParam<OrFunction>
{
};

INSTANTIATE_TEST_SUITE_P(BothLoops, COrKernelTest, testing::Values(&COrKernel::Or_Bytes, &COrKernel::Or_Bytes_Scalar));

TEST_P(COrKernelTest, OrsExactlyTheCountedBytes)
{
    Bytes dst = {0x01, 0x10, 0x80, 0x0F, 0xAA, 0x00, 0x00, 0x01, 0x01, 0x01, 0x33};
    const Bytes src = {0x02, 0x10, 0x01, 0xF0, 0x55, 0xFF, 0x00, 0x02, 0x04, 0x08, 0xCC};
    GetParam()(dst.data(), src.data(), 10);
    EXPECT_EQ(dst, (Bytes{0x03, 0x10, 0x81, 0xFF, 0xFF, 0xFF, 0x00, 0x03, 0x05, 0x09, 0x33}));
}

TEST_P(COrKernelTest, ACountOfZeroOrLessTouchesNothing)
{
    for (const int count : {0, -1, -8, -1000})
    {
        Bytes dst(32, 0x11);
        const Bytes src(32, 0xFF);
        GetParam()(dst.data() + 16, src.data() + 16, count);
        EXPECT_EQ(dst, Bytes(32, 0x11)) << count;
    }
}

TEST_P(COrKernelTest, ADestinationJustBehindTheSourceReadsWhatWasWritten)
{
    Bytes memory(20);
    memory[0] = 0x80;
    memory[5] = 0x01;
    GetParam()(memory.data() + 1, memory.data(), 16);
    Bytes expected(20, 0x81);
    std::fill_n(expected.begin(), 5, static_cast<unsigned char>(0x80));
    std::fill(expected.begin() + 17, expected.end(), static_cast<unsigned char>(0));
    EXPECT_EQ(memory, expected);
}

TEST(OrKernel, EveryLengthAndOffsetGivesTheBytesOfTheDefinition)
{
    std::mt19937 random(1);
    for (int count = 0; count <= 80; ++count)
    {
        for (int dstOffset = 0; dstOffset < 9; ++dstOffset)
        {
            for (int srcOffset = 100; srcOffset < 109; ++srcOffset)
            {
                const Bytes memory = Bytes_Random(random, 200);
                ASSERT_EQ(Memory_After(&COrKernel::Or_Bytes, memory, dstOffset, srcOffset, count),
                          Memory_After(&COrKernel::Or_Bytes_Scalar, memory, dstOffset, srcOffset, count));
            }
        }
    }
}

TEST(OrKernel, EveryOverlapGivesTheBytesOfTheDefinition)
{
    std::mt19937 random(2);
    std::uniform_int_distribution<int> bit(0, 7);
    for (int distance = -72; distance <= 72; ++distance)
    {
        for (int count = 0; count <= 150; ++count)
        {
            Bytes memory(400); // one bit per byte: full bytes would hide a wrong order soon
            for (auto& value : memory)
            {
                value = static_cast<unsigned char>(bit(random) == 0 ? 1 << bit(random) : 0);
            }
            ASSERT_EQ(Memory_After(&COrKernel::Or_Bytes, memory, 100 + distance, 100, count),
                      Memory_After(&COrKernel::Or_Bytes_Scalar, memory, 100 + distance, 100, count))
                << "distance " << distance << ", count " << count;
        }
    }
}

RC_GTEST_PROP(OrKernelProperty, AnyTwoRangesGiveTheBytesOfTheDefinition, (Bytes memory))
{
    memory.resize(memory.size() + 300);
    const int size = static_cast<int>(memory.size());
    const int count = *rc::gen::inRange(0, size + 1);
    const int dstOffset = *rc::gen::inRange(0, size - count + 1);
    const int srcOffset = *rc::gen::inRange(0, size - count + 1);
    RC_ASSERT(Memory_After(&COrKernel::Or_Bytes, memory, dstOffset, srcOffset, count) ==
              Memory_After(&COrKernel::Or_Bytes_Scalar, memory, dstOffset, srcOffset, count));
}
