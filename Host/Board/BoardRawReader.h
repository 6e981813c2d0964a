// The board stream, read back. The format is explained in Docs/board-stream.md.
#pragma once

#include "Host/Board/BoardReader.h"

#include <istream>
#include <vector>

class CBoardRawReader : public CBoardReader
{
public:
    // As CBoardReader::Open, for a file that is a board stream.
    explicit CBoardRawReader(const std::filesystem::path& file);

    // Reads from a stream that the caller keeps and that can be positioned; `name` is for messages.
    CBoardRawReader(std::istream& stream, std::string name);

    EBoardFormat Format() const override { return EBoardFormat::Raw; }

protected:
    bool Band_ReadNext(CBandData& band, SBoardPass& pass) override;
    bool Resume_Next() override;

private:
    struct SRecord; // what stands before a band's data

    void Header_Read();
    void Bytes_Read(void* pData, std::size_t size, const std::string& part);
    void Record_Parse(const unsigned char* pBytes, SRecord& record) const;
    bool IsRecordSound(const SRecord& record) const;
    bool IsRecordAt(std::int64_t offset);
    void End_Read();
    void Offset_Set(std::int64_t offset);
    [[noreturn]] void Refuse(std::int64_t offset, const std::string& what, const std::string& fix = "") const;

    std::unique_ptr<std::istream> m_ownStream;
    std::istream* m_pStream;
    std::int64_t m_offset = 0;       // where the stream stands
    std::int64_t m_recordOffset = 0; // of the record that is or was being read
    bool m_bEnd = false;
};
