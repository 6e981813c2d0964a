// Commands and options as scripts of three shells.
#include "Host/Pages/Completion.h"

#include "Host/Command/Command.h"
#include "Host/TextStream.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace
{

std::string Words_Join(const std::vector<std::string>& words, std::string_view between)
{
    std::string joined;
    for (const std::string& word : words)
    {
        joined += (joined.empty() ? "" : std::string(between)) + word;
    }
    return joined;
}

// In single quotes, for all three.
std::string Quoted(std::string_view text)
{
    std::string quoted = "'";
    for (const char letter : text)
    {
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return quoted + '\'';
}

// The first sentence; the shells show one line.
std::string First_Sentence(const std::string& text)
{
    return text.substr(0, std::min(text.find(". "), text.find("; ")));
}

std::string CommandNames()
{
    std::vector<std::string> names;
    for (const SCommand* pCommand : Commands())
    {
        names.push_back(pCommand->m_name);
    }
    return Words_Join(names, " ");
}

// Colons and brackets separate parts there.
std::string Zsh_Text(std::string_view text)
{
    std::string escaped;
    for (const char letter : text)
    {
        escaped += letter == ':' || letter == '[' || letter == ']' ? "\\" : "";
        escaped += letter;
    }
    return escaped;
}

std::string Zsh_Value(const SCommandOption& option)
{
    switch (option.m_kind)
    {
    case EOptionKind::Flag:
        return "";
    case EOptionKind::Choice:
        return ":" + Zsh_Text(option.Name()) + ":(" + Words_Join(option.m_choices, " ") + ')';
    case EOptionKind::File:
        return ":" + Zsh_Text(option.Name()) + ":_files";
    default:
        return ":" + Zsh_Text(option.Name()) + ": ";
    }
}

std::string Zsh_Option(const SCommandOption& option)
{
    if (option.IsArgument())
    {
        return Quoted((option.m_bMany ? "*" : "") + Zsh_Value(option));
    }
    const std::vector<std::string> names = option.Names();
    const std::string rest = '[' + Zsh_Text(First_Sentence(option.m_help)) + ']' + Zsh_Value(option);
    return names.size() == 1
               ? Quoted(names.front() + rest)
               : Quoted('(' + Words_Join(names, " ") + ')') + '{' + Words_Join(names, ",") + '}' + Quoted(rest);
}

std::string Fish_Option(const std::string& command, const SCommandOption& option)
{
    std::string line = "complete -c boardmap -n '__fish_seen_subcommand_from " + command + '\'';
    for (const std::string& name : option.Names())
    {
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    line += option.m_kind == EOptionKind::Choice ? " -x -a " + Quoted(Words_Join(option.m_choices, " "))
            : option.m_kind == EOptionKind::File ? " -r -F"
            : option.m_kind == EOptionKind::Flag ? ""
                                                 : " -x";
    return line + " -d " + Quoted(First_Sentence(option.m_help)) + '\n';
}

} // namespace

std::string Completion_Bash()
{
    CTextStream script;
    CTextStream options;
    script << "# Completion of boardmap for bash.\n"
              "_boardmap()\n{\n"
              "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command='' words='' i\n"
              "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
              "        if [[ ${COMP_WORDS[i]} != -* ]]; then\n"
              "            command=${COMP_WORDS[i]}\n            break\n        fi\n    done\n"
              "    COMPREPLY=()\n"
              "    case $command:$before in\n";
    for (const SCommand* pCommand : Commands())
    {
        std::vector<std::string> names = {"-h", "--help"};
        for (const SCommandOption& option : pCommand->m_options)
        {
            if (option.IsArgument())
            {
                continue;
            }
            std::vector<std::string> places;
            for (const std::string& name : option.Names())
            {
                names.push_back(name);
                places.push_back(pCommand->m_name + ':' + name);
            }
            if (option.m_kind == EOptionKind::Choice)
            {
                script << "    " << Words_Join(places, " | ") << ") words='" << Words_Join(option.m_choices, " ")
                       << "' ;;\n";
            }
            else if (option.m_kind != EOptionKind::Flag)
            {
                // A number or a text is the user's; names of files the shell completes by itself.
                script << "    " << Words_Join(places, " | ") << ") "
                       << (option.m_kind == EOptionKind::File ? "" : "compopt +o default\n            ")
                       << "return ;;\n";
            }
        }
        options << "        " << pCommand->m_name << ") words='" << Words_Join(names, " ") << "' ;;\n";
    }
    script << "    esac\n"
              "    if [[ -z $words && ( -z $command || $word == -* ) ]]; then\n"
              "        case $command in\n"
              "        '') words='"
           << CommandNames() << " -h --help -V --version' ;;\n"
           << options.str()
           << "        esac\n    fi\n"
              "    if [[ -n $words ]]; then\n"
              "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
              "        ((${#COMPREPLY[@]})) || compopt +o default\n    fi\n"
              "}\ncomplete -o default -F _boardmap boardmap\n";
    return script.str();
}

std::string Completion_Zsh()
{
    CTextStream script;
    script << "#compdef boardmap\n# Completion of boardmap for zsh.\n"
              "_boardmap()\n{\n    local -a commands\n    local context state line\n    commands=(\n";
    for (const SCommand* pCommand : Commands())
    {
        script << "        " << Quoted(pCommand->m_name + ':' + Zsh_Text(First_Sentence(pCommand->m_summary))) << '\n';
    }
    script
        << "    )\n"
           "    _arguments -C '(-h --help)'{-h,--help}'[Print this text and exit]' "
           "'(-V --version)'{-V,--version}'[Print the version and exit]' '1:command:->command' '*::option:->option'\n"
           "    case $state in\n    command) _describe command commands ;;\n    option)\n        case $line[1] in\n";
    for (const SCommand* pCommand : Commands())
    {
        script << "        " << pCommand->m_name
               << ")\n            _arguments '(-h --help)'{-h,--help}'[Print this text and exit]'";
        for (const SCommandOption& option : pCommand->m_options)
        {
            script << " \\\n                " << Zsh_Option(option);
        }
        script << "\n            ;;\n";
    }
    script << "        esac\n        ;;\n    esac\n}\n_boardmap \"$@\"\n";
    return script.str();
}

std::string Completion_Fish()
{
    CTextStream script;
    script << "# Completion of boardmap for fish.\n"
              "complete -c boardmap -s h -l help -d 'Print the help and exit'\n"
              "complete -c boardmap -s V -l version -d 'Print the version and exit'\n"
              "complete -c boardmap -n __fish_use_subcommand -f\n";
    for (const SCommand* pCommand : Commands())
    {
        script << "complete -c boardmap -n __fish_use_subcommand -a " << pCommand->m_name << " -d "
               << Quoted(First_Sentence(pCommand->m_summary)) << '\n';
    }
    for (const SCommand* pCommand : Commands())
    {
        for (const SCommandOption& option : pCommand->m_options)
        {
            script << (option.IsArgument() ? "" : Fish_Option(pCommand->m_name, option));
        }
    }
    return script.str();
}
