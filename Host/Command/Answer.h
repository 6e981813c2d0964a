// The answer of a command, on standard output.
#pragma once

#include <string>

// As a terminal can be given it: see Text_Shown, which leaves JSON alone, since that is ASCII here. Throws CRunError,
// with the system's reason, if not all of it could be written: a full disk, a closed pipe.
void Answer_Print(const std::string& text);
