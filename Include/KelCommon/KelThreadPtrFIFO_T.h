// A bounded, thread-safe ring FIFO of pointers.
//
// Any number of producers and consumers may use one FIFO at once; every operation holds the FIFO's own lock from
// beginning to end. Neither In nor Out waits: who wants to wait does so on one of the two events, outside the lock, and
// tries again. The events are changed only when the FIFO becomes empty or not empty, full or not full; being
// manual-reset, they show the right state to whoever looks late.
//
// What every operation changes lies in one line of the processor's cache, and nothing else does: two threads that pass
// elements to each other move that line, and the slot, back and forth, and nothing more.
//
// The FIFO owns what is queued in it: elements still inside when it is destroyed are deleted.
#pragma once

#include "KelCommon/KelLog.h"
#include "Platform/Thread/CustomCriticalSection.h"
#include "Platform/Thread/CustomManualResetEvent.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

template<class T>
class alignas(64) CKelThreadPtrFIFO_T
{
public:
    // `bufferLen` is the capacity in elements, at least 1. Otherwise: a log record, and the int 0 is thrown.
    explicit CKelThreadPtrFIFO_T(int bufferLen) : m_hasData(true), m_hasSpace(true)
    {
        if (bufferLen <= 0)
        {
            KEL_LOG_AT(ESeverityLevel::Error, 64, "Argument is invalid. bufferLen = " + std::to_string(bufferLen));
            throw 0;
        }
        m_pCompleted = new bool(false);
        m_bufferLen = bufferLen;
        m_ppItems = new T* [static_cast<std::size_t>(bufferLen)] {};
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
        m_hasSpace.Set();
        m_hasData.Set();
    }

    // Queues `element`, which is the FIFO's from then on. False, after a log record, if the FIFO is full. Never waits.
    bool In(T* element)
    {
        const CEnterLeaveCriticalSection guard(m_lock);
        if (!Elements_Put(&element, 1))
        {
            KEL_LOG_AT(ESeverityLevel::Error, 144, "failure");
            return false;
        }
        return true;
    }

    // The same with `count` elements, in their order, at the price of one. False, with nothing queued and without a
    // record, if there is no room for all of them.
    bool In_Many(T* const* elements, int count)
    {
        const CEnterLeaveCriticalSection guard(m_lock);
        return Elements_Put(elements, count);
    }

    // Takes the oldest element, which is the caller's from then on. False, with `element` as it was, if the FIFO is
    // empty; that is no failure and writes no record. Never waits.
    bool Out(T*& element) { return Out_Many(&element, 1, 1) > 0; }

    // The same with as many elements as there are, at the price of one; but at most `limit`, and at most one in `share`
    // (rounded up), so that something is left for the others. How many were taken, oldest first.
    int Out_Many(T** elements, int limit, int share)
    {
        const CEnterLeaveCriticalSection guard(m_lock);
        const std::int32_t before = m_count;
        if (before <= 0)
        {
            return 0;
        }
        const int count = std::min(limit, (before + share - 1) / share);
        for (int i = 0; i < count; ++i)
        {
            elements[i] = m_ppItems[m_outIndex];
            m_ppItems[m_outIndex] = nullptr;
            m_outIndex = Next(m_outIndex);
        }
        m_count.fetch_sub(count);
        if (count == before)
        {
            m_hasData.Reset();
        }
        if (before == m_bufferLen)
        {
            m_hasSpace.Set();
        }
        return count;
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
        while (m_count >= 1)
        {
            T* element = nullptr;
            if (!Out(element))
            {
                m_hasData.Wait(100, 0);
                if (!Out(element))
                {
                    KEL_LOG_AT(ESeverityLevel::Error, 102, "failure");
                    return false;
                }
            }
            delete element;
        }
        m_count.exchange(0);
        m_inIndex = 0;
        m_outIndex = 0;
        m_hasData.Reset();
        m_hasSpace.Set();
        return true;
    }

    // The two events, for waiting and probing: set while the FIFO holds an element, set while it has room for one.
    CCustomManualResetEvent& HasDataEvent() { return m_hasData; }
    CCustomManualResetEvent& HasSpaceEvent() { return m_hasSpace; }

    // Waits up to `timeoutMs` until the FIFO holds an element; true if it does. A FIFO that holds one already is not
    // waited for. Otherwise the caller is not woken for the first one but lets them gather: until there are `enough`,
    // until somebody who has nothing left to add calls HasData_Hurry, or until the time is over. One thread at a time.
    bool HasData_WaitForMany(int enough, unsigned long timeoutMs)
    {
        {
            const CEnterLeaveCriticalSection guard(m_lock);
            if (m_count >= 1)
            {
                return true;
            }
            m_enough = enough;
        }
        const bool bHasData = m_hasData.Wait_Patiently(timeoutMs);
        m_enough = 0;
        return bHasData;
    }

    // Wakes the thread that lets elements gather, if there is one. For those who put elements in and are about to wait
    // for something themselves.
    void HasData_Hurry()
    {
        if (m_enough > 0)
        {
            m_enough = 0;
            m_hasData.Hurry();
        }
    }

protected:
    // The completed flag means nothing to the FIFO itself; it is kept here, under the FIFO's lock, for the classes
    // above it whose producer can end.
    void Completed_Set()
    {
        const CEnterLeaveCriticalSection guard(m_lock);
        *m_pCompleted = true;
    }

    // True once the flag is set and nothing is queued any more.
    bool IsCompletedAndEmpty()
    {
        const CEnterLeaveCriticalSection guard(m_lock);
        return *m_pCompleted && m_count == 0;
    }

private:
    // Under the lock.
    bool Elements_Put(T* const* elements, int count)
    {
        const std::int32_t before = m_count;
        if (before > m_bufferLen - count)
        {
            return false;
        }
        for (int i = 0; i < count; ++i)
        {
            m_ppItems[m_inIndex] = elements[i];
            m_inIndex = Next(m_inIndex);
        }
        const std::int32_t after = m_count.fetch_add(count) + count;
        if (before == 0 && count > 0)
        {
            m_hasData.Set();
        }
        if (after == m_bufferLen)
        {
            m_hasSpace.Reset();
        }
        if (m_enough > 0 && after >= m_enough)
        {
            HasData_Hurry();
        }
        return true;
    }

    int Next(int index) const { return index + 1 == m_bufferLen ? 0 : index + 1; }

    CCustomCriticalSection m_lock; // recursive: ReleaseAllContent takes elements with Out
    CCustomManualResetEvent m_hasData;
    CCustomManualResetEvent m_hasSpace;
    std::atomic<std::int32_t> m_count{0}; // changed under the lock
    std::int32_t m_inIndex = 0;
    std::int32_t m_outIndex = 0;
    std::atomic<std::int32_t> m_enough{0}; // what HasData_WaitForMany waits for; 0: nobody does

    // Not changed by In and Out.
    alignas(64) T** m_ppItems = nullptr; // owned ring; the elements in it too
    std::int32_t m_bufferLen = 0;
    bool* m_pCompleted = nullptr; // owned
};
