// Starting and watching a program; the system's own calls.
#include "Tests/Host/Fault/FaultRun.h"

#include "Tests/Support/TestFolder.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

constexpr std::chrono::seconds longestRun{20};

void Output_Take(int number, const std::string& path)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    dup2(file, number);
    close(file);
}

[[noreturn]] void Program_Become(const std::vector<std::string>& words, const std::string& folder,
                                 const std::string& scratch, const std::string& fault)
{
    Output_Take(1, scratch + "/out");
    Output_Take(2, scratch + "/error");
    if (chdir(folder.c_str()) != 0)
    {
        _exit(98);
    }
    setenv("LD_PRELOAD", FAULT_LIBRARY, 1);
    setenv("FAULT_REPORT", (scratch + "/report").c_str(), 1);
    if (!fault.empty())
    {
        setenv("FAULT", fault.c_str(), 1);
    }
    std::vector<char*> arguments;
    for (const std::string& word : words)
    {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    execv(arguments.front(), arguments.data());
    _exit(98);
}

// False, after ending it, if it takes too long.
bool End_Wait(pid_t child, int& status)
{
    const auto end = std::chrono::steady_clock::now() + longestRun;
    auto pause = std::chrono::microseconds(200);
    while (waitpid(child, &status, WNOHANG) == 0)
    {
        if (std::chrono::steady_clock::now() > end)
        {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return false;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::microseconds(20000));
    }
    return true;
}

} // namespace

SFaultRun Fault_Run(const std::vector<std::string>& words, const std::string& folder, const std::string& scratch,
                    const std::string& fault)
{
    std::filesystem::remove(scratch + "/report");
    const pid_t child = fork();
    if (child == 0)
    {
        Program_Become(words, folder, scratch, fault);
    }
    int status = 0;
    SFaultRun run;
    run.m_bHung = !End_Wait(child, status);
    run.m_status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.m_signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    run.m_out = File_Read(scratch + "/out");
    run.m_error = File_Read(scratch + "/error");
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        run.m_files[entry.path().filename().string()] = File_Read(entry.path());
    }
    std::istringstream report(File_Read(scratch + "/report"));
    std::string kind;
    long calls = 0;
    while (report >> kind >> calls)
    {
        run.m_calls[kind] = calls;
    }
    return run;
}

bool File_GiveAway(const std::string& path, unsigned owner)
{
    return chown(path.c_str(), owner, owner) == 0;
}

unsigned File_Owner(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_uid : ~0U;
}
