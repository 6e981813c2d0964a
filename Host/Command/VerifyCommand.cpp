// The command verify.
#include "Host/Command/VerifyCommand.h"

#include "Host/Colour.h"
#include "Host/Command/Answer.h"
#include "Host/Command/Progress.h"
#include "Host/Command/Verification.h"
#include "Host/HostError.h"
#include "Host/Interrupt.h"
#include "Host/PathText.h"
#include "Host/TextStream.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iostream>
#include <iterator>

namespace
{

using CJson = nlohmann::ordered_json;

constexpr std::int64_t usualBits = 8; // explained one by one
constexpr std::size_t mostShown = 40; // differences in the text; the JSON has more
constexpr std::array<const char*, g_modelAreaCount> areaNames = {
    "on the page", "below the page",  "in the first zone", "in the last zone",
    "in margins",  "in left stripes", "in right stripes",  "where the unit prints nothing"};

std::string Bits_Text(std::int64_t count)
{
    return std::to_string(count) + (count == 1 ? " bit" : " bits");
}

std::string UnitDifference_Text(const SUnitDifference& unit, const SBoardInfo& info)
{
    const auto found = std::ranges::find(info.m_units, unit.m_unitId, &SBoardUnitInfo::m_unitId);
    CTextStream text;
    text << (found == info.m_units.end() ? "padding" : BoardUnit_Text(*found)) << ": " << Bits_Text(unit.Count())
         << ", " << unit.m_missing << " missing, " << unit.m_extra << " too many; ";
    if (unit.m_firstLine == unit.m_lastLine)
    {
        text << "line " << unit.m_firstLine;
    }
    else
    {
        text << "lines " << unit.m_firstLine << " to " << unit.m_lastLine;
    }
    for (std::size_t i = 0; i < areaNames.size(); ++i)
    {
        if (unit.m_areas[i] > 0)
        {
            text << "; " << unit.m_areas[i] << ' ' << areaNames[i];
        }
    }
    return text.str();
}

std::string Difference_Text(const SDifference& difference, const SBoardInfo& info)
{
    CTextStream text;
    text << (difference.m_band >= 0 ? "band " + std::to_string(difference.m_band) : "");
    if (difference.m_page >= 0 && info.m_pageCount > 1)
    {
        text << ", page " << difference.m_page;
    }
    if (difference.m_swath >= 0 && (difference.m_swath != difference.m_band || info.m_pageCount > 1))
    {
        text << ", swath " << difference.m_swath;
    }
    if (!difference.m_place.empty())
    {
        text << (difference.m_band >= 0 ? " (" + difference.m_place + ")" : difference.m_place);
    }
    text << (text.str().empty() ? "" : ": ") << difference.m_what << '\n';
    for (const std::string& pattern : difference.m_bits.m_patterns)
    {
        text << "  " << pattern << '\n';
    }
    for (const SUnitDifference& unit : difference.m_bits.m_units)
    {
        text << "  " << UnitDifference_Text(unit, info) << '\n';
    }
    for (const SBitReport& bit : difference.m_first)
    {
        text << "    " << bit.m_text;
    }
    return text.str();
}

std::string Range_Text(const SBandRange& range)
{
    if (range.IsAll())
    {
        return "";
    }
    return range.m_last < 0 ? " from " + std::to_string(range.m_first) + " on"
                            : " " + std::to_string(range.m_first) + " to " + std::to_string(range.m_last);
}

std::string Result_Text(const SVerifyResult& result, const std::string& output, const std::string& job,
                        const SBoardInfo& info, const SBandRange& range)
{
    CTextStream text;
    text.precision(3);
    for (std::size_t i = 0; i < result.m_differences.size() && i < mostShown; ++i)
    {
        text << Difference_Text(result.m_differences[i], info);
    }
    if (const auto count = static_cast<std::size_t>(result.m_differenceCount); count > mostShown)
    {
        text << "and " << count - mostShown << " more differences\n";
    }
    text << output << ": " << result.m_bands << (result.m_bands == 1 ? " band" : " bands") << Range_Text(range) << ", "
         << result.m_lines << " lines, " << result.m_bytes << " bytes in " << result.m_seconds << " s: ";
    if (result.m_differenceCount == 0)
    {
        text << "every bit, header and pass is what " << job << " asks for\n";
    }
    else
    {
        text << result.m_differenceCount << (result.m_differenceCount == 1 ? " difference" : " differences")
             << " from what " << job << " asks for; bits that differ: " << result.m_bitDifferences << '\n';
    }
    return text.str();
}

CJson Difference_ToJson(const SDifference& difference)
{
    CJson json = {{"Kind", difference.m_kind}, {"What", difference.m_what}};
    if (difference.m_band >= 0)
    {
        json["Band"] = difference.m_band;
        json["Page"] = difference.m_page;
        json["Swath"] = difference.m_swath;
    }
    if (!difference.m_place.empty())
    {
        json["Place"] = difference.m_place;
    }
    if (difference.m_bits.m_count == 0)
    {
        return json;
    }
    json["BitDifferences"] = difference.m_bits.m_count;
    json["LineDifferences"] = difference.m_bits.m_lineCount;
    json["Patterns"] = difference.m_bits.m_patterns;
    CJson units = CJson::array();
    for (const SUnitDifference& unit : difference.m_bits.m_units)
    {
        CJson entry = unit.m_unitId < 0 ? CJson{{"UnitId", nullptr}} : CJson{{"UnitId", unit.m_unitId}};
        entry["Missing"] = unit.m_missing;
        entry["Extra"] = unit.m_extra;
        entry["FirstLine"] = unit.m_firstLine;
        entry["LastLine"] = unit.m_lastLine;
        units.push_back(entry);
    }
    json["Units"] = units;
    json["First"] = CJson::array();
    std::ranges::transform(difference.m_first, std::back_inserter(json["First"]),
                           [](const SBitReport& bit) { return CJson::parse(bit.m_json); });
    return json;
}

std::string Result_Json(const SVerifyResult& result, const std::string& output, const std::string& job)
{
    CJson differences = CJson::array();
    std::ranges::transform(result.m_differences, std::back_inserter(differences), &Difference_ToJson);
    const CJson json = {{"Job", job},
                        {"Output", output},
                        {"Equal", result.m_differenceCount == 0},
                        {"Bands", result.m_bands},
                        {"Lines", result.m_lines},
                        {"Bytes", result.m_bytes},
                        {"Seconds", result.m_seconds},
                        {"DifferenceCount", result.m_differenceCount},
                        {"BitDifferences", result.m_bitDifferences},
                        {"Differences", differences}};
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace) + '\n';
}

int Verify_Run(const CArguments& arguments)
{
    const std::string outputName = arguments.Text_Get("OUTPUT");
    const SBandRange range = arguments.Has("bands") ? BandRange_Parse(arguments.Text_Get("bands")) : SBandRange();
    const CJobPage page(Path_FromText(arguments.Text_Get("JOB")));
    for (const SMistake& warning : page.Warnings_Get())
    {
        std::cerr << Colour_OfErrors(Text_Shown(Mistake_Text(warning)), EColour::Warning) << '\n' << std::flush;
    }
    const auto reader = CBoardReader::Open(Path_FromText(outputName));
    const SBoardInfo& info = reader->BoardInfo();
    const std::int64_t count = info.IsPart() ? info.m_partLast - info.m_partFirst + 1 : page.StepCount();
    const std::int64_t last = range.Last_Get(count);
    const auto mostBits = static_cast<std::size_t>(arguments.Number_Get("first").value_or(usualBits));
    SVerifyResult result;
    {
        CProgress progress(arguments.Choice_Get("progress", EProgress::Auto), last - range.m_first + 1);
        const CInterrupt interrupt(Exit_Interrupted, "interrupted; nothing is said of the output\n");
        const auto OnProgress = [&](std::int64_t bands, std::int64_t bytes)
        {
            progress.Update(bands, bytes);
            return !CInterrupt::IsRequested();
        };
        result = CVerification(page, *reader, range, mostBits, OnProgress).Run();
        if (result.m_bInterrupted)
        {
            std::cerr << "interrupted; nothing is said of the output\n";
            return Exit_Interrupted;
        }
        progress.Finish(result.m_bands, result.m_bytes);
    }
    const std::string jobName = arguments.Text_Get("JOB");
    Answer_Print(arguments.Flag_Get("json")
                     ? Result_Json(result, outputName, jobName)
                     : Result_Text(result, outputName, jobName, Page_BoardInfo(page, ""), range));
    return result.m_differenceCount == 0 ? Exit_Done : Exit_Failed;
}

} // namespace

const SCommand& Command_Verify()
{
    static const SCommand command = {
        .m_name = "verify",
        .m_summary = "Hold an output against its job, bit by bit",
        .m_text =
            "Recomputes every bit, stripes and padding included, every header and every pass from the job and its\n"
            "separations, without a line of the library that converts. Docs/verify.md explains the answers.",
        .m_options = {Option_Job(),
                      {.m_kind = EOptionKind::File,
                       .m_names = "OUTPUT",
                       .m_help = "The board data: a TIFF or a board stream",
                       .m_bRequired = true},
                      {.m_kind = EOptionKind::Text,
                       .m_names = "--bands",
                       .m_value = "A..B",
                       .m_help = "Only these bands, from 0; A.., ..B and A alone will do"},
                      {.m_kind = EOptionKind::Number,
                       .m_names = "--first",
                       .m_value = "COUNT",
                       .m_help = "How many bits that differ are explained one by one, of a band three at most. "
                                 "Default: 8",
                       .m_least = 0,
                       .m_most = 1000},
                      Option_Progress(),
                      Option_Json()},
        .m_examples = {{"boardmap verify page.toml page.boards.tif", "whether each bit is where the job wants it"},
                       {"boardmap verify page.toml page.boards.tif --bands 3..5", "three bands only"}},
        .m_exitText = "a difference, or a damaged output",
        .m_pRun = &Verify_Run,
    };
    return command;
}
