// What this process holds of the system, where the system tells: for tests that show that nothing is left behind.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

class CSystemProbe
{
public:
    // Whether the system tells.
    static bool IsAvailable() { return std::filesystem::exists("/proc/self/task"); }

    static long ThreadCount() { return Entries("/proc/self/task"); }
    static long HandleCount() { return Entries("/proc/self/fd"); }

    // The address space in use, in kilobytes: stacks that nobody freed show in it.
    static long AddressSpaceKb()
    {
        std::ifstream status("/proc/self/status");
        std::string word;
        while (status >> word && word != "VmSize:")
        {
        }
        long kilobytes = 0;
        status >> kilobytes;
        return kilobytes;
    }

private:
    static long Entries(const char* folder)
    {
        const std::filesystem::directory_iterator entries(folder);
        return static_cast<long>(std::distance(begin(entries), end(entries)));
    }
};
