// The board stream: board bands as plain binary records, for the next program in a pipe. The same bytes on every
// machine. The format is explained in Docs/board-stream.md. One thread at a time.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Host/Output/BoardWriter.h"
#include "Host/Output/ByteSink.h"

#include <filesystem>
#include <memory>

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
    SBoardInfo m_info;
};
