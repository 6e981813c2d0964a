// From the words of a command line to a command and its arguments, by the table of commands. Only Main uses it.
#pragma once

#include "Host/Command/Command.h"

#include <string>
#include <vector>

// Parses the command line, the program's name first, and runs the command that it names, or prints the help or the
// version. Returns the exit status. Throws what the command throws, and CInputError for a command line that is wrong.
int CommandLine_Run(const std::vector<std::string>& words);
