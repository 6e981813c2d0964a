// boardmap's entry: runs the command line, prints what went wrong, and picks the exit status.
#include "Host/Command/CommandLine.h"
#include "Host/HostError.h"
#include "Host/ShownText.h"
#include "Platform/Helper/ProcessHelper.h"

#include <exception>
#include <iostream>
#include <new>

int main(int argumentCount, char** arguments)
{
    [[maybe_unused]] const CConsoleText console;
    try
    {
        CProcessHelper::WriteSignals_Ignore();
        return CommandLine_Run(CProcessHelper::Arguments_Get(argumentCount, arguments));
    }
    catch (const CInputError& error)
    {
        std::cerr << Text_Shown(error.what()) << '\n';
        return Exit_BadInput;
    }
    catch (const std::bad_alloc&)
    {
        std::cerr << "out of memory\n";
    }
    catch (const std::exception& error)
    {
        std::cerr << Text_Shown(error.what()) << '\n';
    }
    catch (...)
    {
        std::cerr << "failed for an unknown reason; -v shows the library's records\n";
    }
    return Exit_Failed;
}
