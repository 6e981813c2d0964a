// boardmap join: the outputs of parts of a job, made anywhere in any order, become the output of the job: byte for byte
// what one run over the whole job writes.
#pragma once

#include "Host/Command/BoardTarget.h"
#include "Host/Command/Progress.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

struct SJoinOptions
{
    std::vector<std::filesystem::path> m_parts;
    SBoardTarget m_target;
    bool m_bFormatGiven = false; // else it is that of the first part
    EProgress m_progress = EProgress::Auto;
};

struct SJoinResult
{
    std::int64_t m_pages = 0;
    std::int64_t m_bands = 0;
    std::int64_t m_lines = 0;
    std::int64_t m_bytes = 0; // of board data
};

// Runs on the calling thread, with one band in memory and one part open. Nothing if the user interrupted it, with
// nothing left behind. Throws CInputError, which names the parts, if they are not exactly one job or one of them is
// damaged; CRunError if the output cannot be written. A file that was there before then stays.
std::optional<SJoinResult> Join_Run(const SJoinOptions& options);
