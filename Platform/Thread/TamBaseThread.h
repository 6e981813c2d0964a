// The base of every worker thread: its run loop, its stop and pause requests, and the hand-shakes around them.
//
// A worker derives from CKelBaseThread<Worker>, which derives from this class and creates the operating-system thread.
// One run of a worker is: Start -> Prepare -> OneLoop again and again -> Finally. The last three run on the worker's
// own thread; everything public may be called from any thread, Stop also from the worker itself.
//
// A worker may be started again once its thread has ended. It must not be destroyed while its thread runs: stop it and
// wait for it first.
#pragma once

#include "Platform/PlatformExport.h"
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomCriticalSection.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>

class CWorkerWait;

class PLATFORM_API TamBaseThread
{
public:
    // What a worker is doing. NotStarted is also the state after a thread could not be created.
    enum EThreadState : int
    {
        NotStarted = 0,
        Preparing = 1,
        Running = 2,
        Paused = 3,
        Finishing = 4,
        Ended = 5,
    };

    TamBaseThread();
    // A copy is a worker of the same name that has not been started: threads, requests and waits are not copied.
    // Neither side may be running.
    TamBaseThread(const TamBaseThread& other);
    TamBaseThread& operator=(const TamBaseThread& other);
    virtual ~TamBaseThread();

    // Starts the worker's thread under `name` (copied; used in log records only). False if the thread could not be
    // created, or if this worker is already running, which then goes on untouched. Requests to stop or pause
    // that were made before the start do not count for the new run. What CustomCreateThread throws passes through.
    // After every failure the worker can be started again.
    virtual bool Start(const char* name);

    // Waits until Prepare has returned. True if it succeeded; false if it failed, threw, or there was no start. On the
    // worker's own thread it does not wait.
    virtual bool WaitReady();

    // Waits until a requested pause has been reached, that is, until no OneLoop is in progress and none will be before
    // Resume. False, at once or later, when there is no pause to wait for: not requested, taken back, or overtaken by
    // the worker's end. False at once on the worker's own thread.
    virtual bool WaitPaused();

    // Waits up to `timeoutMs` milliseconds (CCustomManualResetEvent::waitWithoutLimit: without limit) for the worker's
    // thread to end; true if it has. True at once for a worker that was never started. No stop request cuts this wait
    // short. False at once on the worker's own thread. May be called any number of times and by several threads. A wait
    // belongs to the run during which it began: starting the worker again waits for those who still wait for the run
    // before.
    virtual bool WaitExit(unsigned int timeoutMs);

    // Requests the end of the loop and returns at once. No OneLoop begins after it. If another thread is the first to
    // request it, the worker's waits on events end early from then on, in Prepare and in OneLoop. The waits of a worker
    // that requested it first itself last as long as they say, and so do all waits in Finally. Without a running thread
    // a request changes nothing.
    virtual void Stop();

    // Requests that the worker rests between two OneLoop calls, until Resume or Stop.
    virtual void Pause();
    virtual void Resume();

    // True once the worker has ended, Prepare had succeeded, no OneLoop returned false and nothing was thrown.
    virtual bool IsThreadSuccess();

protected:
    // One step of the worker's work. False ends the loop as failed.
    virtual bool OneLoop() = 0;

    // The first and the last thing that the worker's thread does. An override calls the base first in Prepare (and
    // fails if it fails) and last in Finally. Finally runs exactly once for every thread that ran, also after a failed
    // Prepare and after an exception.
    virtual bool Prepare();
    virtual void Finally();

    // Creates the operating-system thread, which must call StartThreadWorker on this object. When it returns false or
    // throws, there must be no such thread.
    virtual bool CustomCreateThread() = 0;

    // The body of the thread; returns its exit code: 1 for a run that succeeded, 0 for one that did not. An exception
    // of Prepare, OneLoop or Finally passes through when the run has ended; of two, the first.
    unsigned long StartThreadWorker();

    bool IsStopRequested() const { return m_bStopRequested.load(); }

    std::string m_threadName;
    HANDLE m_threadHandle = nullptr; // owned; closed by the next Start or the destructor
    DWORD m_threadId = 0;            // filled in by the thread's creation
    std::atomic<int> m_threadState{NotStarted};

private:
    friend class CWorkerWait;

    bool IsOwnThread() const;
    bool RunLoop();
    bool PausePoint();
    void Ready_Set();
    void Finish_Begin();
    void End_Set(bool bSuccess);
    void Start_Undo();
    void LastRun_Close();
    void CloseThread();

    CCustomCriticalSection m_startLock; // serialises Start, and guards m_threadHandle
    std::mutex m_stateLock;             // guards what follows, together with m_stateChanged
    std::condition_variable m_stateChanged;
    bool m_bReady = false;
    std::atomic<bool> m_bPauseRequested{false}; // changed under the lock
    bool m_bSuccess = false;
    bool m_bLive = false; // a run was started and its worker body has not ended
    std::atomic<bool> m_bStopRequested{false};
    std::atomic<bool> m_bWaitsCut{false}; // the worker's waits on events end early; changed under the lock
    int m_exitWaiterCount = 0;            // threads in WaitExit, which use m_threadHandle
    CWorkerWait* m_pWait = nullptr;       // the event wait in progress on this worker's thread; lives on its stack
    std::mutex m_waitLock;                // guards m_pWait
};
