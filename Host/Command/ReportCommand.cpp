// The command report: puts the page together that a browser opens from the file system alone. All that it shows is in
// it: zlib in base64, which needs no escape, so that no name can end a script.
#include "Host/Command/ReportCommand.h"

#include "Host/Command/Answer.h"
#include "Host/Command/Explainer.h"
#include "Host/Command/InkUse.h"
#include "Host/Command/Layout.h"
#include "Host/Command/LayoutPicture.h"
#include "Host/Command/Preview.h"
#include "Host/Command/Progress.h"
#include "Host/HostError.h"
#include "Host/Interrupt.h"
#include "Host/Job/JobReader.h"
#include "Host/PathText.h"
#include "Host/Picture/InkColor.h"
#include "Host/Picture/SvgPicture.h"
#include "Host/Report/DeflatedText.h"
#include "Host/Report/PageFiles.h"
#include "Host/Report/PagePlanes.h"
#include "Host/Report/PageWords.h"
#include "Host/Report/TracePlots.h"
#include "Host/TextStream.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

namespace fs = std::filesystem;

namespace
{

using CJson = nlohmann::ordered_json;

constexpr std::int64_t layoutFrames = 64; // of the picture, at most
constexpr const char* interruptedText = "interrupted; nothing was written\n";

// Nothing but what is in the file: no network, no other file.
constexpr std::string_view policy = "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; "
                                    "img-src data: blob:";

// A text in the making.
class CTextSink : public CByteSink
{
public:
    void Write(const void* pData, std::size_t size) override { m_text.append(static_cast<const char*>(pData), size); }
    void Finish() override {}
    const std::string& Name() const override { return m_name; }
    const std::string& Text() const { return m_text; }

private:
    std::string m_name = "the layout";
    std::string m_text;
};

std::string Layout_Svg(const SLayout& layout)
{
    CTextSink sink;
    Layout_Draw(layout, 0, layoutFrames,
                [&](const SPictureFrame& frame) -> std::unique_ptr<CPicture>
                { return std::make_unique<CSvgPicture>(sink, frame); });
    return sink.Text();
}

std::string LayoutWords_Make(const SBoardInfo& info)
{
    const std::int64_t frames = info.m_lineBits / info.m_frameBits;
    return (frames > layoutFrames ? "The first " + std::to_string(layoutFrames) + " of " : "All ") +
           std::to_string(frames) + " frames of a board line; boardmap layout shows every part of it.";
}

std::string Summary_Make(const CPreviewPage& page)
{
    const SBoardInfo& info = page.Info();
    const CBoardReader& reader = page.Bands().Reader();
    CTextStream text;
    text << (reader.Format() == EBoardFormat::Tiff ? "TIFF" : "Board stream") << " of "
         << ByteText_Make(static_cast<double>(reader.FileSize())) << " by " << info.m_generator << "; page "
         << page.Bands().Page() << ", " << info.m_pageWidth << " x " << info.m_pageHeight << " dots";
    if (info.m_xResolution > 0 && info.m_yResolution > 0)
    {
        text << " at " << info.m_xResolution << " x " << info.m_yResolution << " per inch";
    }
    text << "; " << page.Bands().BandCount() << " bands for " << page.Bands().Model().SwathCount() << " swaths, "
         << (info.m_bBidirectional ? "both directions" : "left to right") << "; layout " << info.m_map << ", "
         << info.m_units.size() << (info.m_units.size() == 1 ? " unit of " : " units of ") << info.m_nozzles
         << " nozzles";
    return text.str();
}

std::string Judgement_Make(const SPagePlanes& planes)
{
    if (planes.m_differenceCount == 0)
    {
        return "Every dot is where the job wants it.";
    }
    return std::to_string(planes.m_differenceCount) + (planes.m_differenceCount == 1 ? " dot is" : " dots are") +
           " not as the job has it:";
}

std::string Stray_Make(const CSwathDots& dots)
{
    std::string text;
    if (dots.StrayCount() > 0)
    {
        text = "Bits that are set and no nozzle's: " + std::to_string(dots.StrayCount()) + ". ";
    }
    if (dots.OutsideCount() > 0)
    {
        text += "Dots in the room for offsets, outside of the picture: " + std::to_string(dots.OutsideCount()) + ".";
    }
    return text;
}

struct SReport
{
    std::string m_data; // JSON
    std::string m_judgement;
    SPagePlanes m_planes;
};

SReport Report_Make(const CJobPage& job, const std::string& outputName, int page, const std::vector<SInkChoice>& inks,
                    const CJson& plots, const OnSwath& onSwath)
{
    CPreviewPage output(Path_FromText(outputName), page);
    const std::vector<std::uint32_t> colors = InkColors_Choose(output.Info(), inks);
    SReport report;
    report.m_planes = Planes_Make(output, job, page, onSwath);
    const SPagePlanes& planes = report.m_planes;
    CJson data = PageWords_Json(output.Bands().Model(), job, page);
    data["Page"] = page;
    data["PageCount"] = job.PageCount();
    data["Board"] = CJson::parse(BoardInfo_Json(output.Info()));
    data["Area"] = {{"FirstColumn", planes.m_area.m_firstColumn},
                    {"ColumnCount", planes.m_area.m_columnCount},
                    {"RowCount", planes.m_area.m_rowCount},
                    {"RowBytes", planes.m_rowBytes},
                    {"PixelBits", planes.m_pixelBits}};
    for (std::size_t i = 0; i < colors.size(); ++i)
    {
        data["Units"][i]["Color"] = Color_Text(colors[i]);
        data["Units"][i]["HasJobPlane"] = !planes.m_units[i].m_job.empty();
    }
    data["Bands"] = planes.m_bands;
    data["Differences"] = CJson::array();
    for (const SPlaneDifference& difference : planes.m_different)
    {
        data["Differences"].push_back(CJson::array({difference.m_unitId, difference.m_row, difference.m_column}));
    }
    SInkUse use;
    use.m_info = output.Info();
    use.m_pixelBits = planes.m_pixelBits;
    use.m_colors = colors;
    use.m_dots = output.Dots().Counts();
    data["InkUse"] = InkUse_Json(use);
    data["OutputName"] = Path_Shown(Path_FromText(outputName).filename());
    data["Summary"] = Text_Shown(Summary_Make(output));
    report.m_judgement = Judgement_Make(planes);
    data["Judgement"] = report.m_judgement;
    data["Stray"] = Stray_Make(output.Dots());
    data["JobName"] = Path_Shown(job.JobFile().filename());
    data["JobText"] = JobText_Read(job.JobFile());
    data["LayoutWords"] = LayoutWords_Make(output.Info());
    data["LayoutSvg"] = Layout_Svg(Layout_Probe(job.Job()));
    data["Plots"] = plots;
    report.m_data = data.dump(-1, ' ', true, CJson::error_handler_t::replace);
    return report;
}

void Text_Write(CByteSink& sink, std::string_view text)
{
    sink.Write(text.data(), text.size());
}

void Data_Write(CByteSink& sink, const std::string& id, const std::string& text)
{
    Text_Write(sink, R"(<script type="text/plain" id=")" + id + R"(">)");
    Text_Write(sink, text);
    Text_Write(sink, "</script>\n");
}

void Script_Write(CByteSink& sink, std::string_view script)
{
    Text_Write(sink, "<script>\n");
    Text_Write(sink, script);
    Text_Write(sink, "</script>\n");
}

void Page_Write(CByteSink& sink, const SReport& report)
{
    Text_Write(sink, "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                     "<meta http-equiv=\"Content-Security-Policy\" content=\"");
    Text_Write(sink, policy);
    Text_Write(sink, "\">\n<meta name=\"viewport\" content=\"width=device-width\">\n<link rel=\"icon\" "
                     "href=\"data:,\">\n<title>boardmap report</title>\n<!-- Contains Leaflet and dygraphs.\n\n");
    Text_Write(sink, PageFiles::Licences());
    Text_Write(sink, "-->\n<style>\n");
    Text_Write(sink, PageFiles::LeafletCss());
    Text_Write(sink, PageFiles::DygraphCss());
    Text_Write(sink, PageFiles::ReportCss());
    Text_Write(sink, "</style>\n</head>\n<body>\n");
    Text_Write(sink, PageFiles::ReportHtml());
    Data_Write(sink, "data", Text_Deflate(report.m_data));
    for (std::size_t i = 0; i < report.m_planes.m_units.size(); ++i)
    {
        const SUnitPlanes& planes = report.m_planes.m_units[i];
        Data_Write(sink, "plane-" + std::to_string(i), planes.m_output);
        if (!planes.m_job.empty())
        {
            Data_Write(sink, "job-" + std::to_string(i), planes.m_job);
        }
    }
    Script_Write(sink, PageFiles::LeafletJs());
    Script_Write(sink, PageFiles::DygraphJs());
    Script_Write(sink, PageFiles::ReportJs());
    Text_Write(sink, "</body>\n</html>\n");
}

std::unique_ptr<CByteSink> Sink_Make(const std::string& file, const std::vector<std::string>& inputs)
{
    if (file == "-")
    {
        return std::make_unique<CStandardOutput>();
    }
    const fs::path path = Path_FromText(file);
    for (const std::string& input : inputs)
    {
        std::error_code error;
        if (!input.empty() && fs::equivalent(path, Path_FromText(input), error))
        {
            throw CInputError(Name_Shown(file) + ": is what the report is made of; name another file");
        }
    }
    return std::make_unique<COutputFile>(path, ESpecialFile::WriteInPlace);
}

// The page that is asked for, from 0; the first one otherwise.
int Page_Choose(const CArguments& arguments, const CJobPage& job)
{
    const std::int64_t page = arguments.Number_Get("page").value_or(0);
    if (page >= job.PageCount())
    {
        throw CInputError("--page is " + std::to_string(page) + "; the job has 0 to " +
                          std::to_string(job.PageCount() - 1));
    }
    return static_cast<int>(page);
}

int Report_Run(const CArguments& arguments)
{
    const std::string jobName = arguments.Text_Get("JOB");
    const std::string outputName = arguments.Text_Get("OUTPUT");
    const std::string traceName = arguments.Text_Get("trace");
    std::string file = arguments.Text_Get("output");
    if (file.empty())
    {
        fs::path path = Path_FromText(outputName);
        path.replace_extension(".html");
        file = Path_Text(path);
    }
    std::vector<SInkChoice> inks;
    std::ranges::transform(arguments.Texts_Get("ink"), std::back_inserter(inks), &InkChoice_Parse);
    const CExplainer together(Path_FromText(jobName),
                              Path_FromText(outputName)); // or it says why they do not belong so
    const CJobPage job(Path_FromText(jobName));
    for (const SMistake& warning : job.Warnings_Get())
    {
        std::cerr << Text_Shown(Mistake_Text(warning)) << '\n' << std::flush;
    }
    const CJson plots = traceName.empty() ? CJson::array() : TracePlots_Make(Path_FromText(traceName));
    const std::unique_ptr<CByteSink> sink = Sink_Make(file, {jobName, outputName, traceName});
    try
    {
        CProgress progress(arguments.Choice_Get("progress", EProgress::Auto), together.Model().SwathCount());
        const CInterrupt interrupt(Exit_Interrupted, interruptedText);
        const SReport report = Report_Make(job, outputName, Page_Choose(arguments, job), inks, plots,
                                           [&](int swath)
                                           {
                                               if (CInterrupt::IsRequested())
                                               {
                                                   throw CInterruptedError("interrupted");
                                               }
                                               progress.Update(swath, 0);
                                           });
        Page_Write(*sink, report);
        sink->Finish();
        progress.Finish(together.Model().SwathCount(), 0);
        if (file != "-")
        {
            Answer_Print(Name_Shown(file) + ": open it in a browser. " + report.m_judgement + '\n');
        }
        return report.m_planes.m_differenceCount == 0 ? Exit_Done : Exit_Failed;
    }
    catch (const CInterruptedError&)
    {
        std::cerr << interruptedText;
        return Exit_Interrupted;
    }
}

} // namespace

const SCommand& Command_Report()
{
    static const SCommand command = {
        .m_name = "report",
        .m_summary = "Make one HTML page of a job and its output, to look at in a browser",
        .m_text =
            "The page to zoom into down to the dot, inks on and off, explain's answer for the dot that is clicked,\n"
            "dots that are not as the job has them, ink use, layout, and the run over time. One file, no network.\n"
            "Docs/report.md tells more.",
        .m_options = {Option_Job(),
                      {.m_kind = EOptionKind::File,
                       .m_names = "OUTPUT",
                       .m_help = "The board data: a TIFF or a board stream",
                       .m_bRequired = true},
                      {.m_kind = EOptionKind::File,
                       .m_names = "-o,--output",
                       .m_value = "FILE",
                       .m_help = "The page; - is standard output. Default: beside OUTPUT, .html instead of its ending"},
                      {.m_kind = EOptionKind::Number,
                       .m_names = "--page",
                       .m_value = "N",
                       .m_help = "The page of a job of several, from 0. Default: 0",
                       .m_most = std::numeric_limits<int>::max()},
                      {.m_kind = EOptionKind::File,
                       .m_names = "--trace",
                       .m_value = "FILE",
                       .m_help = "What convert --trace recorded of the run, for plots"},
                      Option_Ink(),
                      Option_Progress()},
        .m_examples = {{"boardmap report page.toml page.boards.tif", "page.boards.html, to open in a browser"},
                       {"boardmap report page.toml page.boards.tif --trace page.trace.json -o page.html",
                        "with throughput, stalls and queues of the run"}},
        .m_exitText = "failed while running, or a dot is not as the job has it",
        .m_pRun = &Report_Run,
    };
    return command;
}
