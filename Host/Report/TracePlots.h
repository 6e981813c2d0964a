// The plots of a run over time, out of what convert --trace recorded: Docs/trace.md has the events. Each series has the
// same number of steps, however long the run was. Pure function of the file; any thread.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <filesystem>

// [{"Name": "Throughput", "Unit": "MB/s", "Step": true, "Labels": [...], "Rows": [[seconds, value, ...], ...]}, ...]:
// throughput of mapping and writing, bands in every queue, and what share of the time each thread stalled. Throws
// CInputError if the file is none that convert wrote.
nlohmann::ordered_json TracePlots_Make(const std::filesystem::path& trace);
