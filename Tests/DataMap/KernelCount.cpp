// Maps board lines with one kernel, for an instruction counter to watch: KernelCount KERNEL line|all LINES
//
// Style 5, 16 units of 400 one-bit pixels into 16-bit frames: 800 board bytes per line. CheckKernelCounts.cmake runs it
// twice and takes the difference, so that what is not mapping does not count.
#include "DataMap/DataMapKernel.h"
#include "DataMap/PrintUnitDataMap_5.h"

#include <cstdlib>
#include <string_view>
#include <vector>

int main(int argumentCount, char** arguments)
{
    CPrintUnitDataMap_5 map;
    if (argumentCount != 4 || !CDataMapKernel::Current_Set(arguments[1]) || !map.Init(1, 16))
    {
        return 2;
    }
    const bool bAll = std::string_view(arguments[2]) == "all";
    const std::vector<unsigned char> src(50, 0xA5);
    std::vector<unsigned char> dst(800);
    std::vector<SSrcBandLine> lines(16);
    for (int unit = 0; unit < 16; ++unit)
    {
        SSrcBandLine& line = lines[static_cast<std::size_t>(unit)];
        line.m_param.m_unitIndex = unit;
        line.m_param.m_lineBitCount = 400;
        line.m_pLine = src.data();
    }
    for (int i = std::atoi(arguments[3]); i > 0; --i)
    {
        if (bAll)
        {
            map.MapData_Line_AllInput(lines.data(), 16, dst.data(), 800);
            continue;
        }
        for (const SSrcBandLine& line : lines)
        {
            map.MapData_Line(line.m_param, line.m_pLine, dst.data(), 800);
        }
    }
    return dst[0] == 0 ? 1 : 0;
}
