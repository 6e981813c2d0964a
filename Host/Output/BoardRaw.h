// The board stream: board bands as plain binary records, for the next program in a pipe. A writer and a reader; both
// work with the same bytes on every machine. The format is explained in Docs/board-stream.md. One thread at a time.
#pragma once

#include "Host/Output/BoardInfo.h"
#include "Host/Output/BoardWriter.h"
#include "Host/Output/ByteSink.h"

#include <cstdint>
#include <filesystem>
#include <istream>
#include <memory>
#include <string>

class CBoardRawWriter : public CBoardWriter
{
public:
    // To a file, or to standard output if the target is "-". A device or a pipe is written in place. Throws CInputError
    // if the target cannot be written, CRunError if the system fails.
    CBoardRawWriter(const std::filesystem::path& target, const SBoardInfo& info);
    CBoardRawWriter(std::unique_ptr<CByteSink> sink, const SBoardInfo& info);

private:
    void Band_WriteNext(const CBandData& band) override;
    void Finish_All() override;

    std::unique_ptr<CByteSink> m_sink;
};

class CBoardRawReader
{
public:
    // Opens the file and reads the stream's header. Throws CInputError: "page.boards: byte 8: ...", with the place, if
    // it is no board stream, has another version or is cut off; so do the calls below.
    explicit CBoardRawReader(const std::filesystem::path& file);

    // Reads from a stream that the caller keeps; `name` is for messages.
    CBoardRawReader(std::istream& stream, std::string name);

    const SBoardInfo& BoardInfo() const { return m_info; }

    // Replaces `band` by the next one, header and data. False behind the last band, once the stream has proved
    // complete; `band` then stays as it is.
    bool Band_Read(CBandData& band);

private:
    void Header_Read();
    void Bytes_Read(void* pData, std::size_t size, const std::string& part);
    void End_Read();
    [[noreturn]] void Refuse(std::int64_t offset, const std::string& text) const;

    std::unique_ptr<std::istream> m_ownStream;
    std::istream* m_pStream;
    std::string m_name;
    SBoardInfo m_info;
    std::int64_t m_offset = 0; // bytes read so far
    std::int64_t m_bandCount = 0;
    bool m_bEnd = false;
};
