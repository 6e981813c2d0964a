// What the library knows of the platform's records by position, and of the platform's enumerations by number.
//
// The platform promises where a word stands in some of its records and what a number means, not what it calls either.
// Every such position and number stands here and nowhere else; names that the platform does promise are used as names
// where they are needed. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// The word at `position`, counted from 1, of a record that begins with 32-bit words.
template<std::size_t position, class Record>
std::int32_t Word_Get(const Record& record)
{
    static_assert(position * sizeof(std::int32_t) <= sizeof(Record));
    std::int32_t word = 0;
    std::memcpy(&word, reinterpret_cast<const unsigned char*>(&record) + (position - 1) * sizeof(word), sizeof(word));
    return word;
}

// Print parameters.

template<class JobInfo> // of a job
int JobInfo_BitsPerPixel(const JobInfo& info)
{
    return Word_Get<3>(info);
}

template<class MaskData> // masks in the scan direction
int MaskData_Count_1(const MaskData& mask)
{
    return Word_Get<17>(mask);
}

template<class MaskData> // masks in the feed direction
int MaskData_Count_2(const MaskData& mask)
{
    return Word_Get<18>(mask);
}

template<class HorizonInfo> // a unit's offset in the right-to-left pass, in scan positions
int HorizonInfo_Right2Left(const HorizonInfo& info)
{
    return Word_Get<2>(info);
}

template<class HorizonInfo> // a unit's offset in the left-to-right pass, in scan positions
int HorizonInfo_Left2Right(const HorizonInfo& info)
{
    return Word_Get<3>(info);
}

enum EDotSizeNumber : int
{
    DotSize_Small = 1,
    DotSize_Middle = 2,
    DotSize_Big = 3,
};

// Global configuration.

template<class CartUnitInfo>
int CartUnitInfo_UnitId(const CartUnitInfo& info)
{
    return Word_Get<1>(info);
}

template<class CartUnitInfo>
int CartUnitInfo_Direction(const CartUnitInfo& info)
{
    return Word_Get<4>(info);
}

template<class CartHeadBaseInfo> // the nozzles of a head, which are the pixels of a unit band's line
int CartHeadBaseInfo_BandWidth(const CartHeadBaseInfo& info)
{
    return Word_Get<2>(info);
}

template<class ColorGroupUnitInfo> // a unit's position in its colour group
int ColorGroupUnitInfo_Position(const ColorGroupUnitInfo& info)
{
    return Word_Get<1>(info);
}

enum EDataMapStyleNumber : int
{
    DataMapStyle_Frame16 = 1,         // 1-bit data, 16-bit frames in the pair order of the first boards
    DataMapStyle_Block = 3,           // 400 pixels in four blocks over 100 frames, one bit per unit
    DataMapStyle_Block13 = 4,         // 400 pixels in four blocks of 13 bytes
    DataMapStyle_FramePerPixel = 6,   // one frame per pixel
    DataMapStyle_ByteInterleaved = 7, // one byte column per unit
    DataMapStyle_PlanePair = 9,       // 2-bit pixels as two planes per line
};

enum EDataPushStyleNumber : int
{
    DataPushStyle_ByUnit = 1,  // each scan position as consecutive 1-bit lines
    DataPushStyle_ByPixel = 2, // each scan position as one line of whole pixels
};

enum EPrinterSupportBitsNumber : int
{
    PrinterSupportBits_One = 1,
    PrinterSupportBits_Two = 2,
    PrinterSupportBits_Multiple = 5,
};

// Bands.

// Copies the band header of `from` into that of `to`: the thirteen 32-bit words that begin with the band number, and
// the bool behind them.
template<class BandData>
void BandHeader_Copy(BandData& to, const BandData& from)
{
    constexpr std::size_t headerSize = 13 * sizeof(std::int32_t) + sizeof(bool);
    std::memcpy(static_cast<void*>(&to.m_bandNo), static_cast<const void*>(&from.m_bandNo), headerSize);
}

// The pass of a band, as its attribute tells it: this one, or any other value for the opposite pass.
constexpr int bandAttr_LeftToRight = 1;

// The thread-status monitor's number of a stage.
constexpr int threadId_UnitData2BoardData = 8;
