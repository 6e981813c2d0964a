// The answer of a command, on standard output.
#pragma once

#include <string>

// Throws CRunError, with the system's reason, if not all of it could be written: a full disk, a closed pipe.
void Answer_Print(const std::string& text);
