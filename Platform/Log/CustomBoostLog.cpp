// The shared logger, and the one sink that takes its records to the console, the file and the listeners.
#include "Platform/Log/CustomBoostLog.h"

#include "Platform/Helper/FileWriter.h"
#include "Platform/Log/SeverityLogger.h"

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/log/attributes/clock.hpp>
#include <boost/log/attributes/current_thread_id.hpp>
#include <boost/log/attributes/named_scope.hpp>
#include <boost/log/attributes/value_extraction.hpp>
#include <boost/log/core.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <utility>

namespace
{

namespace logging = boost::log;
namespace sinks = boost::log::sinks;

// The minimum of a place that takes no record at all.
constexpr int nothing = std::numeric_limits<int>::max();

const char* SeverityName(ESeverityLevel severity)
{
    switch (severity)
    {
    case ESeverityLevel::Debug:
        return "debug";
    case ESeverityLevel::Info:
        return "info ";
    case ESeverityLevel::Error:
        return "ERROR";
    }
    return "?    ";
}

// The record's own fields; its scope is the innermost one, which the log macro opened.
SLogRecord Record_Make(const logging::record_view& view)
{
    using ScopeList = logging::attributes::named_scope::value_type;
    SLogRecord record;
    record.time = std::chrono::system_clock::now();
    record.severity = logging::extract_or_default<ESeverityLevel>("Severity", view, ESeverityLevel::Debug);
    record.message = logging::extract_or_default<std::string>("Message", view, std::string());
    const auto scopes = logging::extract<ScopeList>("Scope", view);
    if (scopes && !scopes->empty())
    {
        const auto& scope = scopes->back();
        record.function.assign(scope.scope_name.c_str(), scope.scope_name.size());
        record.fileName.assign(scope.file_name.c_str(), scope.file_name.size());
        record.line = static_cast<int>(scope.line);
    }
    return record;
}

// "12:34:56.789012 ", local time.
std::string TimeText(const logging::record_view& view)
{
    const auto time = logging::extract<boost::posix_time::ptime>("TimeStamp", view);
    if (!time)
    {
        return {};
    }
    const auto ofDay = time->time_of_day();
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d.%06d ", static_cast<int>(ofDay.hours()),
                  static_cast<int>(ofDay.minutes()), static_cast<int>(ofDay.seconds()),
                  static_cast<int>(ofDay.total_microseconds() % 1'000'000));
    return text.data();
}

// "12:34:56.789012 ERROR 0x7f.. PrintUnitMap_Factory:88 failure  [static ... Init_DataMap(...)]"
std::string Line_Make(const logging::record_view& view, const SLogRecord& record)
{
    std::ostringstream line;
    line << TimeText(view) << SeverityName(record.severity);
    if (const auto id = logging::extract<logging::attributes::current_thread_id::value_type>("ThreadID", view))
    {
        line << ' ' << *id;
    }
    if (!record.fileName.empty())
    {
        line << ' ' << record.fileName << ':' << record.line;
    }
    line << ' ' << record.message;
    if (!record.function.empty())
    {
        line << "  [" << record.function << ']';
    }
    line << '\n';
    return line.str();
}

// Takes each record to every place that wants it, one thread at a time. One sink for all places, and for as long as the
// process lives: opening, changing or closing one place can then not lose a record for another.
class CRecordBackend : public sinks::basic_sink_backend<sinks::combine_requirements<sinks::synchronized_feeding>::type>
{
public:
    void consume(const logging::record_view& view)
    {
        const SLogRecord record = Record_Make(view);
        const int severity = static_cast<int>(record.severity);
        if (severity >= std::min(m_consoleMinimum, m_fileMinimum))
        {
            Line_Write(Line_Make(view, record), severity);
        }
        for (const auto& [id, listener] : m_listeners)
        {
            listener(record);
        }
    }

    // The lowest severity that any place wants.
    int Minimum() const { return m_listeners.empty() ? std::min(m_consoleMinimum, m_fileMinimum) : 0; }

    int m_consoleMinimum = nothing;
    int m_fileMinimum = nothing;
    std::unique_ptr<CFileWriter> m_file; // unbuffered: every record is one write of the system's
    int m_fileError = 0;                 // the first
    std::map<int, CCustomBoostLog::Listener> m_listeners;
    int m_lastListenerId = 0;

private:
    void Line_Write(const std::string& line, int severity)
    {
        bool bConsole = severity >= m_consoleMinimum;
        if (severity >= m_fileMinimum)
        {
            const auto noWaiting = [] { return true; };
            const int error = m_file->Write(line.data(), line.size(), noWaiting);
            m_fileError = m_fileError == 0 ? error : m_fileError;
            bConsole = bConsole || error != 0; // it is not lost; the next record tries again
        }
        if (bConsole && !std::cerr.write(line.data(), static_cast<std::streamsize>(line.size())))
        {
            std::cerr.clear();
        }
    }
};

// The logger and its sink.
class CLogState
{
public:
    CLogState()
    {
        const auto core = logging::core::get();
        core->add_global_attribute("TimeStamp", logging::attributes::local_clock());
        core->add_global_attribute("ThreadID", logging::attributes::current_thread_id());
        core->add_global_attribute("Scope", logging::attributes::named_scope());
        m_sink->set_filter(
            [this](const logging::attribute_value_set& values)
            {
                const auto severity = logging::extract<ESeverityLevel>("Severity", values);
                return severity && static_cast<int>(*severity) >= m_minimum;
            });
        core->add_sink(m_sink);
    }

    // Changes the places under the sink's lock: no record is under way meanwhile.
    template<class Change>
    void Places_Change(Change change)
    {
        const auto backend = m_sink->locked_backend();
        change(*backend);
        m_minimum = backend->Minimum();
    }

    CSeverityLogger m_logger;

private:
    boost::shared_ptr<sinks::synchronous_sink<CRecordBackend>> m_sink =
        boost::make_shared<sinks::synchronous_sink<CRecordBackend>>();
    std::atomic<int> m_minimum{nothing};
};

CLogState& State()
{
    static auto& state = *new CLogState; // never destroyed: the last object of the process may still write a record
    return state;
}

} // namespace

CSeverityLogger& CCustomBoostLog::BoostLog_Get()
{
    return State().m_logger;
}

void CCustomBoostLog::Console_Open(ESeverityLevel minimum)
{
    State().Places_Change([&](CRecordBackend& places) { places.m_consoleMinimum = static_cast<int>(minimum); });
}

void CCustomBoostLog::Console_Close()
{
    State().Places_Change([](CRecordBackend& places) { places.m_consoleMinimum = nothing; });
}

bool CCustomBoostLog::File_Open(const std::string& path, ESeverityLevel minimum)
{
    auto file = std::make_unique<CFileWriter>();
    if (file->Append_To(path) != 0)
    {
        return false;
    }
    State().Places_Change(
        [&](CRecordBackend& places)
        {
            places.m_file = std::move(file);
            places.m_fileError = 0;
            places.m_fileMinimum = static_cast<int>(minimum);
        });
    return true;
}

void CCustomBoostLog::File_Close()
{
    State().Places_Change(
        [](CRecordBackend& places)
        {
            const int error = places.m_file == nullptr ? 0 : places.m_file->Place();
            places.m_fileError = places.m_fileError == 0 ? error : places.m_fileError;
            places.m_file.reset();
            places.m_fileMinimum = nothing;
        });
}

int CCustomBoostLog::File_Error()
{
    int error = 0;
    State().Places_Change([&](const CRecordBackend& places) { error = places.m_fileError; });
    return error;
}

int CCustomBoostLog::Listener_Add(Listener listener)
{
    int id = 0;
    State().Places_Change(
        [&](CRecordBackend& places)
        {
            id = ++places.m_lastListenerId;
            places.m_listeners.emplace(id, std::move(listener));
        });
    return id;
}

void CCustomBoostLog::Listener_Remove(int listenerId)
{
    State().Places_Change([&](CRecordBackend& places) { places.m_listeners.erase(listenerId); });
}
