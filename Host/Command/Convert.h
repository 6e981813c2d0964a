// boardmap convert: a job file's separations in, board data out.
#pragma once

#include "Host/Board/BoardReader.h"
#include "Host/Command/BandRange.h"
#include "Host/Command/Progress.h"
#include "Host/Output/BoardTiffWriter.h"

#include <filesystem>

struct SConvertOptions
{
    std::filesystem::path m_job;
    std::filesystem::path m_output; // "-" is standard output; empty: named after the job, in the current folder
    std::filesystem::path m_log;    // where the library's records are appended; empty: nowhere
    std::filesystem::path m_trace;  // where the run's events go, in Chrome's trace format; empty: nowhere
    EBoardFormat m_format = EBoardFormat::Tiff;
    EBoardCompression m_compression = EBoardCompression::None;
    EProgress m_progress = EProgress::Auto;
    SBandRange m_bands;    // of the job, counted over all pages and blank ones too
    bool m_bJson = false;  // the summary as JSON
    bool m_bForce = false; // board data on a terminal, too
};

// Runs the whole command on the calling thread, the library's and the producers' threads beside it. True when the board
// data is complete and in its place; false when the user interrupted it, with nothing left behind. Throws CInputError
// or CRunError, with nothing left behind either, but for a CRunError that says that the trace could not be
// completed or the summary not be told.
bool Convert_Run(const SConvertOptions& options);
