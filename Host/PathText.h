// File names as text for messages and records: UTF-8 on every system. Pure functions; any thread.
#pragma once

#include "Host/ShownText.h"

#include <filesystem>
#include <string>
#include <string_view>

// The path as UTF-8, with the system's own separators.
inline std::string Path_Text(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

// The same for a message: on one line, whatever is in it.
inline std::string Path_Shown(const std::filesystem::path& path)
{
    return Name_Shown(Path_Text(path));
}

// The path that this UTF-8 text names.
inline std::filesystem::path Path_FromText(std::string_view text)
{
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}
