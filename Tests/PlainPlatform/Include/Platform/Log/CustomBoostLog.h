// The way to the shared logger.
#pragma once

#include "Platform/Log/SeverityLogger.h"

class CCustomBoostLog
{
public:
    static PlainSeverityLogger& BoostLog_Get(); // lives until the process ends
};
