// What a program may ask of the system about itself and its terminal. Any thread.
#pragma once

#include "Platform/PlatformExport.h"

#include <cstdint>
#include <cstdio>
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

    // The number of the stream's file in the C library.
    static int Descriptor_Of(std::FILE* pStream);

    // Standard output carries bytes, not lines of text.
    static void StandardOutput_Binary();

    // A number that no other living process has.
    static std::int64_t ProcessId();

    // Standard input, output and error of the process are open, if on nothing: one that was closed would be the next
    // file that the process opens, and what is meant for the one would be written to the other. What is read from or
    // written to such a one fails. First thing in main.
    static void StandardDescriptors_Open();

    // What is done when somebody asks the process to end: an interrupt from the keyboard, a request to terminate, a
    // terminal that is closed, on Windows also Ctrl-Break.
    struct SEndPlan
    {
        // Called for the first request: in a signal handler or on a thread of the system's, so it may do no more than
        // set a lock-free flag.
        void (*m_pNote)() = nullptr;
        // The process that has not forgotten the plan after so many milliseconds is ended with this exit status and
        // this text on standard error; files in the making are taken away. On Windows the system's own time for a
        // terminal that is closed holds besides.
        int m_graceMs = 0;
        int m_exitStatus = 0;
        const char* m_pText = "";
    };

    // From now on, the plan (null: none) is what the first request does. The second one, or the first without a plan,
    // takes away files in the making and ends the process as it would end by itself. A request that the process
    // was started to ignore stays ignored. The plan stays the caller's.
    static void EndRequests_Handle(const SEndPlan* pPlan);

    // From now on, a request to tell the process's state (SIGUSR1; on Windows there is none) sets a mark and does
    // nothing else. Was it ignored when the process was started, it stays ignored.
    static void StatusRequests_Mark();

    // True once for every mark that was set, or for several at once.
    static bool StatusRequest_Take();
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
