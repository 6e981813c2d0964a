// The thread-status monitor: who is busy, and for how long it has been.
//
// A thread marks itself busy for a scope under a well-known identity; anybody may ask. Counting costs two clock reads
// and a few atomic operations per scope; no locks.
#pragma once

#include "Platform/PlatformExport.h"

#include <chrono>
#include <cstdint>

// The pipeline's threads by role. The numbers are shared with the monitor's displays.
enum class ECustomThreadId : std::int32_t
{
    UnitData2BoardData = 8, // a stage that maps unit bands to board bands
};

class PLATFORM_API CThreadStatusMonitor
{
public:
    // How many scopes of this identity are open now.
    static int BusyCount_Get(ECustomThreadId id);

    // The time that closed scopes of this identity have taken in all.
    static std::chrono::nanoseconds BusyTime_Get(ECustomThreadId id);
};

// Marks the calling thread busy from construction to destruction.
class PLATFORM_API CAutoReleaseThreadBusy
{
public:
    explicit CAutoReleaseThreadBusy(ECustomThreadId id);
    ~CAutoReleaseThreadBusy();
    CAutoReleaseThreadBusy(const CAutoReleaseThreadBusy&) = delete;
    CAutoReleaseThreadBusy& operator=(const CAutoReleaseThreadBusy&) = delete;

private:
    ECustomThreadId m_id;
    std::chrono::steady_clock::time_point m_begin;
};
