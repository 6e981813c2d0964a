// Splits 2-bit pixels into two planes by look-ups of 16 pixel patterns per unit.
#include "DataMap/PrintUnitDataMap_8.h"

#include "DataMap/BitPosition.h"
#include "DataMap/FrameLayout.h"
#include "DataMap/FramePass.h"
#include "DataMap/LineRuns.h"
#include "DataMap/MapKernelInUse.h"
#include "DataMap/OrKernel.h"
#include "KelCommon/KelLog.h"

#include <algorithm>
#include <typeinfo>

namespace
{
constexpr int pixelsPerByte = 4;
constexpr int patternCount = 16;
constexpr unsigned char maskHigh = 0xAA; // the high bits of a byte's four pixels
constexpr unsigned char maskLow = 0x55;  // their low bits

// The bit of pixel `pixel` in a pattern index, and in a byte of either plane.
constexpr int Pixel_PatternBit(int pixel)
{
    return 1 << (pixelsPerByte - 1 - pixel);
}
constexpr unsigned Pixel_ByteMask(int pixel)
{
    return 0xC0U >> (2 * pixel);
}

// The pattern of the pixels that have a bit set in `value`.
int Pattern_FromByte(unsigned char value)
{
    int pattern = 0;
    for (int pixel = 0; pixel < pixelsPerByte; ++pixel)
    {
        if ((value & Pixel_ByteMask(pixel)) != 0)
        {
            pattern |= Pixel_PatternBit(pixel);
        }
    }
    return pattern;
}

// The byte of the plane `planeMask` in which exactly the pattern's pixels are set.
unsigned char Pattern_ToByte(int pattern, unsigned char planeMask)
{
    unsigned value = 0;
    for (int pixel = 0; pixel < pixelsPerByte; ++pixel)
    {
        if ((pattern & Pixel_PatternBit(pixel)) != 0)
        {
            value |= Pixel_ByteMask(pixel) & planeMask;
        }
    }
    return static_cast<unsigned char>(value);
}

// A piece of a line, the pixels of each pair parted: a row of frames each, the high plane's in front of the low one's.
struct SPairPiece
{
    unsigned char m_even[transposeByteCountMax];
    unsigned char m_odd[transposeByteCountMax];
};

// The lines of one run: two rows per line. Both planes are transposed at once; a plane's frames are then half a tile.
class CLinePass
{
public:
    explicit CLinePass(int unitCount) : m_unitCount(unitCount), m_frames(unitCount / 4) {}

    void Begin(const SSrcBandLine& line)
    {
        m_frames.Clear();
        m_byteCount = line.m_param.m_lineBitCount / 8;
        m_lineCount = 0;
    }

    bool Line_Add(const SSrcBandLine& line)
    {
        const int unit = line.m_param.m_unitIndex;
        if (static_cast<unsigned>(unit) >= static_cast<unsigned>(m_unitCount) || m_frames.HasRow(2 * unit) ||
            line.m_param.m_lineBitCount / 8 != m_byteCount)
        {
            return false;
        }
        m_frames.Row_Set(2 * unit, m_pieces[m_lineCount].m_even);
        m_frames.Row_Set(2 * unit + 1, m_pieces[m_lineCount].m_odd);
        ++m_lineCount;
        return true;
    }

    // The whole source bytes only.
    void Run_Map(const SSrcBandLine* lines, int lineCount, unsigned char* dst, int dstByteCount)
    {
        static_assert(2 * quadRoom == transposeByteCountMax);
        const SMapKernel& kernel = MapKernel_Get();
        const int entrySize = m_unitCount / 2;
        for (int done = 0; done < m_byteCount; done += quadSrcByteCountMax)
        {
            const int count = std::min(quadSrcByteCountMax, m_byteCount - done);
            for (int i = 0; i < lineCount; ++i)
            {
                kernel.m_pQuads_Split(lines[i].m_pLine + done, count, m_pieces[i].m_even, m_pieces[i].m_odd);
            }
            Frames_Or(kernel, 2 * count, dst + done * entrySize, dst + dstByteCount / 2 + done * entrySize);
        }
    }

private:
    void Frames_Or(const SMapKernel& kernel, int frameCount, unsigned char* highDst, unsigned char* lowDst) const
    {
        alignas(64) unsigned char tiles[CFramePass::frameByteCountMax][transposeRoom];
        const unsigned char* high[CFramePass::frameByteCountMax];
        const unsigned char* low[CFramePass::frameByteCountMax];
        const int columnCount = m_unitCount / 4;
        for (int column = 0; column < columnCount; ++column)
        {
            high[column] = CFramePass::zeroColumn;
            low[column] = CFramePass::zeroColumn;
            if (m_frames.HasColumn(column))
            {
                m_frames.Column_Transpose(kernel, column, tiles[column]);
                high[column] = tiles[column];
                low[column] = tiles[column] + transposeRoom / 2;
            }
        }
        kernel.m_pColumns_Or(high, columnCount, frameCount, highDst);
        kernel.m_pColumns_Or(low, columnCount, frameCount, lowDst);
    }

    int m_unitCount;
    int m_byteCount = 0; // whole bytes of every line
    int m_lineCount = 0;
    CFramePass m_frames;
    SPairPiece m_pieces[CFramePass::rowCountMax / 2];
};

// The pass, and after it what is left of every line.
template<class TTail>
class CTailedPass
{
public:
    static constexpr int lineRunMin = 3;

    CTailedPass(int unitCount, TTail tail) : m_pass(unitCount), m_tail(tail) {}

    void Begin(const SSrcBandLine& line) { m_pass.Begin(line); }
    bool Line_Add(const SSrcBandLine& line) { return m_pass.Line_Add(line); }
    void Run_Map(const SSrcBandLine* lines, int lineCount, unsigned char* dst, int dstByteCount)
    {
        m_pass.Run_Map(lines, lineCount, dst, dstByteCount);
        for (int i = 0; i < lineCount; ++i)
        {
            if (lines[i].m_param.m_lineBitCount % 8 > 0)
            {
                m_tail(lines[i]);
            }
        }
    }

private:
    CLinePass m_pass;
    TTail m_tail;
};
} // namespace

CPrintUnitDataMap_8::CPrintUnitDataMap_8() = default;

CPrintUnitDataMap_8::CPrintUnitDataMap_8(const CPrintUnitDataMap_8& other) = default;

CPrintUnitDataMap_8& CPrintUnitDataMap_8::operator=(const CPrintUnitDataMap_8& other) = default;

CPrintUnitDataMap_8::~CPrintUnitDataMap_8() = default;

const unsigned char* CPrintUnitDataMap_8::ByteMapData_Buffer(int unitIndex, int byteValue) const
{
    const int index = ByteValue_2_Index(static_cast<unsigned char>(byteValue));
    return m_mapData + (index * MapDataSizeOfByte() + unitIndex * m_unitMapDataSize);
}

bool CPrintUnitDataMap_8::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                       int dstByteCount) const
{
    const int planeByteCount = dstByteCount / 2;
    if (MapData_Line_Field(param, src, dst, planeByteCount))
    {
        MapData_Tail(param, src, dst, planeByteCount);
        MapData_Tail(param, src, dst + planeByteCount, planeByteCount);
        return true;
    }
    if (!MapData_Line_BitMask(param, src, dst, planeByteCount, maskHigh))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    if (!MapData_Line_BitMask(param, src, dst + planeByteCount, planeByteCount, maskLow))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CPrintUnitDataMap_8::MapData_Line_AllInput(const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                                                int dstByteCount) const
{
    if (!HasOwnTable() || 2 * m_unitCount > CFramePass::rowCountMax)
    {
        return MapData_Line_OneByOne(lines, lineCount, dst, dstByteCount);
    }
    const int planeByteCount = dstByteCount / 2;
    const auto Tail_Map = [&](const SSrcBandLine& line)
    {
        MapData_Tail(line.m_param, line.m_pLine, dst, planeByteCount);
        MapData_Tail(line.m_param, line.m_pLine, dst + planeByteCount, planeByteCount);
    };
    CTailedPass pass(m_unitCount, Tail_Map);
    return LineRuns_Map(pass, *this, lines, lineCount, dst, dstByteCount);
}

bool CPrintUnitDataMap_8::HasOwnTable() const
{
    return typeid(*this) == typeid(CPrintUnitDataMap_8) && m_srcBitCount == 1 && m_unitCount == m_dataFrameWidth &&
           m_mapDataSizeOfByte == m_dataFrameWidth / 2 && IsRegular(m_dataFrameWidth / 8, patternCount, m_unitCount);
}

// In each plane a frame is a field of two neighbouring pixels: that of a map with 2-bit pixels.
bool CPrintUnitDataMap_8::MapData_Line_Field(const SSrcBandDataParam& param, const unsigned char* src,
                                             unsigned char* dst, int planeByteCount) const
{
    const SMapKernel& kernel = MapKernel_Get();
    const SFrameLayout layout = {m_dataFrameWidth / 4, m_unitCount, 2, 2, 0b11, false};
    const SFieldPattern* pattern = layout.Pattern();
    if (kernel.m_pField_Or == nullptr || !HasOwnTable() || !layout.HasUnit(param.m_unitIndex) || pattern == nullptr)
    {
        return false;
    }
    const int entrySize = m_mapDataSizeOfByte;
    const int byteCount = param.m_lineBitCount / 8;
    const SFieldPattern* pairPattern = CFieldPattern::Pair_Get(layout.m_frameByteCount);
    // Two fields of a line must not overlap: the planes of a line that was told to be too short would.
    if (kernel.m_pPairs_Or != nullptr && pairPattern != nullptr && byteCount * entrySize <= planeByteCount)
    {
        const auto row = static_cast<unsigned>(layout.Row(param.m_unitIndex));
        kernel.m_pPairs_Or[pairPattern->m_groupSizeIndex](pairPattern->Begin(static_cast<int>(row / 8)), 6 - row % 8,
                                                          src, byteCount, dst, dst + planeByteCount,
                                                          byteCount * entrySize);
        return true;
    }
    constexpr int pieceSize = 4 * splitRoom; // source bytes
    unsigned char high[pieceSize / 2];
    unsigned char low[pieceSize / 2];
    for (int done = 0; done < byteCount; done += pieceSize)
    {
        const int count = std::min(pieceSize, byteCount - done);
        unsigned char* out = dst + done * entrySize;
        kernel.m_pPlanes_Split(src + done, count, high, low);
        layout.Field_Or(*kernel.m_pField_Or, *pattern, param.m_unitIndex, high, (count + 1) / 2, out,
                        count * entrySize);
        layout.Field_Or(*kernel.m_pField_Or, *pattern, param.m_unitIndex, low, (count + 1) / 2, out + planeByteCount,
                        count * entrySize);
    }
    return true;
}

bool CPrintUnitDataMap_8::Init(int dataFrameWidth)
{
    m_srcBitCount = 1;
    m_srcBitMask = 1;
    m_dstBitCount = 1;
    m_dataFrameWidth = dataFrameWidth;
    m_unitCount = dataFrameWidth;
    m_mapDataSizeOfByte = (dataFrameWidth / 8) * 4;
    m_unitMapDataSize = patternCount * m_mapDataSizeOfByte;
    m_mapDataSize = m_unitMapDataSize * m_unitCount;
    if (!Init_MapDataBuffer())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

// The low-bit plane needs no entries of its own: the same index names the same pixels.
bool CPrintUnitDataMap_8::Init_MapDataBuffer()
{
    MapData_Allocate();
    for (int unit = 0; unit < m_unitCount; ++unit)
    {
        for (int index = 0; index < patternCount; ++index)
        {
            MapData_Fill(MapData_Entry(unit, index), unit, Index_2_ByteValue(index));
        }
    }
    return true;
}

void CPrintUnitDataMap_8::MapData_Fill(unsigned char* entry, int unitIndex, unsigned char planeValue) const
{
    for (int pixel = 0; pixel < pixelsPerByte; pixel += m_srcBitCount)
    {
        if ((planeValue & Pixel_ByteMask(pixel)) != 0)
        {
            const int frame = pixel / 2;
            BitPosition_Set(entry, 2 * (frame * m_dataFrameWidth + m_srcBitCount * unitIndex) + pixel % 2);
        }
    }
}

bool CPrintUnitDataMap_8::MapData_Line_BitMask(const SSrcBandDataParam& param, const unsigned char* src,
                                               unsigned char* dst, int dstByteCount, unsigned char bitMask) const
{
    const int entrySize = MapDataSizeOfByte();
    const int fullByteCount = param.m_lineBitCount / 8;
    for (int i = 0; i < fullByteCount; ++i)
    {
        COrKernel::Or_Bytes(dst + i * entrySize, ByteMapData_Buffer(param.m_unitIndex, src[i] & bitMask), entrySize);
    }
    MapData_Tail(param, src, dst, dstByteCount);
    return true;
}

void CPrintUnitDataMap_8::MapData_Tail(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                       int dstByteCount) const
{
    if (param.m_lineBitCount % 8 <= 0)
    {
        return;
    }
    const int entrySize = MapDataSizeOfByte();
    const int fullByteCount = param.m_lineBitCount / 8;
    // The tail is looked up unmasked, unlike the full bytes.
    const unsigned char tail = src[fullByteCount];
    if (param.m_unitIndex == 0 && ByteValue_2_Index(tail) < 0)
    {
        return; // its entry would lie before the table
    }
    const int tailOffset = fullByteCount * entrySize;
    const int tailByteCount = std::min(dstByteCount - tailOffset, entrySize);
    COrKernel::Or_Bytes(dst + tailOffset, ByteMapData_Buffer(param.m_unitIndex, tail), tailByteCount);
}

int CPrintUnitDataMap_8::ByteValue_2_Index(unsigned char value) const
{
    return (value & maskHigh) != 0 ? ByteValue_2_Index_Bit0246(value) : ByteValue_2_Index_Bit1357(value);
}

int CPrintUnitDataMap_8::ByteValue_2_Index_Bit0246(unsigned char value) const
{
    return (value & maskLow) == 0 ? Pattern_FromByte(value) : -1;
}

int CPrintUnitDataMap_8::ByteValue_2_Index_Bit1357(unsigned char value) const
{
    return (value & maskHigh) == 0 ? Pattern_FromByte(value) : -1;
}

unsigned char CPrintUnitDataMap_8::Index_2_ByteValue(int index)
{
    return index < patternCount ? Index_2_ByteValue_Bit0246(index) : Index_2_ByteValue_Bit1357(index);
}

unsigned char CPrintUnitDataMap_8::Index_2_ByteValue_Bit0246(int index)
{
    return index >= 0 && index < patternCount ? Pattern_ToByte(index, maskHigh) : static_cast<unsigned char>(0);
}

unsigned char CPrintUnitDataMap_8::Index_2_ByteValue_Bit1357(int index)
{
    const int pattern = index - patternCount;
    return pattern >= 0 && pattern < patternCount ? Pattern_ToByte(pattern, maskLow) : static_cast<unsigned char>(0);
}
