// A manual-reset event: set until it is reset. A wait lasts until the event is set or the time is over; nothing else
// ends it.
#pragma once

#include <condition_variable>
#include <mutex>

class CCustomManualResetEvent
{
public:
    explicit CCustomManualResetEvent(bool);
    CCustomManualResetEvent(const CCustomManualResetEvent&) = delete;
    CCustomManualResetEvent& operator=(const CCustomManualResetEvent&) = delete;

    bool Wait(unsigned long timeoutMs, int); // true if the event is set
    void Set();
    void Reset();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bSet = false;
};
