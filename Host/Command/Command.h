// What a command of boardmap is: its words for the help, the options that it takes, and the function that runs it. Each
// command is one file that defines one SCommand; Commands.cpp has the table of them. The command line is parsed from
// this data, and so is every other description of a command made from it, so that none can differ.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

enum EExitStatus : int
{
    Exit_Done = 0,
    Exit_Failed = 1, // while running; or what was looked for was found: a difference, a damaged file
    Exit_BadInput = 2,
    Exit_Interrupted = 130,
};

enum class EOptionKind
{
    Flag,
    Text,
    File,
    Number, // whole, within limits
    Choice, // one of some words, in any case
};

struct SCommandOption
{
    EOptionKind m_kind = EOptionKind::Flag;
    std::string m_names = {}; // "-o,--output"; "JOB" for an argument that stands by itself
    std::string m_value = {}; // what the help calls its value, "FILE"; not for flags
    std::string m_help = {};
    std::vector<std::string> m_choices = {}; // lower case
    std::int64_t m_least = 0;
    std::int64_t m_most = 0;
    bool m_bRequired = false;
    bool m_bMany = false; // may stand several times, with a value each; once at least if required

    bool IsArgument() const { return !m_names.starts_with('-'); }

    // "output" of "-o,--output", "JOB" of "JOB".
    std::string Name() const;

    // "-o" and "--output".
    std::vector<std::string> Names() const;
};

struct SCommandExample
{
    std::string m_line = {}; // "boardmap convert page.toml"
    std::string m_what = {}; // what it does: "board data of a page, as a TIFF"
};

// What the user gave, by the names of the options.
class CArguments
{
public:
    bool Has(const std::string& name) const { return m_values.contains(name); }
    bool Flag_Get(const std::string& name) const { return Has(name); }

    // Empty if it was not given.
    std::string Text_Get(const std::string& name) const;
    std::vector<std::string> Texts_Get(const std::string& name) const;

    std::optional<std::int64_t> Number_Get(const std::string& name) const;

    // The enumerator whose number is the choice's place among its option's; `otherwise` if it was not given.
    template<class TEnum>
    TEnum Choice_Get(const std::string& name, TEnum otherwise) const
    {
        const std::optional<std::int64_t> number = Number_Get(name);
        return number ? static_cast<TEnum>(*number) : otherwise;
    }

    // For the command line: numbers and choices as texts of numbers.
    void Set(const std::string& name, std::vector<std::string> values) { m_values[name] = std::move(values); }

private:
    std::map<std::string, std::vector<std::string>> m_values;
};

struct SCommand
{
    std::string m_name = {};    // "convert"
    std::string m_summary = {}; // one line: "Turn a job's separations into board data"
    std::string m_text = {};    // paragraphs for the help, below the options; may be empty
    std::vector<SCommandOption> m_options = {};
    std::vector<SCommandExample> m_examples = {};
    std::string m_exitText = {};                // what exit status 1 means here; empty: failed while running
    int (*m_pRun)(const CArguments&) = nullptr; // returns the exit status; throws CInputError or CRunError
};

// The table, in the order of the help.
std::span<const SCommand* const> Commands();

// What boardmap is, in a line and in a paragraph.
const char* ProgramSummary_Get();
const char* ProgramText_Get();

// What signals do, where there are any.
const char* ProgramSignals_Get();

// What the environment says to it.
const char* ProgramEnvironment_Get();

// What the exit statuses of a command mean, or of any command for null.
std::string ExitStatus_Text(const SCommand* pCommand);

// The version that this program was built as: "1.2.0"; and "boardmap 1.2.0".
const char* ProgramVersion_Get();
std::string ProgramName_Get();

// Options that several commands have.
SCommandOption Option_Job();      // JOB
SCommandOption Option_Json();     // --json
SCommandOption Option_Ink();      // --ink NAME=#RRGGBB, for InkChoice_Parse
SCommandOption Option_Progress(); // --progress, for Choice_Get<EProgress>
