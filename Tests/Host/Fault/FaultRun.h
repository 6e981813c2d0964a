// One run of a program with the fault library in front of the C library: how it ended, what it said, what it left.
#pragma once

#include <map>
#include <string>
#include <vector>

struct SFaultRun
{
    int m_status = -1;    // exit status; -1: it did not exit by itself
    int m_signal = 0;     // that ended it
    bool m_bHung = false; // had to be ended, since it took too long
    std::string m_out;
    std::string m_error;
    std::map<std::string, std::string> m_files; // what its folder holds afterwards: names and bytes
    std::map<std::string, long> m_calls;        // of each kind; only of a run that exited
};

// To another user, and to whom it belongs now. False where only the system's administrator may.
bool File_GiveAway(const std::string& path, unsigned owner);
unsigned File_Owner(const std::string& path);

// Runs `words` (the program's path first) in `folder` with FAULT set to `fault`, or unset if that is empty. `scratch`
// is another folder, for the outputs.
SFaultRun Fault_Run(const std::vector<std::string>& words, const std::string& folder, const std::string& scratch,
                    const std::string& fault);
