// A job file that is right, and ways to spoil it, for the job tests.
#pragma once

#include "Host/HostError.h"
#include "Host/Job/JobCheck.h"
#include "Host/Job/JobReader.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

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
MaskCount_1 = 2
MaskCount_2 = 3

[CartInfo]
Nozzles = 400

[[CartInfo.Unit]]
UnitId = 5
Direction = 2
Separation = "page.Cyan.tif"
Name = "Cyan"
UnitPosition = 3
Horizon_1 = 4
Horizon_2 = 6
StripeColor = "Full"

[[CartInfo.Unit]]
UnitId = 15
Separation = "page.Cyan.tif"

[DPConfig]
LineGeneratorCount_Of_DataMap = 7

[InkStripe]
LeftStripeWidth = 40
RightStripeWidth = 24
UnitPitch = 11
UnitPositionCount = 9
StripeLength = 10
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

// A job whose units 0 to 3 stand on a carriage of four; 1 and 3 print stripes only. Four lines to a unit, from line 20.
inline constexpr std::string_view g_stripeJob = R"(Version = 1
[Stage]
Kind = "ink-stripe"
[DPOption]
DataMapStyle = "FramePerPixel"
DataPushStyle = "ByPixel"
PrinterSupportBits = "Multiple"
PrinterDataWidth = 16
[PrintParam]
BitsPerPixel = 1
Bidirectional = true
[InkStripe]
LeftStripeWidth = 40
RightStripeWidth = 40
UnitPitch = 10
UnitPositionCount = 4
StripeLength = 10
[CartInfo]
Nozzles = 12
[[CartInfo.Unit]]
UnitId = 0
Separation = "page.A.tif"

[[CartInfo.Unit]]
UnitId = 1
StripeColor = "Full"

[[CartInfo.Unit]]
UnitId = 2
Separation = "page.B.tif"

[[CartInfo.Unit]]
UnitId = 3
StripeColor = "None"
)";

// The same without a list: all mistakes at once, as an error.
inline SJob JobText_Parse(const std::filesystem::path& file, const std::string& text)
{
    CMistakeList mistakes;
    SJob job = JobText_Parse(file, text, mistakes);
    mistakes.Errors_Throw();
    return job;
}
inline void Job_Check(SJob& job)
{
    CMistakeList mistakes;
    Job_Check(job, mistakes);
    mistakes.Errors_Throw();
}
inline void Job_CheckSeparations(const SJob& job, const std::vector<SSeparationInfo>& separations)
{
    std::vector<SUnitSeparation> found;
    for (const SJobUnit& unit : job.m_units)
    {
        if (unit.HasSeparation() && found.size() < separations.size())
        {
            found.push_back({&unit, 0, separations[found.size()]});
        }
    }
    CMistakeList mistakes;
    Job_CheckSeparations(job, found, mistakes);
    mistakes.Errors_Throw();
}

// What Job_Load makes of a file "job.toml" with this text.
inline SJob Job_Of(const std::string& text)
{
    CMistakeList mistakes;
    SJob job = JobText_Parse("job.toml", text, mistakes);
    Job_Check(job, mistakes);
    mistakes.Errors_Throw();
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
