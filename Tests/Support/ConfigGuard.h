// Gives a test a configuration of its own and puts the defaults back afterwards.
#pragma once

#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

class CConfigGuard
{
public:
    // A job of 1-bit pixels into frames of 16 bits, one bit per unit.
    CConfigGuard()
    {
        m_param.m_jobInfo.m_bitsPerPixel = 1;
        m_param.m_dotSizeMode = EDotSizeMode::Small;
        Apply();
    }
    ~CConfigGuard()
    {
        GC_DPOption()->Set(SDPOption{});
        DPD_PrintParam()->Set(SPrintParam{});
    }
    CConfigGuard(const CConfigGuard&) = delete;
    CConfigGuard& operator=(const CConfigGuard&) = delete;

    void Apply()
    {
        GC_DPOption()->Set(m_option);
        DPD_PrintParam()->Set(m_param);
    }

    SDPOption m_option;
    SPrintParam m_param;
};
