// Functions that a module imports, replaced for a test. Windows only: there a call into another DLL goes through an
// entry of the caller's import table, one for each function and module.
//
// Tests use it where they put their own function in front of a system's by the linker's rules elsewhere.
#pragma once

#include "Platform/Thread/CreateThread.h"

#include <cstring>
#include <stdexcept>
#include <string>

class CImportTable
{
public:
    // `module`: the importing DLL's file name; null is the program.
    explicit CImportTable(const char* module) : m_pModule(reinterpret_cast<unsigned char*>(GetModuleHandleA(module))) {}

    // From now on the module's calls of `name` (as the linker spells it) go to `replacement`. Returns what they went to
    // before. Throws std::runtime_error if the module does not import it.
    template<class Function>
    Function Replace(const char* name, Function replacement) const
    {
        void** const entry = Entry_Find(name);
        DWORD protection = 0;
        VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &protection);
        const auto former = reinterpret_cast<Function>(*entry);
        *entry = reinterpret_cast<void*>(replacement);
        VirtualProtect(entry, sizeof(*entry), protection, &protection);
        return former;
    }

private:
    template<class T>
    T* At(std::size_t offset) const
    {
        return reinterpret_cast<T*>(m_pModule + offset);
    }

    void** Entry_Find(const char* name) const
    {
        const auto* header = At<IMAGE_NT_HEADERS>(static_cast<std::size_t>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
        const auto& directory = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(directory.VirtualAddress); library->Name != 0; ++library)
        {
            const auto* names = At<IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
            auto* entries = At<IMAGE_THUNK_DATA>(library->FirstThunk);
            for (; names->u1.AddressOfData != 0; ++names, ++entries)
            {
                if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal) &&
                    std::strcmp(At<IMAGE_IMPORT_BY_NAME>(names->u1.AddressOfData)->Name, name) == 0)
                {
                    return reinterpret_cast<void**>(&entries->u1.Function);
                }
            }
        }
        throw std::runtime_error(std::string("not imported: ") + name);
    }

    unsigned char* m_pModule;
};
