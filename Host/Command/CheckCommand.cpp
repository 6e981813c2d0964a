// The command check. Its answer, mistakes or not, goes to standard output; so does the plan of a job without errors.
#include "Host/Command/CheckCommand.h"

#include "Host/Command/Answer.h"
#include "Host/Command/Progress.h"
#include "Host/Command/RunResult.h"
#include "Host/HostError.h"
#include "Host/Job/JobDraft.h"
#include "Host/Job/JobNames.h"
#include "Host/Job/JobPage.h"
#include "Host/Job/JobPlan.h"
#include "Host/Job/StripeColor.h"
#include "Host/PathText.h"
#include "Host/TextStream.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iomanip>

namespace
{

using CJson = nlohmann::ordered_json;

// "1 band", "2 bands".
std::string Count_Text(std::int64_t count, const std::string& what)
{
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string Bytes_Text(std::int64_t bytes)
{
    return ByteText_Make(static_cast<double>(bytes));
}

const char* Direction_Text(bool bLeftToRight)
{
    return bLeftToRight ? "left to right" : "right to left";
}

std::string Map_Text(const SJob& job, const SBoardInfo& info)
{
    return "style " + info.m_map + " (" + info.m_dataMapStyle + ", " + info.m_dataPushStyle +
           (SupportBits_IsUsed(job.m_dpOption) ? ", " + info.m_printerSupportBits : "") +
           "): " + Count_Text(info.m_bitsPerPixel, "bit") + " a pixel" +
           (info.m_linesPerPosition > 1 ? ", pushed as two lines of 1 bit" : "") +
           (info.m_dotSizeMode.empty() ? "" : ", every dot " + info.m_dotSizeMode);
}

std::string Stage_Text(const SJob& job, const SBoardInfo& info)
{
    return info.m_stage +
           (job.m_stageKind == EStageKind::Base
                ? ", one line after the other"
                : ", lines mapped by " + Count_Text(job.m_lineGeneratorCount, "thread")) +
           ", " + std::to_string(job.m_inputBands) + " bands in each unit's pool";
}

std::string Page_Text(const CJobPage& page)
{
    CTextStream text;
    text << (page.PageCount() > 1 ? std::to_string(page.PageCount()) + " pages of " : "") << page.Width() << " x "
         << page.Height() << " pixels";
    if (page.PageInfo().HasResolution())
    {
        text << ", " << page.PageInfo().xResolution << " x " << page.PageInfo().yResolution << " per inch";
    }
    text << "; " << Count_Text(static_cast<std::int64_t>(page.Units().size()), "unit") << " of "
         << page.Job().m_units.size() << " print " << (page.PageCount() > 1 ? "them" : "it");
    return text.str();
}

std::string Line_Text(const CJobPage& page, const SJobPlan& plan)
{
    return Count_Text(plan.m_frames, "frame") + " = " + Count_Text(page.Geometry().m_boardWidth, "bit") + " = " +
           Count_Text(page.Geometry().m_boardBytesPerLine, "byte") +
           (plan.m_planes > 1 ? ", in two planes: the high bits of all pixels, then the low bits" : "");
}

std::string Bands_Text(const CJobPage& page, const SJobPlan& plan)
{
    return (page.Job().m_bSkipBlank ? "at most " : "") + Count_Text(plan.m_bands, "band") + " of " +
           Count_Text(page.Job().m_nozzles, "nozzle") +
           (plan.m_pages > 1 ? ", " + std::to_string(page.Geometry().m_swathCount) + " for each page" : "") +
           (plan.m_lastBandRows < page.Job().m_nozzles
                ? std::string("; the last") + (plan.m_pages > 1 ? " of a page has " : " has ") +
                      Count_Text(plan.m_lastBandRows, "row") + " of the page"
                : "") +
           (page.Job().m_bSkipBlank ? "; swaths without ink have none" : "");
}

std::string Pass_Text(const SPassPlan& pass)
{
    const std::string first = pass.m_bLeftToRight ? "left" : "right";
    const std::string last = pass.m_bLeftToRight ? "right" : "left";
    return Count_Text(pass.m_bands, "band") + " of " + Count_Text(pass.m_lines, "line") + ": " +
           Count_Text(pass.m_positions, "position") + " = " + std::to_string(pass.m_firstZone) + " (" + first +
           " zone) + " + std::to_string(pass.m_columns) + " (page) + " + std::to_string(pass.m_lastZone) + " (" + last +
           " zone) + " + std::to_string(pass.m_maxOffset) + " (largest offset)";
}

std::string Memory_Text(const SMemoryPlan& memory)
{
    return "about " + Bytes_Text(memory.Bytes()) + " at most: " + std::to_string(memory.m_unitBands) +
           " unit bands of " + Bytes_Text(memory.m_unitBandBytes) + ", " +
           Count_Text(memory.m_boardBands, "board band") + " of " + Bytes_Text(memory.m_boardBandBytes) +
           ", rows of the page " + Bytes_Text(memory.m_rowBytes);
}

// "positions 96 to 5056 left to right".
std::string Image_Text(const CJobPage& page, const SJobUnit& unit, bool bLeftToRight)
{
    const int begin = Job_ImagePosition(page.Job(), unit, bLeftToRight);
    return std::to_string(begin) + " to " + std::to_string(begin + page.Width() - 1) + ' ' +
           Direction_Text(bLeftToRight);
}

std::string Stripe_Text(const CJobPage& page, const SJobUnit& unit, int length, bool bLeftToRight)
{
    std::string text;
    for (const bool bLeftStripe : {bLeftToRight, !bLeftToRight}) // as the carriage meets them
    {
        const auto stripe = Job_Stripe(page.Job(), unit, page.Width(), bLeftToRight, bLeftStripe, length);
        if (stripe)
        {
            text += (text.empty() ? "" : " and ") + std::to_string(stripe->m_begin) + " to " +
                    std::to_string(stripe->m_end - 1);
        }
    }
    return text + ' ' + Direction_Text(bLeftToRight);
}

// On how many pages the unit has no separation.
std::string Blank_Text(const CJobPage& page, const SJobUnit& unit)
{
    const auto found = std::ranges::find(page.Units(), &unit, &SPageUnit::m_pUnit);
    const auto count = std::ranges::count(found->m_printed, false);
    const std::string list = page.Job().m_pages.m_names == EPageNames::List && page.PageCount() > 1
                                 ? " and " + std::to_string(page.PageCount() - 1) + " more"
                                 : "";
    return list + (count == 0
                       ? ""
                       : ", blank on " + std::to_string(count) + " of " + std::to_string(page.PageCount()) + " pages,");
}

std::string Unit_Text(const CJobPage& page, const SJobUnit& unit)
{
    const SJob& job = page.Job();
    const bool bBack = job.m_bBidirectional;
    if (unit.HasSeparation())
    {
        return Text_Printable(unit.m_separation) + Blank_Text(page, unit) + " at positions " +
               Image_Text(page, unit, true) + (bBack ? ", " + Image_Text(page, unit, false) : "");
    }
    if (!Job_HasStripes(job, unit))
    {
        return "prints nothing";
    }
    const int length = StripeColor_Length(job, unit);
    return "ink stripes (" + Text_Printable(unit.m_stripeColor.m_text) + ") at positions " +
           Stripe_Text(page, unit, length, true) + (bBack ? ", " + Stripe_Text(page, unit, length, false) : "");
}

void Row_Add(CTextStream& text, const std::string& name, const std::string& value)
{
    constexpr int nameColumns = 15;
    text << "  " << std::left << std::setw(nameColumns) << name << ' ' << value << '\n';
}

std::string Plan_Text(const CJobPage& page)
{
    const SJob& job = page.Job();
    const SBoardInfo info = Page_BoardInfo(page, ProgramName_Get());
    const SJobPlan plan = Job_Plan(page);
    CTextStream text;
    Row_Add(text, "map", Map_Text(job, info));
    Row_Add(text, "stage", Stage_Text(job, info));
    Row_Add(text, page.PageCount() > 1 ? "pages" : "page", Page_Text(page));
    Row_Add(text, "frame",
            Count_Text(plan.m_frameBits, "bit") + (plan.m_planes > 1 ? " in each plane" : "") +
                ", room for the units 0 to " + std::to_string(plan.m_unitRoom - 1));
    Row_Add(text, "line", Line_Text(page, plan));
    Row_Add(text, "bands", Bands_Text(page, plan));
    for (const SPassPlan& pass : plan.m_passes)
    {
        Row_Add(text, Direction_Text(pass.m_bLeftToRight), Pass_Text(pass));
    }
    Row_Add(text, "board data",
            (job.m_bSkipBlank ? "at most " : "") + Count_Text(plan.m_lines, "line") + ", " +
                Count_Text(plan.m_bytes, "byte"));
    Row_Add(text, "memory", Memory_Text(plan.m_memory));
    for (const SJobUnit& unit : job.m_units)
    {
        text << "  " << Job_UnitText(unit) << ": " << Unit_Text(page, unit) << '\n';
    }
    return text.str();
}

CJson Pass_ToJson(const SPassPlan& pass)
{
    return {{"Direction", pass.m_bLeftToRight ? "left-to-right" : "right-to-left"},
            {"Bands", pass.m_bands},
            {"Lines", pass.m_lines},
            {"Positions", pass.m_positions},
            {"FirstZone", pass.m_firstZone},
            {"Columns", pass.m_columns},
            {"LastZone", pass.m_lastZone},
            {"MaxOffset", pass.m_maxOffset}};
}

CJson Plan_ToJson(const CJobPage& page)
{
    const SJobPlan plan = Job_Plan(page);
    CJson passes = CJson::array();
    for (const SPassPlan& pass : plan.m_passes)
    {
        passes.push_back(Pass_ToJson(pass));
    }
    const SMemoryPlan& memory = plan.m_memory;
    return {{"Frames", plan.m_frames},
            {"UnitRoom", plan.m_unitRoom},
            {"LineBytes", page.Geometry().m_boardBytesPerLine},
            {"Pages", plan.m_pages},
            {"Bands", plan.m_bands},
            {"LastBandRows", plan.m_lastBandRows},
            {"Lines", plan.m_lines},
            {"Bytes", plan.m_bytes},
            {"Passes", std::move(passes)},
            {"Memory",
             {{"Bytes", memory.Bytes()},
              {"UnitBands", memory.m_unitBands},
              {"UnitBandBytes", memory.m_unitBandBytes},
              {"BoardBands", memory.m_boardBands},
              {"BoardBandBytes", memory.m_boardBandBytes},
              {"RowBytes", memory.m_rowBytes}}},
            {"Board", CJson::parse(BoardInfo_Json(Page_BoardInfo(page, ProgramName_Get())))}};
}

std::string Answer_Json(const std::string& job, const CMistakeList& mistakes, const CJobPage& page)
{
    CJson json = {{"Job", job},
                  {"Valid", page.HasPage()},
                  {"Errors", mistakes.ErrorCount()},
                  {"Warnings", static_cast<int>(mistakes.All().size()) - mistakes.ErrorCount()},
                  {"Mistakes", CJson::parse(Mistakes_Json(mistakes.All()))},
                  {"Plan", page.HasPage() ? Plan_ToJson(page) : CJson()}};
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace) + '\n';
}

std::string Answer_Text(const std::string& job, const CMistakeList& mistakes, const CJobPage& page)
{
    const int errors = mistakes.ErrorCount();
    const int warnings = static_cast<int>(mistakes.All().size()) - errors;
    std::string text = Mistakes_Text(mistakes.All());
    text += text.empty() ? "" : "\n";
    if (!page.HasPage())
    {
        return text + Name_Shown(job) + ": " + Count_Text(errors, "error") +
               (warnings > 0 ? ", " + Count_Text(warnings, "warning") : "") + "; the job cannot run\n";
    }
    return text + Name_Shown(job) + ": " + (warnings > 0 ? Count_Text(warnings, "warning") : "no mistakes") + '\n' +
           Plan_Text(page);
}

int Check_Run(const CArguments& arguments)
{
    const std::string job = arguments.Text_Get("JOB");
    CMistakeList mistakes;
    const CJobPage page(Path_FromText(job), mistakes);
    const std::string answer =
        arguments.Flag_Get("json") ? Answer_Json(job, mistakes, page) : Answer_Text(job, mistakes, page);
    Answer_Print(answer);
    return page.HasPage() ? Exit_Done : Exit_BadInput;
}

} // namespace

const SCommand& Command_Check()
{
    static const SCommand command = {
        .m_name = "check",
        .m_summary = "Say all mistakes of a job and its separations, and what a run of it will be",
        .m_text = "Nothing is converted: the job file and the headers of its separations are read. Without an error\n"
                  "(a warning is none) the plan follows: map, frame, line, bands, passes, board data and memory.\n"
                  "Docs/check.md explains it.",
        .m_options = {Option_Job(), Option_Json()},
        .m_examples = {{"boardmap check page.toml", "mistakes, a line each, or the plan"},
                       {"boardmap check page.toml --json", "the same for a program"}},
        .m_pRun = &Check_Run,
    };
    return command;
}
