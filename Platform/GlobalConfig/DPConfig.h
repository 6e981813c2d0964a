// The data path's run-time settings of this machine. Set by the host, read from any thread.
#pragma once

#include "Platform/PlatformExport.h"

#include <atomic>

struct SDPConfig
{
    int m_lineGeneratorCount_Of_DataMap = 1; // line-generator threads per board band
};

class PLATFORM_API CSerialize_DPConfig
{
public:
    // Replaces all settings.
    void Set(const SDPConfig& config) { m_lineGeneratorCount = config.m_lineGeneratorCount_Of_DataMap; }

    int LineGeneratorCount_Of_DataMap_Get() const { return m_lineGeneratorCount; }

private:
    std::atomic<int> m_lineGeneratorCount{SDPConfig{}.m_lineGeneratorCount_Of_DataMap};
};

// The process's settings; never null, never deleted.
PLATFORM_API CSerialize_DPConfig* GC_DPConfig();
