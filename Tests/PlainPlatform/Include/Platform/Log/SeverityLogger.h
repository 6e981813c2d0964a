// The shared logger's type.
#pragma once

#include "Platform/Log/SeverityLevel.h"

#include <boost/log/sources/severity_logger.hpp>

using PlainSeverityLogger = boost::log::sources::severity_logger_mt<ESeverityLevel>;
