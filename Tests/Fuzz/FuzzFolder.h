// The one folder of a fuzz process, for targets whose subject reads files, and helpers around it.
#pragma once

#include "Tests/Support/TestFolder.h"

#include <cstddef>
#include <cstdint>

inline const CTestFolder& FuzzFolder_Get()
{
    static const CTestFolder folder;
    return folder;
}

// The input as a file of that folder, in place of the one before.
inline std::filesystem::path InputFile_Write(const std::string& name, const std::uint8_t* bytes, std::size_t size)
{
    const std::filesystem::path path = FuzzFolder_Get() / name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    return path;
}
