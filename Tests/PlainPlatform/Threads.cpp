// Threads and the event: standard parts, a new thread for every start.
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomManualResetEvent.h"

#include "PlainHook.h"
#include "PlainThread.h"

#include <chrono>
#include <exception>
#include <thread>

namespace
{

constexpr unsigned withoutLimit = 4294967295U;

// What a handle points to.
struct SPlainThread
{
    std::mutex mutex; // guards bEnded and exitCode
    std::condition_variable ended;
    bool bEnded = false;
    unsigned long exitCode = 0;
    std::thread thread;
};

void Thread_Run(SPlainThread& self, unsigned long (*startRoutine)(void*), void* parameter)
{
    const unsigned long exitCode = startRoutine(parameter);
    --SPlainHook::runningCount;
    const std::lock_guard guard(self.mutex);
    self.exitCode = exitCode;
    self.bEnded = true;
    self.ended.notify_all();
}

} // namespace

void* CreateThread(void* securityAttributes, std::size_t stackSize, unsigned long (*startRoutine)(void*),
                   void* parameter, std::uint32_t creationFlags, std::uint32_t* threadId)
{
    static std::atomic<std::uint32_t> lastThreadId{1000};
    if (++SPlainHook::creationCount == SPlainHook::failingCreation || securityAttributes != nullptr || stackSize != 0 ||
        creationFlags != 0)
    {
        return nullptr;
    }
    try
    {
        auto self = std::make_unique<SPlainThread>();
        SPlainThread& shared = *self;
        *threadId = ++lastThreadId;
        ++SPlainHook::runningCount;
        shared.thread =
            std::thread([&shared, startRoutine, parameter] { Thread_Run(shared, startRoutine, parameter); });
        ++SPlainHook::startedCount;
        return self.release();
    }
    catch (const std::exception&) // no thread left, or no memory
    {
        --SPlainHook::runningCount;
        return nullptr;
    }
}

bool PlainThread_Wait(void* handle, unsigned timeoutMs)
{
    auto& self = *static_cast<SPlainThread*>(handle);
    std::unique_lock lock(self.mutex);
    const auto HasEnded = [&self] { return self.bEnded; };
    if (timeoutMs == withoutLimit)
    {
        self.ended.wait(lock, HasEnded);
        return true;
    }
    return self.ended.wait_for(lock, std::chrono::milliseconds(timeoutMs), HasEnded);
}

unsigned long PlainThread_ExitCode(void* handle)
{
    auto& self = *static_cast<SPlainThread*>(handle);
    const std::lock_guard guard(self.mutex);
    return self.exitCode;
}

void PlainThread_Close(void* handle)
{
    const std::unique_ptr<SPlainThread> self(static_cast<SPlainThread*>(handle));
    self->thread.join();
}

// The event. Its constructor's argument says nothing here: a new event is not set.

CCustomManualResetEvent::CCustomManualResetEvent(bool) {}

bool CCustomManualResetEvent::Wait(unsigned long timeoutMs, int)
{
    if (CPlainWaitListener* const listener = SPlainHook::waitListener; listener != nullptr)
    {
        listener->EventWait(this, timeoutMs);
    }
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return m_bSet; });
}

void CCustomManualResetEvent::Set()
{
    const std::lock_guard guard(m_mutex);
    m_bSet = true;
    m_changed.notify_all();
}

void CCustomManualResetEvent::Reset()
{
    const std::lock_guard guard(m_mutex);
    m_bSet = false;
}
