// What shells complete boardmap's command lines with, made of the same data as the command line. Pure functions; any
// thread.
#pragma once

#include <string>

std::string Completion_Bash();
std::string Completion_Zsh();
std::string Completion_Fish();
