// The same failures on Windows, through the import tables: CreateThread of the program, which holds the library's
// objects, and WaitForSingleObject of the platform's DLL.
#include "Tests/Support/ImportTable.h"
#include "Tests/Support/ThreadFailure.h"

#include <atomic>
#include <memory>

namespace
{

constexpr DWORD hourMs = 3600000;
constexpr DWORD shortHourMs = 50;

std::atomic<int> g_failingCreation{0}; // 0: none
std::atomic<int> g_creationCount{0};
std::atomic<int> g_runningCount{0};
std::atomic<bool> g_bShortHour{false};

decltype(&CreateThread) g_pCreateThread = nullptr;
decltype(&WaitForSingleObject) g_pWaitForSingleObject = nullptr;

// What a thread was asked to run.
struct SThreadBody
{
    LPTHREAD_START_ROUTINE startRoutine;
    void* parameter;
};

DWORD WINAPI Body_Run(void* argument)
{
    const std::unique_ptr<SThreadBody> body(static_cast<SThreadBody*>(argument));
    const DWORD result = body->startRoutine(body->parameter);
    --g_runningCount;
    return result;
}

HANDLE WINAPI Thread_Create(LPSECURITY_ATTRIBUTES securityAttributes, SIZE_T stackSize,
                            LPTHREAD_START_ROUTINE startRoutine, void* parameter, DWORD creationFlags, DWORD* threadId)
{
    if (++g_creationCount == g_failingCreation)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    auto body = std::make_unique<SThreadBody>(SThreadBody{startRoutine, parameter});
    ++g_runningCount;
    const HANDLE thread =
        g_pCreateThread(securityAttributes, stackSize, &Body_Run, body.get(), creationFlags, threadId);
    if (thread == nullptr)
    {
        --g_runningCount;
        return nullptr;
    }
    static_cast<void>(body.release()); // the thread's
    return thread;
}

DWORD WINAPI Object_Wait(HANDLE object, DWORD timeoutMs)
{
    return g_pWaitForSingleObject(object, g_bShortHour && timeoutMs == hourMs ? shortHourMs : timeoutMs);
}

// Before main, while there is one thread.
const bool g_bReplaced = []
{
    g_pCreateThread = CImportTable(nullptr).Replace("CreateThread", &Thread_Create);
    g_pWaitForSingleObject = CImportTable("ControllerPlatform.dll").Replace("WaitForSingleObject", &Object_Wait);
    return true;
}();

} // namespace

CThreadFailure::CThreadFailure(int nth)
{
    g_creationCount = 0;
    g_failingCreation = nth;
}

CThreadFailure::~CThreadFailure()
{
    g_failingCreation = 0;
}

int CThreadFailure::Creation_Count() const
{
    return g_creationCount;
}

int CThreadFailure::Running_Count()
{
    return g_runningCount;
}

CShortHour::CShortHour()
{
    g_bShortHour = true;
}

CShortHour::~CShortHour()
{
    g_bShortHour = false;
}
