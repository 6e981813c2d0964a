// The layouts that cross the library's boundary: hosts that were built with another copy of these headers hand such
// objects in, or derive from them. Every published member stands where it was published, and nothing stands between.
#include "KelCommon/KelThreadBuffer_T.h"
#include "KelCommon/SBufferData.h"
#include "Platform/BandData/BandData.h"
#include "Tests/DataMap/MapTestAccess.h"
#include "Unit2Board/Unit2Board.h"
#include "UnitData2BoardData/InkStripeParam_Run.h"
#include "UnitData2BoardData/UnitData2BoardData_AllUnit_2.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace
{

struct SMember
{
    std::ptrdiff_t begin;
    std::size_t size;
    std::size_t alignment;
};

// The members of one object, in the order in which they were published.
class CLayout
{
public:
    template<class Object>
    explicit CLayout(const Object& object) : m_pObject(&object), m_size(sizeof(object)), m_alignment(alignof(Object))
    {
    }

    template<class Member>
    CLayout& Add(const Member& member)
    {
        const auto begin = reinterpret_cast<const char*>(&member) - static_cast<const char*>(m_pObject);
        m_members.push_back({begin, sizeof(Member), alignof(Member)});
        return *this;
    }

    // Each begins where the one before ends, but for its alignment, and the object ends with the last one.
    void Expect_Dense() const
    {
        for (std::size_t i = 1; i < m_members.size(); ++i)
        {
            EXPECT_EQ(m_members[i].begin, RoundUp(End(m_members[i - 1]), m_members[i].alignment)) << "member " << i;
        }
        EXPECT_EQ(static_cast<std::ptrdiff_t>(m_size), RoundUp(End(m_members.back()), m_alignment));
    }
    std::ptrdiff_t Begin() const { return m_members.front().begin; }
    std::vector<std::ptrdiff_t> Begins() const
    {
        std::vector<std::ptrdiff_t> begins;
        for (const SMember& member : m_members)
        {
            begins.push_back(member.begin);
        }
        return begins;
    }

private:
    static std::ptrdiff_t End(const SMember& member) { return member.begin + static_cast<std::ptrdiff_t>(member.size); }
    static std::ptrdiff_t RoundUp(std::ptrdiff_t place, std::size_t alignment)
    {
        const auto unit = static_cast<std::ptrdiff_t>(alignment);
        return (place + unit - 1) / unit * unit;
    }

    const void* m_pObject;
    std::size_t m_size;
    std::size_t m_alignment;
    std::vector<SMember> m_members;
};

constexpr auto behindTheTable = static_cast<std::ptrdiff_t>(sizeof(void*));

// The stages' own members, which hosts' variants can reach.
class CStageLayout : public CUnitData2BoardData_AllUnit_2
{
public:
    void Expect() const
    {
        CLayout layout(*static_cast<const CUnitData2BoardData_AllUnit_2*>(this));
        layout.Add(m_processState).Add(m_pDataMap).Add(m_pOutputFIFO).Add(m_pInputElements).Add(m_pOutputBand);
        layout.Add(m_outputBandNo).Add(m_bCheckInput).Add(m_pInputFIFOs).Add(m_pInkStripeParam).Add(m_pColorGroupInfo);
        layout.Add(m_pInputBufferFIFO);
        layout.Expect_Dense();
        EXPECT_EQ(static_cast<std::size_t>(layout.Begin()), sizeof(CKelBaseThread<CUnitData2BoardData_Base>) & ~7U);
    }
};

} // namespace

struct SKelTestAccess
{
    static CLayout Layout(const CKelThreadPtrFIFO_T<int>& fifo)
    {
        static_assert(sizeof(*fifo.m_pCount) == sizeof(std::int32_t) && sizeof(fifo.m_inIndex) == sizeof(std::int32_t));
        return CLayout(fifo)
            .Add(fifo.m_pCompleted)
            .Add(fifo.m_pCount)
            .Add(fifo.m_inIndex)
            .Add(fifo.m_outIndex)
            .Add(fifo.m_ppItems)
            .Add(fifo.m_bufferLen)
            .Add(fifo.m_lock)
            .Add(fifo.m_hasData)
            .Add(fifo.m_hasSpace);
    }
    static CLayout Layout(const CKelThreadBuffer_T<int>& buffer)
    {
        return CLayout(buffer)
            .Add(buffer.m_pName)
            .Add(buffer.m_ppElements)
            .Add(buffer.m_elementCount)
            .Add(buffer.m_lock)
            .Add(buffer.m_pEmptyFIFO)
            .Add(buffer.m_pFullFIFO)
            .Add(buffer.m_pInFIFO);
    }
};

struct SConverterTestAccess
{
    static CLayout Layout(const CUnit2Board& c)
    {
        return CLayout(c)
            .Add(c.m_processState)
            .Add(c.m_pLineGenerators)
            .Add(c.m_lineGeneratorCount)
            .Add(c.m_addedLineCount)
            .Add(c.m_finishedLineCount)
            .Add(c.m_pDataMap)
            .Add(c.m_pSrcBands)
            .Add(c.m_srcBandCount)
            .Add(c.m_pDstBand)
            .Add(c.m_pLineBuffer);
    }
};

TEST(Layout, ThePointerFIFOHasItsPublishedMembersBehindItsTableAndNoOthers)
{
    const CKelThreadPtrFIFO_T<int> fifo(1);
    const CLayout layout = SKelTestAccess::Layout(fifo);
    layout.Expect_Dense();
    EXPECT_EQ(layout.Begin(), behindTheTable);
}

TEST(Layout, TheRecyclingBufferHasItsPublishedMembersBehindItsTableAndNoOthers)
{
    const CKelThreadBuffer_T<int> buffer("layout");
    const CLayout layout = SKelTestAccess::Layout(buffer);
    layout.Expect_Dense();
    EXPECT_EQ(layout.Begin(), behindTheTable);
}

TEST(Layout, TheBufferRecordIsItsArrayAndItsCount)
{
    const SBufferData<CBandData*> record;
    CLayout layout(record);
    layout.Add(record.data).Add(record.count).Expect_Dense();
    EXPECT_EQ(layout.Begin(), 0);
    static_assert(sizeof(record.count) == sizeof(std::int32_t));
}

// One by one: a class that derives from a map reaches them at these places.
TEST(Layout, TheMapBaseHasItsPublishedMembersAtTheirPlacesAndNoOthers)
{
    const CPrintUnitDataMap_Base map;
    const CLayout layout = SMapTestAccess::Layout<CLayout>(map);
    layout.Expect_Dense();
    static_assert(sizeof(void*) == 8);
    EXPECT_THAT(layout.Begins(), testing::ElementsAre(8, 12, 16, 24, 28, 32, 36, 40, 44));
    EXPECT_EQ(sizeof(map), 48U);
}

namespace
{
template<class TMap>
std::ptrdiff_t OwnMember_Begin()
{
    const TMap map;
    return reinterpret_cast<const char*>(&SMapTestAccess::OwnMember(map)) - reinterpret_cast<const char*>(&map);
}
} // namespace

TEST(Layout, TheStylesHaveTheBasesMembersAndThreeOfThemOneMore)
{
    constexpr std::size_t base = 48;
    EXPECT_EQ(sizeof(CPrintUnitDataMap_1), base);
    EXPECT_EQ(sizeof(CPrintUnitDataMap_4), base);
    EXPECT_EQ(sizeof(CPrintUnitDataMap_5), base);
    EXPECT_EQ(sizeof(CPrintUnitDataMap_03), base);
    EXPECT_EQ(sizeof(CPrintUnitDataMap_6), base);
    EXPECT_EQ(sizeof(CPrintUnitDataMap_8), base);
    constexpr std::size_t withOne = 56;
    EXPECT_EQ(sizeof(CPrintUnitDataMap_2), withOne);
    EXPECT_EQ(sizeof(CPrintUnitDataMap_7), withOne);
    EXPECT_EQ(sizeof(CPrintUnitDataMap_03_01), withOne);
    EXPECT_EQ(OwnMember_Begin<CPrintUnitDataMap_2>(), static_cast<std::ptrdiff_t>(base));
    EXPECT_EQ(OwnMember_Begin<CPrintUnitDataMap_7>(), static_cast<std::ptrdiff_t>(base));
    EXPECT_EQ(OwnMember_Begin<CPrintUnitDataMap_03_01>(), static_cast<std::ptrdiff_t>(base));
}

TEST(Layout, TheConverterHasItsPublishedMembersBehindTheThreadFrameAndNoOthers)
{
    const CUnit2Board converter;
    const CLayout layout = SConverterTestAccess::Layout(converter);
    layout.Expect_Dense();
    EXPECT_GE(layout.Begin(), behindTheTable);
}

TEST(Layout, TheStagesHaveTheirPublishedMembersOneClassBehindTheOther)
{
    const CStageLayout stage;
    stage.Expect();
    EXPECT_EQ(sizeof(CUnitData2BoardData_S_AllUnit), sizeof(CUnitData2BoardData_Base) + 2 * sizeof(void*));
    EXPECT_EQ(sizeof(CUnitData2BoardData_AllUnit_2), sizeof(CUnitData2BoardData_S_AllUnit) + sizeof(void*));
}

TEST(Layout, AnInputElementIsItsBandAndItsFIFO)
{
    static_assert(offsetof(SInputElement, band) == 0 && offsetof(SInputElement, fifo) == sizeof(void*));
    static_assert(sizeof(SInputElement) == 2 * sizeof(void*));
}
