// The command layout: where every nozzle's bits stand in a board line.
#include "Host/Command/LayoutCommand.h"

#include "Host/Command/Layout.h"
#include "Host/Command/LayoutPicture.h"
#include "Host/HostError.h"
#include "Host/Output/ByteSink.h"
#include "Host/PathText.h"
#include "Host/Picture/PngPicture.h"
#include "Host/Picture/SvgPicture.h"
#include "Platform/Helper/ProcessHelper.h"

#include <limits>
#include <memory>

namespace
{

enum class ELayoutFormat
{
    Table,
    Json,
    Svg,
    Png,
};

// The format and the file that the options name; an empty file is standard output.
struct SLayoutOutput
{
    ELayoutFormat m_format = ELayoutFormat::Table;
    std::string m_file;
};

SLayoutOutput Output_Get(const CArguments& arguments)
{
    SLayoutOutput output;
    if (arguments.Has("png"))
    {
        if (arguments.Has("format") || arguments.Flag_Get("json") || arguments.Has("output"))
        {
            throw CInputError("--png says the format and the file; leave out --format, --json and --output");
        }
        output = {ELayoutFormat::Png, arguments.Text_Get("png")};
    }
    else
    {
        if (arguments.Has("format") && arguments.Flag_Get("json"))
        {
            throw CInputError("--json and --format both say the format; leave one out");
        }
        output.m_format =
            arguments.Choice_Get("format", arguments.Flag_Get("json") ? ELayoutFormat::Json : ELayoutFormat::Table);
        output.m_file = arguments.Text_Get("output");
    }
    if (output.m_file == "-")
    {
        output.m_file.clear();
    }
    if (output.m_format == ELayoutFormat::Png && output.m_file.empty() && CProcessHelper::IsOutputTerminal())
    {
        throw CInputError("standard output is a terminal, and a PNG is no text; redirect it or name a file");
    }
    return output;
}

int Layout_Run(const CArguments& arguments)
{
    const SLayoutOutput output = Output_Get(arguments);
    const SLayout layout = Layout_Probe(Job_Load(Path_FromText(arguments.Text_Get("JOB"))));
    const std::int64_t frames = layout.m_info.m_lineBits / layout.m_info.m_frameBits;
    const std::int64_t first = arguments.Number_Get("first-frame").value_or(0);
    if (first >= frames)
    {
        throw CInputError("--first-frame is " + std::to_string(first) + "; a line has the frames 0 to " +
                          std::to_string(frames - 1));
    }
    std::unique_ptr<CByteSink> sink;
    if (output.m_file.empty())
    {
        sink = std::make_unique<CStandardOutput>();
    }
    else
    {
        sink = std::make_unique<COutputFile>(Path_FromText(output.m_file), ESpecialFile::WriteInPlace);
    }
    if (output.m_format == ELayoutFormat::Svg || output.m_format == ELayoutFormat::Png)
    {
        Layout_Draw(layout, first, arguments.Number_Get("frames").value_or(frames),
                    [&](const SPictureFrame& frame) -> std::unique_ptr<CPicture>
                    {
                        if (output.m_format == ELayoutFormat::Png)
                        {
                            return std::make_unique<CPngPicture>(*sink, frame);
                        }
                        return std::make_unique<CSvgPicture>(*sink, frame);
                    });
    }
    else
    {
        const std::string text =
            output.m_format == ELayoutFormat::Json ? Layout_Json(layout) : Text_Shown(Layout_Text(layout));
        sink->Write(text.data(), text.size());
    }
    sink->Finish();
    return Exit_Done;
}

} // namespace

const SCommand& Command_Layout()
{
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    static const SCommand command = {
        .m_name = "layout",
        .m_summary = "Show where each unit, nozzle and bit of a pixel stands in a board line",
        .m_text = "Found by asking the job's data map, one bit after the other. The separations need not be there.",
        .m_options = {Option_Job(),
                      {.m_kind = EOptionKind::Choice,
                       .m_names = "--format",
                       .m_value = "table|json|svg|png",
                       .m_help = "table: byte.bit for each nozzle; json; svg, png: a picture. Default: table",
                       .m_choices = {"table", "json", "svg", "png"}},
                      Option_Json(),
                      {.m_kind = EOptionKind::File,
                       .m_names = "--png",
                       .m_value = "FILE",
                       .m_help = "The same as --format png --output FILE"},
                      {.m_kind = EOptionKind::File,
                       .m_names = "-o,--output",
                       .m_value = "FILE",
                       .m_help = "Where it goes; - is standard output. Default: standard output"},
                      {.m_kind = EOptionKind::Number,
                       .m_names = "--first-frame",
                       .m_value = "N",
                       .m_help = "The first frame of the picture. Default: 0",
                       .m_most = most},
                      {.m_kind = EOptionKind::Number,
                       .m_names = "--frames",
                       .m_value = "N",
                       .m_help = "Frames of the picture at most. Default: all",
                       .m_least = 1,
                       .m_most = most}},
        .m_examples = {{"boardmap layout page.toml", "byte and bit of every nozzle of every unit"},
                       {"boardmap layout page.toml --png layout.png --frames 16",
                        "the first 16 frames as a picture, units in colours"}},
        .m_pRun = &Layout_Run,
    };
    return command;
}
