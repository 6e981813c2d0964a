// The shared logger, its sinks and their one line format.
#include "Platform/Log/CustomBoostLog.h"

#include "Platform/Log/SeverityLogger.h"

#include <boost/core/null_deleter.hpp>
#include <boost/log/attributes/clock.hpp>
#include <boost/log/attributes/current_thread_id.hpp>
#include <boost/log/attributes/named_scope.hpp>
#include <boost/log/attributes/value_extraction.hpp>
#include <boost/log/core.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/log/utility/formatting_ostream.hpp>
#include <boost/make_shared.hpp>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>

namespace
{

namespace logging = boost::log;
namespace sinks = boost::log::sinks;
using TextSink = sinks::synchronous_sink<sinks::text_ostream_backend>;
using ScopeList = logging::attributes::named_scope::value_type;

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

ESeverityLevel SeverityOf(const logging::record_view& record)
{
    return logging::extract_or_default<ESeverityLevel>("Severity", record, ESeverityLevel::Debug);
}

// The innermost scope of a record: the one that the log macro opened.
const logging::attributes::named_scope_entry* ScopeOf(const logging::value_ref<ScopeList>& scopes)
{
    return scopes && !scopes->empty() ? &scopes->back() : nullptr;
}

// "12:34:56.789012 ERROR 0x7f.. PrintUnitMap_Factory:88 failure  [static ... Init_DataMap(...)]"
void Format(const logging::record_view& record, logging::formatting_ostream& stream)
{
    if (const auto time = logging::extract<boost::posix_time::ptime>("TimeStamp", record))
    {
        stream << boost::posix_time::to_simple_string(time->time_of_day()) << ' ';
    }
    stream << SeverityName(SeverityOf(record));
    if (const auto id = logging::extract<logging::attributes::current_thread_id::value_type>("ThreadID", record))
    {
        stream << ' ' << *id;
    }
    const auto scopes = logging::extract<ScopeList>("Scope", record);
    const auto* scope = ScopeOf(scopes);
    if (scope != nullptr)
    {
        stream << ' ' << scope->file_name << ':' << scope->line;
    }
    stream << ' ' << logging::extract_or_default<std::string>("Message", record, std::string());
    if (scope != nullptr)
    {
        stream << "  [" << scope->scope_name << ']';
    }
}

// Hands each record to the listeners, one thread at a time.
class CListenerBackend
    : public sinks::basic_sink_backend<sinks::combine_requirements<sinks::synchronized_feeding>::type>
{
public:
    void consume(const logging::record_view& view)
    {
        SLogRecord record;
        record.severity = SeverityOf(view);
        record.message = logging::extract_or_default<std::string>("Message", view, std::string());
        record.time = std::chrono::system_clock::now();
        const auto scopes = logging::extract<ScopeList>("Scope", view);
        if (const auto* scope = ScopeOf(scopes))
        {
            record.function.assign(scope->scope_name.c_str(), scope->scope_name.size());
            record.fileName.assign(scope->file_name.c_str(), scope->file_name.size());
            record.line = static_cast<int>(scope->line);
        }
        for (const auto& [id, listener] : m_listeners)
        {
            listener(record);
        }
    }

    std::map<int, CCustomBoostLog::Listener> m_listeners;
};
using ListenerSink = sinks::synchronous_sink<CListenerBackend>;

boost::shared_ptr<TextSink> MakeTextSink(const boost::shared_ptr<std::ostream>& stream, ESeverityLevel minimum)
{
    auto sink = boost::make_shared<TextSink>();
    sink->locked_backend()->add_stream(stream);
    sink->locked_backend()->auto_flush(true);
    sink->set_formatter(&Format);
    sink->set_filter([minimum](const logging::attribute_value_set& values) {
        const auto severity = logging::extract<ESeverityLevel>("Severity", values);
        return severity && *severity >= minimum;
    });
    return sink;
}

// What is switched on. Owns the logger and takes the sinks out of the logging core when the process ends.
class CLogState
{
public:
    CLogState()
    {
        const auto core = logging::core::get();
        core->add_global_attribute("TimeStamp", logging::attributes::local_clock());
        core->add_global_attribute("ThreadID", logging::attributes::current_thread_id());
        core->add_global_attribute("Scope", logging::attributes::named_scope());
        core->set_logging_enabled(false);
    }

    ~CLogState()
    {
        Replace(m_console, nullptr);
        Replace(m_file, nullptr);
        Replace(m_listenerSink, nullptr);
    }

    CLogState(const CLogState&) = delete;
    CLogState& operator=(const CLogState&) = delete;

    // Puts `sink` in place of `slot`. With no sink left, records are not built at all.
    template <class Sink>
    void Replace(boost::shared_ptr<Sink>& slot, boost::shared_ptr<Sink> sink)
    {
        const auto core = logging::core::get();
        if (slot)
        {
            core->remove_sink(slot);
            slot->flush();
        }
        slot = std::move(sink);
        if (slot)
        {
            core->add_sink(slot);
        }
        core->set_logging_enabled(m_console || m_file || m_listenerSink);
    }

    std::mutex m_lock;
    CSeverityLogger m_logger;
    boost::shared_ptr<TextSink> m_console;
    boost::shared_ptr<TextSink> m_file;
    boost::shared_ptr<ListenerSink> m_listenerSink;
    int m_lastListenerId = 0;
};

CLogState& State()
{
    static CLogState state;
    return state;
}

} // namespace

CSeverityLogger& CCustomBoostLog::BoostLog_Get() { return State().m_logger; }

void CCustomBoostLog::Console_Open(ESeverityLevel minimum)
{
    auto& state = State();
    const std::lock_guard guard(state.m_lock);
    state.Replace(state.m_console,
                  MakeTextSink(boost::shared_ptr<std::ostream>(&std::cerr, boost::null_deleter()), minimum));
}

void CCustomBoostLog::Console_Close()
{
    auto& state = State();
    const std::lock_guard guard(state.m_lock);
    state.Replace(state.m_console, {});
}

bool CCustomBoostLog::File_Open(const std::string& path, ESeverityLevel minimum)
{
    const auto stream = boost::make_shared<std::ofstream>(
        std::filesystem::path(reinterpret_cast<const char8_t*>(path.c_str())), std::ios::app | std::ios::binary);
    if (!stream->is_open())
    {
        return false;
    }
    auto& state = State();
    const std::lock_guard guard(state.m_lock);
    state.Replace(state.m_file, MakeTextSink(stream, minimum));
    return true;
}

void CCustomBoostLog::File_Close()
{
    auto& state = State();
    const std::lock_guard guard(state.m_lock);
    state.Replace(state.m_file, {});
}

int CCustomBoostLog::Listener_Add(Listener listener)
{
    auto& state = State();
    const std::lock_guard guard(state.m_lock);
    const int id = ++state.m_lastListenerId;
    if (!state.m_listenerSink)
    {
        state.Replace(state.m_listenerSink, boost::make_shared<ListenerSink>());
    }
    state.m_listenerSink->locked_backend()->m_listeners.emplace(id, std::move(listener));
    return id;
}

void CCustomBoostLog::Listener_Remove(int listenerId)
{
    auto& state = State();
    const std::lock_guard guard(state.m_lock);
    if (!state.m_listenerSink)
    {
        return;
    }
    bool bEmpty = false;
    {
        const auto backend = state.m_listenerSink->locked_backend();
        backend->m_listeners.erase(listenerId);
        bEmpty = backend->m_listeners.empty();
    }
    if (bEmpty)
    {
        state.Replace(state.m_listenerSink, {});
    }
}
