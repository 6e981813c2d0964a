// The tests' way to what the maps and the factory keep private or protected. Nothing here has logic of its own.
#pragma once

#include "DataMap/PrintUnitDataMap_03.h"
#include "DataMap/PrintUnitDataMap_03_01.h"
#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"
#include "DataMap/PrintUnitDataMap_4.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "DataMap/PrintUnitDataMap_6.h"
#include "DataMap/PrintUnitDataMap_7.h"
#include "DataMap/PrintUnitDataMap_8.h"
#include "DataMap/PrintUnitMap_Factory.h"

struct SMapTestAccess
{
    using CBase = CPrintUnitDataMap_Base;
    using CFactory = CPrintUnitMap_Factory;

    static int UnitMapDataSize(const CBase& map) { return map.m_unitMapDataSize; }
    static int MapDataSize(const CBase& map) { return map.m_mapDataSize; }
    static int UnitCount(const CBase& map) { return map.UnitCount(); }
    static int SrcBitMask(const CBase& map) { return map.SrcBitMask_Get(); }
    static int DstBitMask(const CBase& map) { return map.DstBitMask_Get(); }
    static void SrcBitCount_Set(CBase& map, int count) { map.SrcBitCount_Set(count); }
    static bool Init_SrcBitMask(CBase& map) { return map.Init_SrcBitMask(); }
    static unsigned char* MapData(CBase& map) { return map.m_mapData; }
    static void MapData_Set(CBase& map, unsigned char* data) { map.m_mapData = data; }
    // The members, in the order in which they were published, added to a TLayout of the object.
    template<class TLayout>
    static TLayout Layout(const CBase& map)
    {
        return TLayout(map)
            .Add(map.m_mapDataSizeOfByte)
            .Add(map.m_unitMapDataSize)
            .Add(map.m_mapData)
            .Add(map.m_mapDataSize)
            .Add(map.m_srcBitCount)
            .Add(map.m_dstBitCount)
            .Add(map.m_srcBitMask)
            .Add(map.m_dataFrameWidth)
            .Add(map.m_unitCount);
    }
    // The one member that a style has of its own.
    static const std::int32_t& OwnMember(const CPrintUnitDataMap_2& map) { return map.m_dotSizeMode; }
    static const std::int32_t& OwnMember(const CPrintUnitDataMap_7& map) { return map.m_dotSizeMode; }
    static const std::int32_t& OwnMember(const CPrintUnitDataMap_03_01& map) { return map.m_bitMode; }

    static void MapDataSizeOfByte_Set(CBase& map, int size) { map.m_mapDataSizeOfByte = size; }

    template<class TMap>
    static EDotSizeMode DotSizeMode(const TMap& map)
    {
        return static_cast<EDotSizeMode>(OwnMember(map));
    }

    static CPrintUnitDataMap_4* Map_4_New() { return new CPrintUnitDataMap_4(); }
    static void Map_4_Delete(CPrintUnitDataMap_4* map) { delete map; }

    static bool Init_MapDataBuffer(CPrintUnitDataMap_6& map) { return map.Init_MapDataBuffer(); }

    static bool MapBandData_Buffer(const CPrintUnitDataMap_03& map, int row, const unsigned char* src, int startPixel,
                                   int pixelCount, unsigned char* dst, int dstByteCount)
    {
        return map.MapBandData_Buffer(row, src, startPixel, pixelCount, dst, dstByteCount);
    }
    static bool MapBandData_Buffer_4Bit(const CPrintUnitDataMap_03& map, int row, const unsigned char* src,
                                        int startPixel, int pixelCount, unsigned char* dst, int dstByteCount)
    {
        return map.MapBandData_Buffer_4Bit(row, src, startPixel, pixelCount, dst, dstByteCount);
    }

    static int BitMode(const CPrintUnitDataMap_03_01& map) { return map.m_bitMode; }
    static void BitMode_Set(CPrintUnitDataMap_03_01& map, int bitMode) { map.m_bitMode = bitMode; }
    static bool MapData_Line_Normal(const CPrintUnitDataMap_03_01& map, const SSrcBandDataParam& param,
                                    const unsigned char* src, unsigned char* dst, int dstByteCount)
    {
        return map.MapData_Line_Normal(param, src, dst, dstByteCount);
    }
    static bool MapData_Line_Bit_400(const CPrintUnitDataMap_03_01& map, const SSrcBandDataParam& param,
                                     const unsigned char* src, unsigned char* dst, int dstByteCount)
    {
        return map.MapData_Line_Bit_400(param, src, dst, dstByteCount);
    }

    static int ByteValue_2_Index_Bit0246(const CPrintUnitDataMap_8& map, int value)
    {
        return map.ByteValue_2_Index_Bit0246(static_cast<unsigned char>(value));
    }
    static int ByteValue_2_Index_Bit1357(const CPrintUnitDataMap_8& map, int value)
    {
        return map.ByteValue_2_Index_Bit1357(static_cast<unsigned char>(value));
    }
    static int Index_2_ByteValue(CPrintUnitDataMap_8& map, int index) { return map.Index_2_ByteValue(index); }
    static int Index_2_ByteValue_Bit0246(CPrintUnitDataMap_8& map, int index)
    {
        return map.Index_2_ByteValue_Bit0246(index);
    }
    static int Index_2_ByteValue_Bit1357(CPrintUnitDataMap_8& map, int index)
    {
        return map.Index_2_ByteValue_Bit1357(index);
    }

    static CBase* Factory_ByUnit() { return CFactory::Init_DataMap_ByUnit(); }
    static CBase* Factory_ByPixel(int srcBitCount, EDotSizeMode mode)
    {
        return CFactory::Init_DataMap_ByPixel(srcBitCount, mode);
    }
    static CBase* Factory_SupportBits_1(int srcBitCount)
    {
        return CFactory::Init_DataMap_ByPixel_SupportBits_1(srcBitCount);
    }
    static CBase* Factory_SupportBits_2(int srcBitCount, EDotSizeMode mode)
    {
        return CFactory::Init_DataMap_ByPixel_SupportBits_2(srcBitCount, mode);
    }
    static CBase* Factory_SupportBits_Multiple(int srcBitCount)
    {
        return CFactory::Init_DataMap_ByPixel_SupportBits_Multiple(srcBitCount);
    }
    static CBase* Factory_Style_5(int srcBitCount) { return CFactory::Init_DataMap_Style_5(srcBitCount); }
    static CBase* Factory_Style_6(int srcBitCount) { return CFactory::Init_DataMap_Style_6(srcBitCount); }
};
