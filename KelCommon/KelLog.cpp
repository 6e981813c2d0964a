// The one function behind the log macros, and the only source outside Platform/ that knows the logging library.
#include "KelCommon/KelLog.h"

#include "Platform/Log/CustomBoostLog.h"
#include "Platform/Log/SeverityLogger.h"

#include <boost/log/attributes/named_scope.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/utility/string_literal.hpp>

#include <cstring>

namespace
{

namespace logging = boost::log;

// The logging library takes scope names as array references only, to make sure that they are literals. Ours are, but
// their array type ends at the macro: view the pointer as the start of a long literal and keep the part that exists.
logging::string_literal Literal(const char* text, std::size_t length)
{
    constexpr std::size_t longest = 1U << 20;
    const logging::string_literal whole(*reinterpret_cast<const char(*)[longest]>(text));
    return whole.substr(0, length);
}

} // namespace

void KelLog_Write(const SKelLogSite& site, std::string_view message)
{
    auto& logger = CCustomBoostLog::BoostLog_Get();
    using Scope = logging::attributes::named_scope;
    const Scope::sentry scope(Literal(site.function, std::strlen(site.function)),
                              Literal(site.fileName.data(), site.fileName.size()), static_cast<unsigned>(site.line),
                              Scope::value_type::value_type::function);
    BOOST_LOG_SEV(logger, site.severity) << message;
}
