// The shared logger of this edition: the logging library's own, with the sinks that it has by itself.
#include "Platform/Log/CustomBoostLog.h"
#include "Platform/Log/SeverityLogger.h"

CSeverityLogger& CCustomBoostLog::BoostLog_Get()
{
    static auto& logger = *new CSeverityLogger(); // for as long as the process lives
    return logger;
}
