// The base of all data maps: geometry, lookup table, and the generic mapping of one line.
//
// A data map turns one line of unit data (the pixels of one print unit, 1 or 2 bits each, packed most significant bit
// first) into that unit's share of one line of board data. A board line is a row of data frames, each `DataFrameWidth`
// bits wide, that carry the bits of every unit that the board drives. A map therefore adds to the destination: the
// lines of all units of a board are mapped one after the other, in any order, into one zeroed board line. (The styles
// with a byte column per unit store instead of adding, each into columns of its own.)
//
// The lookup table. For unit u (0 .. units - 1) and source byte value v (0 .. 255) an entry of `MapDataSizeOfByte`
// bytes holds exactly the board bits that the pixels in v produce for unit u, at the place of that source byte in the
// board line; all other bits are 0. Entries of different units share no set bit. The entry of (u, v) begins at byte u x
// 256 x MapDataSizeOfByte + v x MapDataSizeOfByte of the table; ByteMapData_Buffer gives its address. With 1-bit
// pixels, one bit per unit and a 16-bit frame, one source byte becomes 8 frames = 16 bytes, and 16 units share each
// frame. Where the bits stand inside an entry is the style's business, and what a style does instead of a table too.
//
// Calling order:
//   1. Construct the style's class and call the style's own `Init` (not the base's, which builds no table). A map whose
//      Init returned false is only good for destruction.
//   2. Each thread that maps lines calls `CustomParam_Create` once before its first line.
//   3. For each line: fill an SSrcBandDataParam, call `MapData_Line`. Board lines are `SrcPixelCount_2_BoardBitCount`
//      bits long.
//   4. Each thread calls `CustomParam_Release` with its object when it stops; the owner destroys the map after that.
//
// Threads: construction and Init belong to one thread. After Init the map is immutable; all operations used for mapping
// are const, so one map serves any number of threads at once without a lock. What a style must keep per thread lives in
// the object from CustomParam_Create. Nothing here checks unit indices, byte values or buffer sizes: callers guarantee
// them.
#pragma once

#include "DataMap/DataMappingExport.h"
#include "DataMap/SrcBandDataParam.h"

#include <cstdint>

class DATAMAPPING_API CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_Base();
    // Copies share the table: both objects then own it, and one of them must be kept from freeing it.
    CPrintUnitDataMap_Base(const CPrintUnitDataMap_Base& other);
    CPrintUnitDataMap_Base& operator=(const CPrintUnitDataMap_Base& other);

    // Frees the table, if one was built.
    virtual ~CPrintUnitDataMap_Base();

    // Sets the geometry; builds no table. `srcBitCount`: bits per source pixel, 1 or 2; anything else is a log record
    // and false. `dstBitCount`: bits of one unit in a frame, not 0. `dataFrameWidth`: bits in one board data frame.
    virtual bool Init(int srcBitCount, int dstBitCount, int dataFrameWidth);

    // Bytes of board data that one source byte produces for one unit: the size of one table entry.
    virtual int MapDataSizeOfByte() const;

    // The table entry of unit `unitIndex` (below the number of units) and source byte `byteValue` (0 to 255).
    virtual const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const;

    // Maps one source line into one board line. `src`: the line's bytes, the last one whole. `dst`: the board line,
    // `dstByteCount` bytes long. Whole source bytes are mapped without a look at `dstByteCount`; a partial last source
    // byte is mapped with all its 8 bits (those beyond the line end should be 0), clipped to the board line. The base
    // never fails.
    virtual bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                              int dstByteCount) const;

    // The length in bits of the board line for source lines of `srcPixelCount` pixels.
    virtual int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const;

    // A scratch object for the calling thread, or null if the style needs none. The caller passes it in every
    // SSrcBandDataParam, to one thread at a time, and gives it back with CustomParam_Release.
    virtual void* CustomParam_Create() const;
    virtual void CustomParam_Release(void* customParam) const;

    // Bits per source pixel.
    int SrcBitCount() const;
    // Bits that one unit has in one frame.
    int DstBitCount() const;
    // Bits in one board data frame.
    int DataFrameWidth() const;
    // The whole table, for reading; null if the style has none. Stays the map's.
    const unsigned char* AllMapData_Get() const;

protected:
    // Computes m_mapDataSizeOfByte from the geometry: the pixels of one source byte times the frame width, in bytes.
    virtual void Init_MapDataSizeOfByte();

    void SrcBitCount_Set(int srcBitCount);
    // Units that share one frame.
    int UnitCount() const;
    // Mask of one source pixel; 0 when unset or invalid.
    int SrcBitMask_Get() const;
    // The bits of one unit in one frame. There is no destination mask: this is the bit count, on purpose.
    int DstBitMask_Get() const;
    // Sets the source mask from m_srcBitCount. False, with mask 0 and no log record, if that is neither 1 nor 2.
    bool Init_SrcBitMask();

    // Sets the geometry of a map of 1-bit pixels; computes no size.
    void Geometry_Set(int dstBitCount, int dataFrameWidth, int unitCount);
    // Makes a table of zeros, with so many entries of m_mapDataSizeOfByte bytes for each unit, and sets its sizes.
    void MapData_Allocate(int unitCount, int entryCount);
    // ORs what a partial last source byte adds, looked up whole, clipped to the `dstByteCount` bytes of `dst`.
    // `entrySize`: bytes of a table entry.
    void MapData_Tail(const SSrcBandDataParam& param, int entrySize, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const;
    // Builds a table of 256 entries per unit: calls `set` with the entry, the unit and the bit for every bit that is
    // set in an entry's byte value. Bit 0 is the most significant.
    template<class TSet>
    void MapData_Build(TSet set)
    {
        for (int i = 0; i < 256 * m_unitCount; ++i)
        {
            for (int bit = 0; bit < 8; ++bit)
            {
                if ((i % 256 & 0x80 >> bit) != 0)
                {
                    set(MapData_Entry(i / 256, i % 256), i / 256, bit);
                }
            }
        }
    }
    // The table entry of (unitIndex, entryIndex), for the builder; reckoned from the sizes, never virtual.
    unsigned char* MapData_Entry(int unitIndex, int entryIndex);

    // No more members, and no virtual operation more: layout and table are those that clients were compiled with.
    std::int32_t m_mapDataSizeOfByte = 0; // bytes of one table entry
    std::int32_t m_unitMapDataSize = 0;   // bytes of table per unit
    unsigned char* m_mapData = nullptr;   // the table; owned, freed by the destructor
    std::int32_t m_mapDataSize = 0;       // bytes of the whole table
    std::int32_t m_srcBitCount = 0;       // bits per source pixel
    std::int32_t m_dstBitCount = 0;       // bits of one unit in one frame
    std::int32_t m_srcBitMask = 0;        // 1 for 1-bit pixels, 3 for 2-bit pixels, 0 when unset or invalid
    std::int32_t m_dataFrameWidth = 0;    // bits in one board data frame
    std::int32_t m_unitCount = 0;         // units that share one frame

private:
    // The generic mapping by look-ups through the virtual table: one for every source byte.
    void MapData_Line_Table(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                            int dstByteCount) const;

    friend struct SMapReader;
    friend struct SMapTestAccess;
};
