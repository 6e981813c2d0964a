// boardmap's entry: the command line, the log switches, and the exit status.
#include "Host/Command/Convert.h"
#include "Host/Command/Kernels.h"
#include "Host/HostError.h"
#include "Host/Output/PathText.h"
#include "Platform/Helper/ProcessHelper.h"
#include "Platform/Log/CustomBoostLog.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <map>
#include <new>
#include <string>
#include <vector>

namespace
{

enum EExitStatus : int
{
    Exit_Done = 0,
    Exit_Failed = 1,
    Exit_BadInput = 2,
    Exit_Interrupted = 130,
};

struct SCommandLine
{
    SConvertOptions convert;
    std::string job;
    std::string output;
    std::string logFile;
    std::string kernel;
    bool bVerbose = false;
};

constexpr const char* exitStatusText = "Exit status: 0 done; 1 failed while running; 2 bad usage or bad input; "
                                       "130 interrupted.\nWhatever goes wrong, nothing half-written is left behind.";

// Turns the names of an option into its values.
template<class T>
CLI::Validator Names(const std::map<std::string, T>& names)
{
    const auto Value_Find = [names](std::string& text)
    {
        const auto found = names.find(CLI::detail::to_lower(text));
        if (found != names.end())
        {
            text = std::to_string(static_cast<int>(found->second));
            return std::string();
        }
        std::string known;
        for (const auto& [name, value] : names)
        {
            known += (known.empty() ? "" : ", ") + name;
        }
        return '"' + text + "\" is none of " + known;
    };
    return CLI::Validator(Value_Find, "");
}

void Options_Add(CLI::App& app, SCommandLine& line)
{
    auto* convert = app.add_subcommand("convert", "Turn a job's separations into board data");
    convert->footer(std::string("The job file: Docs/job-file.md. The output: Docs/board-stream.md.\n") +
                    exitStatusText);
    convert->add_option("JOB", line.job, "The job file (TOML)")->required()->type_name("");
    convert
        ->add_option("-o,--output", line.output,
                     "Where the board data goes; - is standard output (raw only). Default: the job's name with "
                     ".boards.tif or .boards.raw, in the current folder")
        ->type_name("FILE")
        ->check([](const std::string& name) { return std::string(name.empty() ? "needs a name" : ""); });
    convert->add_option("--format", line.convert.m_format, "tiff: one page per board band; raw: a binary stream")
        ->transform(Names<EBoardFormat>({{"tiff", EBoardFormat::Tiff}, {"raw", EBoardFormat::Raw}}))
        ->type_name("tiff|raw");
    convert->add_option("--compress", line.convert.m_compression, "How TIFF pages are compressed. Default: none")
        ->transform(Names<EBoardCompression>({{"none", EBoardCompression::None},
                                              {"packbits", EBoardCompression::PackBits},
                                              {"lzw", EBoardCompression::Lzw},
                                              {"deflate", EBoardCompression::Deflate}}))
        ->type_name("none|packbits|lzw|deflate");
    convert
        ->add_option("--progress", line.convert.m_progress,
                     "On standard error: a bar, plain lines, or nothing. Default: auto, a bar on a terminal only")
        ->transform(Names<EProgress>({{"auto", EProgress::Auto},
                                      {"bar", EProgress::Bar},
                                      {"plain", EProgress::Plain},
                                      {"none", EProgress::None}}))
        ->type_name("auto|bar|plain|none");
    convert
        ->add_option("--kernel", line.kernel,
                     "The instructions that data is mapped with, for measuring: a name that boardmap kernels lists. "
                     "Default: the best that this machine runs. The output is the same")
        ->type_name("NAME")
        ->check([](const std::string& name) { return std::string(name.empty() ? "needs a name" : ""); });
    convert->add_flag("-v,--verbose", line.bVerbose, "Show the library's log records on standard error");
    convert->add_option("--log", line.logFile, "Append the library's log records to this file")->type_name("FILE");
    app.add_subcommand("kernels", "List the kernels, versions of the mapping's inner loops, that this machine runs");
}

int Run(const std::vector<std::string>& arguments)
{
    CProcessHelper::WriteSignals_Ignore();
    SCommandLine line;
    CLI::App app("boardmap: print unit separations in, head-driver board data out.", "boardmap");
    app.set_version_flag("--version", "boardmap " BOARDMAP_VERSION);
    app.set_help_flag("-h,--help", "Print this text and exit");
    app.allow_windows_style_options(false); // on no system: a name may begin with a slash
    app.require_subcommand(1);
    app.footer(exitStatusText);
    Options_Add(app, line);
    std::vector<const char*> texts;
    texts.reserve(arguments.size());
    for (const std::string& argument : arguments)
    {
        texts.push_back(argument.c_str());
    }
    try
    {
        app.parse(static_cast<int>(texts.size()), texts.data());
    }
    catch (const CLI::ParseError& error)
    {
        if (error.get_exit_code() == 0) // help or version
        {
            return app.exit(error);
        }
        std::cerr << error.what() << "; boardmap --help tells more\n";
        return Exit_BadInput;
    }
    if (app.got_subcommand("kernels"))
    {
        Kernels_Print(std::cout);
        return Exit_Done;
    }
    Kernel_Use(line.kernel);
    line.convert.m_job = Path_FromText(line.job);
    line.convert.m_output = Path_FromText(line.output);
    line.convert.m_log = Path_FromText(line.logFile);
    if (line.bVerbose)
    {
        CCustomBoostLog::Console_Open(ESeverityLevel::Debug);
    }
    if (!Convert_Run(line.convert))
    {
        std::cerr << "interrupted; nothing was written\n";
        return Exit_Interrupted;
    }
    return Exit_Done;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    [[maybe_unused]] const CConsoleText console;
    try
    {
        return Run(CProcessHelper::Arguments_Get(argumentCount, arguments));
    }
    catch (const CInputError& error)
    {
        std::cerr << error.what() << '\n';
        return Exit_BadInput;
    }
    catch (const std::bad_alloc&)
    {
        std::cerr << "out of memory\n";
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
    }
    catch (...)
    {
        std::cerr << "failed for an unknown reason; -v shows the library's records\n";
    }
    return Exit_Failed;
}
