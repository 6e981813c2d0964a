// The grammar of --bands.
#include "Host/Command/BandRange.h"

#include "Host/HostError.h"

#include <charconv>
#include <system_error>

SBandRange BandRange_Parse(const std::string& text)
{
    const auto Number = [&](const std::string& part, std::int64_t otherwise)
    {
        std::int64_t number = otherwise;
        const char* pEnd = part.data() + part.size();
        const auto parsed = std::from_chars(part.data(), pEnd, number);
        if (!part.empty() && (parsed.ec != std::errc() || parsed.ptr != pEnd || number < 0))
        {
            throw CInputError("--bands: \"" + text + "\" is no range of bands; A..B, A.., ..B or A, from 0");
        }
        return number;
    };
    const auto dots = text.find("..");
    SBandRange range;
    if (dots == std::string::npos)
    {
        range.m_first = Number(text, -1);
        range.m_last = range.m_first;
    }
    else
    {
        range.m_first = Number(text.substr(0, dots), 0);
        range.m_last = Number(text.substr(dots + 2), -1);
    }
    if (range.m_first < 0 || (range.m_last >= 0 && range.m_last < range.m_first))
    {
        throw CInputError("--bands: \"" + text + "\" has no band; A..B counts from 0, and B is not below A");
    }
    return range;
}
