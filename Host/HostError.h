// The two ways in which a boardmap command ends badly. Each is one sentence for the person at the keyboard; who throws
// it has nothing half-written left behind by the time it arrives in Main, which prints it and picks the exit status.
#pragma once

#include <stdexcept>

// The user's input is at fault: arguments, the job file or a separation. Exit status 2. The text names the file, the
// place, what was found and what would be right: "job.toml:12:20: PrinterDataWidth is 17; style 5 needs a multiple of
// 8".
class CInputError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Something failed while running: a full disk, a stage that stopped. Exit status 1.
class CRunError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};
