// The log macros: how every source file of the library writes a record.
//
// A record is a severity, a short message and a named scope: the full signature of the function that wrote it, the base
// name of its source file (no path, no extension) and a line. The macros gather the scope at the call site and hand it
// to one out-of-line function, KelLog_Write, which alone knows the logger; so a source file that logs does not compile
// the logging library's headers. Callable from any thread. A record that no sink wants is not built; its message is.
//
//   KEL_LOG(kelSeverity_Failure, "failure");                 // the record carries the line of this statement
//   KEL_LOG_AT(kelSeverity_Failure, 144, "failure");         // the record's published line number, whatever moves
#pragma once

#include "Compiler/KelCompiler.h"
#include "Platform/Log/SeverityLevel.h"

#include <string_view>

// The severities of this library's records. The platform promises the numbers, not the names.
constexpr ESeverityLevel kelSeverity_Completion = static_cast<ESeverityLevel>(1); // a step that ended as it should
constexpr ESeverityLevel kelSeverity_Failure = static_cast<ESeverityLevel>(2);    // the caller was told by a false

// Where a record comes from. Both strings are literals: they live as long as the program.
struct SKelLogSite
{
    ESeverityLevel severity;
    const char* function;      // full signature; the record carries its first 511 characters
    std::string_view fileName; // base name without extension
    int line;
};

// Writes one record to the shared logger. `message` is copied before the call returns.
void KelLog_Write(const SKelLogSite& site, std::string_view message);

// "some/where/KelBaseThread.h" -> "KelBaseThread". Both separators count, as the compiler may use either.
constexpr std::string_view KelLog_BaseName(std::string_view path)
{
    const auto slash = path.find_last_of("/\\");
    if (slash != std::string_view::npos)
    {
        path.remove_prefix(slash + 1);
    }
    return path.substr(0, path.rfind('.'));
}

#define KEL_LOG_AT(severityLevel, lineNumber, message)                                                                 \
    KelLog_Write(SKelLogSite{severityLevel, KEL_FUNCTION_SIGNATURE, KelLog_BaseName(__FILE__), lineNumber}, message)

#define KEL_LOG(severityLevel, message) KEL_LOG_AT(severityLevel, __LINE__, message)
