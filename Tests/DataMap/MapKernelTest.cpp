// Every kernel that runs here against the scalar one, function by function, over all lengths, offsets and alignments;
// and the list of kernels that users see.
#include "Tests/DataMap/KernelSupport.h"

#include <algorithm>
#include <iostream>
#include <thread>

namespace
{
const SMapKernel& Scalar()
{
    return mapKernelScalar;
}

std::string Names_Join(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
    {
        text += ' ' + name;
    }
    return text;
}

class CMapKernelTest : public testing::TestWithParam<std::string>
{
protected:
    void SetUp() override
    {
        if (!CDataMapKernel::IsAvailable(GetParam().c_str()))
        {
            GTEST_SKIP() << "this machine has no " << GetParam();
        }
        m_pKernel = Kernel_Named(GetParam());
        ASSERT_NE(m_pKernel, nullptr);
    }

    const SMapKernel* m_pKernel = nullptr;
    std::mt19937 m_random{7};
};

std::vector<std::string> KernelNames_All()
{
    std::vector<std::string> names;
    for (int i = 0; i < CDataMapKernel::Count_Get(); ++i)
    {
        names.emplace_back(CDataMapKernel::Name_Get(i));
    }
    return names;
}

std::string Case_Name(const testing::TestParamInfo<std::string>& info)
{
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

// Lines in blocks of their own, and pointers to them.
struct SLines
{
    SLines(std::mt19937& random, int count, std::size_t size)
    {
        for (int i = 0; i < count; ++i)
        {
            blocks.push_back(std::make_unique<CExactBytes>(Bytes_Random(random, size), random() % 16));
            pointers.push_back(blocks.back()->Get());
        }
    }
    std::vector<std::unique_ptr<CExactBytes>> blocks;
    std::vector<const unsigned char*> pointers;
};

Bytes Rows_Transposed(const SMapKernel& kernel, const SLines& rows, int offset, int byteCount, bool bSwapPairs)
{
    const CFencedBytes dst(Bytes(transposeRoom, 0xEE), 0);
    kernel.m_pRows_Transpose(rows.pointers.data(), offset, byteCount, bSwapPairs, dst.Get());
    EXPECT_TRUE(dst.FenceHolds());
    Bytes frames = dst.Content();
    frames.resize(static_cast<std::size_t>(8 * byteCount));
    return frames;
}

using ColumnsFunction = void (*)(const unsigned char* const*, int, int, unsigned char*);

Bytes Columns_Interleaved(ColumnsFunction function, const SLines& columns, int byteCount, const Bytes& before,
                          std::size_t misalignment)
{
    const CFencedBytes dst(before, misalignment);
    function(columns.pointers.data(), static_cast<int>(columns.pointers.size()), byteCount, dst.Get());
    EXPECT_TRUE(dst.FenceHolds());
    return dst.Content();
}
} // namespace

INSTANTIATE_TEST_SUITE_P(Every, CMapKernelTest, testing::ValuesIn(KernelNames_All()), Case_Name);

TEST_P(CMapKernelTest, TransposesRowsOfEveryLengthAndOffsetLikeTheDefinition)
{
    for (int byteCount = 1; byteCount <= transposeByteCountMax; ++byteCount)
    {
        for (const int offset : {0, 1, 7, 33})
        {
            SLines rows(m_random, 8, static_cast<std::size_t>(offset + byteCount));
            if (byteCount % 3 == 0)
            {
                rows.pointers[m_random() % 8] = nullptr;
            }
            for (const bool bSwapPairs : {false, true})
            {
                ASSERT_EQ(Rows_Transposed(*m_pKernel, rows, offset, byteCount, bSwapPairs),
                          Rows_Transposed(Scalar(), rows, offset, byteCount, bSwapPairs))
                    << byteCount << " bytes from " << offset << ", pairs swapped: " << bSwapPairs;
            }
        }
    }
}

TEST_P(CMapKernelTest, InterleavesEveryNumberOfColumnsOfEveryLengthLikeTheDefinition)
{
    for (const int columnCount : {1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 23, 24, 31, 32, 40})
    {
        for (int byteCount = 0; byteCount <= 150; byteCount += byteCount < 70 ? 1 : 13)
        {
            const SLines columns(m_random, columnCount, static_cast<std::size_t>(byteCount));
            const Bytes before = Bytes_Random(m_random, static_cast<std::size_t>(columnCount * byteCount));
            const std::size_t misalignment = m_random() % 64;
            ASSERT_EQ(Columns_Interleaved(m_pKernel->m_pColumns_Or, columns, byteCount, before, misalignment),
                      Columns_Interleaved(Scalar().m_pColumns_Or, columns, byteCount, before, misalignment))
                << columnCount << " columns of " << byteCount << " bytes, ORed";
            ASSERT_EQ(Columns_Interleaved(m_pKernel->m_pColumns_Store, columns, byteCount, before, misalignment),
                      Columns_Interleaved(Scalar().m_pColumns_Store, columns, byteCount, before, misalignment))
                << columnCount << " columns of " << byteCount << " bytes, stored";
        }
    }
}

TEST_P(CMapKernelTest, LeavesTheBytesOfAbsentColumnsAlone)
{
    for (const int columnCount : {1, 2, 4, 8, 9, 16, 20, 33})
    {
        for (const int byteCount : {1, 15, 16, 17, 40, 64, 100})
        {
            for (int absent = 0; absent < columnCount; ++absent)
            {
                SLines columns(m_random, columnCount, static_cast<std::size_t>(byteCount));
                columns.pointers[static_cast<std::size_t>(absent)] = nullptr;
                const Bytes before(static_cast<std::size_t>(columnCount * byteCount), 0x33);
                const Bytes after = Columns_Interleaved(m_pKernel->m_pColumns_Store, columns, byteCount, before, 1);
                ASSERT_EQ(after, Columns_Interleaved(Scalar().m_pColumns_Store, columns, byteCount, before, 1));
                for (int i = 0; i < byteCount; ++i)
                {
                    ASSERT_EQ(after[static_cast<std::size_t>(i * columnCount + absent)], 0x33);
                }
            }
        }
    }
}

TEST_P(CMapKernelTest, PartsPairsOfBitsOfEveryLengthLikeTheDefinition)
{
    const auto Parted = [](const SMapKernel& kernel, const CExactBytes& src, int byteCount)
    {
        const auto room = static_cast<std::size_t>((byteCount + 1) / 2 + splitRoom - 1) / splitRoom * splitRoom;
        const CFencedBytes high(Bytes(room), 0);
        const CFencedBytes low(Bytes(room), 0);
        kernel.m_pPlanes_Split(src.Get(), byteCount, high.Get(), low.Get());
        EXPECT_TRUE(high.FenceHolds() && low.FenceHolds());
        Bytes result = high.Content();
        result.resize(static_cast<std::size_t>((byteCount + 1) / 2));
        const Bytes lowBytes = low.Content();
        result.insert(result.end(), lowBytes.begin(), lowBytes.begin() + (byteCount + 1) / 2);
        return result;
    };
    for (int byteCount = 0; byteCount <= 300; ++byteCount)
    {
        const CExactBytes src(Bytes_Random(m_random, static_cast<std::size_t>(byteCount)), m_random() % 16);
        ASSERT_EQ(Parted(*m_pKernel, src, byteCount), Parted(Scalar(), src, byteCount)) << byteCount;
    }
}

TEST_P(CMapKernelTest, PartsGroupsOfFourBitsOfEveryLengthLikeTheDefinition)
{
    const auto Parted = [](const SMapKernel& kernel, const CExactBytes& src, int byteCount)
    {
        const auto used = static_cast<std::ptrdiff_t>((byteCount + 3) / 4);
        const CFencedBytes even(Bytes(2 * quadRoom), 0);
        const CFencedBytes odd(Bytes(2 * quadRoom), 0);
        kernel.m_pQuads_Split(src.Get(), byteCount, even.Get(), odd.Get());
        EXPECT_TRUE(even.FenceHolds() && odd.FenceHolds());
        Bytes result;
        for (const CFencedBytes* part : {&even, &odd})
        {
            const Bytes bytes = part->Content();
            result.insert(result.end(), bytes.begin(), bytes.begin() + used);
            result.insert(result.end(), bytes.begin() + quadRoom, bytes.begin() + quadRoom + used);
        }
        return result;
    };
    for (int byteCount = 0; byteCount <= quadSrcByteCountMax; ++byteCount)
    {
        const CExactBytes src(Bytes_Random(m_random, static_cast<std::size_t>(byteCount)), m_random() % 16);
        ASSERT_EQ(Parted(*m_pKernel, src, byteCount), Parted(Scalar(), src, byteCount)) << byteCount;
    }
}

TEST_P(CMapKernelTest, ExpandsNibblesOfEveryLengthLikeTheDefinition)
{
    const auto Expanded = [](const SMapKernel& kernel, const Bytes& table, const CExactBytes& src, int byteCount)
    {
        const auto room = static_cast<std::size_t>(2 * byteCount + splitRoom - 1) / splitRoom * splitRoom;
        const CFencedBytes dst(Bytes(room), 0);
        kernel.m_pNibbles_Expand(table.data(), src.Get(), byteCount, dst.Get());
        EXPECT_TRUE(dst.FenceHolds());
        Bytes result = dst.Content();
        result.resize(static_cast<std::size_t>(2 * byteCount));
        return result;
    };
    for (int byteCount = 0; byteCount <= 200; ++byteCount)
    {
        const Bytes table = Bytes_Random(m_random, 16);
        const CExactBytes src(Bytes_Random(m_random, static_cast<std::size_t>(byteCount)), m_random() % 16);
        ASSERT_EQ(Expanded(*m_pKernel, table, src, byteCount), Expanded(Scalar(), table, src, byteCount)) << byteCount;
    }
}

namespace
{
// A kind of field, the patterns that it has, and the bytes of a frame in front of which it may stand.
struct SFieldCase
{
    EFieldKind kind;
    const SFieldPattern* const* patterns;
    unsigned fieldBitCount;
    int columnCount;
    int framesPerByte;
};
const SFieldCase fieldCases[] = {{Field_OneBit, fieldPatterns.m_oneBit, 1, 1, 8},
                                 {Field_OneBit, fieldPatterns.m_swapped, 1, 1, 8},
                                 {Field_Double, fieldPatterns.m_oneBit, 2, 1, 8},
                                 {Field_TwoBit, fieldPatterns.m_twoBit, 2, 1, 4},
                                 {Field_Block, fieldPatterns.m_block, 1, 4, 2}};

Bytes Field_Ored(const SMapKernel& kernel, const SFieldCase& field, const SFieldPattern& pattern, unsigned place,
                 const CExactBytes& src, int srcByteCount, const Bytes& before, std::size_t misalignment)
{
    const CFencedBytes dst(before, misalignment);
    kernel.m_pField_Or[field.kind][pattern.m_groupSizeIndex](pattern, place, src.Get(), srcByteCount, dst.Get(),
                                                             static_cast<int>(before.size()));
    EXPECT_TRUE(dst.FenceHolds());
    return dst.Content();
}
} // namespace

TEST_P(CMapKernelTest, SpreadsFieldsOfEveryKindPlaceAndLengthLikeTheDefinition)
{
    for (const SFieldCase& field : fieldCases)
    {
        for (int frameByteCount = 2; frameByteCount <= SFieldPatterns::frameByteCountMax; frameByteCount *= 2)
        {
            const SFieldPattern* pattern = field.patterns[frameByteCount];
            for (int count = 0; pattern != nullptr && count <= 200 * frameByteCount; count += 1 + count / 16)
            {
                const int entrySize = field.framesPerByte * frameByteCount;
                const int srcByteCount = (count + entrySize - 1) / entrySize + (field.columnCount - 1) * 4;
                const auto placeCount = static_cast<unsigned>(frameByteCount / field.columnCount);
                const auto byteOffset =
                    static_cast<unsigned>(m_random() % placeCount) * static_cast<unsigned>(field.columnCount);
                const unsigned fieldIndex = static_cast<unsigned>(m_random() % (8 / field.fieldBitCount));
                const unsigned place = 8 * byteOffset + field.fieldBitCount * fieldIndex;
                const CExactBytes src(Bytes_Random(m_random, static_cast<std::size_t>(srcByteCount)), m_random() % 16);
                const Bytes before = Bytes_Random(m_random, static_cast<std::size_t>(count));
                const std::size_t misalignment = m_random() % 64;
                ASSERT_EQ(Field_Ored(*m_pKernel, field, *pattern, place, src, srcByteCount, before, misalignment),
                          Field_Ored(Scalar(), field, *pattern, place, src, srcByteCount, before, misalignment))
                    << "kind " << field.kind << ", " << frameByteCount << " bytes a frame, " << count << " bytes";
            }
        }
    }
}

TEST_P(CMapKernelTest, HasEveryFunction)
{
    EXPECT_NE(m_pKernel->m_pRows_Transpose, nullptr);
    EXPECT_NE(m_pKernel->m_pColumns_Or, nullptr);
    EXPECT_NE(m_pKernel->m_pColumns_Store, nullptr);
    EXPECT_NE(m_pKernel->m_pPlanes_Split, nullptr);
    EXPECT_NE(m_pKernel->m_pQuads_Split, nullptr);
    EXPECT_NE(m_pKernel->m_pBlocks_Cut, nullptr);
    EXPECT_NE(m_pKernel->m_pBlocks_Interleave, nullptr);
    EXPECT_NE(m_pKernel->m_pNibbles_Expand, nullptr);
    for (const auto& functions : m_pKernel->m_pField_Or)
    {
        for (const FieldFunction function : functions)
        {
            EXPECT_NE(function, nullptr);
        }
    }
}

TEST(ScalarKernel, SpreadsPixelsByHandWorkedBytes)
{
    const auto Spread = [](EFieldKind kind, const SFieldPattern& pattern, unsigned place, const Bytes& src, int count)
    {
        Bytes dst(static_cast<std::size_t>(count));
        mapKernelScalar.m_pField_Or[kind][pattern.m_groupSizeIndex](pattern, place, src.data(),
                                                                    static_cast<int>(src.size()), dst.data(), count);
        return dst;
    };
    // Pixels 0 and 3, in bit 5 of the second byte of frames 0 and 3; swapped, of frames 1 and 2.
    EXPECT_EQ(Spread(Field_OneBit, *fieldPatterns.m_oneBit[2], 8 + 5, {0x90}, 16),
              Bytes_With(16, {{1, 0x20}, {7, 0x20}}));
    EXPECT_EQ(Spread(Field_OneBit, *fieldPatterns.m_swapped[2], 8 + 5, {0x90}, 16),
              Bytes_With(16, {{3, 0x20}, {5, 0x20}}));
    EXPECT_EQ(Spread(Field_Double, *fieldPatterns.m_oneBit[2], 6, {0x01}, 16), Bytes_With(16, {{14, 0xC0}}));
    // Pixels 2, 1, 0 and 3, each in bits 2 and 3; the last frame is cut off.
    EXPECT_EQ(Spread(Field_TwoBit, *fieldPatterns.m_twoBit[4], 2, {0x93}, 12), Bytes_With(12, {{0, 0x08}, {4, 0x04}}));
    // Four blocks side by side: the first pixel of the third block, the ninth of the fourth.
    EXPECT_EQ(Spread(Field_Block, *fieldPatterns.m_block[8], 32 + 7, {0, 0, 0x80, 0, 0, 0, 0, 0x80}, 72),
              Bytes_With(72, {{6, 0x80}, {71, 0x80}}));
}

TEST(ScalarKernel, TransposesOnePixelToItsFrameAndRow)
{
    const Bytes row = {0x00, 0x20}; // pixel 10
    const unsigned char* rows[8] = {};
    rows[3] = row.data();
    Bytes frames(transposeRoom);
    mapKernelScalar.m_pRows_Transpose(rows, 0, 2, false, frames.data());
    EXPECT_EQ(frames, Bytes_With(transposeRoom, {{10, 0x10}}));
    frames.assign(transposeRoom, 0);
    mapKernelScalar.m_pRows_Transpose(rows, 1, 1, true, frames.data());
    EXPECT_EQ(frames, Bytes_With(transposeRoom, {{3, 0x10}}));
}

TEST(ScalarKernel, InterleavesOrPartsAndExpandsByHandWorkedBytes)
{
    const Bytes first = {0x01, 0x02};
    const Bytes second = {0x10, 0x20};
    const unsigned char* columns[3] = {first.data(), nullptr, second.data()};
    Bytes dst(6, 0x80);
    mapKernelScalar.m_pColumns_Store(columns, 3, 2, dst.data());
    EXPECT_EQ(dst, (Bytes{0x01, 0x80, 0x10, 0x02, 0x80, 0x20}));
    columns[1] = second.data();
    mapKernelScalar.m_pColumns_Or(columns, 2, 2, dst.data());
    EXPECT_EQ(dst, (Bytes{0x01, 0x90, 0x12, 0x22, 0x80, 0x20}));

    const Bytes pairs = {0b10'11'00'01, 0b01'00'10'10, 0b11'00'00'00};
    Bytes high(splitRoom);
    Bytes low(splitRoom);
    mapKernelScalar.m_pPlanes_Split(pairs.data(), 3, high.data(), low.data());
    EXPECT_EQ(high, Bytes_With(splitRoom, {{0, 0b1100'0011}, {1, 0b1000'0000}}));
    EXPECT_EQ(low, Bytes_With(splitRoom, {{0, 0b0101'1000}, {1, 0b1000'0000}}));

    Bytes even(2 * quadRoom);
    Bytes odd(2 * quadRoom);
    const Bytes groups = {0b1010'0001, 0b0100'1000};
    mapKernelScalar.m_pQuads_Split(groups.data(), 2, even.data(), odd.data());
    EXPECT_EQ(even, Bytes_With(2 * quadRoom, {{0, 0b1001'0000}, {quadRoom, 0b0010'0000}})); // bits 3, bits 2
    EXPECT_EQ(odd, Bytes_With(2 * quadRoom, {{0, 0b1000'0000}, {quadRoom, 0b0100'0000}}));  // bits 1, bits 0

    Bytes table(16);
    table[0xA] = 0x77;
    table[0x3] = 0x99;
    Bytes expanded(splitRoom);
    mapKernelScalar.m_pNibbles_Expand(table.data(), Bytes{0xA3}.data(), 1, expanded.data());
    EXPECT_EQ(expanded, Bytes_With(splitRoom, {{0, 0x77}, {1, 0x99}}));
}

// The line that says what this machine has tested.
TEST(DataMapKernel, TheKernelsThatRunHereAreNamed)
{
    const auto names = KernelNames_Available();
    std::cout << "kernels run:" << Names_Join(names) << '\n';
    RecordProperty("kernels_run", Names_Join(names));
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.front(), "scalar");
    for (const std::string& name : KernelNames_All())
    {
        if (!CDataMapKernel::IsAvailable(name.c_str()))
        {
            std::cout << "kernel not run, this machine lacks it: " << name << '\n';
        }
    }
}

TEST(DataMapKernel, WithoutAForcedOneTheMostDemandingThatRunsIsUsed)
{
    EXPECT_EQ(CDataMapKernel::Current_Get(), KernelNames_Available().back());
}

TEST(DataMapKernel, TheListGoesFromTheDefinitionUpAndEndsWithNull)
{
#if defined(DATAMAPPING_X86_KERNELS)
    EXPECT_EQ(KernelNames_All(), (std::vector<std::string>{"scalar", "ssse3", "avx2", "avx512", "avx512-gfni"}));
#elif defined(DATAMAPPING_ARM_KERNELS)
    EXPECT_EQ(KernelNames_All(), (std::vector<std::string>{"scalar", "neon"}));
#else
    EXPECT_EQ(KernelNames_All(), std::vector<std::string>{"scalar"});
#endif
    EXPECT_EQ(CDataMapKernel::Name_Get(-1), nullptr);
    EXPECT_EQ(CDataMapKernel::Name_Get(CDataMapKernel::Count_Get()), nullptr);
}

TEST(DataMapKernel, AForcedOneIsUsedUntilTheNext)
{
    const std::string chosen = CDataMapKernel::Current_Get();
    for (const std::string& name : KernelNames_Available())
    {
        const CKernelGuard guard(name);
        EXPECT_EQ(CDataMapKernel::Current_Get(), name);
    }
    EXPECT_EQ(CDataMapKernel::Current_Get(), chosen);
}

TEST(DataMapKernel, AnUnknownNameIsRefusedAndChangesNothing)
{
    const CKernelGuard guard("scalar");
    for (const char* name : {"", "Scalar", "scalar ", "neon9", "avx"})
    {
        EXPECT_FALSE(CDataMapKernel::Current_Set(name)) << name;
        EXPECT_FALSE(CDataMapKernel::IsAvailable(name)) << name;
    }
    EXPECT_FALSE(CDataMapKernel::Current_Set(nullptr));
    EXPECT_STREQ(CDataMapKernel::Current_Get(), "scalar");
}

TEST(DataMapKernel, OneThatTheMachineLacksIsRefusedAndChangesNothing)
{
    const CKernelGuard guard("scalar");
    int lacking = 0;
    for (const std::string& name : KernelNames_All())
    {
        if (!CDataMapKernel::IsAvailable(name.c_str()))
        {
            ++lacking;
            EXPECT_FALSE(CDataMapKernel::Current_Set(name.c_str()));
            EXPECT_STREQ(CDataMapKernel::Current_Get(), "scalar");
        }
    }
    if (lacking == 0)
    {
        GTEST_SKIP() << "this machine has them all";
    }
}

TEST(DataMapKernel, ChangesWhileOtherThreadsMapLeaveTheSameBytes)
{
    const auto map = Map_Make({ETwinStyle::Style_5, 1, 16, 1});
    std::mt19937 random(3);
    const Bytes src = Bytes_Random(random, 50);
    Bytes expected(800);
    {
        const CKernelGuard scalar("scalar");
        Line_Map(*map, Param_Make(5, 400), src, expected);
    }
    const CKernelGuard restore(CDataMapKernel::Current_Get());
    std::vector<int> wrong(2);
    std::vector<std::thread> threads;
    for (int& count : wrong)
    {
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < 300; ++i)
                {
                    Bytes dst(800);
                    Line_Map(*map, Param_Make(5, 400), src, dst);
                    count += dst != expected ? 1 : 0;
                }
            });
    }
    for (int i = 0; i < 300; ++i)
    {
        for (const std::string& name : KernelNames_Available())
        {
            CDataMapKernel::Current_Set(name.c_str());
        }
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(wrong, (std::vector<int>{0, 0}));
}
