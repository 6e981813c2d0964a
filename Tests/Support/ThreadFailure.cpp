// The two operations in front of the thread library's own, found behind this executable by their link names.
#include "Tests/Support/ThreadFailure.h"

#include "Platform/Thread/CreateThread.h"

#include <dlfcn.h>

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

template<class Function>
Function Next_Find(const char* linkName)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, linkName));
}

// What a thread was asked to run.
struct SThreadBody
{
    ThreadStartRoutine startRoutine;
    void* parameter;
};

unsigned long Body_Run(void* argument)
{
    const std::unique_ptr<SThreadBody> body(static_cast<SThreadBody*>(argument));
    const unsigned long result = body->startRoutine(body->parameter);
    --g_runningCount;
    return result;
}

} // namespace

HANDLE CreateThread(void* securityAttributes, std::size_t stackSize, ThreadStartRoutine startRoutine, void* parameter,
                    DWORD creationFlags, DWORD* threadId)
{
    static const auto next = Next_Find<decltype(&CreateThread)>("_Z12CreateThreadPvmPFmS_ES_jPj");
    if (++g_creationCount == g_failingCreation)
    {
        return nullptr;
    }
    auto body = std::make_unique<SThreadBody>(SThreadBody{startRoutine, parameter});
    ++g_runningCount;
    const HANDLE thread = next(securityAttributes, stackSize, &Body_Run, body.get(), creationFlags, threadId);
    if (thread == nullptr)
    {
        --g_runningCount;
        return nullptr;
    }
    static_cast<void>(body.release()); // the thread's
    return thread;
}

DWORD WaitForSingleObject(HANDLE thread, DWORD timeoutMs)
{
    static const auto next = Next_Find<decltype(&WaitForSingleObject)>("_Z19WaitForSingleObjectPvj");
    return next(thread, g_bShortHour && timeoutMs == hourMs ? shortHourMs : timeoutMs);
}

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
