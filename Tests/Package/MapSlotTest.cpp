// The slots of the data maps, as a program finds them that was built apart from the shared library.
#include "Tests/DataMap/MapTestAccess.h"
#include "Tests/Support/VirtualTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;

namespace
{

using Bytes = std::vector<unsigned char>;

// Overrides every operation of the map base in `TMap`; each writes its name down.
template<class TMap>
class CMapSlots : public TMap
{
public:
    ~CMapSlots() override
    {
        if (m_pDestroyed != nullptr)
        {
            *m_pDestroyed = true;
        }
    }
    using TMap::Init;
    bool Init(int srcBitCount, int dstBitCount, int dataFrameWidth) override
    {
        Note("Init " + std::to_string(srcBitCount) + ' ' + std::to_string(dstBitCount) + ' ' +
             std::to_string(dataFrameWidth));
        return true;
    }
    int MapDataSizeOfByte() const override
    {
        Note("MapDataSizeOfByte");
        return 42;
    }
    const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override
    {
        Note("ByteMapData_Buffer " + std::to_string(unitIndex) + ' ' + std::to_string(byteValue));
        return nullptr;
    }
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char*, unsigned char*,
                      int dstByteCount) const override
    {
        Note("MapData_Line " + std::to_string(param.m_unitIndex) + ' ' + std::to_string(dstByteCount));
        return true;
    }
    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override
    {
        Note("SrcPixelCount_2_BoardBitCount");
        return -srcPixelCount;
    }
    void* CustomParam_Create() const override
    {
        Note("CustomParam_Create");
        return &m_calls;
    }
    void CustomParam_Release(void* customParam) const override
    {
        Note(customParam == &m_calls ? "CustomParam_Release" : "CustomParam_Release of something else");
    }

    mutable std::vector<std::string> m_calls;
    bool* m_pDestroyed = nullptr;

protected:
    void Init_MapDataSizeOfByte() override { Note("Init_MapDataSizeOfByte"); }

private:
    void Note(const std::string& call) const { m_calls.push_back(call); }
};

template<class TMap>
class MapSlots : public testing::Test
{
};
using Maps = testing::Types<CPrintUnitDataMap_Base, CPrintUnitDataMap_1, CPrintUnitDataMap_2, CPrintUnitDataMap_03,
                            CPrintUnitDataMap_03_01, CPrintUnitDataMap_5, CPrintUnitDataMap_6, CPrintUnitDataMap_7,
                            CPrintUnitDataMap_8>;
TYPED_TEST_SUITE(MapSlots, Maps);

// A map of every style, made and initialised as its users do. Frames of 16 bits, or of 16 units.
using MapPtr = std::unique_ptr<CPrintUnitDataMap_Base, std::function<void(CPrintUnitDataMap_Base*)>>;

void Map_Delete(CPrintUnitDataMap_Base* map)
{
    delete map;
}

template<class TMap, class... Arguments>
MapPtr Map_Make(Arguments... arguments)
{
    auto map = std::make_unique<TMap>();
    EXPECT_TRUE(map->Init(arguments...));
    return MapPtr(map.release(), &Map_Delete);
}

std::vector<MapPtr> Maps_Make()
{
    std::vector<MapPtr> maps;
    maps.push_back(Map_Make<CPrintUnitDataMap_1>(16));
    maps.push_back(Map_Make<CPrintUnitDataMap_2>(EDotSizeMode::Small, 16));
    maps.push_back(Map_Make<CPrintUnitDataMap_03>(1, 32));
    maps.push_back(Map_Make<CPrintUnitDataMap_03_01>(1, 32));
    maps.push_back(Map_Make<CPrintUnitDataMap_5>(1, 16));
    maps.push_back(Map_Make<CPrintUnitDataMap_6>(1, 16));
    maps.push_back(Map_Make<CPrintUnitDataMap_7>(EDotSizeMode::Small, 16));
    maps.push_back(Map_Make<CPrintUnitDataMap_8>(16));
    return maps;
}

constexpr int pixelCount = 400;

Bytes Line_Map(const CPrintUnitDataMap_Base& map, bool bBySlot)
{
    const Bytes src(2 * pixelCount / 8, 0x5A);
    Bytes dst(static_cast<std::size_t>(map.SrcPixelCount_2_BoardBitCount(pixelCount)) / 8);
    const auto dstByteCount = static_cast<int>(dst.size());
    SSrcBandDataParam param;
    param.m_unitIndex = 1;
    param.m_lineBitCount = map.SrcBitCount() * pixelCount;
    param.m_customParam = map.CustomParam_Create();
    const bool bMapped = bBySlot ? Slot_Call<bool>(&map, 4, static_cast<const SSrcBandDataParam*>(&param), src.data(),
                                                   dst.data(), dstByteCount)
                                 : map.MapData_Line(param, src.data(), dst.data(), dstByteCount);
    EXPECT_TRUE(bMapped);
    map.CustomParam_Release(param.m_customParam);
    return dst;
}

} // namespace

TYPED_TEST(MapSlots, TheBasesOperationsStandInTheirOrderInEveryStyle)
{
    auto map = std::make_unique<CMapSlots<TypeParam>>();
    const void* const object = static_cast<CPrintUnitDataMap_Base*>(map.get());
    SSrcBandDataParam param;
    param.m_unitIndex = 3;
    EXPECT_TRUE((Slot_Call<bool>(object, 1, 1, 2, 16)));
    EXPECT_EQ(Slot_Call<int>(object, 2), 42);
    EXPECT_EQ(Slot_Call<const unsigned char*>(object, 3, 5, 6), nullptr);
    Slot_Call<bool>(object, 4, static_cast<const SSrcBandDataParam*>(&param),
                    static_cast<const unsigned char*>(nullptr), static_cast<unsigned char*>(nullptr), 9);
    EXPECT_EQ(Slot_Call<int>(object, 5, 7), -7);
    void* const customParam = Slot_Call<void*>(object, 6);
    Slot_Call<void>(object, 7, customParam);
    Slot_Call<void>(object, 8);
    EXPECT_THAT(map->m_calls, ElementsAre("Init 1 2 16", "MapDataSizeOfByte", "ByteMapData_Buffer 5 6",
                                          "MapData_Line 3 9", "SrcPixelCount_2_BoardBitCount", "CustomParam_Create",
                                          "CustomParam_Release", "Init_MapDataSizeOfByte"));
    bool bDestroyed = false;
    map->m_pDestroyed = &bDestroyed;
    static_cast<void>(map.release());
    Slot_Delete(object);
    EXPECT_TRUE(bDestroyed);
}

TEST(MapSlotValues, EveryStyleAnswersThroughItsTableAsByName)
{
    for (const MapPtr& map : Maps_Make())
    {
        const CPrintUnitDataMap_Base* const object = map.get();
        SCOPED_TRACE(typeid(*object).name());
        EXPECT_EQ(Slot_Call<int>(object, 2), map->MapDataSizeOfByte());
        EXPECT_EQ(Slot_Call<const unsigned char*>(object, 3, 1, 0x80), map->ByteMapData_Buffer(1, 0x80));
        EXPECT_EQ(Line_Map(*map, true), Line_Map(*map, false));
        EXPECT_EQ(Slot_Call<int>(object, 5, pixelCount), map->SrcPixelCount_2_BoardBitCount(pixelCount));
        void* const own = Slot_Call<void*>(object, 6);
        EXPECT_EQ(own != nullptr, dynamic_cast<CPrintUnitDataMap_03_01*>(map.get()) != nullptr);
        Slot_Call<void>(object, 7, own);
        const int size = map->MapDataSizeOfByte();
        SMapTestAccess::MapDataSizeOfByte_Set(*map, -1);
        Slot_Call<void>(object, 8);
        EXPECT_NE(map->MapDataSizeOfByte(), -1);
        SMapTestAccess::MapDataSizeOfByte_Set(*map, size);
        EXPECT_TRUE(Slot_Call<bool>(object, 1, 2, 4, 32));
        EXPECT_EQ(map->SrcBitCount(), 2);
        EXPECT_EQ(map->DstBitCount(), 4);
        EXPECT_EQ(map->DataFrameWidth(), 32);
    }
}

TEST(MapSlotValues, StyleFourHasTheBasesTable)
{
    CPrintUnitDataMap_4* const map = SMapTestAccess::Map_4_New();
    EXPECT_TRUE(Slot_Call<bool>(map, 1, 1, 2, 16));
    EXPECT_EQ(map->DstBitCount(), 2);
    EXPECT_EQ(Slot_Call<int>(map, 5, 10), 160);
    EXPECT_EQ(Slot_Call<void*>(map, 6), nullptr);
    Slot_Delete(map);
}

// The virtual Init that a style adds is its last operation, and the base has nine.
TEST(MapSlotValues, TheStylesOwnInitFollowsTheBaseClassesSlots)
{
    const auto Init_BySlot = [](CPrintUnitDataMap_Base* map, auto... arguments)
    {
        EXPECT_TRUE(Slot_Call<bool>(map, 9, arguments...));
        EXPECT_EQ(map->DataFrameWidth(), 16);
        EXPECT_GT(map->SrcBitCount(), 0);
        Slot_Delete(map);
    };
    Init_BySlot(new CPrintUnitDataMap_5, 1, 16);
    Init_BySlot(new CPrintUnitDataMap_03, 1, 16);
    Init_BySlot(new CPrintUnitDataMap_03_01, 1, 16);
    Init_BySlot(new CPrintUnitDataMap_7, EDotSizeMode::Small, 16);
    Init_BySlot(new CPrintUnitDataMap_8, 16);
}
