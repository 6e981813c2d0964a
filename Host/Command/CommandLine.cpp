// The command line through CLI11, which only this file includes.
#include "Host/Command/CommandLine.h"

#include "Host/Command/Answer.h"
#include "Host/HostError.h"
#include "Host/Job/JobNames.h"
#include "Host/ShownText.h"
#include "Host/TextStream.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>

namespace
{

std::string Words_List(const std::vector<std::string>& words)
{
    std::string list;
    for (const std::string& word : words)
    {
        list += (list.empty() ? "" : ", ") + word;
    }
    return list;
}

std::string Lower_Of(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

// What is wrong with a value, or nothing; turns a choice into its number.
std::string Value_Wrong(const SCommandOption& option, std::string& text)
{
    if (option.m_kind == EOptionKind::Choice)
    {
        const auto found = std::ranges::find(option.m_choices, Lower_Of(text));
        if (found == option.m_choices.end())
        {
            return '"' + text + "\" is none of " + Words_List(option.m_choices);
        }
        text = std::to_string(found - option.m_choices.begin());
        return "";
    }
    if (option.m_kind == EOptionKind::Number)
    {
        std::int64_t number = 0;
        const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool bNumber = error == std::errc() && pEnd == text.data() + text.size();
        return bNumber && number >= option.m_least && number <= option.m_most
                   ? ""
                   : '"' + text + "\" is no whole number from " + std::to_string(option.m_least) + " to " +
                         std::to_string(option.m_most);
    }
    return text.empty() ? "needs a name" : "";
}

void Option_Add(CLI::App& app, const SCommandOption& option)
{
    if (option.m_kind == EOptionKind::Flag)
    {
        app.add_flag(option.m_names, option.m_help);
        return;
    }
    // The function is called with the values that passed the check; they are asked for later.
    auto* added = app.add_option(
        option.m_names, [](const CLI::results_t&) { return true; }, option.m_help);
    added->type_name(option.m_value)->required(option.m_bRequired);
    const bool bManyArguments = option.m_bMany && option.IsArgument();
    added->expected(1, bManyArguments ? CLI::detail::expected_max_vector_size : 1)->allow_extra_args(bManyArguments);
    if (option.m_bMany)
    {
        added->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }
    added->transform(CLI::Validator([option](std::string& text) { return Value_Wrong(option, text); }, ""));
}

std::string Footer_Make(const SCommand& command)
{
    std::string text = command.m_text + (command.m_text.empty() ? "" : "\n");
    for (const SCommandExample& example : command.m_examples)
    {
        text += (&example == &command.m_examples.front() ? "Examples:\n" : "") + ("  " + example.m_line) + "\n      " +
                example.m_what + '\n';
    }
    return text + ExitStatus_Text(&command);
}

CLI::App* Command_Add(CLI::App& app, const SCommand& command)
{
    CLI::App* added = app.add_subcommand(command.m_name, command.m_summary);
    added->set_version_flag("-V,--version", ProgramName_Get(), "Print the version and exit");
    added->footer(Footer_Make(command));
    for (const SCommandOption& option : command.m_options)
    {
        Option_Add(*added, option);
    }
    return added;
}

// The first word that is no option is the command.
void CommandName_Check(const std::vector<std::string>& words)
{
    const auto name = std::find_if(words.begin() + std::min<std::ptrdiff_t>(1, std::ssize(words)), words.end(),
                                   [](const std::string& word) { return !word.starts_with('-'); });
    std::vector<std::string> known;
    for (const SCommand* pCommand : Commands())
    {
        known.push_back(pCommand->m_name);
    }
    if (name == words.end() || std::ranges::find(known, *name) != known.end())
    {
        return;
    }
    const std::optional<std::string> nearest = Name_Nearest(*name, known);
    throw CInputError(Text_Printable(*name) + ": there is no such command; " +
                      (nearest ? "did you mean " + *nearest + "? boardmap --help lists them"
                               : "the commands are " + Names_List(known, "and")));
}

CArguments Arguments_Get(const CLI::App& app, const SCommand& command)
{
    CArguments arguments;
    for (const SCommandOption& option : command.m_options)
    {
        const std::string first = option.m_names.substr(0, option.m_names.find(','));
        const CLI::Option* pOption = app.get_option(first);
        if (pOption->count() > 0)
        {
            arguments.Set(option.Name(), pOption->reduced_results());
        }
    }
    return arguments;
}

} // namespace

int CommandLine_Run(const std::vector<std::string>& words)
{
    CLI::App app(std::string("boardmap: ") + ProgramSummary_Get(), "boardmap");
    app.set_version_flag("-V,--version", ProgramName_Get(), "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this text and exit");
    app.allow_windows_style_options(false); // on no system: a name may begin with a slash
    app.require_subcommand(1);
    app.footer(std::string(ProgramEnvironment_Get()) + '\n' + ExitStatus_Text(nullptr));
    std::vector<CLI::App*> added;
    for (const SCommand* pCommand : Commands())
    {
        added.push_back(Command_Add(app, *pCommand));
    }
    CommandName_Check(words);
    std::vector<const char*> texts;
    texts.reserve(words.size());
    for (const std::string& word : words)
    {
        texts.push_back(word.c_str());
    }
    try
    {
        app.parse(static_cast<int>(texts.size()), texts.data());
    }
    catch (const CLI::ParseError& error)
    {
        if (error.get_exit_code() == 0) // help or version
        {
            CTextStream text;
            const int status = app.exit(error, text, text);
            Answer_Print(text.str());
            return status;
        }
        throw CInputError(std::string(error.what()) + "; boardmap --help tells more");
    }
    for (std::size_t i = 0; i < added.size(); ++i)
    {
        if (added[i]->parsed())
        {
            const SCommand& command = *Commands()[i];
            return command.m_pRun(Arguments_Get(*added[i], command));
        }
    }
    return Exit_BadInput; // not reached: one is required
}
