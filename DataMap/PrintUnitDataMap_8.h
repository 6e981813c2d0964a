// The map of map style 9: lines of 2-bit pixels, split into a plane of their high bits and a plane of their low bits.
//
// The high-bit plane fills the first half of the board line, the low-bit plane the second. In each plane two pixels
// share a frame of 2 x `DataFrameWidth` bits, in which unit u owns positions 2u and 2u + 1. The table has only 16
// entries per unit, one for each pattern of a byte's four pixels in one plane. Initialised on one thread, then read by
// any; never changes after Init.
//
// The board line holds exactly two planes when the band is described as 1 bit per pixel with its width counted in bits,
// two per printed pixel.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"

class DATAMAPPING_API CPrintUnitDataMap_8 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_8();
    CPrintUnitDataMap_8(const CPrintUnitDataMap_8& other);
    CPrintUnitDataMap_8& operator=(const CPrintUnitDataMap_8& other);
    ~CPrintUnitDataMap_8() override;

    // The entry of the pixels that are set in `byteValue`, a byte of which one plane is masked out (only its low eight
    // bits count). With bits of both planes set it points one entry before the unit's first: for unit 0 that is no
    // memory of the table.
    const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override;
    // ORs both planes into the halves of `dst`. A partial last source byte is looked up with both its planes at once:
    // unless one of them is empty, what it adds is the last entry of the unit before, and nothing for unit 0. Always
    // true.
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;

    using CPrintUnitDataMap_Base::Init;
    // `dataFrameWidth`: bits in one board data frame, a multiple of 8. False, after a log record, if the table could
    // not be built, which does not happen.
    virtual bool Init(int dataFrameWidth);

private:
    // Builds the table; always true.
    bool Init_MapDataBuffer();
    // Sets in `entry` the board bits of the pixels that are set in `planeValue`, for unit `unitIndex`.
    void MapData_Fill(unsigned char* entry, int unitIndex, unsigned char planeValue) const;

    // ORs the plane that `bitMask` selects into the `dstByteCount` bytes of `dst`.
    bool MapData_Line_BitMask(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                              int dstByteCount, unsigned char bitMask) const;

    // The pattern index of a byte: bit 3 - k stands for pixel k. -1 if bits of both planes are set.
    int ByteValue_2_Index(unsigned char value) const;
    // The same for a byte of the high-bit plane, or of the low-bit plane; -1 for any other byte.
    int ByteValue_2_Index_Bit0246(unsigned char value) const;
    int ByteValue_2_Index_Bit1357(unsigned char value) const;
    // And back: 0 to 15 for the high-bit plane, 16 to 31 for the low-bit plane; 0 for an index outside.
    unsigned char Index_2_ByteValue(int index);
    unsigned char Index_2_ByteValue_Bit0246(int index);
    unsigned char Index_2_ByteValue_Bit1357(int index);

    friend struct SMapTestAccess;
};
