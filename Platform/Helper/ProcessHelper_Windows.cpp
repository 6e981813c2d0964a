// The process and its console, through the system's own calls.
#include "Platform/Helper/ProcessHelper.h"

#include "Platform/Helper/FileWriter.h"
#include "Platform/Thread/CreateThread.h"

#define PSAPI_VERSION 2 // the functions of the system's base library
#include <psapi.h>
#include <shellapi.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <io.h>

namespace
{

// What the C library makes of Ctrl-C, and what a program raises by itself.
constexpr std::array endSignals = {SIGINT, SIGTERM};

std::atomic<const CProcessHelper::SEndPlan*> g_pPlan{nullptr};
std::atomic<bool> g_bEnding{false}; // the plan's first request has come

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

// Ends the process unless it forgets the plan in time.
DWORD WINAPI Grace_Run(void* plan)
{
    const auto* pPlan = static_cast<const CProcessHelper::SEndPlan*>(plan);
    Sleep(static_cast<DWORD>(pPlan->m_graceMs));
    if (g_pPlan == pPlan && g_bEnding)
    {
        CFileWriter::HiddenFiles_Remove();
        DWORD written = 0;
        WriteFile(GetStdHandle(STD_ERROR_HANDLE), pPlan->m_pText, static_cast<DWORD>(std::strlen(pPlan->m_pText)),
                  &written, nullptr);
        TerminateProcess(GetCurrentProcess(), static_cast<UINT>(pPlan->m_exitStatus));
    }
    return 0;
}

// True if the request is the plan's; else the process is about to end.
bool End_Begin()
{
    const CProcessHelper::SEndPlan* const pPlan = g_pPlan;
    if (pPlan == nullptr || g_bEnding.exchange(true))
    {
        CFileWriter::HiddenFiles_Remove();
        return false;
    }
    pPlan->m_pNote();
    const HANDLE thread =
        CreateThread(nullptr, 0, &Grace_Run, const_cast<CProcessHelper::SEndPlan*>(pPlan), 0, nullptr);
    if (thread != nullptr)
    {
        CloseHandle(thread);
    }
    return true;
}

extern "C" void Signal_Handle(int signalNumber)
{
    std::signal(signalNumber, SIG_DFL);
    if (!End_Begin())
    {
        std::raise(signalNumber);
    }
}

// Runs on a thread that the system makes for it.
BOOL WINAPI Close_Handle(DWORD event)
{
    if (event == CTRL_C_EVENT)
    {
        return FALSE; // a signal of the C library
    }
    if (!End_Begin())
    {
        return FALSE;
    }
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

int CProcessHelper::Descriptor_Of(std::FILE* pStream)
{
    return _fileno(pStream);
}

void CProcessHelper::StandardOutput_Binary()
{
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
}

std::int64_t CProcessHelper::ProcessId()
{
    return GetCurrentProcessId();
}

// The C library finds out by itself what is not open, and gives its numbers to nothing else.
void CProcessHelper::StandardDescriptors_Open() {}

void CProcessHelper::EndRequests_Handle(const SEndPlan* pPlan)
{
    SetConsoleCtrlHandler(&Close_Handle, FALSE);
    g_bEnding = false;
    g_pPlan = pPlan;
    for (const int endSignal : endSignals)
    {
        if (std::signal(endSignal, pPlan == nullptr ? SIG_DFL : &Signal_Handle) == SIG_IGN)
        {
            std::signal(endSignal, SIG_IGN);
        }
    }
    if (pPlan != nullptr)
    {
        SetConsoleCtrlHandler(&Close_Handle, TRUE); // again as the last, which is asked first
    }
}

void CProcessHelper::StatusRequests_Mark() {}

bool CProcessHelper::StatusRequest_Take()
{
    return false;
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
