// Board bands as the pages of one 1-bit TIFF, so that any TIFF tool opens them: a board line is a row, 1 is ink and
// shows black, and the band header stands in the image description. Layout: Docs/board-stream.md.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Host/Output/BoardWriter.h"
#include "Host/Output/ByteSink.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

enum class EBoardCompression
{
    None,
    PackBits,
    Lzw,
    Deflate,
};

// How large the file will be, as far as that is known before the first band.
struct SBoardTiffSize
{
    std::int64_t m_bandCount = 0;        // the most bands that may come
    bool m_bBandCountExact = false;      // exactly that many will come
    std::int64_t m_bandLineCount = 0;    // rows of a page
    std::int64_t m_bandBytesPerLine = 0; // bytes of a row
};

// The same for an output that says this of itself.
SBoardTiffSize BoardTiff_Size(const SBoardInfo& info);

// True if the file could pass the 4 GiB that 32-bit offsets reach, so that it has to be a BigTIFF. `descriptionSize` is
// the length of a page's image description in bytes.
bool BoardTiff_NeedsBigTiff(const SBoardTiffSize& size, EBoardCompression compression, std::int64_t descriptionSize);

class CBoardTiffWriter : public CBoardWriter
{
public:
    // Throws CInputError if the target cannot be written, CRunError if the system fails.
    CBoardTiffWriter(const std::filesystem::path& target, const SBoardInfo& info, const SBoardTiffSize& size,
                     EBoardCompression compression = EBoardCompression::None);
    CBoardTiffWriter(std::unique_ptr<COutputFile> file, const SBoardInfo& info, const SBoardTiffSize& size,
                     EBoardCompression compression = EBoardCompression::None);
    ~CBoardTiffWriter() override;

private:
    struct STiff; // libtiff's handle and its messages

    void Band_WriteNext(const CBandData& band) override;
    void Finish_All() override;
    void Tags_Set(const CBandData& band, std::uint32_t rowsPerStrip);
    std::string Description_Make(const CBandData& band) const;
    void Text_Set(std::uint32_t tag, const std::string& text);
    void PageNumber_Set();
    void Strips_Write(const CBandData& band, std::uint32_t rowsPerStrip);
    const unsigned char* Strip_Rows(const CBandData& band, std::uint32_t firstRow, std::uint32_t rowCount);
    [[noreturn]] void Failure_Throw(const std::string& what) const;

    std::unique_ptr<COutputFile> m_file;
    std::unique_ptr<STiff> m_tiff; // before m_file in destruction: closing it still writes
    SBoardInfo m_info;
    SBoardTiffSize m_size;
    EBoardCompression m_compression;
    std::vector<unsigned char> m_packedRows; // only for bands whose lines are longer than a row
};
