// What a program may ask of the system about itself and its terminal. Any thread.
#pragma once

#include "Platform/PlatformExport.h"

#include <cstdint>
#include <string>
#include <vector>

class PLATFORM_API CProcessHelper
{
public:
    // The command line in UTF-8, the program's name first. The arguments are main's own; a system that has the command
    // line in another form is asked for that instead.
    static std::vector<std::string> Arguments_Get(int argumentCount, char** arguments);

    // True if standard error is a terminal that a person watches.
    static bool IsErrorTerminal();

    // The same of standard output.
    static bool IsOutputTerminal();

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

    // `pHandler` is called when the terminal is closed, or on Windows also for Ctrl-Break: once, in a signal handler or
    // on a thread of the system's, so it may do no more than set a lock-free flag. Afterwards the system gives the
    // process the time that it gives (on Windows some seconds). The next such event ends the process at once, as
    // without a handler; so does null.
    static void TerminalClose_Handle(void (*pHandler)());
};

// While it lives, the console takes UTF-8 text and cursor sequences, as terminals of other systems always do. For main.
class PLATFORM_API CConsoleText
{
public:
#if defined(_WIN32)
    CConsoleText();
    ~CConsoleText();
#else
    CConsoleText() = default;
#endif
    CConsoleText(const CConsoleText&) = delete;
    CConsoleText& operator=(const CConsoleText&) = delete;

private:
#if defined(_WIN32)
    unsigned m_formerCodePage; // 0: nothing to put back
#endif
};
