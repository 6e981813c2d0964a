// The shared logger's complete type. Included only by the sources that write to the logger or build its sinks: it
// pulls in the logging library, which takes seconds to compile.
#pragma once

#include "Platform/Log/SeverityLevel.h"
#include "Platform/PlatformExport.h"

#include <boost/log/sources/severity_logger.hpp>

class PLATFORM_API CSeverityLogger : public boost::log::sources::severity_logger_mt<ESeverityLevel>
{
};
