// A bounded, thread-safe ring FIFO of pointers.
//
// Any number of producers and consumers may use one FIFO at once; every operation holds the FIFO's own lock from
// beginning to end. Neither In nor Out waits: who wants to wait does so on one of the two events, outside the lock, and
// tries again. The events are changed only when the FIFO becomes empty or not empty, full or not full; being
// manual-reset, they show the right state to whoever looks late.
//
// The FIFO owns what is queued in it: elements still inside when it is destroyed are deleted.
//
// Hosts make such FIFOs and hand them to the one-FIFO stage, so the layout is published: the members, and their order.
#pragma once

#include "KelCommon/KelLog.h"
#include "KelCommon/KelWait.h"
#include "Platform/Thread/CustomCriticalSection.h"
#include "Platform/Thread/CustomManualResetEvent.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

template<class T>
class CKelThreadPtrFIFO_T
{
public:
    // `bufferLen` is the capacity in elements, at least 1. Otherwise: a log record, and the int 0 is thrown.
    explicit CKelThreadPtrFIFO_T(int bufferLen) : m_bufferLen(bufferLen), m_hasData(true), m_hasSpace(true)
    {
        if (bufferLen <= 0)
        {
            KEL_LOG_AT(kelSeverity_Failure, 64, "Argument is invalid. bufferLen = " + std::to_string(bufferLen));
            throw 0;
        }
        auto completed = std::make_unique<bool>(false);
        auto count = std::make_unique<std::atomic<std::int32_t>>(0);
        m_ppItems = new T* [static_cast<std::size_t>(bufferLen)] {};
        m_pCompleted = completed.release();
        m_pCount = count.release();
        m_hasData.Reset();
        m_hasSpace.Set();
    }

    CKelThreadPtrFIFO_T(const CKelThreadPtrFIFO_T&) = delete;
    CKelThreadPtrFIFO_T& operator=(const CKelThreadPtrFIFO_T&) = delete;

    // Deletes what is queued and releases threads that still wait on the events.
    virtual ~CKelThreadPtrFIFO_T()
    {
        delete m_pCompleted;
        m_pCompleted = nullptr;
        ReleaseAllContent();
        delete[] m_ppItems;
        m_ppItems = nullptr;
        delete m_pCount;
        m_pCount = nullptr;
        m_hasSpace.Set();
        m_hasData.Set();
    }

    // Queues `element`, which is the FIFO's from then on. False, after a log record, if the FIFO is full. Never waits.
    bool In(T* element)
    {
        const CEnterLeaveCriticalSection guard(m_lock);
        if (*m_pCount >= m_bufferLen)
        {
            KEL_LOG_AT(kelSeverity_Failure, 144, "failure");
            return false;
        }
        m_ppItems[m_inIndex] = element;
        m_inIndex = Next(m_inIndex);
        const std::int32_t count = ++*m_pCount;
        if (count == 1)
        {
            m_hasData.Set();
        }
        if (count == m_bufferLen)
        {
            m_hasSpace.Reset();
        }
        return true;
    }

    // Takes the oldest element, which is the caller's from then on. False, with `element` as it was, if the FIFO is
    // empty; that is no failure and writes no record. Never waits.
    bool Out(T*& element)
    {
        const CEnterLeaveCriticalSection guard(m_lock);
        if (*m_pCount <= 0)
        {
            return false;
        }
        element = m_ppItems[m_outIndex];
        m_ppItems[m_outIndex] = nullptr;
        m_outIndex = Next(m_outIndex);
        const std::int32_t count = --*m_pCount;
        if (count == 0)
        {
            m_hasData.Reset();
        }
        if (count == m_bufferLen - 1)
        {
            m_hasSpace.Set();
        }
        return true;
    }

    // Deletes everything that is queued and leaves the FIFO empty. False, after a log record, if an element that the
    // count promises cannot be taken.
    bool ReleaseAllContent()
    {
        const CEnterLeaveCriticalSection guard(m_lock);
        if (m_ppItems == nullptr)
        {
            return true;
        }
        while (*m_pCount >= 1)
        {
            T* element = nullptr;
            if (!Out(element))
            {
                m_hasData.Wait(kelWait_Retried, 0);
                if (!Out(element))
                {
                    KEL_LOG_AT(kelSeverity_Failure, 102, "failure");
                    return false;
                }
            }
            delete element;
        }
        m_pCount->exchange(0);
        m_inIndex = 0;
        m_outIndex = 0;
        m_hasData.Reset();
        m_hasSpace.Set();
        return true;
    }

    // The two events, for waiting and probing: set while the FIFO holds an element, set while it has room for one.
    CCustomManualResetEvent& HasDataEvent() { return m_hasData; }
    CCustomManualResetEvent& HasSpaceEvent() { return m_hasSpace; }

private:
    int Next(int index) const { return index + 1 == m_bufferLen ? 0 : index + 1; }

    bool* m_pCompleted = nullptr;                  // owned; part of the layout, nobody looks at it
    std::atomic<std::int32_t>* m_pCount = nullptr; // owned; elements queued, changed and read under the lock
    std::int32_t m_inIndex = 0;                    // where the next element goes
    std::int32_t m_outIndex = 0;                   // where the next one comes from
    T** m_ppItems = nullptr;                       // owned ring; the elements in it too
    std::int32_t m_bufferLen;                      // capacity in elements
    CCustomCriticalSection m_lock;                 // recursive: ReleaseAllContent takes elements with Out
    CCustomManualResetEvent m_hasData;
    CCustomManualResetEvent m_hasSpace;

    friend struct SKelTestAccess;
};
