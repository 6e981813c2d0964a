// The map of map style 4: a unit's line of 400 bits, dealt in four chunks of 100 bits to four neighbouring board units.
//
// The board line is a row of frames of `DataFrameWidth` bytes; frame k holds byte k of every board unit side by side,
// 13 bytes (100 bits, rounded up) per board unit. Source unit u feeds board units 4 u to 4 u + 3: chunk i goes to 4 u +
// i when the direction is 2, to 4 u + 3 - i otherwise. Three further bit modes are kept in the class; every map starts,
// and stays, in the 13-byte mode.
//
// This is the one map that needs a scratch object: each mapping thread makes its own with CustomParam_Create and passes
// it in every SSrcBandDataParam. Apart from that any number of threads may map lines with one object at once.
#pragma once

#include "DataMap/PrintUnitDataMap_5.h"

#include <cstdint>

class DATAMAPPING_API CPrintUnitDataMap_03_01 : public CPrintUnitDataMap_5
{
public:
    CPrintUnitDataMap_03_01();
    CPrintUnitDataMap_03_01(const CPrintUnitDataMap_03_01& other);
    CPrintUnitDataMap_03_01& operator=(const CPrintUnitDataMap_03_01& other);
    ~CPrintUnitDataMap_03_01() override;

    // Maps one line of 400 bits (50 bytes), whatever `m_lineBitCount` says, into 13 frames; bytes are stored, not ORed.
    // `dstByteCount` is not looked at. Always true: a failure inside is a log record and goes no further.
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;
    // The length of a board line is fixed by the frame width: 13 bytes per board unit. The argument is ignored.
    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override;
    // A new block of 13 bytes, its contents undefined; the calling thread's until it gives it to CustomParam_Release.
    void* CustomParam_Create() const override;
    // Frees a block of CustomParam_Create; null is ignored.
    void CustomParam_Release(void* customParam) const override;

    using CPrintUnitDataMap_5::Init;
    // As CPrintUnitDataMap_5::Init, whose failure is logged once more. `srcBitCount` is 1 in every use of this style.
    bool Init(int srcBitCount, int dataFrameWidth) override;

    // The three below map one chunk of `bitCount` bits from bit `srcBitOffset` of `src` to board unit `unitIndex`.

    // By bit mode: the 4-bit interleave, the 13-byte interleave, or false without a log record.
    bool MapBandData_Buffer(int unitIndex, const unsigned char* src, int srcBitOffset, int bitCount, unsigned char* dst,
                            int dstByteCount, void* customParam) const;
    // 4-bit interleave: each frame is `DataFrameWidth` nibbles. 100 bits, whatever `bitCount` says; nibbles that lie
    // beyond `dstByteCount` are left out. Always true.
    bool MapBandData_Buffer_Bit_4(int unitIndex, const unsigned char* src, int srcBitOffset, int bitCount,
                                  unsigned char* dst, int dstByteCount) const;
    // 13-byte interleave. A chunk that begins on a byte is stored whole, the four bits after it included; any other is
    // gathered in `customParam` first and filled up with zero bits. False, after a log record, if more than 104 bits
    // are to be gathered.
    bool MapBandData_Buffer_Bit_8(int unitIndex, const unsigned char* src, int srcBitOffset, int bitCount,
                                  unsigned char* dst, int dstByteCount, void* customParam) const;

private:
    // Line mappers with the arguments of MapData_Line: by chunks of 100 bits, as two halves, as one block.
    bool MapData_Line_Normal(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                             int dstByteCount) const;
    bool MapData_Line_Bit_200(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                              int dstByteCount) const;
    bool MapData_Line_Bit_400(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                              int dstByteCount) const;

    // Values of m_bitMode. With any other nothing is mapped.
    static constexpr int bitMode4 = 1;   // 4-bit interleave
    static constexpr int bitMode8 = 2;   // 13-byte interleave
    static constexpr int bitMode200 = 3; // two 200-bit halves
    static constexpr int bitMode400 = 4; // one 400-bit block
    std::int32_t m_bitMode = bitMode8;   // nothing in the class changes it

    friend struct SMapReader;
    friend struct SMapTestAccess;
};
