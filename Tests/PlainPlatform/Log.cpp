// The shared logger, and a sink that hands its records to a listener.
#include "Platform/Log/CustomBoostLog.h"

#include "PlainLog.h"

#include <boost/log/attributes/named_scope.hpp>
#include <boost/log/attributes/value_extraction.hpp>
#include <boost/log/core.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/make_shared.hpp>

#include <utility>

namespace
{

namespace logging = boost::log;
namespace sinks = boost::log::sinks;

class CListenerBackend : public sinks::basic_sink_backend<sinks::synchronized_feeding>
{
public:
    explicit CListenerBackend(std::function<void(const SPlainLogRecord&)> listener) : m_listener(std::move(listener)) {}

    void consume(const logging::record_view& view)
    {
        SPlainLogRecord record;
        record.severity = logging::extract_or_default<ESeverityLevel>("Severity", view, severity_of_detail);
        record.message = logging::extract_or_default<std::string>("Message", view, std::string());
        const auto scopes = logging::extract<logging::attributes::named_scope::value_type>("Scope", view);
        if (scopes && !scopes->empty())
        {
            const auto& scope = scopes->back();
            record.function.assign(scope.scope_name.c_str(), scope.scope_name.size());
            record.fileName.assign(scope.file_name.c_str(), scope.file_name.size());
            record.line = static_cast<int>(scope.line);
        }
        m_listener(record);
    }

private:
    std::function<void(const SPlainLogRecord&)> m_listener;
};

// The core that all records go through; quiet at start.
boost::shared_ptr<logging::core> Core_Get()
{
    static const auto core = []
    {
        auto made = logging::core::get();
        made->add_global_attribute("Scope", logging::attributes::named_scope());
        made->set_logging_enabled(false);
        return made;
    }();
    return core;
}

} // namespace

PlainSeverityLogger& CCustomBoostLog::BoostLog_Get()
{
    static auto& logger = *[]
    {
        Core_Get();
        return new PlainSeverityLogger(); // workers may write while the process ends
    }();
    return logger;
}

void PlainLog_CapacityRefused(int capacity)
{
    const logging::attributes::named_scope::sentry scope("CBandDataFIFO_S(int)", "KelThreadPtrFIFO_T", 64);
    BOOST_LOG_SEV(CCustomBoostLog::BoostLog_Get(), severity_of_a_failure)
        << "Argument is invalid. bufferLen = " << capacity;
}

void PlainLog_Listen(std::function<void(const SPlainLogRecord&)> listener)
{
    const auto core = Core_Get();
    const bool bListens = static_cast<bool>(listener);
    core->set_logging_enabled(false);
    core->remove_all_sinks();
    if (bListens)
    {
        core->add_sink(boost::make_shared<sinks::synchronous_sink<CListenerBackend>>(
            boost::make_shared<CListenerBackend>(std::move(listener))));
        core->set_logging_enabled(true);
    }
}
