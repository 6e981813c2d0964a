// A manual-reset event: set until it is reset. Its operations are the simulation's; to be destroyed while somebody
// waits is a finding.
#pragma once

class CCustomManualResetEvent
{
public:
    explicit CCustomManualResetEvent(bool);
    CCustomManualResetEvent(const CCustomManualResetEvent&) = delete;
    CCustomManualResetEvent& operator=(const CCustomManualResetEvent&) = delete;
    ~CCustomManualResetEvent();

    bool Wait(unsigned long timeoutMs, int); // true if the event is set
    void Set();
    void Reset();

private:
    void State_Set(bool bSet);

    bool m_bSet = false;
};
