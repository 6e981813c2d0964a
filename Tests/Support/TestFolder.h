// A folder of a test's own, gone with the test, and small helpers around files. Used by the host's tests only.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

class CTestFolder
{
public:
    CTestFolder()
        : m_path(std::filesystem::temp_directory_path() /
                 ("boardmap-test-" + std::to_string(std::random_device{}()) + std::to_string(std::random_device{}())))
    {
        std::filesystem::create_directories(m_path);
    }
    ~CTestFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }

    // Names of everything in the folder, sorted.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
        {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path m_path;
};

inline void File_Write(const std::filesystem::path& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string File_Read(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The text of the TException that the call throws; what came instead otherwise.
template<class TException, class TCall>
std::string Error_Of(TCall call)
{
    try
    {
        call();
    }
    catch (const TException& error)
    {
        return error.what();
    }
    catch (const std::exception& error)
    {
        return std::string("another error: ") + error.what();
    }
    return "no error";
}
