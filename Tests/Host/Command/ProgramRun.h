// A program in a process of its own, with its outputs in files. Windows only; elsewhere the tests have a shell for it.
#pragma once

#include "Platform/Thread/CreateThread.h"

#include <filesystem>
#include <stdexcept>
#include <string>

class CProgramRun
{
public:
    // Starts `commandLine` (UTF-8) in `folder`, in a process group of its own. Throws std::runtime_error if it cannot.
    CProgramRun(const std::string& commandLine, const std::filesystem::path& folder, const std::filesystem::path& out,
                const std::filesystem::path& error)
    {
        const HANDLE outputs[] = {File_Open(out), File_Open(error)};
        STARTUPINFOW start = {};
        start.cb = sizeof(start);
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
        start.hStdOutput = outputs[0];
        start.hStdError = outputs[1];
        std::wstring line = std::filesystem::path(std::u8string(commandLine.begin(), commandLine.end())).wstring();
        const BOOL bStarted = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP,
                                             nullptr, folder.c_str(), &start, &m_process);
        CloseHandle(outputs[0]);
        CloseHandle(outputs[1]);
        if (bStarted == 0)
        {
            throw std::runtime_error("cannot be started: " + commandLine);
        }
    }
    ~CProgramRun()
    {
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
    }
    CProgramRun(const CProgramRun&) = delete;
    CProgramRun& operator=(const CProgramRun&) = delete;

    // Ctrl-Break, which only this process gets. False if there is no console to send it through.
    bool Break_Send() const { return GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, m_process.dwProcessId) != 0; }

    // Until it has ended; its exit status.
    int Wait() const
    {
        WaitForSingleObject(m_process.hProcess, INFINITE);
        DWORD status = 0;
        GetExitCodeProcess(m_process.hProcess, &status);
        return static_cast<int>(status);
    }

private:
    static HANDLE File_Open(const std::filesystem::path& path)
    {
        SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    }

    PROCESS_INFORMATION m_process = {};
};
