// What this process holds of the system, where the system tells: for tests that show that nothing is left behind.
#pragma once

#if defined(_WIN32)

#include "Platform/Thread/CreateThread.h"

#include <psapi.h>
#include <tlhelp32.h>

class CSystemProbe
{
public:
    static bool IsAvailable() { return HandleCount() > 0; }

    static long ThreadCount()
    {
        const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
        THREADENTRY32 entry = {};
        entry.dwSize = sizeof(entry);
        long count = 0;
        for (BOOL bMore = Thread32First(list, &entry); bMore != 0; bMore = Thread32Next(list, &entry))
        {
            count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
        }
        CloseHandle(list);
        return count;
    }

    static long HandleCount()
    {
        DWORD count = 0;
        return GetProcessHandleCount(GetCurrentProcess(), &count) != 0 ? static_cast<long>(count) : 0;
    }

    // What is promised of the address space, in kilobytes.
    static long AddressSpaceKb()
    {
        PROCESS_MEMORY_COUNTERS counters = {};
        return GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)) != 0
                   ? static_cast<long>(counters.PagefileUsage / 1024)
                   : 0;
    }
};

#else

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

#endif
