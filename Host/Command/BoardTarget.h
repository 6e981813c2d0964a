// Where board data goes, for the commands that write some: what the user may ask for, and the writer for it. Main
// thread.
#pragma once

#include "Host/Board/BoardReader.h"
#include "Host/Output/BoardTiffWriter.h"

#include <filesystem>
#include <memory>

struct SBoardTarget
{
    std::filesystem::path m_path; // "-" is standard output
    EBoardFormat m_format = EBoardFormat::Tiff;
    EBoardCompression m_compression = EBoardCompression::None;
    bool m_bForce = false; // on a terminal, too
};

bool IsStandardOutput(const std::filesystem::path& path);

// Whether the two names lead to one file, be it there already or not.
bool IsSameFile(const std::filesystem::path& one, const std::filesystem::path& other);

// Throws CInputError for what cannot be combined: a TIFF on standard output, a compressed stream, data on a terminal.
void BoardTarget_Check(const SBoardTarget& target);

// Throws CInputError if the target cannot be written, CRunError if the system fails.
std::unique_ptr<CBoardWriter> BoardTarget_Open(const SBoardTarget& target, const SBoardInfo& info);
