// What the map tests share: makers of initialised maps, lines of bytes, and a line call that owns its scratch object.
#pragma once

#include "Host/Model/BoardTwin.h"
#include "Tests/DataMap/MapTestAccess.h"
#include "Tests/Support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

inline EDotSizeMode DotSizeMode_From(int mode)
{
    return static_cast<EDotSizeMode>(mode);
}

// The map of a layout, initialised; a test must not ask for one whose Init fails.
template<class TMap, class... TArgs>
std::unique_ptr<CPrintUnitDataMap_Base> Map_Init(TArgs... args)
{
    auto map = std::make_unique<TMap>();
    if (!map->Init(args...))
    {
        throw std::invalid_argument("the map refuses this geometry");
    }
    return map;
}

inline std::unique_ptr<CPrintUnitDataMap_Base> Map_Make(const STwinStyle& style)
{
    switch (style.style)
    {
    case ETwinStyle::Style_1:
        return Map_Init<CPrintUnitDataMap_1>(style.frameWidth);
    case ETwinStyle::Style_2:
        return Map_Init<CPrintUnitDataMap_2>(DotSizeMode_From(style.dotSizeMode), style.frameWidth);
    case ETwinStyle::Style_5:
        return Map_Init<CPrintUnitDataMap_5>(style.srcBitCount, style.frameWidth);
    case ETwinStyle::Style_6:
        return Map_Init<CPrintUnitDataMap_6>(style.srcBitCount, style.frameWidth);
    case ETwinStyle::Style_7:
        return Map_Init<CPrintUnitDataMap_7>(DotSizeMode_From(style.dotSizeMode), style.frameWidth);
    case ETwinStyle::Style_8:
        return Map_Init<CPrintUnitDataMap_8>(style.frameWidth);
    case ETwinStyle::Style_03:
        return Map_Init<CPrintUnitDataMap_03>(1, style.frameWidth);
    case ETwinStyle::Style_03_01:
        return Map_Init<CPrintUnitDataMap_03_01>(1, style.frameWidth);
    }
    throw std::invalid_argument("no such style");
}

// The board bytes that lines of `lineBitCount` may touch when the map is told of `dstByteCount`: whole source bytes are
// never clipped.
inline int DstSize_Needed(const STwinStyle& layout, int lineBitCount, int dstByteCount)
{
    const int bits = std::max(0, lineBitCount);
    const int w = layout.frameWidth;
    switch (layout.style)
    {
    case ETwinStyle::Style_6:
        return (bits + 7) / 8 * w;
    case ETwinStyle::Style_7:
        return (2 * bits + 7) / 8 * w;
    case ETwinStyle::Style_8:
        return std::max(dstByteCount, std::max(0, dstByteCount / 2) + bits / 8 * w / 2);
    case ETwinStyle::Style_03:
        return (100 * w + 7) / 8;
    case ETwinStyle::Style_03_01:
        return 13 * w;
    case ETwinStyle::Style_5:
        return std::max(dstByteCount, bits / 8 * (8 / layout.srcBitCount * w / 8));
    default:
        return std::max(dstByteCount, bits / 8 * w);
    }
}

// A scratch object of a map, given back when the test is done with it.
class CMapScratch
{
public:
    explicit CMapScratch(const CPrintUnitDataMap_Base& map) : m_map(map), m_pParam(map.CustomParam_Create()) {}
    ~CMapScratch() { m_map.CustomParam_Release(m_pParam); }
    CMapScratch(const CMapScratch&) = delete;
    CMapScratch& operator=(const CMapScratch&) = delete;

    void* Get() const { return m_pParam; }

private:
    const CPrintUnitDataMap_Base& m_map;
    void* m_pParam; // the map's to free
};

inline SSrcBandDataParam Param_Make(int unitIndex, int lineBitCount, int unitDirection = 1)
{
    SSrcBandDataParam param;
    param.m_unitIndex = unitIndex;
    param.m_unitDirection = unitDirection;
    param.m_lineBitCount = lineBitCount;
    return param;
}

// Maps one line with a scratch object of its own.
inline bool Line_Map(const CPrintUnitDataMap_Base& map, SSrcBandDataParam param, const Bytes& src, Bytes& dst,
                     int dstByteCount)
{
    const CMapScratch scratch(map);
    param.m_customParam = scratch.Get();
    return map.MapData_Line(param, src.data(), dst.data(), dstByteCount);
}

inline bool Line_Map(const CPrintUnitDataMap_Base& map, const SSrcBandDataParam& param, const Bytes& src, Bytes& dst)
{
    return Line_Map(map, param, src, dst, static_cast<int>(dst.size()));
}

inline Bytes Entry_Get(const CPrintUnitDataMap_Base& map, int unitIndex, int byteValue)
{
    const unsigned char* entry = map.ByteMapData_Buffer(unitIndex, byteValue);
    return Bytes(entry, entry + map.MapDataSizeOfByte());
}

inline Bytes Bytes_Random(std::mt19937& random, std::size_t count)
{
    std::uniform_int_distribution<int> byte(0, 255);
    Bytes bytes(count);
    for (auto& value : bytes)
    {
        value = static_cast<unsigned char>(byte(random));
    }
    return bytes;
}

// `count` zero bytes with single ones set: Bytes_With(4, {{1, 0x80}}).
inline Bytes Bytes_With(std::size_t count, const std::vector<std::pair<std::size_t, int>>& values)
{
    Bytes bytes(count);
    for (const auto& [index, value] : values)
    {
        bytes.at(index) = static_cast<unsigned char>(value);
    }
    return bytes;
}

// `count` zero bytes with bit `position` set, counted from the most significant bit of the first byte.
inline Bytes Bytes_WithBit(std::size_t count, int position)
{
    return Bytes_With(count, {{static_cast<std::size_t>(position / 8), 0x80 >> (position % 8)}});
}

// The whole table, unit by unit and value by value, against the twin.
inline void Table_ExpectTwin(const CPrintUnitDataMap_Base& map, const STwinStyle& layout, int unitCount)
{
    const CBoardTwin twin(layout);
    for (int unit = 0; unit < unitCount; ++unit)
    {
        for (int value = 0; value < 256; ++value)
        {
            const Bytes src = {static_cast<unsigned char>(value)};
            Bytes expected(static_cast<std::size_t>(map.MapDataSizeOfByte()));
            twin.Line_Map({unit, 1, 8, src}, expected, static_cast<int>(expected.size()));
            ASSERT_EQ(Entry_Get(map, unit, value), expected) << "unit " << unit << ", value " << value;
        }
    }
}

// The function of every record, in order, as "Class::Function".
inline std::vector<std::string> Log_Functions(const CLogCapture& log)
{
    std::vector<std::string> functions;
    for (const auto& record : log.Records())
    {
        const auto end = record.function.find('(');
        const auto begin = record.function.find_last_of(" *&", end) + 1;
        functions.push_back(record.function.substr(begin, end - begin));
        EXPECT_GT(record.line, 0);
    }
    return functions;
}
