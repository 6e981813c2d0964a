// What a program may ask of the system about itself and its terminal. Any thread.
#pragma once

#include "Platform/PlatformExport.h"

#include <cstdint>

class PLATFORM_API CProcessHelper
{
public:
    // True if standard error is a terminal that a person watches.
    static bool IsErrorTerminal();

    // Columns of that terminal; 80 if it does not say.
    static int TerminalWidth();

    // The most memory that this process has held at once, in bytes; 0 if the system does not tell.
    static std::int64_t PeakMemoryBytes();

    // From now on, a write that the system refuses, because nobody reads the pipe or the file may not grow any further,
    // fails as an ordinary write error instead of ending the process.
    static void WriteSignals_Ignore();

    // Standard output carries bytes, not lines of text.
    static void StandardOutput_Binary();

    // A number that no other living process has.
    static std::int64_t ProcessId();
};
