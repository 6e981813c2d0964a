// The one instance of the run-time settings.
#include "Platform/GlobalConfig/DPConfig.h"

CSerialize_DPConfig* GC_DPConfig()
{
    static CSerialize_DPConfig config;
    return &config;
}
