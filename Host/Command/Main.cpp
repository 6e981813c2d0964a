// boardmap's entry: runs the command line, prints what went wrong, and picks the exit status.
//
// Libraries allocate in places where nobody can catch what that throws. Such an exception is told as any other, and
// ends the process without an end of its threads and objects, but with nothing left behind.
#include "Host/Colour.h"
#include "Host/Command/CommandLine.h"
#include "Host/HostError.h"
#include "Host/MemoryWatch.h"
#include "Host/PathText.h"
#include "Host/ShownText.h"
#include "Platform/Helper/FileWriter.h"
#include "Platform/Helper/ProcessHelper.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <thread>

namespace
{

constexpr const char* outOfMemory = "out of memory\n";

void Exception_Tell()
{
    try
    {
        if (std::current_exception() != nullptr)
        {
            throw;
        }
        std::fputs("failed for an unknown reason\n", stderr);
    }
    catch (const std::bad_alloc&)
    {
        std::fputs(outOfMemory, stderr);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
    }
    catch (...)
    {
        std::fputs("failed for an unknown reason\n", stderr);
    }
}

// Any thread, with anything of the process in any state.
[[noreturn]] void DeadEnd_Handle()
{
    static std::atomic_flag bBusy;
    while (bBusy.test_and_set())
    {
        std::this_thread::sleep_for(std::chrono::seconds(1)); // another thread is at it
    }
    CFileWriter::HiddenFiles_Remove();
    Exception_Tell();
    std::_Exit(Exit_Failed);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    CProcessHelper::StandardDescriptors_Open();
    std::set_terminate(&DeadEnd_Handle);
    Memory_Watch();
    CProcessHelper::EndRequests_Handle(nullptr);
    CProcessHelper::StatusRequests_Mark();
    [[maybe_unused]] const CConsoleText console;
    try
    {
        CProcessHelper::WriteSignals_Ignore();
        return CommandLine_Run(CProcessHelper::Arguments_Get(argumentCount, arguments));
    }
    catch (const CInputError& error)
    {
        std::cerr << Colour_OfErrors(Text_Shown(error.what()), EColour::Error) << '\n';
        return Exit_BadInput;
    }
    catch (const std::bad_alloc&)
    {
        std::cerr << outOfMemory;
    }
    catch (const std::filesystem::filesystem_error& error)
    {
        std::cerr << Colour_OfErrors(Path_Shown(error.path1()) + ": " + error.code().message(), EColour::Error) << '\n';
    }
    catch (const std::exception& error)
    {
        std::cerr << Colour_OfErrors(Text_Shown(error.what()), EColour::Error) << '\n';
    }
    catch (...)
    {
        std::cerr << "failed for an unknown reason; -v shows the library's records\n";
    }
    return Exit_Failed;
}
