// The thread-status monitor's guard.
#pragma once

// The pipeline's threads by role. The value 8 is a stage that maps unit bands to board bands.
enum ECustomThreadId : int
{
    thread_that_maps = 8,
};

// Marks the calling thread busy from construction to destruction.
class CAutoReleaseThreadBusy
{
public:
    explicit CAutoReleaseThreadBusy(ECustomThreadId id);
    CAutoReleaseThreadBusy(const CAutoReleaseThreadBusy&) = delete;
    CAutoReleaseThreadBusy& operator=(const CAutoReleaseThreadBusy&) = delete;
    ~CAutoReleaseThreadBusy();

private:
    ECustomThreadId m_id;
};
