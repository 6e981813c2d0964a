// The worker-thread frame: creates the operating-system thread of a worker and keeps exceptions inside it.
//
// Every active object derives from CKelBaseThread<itself>. The frame adds one thing to TamBaseThread: the thread. It
// holds no data and takes no lock. No priority, affinity, stack size or system thread name is set; a worker's name is
// for its log records only.
#pragma once

#include "KelCommon/KelLog.h"
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/TamBaseThread.h"

#include <string>

template<class T>
class CKelBaseThread : public TamBaseThread
{
public:
    CKelBaseThread();
    CKelBaseThread(const CKelBaseThread& other);
    CKelBaseThread& operator=(const CKelBaseThread& other);
    ~CKelBaseThread() override;

protected:
    // Creates the thread, which runs at once. False, after a log record, if the system cannot.
    bool CustomCreateThread() override;

private:
    // The thread's entry; `param` is the worker. Whatever is thrown ends here, as a log record and exit code 0, also
    // what the log throws while it takes that record.
    static unsigned long CustomThreadProc(void* param);

    unsigned long CustomThreadProc_Internal();
};

// All of it outside the class: what is inline, an explicit instantiation leaves to be made anew in every place, and a
// library that exports a frame would not hold it whole.

template<class T>
CKelBaseThread<T>::CKelBaseThread() = default;

template<class T>
CKelBaseThread<T>::CKelBaseThread(const CKelBaseThread& other) = default;

template<class T>
CKelBaseThread<T>& CKelBaseThread<T>::operator=(const CKelBaseThread& other) = default;

template<class T>
CKelBaseThread<T>::~CKelBaseThread() = default;

template<class T>
bool CKelBaseThread<T>::CustomCreateThread()
{
    m_threadHandle = CreateThread(nullptr, 0, &CKelBaseThread::CustomThreadProc, this, 0, &m_threadId);
    if (m_threadHandle != nullptr)
    {
        return true;
    }
    m_threadState = 0;
    KEL_LOG_AT(kelSeverity_Failure, 55, "Start thread error. name = " + m_threadName);
    return false;
}

template<class T>
unsigned long CKelBaseThread<T>::CustomThreadProc(void* param)
{
    auto* worker = static_cast<CKelBaseThread*>(param);
    unsigned long result = 0;
    try
    {
        result = worker->CustomThreadProc_Internal();
    }
    catch (...)
    {
        try
        {
            KEL_LOG_AT(kelSeverity_Failure, 72, "Thread terminated with an exception. name = " + worker->m_threadName);
        }
        catch (...)
        {
            // There is nobody left to tell.
        }
    }
    return result;
}

template<class T>
unsigned long CKelBaseThread<T>::CustomThreadProc_Internal()
{
    return StartThreadWorker();
}
