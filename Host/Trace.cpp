// Events, kept until the main thread writes them.
#include "Host/Trace.h"

#include "Host/HostError.h"
#include "Host/Output/ByteSink.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

namespace
{

std::string Json_Text(const std::string& text)
{
    return nlohmann::json(text).dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

// Microseconds, exact.
std::string Duration_Text(std::chrono::nanoseconds duration)
{
    constexpr int perMicrosecond = 1000;
    std::array<char, 40> text = {};
    std::snprintf(text.data(), text.size(), "%lld.%03d", static_cast<long long>(duration.count() / perMicrosecond),
                  static_cast<int>(duration.count() % perMicrosecond));
    return text.data();
}

} // namespace

CTrace::CTrace(const std::filesystem::path& file, const std::string& process)
    : m_start(Now()), m_file(std::make_unique<COutputFile>(file, ESpecialFile::WriteInPlace))
{
    m_text = "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n";
    Line_Write(R"({"ph":"M","pid":1,"tid":0,"name":"process_name","args":{"name":)" + Json_Text(process) + "}}");
}

CTrace::~CTrace() = default;

int CTrace::Track_Add(const std::string& name)
{
    m_trackNames.push_back(Json_Text(name));
    const auto track = static_cast<int>(m_trackNames.size());
    const std::string head = R"({"ph":"M","pid":1,"tid":)" + std::to_string(track);
    Line_Write(head + R"(,"name":"thread_name","args":{"name":)" + m_trackNames.back() + "}}");
    Line_Write(head + R"(,"name":"thread_sort_index","args":{"sort_index":)" + std::to_string(track) + "}}");
    return track;
}

int CTrace::Counter_Add(const std::string& name)
{
    m_counterNames.push_back(Json_Text("queue " + name));
    const auto counter = static_cast<int>(m_counterNames.size()) - 1;
    {
        const std::lock_guard guard(m_lock);
        m_counters.push_back(0);
    }
    Counter_Change(counter, 0);
    return counter;
}

void CTrace::Event_Add(const SEvent& event) noexcept
{
    try
    {
        m_events.push_back(event);
    }
    catch (const std::exception&)
    {
        m_bLost = true;
    }
}

void CTrace::Span_Add(int track, const char* pName, CTime begin, CTime end,
                      std::initializer_list<STraceArgument> arguments) noexcept
{
    SEvent event;
    event.m_pName = pName;
    event.m_track = track;
    event.m_begin = begin;
    event.m_end = end;
    std::copy_n(arguments.begin(), std::min(arguments.size(), mostArguments), event.m_arguments.begin());
    const std::lock_guard guard(m_lock);
    Event_Add(event);
}

void CTrace::Stall_Add(int track, int counter, CTime begin, CTime end) noexcept
{
    SEvent event;
    event.m_pName = "stall";
    event.m_track = track;
    event.m_counter = counter;
    event.m_begin = begin;
    event.m_end = end;
    const std::lock_guard guard(m_lock);
    Event_Add(event);
}

void CTrace::Counter_Change(int counter, std::int64_t change) noexcept
{
    SEvent event;
    event.m_track = counter;
    const std::lock_guard guard(m_lock);
    std::int64_t& number = m_counters[static_cast<std::size_t>(counter)];
    number += change;
    event.m_arguments[0] = {"bands", number};
    event.m_begin = Now(); // under the lock: the numbers of a counter stand in the order of their times
    event.m_end = event.m_begin;
    Event_Add(event);
}

std::string CTrace::Time_Text(CTime time) const
{
    return Duration_Text(std::chrono::nanoseconds(time - m_start));
}

std::string CTrace::Event_Text(const SEvent& event) const
{
    if (event.m_pName == nullptr)
    {
        return R"({"ph":"C","pid":1,"tid":0,"name":)" + m_counterNames[static_cast<std::size_t>(event.m_track)] +
               ",\"ts\":" + Time_Text(event.m_begin) + R"(,"args":{"bands":)" +
               std::to_string(event.m_arguments[0].m_value) + "}}";
    }
    std::string text = R"({"ph":"X","pid":1,"tid":)" + std::to_string(event.m_track) + R"(,"name":")" + event.m_pName +
                       R"(","ts":)" + Time_Text(event.m_begin) +
                       ",\"dur\":" + Duration_Text(std::chrono::nanoseconds(event.m_end - event.m_begin)) +
                       ",\"args\":{";
    if (event.m_counter >= 0)
    {
        text += "\"on\":" + m_counterNames[static_cast<std::size_t>(event.m_counter)];
    }
    for (const STraceArgument& argument : event.m_arguments)
    {
        if (argument.m_pName != nullptr)
        {
            text += std::string(text.back() == '{' ? "\"" : ",\"") + argument.m_pName +
                    "\":" + std::to_string(argument.m_value);
        }
    }
    return text + "}}";
}

void CTrace::Line_Write(const std::string& text)
{
    m_text += (std::exchange(m_bFirst, false) ? "" : ",\n") + text;
}

void CTrace::Write()
{
    std::vector<SEvent> events;
    {
        const std::lock_guard guard(m_lock);
        events.swap(m_events);
    }
    for (const SEvent& event : events)
    {
        Line_Write(Event_Text(event));
    }
    m_file->Write(m_text.data(), m_text.size());
    m_text.clear();
}

void CTrace::Finish()
{
    Write();
    if (const std::lock_guard guard(m_lock); m_bLost)
    {
        throw CRunError(m_file->Name() + ": there was no memory for some events of the trace");
    }
    m_text = "\n]}\n";
    m_file->Write(m_text.data(), m_text.size());
    m_file->Finish();
}
