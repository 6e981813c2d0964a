// A recycling buffer: a fixed set of elements that travel between threads through three pointer FIFOs.
//
// The cycle: empty FIFO (free elements) -> a producer takes one and fills it -> in FIFO or full FIFO -> a consumer
// takes it -> empty FIFO again. The full cycle uses all three: producer -> in -> worker -> full -> producer -> empty.
// At any moment an element is in exactly one FIFO or held by exactly one thread, so passing elements allocates nothing.
//
// Every operation named after a FIFO tries once, waits once on that FIFO's event for at most `timeoutMs`, and tries
// once more. The buffer has no synchronisation of its own: the FIFOs carry it.
#pragma once

#include "KelCommon/KelLog.h"
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Platform/Thread/CustomCriticalSection.h"

#include <cstddef>
#include <cstdint>
#include <string>

template<class T>
class CKelThreadBuffer_T
{
public:
    using CFIFO = CKelThreadPtrFIFO_T<T>;

    // `name` is for log records.
    explicit CKelThreadBuffer_T(const std::string& name) : m_pName(new std::string(name)) {}

    CKelThreadBuffer_T(const CKelThreadBuffer_T&) = delete;
    CKelThreadBuffer_T& operator=(const CKelThreadBuffer_T&) = delete;

    ~CKelThreadBuffer_T()
    {
        delete m_pName;
        delete m_pEmptyFIFO;
        delete m_pFullFIFO;
        delete m_pInFIFO;
        delete[] m_ppElements;
        m_ppElements = nullptr;
        m_elementCount = 0;
    }

    // Takes over `count` elements, made with `new`; all are free afterwards. The array stays the caller's. False, after
    // a log record, if one cannot be queued; a count of 0 or less throws what the FIFO's constructor throws, and the
    // elements stay the caller's.
    // Called once, before any other thread uses the buffer.
    virtual bool Create(T** elements, int count)
    {
        m_elementCount = count;
        m_pEmptyFIFO = new CFIFO(count);
        m_pFullFIFO = new CFIFO(count);
        m_pInFIFO = new CFIFO(count);
        m_ppElements = new T* [static_cast<std::size_t>(count)] {};
        for (int i = 0; i < count; ++i)
        {
            m_ppElements[i] = elements[i];
            if (!m_pEmptyFIFO->In(elements[i]))
            {
                KEL_LOG_AT(kelSeverity_Failure, 111, "failure");
                return false;
            }
        }
        return true;
    }

    bool Empty_Out(T*& element, unsigned long timeoutMs) { return TakeFrom(*m_pEmptyFIFO, element, timeoutMs); }
    bool Empty_In(T* element, unsigned long timeoutMs) { return PutInto(*m_pEmptyFIFO, element, timeoutMs); }
    bool Full_Out(T*& element, unsigned long timeoutMs) { return TakeFrom(*m_pFullFIFO, element, timeoutMs); }
    bool Full_In(T* element, unsigned long timeoutMs) { return PutInto(*m_pFullFIFO, element, timeoutMs); }
    bool Wait_Out(T*& element, unsigned long timeoutMs) { return TakeFrom(*m_pInFIFO, element, timeoutMs); }

    // Into the in FIFO. A null element is refused at once, with a record that names the buffer.
    bool Wait_In(T* element, unsigned long timeoutMs)
    {
        if (element == nullptr)
        {
            KEL_LOG_AT(kelSeverity_Failure, 187, "add nullptr to buffer! buffer name = " + *m_pName);
            return false;
        }
        return PutInto(*m_pInFIFO, element, timeoutMs);
    }

    // The FIFOs themselves, for probing and waiting on their events. Null before Create.
    CFIFO* EmptyFIFO() { return m_pEmptyFIFO; }
    CFIFO* FullFIFO() { return m_pFullFIFO; }
    CFIFO* InFIFO() { return m_pInFIFO; }

private:
    static bool TakeFrom(CFIFO& fifo, T*& element, unsigned long timeoutMs)
    {
        if (fifo.Out(element))
        {
            return true;
        }
        fifo.HasDataEvent().Wait(timeoutMs, 0);
        return fifo.Out(element);
    }

    static bool PutInto(CFIFO& fifo, T* element, unsigned long timeoutMs)
    {
        if (fifo.In(element))
        {
            return true;
        }
        fifo.HasSpaceEvent().Wait(timeoutMs, 0);
        return fifo.In(element);
    }

    std::string* m_pName;       // owned
    T** m_ppElements = nullptr; // owned table; the elements belong to the FIFO that they are in
    std::int32_t m_elementCount = 0;
    CCustomCriticalSection m_lock; // part of the layout; the FIFOs' own locks do the work
    CFIFO* m_pEmptyFIFO = nullptr; // owned
    CFIFO* m_pFullFIFO = nullptr;  // owned
    CFIFO* m_pInFIFO = nullptr;    // owned

    friend struct SKelTestAccess;
};
