// The process and its console, through the system's own calls.
#include "Platform/Helper/ProcessHelper.h"

#include "Platform/Thread/CreateThread.h"

#define PSAPI_VERSION 2 // the functions of the system's base library
#include <psapi.h>
#include <shellapi.h>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <io.h>

namespace
{

std::atomic<void (*)()> g_pCloseHandler{nullptr};

std::string Utf8_Make(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
    utf8.pop_back(); // the end mark
    return utf8;
}

bool IsConsole(DWORD standardHandle)
{
    DWORD mode = 0; // a handle without one is no console
    return GetConsoleMode(GetStdHandle(standardHandle), &mode) != 0;
}

// Runs on a thread that the system makes for it.
BOOL WINAPI Close_Handle(DWORD event)
{
    if (event == CTRL_C_EVENT)
    {
        return FALSE; // a signal of the C library
    }
    void (*const pHandler)() = g_pCloseHandler.exchange(nullptr);
    if (pHandler == nullptr)
    {
        return FALSE;
    }
    pHandler();
    if (event != CTRL_BREAK_EVENT)
    {
        Sleep(INFINITE); // the system ends the process when this returns, so it is left to the process to end
    }
    return TRUE;
}

} // namespace

std::vector<std::string> CProcessHelper::Arguments_Get(int argumentCount, char** arguments)
{
    // What main was given has lost every character that the system's own code page does not have.
    int count = 0;
    LPWSTR* const wideArguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wideArguments == nullptr)
    {
        return {arguments, arguments + argumentCount};
    }
    std::vector<std::string> list;
    for (int i = 0; i < count; ++i)
    {
        list.push_back(Utf8_Make(wideArguments[i]));
    }
    LocalFree(wideArguments);
    return list;
}

bool CProcessHelper::IsErrorTerminal()
{
    return IsConsole(STD_ERROR_HANDLE);
}

bool CProcessHelper::IsOutputTerminal()
{
    return IsConsole(STD_OUTPUT_HANDLE);
}

int CProcessHelper::TerminalWidth()
{
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) == 0)
    {
        return 80;
    }
    const int width = info.srWindow.Right - info.srWindow.Left + 1;
    return width > 0 ? width : 80;
}

std::int64_t CProcessHelper::PeakMemoryBytes()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    if (GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)) == 0)
    {
        return 0;
    }
    return static_cast<std::int64_t>(counters.PeakWorkingSetSize);
}

void CProcessHelper::WriteSignals_Ignore() {}

void CProcessHelper::StandardOutput_Binary()
{
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
}

std::int64_t CProcessHelper::ProcessId()
{
    return GetCurrentProcessId();
}

void CProcessHelper::TerminalClose_Handle(void (*pHandler)())
{
    SetConsoleCtrlHandler(&Close_Handle, FALSE);
    g_pCloseHandler = pHandler;
    if (pHandler != nullptr)
    {
        SetConsoleCtrlHandler(&Close_Handle, TRUE); // again as the last, which is asked first
    }
}

CConsoleText::CConsoleText() : m_formerCodePage(GetConsoleOutputCP())
{
    SetConsoleOutputCP(CP_UTF8);
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(error, &mode) != 0)
    {
        SetConsoleMode(error, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
}

CConsoleText::~CConsoleText()
{
    if (m_formerCodePage != 0)
    {
        SetConsoleOutputCP(m_formerCodePage);
    }
}
