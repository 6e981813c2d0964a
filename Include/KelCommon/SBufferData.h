// A small owning array of elements, used to gather pointers before they are handed on. It owns the array, never what
// the pointers in it point to. Not thread-safe.
#pragma once

#include "KelCommon/KelLog.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>

template<class T>
struct SBufferData
{
    T* m_pBuffer = nullptr; // owned array of m_count elements
    int m_count = 0;

    SBufferData() = default;
    SBufferData(const SBufferData&) = delete;
    SBufferData& operator=(const SBufferData&) = delete;
    ~SBufferData() { ReleaseBuffer(); }

    // Makes the array `size` elements long, all value-initialised (null for pointers). An array that has this length
    // already is kept. False, after a log record, if there is no memory for it; the array is then empty.
    // The flag chooses nothing: the array is cleared either way.
    bool AllocateBuffer(int size, bool /*bClear*/)
    {
        if (m_count != size)
        {
            ReleaseBuffer();
            m_pBuffer = New_ElementBuffer(size);
            if (m_pBuffer == nullptr)
            {
                KEL_LOG_AT(ESeverityLevel::Error, 74, "failure");
                return false;
            }
            m_count = size;
        }
        std::fill_n(m_pBuffer, m_count, T{});
        return true;
    }

    // A new array of `size` elements, the caller's to free with delete[]; null, after a log record, if there is none.
    T* New_ElementBuffer(int size)
    {
        T* buffer = size < 0 ? nullptr : new (std::nothrow) T[static_cast<std::size_t>(size)];
        if (buffer == nullptr)
        {
            KEL_LOG_AT(ESeverityLevel::Error, 176, "Allocate memory failure. size = " + std::to_string(size));
        }
        return buffer;
    }

    void ReleaseBuffer()
    {
        delete[] m_pBuffer;
        m_pBuffer = nullptr;
        m_count = 0;
    }
};
