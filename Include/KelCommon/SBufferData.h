// A small owning array of elements, used to gather pointers before they are handed on. It owns the array, never what
// the pointers in it point to. Not thread-safe.
//
// A host fills such records with the bands of a step and hands them to the one-FIFO stage, so the layout is published:
// the array first, the count behind it.
#pragma once

#include "KelCommon/KelLog.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>

template<class T>
struct SBufferData
{
    T* data = nullptr; // owned array of `count` elements
    std::int32_t count = 0;

    SBufferData()
    {
        static_assert(offsetof(SBufferData, data) == 0);
        static_assert(offsetof(SBufferData, count) == sizeof(void*));
        static_assert(sizeof(SBufferData) == 2 * sizeof(void*));
    }
    SBufferData(const SBufferData&) = delete;
    SBufferData& operator=(const SBufferData&) = delete;
    ~SBufferData() { ReleaseBuffer(); }

    // Makes the array `size` elements long, all value-initialised (null for pointers). An array that has this length
    // already is kept. False, after a log record, if there is no memory for it; the array is then empty.
    // The flag chooses nothing: the array is cleared either way.
    bool AllocateBuffer(int size, bool /*bClear*/)
    {
        if (count != size)
        {
            ReleaseBuffer();
            data = New_ElementBuffer(size);
            if (data == nullptr)
            {
                KEL_LOG_AT(kelSeverity_Failure, 74, "failure");
                return false;
            }
            count = size;
        }
        std::fill_n(data, count, T{});
        return true;
    }

    // A new array of `size` elements, the caller's to free with delete[]; null, after a log record, if there is none.
    T* New_ElementBuffer(int size)
    {
        T* buffer = size < 0 ? nullptr : new (std::nothrow) T[static_cast<std::size_t>(size)];
        if (buffer == nullptr)
        {
            KEL_LOG_AT(kelSeverity_Failure, 176, "Allocate memory failure. size = " + std::to_string(size));
        }
        return buffer;
    }

    void ReleaseBuffer()
    {
        delete[] data;
        data = nullptr;
        count = 0;
    }
};
