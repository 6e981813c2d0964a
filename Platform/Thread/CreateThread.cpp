// Threads of a POSIX system under the names that the thread library uses.
//
// A handle is a counted reference to a record that the thread and the handle's owner share, so that waiting for a
// thread and giving its handle up work in any order. The record says that the thread has ended when its routine has
// returned; the owner joins it when it closes the handle, or lets it go on by itself.
#include "Platform/Thread/CreateThread.h"

#if !defined(_WIN32)

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <pthread.h>

namespace
{

struct SThread
{
    ThreadStartRoutine startRoutine = nullptr;
    void* parameter = nullptr;
    pthread_t id = {};
    std::mutex lock;
    std::condition_variable ended;
    bool bEnded = false;
    DWORD exitCode = 0;
};
using ThreadPtr = std::shared_ptr<SThread>;

DWORD NextThreadId()
{
    static std::atomic<DWORD> lastId{0};
    return ++lastId;
}

void* ThreadMain(void* argument)
{
    const std::unique_ptr<ThreadPtr> own(static_cast<ThreadPtr*>(argument));
    SThread& thread = **own;
    const auto exitCode = static_cast<DWORD>(thread.startRoutine(thread.parameter));
    const std::lock_guard guard(thread.lock);
    thread.exitCode = exitCode;
    thread.bEnded = true;
    thread.ended.notify_all();
    return nullptr;
}

} // namespace

HANDLE CreateThread(void* securityAttributes, std::size_t stackSize, ThreadStartRoutine startRoutine, void* parameter,
                    DWORD creationFlags, DWORD* threadId)
{
    if (securityAttributes != nullptr || creationFlags != 0 || startRoutine == nullptr)
    {
        return nullptr;
    }
    auto handle = std::make_unique<ThreadPtr>(std::make_shared<SThread>());
    SThread& thread = **handle;
    thread.startRoutine = startRoutine;
    thread.parameter = parameter;
    if (threadId != nullptr)
    {
        *threadId = NextThreadId(); // before the thread exists, which may look at it
    }
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    auto own = std::make_unique<ThreadPtr>(*handle);
    const bool bSizeOk = stackSize == 0 || pthread_attr_setstacksize(&attributes, stackSize) == 0;
    const bool bCreated = bSizeOk && pthread_create(&thread.id, &attributes, &ThreadMain, own.get()) == 0;
    pthread_attr_destroy(&attributes);
    if (!bCreated)
    {
        return nullptr;
    }
    static_cast<void>(own.release()); // the thread's
    return handle.release();
}

DWORD WaitForSingleObject(HANDLE thread, DWORD timeoutMs)
{
    const ThreadPtr shared = *static_cast<ThreadPtr*>(thread);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    std::unique_lock lock(shared->lock);
    const auto bEnded = [&] { return shared->bEnded; };
    if (timeoutMs == INFINITE)
    {
        shared->ended.wait(lock, bEnded);
        return WAIT_OBJECT_0;
    }
    return shared->ended.wait_until(lock, deadline, bEnded) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

bool GetExitCodeThread(HANDLE thread, DWORD* exitCode)
{
    SThread& shared = **static_cast<ThreadPtr*>(thread);
    const std::lock_guard guard(shared.lock);
    *exitCode = shared.exitCode;
    return shared.bEnded;
}

bool CloseHandle(HANDLE thread)
{
    const std::unique_ptr<ThreadPtr> handle(static_cast<ThreadPtr*>(thread));
    SThread& shared = **handle;
    bool bEnded = false;
    {
        const std::lock_guard guard(shared.lock);
        bEnded = shared.bEnded;
    }
    const int result = bEnded ? pthread_join(shared.id, nullptr) : pthread_detach(shared.id);
    return result == 0;
}

#endif
