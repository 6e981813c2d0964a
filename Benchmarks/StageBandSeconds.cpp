// StageBandSeconds_Plain: the stage on the plain edition of the platform, for StageBench, which runs this program and
// reads what it prints.
//
//   StageBandSeconds_Plain --warm N --bands N --OPTION VALUE...      the options of a StageBench case
//
// Prints the bytes of a board band, then the seconds from one board band to the next, one to a line.
#include "Benchmarks/StageRun.h"

#include <cstdio>
#include <exception>
#include <string>

int main(int argumentCount, char** arguments)
{
    try
    {
        SStageCase one;
        int warmCount = 1;
        int bandCount = 2;
        for (int i = 1; i + 1 < argumentCount; i += 2)
        {
            const std::string name = arguments[i];
            const std::string value = arguments[i + 1];
            if (name == "--warm" || name == "--bands")
            {
                (name == "--warm" ? warmCount : bandCount) = std::stoi(value);
            }
            else
            {
                one.Option_Set(name, value);
            }
        }
        const CKernelInUse kernel(one.kernel);
        CStageRun run(one);
        run.Bands_Take(warmCount);
        const auto seconds = run.Bands_Take(bandCount);
        std::printf("%d\n", run.BoardBytes());
        for (const double band : seconds)
        {
            std::printf("%.9f\n", band);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "StageBandSeconds_Plain: %s\n", error.what());
        return 1;
    }
}
