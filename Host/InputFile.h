// Opening the files that a command reads, with words for whatever stands in the way. Any thread.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

// The file, open for reading bytes. `kind` says what it should be: "job file". Throws CInputError if it is not there,
// is no regular file (opening a pipe could wait for ever), or the system does not let it be opened.
std::ifstream InputFile_Open(const std::filesystem::path& file, const std::string& kind);

// The system's words for an errno, for example after reading has set badbit.
std::string SystemError_Text(int error);
