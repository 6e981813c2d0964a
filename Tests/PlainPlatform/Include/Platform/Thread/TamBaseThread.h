// The base of every worker thread: prepare, one step again and again, finish; and the requests and waits around it.
//
// A stop request is a flag that is looked at between two steps. It ends no wait.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

class TamBaseThread
{
public:
    TamBaseThread();
    TamBaseThread(const TamBaseThread& other);
    TamBaseThread& operator=(const TamBaseThread& other);
    virtual ~TamBaseThread();

    virtual bool Start(const char* name);
    virtual bool WaitReady();
    virtual bool WaitPaused();
    virtual bool WaitExit(unsigned int timeoutMs);
    virtual void Stop();
    virtual void Pause();
    virtual void Resume();
    virtual bool IsThreadSuccess();

protected:
    virtual bool OneLoop() = 0;
    virtual bool Prepare();
    virtual void Finally();
    virtual bool CustomCreateThread() = 0;

    unsigned long StartThreadWorker();

    std::string m_threadName;
    void* m_threadHandle = nullptr;
    std::uint32_t m_threadId = 0;
    std::int32_t m_threadState = 0;

private:
    struct SRun;

    bool RunLoop();
    bool PausePoint();

    std::unique_ptr<SRun> m_pRun; // what the worker's thread and the others share
};
