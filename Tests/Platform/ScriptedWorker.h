// A worker whose three steps a test writes as functions. Counts how often each ran; stops and waits for itself when it
// is destroyed, so that a failing test ends.
#pragma once

#include "KelCommon/KelBaseThread.h"
#include "Tests/Platform/TestSignal.h"
#include "Tests/Support/PlatformSetup.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>

class CScriptedWorker : public CKelBaseThread<CScriptedWorker>
{
public:
    CScriptedWorker() = default;
    explicit CScriptedWorker(std::function<bool()> oneLoop) : m_oneLoop(std::move(oneLoop)) {}
    ~CScriptedWorker() override
    {
        CScriptedWorker::Stop();
        CScriptedWorker::WaitExit(withoutLimit);
    }
    CScriptedWorker(const CScriptedWorker&) = delete;
    CScriptedWorker& operator=(const CScriptedWorker&) = delete;

    std::function<bool()> m_prepare = [] { return true; };
    std::function<bool()> m_oneLoop = []
    {
        std::this_thread::yield();
        return true;
    };
    std::function<void()> m_finally = [] {};

    std::atomic<int> m_prepareCount{0};
    std::atomic<int> m_loopCount{0};
    std::atomic<int> m_finallyCount{0};

    int State() const { return m_threadState; }
    std::uint32_t ThreadId() const { return static_cast<std::uint32_t>(m_threadId); }
    auto ThreadHandle() const { return m_threadHandle; }
    const std::string& Name() const { return m_threadName; }

    // Of a thread that has ended.
    unsigned long ExitCode() const { return ThreadExitCode_Get(m_threadHandle); }

    // Starts, and waits for an end that comes by itself.
    bool RunToItsEnd() { return Start("ScriptedWorker") && WaitExit(testPatienceMs); }
    bool StopAndWait()
    {
        Stop();
        return WaitExit(testPatienceMs);
    }

protected:
    bool Prepare() override
    {
        ++m_prepareCount;
        return CKelBaseThread::Prepare() && m_prepare();
    }
    bool OneLoop() override
    {
        ++m_loopCount;
        return m_oneLoop();
    }
    void Finally() override
    {
        ++m_finallyCount;
        m_finally();
        CKelBaseThread::Finally();
    }
};
