// Runs a fuzz target without libFuzzer:
//     Target [--variations N] [--seed S] FOLDER_OR_FILE...
//
// Every file is given to the target as it is and then in N variations: bytes changed, removed, doubled, swapped with
// those of another file. The same seed makes the same inputs. A finding ends the process; the last input is then in
// the file failed-input in the current folder, which the target takes as an argument.
#include "Tests/Fuzz/FuzzTarget.h"

#include <csignal>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

namespace
{

using Bytes = std::vector<std::uint8_t>;

Bytes g_current; // for the handler below

// Whatever ended the process: keeps the input. Not safe by the letter in a handler, but all that is left to lose is the
// file.
void Input_Keep(int signal)
{
    std::ofstream("failed-input", std::ios::binary)
        .write(reinterpret_cast<const char*>(g_current.data()), static_cast<std::streamsize>(g_current.size()));
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

std::vector<Bytes> Files_Read(const std::vector<std::filesystem::path>& places)
{
    std::vector<std::filesystem::path> paths;
    for (const auto& place : places)
    {
        if (!std::filesystem::is_directory(place))
        {
            paths.push_back(place);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(place))
        {
            if (entry.is_regular_file())
            {
                paths.push_back(entry.path());
            }
        }
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Bytes> files;
    for (const auto& path : paths)
    {
        std::ifstream stream(path, std::ios::binary);
        files.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }
    return files;
}

class CVariation
{
public:
    CVariation(unsigned seed, const std::vector<Bytes>& files) : m_random(seed), m_files(files) {}

    Bytes Make(Bytes bytes)
    {
        for (std::size_t changes = 1 + Below(4); changes > 0; --changes)
        {
            Change(bytes);
        }
        return bytes;
    }

private:
    std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : m_random() % limit; }

    void Change(Bytes& bytes)
    {
        constexpr std::uint8_t edges[] = {0x00, 0x01, 0x7F, 0x80, 0xFF, '"', '\n', '[', ' ', '9', '-', '.'};
        const std::size_t at = Below(bytes.size());
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        const auto end = begin + static_cast<std::ptrdiff_t>(Below(std::min<std::size_t>(bytes.size() - at, 33)));
        switch (bytes.empty() ? 0 : Below(8))
        {
        case 0:
            bytes.insert(begin, edges[Below(std::size(edges))]);
            break;
        case 1:
            bytes[at] = edges[Below(std::size(edges))];
            break;
        case 2:
            bytes[at] = static_cast<std::uint8_t>(m_random());
            break;
        case 3:
            bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ 1U << Below(8));
            break;
        case 4:
            bytes.erase(begin, end);
            break;
        case 5:
        {
            const Bytes part(begin, end);
            bytes.insert(begin, part.begin(), part.end());
            break;
        }
        case 6:
            bytes.resize(at);
            break;
        default:
        {
            const Bytes& other = m_files[Below(m_files.size())];
            const std::size_t from = Below(other.size());
            const std::size_t count = Below(std::min<std::size_t>(other.size() - from, 65));
            bytes.insert(begin, other.begin() + static_cast<std::ptrdiff_t>(from),
                         other.begin() + static_cast<std::ptrdiff_t>(from + count));
            break;
        }
        }
    }

    std::mt19937 m_random;
    const std::vector<Bytes>& m_files;
};

void Input_Run(Bytes bytes)
{
    g_current = std::move(bytes);
    LLVMFuzzerTestOneInput(g_current.data(), g_current.size());
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::vector<std::filesystem::path> places;
    unsigned long variations = 0;
    unsigned long seed = 1;
    for (int i = 1; i < argumentCount; ++i)
    {
        const std::string argument = arguments[i];
        if ((argument == "--variations" || argument == "--seed") && i + 1 < argumentCount)
        {
            (argument == "--seed" ? seed : variations) = std::strtoul(arguments[++i], nullptr, 10);
        }
        else
        {
            places.emplace_back(argument);
        }
    }
    for (const int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGILL})
    {
        std::signal(signal, Input_Keep);
    }
    const std::vector<Bytes> files = Files_Read(places);
    if (files.empty())
    {
        std::cerr << "no input; a target takes the files of its corpus\n";
        return 2;
    }
    CVariation variation(static_cast<unsigned>(seed), files);
    std::size_t count = 0;
    for (const Bytes& file : files)
    {
        Input_Run(file);
        ++count;
        for (unsigned long i = 0; i < variations; ++i)
        {
            Input_Run(variation.Make(file));
            ++count;
        }
    }
    std::cout << count << " inputs, nothing found\n";
    return 0;
}
