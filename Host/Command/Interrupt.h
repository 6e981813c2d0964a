// Ctrl-C as a flag: the command asks between its steps and winds down in order.
#pragma once

// While it lives, an interrupt, a request to terminate or a terminal that is closed only sets the flag. A second one,
// from somebody who does not want to wait, ends the process at once, as without this class. One at a time; created on
// the main thread.
class CInterrupt
{
public:
    CInterrupt();
    ~CInterrupt();
    CInterrupt(const CInterrupt&) = delete;
    CInterrupt& operator=(const CInterrupt&) = delete;

    static bool IsRequested();
};
