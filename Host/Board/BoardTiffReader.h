// Board bands from the pages of a TIFF, as CBoardTiffWriter writes them. The layout is explained in
// Docs/board-stream.md.
#pragma once

#include "Host/Board/BoardReader.h"

#include <memory>

class CTiffFile;

class CBoardTiffReader : public CBoardReader
{
public:
    // As CBoardReader::Open, for a file that begins like a TIFF.
    explicit CBoardTiffReader(const std::filesystem::path& file);
    ~CBoardTiffReader() override;

    EBoardFormat Format() const override { return EBoardFormat::Tiff; }

protected:
    bool Band_ReadNext(CBandData& band, SBoardPass& pass) override;
    bool Resume_Next() override;

private:
    struct SPageSize;

    SBandDescription Description_Read() const;
    SPageSize Size_Read() const;
    void Blocks_Check(const SPageSize& size) const;
    void Rows_Read(CBandData& band, const SPageSize& size) const;
    [[noreturn]] void Refuse(const std::string& what, const std::string& fix = "") const;
    [[noreturn]] void Refuse_WithMessage(const std::string& what) const;

    std::unique_ptr<CTiffFile> m_file;
    std::int64_t m_page = 0; // the one that libtiff stands at
    bool m_bRead = false;    // that page is through, for better or worse
    bool m_bEnd = false;
};
