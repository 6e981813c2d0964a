// The command preview: its options, files and words.
#include "Host/Command/PreviewCommand.h"

#include "Host/Command/Answer.h"
#include "Host/Command/InkUse.h"
#include "Host/Command/Preview.h"
#include "Host/Command/Progress.h"
#include "Host/HostError.h"
#include "Host/Interrupt.h"
#include "Host/Job/JobNames.h"
#include "Host/PathText.h"
#include "Host/Picture/InkColor.h"
#include "Host/TextStream.h"
#include "Platform/Helper/ProcessHelper.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace
{

using CJson = nlohmann::ordered_json;

constexpr int usualSide = 2000; // pixels of the longer side, at most, unless the user says otherwise
constexpr const char* interruptedText = "interrupted; nothing was written\n";

// What the command line asks for.
struct SPreviewOrder
{
    std::vector<std::string> m_outputs; // two to compare, else one
    bool m_bDiff = false;
    bool m_bPlanes = false;
    bool m_bJson = false;
    bool m_bZones = true;
    std::optional<int> m_page;
    std::optional<int> m_unit; // id
    std::optional<int> m_reduce;
    std::optional<std::pair<std::int64_t, std::int64_t>> m_rows; // both ends are in it
    std::optional<std::pair<std::int64_t, std::int64_t>> m_columns;
    std::vector<SInkChoice> m_inks;
    std::string m_file; // "-": standard output
    EProgress m_progress = EProgress::Auto;
};

std::int64_t Number_Parse(std::string_view text, const std::string& wrong)
{
    std::int64_t number = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || pEnd != text.data() + text.size())
    {
        throw CInputError(wrong);
    }
    return number;
}

// "A..B", or "A" alone.
std::pair<std::int64_t, std::int64_t> Range_Parse(const std::string& option, const std::string& text)
{
    const std::string wrong =
        "--" + option + " is " + Text_Printable(text) + "; it is A..B, the first and the last of them";
    const std::size_t dots = text.find("..");
    const std::string_view whole = text;
    const std::int64_t first = Number_Parse(whole.substr(0, dots), wrong);
    const std::int64_t last = dots == std::string::npos ? first : Number_Parse(whole.substr(dots + 2), wrong);
    if (last < first)
    {
        throw CInputError("--" + option + " is " + Text_Printable(text) + "; the last one cannot be before the first");
    }
    return {first, last};
}

std::optional<int> Int_Get(const CArguments& arguments, const std::string& name)
{
    const std::optional<std::int64_t> number = arguments.Number_Get(name);
    return number ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

std::optional<std::pair<std::int64_t, std::int64_t>> Range_Get(const CArguments& arguments, const std::string& name)
{
    return arguments.Has(name) ? std::optional(Range_Parse(name, arguments.Text_Get(name))) : std::nullopt;
}

// Where the picture goes if the user does not say it: beside the output.
std::string File_Choose(const SPreviewOrder& order)
{
    fs::path file = Path_FromText(order.m_outputs.front());
    file.replace_extension(order.m_bDiff ? ".diff.png" : ".png");
    return Path_Text(file);
}

void Order_Check(const SPreviewOrder& order)
{
    const std::size_t wanted = order.m_bDiff ? 2 : 1;
    if (order.m_outputs.size() != wanted)
    {
        throw CInputError(order.m_bDiff ? "--diff needs two outputs, A and B"
                                        : "one output is shown at a time; --diff compares two");
    }
    if (order.m_bPlanes && (order.m_bDiff || order.m_unit))
    {
        throw CInputError("--planes makes a picture of every unit; leave out --diff and --unit");
    }
    if (order.m_bDiff && !order.m_inks.empty())
    {
        throw CInputError("--diff has colours of its own; leave out --ink");
    }
    if (order.m_file != "-")
    {
        return;
    }
    if (order.m_bPlanes || order.m_bJson)
    {
        throw CInputError(order.m_bPlanes
                              ? "--planes makes several files; standard output takes one"
                              : "standard output takes the picture or the JSON; name a file for one of them");
    }
    if (CProcessHelper::IsOutputTerminal())
    {
        throw CInputError("standard output is a terminal, and a PNG is no text; redirect it or name a file");
    }
}

SPreviewOrder Order_Get(const CArguments& arguments)
{
    SPreviewOrder order;
    order.m_outputs = arguments.Texts_Get("OUTPUT");
    order.m_bDiff = arguments.Flag_Get("diff");
    order.m_bPlanes = arguments.Flag_Get("planes");
    order.m_bJson = arguments.Flag_Get("json");
    order.m_bZones = !arguments.Flag_Get("without-zones");
    order.m_page = Int_Get(arguments, "page");
    order.m_unit = Int_Get(arguments, "unit");
    order.m_reduce = Int_Get(arguments, "reduce");
    order.m_rows = Range_Get(arguments, "rows");
    order.m_columns = Range_Get(arguments, "columns");
    std::ranges::transform(arguments.Texts_Get("ink"), std::back_inserter(order.m_inks), &InkChoice_Parse);
    order.m_file = arguments.Has("output") ? arguments.Text_Get("output") : File_Choose(order);
    order.m_progress = arguments.Choice_Get("progress", EProgress::Auto);
    Order_Check(order);
    return order;
}

void Range_Cut(const std::string& option, const std::optional<std::pair<std::int64_t, std::int64_t>>& range,
               std::int64_t& first, std::int64_t& count)
{
    if (!range)
    {
        return;
    }
    const std::int64_t last = first + count - 1;
    if (range->first < first || range->second > last)
    {
        throw CInputError("--" + option + " is " + std::to_string(range->first) + ".." + std::to_string(range->second) +
                          "; the picture has " + std::to_string(first) + " to " + std::to_string(last));
    }
    first = range->first;
    count = range->second - range->first + 1;
}

SPreviewArea Area_Choose(const SPreviewOrder& order, const SBoardInfo& info)
{
    SPreviewArea area = PreviewArea_Whole(info, order.m_bZones);
    Range_Cut("rows", order.m_rows, area.m_firstRow, area.m_rowCount);
    Range_Cut("columns", order.m_columns, area.m_firstColumn, area.m_columnCount);
    area.m_reduce = order.m_reduce ? *order.m_reduce : Reduction_Choose(area, usualSide);
    return area;
}

// Places in the info: of the one that is asked for, or of all.
std::vector<std::size_t> Units_Choose(const SPreviewOrder& order, const SBoardInfo& info)
{
    std::vector<std::size_t> units;
    std::vector<std::string> known;
    for (std::size_t i = 0; i < info.m_units.size(); ++i)
    {
        known.push_back(std::to_string(info.m_units[i].m_unitId));
        if (!order.m_unit || info.m_units[i].m_unitId == *order.m_unit)
        {
            units.push_back(i);
        }
    }
    if (units.empty())
    {
        throw CInputError("--unit is " + std::to_string(*order.m_unit) + "; the output has " +
                          Names_List(known, "and"));
    }
    return units;
}

std::unique_ptr<CByteSink> Sink_Make(const SPreviewOrder& order, const std::string& file)
{
    if (file == "-")
    {
        return std::make_unique<CStandardOutput>();
    }
    const fs::path path = Path_FromText(file);
    for (const std::string& output : order.m_outputs)
    {
        std::error_code error;
        if (fs::equivalent(path, Path_FromText(output), error))
        {
            throw CInputError(Name_Shown(file) + ": is the output that is to be shown; name another file");
        }
    }
    return std::make_unique<COutputFile>(path, ESpecialFile::WriteInPlace);
}

// "page.unit-3.png".
std::string PlaneFile_Name(const std::string& file, int unitId)
{
    fs::path path = Path_FromText(file);
    const fs::path extension = path.extension();
    path.replace_extension(".unit-" + std::to_string(unitId));
    path += extension;
    return Path_Text(path);
}

// Tells the progress, and ends the work when the user wants it.
OnSwath Swath_Handler(CProgress& progress)
{
    return [&progress](int swath)
    {
        if (CInterrupt::IsRequested())
        {
            throw CInterruptedError("interrupted");
        }
        progress.Update(swath, 0);
    };
}

struct SPictureFile
{
    std::string m_file;
    int m_unitId = -1; // -1: all
};

struct SPreviewResult
{
    SPreviewArea m_area;
    std::vector<SPictureFile> m_files;
    SInkUse m_use;
    std::int64_t m_bands = 0;
    int m_swaths = 0;
    int m_page = 0;
    std::vector<int> m_pages;
};

void Page_Note(const CPreviewPage& page, SPreviewResult& result)
{
    result.m_use.m_info = page.Info();
    result.m_use.m_pixelBits = page.Dots().PixelBits();
    result.m_use.m_dots = page.Dots().Counts();
    result.m_use.m_stray = page.Dots().StrayCount();
    result.m_use.m_outside = page.Dots().OutsideCount();
    result.m_bands = page.Bands().BandCount();
    result.m_swaths = page.Bands().Model().SwathCount();
    result.m_page = page.Bands().Page();
    result.m_pages.assign(page.Bands().Pages().begin(), page.Bands().Pages().end());
}

// Every picture goes over the file once. None is in its place before all are complete.
SPreviewResult Pictures_Make(const SPreviewOrder& order, CProgress& progress)
{
    const fs::path output = Path_FromText(order.m_outputs.front());
    SPreviewResult result;
    auto page = std::make_unique<CPreviewPage>(output, order.m_page);
    result.m_area = Area_Choose(order, page->Info());
    result.m_use.m_colors = InkColors_Choose(page->Info(), order.m_inks);
    const std::vector<std::size_t> units = Units_Choose(order, page->Info());
    std::vector<std::unique_ptr<CByteSink>> sinks;
    if (!order.m_bPlanes && !order.m_unit)
    {
        sinks.push_back(Sink_Make(order, order.m_file));
        result.m_files.push_back({order.m_file});
        Preview_Compose(*page, result.m_area, result.m_use.m_colors, *sinks.back(), Swath_Handler(progress));
    }
    else
    {
        for (const std::size_t unit : units)
        {
            const int unitId = page->Info().m_units[unit].m_unitId;
            const std::string file = order.m_bPlanes ? PlaneFile_Name(order.m_file, unitId) : order.m_file;
            if (!sinks.empty())
            {
                page = std::make_unique<CPreviewPage>(output, order.m_page);
            }
            sinks.push_back(Sink_Make(order, file));
            result.m_files.push_back({file, unitId});
            Preview_Plane(*page, result.m_area, unit, *sinks.back(), Swath_Handler(progress));
        }
    }
    Page_Note(*page, result);
    for (const auto& sink : sinks)
    {
        sink->Finish();
    }
    progress.Finish(result.m_swaths, 0);
    return result;
}

std::string Picture_Text(const SPictureFile& picture, const SPreviewArea& area)
{
    CTextStream text;
    text << Name_Shown(picture.m_file) << ": " << area.Width() << " x " << area.Height() << " pixels";
    if (area.m_reduce > 1)
    {
        text << " of " << area.m_reduce << " x " << area.m_reduce << " dots";
    }
    text << ", rows " << area.m_firstRow << " to " << area.m_firstRow + area.m_rowCount - 1 << ", columns "
         << area.m_firstColumn << " to " << area.m_firstColumn + area.m_columnCount - 1
         << (picture.m_unitId < 0 ? "" : ", unit " + std::to_string(picture.m_unitId)) << '\n';
    return text.str();
}

CJson Picture_ToJson(const SPictureFile& picture, const SPreviewArea& area)
{
    CJson json = {{"File", picture.m_file},
                  {"Width", area.Width()},
                  {"Height", area.Height()},
                  {"Reduce", area.m_reduce},
                  {"FirstRow", area.m_firstRow},
                  {"RowCount", area.m_rowCount},
                  {"FirstColumn", area.m_firstColumn},
                  {"ColumnCount", area.m_columnCount}};
    if (picture.m_unitId >= 0)
    {
        json["UnitId"] = picture.m_unitId;
    }
    return json;
}

std::string Result_Text(const SPreviewResult& result, const SPreviewOrder& order)
{
    const SBoardInfo& info = result.m_use.m_info;
    CTextStream text;
    text << Name_Shown(order.m_outputs.front()) << ": page " << result.m_page;
    if (result.m_pages.size() > 1)
    {
        std::vector<std::string> pages;
        std::ranges::transform(result.m_pages, std::back_inserter(pages),
                               [](int page) { return std::to_string(page); });
        text << " of " << Names_List(pages, "and");
    }
    text << ", " << info.m_pageWidth << " x " << info.m_pageHeight << " dots; " << result.m_bands
         << (result.m_bands == 1 ? " band" : " bands") << " for " << result.m_swaths
         << (result.m_swaths == 1 ? " swath" : " swaths")
         << (result.m_bands < result.m_swaths && info.IsPart()        ? ": a part of the job"
             : result.m_bands < result.m_swaths && !info.m_bSkipBlank ? ": THE OTHERS ARE MISSING"
                                                                      : "")
         << '\n'
         << InkUse_Text(result.m_use);
    for (const SPictureFile& picture : result.m_files)
    {
        text << Picture_Text(picture, result.m_area);
    }
    return text.str();
}

std::string Result_Json(const SPreviewResult& result, const SPreviewOrder& order)
{
    CJson pictures = CJson::array();
    for (const SPictureFile& picture : result.m_files)
    {
        pictures.push_back(Picture_ToJson(picture, result.m_area));
    }
    const CJson json = {{"Output", order.m_outputs.front()},
                        {"Page", result.m_page},
                        {"Pages", result.m_pages},
                        {"Bands", result.m_bands},
                        {"Swaths", result.m_swaths},
                        {"Width", result.m_use.m_info.m_pageWidth},
                        {"Height", result.m_use.m_info.m_pageHeight},
                        {"Units", InkUse_Json(result.m_use)},
                        {"StrayBits", result.m_use.m_stray},
                        {"OutsideDots", result.m_use.m_outside},
                        {"Pictures", std::move(pictures)}};
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace) + '\n';
}

struct SDiffResult
{
    SPreviewArea m_area;
    SBoardInfo m_info;
    std::vector<SDotChanges> m_changes; // by unit as in the info
    std::vector<std::size_t> m_units;   // that were compared
    std::int64_t m_count = 0;           // of changes
};

SDiffResult Diff_Make(const SPreviewOrder& order, CProgress& progress)
{
    CPreviewPage a(Path_FromText(order.m_outputs[0]), order.m_page);
    CPreviewPage b(Path_FromText(order.m_outputs[1]), order.m_page);
    Shapes_Check(a, b);
    SDiffResult result;
    result.m_info = a.Info();
    result.m_area = Area_Choose(order, a.Info());
    result.m_units = Units_Choose(order, a.Info());
    const std::unique_ptr<CByteSink> sink = Sink_Make(order, order.m_file);
    result.m_changes = Preview_Diff(a, b, result.m_area, result.m_units, *sink, Swath_Handler(progress));
    sink->Finish();
    progress.Finish(a.Bands().Model().SwathCount(), 0);
    for (const SDotChanges& changes : result.m_changes)
    {
        result.m_count += changes.Count();
    }
    return result;
}

std::string Diff_Text(const SDiffResult& result, const SPreviewOrder& order)
{
    std::vector<std::vector<std::string>> rows = {
        {"unit", "ink", "only in A", "only in B", "of another size", "the same in both"}};
    for (const std::size_t i : result.m_units)
    {
        const SDotChanges& changes = result.m_changes[i];
        rows.push_back({std::to_string(result.m_info.m_units[i].m_unitId),
                        Text_Printable(result.m_info.m_units[i].m_name), std::to_string(changes.m_onlyA),
                        std::to_string(changes.m_onlyB), std::to_string(changes.m_size),
                        std::to_string(changes.m_both)});
    }
    const std::string changed =
        result.m_count == 0 ? "every dot is the same"
                            : std::to_string(result.m_count) + (result.m_count == 1 ? " dot differs" : " dots differ");
    return "A " + Name_Shown(order.m_outputs[0]) + ", B " + Name_Shown(order.m_outputs[1]) + ": " + changed + '\n' +
           Table_Text(rows) + Picture_Text({order.m_file}, result.m_area);
}

std::string Diff_Json(const SDiffResult& result, const SPreviewOrder& order)
{
    CJson units = CJson::array();
    for (const std::size_t i : result.m_units)
    {
        const SDotChanges& changes = result.m_changes[i];
        units.push_back({{"UnitId", result.m_info.m_units[i].m_unitId},
                         {"Name", result.m_info.m_units[i].m_name},
                         {"OnlyA", changes.m_onlyA},
                         {"OnlyB", changes.m_onlyB},
                         {"OtherSize", changes.m_size},
                         {"Both", changes.m_both}});
    }
    const CJson json = {{"A", order.m_outputs[0]},
                        {"B", order.m_outputs[1]},
                        {"Equal", result.m_count == 0},
                        {"Units", std::move(units)},
                        {"Pictures", CJson::array({Picture_ToJson({order.m_file}, result.m_area)})}};
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace) + '\n';
}

int Preview_Run(const CArguments& arguments)
{
    const SPreviewOrder order = Order_Get(arguments);
    std::string answer;
    int status = Exit_Done;
    try
    {
        // Known before a band is read: the page is what the first file says.
        const SBoardInfo info = CBoardReader::Open(Path_FromText(order.m_outputs.front()))->BoardInfo();
        const int swaths = info.m_nozzles < 1 ? 0 : (info.m_pageHeight - 1) / info.m_nozzles + 1;
        CProgress progress(order.m_progress, swaths);
        const CInterrupt interrupt(Exit_Interrupted, interruptedText);
        if (order.m_bDiff)
        {
            const SDiffResult result = Diff_Make(order, progress);
            answer = order.m_bJson ? Diff_Json(result, order) : Diff_Text(result, order);
            status = result.m_count == 0 ? Exit_Done : Exit_Failed;
        }
        else
        {
            const SPreviewResult result = Pictures_Make(order, progress);
            answer = order.m_bJson ? Result_Json(result, order) : Result_Text(result, order);
        }
    }
    catch (const CInterruptedError&)
    {
        std::cerr << interruptedText;
        return Exit_Interrupted;
    }
    if (order.m_file != "-")
    {
        Answer_Print(answer);
    }
    return status;
}

} // namespace

const SCommand& Command_Preview()
{
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    static const SCommand command = {
        .m_name = "preview",
        .m_summary = "Show what will print: the page put back together from board data",
        .m_text = "A PNG of the page in its inks, or of one unit alone, with the ink stripes beside it; and what each\n"
                  "unit uses and covers. The output alone is enough, in either format. Inks have the colours of their\n"
                  "names, others one derived from the name. Docs/preview.md has examples.",
        .m_options = {{.m_kind = EOptionKind::File,
                       .m_names = "OUTPUT",
                       .m_help = "The board data: a TIFF or a board stream; with --diff two of them",
                       .m_bRequired = true,
                       .m_bMany = true},
                      {.m_kind = EOptionKind::File,
                       .m_names = "-o,--output",
                       .m_value = "FILE",
                       .m_help = "The PNG; - is standard output. Default: beside OUTPUT, .png instead of its ending"},
                      {.m_names = "--diff", .m_help = "Paint what differs between two outputs, A and B"},
                      {.m_kind = EOptionKind::Number,
                       .m_names = "--page",
                       .m_value = "N",
                       .m_help = "The page of this m_pageIndex. Default: the first one of the file",
                       .m_most = most},
                      {.m_kind = EOptionKind::Number,
                       .m_names = "--unit",
                       .m_value = "N",
                       .m_help = "This unit alone, in black",
                       .m_most = most},
                      {.m_names = "--planes", .m_help = "A picture of each unit alone: FILE with .unit-N before .png"},
                      Option_Ink(),
                      {.m_kind = EOptionKind::Number,
                       .m_names = "--reduce",
                       .m_value = "N",
                       .m_help = "A pixel is the average of N x N dots. Default: what keeps both sides within 2000 "
                                 "pixels",
                       .m_least = 1,
                       .m_most = g_mostReduction},
                      {.m_kind = EOptionKind::Text,
                       .m_names = "--rows",
                       .m_value = "A..B",
                       .m_help = "Only these rows of the page, from 0"},
                      {.m_kind = EOptionKind::Text,
                       .m_names = "--columns",
                       .m_value = "A..B",
                       .m_help = "Only these columns; those of the left zone are below 0: --columns=-96..99"},
                      {.m_names = "--without-zones", .m_help = "The page alone, without what lies around it"},
                      Option_Progress(),
                      Option_Json()},
        .m_examples = {{"boardmap preview page.boards.tif", "page.boards.png, and the ink that it takes"},
                       {"boardmap preview page.boards.tif --rows 2000..2099 --columns 3800..3899 -o dots.png",
                        "a pixel for each dot of a part of the page"},
                       {"boardmap preview page.boards.tif --ink Orange=#ff6600 --ink Primer=#dddddd",
                        "spot inks in colours of your own"},
                       {"boardmap preview --diff before.tif after.tif -o diff.png",
                        "dots only in the one, in the other, or of another size"}},
        .m_exitText = "failed while running, or --diff found a difference",
        .m_pRun = &Preview_Run,
    };
    return command;
}
