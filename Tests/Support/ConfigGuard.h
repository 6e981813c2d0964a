// Gives a test a configuration of its own and puts the defaults back afterwards. On any edition of the platform.
#pragma once

#include "Tests/Support/PlatformSetup.h"

#include <map>
#include <string>

class CConfigGuard
{
public:
    // A job of 1-bit pixels into frames of 16 bits, one bit per unit; no carriage, no colour groups, no stripes.
    CConfigGuard()
    {
        m_param.m_jobInfo.m_bitsPerPixel = 1;
        m_param.m_dotSizeMode = SDotSize::Small;
        Apply();
    }
    ~CConfigGuard()
    {
        Platform_Set(SOptionSetup{});
        Platform_Set(SPrintSetup{});
        Platform_Set(SCartSetup{});
        Platform_Set(std::map<std::string, SGroupSetup>{});
        Platform_Set(SConfigSetup{});
    }
    CConfigGuard(const CConfigGuard&) = delete;
    CConfigGuard& operator=(const CConfigGuard&) = delete;

    void Apply()
    {
        Platform_Set(m_option);
        Platform_Set(m_param);
        Platform_Set(m_cart);
        Platform_Set(m_colorGroups);
        Platform_Set(m_config);
    }

    SOptionSetup m_option;
    SPrintSetup m_param;
    SCartSetup m_cart;
    std::map<std::string, SGroupSetup> m_colorGroups; // by name
    SConfigSetup m_config;
};
