// Writes down every wait that the plain edition is asked for while it lives, with its time-out: what a test compares
// needs no clock, and what is wrong by a factor of two is seen at once.
#pragma once

#include "PlainHook.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

class CWaitJournal : private CPlainWaitListener
{
public:
    CWaitJournal() { SPlainHook::waitListener = this; }
    ~CWaitJournal() { SPlainHook::waitListener = nullptr; } // no thread waits any more
    CWaitJournal(const CWaitJournal&) = delete;
    CWaitJournal& operator=(const CWaitJournal&) = delete;

    // How many waits there were.
    std::size_t Count() const
    {
        const std::lock_guard guard(m_lock);
        return m_count;
    }

    // The time-outs of the waits on one event, in order.
    std::vector<unsigned long> Event(const void* event) const
    {
        const std::lock_guard guard(m_lock);
        std::vector<unsigned long> timeouts;
        for (const auto& [waited, timeoutMs] : m_events)
        {
            if (waited == event)
            {
                timeouts.push_back(timeoutMs);
            }
        }
        return timeouts;
    }

    // The different time-outs of all waits on events, of those for the end of the threads of one name, and of one
    // operation of the band FIFOs; in ascending order.
    std::vector<unsigned long> Events() const
    {
        const std::lock_guard guard(m_lock);
        std::vector<unsigned long> timeouts;
        for (const auto& [waited, timeoutMs] : m_events)
        {
            timeouts.push_back(timeoutMs);
        }
        return Distinct(timeouts);
    }
    std::vector<unsigned long> Exits(const std::string& threadName) const { return Named(m_exits, threadName); }
    std::vector<unsigned long> FIFOs(const std::string& operation) const { return Named(m_fifos, operation); }

private:
    using TimeoutsByName = std::map<std::string, std::vector<unsigned long>>;

    void EventWait(const void* event, unsigned long timeoutMs) override
    {
        const std::lock_guard guard(m_lock);
        ++m_count;
        m_events.emplace_back(event, timeoutMs);
    }
    void ExitWait(const std::string& threadName, unsigned timeoutMs) override
    {
        const std::lock_guard guard(m_lock);
        ++m_count;
        m_exits[threadName].push_back(timeoutMs);
    }
    void FIFOWait(const char* operation, unsigned long timeoutMs) override
    {
        const std::lock_guard guard(m_lock);
        ++m_count;
        m_fifos[operation].push_back(timeoutMs);
    }

    std::vector<unsigned long> Named(const TimeoutsByName& named, const std::string& name) const
    {
        const std::lock_guard guard(m_lock);
        const auto found = named.find(name);
        return found == named.end() ? std::vector<unsigned long>() : Distinct(found->second);
    }

    static std::vector<unsigned long> Distinct(std::vector<unsigned long> timeouts)
    {
        std::sort(timeouts.begin(), timeouts.end());
        timeouts.erase(std::unique(timeouts.begin(), timeouts.end()), timeouts.end());
        return timeouts;
    }

    mutable std::mutex m_lock;
    std::size_t m_count = 0;
    std::vector<std::pair<const void*, unsigned long>> m_events;
    TimeoutsByName m_exits;
    TimeoutsByName m_fifos;
};
