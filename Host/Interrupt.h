// Ctrl-C as a flag: the command asks between its steps and winds down in order.
#pragma once

// While it lives, an interrupt, a request to terminate or a terminal that is closed only sets the flag. The process
// that has not wound down within a second after that, since something does not answer, is ended all the same; a second
// request ends it at once. One at a time; created on the main thread.
class CInterrupt
{
public:
    // For a process that has to be ended: its exit status, and a line for the user that lives as long as the program.
    CInterrupt(int exitStatus, const char* pText);
    ~CInterrupt();
    CInterrupt(const CInterrupt&) = delete;
    CInterrupt& operator=(const CInterrupt&) = delete;

    // Any thread.
    static bool IsRequested();
};
