// The hidden names of files in the making: ".page.tif.part-" and sixteen hexadecimal digits, beside page.tif. And which
// of them the process uses right now, for whoever ends it at any moment.
#pragma once

#include "Platform/PlatformExport.h"

#include <filesystem>
#include <string>
#include <string_view>

class PLATFORM_API CHiddenName
{
public:
    using Character = std::filesystem::path::value_type;
    using Text = std::filesystem::path::string_type;
    using TextView = std::basic_string_view<Character>;

    // Another one each time.
    static std::filesystem::path Make(const std::filesystem::path& target);

    // What the hidden names of a target begin with, and whether a file's name is one of them.
    static Text Stem_Of(const std::filesystem::path& target);
    static bool IsOne(TextView name, const Text& stem);

    // Calls `action` for every name that is in use. May be called in a signal handler.
    static void ForEach(void (*action)(const Character* pPath));

    CHiddenName() = default;
    ~CHiddenName() { Forget(); }
    CHiddenName(const CHiddenName&) = delete;
    CHiddenName& operator=(const CHiddenName&) = delete;

    // The name is in use until it is forgotten, which touches no file. One thread at a time.
    void Set(std::filesystem::path path);
    void Forget();
    bool IsSet() const { return !m_path.empty(); }
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
    int m_slot = -1;
};
