// A job file that is right, and ways to spoil it, for the job tests.
#pragma once

#include "Host/HostError.h"
#include "Host/Job/JobCheck.h"
#include "Host/Job/JobReader.h"

#include <stdexcept>
#include <string>
#include <string_view>

// Every key there is, with every value other than its default.
inline constexpr std::string_view g_fullJob = R"(Version = 1

[Stage]
Kind = "base"
SkipBlank = true
InputBands = 8

[DPOption]
DataMapStyle = "FramePerPixel"
DataPushStyle = "ByPixel"
PrinterSupportBits = "TwoBit"
PrinterDataWidth = 32

[PrintParam]
DotSizeMode = "Big"
BitsPerPixel = 1
AlignByteCountPerLine = 4
Bidirectional = true

[CartInfo]
Nozzles = 400

[[CartInfo.Unit]]
UnitId = 5
Direction = 2
Separation = "page.Cyan.tif"
Name = "Cyan"

[[CartInfo.Unit]]
UnitId = 15
Separation = "page.Cyan.tif"
)";

// Only what must be there.
inline constexpr std::string_view g_smallJob = R"(Version = 1
[DPOption]
DataMapStyle = "FramePerPixel"
PrinterSupportBits = "OneBit"
PrinterDataWidth = 16
[PrintParam]
BitsPerPixel = 1
[CartInfo]
Nozzles = 400
[[CartInfo.Unit]]
UnitId = 0
Separation = "page.tif"
)";

// The text with its one `part` replaced.
inline std::string Replaced(std::string_view text, const std::string& part, const std::string& other)
{
    std::string result(text);
    const std::size_t at = result.find(part);
    if (at == std::string::npos || result.find(part, at + 1) != std::string::npos)
    {
        throw std::logic_error("not exactly one \"" + part + "\" in the job");
    }
    return result.replace(at, part.size(), other);
}

// What Job_Load makes of a file "job.toml" with this text.
inline SJob Job_Of(const std::string& text)
{
    SJob job = JobText_Parse("job.toml", text);
    Job_Check(job);
    return job;
}

// The error that the text leads to; "no error".
inline std::string JobError_Of(const std::string& text)
{
    try
    {
        Job_Of(text);
    }
    catch (const CInputError& error)
    {
        return error.what();
    }
    return "no error";
}
