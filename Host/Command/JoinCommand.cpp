// The command join.
#include "Host/Command/JoinCommand.h"

#include "Host/Command/Answer.h"
#include "Host/Command/Join.h"
#include "Host/HostError.h"
#include "Host/PathText.h"
#include "Host/TextStream.h"

#include <nlohmann/json.hpp>

#include <iostream>

namespace
{

std::string Result_Text(const SJoinResult& result, const std::string& output, std::size_t parts)
{
    CTextStream text;
    text << Name_Shown(output) << ": " << result.m_bands << (result.m_bands == 1 ? " band" : " bands");
    if (result.m_pages > 1)
    {
        text << " of " << result.m_pages << " pages";
    }
    text << " from " << parts << (parts == 1 ? " part, " : " parts, ") << result.m_lines << " lines, " << result.m_bytes
         << " bytes of board data\n";
    return text.str();
}

std::string Result_Json(const SJoinResult& result, const std::string& output, std::size_t parts)
{
    const nlohmann::ordered_json json = {{"Output", output},        {"Parts", parts},
                                         {"Pages", result.m_pages}, {"Bands", result.m_bands},
                                         {"Lines", result.m_lines}, {"Bytes", result.m_bytes}};
    return json.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

int Join_RunArguments(const CArguments& arguments)
{
    if (!arguments.Has("output"))
    {
        throw CInputError("-o is missing: join needs the name of the output");
    }
    SJoinOptions options;
    for (const std::string& part : arguments.Texts_Get("PART"))
    {
        options.m_parts.push_back(Path_FromText(part));
    }
    options.m_target.m_path = Path_FromText(arguments.Text_Get("output"));
    options.m_target.m_format = arguments.Choice_Get("format", EBoardFormat::Tiff);
    options.m_target.m_compression = arguments.Choice_Get("compress", EBoardCompression::None);
    options.m_target.m_bForce = arguments.Flag_Get("force");
    options.m_bFormatGiven = arguments.Has("format");
    options.m_progress = arguments.Choice_Get("progress", EProgress::Auto);
    const std::optional<SJoinResult> result = Join_Run(options);
    if (!result)
    {
        std::cerr << "interrupted; nothing was written\n";
        return Exit_Interrupted;
    }
    const bool bStandardOutput = IsStandardOutput(options.m_target.m_path);
    const std::string output = bStandardOutput ? "standard output" : Path_Text(options.m_target.m_path);
    const std::string summary = arguments.Flag_Get("json") ? Result_Json(*result, output, options.m_parts.size())
                                                           : Result_Text(*result, output, options.m_parts.size());
    if (bStandardOutput)
    {
        std::cerr << summary << std::flush;
    }
    else
    {
        Answer_Print(summary);
    }
    return Exit_Done;
}

} // namespace

const SCommand& Command_Join()
{
    static const SCommand command = {
        .m_name = "join",
        .m_summary = "Put the parts of a job together that convert --bands has made",
        .m_text =
            "The parts may be given in any order, and be TIFFs or board streams; together they must be exactly one\n"
            "job. The result is what one run over the whole job writes, byte for byte. Docs/split.md has recipes.",
        .m_options = {{.m_kind = EOptionKind::File,
                       .m_names = "PART",
                       .m_help = "The outputs of convert --bands",
                       .m_bRequired = true,
                       .m_bMany = true},
                      {.m_kind = EOptionKind::File,
                       .m_names = "-o,--output",
                       .m_value = "FILE",
                       .m_help = "Where the board data goes; - is standard output (raw only)"},
                      {.m_kind = EOptionKind::Choice,
                       .m_names = "--format",
                       .m_value = "tiff|raw",
                       .m_help = "tiff: one page per board band; raw: a binary stream. Default: as the first part",
                       .m_choices = {"tiff", "raw"}},
                      {.m_kind = EOptionKind::Choice,
                       .m_names = "--compress",
                       .m_value = "none|packbits|lzw|deflate",
                       .m_help = "How TIFF pages are compressed, whatever those of the parts. Default: none",
                       .m_choices = {"none", "packbits", "lzw", "deflate"}},
                      {.m_names = "--force",
                       .m_help = "Write raw board data to standard output even if that is a terminal"},
                      Option_Progress(),
                      Option_Json()},
        .m_examples = {{"boardmap join part-*.raw -o page.boards.raw", "the board stream of the whole job"},
                       {"boardmap join part-*.raw --format tiff -o page.boards.tif", "the same as a TIFF"}},
        .m_pRun = &Join_RunArguments,
    };
    return command;
}
