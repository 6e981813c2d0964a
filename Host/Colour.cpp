// The sequences, and who gets them.
#include "Host/Colour.h"

#include "Platform/Helper/ProcessHelper.h"

#include <cstdlib>
#include <string_view>

namespace
{

std::string_view Environment_Get(const char* pName)
{
    const char* pValue = std::getenv(pName);
    return pValue == nullptr ? "" : pValue;
}

} // namespace

std::string Colour_OfErrors(const std::string& text, EColour colour)
{
    if (!CProcessHelper::IsErrorTerminal() || !Environment_Get("NO_COLOR").empty() || Environment_Get("TERM") == "dumb")
    {
        return text;
    }
    return (colour == EColour::Error ? "\x1b[31m" : "\x1b[33m") + text + "\x1b[0m";
}
