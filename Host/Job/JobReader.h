// From the text of a job file to a job whose values each make sense alone. Only Job_Read and the tests call this; what
// the values mean together is JobCheck's business.
#pragma once

#include "Host/Job/Job.h"
#include "Host/Mistake.h"

#include <filesystem>
#include <string>

// The bytes of the file. Throws CInputError for a file that is missing, unreadable, no file, empty, or far too long.
std::string JobText_Read(const std::filesystem::path& file);

// Parses the text of the job file `file`; m_map stays unset. Adds a mistake for each unknown key, missing one, and
// value of a wrong type or outside its range; SJob::m_mistaken then names the keys whose values are not known. Throws
// CInputError for a text that says nothing: wrong syntax, or another version.
SJob JobText_Parse(const std::filesystem::path& file, const std::string& text, CMistakeList& mistakes);
