// What is wrong with the user's input, one record for each mistake, so that a command can report all of them at once.
// The job's reading and checking, and the opening of its separations, add to a list; who needs a job without mistakes
// throws the list. Plain data; any thread.
#pragma once

#include <string>
#include <tuple>
#include <utility>
#include <vector>

// A place in a text file, both counted from 1.
struct SFilePlace
{
    int m_line = 1;
    int m_column = 1;

    bool operator==(const SFilePlace&) const = default;
    bool operator<(const SFilePlace& other) const
    {
        return std::tie(m_line, m_column) < std::tie(other.m_line, other.m_column);
    }
};

struct SMistake
{
    bool m_bWarning = false; // the job can run, but hardly as it was meant
    std::string m_file;      // as the command line or the job names it, UTF-8
    SFilePlace m_place;      // line 0: the file as a whole
    std::string m_rule;      // a fixed name for programs: "frame-width"
    std::string m_what;      // what was found: "PrinterDataWidth is 17"
    std::string m_fix;       // what would be right: "style 5 needs a multiple of 8"; empty if it goes without saying

    bool operator==(const SMistake&) const = default;
};

// "job.toml:12:20: PrinterDataWidth is 17; style 5 needs a multiple of 8", a warning with "warning: " before it.
std::string Mistake_Text(const SMistake& mistake);

class CMistakeList
{
public:
    void Add(SMistake mistake) { m_mistakes.push_back(std::move(mistake)); }

    // In the order of their places; those of one place in the order in which they were added.
    void Sort();

    const std::vector<SMistake>& All() const { return m_mistakes; }
    bool HasErrors() const;
    int ErrorCount() const;

    // Throws a CInputError with every mistake that is no warning, in the order of their places, if there is one.
    void Errors_Throw() const;

private:
    std::vector<SMistake> m_mistakes;
};
