// The shared logger and the places its records go to.
//
// Every record of the process goes through the one severity logger that BoostLog_Get returns. Where it lands is the
// host's choice: nowhere (the state at start: records are then not even built), the console, a file, a listener, or any
// of them together.
//
// No record is dropped. The thread that writes a record waits until every place has taken it: there is no queue that
// could overflow, records are never reordered within a thread, and those in the file have reached the system before a
// crash could lose them. The price, a slow place slowing its writer, is paid only by records, which the data path
// writes on failure alone. A record that the file does not take (a full disk, a pipe that nobody empties) goes to
// standard error instead, and File_Error tells; the next record tries the file again. Opening, changing or closing one
// place never costs another a record.
//
// Everything here may be called from any thread.
#pragma once

#include "Platform/Log/SeverityLevel.h"
#include "Platform/PlatformExport.h"

#include <chrono>
#include <functional>
#include <string>

// The shared logger's type; complete in Platform/Log/SeverityLogger.h, which includes the logging library.
class CSeverityLogger;

// One record as a listener sees it.
struct SLogRecord
{
    ESeverityLevel severity = ESeverityLevel::Debug;
    std::string message;
    std::string function; // full signature of the function that wrote the record
    std::string fileName; // base name of its source file, without extension
    int line = 0;
    std::chrono::system_clock::time_point time;
};

class PLATFORM_API CCustomBoostLog
{
public:
    using Listener = std::function<void(const SLogRecord&)>;

    // The shared severity logger. Lives until the process ends.
    static CSeverityLogger& BoostLog_Get();

    // Records of at least `minimum` go to standard error, one line each. A second call changes the minimum.
    static void Console_Open(ESeverityLevel minimum);
    static void Console_Close();

    // Records of at least `minimum` are appended to the file at `path` (UTF-8), each by one write. Replaces
    // a file opened before. False if the file cannot be opened for writing, or is a pipe that nobody reads; a file
    // opened before then stays.
    static bool File_Open(const std::string& path, ESeverityLevel minimum);
    static void File_Close();

    // Why the file opened last did not take a record, or could not be closed: the C library's number of the first
    // failure since it was opened; 0: it took them all.
    static int File_Error();

    // `listener` is called for every record, on the thread that wrote it, under the sink's lock: it must neither write
    // records nor call anything of this class, and what it throws reaches the writer of the record. Returns a number
    // for Listener_Remove; once that has returned, the listener is not called again.
    static int Listener_Add(Listener listener);
    static void Listener_Remove(int listenerId);
};
