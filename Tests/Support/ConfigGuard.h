// Gives a test a configuration of its own and puts the defaults back afterwards.
#pragma once

#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

#include <map>
#include <string>

class CConfigGuard
{
public:
    // A job of 1-bit pixels into frames of 16 bits, one bit per unit; no carriage, no colour groups, no stripes.
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
        GC_CartInfo()->Set(SCartInfo{});
        GC_ColorGroup()->Set({});
        GC_DPConfig()->Set(SDPConfig{});
    }
    CConfigGuard(const CConfigGuard&) = delete;
    CConfigGuard& operator=(const CConfigGuard&) = delete;

    void Apply()
    {
        GC_DPOption()->Set(m_option);
        DPD_PrintParam()->Set(m_param);
        GC_CartInfo()->Set(m_cart);
        GC_ColorGroup()->Set(m_colorGroups);
        GC_DPConfig()->Set(m_config);
    }

    SDPOption m_option;
    SPrintParam m_param;
    SCartInfo m_cart;
    std::map<std::string, CColorGroupInfo> m_colorGroups; // by key
    SDPConfig m_config;
};
