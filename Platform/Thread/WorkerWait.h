// The link between a worker's stop request and the event that the worker waits on. Internal to the thread library.
//
// A thread that is about to sleep on an event puts a CWorkerWait on its stack. On a worker's thread it registers the
// event with the worker, so that a stop request can wake it; on any other thread it does nothing. On Windows nothing is
// registered: a worker has a kernel event for its stop request, and waits for both.
//
// A stop request holds the worker's wait lock while it wakes the event, so that the wait cannot be over before. The
// event has no lock of its own.
#pragma once

class CCustomManualResetEvent;
class TamBaseThread;

class CWorkerWait
{
public:
    // The worker whose body the calling thread runs; null on other threads.
    static TamBaseThread* Worker_Get();
    static void Worker_Set(TamBaseThread* worker);

#if defined(_WIN32)

    // What is signalled while a stop of the calling thread's worker is requested; null on other threads.
    static void* StopHandle_Get();

#else

    explicit CWorkerWait(CCustomManualResetEvent& event);
    ~CWorkerWait();
    CWorkerWait(const CWorkerWait&) = delete;
    CWorkerWait& operator=(const CWorkerWait&) = delete;

    // True if the calling thread is a worker whose stop has been requested.
    static bool IsStopRequested();

    // Wakes the event that `worker` waits on, if it waits on one. Called after the request has been stored.
    static void Wake(TamBaseThread& worker);

private:
    CCustomManualResetEvent& m_event;
    TamBaseThread* m_pWorker;

#endif
};
