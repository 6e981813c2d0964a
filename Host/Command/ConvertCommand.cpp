// The command convert.
#include "Host/Command/ConvertCommand.h"

#include "Host/Command/Convert.h"
#include "Host/Command/KernelsCommand.h"
#include "Host/PathText.h"
#include "Platform/Log/CustomBoostLog.h"

#include <iostream>

namespace
{

int Convert_RunArguments(const CArguments& arguments)
{
    Kernel_Use(arguments.Text_Get("kernel"));
    SConvertOptions options;
    options.m_job = Path_FromText(arguments.Text_Get("JOB"));
    options.m_output = Path_FromText(arguments.Text_Get("output"));
    options.m_log = Path_FromText(arguments.Text_Get("log"));
    options.m_trace = Path_FromText(arguments.Text_Get("trace"));
    options.m_format = arguments.Choice_Get("format", EBoardFormat::Tiff);
    options.m_compression = arguments.Choice_Get("compress", EBoardCompression::None);
    options.m_progress = arguments.Choice_Get("progress", EProgress::Auto);
    if (arguments.Has("bands"))
    {
        options.m_bands = BandRange_Parse(arguments.Text_Get("bands"));
    }
    options.m_bJson = arguments.Flag_Get("json");
    options.m_bForce = arguments.Flag_Get("force");
    if (arguments.Flag_Get("verbose"))
    {
        CCustomBoostLog::Console_Open(ESeverityLevel::Debug);
    }
    if (!Convert_Run(options))
    {
        std::cerr << "interrupted; nothing was written\n";
        return Exit_Interrupted;
    }
    return Exit_Done;
}

} // namespace

const SCommand& Command_Convert()
{
    static const SCommand command = {
        .m_name = "convert",
        .m_summary = "Turn a job's separations into board data",
        .m_text = "The job file: Docs/job-file.md. The output: Docs/board-stream.md.\n"
                  "One Ctrl-C ends a run within a second, a second one at once. SIGUSR1, where there is one, has it "
                  "tell what it is doing.",
        .m_options =
            {Option_Job(),
             {.m_kind = EOptionKind::File,
              .m_names = "-o,--output",
              .m_value = "FILE",
              .m_help = "Where the board data goes; - is standard output (raw only). Default: the job's name with "
                        ".boards.tif or .boards.raw, in the current folder"},
             {.m_kind = EOptionKind::Choice,
              .m_names = "--format",
              .m_value = "tiff|raw",
              .m_help = "tiff: one page per board band; raw: a binary stream",
              .m_choices = {"tiff", "raw"}},
             {.m_kind = EOptionKind::Choice,
              .m_names = "--compress",
              .m_value = "none|packbits|lzw|deflate",
              .m_help = "How TIFF pages are compressed. Default: none",
              .m_choices = {"none", "packbits", "lzw", "deflate"}},
             {.m_kind = EOptionKind::Text,
              .m_names = "--bands",
              .m_value = "A..B",
              .m_help = "Only these bands of the job, counted from 0 over all pages, blank ones too; A.., ..B and A "
                        "alone will do. boardmap join puts the parts of a job together"},
             {.m_names = "--force", .m_help = "Write raw board data to standard output even if that is a terminal"},
             Option_Progress(),
             {.m_names = "--json", .m_help = "Print the summary as JSON"},
             {.m_kind = EOptionKind::Text,
              .m_names = "--kernel",
              .m_value = "NAME",
              .m_help = "The instructions that data is mapped with, for measuring: a name that boardmap kernels lists. "
                        "Default: the best that this machine runs. The output is the same"},
             {.m_names = "-v,--verbose", .m_help = "Show the library's log records on standard error"},
             {.m_kind = EOptionKind::File,
              .m_names = "--log",
              .m_value = "FILE",
              .m_help = "Append the library's log records to this file"},
             {.m_kind = EOptionKind::File,
              .m_names = "--trace",
              .m_value = "FILE",
              .m_help = "Write what each thread did and when to this file, for Perfetto or chrome://tracing "
                        "(Docs/trace.md)"}},
        .m_examples = {{"boardmap convert page.toml", "board data of the page in page.boards.tif"},
                       {"boardmap convert page.toml --format raw -o - | sender", "the board stream for a program"},
                       {"boardmap convert page.toml --bands 0..8 --format raw -o part-0.raw",
                        "the first nine bands, for boardmap join"}},
        .m_pRun = &Convert_RunArguments,
    };
    return command;
}
