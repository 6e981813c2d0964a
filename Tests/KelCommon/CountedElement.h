// An element that counts how many of its kind live, so that a test sees each deletion.
#pragma once

#include <atomic>

struct SCountedElement
{
    explicit SCountedElement(int value = 0) : m_value(value) { ++LiveCount(); }
    ~SCountedElement() { --LiveCount(); }
    SCountedElement(const SCountedElement&) = delete;
    SCountedElement& operator=(const SCountedElement&) = delete;

    int m_value;

    static std::atomic<int>& LiveCount()
    {
        static std::atomic<int> count{0};
        return count;
    }
};
