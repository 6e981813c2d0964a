// Records what the threads of a run do and when, in Chrome's trace format, which Perfetto and chrome://tracing show as
// a time line. Docs/trace.md has the names of the events.
//
// The convert command makes one if the user asks for it; the threads of the run add events to it, and the main thread
// takes them to the file now and then, so that memory holds the events of a moment only. Without a trace a thread has
// a null pointer and pays for looking at it. Adding never throws: what there is no memory for is lost, and said in the
// end.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class COutputFile;

struct STraceArgument
{
    const char* m_pName = nullptr; // lives as long as the program
    std::int64_t m_value = 0;
};

class CTrace
{
public:
    using CTime = std::chrono::steady_clock::time_point;
    static CTime Now() { return std::chrono::steady_clock::now(); }

    // The trace goes to `file` in Finish; without it nothing is left. Throws CInputError if the file cannot be written.
    CTrace(const std::filesystem::path& file, const std::string& process);
    ~CTrace();
    CTrace(const CTrace&) = delete;
    CTrace& operator=(const CTrace&) = delete;

    // The main thread, before the threads that use them: a line of the picture, and a number drawn over the time. The
    // name is UTF-8.
    int Track_Add(const std::string& name);
    int Counter_Add(const std::string& name);

    // Any thread. What went on from `begin` to `end`; the name lives as long as the program. Events of one track are of
    // one thread, and lie inside each other or apart.
    void Span_Add(int track, const char* pName, CTime begin, CTime end,
                  std::initializer_list<STraceArgument> arguments) noexcept;

    // The same with the queue that was waited for, as the counter says it.
    void Stall_Add(int track, int counter, CTime begin, CTime end) noexcept;

    // Any thread. Raises or lowers the number.
    void Counter_Change(int counter, std::int64_t change) noexcept;

    // The main thread. Takes what was added to the file; throws CRunError if it cannot be written.
    void Write();

    // The same, and completes the file. When no other thread adds any more.
    void Finish();

private:
    static constexpr std::size_t mostArguments = 6;

    struct SEvent
    {
        const char* m_pName = nullptr; // null: a counter's number, in the first argument
        int m_track = 0;               // or the counter
        int m_counter = -1;            // of a stall
        CTime m_begin;
        CTime m_end;
        std::array<STraceArgument, mostArguments> m_arguments;
    };

    void Event_Add(const SEvent& event) noexcept;
    std::string Event_Text(const SEvent& event) const;
    void Line_Write(const std::string& text);
    std::string Time_Text(CTime time) const;

    CTime m_start;
    std::unique_ptr<COutputFile> m_file;
    std::vector<std::string> m_trackNames;   // as JSON
    std::vector<std::string> m_counterNames; // as JSON
    std::string m_text;                      // not written yet
    bool m_bFirst = true;                    // no line was written

    std::mutex m_lock; // guards what follows
    std::vector<SEvent> m_events;
    std::vector<std::int64_t> m_counters;
    bool m_bLost = false; // an event, for want of memory
};

// A queue of bands, whose length is drawn if there is a trace.
struct STraceQueue
{
    CTrace* m_pTrace = nullptr;
    int m_counter = -1;

    void Change(std::int64_t change) const
    {
        if (m_pTrace != nullptr)
        {
            m_pTrace->Counter_Change(m_counter, change);
        }
    }
};

// A thread of the run; draws only if there is a trace.
struct STraceTrack
{
    CTrace* m_pTrace = nullptr;
    int m_track = 0;

    bool IsOn() const { return m_pTrace != nullptr; }
    CTrace::CTime Now() const { return IsOn() ? CTrace::Now() : CTrace::CTime(); }

    // From `begin`, which Now gave, until now.
    void Span_Add(const char* pName, CTrace::CTime begin, std::initializer_list<STraceArgument> arguments) const
    {
        if (IsOn())
        {
            m_pTrace->Span_Add(m_track, pName, begin, CTrace::Now(), arguments);
        }
    }

    void Stall_Add(const STraceQueue& queue, CTrace::CTime begin, CTrace::CTime end) const
    {
        if (IsOn())
        {
            m_pTrace->Stall_Add(m_track, queue.m_counter, begin, end);
        }
    }

    // Runs `action` and draws it as a stall on `queue` if `count`, a number of stalls, grew meanwhile.
    template<class Action, class Count>
    auto Stall_Watch(const STraceQueue& queue, Action action, Count count) const
    {
        if (!IsOn())
        {
            return action();
        }
        const auto before = count();
        const CTrace::CTime begin = CTrace::Now();
        const auto result = action();
        if (count() != before)
        {
            Stall_Add(queue, begin, CTrace::Now());
        }
        return result;
    }
};
