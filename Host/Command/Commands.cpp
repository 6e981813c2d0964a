// The table of commands, and what they have in common.
#include "Host/Command/Command.h"

#include "Host/Command/CheckCommand.h"
#include "Host/Command/ConvertCommand.h"
#include "Host/Command/ExplainCommand.h"
#include "Host/Command/InfoCommand.h"
#include "Host/Command/InitCommand.h"
#include "Host/Command/JoinCommand.h"
#include "Host/Command/KernelsCommand.h"
#include "Host/Command/LayoutCommand.h"
#include "Host/Command/PreviewCommand.h"
#include "Host/Command/ReportCommand.h"
#include "Host/Command/VerifyCommand.h"

#include <array>

std::span<const SCommand* const> Commands()
{
    static const std::array commands = {&Command_Init(),   &Command_Check(),   &Command_Convert(), &Command_Join(),
                                        &Command_Layout(), &Command_Explain(), &Command_Preview(), &Command_Report(),
                                        &Command_Verify(), &Command_Info(),    &Command_Kernels()};
    return commands;
}

const char* ProgramSummary_Get()
{
    return "print unit separations in, head-driver board data out";
}

const char* ProgramText_Get()
{
    return "boardmap takes the separations of a page, one TIFF for each print unit, and writes the data that the\n"
           "head-driver boards of an inkjet printer expect: one band for each pass of the carriage, in which the bits\n"
           "of all units are interleaved. A job file names the separations and describes the carriage and its boards.";
}

const char* ProgramSignals_Get()
{
    return "SIGINT, SIGTERM and SIGHUP end a run within a second, with nothing left behind; a second one ends it at "
           "once.\n"
           "Those that are ignored when boardmap is started stay ignored. SIGUSR1 makes boardmap convert tell on "
           "standard\n"
           "error what its stage, threads and queues are doing.";
}

const char* ProgramEnvironment_Get()
{
    return "On a terminal, errors are red and warnings yellow; not with NO_COLOR set to anything but nothing, nor "
           "with\n"
           "TERM=dumb.";
}

std::string ExitStatus_Text(const SCommand* pCommand)
{
    const bool bOwn = pCommand != nullptr && !pCommand->m_exitText.empty();
    return "Exit status: 0 done; 1 " + (bOwn ? pCommand->m_exitText : "failed while running") +
           "; 2 bad usage or bad input; 130 interrupted.\nWhatever goes wrong, nothing half-written is left behind.";
}

const char* ProgramVersion_Get()
{
    return BOARDMAP_VERSION;
}

std::string ProgramName_Get()
{
    return std::string("boardmap ") + ProgramVersion_Get();
}

std::string SCommandOption::Name() const
{
    return IsArgument() ? m_names : m_names.substr(m_names.find("--") + 2);
}

std::vector<std::string> SCommandOption::Names() const
{
    std::vector<std::string> names;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 1)
    {
        end = m_names.find(',', begin);
        names.push_back(m_names.substr(begin, end == std::string::npos ? end : end - begin));
    }
    return names;
}

std::string CArguments::Text_Get(const std::string& name) const
{
    const auto found = m_values.find(name);
    return found == m_values.end() || found->second.empty() ? "" : found->second.front();
}

std::vector<std::string> CArguments::Texts_Get(const std::string& name) const
{
    const auto found = m_values.find(name);
    return found == m_values.end() ? std::vector<std::string>() : found->second;
}

std::optional<std::int64_t> CArguments::Number_Get(const std::string& name) const
{
    return Has(name) ? std::optional<std::int64_t>(std::stoll(Text_Get(name))) : std::nullopt;
}

SCommandOption Option_Job()
{
    return {.m_kind = EOptionKind::File, .m_names = "JOB", .m_help = "The job file (TOML)", .m_bRequired = true};
}

SCommandOption Option_Json()
{
    return {.m_names = "--json", .m_help = "Print JSON instead of text"};
}

SCommandOption Option_Ink()
{
    return {.m_kind = EOptionKind::Text,
            .m_names = "--ink",
            .m_value = "NAME=#RRGGBB",
            .m_help = "The colour of an ink, by its unit's name or separation. May stand several times",
            .m_bMany = true};
}

SCommandOption Option_Progress()
{
    return {.m_kind = EOptionKind::Choice,
            .m_names = "--progress",
            .m_value = "auto|bar|plain|none",
            .m_help = "On standard error: a bar, plain lines, or nothing. Default: auto, a bar on a terminal only",
            .m_choices = {"auto", "bar", "plain", "none"}};
}
