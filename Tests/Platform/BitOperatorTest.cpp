// The bit copy, against a model that moves one bit at a time.
#include "Platform/Helper/BitOperator.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace
{

using Bytes = std::vector<unsigned char>;

constexpr int largest = std::numeric_limits<int>::max();

bool Bit_Get(const Bytes& bytes, int position)
{
    return (bytes[static_cast<std::size_t>(position / 8)] >> (7 - position % 8) & 1) != 0;
}

void Bit_Set(Bytes& bytes, int position, bool bValue)
{
    auto& byte = bytes[static_cast<std::size_t>(position / 8)];
    const unsigned mask = 1U << (7 - position % 8);
    byte = static_cast<unsigned char>(bValue ? byte | mask : byte & ~mask);
}

Bytes BitCopy_Model(const Bytes& src, int srcBitPos, Bytes dst, int dstBitPos, int bitCount)
{
    for (int i = 0; i < bitCount; ++i)
    {
        Bit_Set(dst, dstBitPos + i, Bit_Get(src, srcBitPos + i));
    }
    return dst;
}

} // namespace

RC_GTEST_PROP(BitOperator, BitCopyMovesEveryBitAndNoOther, ())
{
    const int bitCount = *rc::gen::inRange(0, 200);
    const int srcBitPos = *rc::gen::inRange(0, 40);
    const int dstBitPos = *rc::gen::inRange(0, 40);
    // The source ends with its last bit's byte: a byte read beyond it is found by the address checker.
    const auto src = *rc::gen::container<Bytes>(static_cast<std::size_t>((srcBitPos + bitCount + 7) / 8),
                                                rc::gen::arbitrary<unsigned char>());
    const int dstBytes = (dstBitPos + bitCount + 7) / 8 + *rc::gen::inRange(0, 3);
    auto dst = *rc::gen::container<Bytes>(static_cast<std::size_t>(dstBytes), rc::gen::arbitrary<unsigned char>());
    const Bytes expected = BitCopy_Model(src, srcBitPos, dst, dstBitPos, bitCount);
    RC_ASSERT(CBitOperator::BitCopy(src.data(), srcBitPos, dst.data(), dstBitPos, bitCount, dstBytes));
    RC_ASSERT(dst == expected);
}

TEST(BitOperator, BitCopyIsExactForEveryPairOfPositionsInAByte)
{
    const Bytes src = {0b1010'0110, 0b0101'1100, 0b1111'0001, 0b0000'1110, 0b1001'1001};
    for (int srcBitPos = 0; srcBitPos < 8; ++srcBitPos)
    {
        for (int dstBitPos = 0; dstBitPos < 8; ++dstBitPos)
        {
            for (int bitCount = 0; bitCount <= 32; ++bitCount)
            {
                for (const bool bBefore : {false, true})
                {
                    Bytes dst(5, bBefore ? 0xFF : 0x00);
                    const Bytes expected = BitCopy_Model(src, srcBitPos, dst, dstBitPos, bitCount);
                    ASSERT_TRUE(CBitOperator::BitCopy(src.data(), srcBitPos, dst.data(), dstBitPos, bitCount, 5));
                    ASSERT_EQ(dst, expected) << srcBitPos << ' ' << dstBitPos << ' ' << bitCount;
                }
            }
        }
    }
}

TEST(BitOperator, BitsAreNumberedFromTheMostSignificant)
{
    const Bytes src = {0b1000'0001};
    Bytes dst = {0, 0};
    ASSERT_TRUE(CBitOperator::BitCopy(src.data(), 0, dst.data(), 3, 1, 2));
    EXPECT_EQ(dst, (Bytes{0b0001'0000, 0}));
    ASSERT_TRUE(CBitOperator::BitCopy(src.data(), 7, dst.data(), 15, 1, 2));
    EXPECT_EQ(dst, (Bytes{0b0001'0000, 0b0000'0001}));
}

TEST(BitOperator, ACopyThatWouldPassTheDestinationWritesNothing)
{
    const Bytes src(8, 0xFF);
    struct SCase
    {
        int srcBitPos, dstBitPos, bitCount, dstByteCount;
    };
    constexpr SCase refused[] = {
        {0, 0, 17, 2},      {0, 1, 16, 2}, {0, 16, 1, 2}, {0, 9, 8, 2},  {0, 0, 1, 0},       {-1, 0, 8, 2},
        {0, -1, 8, 2},      {0, 0, -1, 2}, {0, 0, 0, -1}, {0, 17, 0, 2}, {0, 8, largest, 2}, {0, largest, largest, 2},
        {0, largest, 1, 2},
    };
    for (const auto& [srcBitPos, dstBitPos, bitCount, dstByteCount] : refused)
    {
        Bytes dst(2, 0);
        EXPECT_FALSE(CBitOperator::BitCopy(src.data(), srcBitPos, dst.data(), dstBitPos, bitCount, dstByteCount))
            << srcBitPos << ' ' << dstBitPos << ' ' << bitCount << ' ' << dstByteCount;
        EXPECT_EQ(dst, Bytes(2, 0));
    }
}

TEST(BitOperator, ACopyThatEndsWithTheDestinationIsNotRefused)
{
    const Bytes src(8, 0xFF);
    Bytes dst(2, 0);
    EXPECT_TRUE(CBitOperator::BitCopy(src.data(), 3, dst.data(), 0, 16, 2));
    EXPECT_EQ(dst, Bytes(2, 0xFF));
    EXPECT_TRUE(CBitOperator::BitCopy(src.data(), 0, dst.data(), 16, 0, 2));
    EXPECT_TRUE(CBitOperator::BitCopy(nullptr, 0, nullptr, 0, 0, 0));
}

TEST(BitOperator, AByteCountWhoseBitsPass32BitsIsNoOverflow)
{
    const Bytes src = {0xFF};
    Bytes dst(2, 0);
    EXPECT_TRUE(CBitOperator::BitCopy(src.data(), 0, dst.data(), 4, 8, largest));
    EXPECT_EQ(dst, (Bytes{0x0F, 0xF0}));
}
