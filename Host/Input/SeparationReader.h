// Reads one separation: the 1-bit or 2-bit TIFF page that says where one print unit puts ink.
//
// The unit's producer owns a reader and takes the page from it as a stream of rows, from the top down, on its own
// thread. Memory holds a row, or a row of tiles, and of compressed pages one strip as it is in the file; never the
// page. Everything that can be known from the file's header is checked before the first row: who has a reader has a
// page whose data lies inside the file. The reader never prints anything and never looks at a job.
#pragma once

#include "Host/Input/SeparationInfo.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

class CSeparationRows;
class CTiffFile;
struct STiffPage;

// What a page may cost. The sizes keep a damaged header from asking for absurd amounts of memory.
struct SSeparationLimit
{
    int maxWidth = 1 << 24;                             // columns
    int maxHeight = std::numeric_limits<int>::max();    // rows
    std::int64_t maxBlockBytes = std::int64_t{1} << 28; // the largest single piece of memory for decoding
};

class CSeparationReader
{
public:
    // Opens the separation at `path` (UTF-8). Throws CInputError, "<path>: <what is wrong>", if the file is not there,
    // is damaged or truncated, holds more than one page (reduced versions of the first one do not count), or is
    // anything but 1 or 2 bits per pixel, one sample, black and white, first row on top.
    explicit CSeparationReader(const std::string& path, const SSeparationLimit& limit = {});
    CSeparationReader(const CSeparationReader&) = delete;
    CSeparationReader& operator=(const CSeparationReader&) = delete;
    ~CSeparationReader();

    const SSeparationInfo& Info_Get() const { return m_info; }
    const std::string& Path() const { return m_info.path; }
    int Width() const { return m_info.width; }               // columns
    int Height() const { return m_info.height; }             // rows
    int BitsPerPixel() const { return m_info.bitsPerPixel; } // 1 or 2
    int RowBytes() const { return m_rowBytes; }

    // Writes the next row into `row`, RowBytes() bytes: ink, packed from the high bits on, 0 = none and all bits set =
    // most, whatever the file's polarity; the bits beyond the last pixel are 0. False if no row is left. Throws
    // CInputError that names the row (from 0) and its strip or tile; after that the reader is of no use any more.
    bool Row_Read(unsigned char* row);

    // Leaves out the next `count` rows, which are there. Reads no more of them than the file's blocks ask for; throws
    // as Row_Read does.
    void Rows_Skip(int count);

private:
    STiffPage Page_Read();
    void Pixel_Check(STiffPage& page);
    void Size_Check(STiffPage& page);
    void Resolution_Read();
    void Value_Check(const std::string& name, const char* pWanted) const;
    void Layout_Check(STiffPage& page);
    void Data_Check(const STiffPage& page);
    void Block_Check(const STiffPage& page, std::uint32_t index);
    void SinglePage_Check();

    SSeparationInfo m_info;
    SSeparationLimit m_limit;
    std::unique_ptr<CTiffFile> m_file;
    std::unique_ptr<CSeparationRows> m_rows;
    int m_rowBytes = 0;
    int m_nextRow = 0;
    bool m_bInvert = false;           // the file's 0 is full ink
    unsigned char m_lastByteMask = 0; // the pixels' bits of a row's last byte
};

// What the header of the separation at `path` says, checked as the reader's constructor checks it.
SSeparationInfo SeparationInfo_Get(const std::string& path);
