// The two operations that stand in front of the thread library's own, and how each system lets them: where the linker
// looks into the program first, by their names; on Windows through the import tables, CreateThread of the program,
// which holds the library's objects, and WaitForSingleObject of the platform's DLL.
#include "Tests/Support/ThreadFailure.h"

#include "Platform/Thread/CreateThread.h"

#if defined(_WIN32)
#include "Tests/Support/ImportTable.h"
#else
#include <dlfcn.h>
#endif

#include <atomic>
#include <memory>

namespace
{

#if defined(_WIN32)
using StartRoutine = LPTHREAD_START_ROUTINE;
using SecurityAttributes = LPSECURITY_ATTRIBUTES;
#else
using StartRoutine = ThreadStartRoutine;
using SecurityAttributes = void*;
#endif

// What stands behind the two.
struct SNext
{
    decltype(&CreateThread) createThread;
    decltype(&WaitForSingleObject) waitForSingleObject;
};
const SNext& Next_Get();

constexpr DWORD hourMs = 3600000;
constexpr DWORD shortHourMs = 50;

std::atomic<int> g_failingCreation{0}; // 0: none
std::atomic<int> g_creationCount{0};
std::atomic<int> g_startedCount{0};
std::atomic<int> g_runningCount{0};
std::atomic<bool> g_bShortHour{false};

// What a thread was asked to run.
struct SThreadBody
{
    StartRoutine startRoutine;
    void* parameter;
};

unsigned long Body_Run(void* argument)
{
    const std::unique_ptr<SThreadBody> body(static_cast<SThreadBody*>(argument));
    const unsigned long result = body->startRoutine(body->parameter);
    --g_runningCount;
    return result;
}

HANDLE Thread_Create(SecurityAttributes securityAttributes, std::size_t stackSize, StartRoutine startRoutine,
                     void* parameter, DWORD creationFlags, DWORD* threadId)
{
    if (++g_creationCount == g_failingCreation)
    {
        return nullptr;
    }
    auto body = std::make_unique<SThreadBody>(SThreadBody{startRoutine, parameter});
    ++g_runningCount;
    const HANDLE thread =
        Next_Get().createThread(securityAttributes, stackSize, &Body_Run, body.get(), creationFlags, threadId);
    if (thread == nullptr)
    {
        --g_runningCount;
        return nullptr;
    }
    ++g_startedCount;
    static_cast<void>(body.release()); // the thread's
    return thread;
}

DWORD Object_Wait(HANDLE object, DWORD timeoutMs)
{
    return Next_Get().waitForSingleObject(object, g_bShortHour && timeoutMs == hourMs ? shortHourMs : timeoutMs);
}

} // namespace

#if defined(_WIN32)

namespace
{

// Before main, while there is one thread.
const SNext g_next = {CImportTable(nullptr).Replace("CreateThread", &Thread_Create),
                      CImportTable("ControllerPlatform.dll").Replace("WaitForSingleObject", &Object_Wait)};

const SNext& Next_Get()
{
    return g_next;
}

} // namespace

#else

HANDLE CreateThread(void* securityAttributes, std::size_t stackSize, ThreadStartRoutine startRoutine, void* parameter,
                    DWORD creationFlags, DWORD* threadId)
{
    return Thread_Create(securityAttributes, stackSize, startRoutine, parameter, creationFlags, threadId);
}

DWORD WaitForSingleObject(HANDLE thread, DWORD timeoutMs)
{
    return Object_Wait(thread, timeoutMs);
}

namespace
{

const SNext& Next_Get()
{
    static const SNext next = {
        reinterpret_cast<decltype(&CreateThread)>(dlsym(RTLD_NEXT, "_Z12CreateThreadPvmPFmS_ES_jPj")),
        reinterpret_cast<decltype(&WaitForSingleObject)>(dlsym(RTLD_NEXT, "_Z19WaitForSingleObjectPvj"))};
    return next;
}

} // namespace

#endif

CThreadFailure::CThreadFailure(int nth)
{
    g_creationCount = 0;
    g_startedCount = 0;
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

int CThreadFailure::Started_Count() const
{
    return g_startedCount;
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
