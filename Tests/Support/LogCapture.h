// Collects the log records that are written while it lives, for tests that assert on them. Records of any thread.
#pragma once

#include "Tests/Support/PlatformSetup.h"

#include <mutex>
#include <string>
#include <vector>

class CLogCapture
{
public:
    CLogCapture()
    {
        m_listenerId = LogListener_Add(
            [this](const SLogEntry& record)
            {
                const std::lock_guard guard(m_lock);
                m_records.push_back(record);
            });
    }
    ~CLogCapture() { LogListener_Remove(m_listenerId); }
    CLogCapture(const CLogCapture&) = delete;
    CLogCapture& operator=(const CLogCapture&) = delete;

    std::vector<SLogEntry> Records() const
    {
        const std::lock_guard guard(m_lock);
        return m_records;
    }

    // "2 failure @PrintUnitMap_Factory" for each record, for whole-sequence comparisons that leave lines open.
    std::vector<std::string> Summary() const
    {
        std::vector<std::string> summary;
        for (const auto& record : Records())
        {
            summary.push_back(std::to_string(static_cast<int>(record.severity)) + ' ' + record.message + " @" +
                              record.fileName);
        }
        return summary;
    }

    // The same with ":line".
    std::vector<std::string> SummaryWithLines() const
    {
        std::vector<std::string> summary;
        for (const auto& record : Records())
        {
            summary.push_back(std::to_string(static_cast<int>(record.severity)) + ' ' + record.message + " @" +
                              record.fileName + ':' + std::to_string(record.line));
        }
        return summary;
    }

private:
    mutable std::mutex m_lock;
    std::vector<SLogEntry> m_records;
    int m_listenerId = 0;
};
