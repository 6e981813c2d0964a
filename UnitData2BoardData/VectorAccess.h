// Element access that throws this library's own text, the same on every standard library.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <vector>

template<class T>
T& Vector_At(std::vector<T>& vector, std::size_t index)
{
    if (index >= vector.size())
    {
        throw std::out_of_range("invalid vector<T> subscript");
    }
    return vector[index];
}
