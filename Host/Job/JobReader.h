// From the text of a job file to a job whose values each make sense alone. Only Job_Load and the tests call this; what
// the values mean together is JobCheck's business.
#pragma once

#include "Host/Job/Job.h"

#include <filesystem>
#include <string>

// The bytes of the file. Throws CInputError for a file that is missing, unreadable, no file, empty, or far too long.
std::string JobText_Read(const std::filesystem::path& file);

// Parses the text of the job file `file`; m_map stays unset. Throws CInputError for the first problem: wrong syntax, an
// unknown key, a missing one, a value of a wrong type or outside its range.
SJob JobText_Parse(const std::filesystem::path& file, const std::string& text);
