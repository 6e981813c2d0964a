// The command layout: where every nozzle's bits stand in a board line.
#include "Host/Command/LayoutCommand.h"

#include "Host/Command/Layout.h"
#include "Host/HostError.h"
#include "Host/Output/ByteSink.h"
#include "Host/PathText.h"

#include <limits>
#include <memory>

namespace
{

enum class ELayoutFormat
{
    Table,
    Json,
    Svg,
};

int Layout_Run(const CArguments& arguments)
{
    const SLayout layout = Layout_Probe(Job_Load(Path_FromText(arguments.Text_Get("JOB"))));
    const auto format =
        arguments.Choice_Get("format", arguments.Flag_Get("json") ? ELayoutFormat::Json : ELayoutFormat::Table);
    const std::int64_t frames = layout.m_info.m_lineBits / layout.m_info.m_frameBits;
    const std::int64_t first = arguments.Number_Get("first-frame").value_or(0);
    if (first >= frames)
    {
        throw CInputError("--first-frame is " + std::to_string(first) + "; a line has the frames 0 to " +
                          std::to_string(frames - 1));
    }
    const std::string text = format == ELayoutFormat::Json ? Layout_Json(layout)
                             : format == ELayoutFormat::Svg
                                 ? Layout_Svg(layout, first, arguments.Number_Get("frames").value_or(frames))
                                 : Layout_Text(layout);
    std::unique_ptr<CByteSink> sink;
    if (arguments.Has("output") && arguments.Text_Get("output") != "-")
    {
        sink = std::make_unique<COutputFile>(Path_FromText(arguments.Text_Get("output")), ESpecialFile::WriteInPlace);
    }
    else
    {
        sink = std::make_unique<CStandardOutput>();
    }
    sink->Write(text.data(), text.size());
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
                       .m_value = "table|json|svg",
                       .m_help = "table: byte.bit for each nozzle; json; svg: a picture. Default: table",
                       .m_choices = {"table", "json", "svg"}},
                      Option_Json(),
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
                       {"boardmap layout page.toml --format svg --frames 16 -o layout.svg",
                        "the first 16 frames as a picture, units in colours"}},
        .m_pRun = &Layout_Run,
    };
    return command;
}
