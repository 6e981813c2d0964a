// A client that knows the maps by what is published of them, and no more: its tables have nine slots and what a style
// adds. A program of its own, linked with the shared libraries.
#include "Tests/Package/PublishedMaps.h"

#include "Platform/BandData/BandData.h"
#include "Unit2Board/Unit2Board.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;

// The table decides what is called: nobody here knows that the object is of exactly this class.
template<class TMap>
TMap* Map_Make()
{
    static TMap* volatile map = nullptr;
    map = new TMap;
    return map;
}

Bytes Line_Map(const CPrintUnitDataMap_Base& map, int unitIndex, int lineBitCount, const Bytes& src, std::size_t count)
{
    Bytes dst(count);
    SSrcBandDataParam param = {unitIndex, 2, lineBitCount, map.CustomParam_Create()};
    EXPECT_TRUE(map.MapData_Line(param, src.data(), dst.data(), static_cast<int>(count)));
    map.CustomParam_Release(param.m_customParam);
    return dst;
}

// A map of the client's own, with nine slots. Adds the unit's index to the first byte of the line.
class CCountingMap : public CPrintUnitDataMap_Base
{
public:
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override
    {
        dst[0] = static_cast<unsigned char>(dst[0] + param.m_unitIndex);
        dst[dstByteCount - 1] = static_cast<unsigned char>(dst[dstByteCount - 1] | src[0]);
        return true;
    }
};

// One that keeps the generic line and has a look-up of its own: every source byte becomes two of 0x11.
class CLookUpMap : public CPrintUnitDataMap_5
{
public:
    const unsigned char* ByteMapData_Buffer(int /*unitIndex*/, int byteValue) const override
    {
        return byteValue != 0 ? m_entries.data() + 16 : m_entries.data();
    }

private:
    std::array<unsigned char, 32> m_entries = {0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
                                               0,    0,    0,    0,    0,    0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                               0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11};
};

struct SBands
{
    SBands(int bandCount, int height, int boardByteCount)
    {
        EXPECT_TRUE(dst.Create(8 * boardByteCount, height, 1, 1));
        for (int i = 0; i < bandCount; ++i)
        {
            sources.push_back(std::make_unique<CBandData>());
            EXPECT_TRUE(sources.back()->Create(8, height, 1, 1));
            sources.back()->m_unitIndex = i + 1;
            std::fill_n(sources.back()->m_pData, sources.back()->m_dataSize, static_cast<unsigned char>(1 << i));
            pointers.push_back(sources.back().get());
        }
    }

    void Convert(const CPrintUnitDataMap_Base& map)
    {
        CUnit2Board converter;
        ASSERT_TRUE(converter.Create(2, pointers.data(), static_cast<int>(pointers.size()), dst, map));
        ASSERT_TRUE(converter.WaitExit(60'000));
    }
    Bytes Line(int line) const
    {
        const unsigned char* begin = dst.m_pData + line * dst.m_bytesPerLine;
        return Bytes(begin, begin + dst.m_bytesPerLine);
    }

    CBandData dst;
    std::vector<std::unique_ptr<CBandData>> sources;
    std::vector<CBandData*> pointers;
};

constexpr int height = 50;
} // namespace

TEST(PublishedMaps, Style5IsInitialisedThroughItsTable)
{
    const std::unique_ptr<CPrintUnitDataMap_5> map(Map_Make<CPrintUnitDataMap_5>());
    ASSERT_TRUE(map->Init(1, 16));
    EXPECT_EQ(map->DataFrameWidth(), 16);
    EXPECT_EQ(Line_Map(*map, 1, 8, {0x80}, 16), (Bytes{0x40, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(PublishedMaps, Style03IsInitialisedThroughItsTable)
{
    const std::unique_ptr<CPrintUnitDataMap_5> map(Map_Make<CPrintUnitDataMap_03>());
    ASSERT_TRUE(map->Init(1, 32));
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(400), 3200);
    Bytes src(50);
    src[0] = 0x80;
    const Bytes dst = Line_Map(*map, 0, 400, src, 400);
    EXPECT_EQ(dst[0], 0x80);
}

TEST(PublishedMaps, Style03_01IsInitialisedThroughItsTable)
{
    const std::unique_ptr<CPrintUnitDataMap_5> map(Map_Make<CPrintUnitDataMap_03_01>());
    ASSERT_TRUE(map->Init(1, 8));
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(400), 832);
    Bytes src(50);
    src[0] = 0x5A;
    EXPECT_EQ(Line_Map(*map, 1, 400, src, 104)[4], 0x5A);
}

TEST(PublishedMaps, Style7IsInitialisedThroughItsTable)
{
    const std::unique_ptr<CPrintUnitDataMap_7> map(Map_Make<CPrintUnitDataMap_7>());
    ASSERT_TRUE(map->Init(static_cast<EDotSizeMode>(3), 4));
    EXPECT_EQ(Line_Map(*map, 1, 8, {0xA5}, 8), (Bytes{0, 0xCC, 0, 0, 0, 0x33, 0, 0}));
}

TEST(PublishedMaps, Style8IsInitialisedThroughItsTable)
{
    const std::unique_ptr<CPrintUnitDataMap_8> map(Map_Make<CPrintUnitDataMap_8>());
    ASSERT_TRUE(map->Init(8));
    EXPECT_EQ(Line_Map(*map, 3, 8, {0xC0}, 8), (Bytes{0x02, 0, 0, 0, 0x02, 0, 0, 0}));
}

TEST(PublishedMaps, TheBasesInitIsReachedFromAStyle)
{
    const std::unique_ptr<CPrintUnitDataMap_Base> map(Map_Make<CPrintUnitDataMap_8>());
    ASSERT_TRUE(map->Init(1, 2, 32));
    EXPECT_EQ(map->DstBitCount(), 2);
    EXPECT_EQ(map->AllMapData_Get(), nullptr);
}

TEST(PublishedMaps, TheConverterAsksAMapOfTheClientsForEveryBandOfEveryLine)
{
    for (const int bandCount : {1, 2, 3, 7})
    {
        SBands bands(bandCount, height, 4);
        const CCountingMap map;
        bands.Convert(map);
        for (int line = 0; line < height; ++line)
        {
            EXPECT_EQ(bands.Line(line)[0], bandCount * (bandCount + 1) / 2) << line;
            EXPECT_EQ(bands.Line(line)[3], (1 << bandCount) - 1) << line;
        }
    }
}

TEST(PublishedMaps, TheConverterAsksTheLookUpOfAClassDerivedFromAStyle)
{
    for (const int bandCount : {1, 6})
    {
        SBands bands(bandCount, height, 16);
        const std::unique_ptr<CLookUpMap> map(Map_Make<CLookUpMap>());
        ASSERT_TRUE(map->Init(1, 16));
        bands.Convert(*map);
        for (int line = 0; line < height; ++line)
        {
            EXPECT_EQ(bands.Line(line), Bytes(16, 0x11)) << line;
        }
    }
}

TEST(PublishedMaps, TheConverterMapsEveryBandOfAStyle)
{
    for (const int bandCount : {1, 6})
    {
        SBands bands(bandCount, height, 16);
        const std::unique_ptr<CPrintUnitDataMap_5> map(Map_Make<CPrintUnitDataMap_5>());
        ASSERT_TRUE(map->Init(1, 16));
        bands.Convert(*map);
        Bytes expected(16);
        for (int band = 0; band < bandCount; ++band) // band `band` has unit `band` + 1 and only pixel 7 - `band` set
        {
            expected[static_cast<std::size_t>(2 * (7 - band))] = static_cast<unsigned char>(0x40 >> band);
        }
        for (int line = 0; line < height; ++line)
        {
            EXPECT_EQ(bands.Line(line), expected) << line;
        }
    }
}
