// Commands as pages of the manual.
#include "Host/Pages/ManPage.h"

#include <string_view>
#include <vector>

namespace
{

// Text as it stands: a hyphen that can be copied, no line that begins a request.
std::string Roff_Text(std::string_view text)
{
    std::string roff;
    for (const char letter : text)
    {
        const bool bLineBegins = roff.empty() || roff.back() == '\n';
        roff += bLineBegins && (letter == '.' || letter == '\'') ? "\\&" : "";
        if (letter == '-')
        {
            roff += "\\-";
        }
        else if (letter == '\\')
        {
            roff += "\\e";
        }
        else
        {
            roff += letter;
        }
    }
    return roff;
}

std::string Bold(std::string_view text)
{
    return "\\fB" + Roff_Text(text) + "\\fR";
}

std::string Italic(std::string_view text)
{
    return "\\fI" + Roff_Text(text) + "\\fR";
}

std::string Option_Usage(const SCommandOption& option)
{
    std::string usage;
    if (option.IsArgument())
    {
        usage = Italic(option.m_names) + (option.m_bMany ? "..." : "");
    }
    else
    {
        usage = Bold(option.Names().front()) + (option.m_value.empty() ? "" : " " + Italic(option.m_value));
    }
    return option.m_bRequired ? usage : '[' + usage + ']';
}

std::string Option_Entry(const SCommandOption& option)
{
    std::string entry = ".TP\n";
    if (option.IsArgument())
    {
        entry += Italic(option.m_names);
    }
    else
    {
        std::string names;
        for (const std::string& name : option.Names())
        {
            names += (names.empty() ? "" : ", ") + Bold(name);
        }
        entry += names + (option.m_value.empty() ? "" : " " + Italic(option.m_value));
    }
    return entry + '\n' + Roff_Text(option.m_help) + '\n';
}

std::string Page_Begin(const std::string& name, const std::string& summary)
{
    std::string title = name;
    for (char& letter : title)
    {
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    return ".TH " + Roff_Text(title) + R"( 1 "" ")" + Roff_Text(ProgramName_Get()) +
           "\" \"User Commands\"\n.SH NAME\n" + Roff_Text(name) + " \\- " + Roff_Text(summary) + '\n';
}

std::string Section(const char* title, const std::string& text)
{
    return text.empty() ? "" : std::string(".SH ") + title + '\n' + text + (text.back() == '\n' ? "" : "\n");
}

// The section's title says what they are.
std::string ExitStatus_Get(const SCommand* pCommand)
{
    const std::string text = ExitStatus_Text(pCommand);
    return text.substr(text.find(": ") + 2);
}

} // namespace

std::string ManPage_OfProgram()
{
    std::string commands = Roff_Text(ProgramText_Get()) + "\n.PP\nThe commands:\n";
    std::string others;
    for (const SCommand* pCommand : Commands())
    {
        commands += ".TP\n" + Bold(pCommand->m_name) + '\n' + Roff_Text(pCommand->m_summary) + '\n';
        others += (others.empty() ? "" : ",\n") + (".BR boardmap\\-" + pCommand->m_name + " (1)");
    }
    return Page_Begin("boardmap", ProgramSummary_Get()) +
           Section("SYNOPSIS", Bold("boardmap") + ' ' + Italic("COMMAND") + " [" + Italic("OPTIONS") + "] " +
                                   Italic("FILES") + "\n.br\n" + Bold("boardmap") + ' ' + Bold("--help") + "\n.br\n" +
                                   Bold("boardmap") + ' ' + Bold("--version")) +
           Section("DESCRIPTION", commands + ".PP\nEvery command explains itself with\n.BR \\-\\-help .\n") +
           Section("EXIT STATUS", Roff_Text(ExitStatus_Get(nullptr))) +
           Section("ENVIRONMENT", Roff_Text(ProgramEnvironment_Get())) +
           Section("SIGNALS", Roff_Text(ProgramSignals_Get())) + Section("SEE ALSO", others);
}

std::string ManPage_Of(const SCommand& command)
{
    std::string usage = Bold("boardmap " + command.m_name);
    std::string entries;
    for (const SCommandOption& option : command.m_options)
    {
        usage += '\n' + Option_Usage(option);
        entries += Option_Entry(option);
    }
    entries += ".TP\n" + Bold("-h") + ", " + Bold("--help") + "\nPrint the help and exit\n";
    std::string examples;
    for (const SCommandExample& example : command.m_examples)
    {
        examples +=
            ".PP\n" + Roff_Text(example.m_what) + ":\n.PP\n.in +4n\n.nf\n" + Roff_Text(example.m_line) + "\n.fi\n.in\n";
    }
    const std::string text = command.m_text.empty() ? command.m_summary + '.' : command.m_text;
    return Page_Begin("boardmap-" + command.m_name, command.m_summary) + Section("SYNOPSIS", usage) +
           Section("DESCRIPTION", Roff_Text(text)) + Section("OPTIONS", entries) +
           Section("EXIT STATUS", Roff_Text(ExitStatus_Get(&command))) + Section("EXAMPLES", examples) +
           Section("SEE ALSO", ".BR boardmap (1)");
}
