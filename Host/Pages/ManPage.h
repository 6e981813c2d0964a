// The manual pages of boardmap, made of the same data as the command line and its help. Pure functions; any thread.
#pragma once

#include "Host/Command/Command.h"

#include <string>

// boardmap(1): what the program is for, its commands, exit statuses and environment. In the language of man, ASCII.
std::string ManPage_OfProgram();

// boardmap-convert(1) and the others: every option, the examples, the exit statuses.
std::string ManPage_Of(const SCommand& command);
