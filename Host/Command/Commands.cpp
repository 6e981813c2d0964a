// The table of commands, and what they have in common.
#include "Host/Command/Command.h"

#include "Host/Command/CheckCommand.h"
#include "Host/Command/ConvertCommand.h"
#include "Host/Command/ExplainCommand.h"
#include "Host/Command/InfoCommand.h"
#include "Host/Command/InitCommand.h"
#include "Host/Command/KernelsCommand.h"
#include "Host/Command/LayoutCommand.h"
#include "Host/Command/VerifyCommand.h"

#include <array>

std::span<const SCommand* const> Commands()
{
    static const std::array commands = {&Command_Init(),    &Command_Check(),  &Command_Convert(), &Command_Layout(),
                                        &Command_Explain(), &Command_Verify(), &Command_Info(),    &Command_Kernels()};
    return commands;
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

SCommandOption Option_Progress()
{
    return {.m_kind = EOptionKind::Choice,
            .m_names = "--progress",
            .m_value = "auto|bar|plain|none",
            .m_help = "On standard error: a bar, plain lines, or nothing. Default: auto, a bar on a terminal only",
            .m_choices = {"auto", "bar", "plain", "none"}};
}
