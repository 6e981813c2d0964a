// Threads of a POSIX system under the names that the thread library uses.
//
// A handle is a counted reference to a record that the thread and the handle's owner share, so that waiting for a
// thread and giving its handle up work in any order. The record says that the thread has ended when its routine has
// returned. The system threads below are those of SystemThread.h.
#include "Platform/Thread/CreateThread.h"

#include "Platform/Thread/AddressWait.h"
#include "Platform/Thread/SpinWait.h"
#include "Platform/Thread/SystemThread.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <new>

namespace
{

constexpr std::chrono::nanoseconds spinLimit{5000};

// What a thread and its handle share. It is deleted with the last of its references.
struct SThread final : CSystemThreadJob
{
    enum EState : std::uint32_t
    {
        Runs = 0,
        RunsAwaited = 1, // somebody may sleep until it has ended
        HasEnded = 2,
    };

    void Run() override { exitCode = static_cast<DWORD>(startRoutine(parameter)); }
    void Ended() override
    {
        if (state.exchange(HasEnded) == RunsAwaited)
        {
            CAddressWait::WakeAll(&state);
        }
        Release();
    }

    void Retain() { ++referenceCount; }
    void Release()
    {
        if (--referenceCount == 0)
        {
            delete this;
        }
    }

    ThreadStartRoutine startRoutine = nullptr;
    void* parameter = nullptr;
    std::atomic<std::uint32_t> state{Runs};
    DWORD exitCode = 0; // written before the end is
    std::atomic<int> referenceCount{2};
};

bool End_Wait(SThread& thread, CAddressWait::TimePoint deadline)
{
    const auto bEnded = [&] { return thread.state.load() == SThread::HasEnded; };
    if (CSpinWait::IsWorthwhile() && CSpinWait::Spin(bEnded, spinLimit, 8))
    {
        return true;
    }
    do
    {
        std::uint32_t runs = SThread::Runs;
        thread.state.compare_exchange_strong(runs, SThread::RunsAwaited);
        CAddressWait::Sleep(thread.state, SThread::RunsAwaited, deadline);
    } while (!bEnded() && (deadline == CAddressWait::withoutLimit || std::chrono::steady_clock::now() < deadline));
    return bEnded();
}

DWORD NextThreadId()
{
    static std::atomic<DWORD> lastId{0};
    return ++lastId;
}

} // namespace

HANDLE CreateThread(void* securityAttributes, std::size_t stackSize, ThreadStartRoutine startRoutine, void* parameter,
                    DWORD creationFlags, DWORD* threadId)
{
    if (securityAttributes != nullptr || creationFlags != 0 || startRoutine == nullptr)
    {
        return nullptr;
    }
    std::unique_ptr<SThread> thread(new (std::nothrow) SThread());
    if (thread == nullptr)
    {
        return nullptr;
    }
    thread->startRoutine = startRoutine;
    thread->parameter = parameter;
    if (threadId != nullptr)
    {
        *threadId = NextThreadId(); // before the thread exists, which may look at it
    }
    return CSystemThread::Start(*thread, stackSize) ? thread.release() : nullptr;
}

DWORD WaitForSingleObject(HANDLE thread, DWORD timeoutMs)
{
    SThread& shared = *static_cast<SThread*>(thread);
    if (shared.state.load() == SThread::HasEnded)
    {
        return WAIT_OBJECT_0;
    }
    if (timeoutMs == 0)
    {
        return WAIT_TIMEOUT;
    }
    shared.Retain(); // the handle may be closed meanwhile
    const bool bEnded =
        End_Wait(shared, timeoutMs == INFINITE ? CAddressWait::withoutLimit : CAddressWait::Deadline(timeoutMs));
    shared.Release();
    return bEnded ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

bool GetExitCodeThread(HANDLE thread, DWORD* exitCode)
{
    const SThread& shared = *static_cast<SThread*>(thread);
    const bool bEnded = shared.state.load() == SThread::HasEnded;
    *exitCode = bEnded ? shared.exitCode : 0;
    return bEnded;
}

bool CloseHandle(HANDLE thread)
{
    static_cast<SThread*>(thread)->Release();
    return true;
}

void SleepingThreads_End()
{
    CSystemThread::Sleeping_End();
}
