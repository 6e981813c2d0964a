// Which data map a job gets: the map factory's decision, repeated for the host, so that a job is checked before a stage
// exists. Job validation asks it on the main thread; it reads no configuration and makes no map.
#pragma once

#include "Platform/GlobalConfig/DPOption.h"

// The map classes, by their style.
enum class EMapClass
{
    None, // the factory refuses
    Map_1,
    Map_2,
    Map_03,
    Map_03_01,
    Map_5,
    Map_6,
    Map_7,
    Map_8,
};

struct SJobMap
{
    EMapClass m_class = EMapClass::None;
    int m_srcBitCount = 0; // bits per source pixel that the map takes
    int m_dstBitCount = 0; // bits of one unit in a board data frame

    bool operator==(const SJobMap&) const = default;
};

// The map that the factory builds for these options and a job of `bitsPerPixel` bits; EMapClass::None if it builds
// none. The frame width and the dot size are left out: with a wrong one the class stays the same and its Init fails.
SJobMap Job_MapClass(const SDPOption& option, int bitsPerPixel);

// "5", "03_01"; "none".
const char* MapClass_Name(EMapClass mapClass);

// True for the classes that map every line through their byte table alone, which is all that the base stage does.
bool MapClass_IsTableMap(EMapClass mapClass);
