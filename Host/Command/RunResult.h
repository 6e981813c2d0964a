// What a conversion came to: one record, from which the summary, the JSON and every report are made.
#pragma once

#include "Host/Mistake.h"

#include <cstdint>
#include <string>
#include <vector>

struct SRunResult
{
    std::string m_output;     // as the user named it, UTF-8
    std::string m_format;     // "tiff", "raw"
    std::int64_t m_pages = 1; // of the job
    bool m_bPart = false;     // of the job's bands only those from m_firstStep to m_lastStep
    std::int64_t m_firstStep = 0;
    std::int64_t m_lastStep = 0;
    std::int64_t m_bands = 0;
    std::int64_t m_lines = 0;
    std::int64_t m_bytes = 0; // of board data
    double m_seconds = 0;
    double m_mappingSeconds = 0; // that the stage was mapping for
    std::int64_t m_inputStalls = 0;
    double m_inputStallSeconds = 0;
    std::int64_t m_outputStalls = 0;
    double m_outputStallSeconds = 0;
    std::int64_t m_peakMemoryBytes = 0; // of the process; 0: the system does not tell
    std::vector<SMistake> m_warnings;   // of the job
};

// Three lines for a person. The warnings are not in it: they are said before the run.
std::string RunResult_Text(const SRunResult& result);

// One object, in ASCII, with a line end.
std::string RunResult_Json(const SRunResult& result);

// [{"File": ..., "Line": ..., "Column": ..., "Severity": "error", "Rule": ..., "What": ..., "Fix": ...}], one line.
std::string Mistakes_Json(const std::vector<SMistake>& mistakes);
