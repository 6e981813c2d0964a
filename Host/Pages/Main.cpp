// Writes the manual pages and the completions into a folder, for packages: boardmap-pages FOLDER.
#include "Host/Pages/Completion.h"
#include "Host/Pages/ManPage.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace
{

void File_Write(const std::filesystem::path& file, const std::string& text)
{
    std::ofstream stream(file, std::ios::binary);
    stream.exceptions(std::ios::badbit | std::ios::failbit);
    stream << text << std::flush;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::cerr << "usage: boardmap-pages FOLDER\n";
        return 2;
    }
    try
    {
        const std::filesystem::path folder = arguments[1];
        std::filesystem::create_directories(folder);
        File_Write(folder / "boardmap.1", ManPage_OfProgram());
        for (const SCommand* pCommand : Commands())
        {
            File_Write(folder / ("boardmap-" + pCommand->m_name + ".1"), ManPage_Of(*pCommand));
        }
        File_Write(folder / "boardmap.bash", Completion_Bash());
        File_Write(folder / "_boardmap", Completion_Zsh());
        File_Write(folder / "boardmap.fish", Completion_Fish());
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
