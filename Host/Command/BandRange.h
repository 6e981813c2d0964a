// Which bands of a job, or of an output, a command is about: the words of --bands. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string>

struct SBandRange
{
    std::int64_t m_first = 0;
    std::int64_t m_last = -1; // -1: to the end

    bool IsAll() const { return m_first == 0 && m_last < 0; }
    bool Has(std::int64_t band) const { return band >= m_first && (m_last < 0 || band <= m_last); }

    // Of `count` bands.
    std::int64_t Last_Get(std::int64_t count) const { return m_last < 0 || m_last >= count ? count - 1 : m_last; }
};

// "3", "3..5", "3..", "..5". Throws CInputError for anything else.
SBandRange BandRange_Parse(const std::string& text);
