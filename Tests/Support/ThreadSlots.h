// The slots of the thread frame: a worker that writes down which of its operations was called, and the call of them all
// by position. For the tests of every class that derives from the frame.
#pragma once

#include "Platform/Thread/TamBaseThread.h"
#include "Tests/Support/VirtualTable.h"

#include <string>
#include <vector>

// Overrides every operation of the frame in `TWorker`; nothing is started.
template<class TWorker>
class CThreadSlots : public TWorker
{
public:
    ~CThreadSlots() override
    {
        if (m_pDestroyed != nullptr)
        {
            *m_pDestroyed = true;
        }
    }
    bool Start(const char* name) override { return Note(std::string("Start ") + name); }
    bool WaitReady() override { return Note("WaitReady"); }
    bool WaitPaused() override { return Note("WaitPaused"); }
    bool WaitExit(unsigned int timeoutMs) override { return Note("WaitExit " + std::to_string(timeoutMs)); }
    void Stop() override { Note("Stop"); }
    void Pause() override { Note("Pause"); }
    void Resume() override { Note("Resume"); }
    bool IsThreadSuccess() override { return Note("IsThreadSuccess"); }

    std::vector<std::string> m_calls;
    bool* m_pDestroyed = nullptr;

protected:
    bool OneLoop() override { return Note("OneLoop"); }
    bool Prepare() override { return Note("Prepare"); }
    void Finally() override { Note("Finally"); }
    bool CustomCreateThread() override { return Note("CustomCreateThread"); }

    bool Note(const std::string& call)
    {
        m_calls.push_back(call);
        return true;
    }
};

inline const std::vector<std::string> threadSlotNames = {"Start n", "WaitReady", "WaitPaused", "WaitExit 7",
                                                         "Stop",    "Pause",     "Resume",     "IsThreadSuccess",
                                                         "OneLoop", "Prepare",   "Finally",    "CustomCreateThread"};

// Calls the twelve slots behind the destructor's, in order.
inline void ThreadSlots_Call(TamBaseThread& worker)
{
    Slot_Call<bool>(&worker, 1, static_cast<const char*>("n"));
    Slot_Call<bool>(&worker, 2);
    Slot_Call<bool>(&worker, 3);
    Slot_Call<bool>(&worker, 4, 7U);
    Slot_Call<void>(&worker, 5);
    Slot_Call<void>(&worker, 6);
    Slot_Call<void>(&worker, 7);
    Slot_Call<bool>(&worker, 8);
    Slot_Call<bool>(&worker, 9);
    Slot_Call<bool>(&worker, 10);
    Slot_Call<void>(&worker, 11);
    Slot_Call<bool>(&worker, 12);
}
