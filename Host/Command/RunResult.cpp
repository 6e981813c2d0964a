// A run's result as text and as JSON.
#include "Host/Command/RunResult.h"

#include "Host/Command/Progress.h"
#include "Host/ShownText.h"
#include "Host/TextStream.h"

#include <nlohmann/json.hpp>

namespace
{

using CJson = nlohmann::ordered_json;

std::string Json_Text(const CJson& json)
{
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace);
}

CJson Mistakes_ToJson(const std::vector<SMistake>& mistakes)
{
    CJson list = CJson::array();
    for (const SMistake& mistake : mistakes)
    {
        list.push_back({{"File", mistake.m_file},
                        {"Line", mistake.m_place.m_line},
                        {"Column", mistake.m_place.m_column},
                        {"Severity", mistake.m_bWarning ? "warning" : "error"},
                        {"Rule", mistake.m_rule},
                        {"What", mistake.m_what},
                        {"Fix", mistake.m_fix}});
    }
    return list;
}

} // namespace

std::string RunResult_Text(const SRunResult& result)
{
    const double rate = result.m_seconds > 0 ? static_cast<double>(result.m_bytes) / result.m_seconds : 0;
    CTextStream text;
    text.precision(3);
    text << Name_Shown(result.m_output) << ": " << result.m_bands << (result.m_bands == 1 ? " band" : " bands");
    if (result.m_bPart)
    {
        text << " (of the job's " << result.m_firstStep << " to " << result.m_lastStep << ')';
    }
    if (result.m_pages > 1)
    {
        text << (result.m_bPart ? " of a job of " : " of ") << result.m_pages << " pages";
    }
    text << ", " << result.m_lines << " lines, " << result.m_bytes << " bytes of board data\n"
         << "  " << result.m_seconds << " s, " << ByteText_Make(rate) << "/s; the stage was mapping for "
         << result.m_mappingSeconds << " s\n  stalls: " << result.m_inputStalls << " on input ("
         << result.m_inputStallSeconds << " s), " << result.m_outputStalls << " on output ("
         << result.m_outputStallSeconds << " s); peak memory "
         << ByteText_Make(static_cast<double>(result.m_peakMemoryBytes)) << '\n';
    return text.str();
}

std::string RunResult_Json(const SRunResult& result)
{
    return Json_Text({{"Output", result.m_output},
                      {"Format", result.m_format},
                      {"Pages", result.m_pages},
                      {"FirstBand", result.m_firstStep},
                      {"LastBand", result.m_lastStep},
                      {"Bands", result.m_bands},
                      {"Lines", result.m_lines},
                      {"Bytes", result.m_bytes},
                      {"Seconds", result.m_seconds},
                      {"MappingSeconds", result.m_mappingSeconds},
                      {"InputStalls", result.m_inputStalls},
                      {"InputStallSeconds", result.m_inputStallSeconds},
                      {"OutputStalls", result.m_outputStalls},
                      {"OutputStallSeconds", result.m_outputStallSeconds},
                      {"PeakMemoryBytes", result.m_peakMemoryBytes},
                      {"Warnings", Mistakes_ToJson(result.m_warnings)}}) +
           '\n';
}

std::string Mistakes_Json(const std::vector<SMistake>& mistakes)
{
    return Json_Text(Mistakes_ToJson(mistakes));
}
