// The link between a worker's stop request and the event that the worker waits on. Internal to the thread library.
//
// A thread that is about to sleep on an event puts a CWorkerWait on its stack. On a worker's thread the object
// registers the event with the worker, so that a stop request can wake it; on any other thread it does nothing.
//
// The worker decides which of its waits a stop request cuts short (see TamBaseThread::Stop). A stop request holds the
// worker's wait lock while it wakes the event, so the wait cannot end before. The event has no lock of its own.
#pragma once

class CCustomManualResetEvent;
class TamBaseThread;

class CWorkerWait
{
public:
    // The worker whose body the calling thread runs; null on other threads.
    static TamBaseThread* Worker_Get();
    static void Worker_Set(TamBaseThread* worker);

    explicit CWorkerWait(CCustomManualResetEvent& event);
    ~CWorkerWait();
    CWorkerWait(const CWorkerWait&) = delete;
    CWorkerWait& operator=(const CWorkerWait&) = delete;

    // True if the calling thread is a worker whose waits are cut short.
    static bool IsCut();

    // Wakes the event that `worker` waits on, if it waits on one. Called after the request has been stored.
    static void Wake(TamBaseThread& worker);

private:
    CCustomManualResetEvent& m_event;
    TamBaseThread* m_pWorker;
};
