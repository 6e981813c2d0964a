// Calls the virtual operations of an object by their position in its class's table, as a program does that was built
// against an older header: for tests that hold the order of the operations still.
//
// A slot is a position among the virtual operations as declared, the destructor included. Single inheritance only; the
// object is passed as the address that its first base has. References are passed as pointers.
#pragma once

#include <type_traits>

// Calls `table entry` of the object. Arguments and result must be those of the operation, to the letter.
template<class Result, class... Arguments>
Result TableEntry_Call(const void* object, int entry, Arguments... arguments)
{
    using Operation = Result (*)(const void*, Arguments...);
    static_assert(!(std::is_reference_v<Arguments> || ...));
    const void* const* const table = *static_cast<const void* const* const*>(object);
    return reinterpret_cast<Operation>(const_cast<void*>(table[entry]))(object, arguments...);
}

// The same for classes whose first virtual operation, slot 0, is the destructor: it has two entries in the tables of
// GCC and Clang, with MinGW too (one destroys, the other also frees), and one with MSVC.
template<class Result, class... Arguments>
Result Slot_Call(const void* object, int slot, Arguments... arguments)
{
#if defined(_MSC_VER)
    return TableEntry_Call<Result>(object, slot, arguments...);
#else
    return TableEntry_Call<Result>(object, slot + 1, arguments...);
#endif
}

// Destroys and frees the object through slot 0.
inline void Slot_Delete(const void* object)
{
#if defined(_MSC_VER)
    TableEntry_Call<void*>(object, 0, 1U); // 1: frees it
#else
    TableEntry_Call<void>(object, 1);
#endif
}
