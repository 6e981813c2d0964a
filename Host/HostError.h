// The two ways in which a boardmap command ends badly. Each is one sentence for the person at the keyboard, or one for
// each mistake; who throws it has nothing half-written left behind by the time it arrives in Main, which prints it and
// picks the exit status.
#pragma once

#include "Host/Mistake.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// The user's input is at fault: arguments, the job file or a separation. Exit status 2. The text names the file, the
// place, what was found and what would be right: "job.toml:12:20: PrinterDataWidth is 17; style 5 needs a multiple of
// 8".
class CInputError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    // All of them at once, a line each.
    explicit CInputError(std::vector<SMistake> mistakes);

    // What is wrong with a file, for who names it in words of its own: "there is no such file".
    std::string WithoutFile() const;

    // Empty if the error was thrown as a text.
    std::vector<SMistake> Mistakes_Get() const { return m_mistakes == nullptr ? std::vector<SMistake>() : *m_mistakes; }

private:
    std::shared_ptr<const std::vector<SMistake>> m_mistakes; // shared: copying an exception must not fail
};

// A line for each.
std::string Mistakes_Text(const std::vector<SMistake>& mistakes);

// Something failed while running: a full disk, a stage that stopped. Exit status 1.
class CRunError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The user asked to end while something had to be waited for. Who asked is told by the command.
class CInterruptedError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};
