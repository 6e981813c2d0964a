// The one function behind the log macros, and the only source outside Platform/ that knows the logging library.
#include "KelCommon/KelLog.h"

#include "Platform/Log/CustomBoostLog.h"
#include "Platform/Log/SeverityLogger.h"

#include <boost/log/attributes/named_scope.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/utility/string_literal.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace
{

namespace logging = boost::log;

// The logging library takes scope names as array references only, to make sure that they are literals. Ours are, but
// their array type ends at the macro; it is found again by length. A signature of more than `longest` characters is
// cut.
constexpr std::size_t longest = 511;

template<std::size_t length>
logging::string_literal Literal_Make(const char* text)
{
    return logging::string_literal(*reinterpret_cast<const char(*)[length + 1]>(text));
}

template<std::size_t... lengths>
constexpr auto Makers_Get(std::index_sequence<lengths...> /*lengths*/)
{
    return std::array<logging::string_literal (*)(const char*), sizeof...(lengths)>{&Literal_Make<lengths>...};
}

logging::string_literal Literal(std::string_view text)
{
    static constexpr auto makers = Makers_Get(std::make_index_sequence<longest + 1>());
    return makers[std::min(text.size(), longest)](text.data());
}

} // namespace

void KelLog_Write(const SKelLogSite& site, std::string_view message)
{
    auto& logger = CCustomBoostLog::BoostLog_Get();
    using Scope = logging::attributes::named_scope;
    // What the logging library keeps for each thread is made here, where it may throw: a sentry, which would make it
    // too, may not, and would end the program when there is no memory.
    static_cast<void>(Scope::get_scopes());
    const Scope::sentry scope(Literal(site.function), Literal(site.fileName), static_cast<unsigned>(site.line),
                              logging::attributes::named_scope_entry::function);
    BOOST_LOG_SEV(logger, site.severity) << message;
}
