// The map of map style 3: a unit's line of 400 1-bit pixels, in four blocks of 100 laid over the same 100 board frames.
//
// Eight units of one group share a byte, each block of a group has its own byte, and four bytes per group of eight
// units make up the frame: in frame j the byte 4 g + 3 - k (4 g + k for direction 2) holds, in bit 7 - b, the source
// pixel 100 k + j of unit 8 g + b. The table is that of CPrintUnitDataMap_5 with 1-bit pixels, but a row of it is a bit
// position of the frame, not a print unit. Frames must have 32 bits for every started group of eight units, and an even
// width. Initialised on one thread, then read by any.
#pragma once

#include "DataMap/PrintUnitDataMap_5.h"

class DATAMAPPING_API CPrintUnitDataMap_03 : public CPrintUnitDataMap_5
{
public:
    CPrintUnitDataMap_03();
    CPrintUnitDataMap_03(const CPrintUnitDataMap_03& other);
    CPrintUnitDataMap_03& operator=(const CPrintUnitDataMap_03& other);
    ~CPrintUnitDataMap_03() override;

    // Maps 400 source pixels (50 bytes), whatever `m_lineBitCount` says, into 100 frames. `dstByteCount` is not looked
    // at. True; false, after a log record, is a block that could not be mapped, which does not happen.
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;
    // Four pixels share a frame.
    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override;

private:
    // One block: ORs `pixelCount` source pixels from `startPixel` on into frame position `row`, frame after frame from
    // `dst` on.
    bool MapBandData_Buffer(int row, const unsigned char* src, int startPixel, int pixelCount, unsigned char* dst,
                            int dstByteCount) const;
    bool MapBandData_Buffer_1Bit(int row, const unsigned char* src, int startPixel, int pixelCount, unsigned char* dst,
                                 int dstByteCount) const;
    // Copies (does not OR) the block bit by bit, 64 destination bits apart. Nobody calls it. False, after a log record,
    // if a bit lies beyond `dstByteCount`.
    bool MapBandData_Buffer_4Bit(int row, const unsigned char* src, int startPixel, int pixelCount, unsigned char* dst,
                                 int dstByteCount) const;

    friend struct SMapTestAccess;
};
