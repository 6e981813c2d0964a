// A host that was not built with the library: what an installed package must be good for, in one small program.
//
// Built by the package tests from the installed headers and libraries alone, with CMake and with pkg-config, shared and
// static. It sets a job, runs the stages on a few bands, and looks at every board byte. Exit status 0 means that all
// was as it should be.
#include "DataMap/DataMappingVersion.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "KelCommon/KelWait.h"
#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Platform/GlobalConfig/DPOption.h"
#include "Platform/Log/CustomBoostLog.h"
#include "Platform/PrintParam/PrintParamGlobal.h"
#include "UnitData2BoardData/UnitData2BoardData_AllUnit_2.h"
#include "UnitData2BoardData/UnitData2BoardData_Base.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr int nozzleCount = 8;
constexpr int lineCount = 2;
constexpr int boardLineBytes = 16; // a frame of 16 bits for each of 8 nozzles

using BoardBytes = std::array<unsigned char, lineCount * boardLineBytes>;

int g_failureCount = 0;

void Check(bool bRight, const char* what)
{
    if (!bRight)
    {
        std::printf("wrong: %s\n", what);
        ++g_failureCount;
    }
}

void Job_Set()
{
    GC_DPOption()->Set({EDataMapStyle::FramePerPixel, EDataPushStyle::ByPixel, EPrinterSupportBits::OneBit, 16});
    GC_DPConfig()->Set({2});
    SPrintParam param;
    param.m_jobInfo.m_bitsPerPixel = 1;
    param.m_jobInfo_CurPrint.m_bitsPerPixel = 1;
    param.m_maskData.m_maskCount_1 = 1;
    param.m_maskData.m_maskCount_2 = 1;
    DPD_PrintParam()->Set(param);
}

std::unique_ptr<CBandData> UnitBand_Make(int unit, unsigned char line0, unsigned char line1)
{
    auto band = std::make_unique<CBandData>();
    Check(band->Create(nozzleCount, lineCount, 1, 1), "a unit band is made");
    band->m_unitIndex = unit;
    band->m_swathIndex = 7;
    band->m_pData[0] = line0;
    band->m_pData[band->m_bytesPerLine] = line1;
    return band;
}

// Takes everything that the stage puts out; the one board band that there must be is compared with `expected`.
void Output_Check(CUnitData2BoardData_Base& stage, const BoardBytes& expected)
{
    int bandCount = 0;
    while (!stage.OutputProcessor_Get()->IsCompleted())
    {
        CBandData* taken = nullptr;
        if (!stage.OutputProcessor_Get()->Out(taken, 100))
        {
            continue;
        }
        const std::unique_ptr<CBandData> board(taken);
        ++bandCount;
        Check(board->m_swathIndex == 7, "the header travels along");
        Check(board->m_height == lineCount && board->m_bytesPerLine == boardLineBytes, "the board band's size");
        Check(board->m_dataSize == static_cast<int>(expected.size()) &&
                  std::equal(expected.begin(), expected.end(), board->m_pData),
              "the board bytes");
    }
    Check(bandCount == 1, "one board band");
    Check(stage.WaitExit(kelWait_WithoutLimit), "the stage ends");
    Check(stage.IsThreadSuccess(), "the stage ends well");
}

// The base stage, fed through a FIFO of one print unit.
void Base_Run()
{
    CBandData* band = UnitBand_Make(3, 0x80, 0x41).release();
    CBandDataFIFO unit("unit 3");
    unit.Create(&band, 1);
    CUnitData2BoardData_Base stage;
    Check(stage.Create(false, {&unit}), "the base stage starts");
    Check(unit.Empty_Out(band, 1000) && unit.Full_In(band, 1000), "the band goes in");
    unit.SetCompletedFlag();

    BoardBytes expected = {}; // unit 3 has the fourth bit of every frame
    expected[0] = 0x10;
    expected[boardLineBytes + 2] = 0x10;
    expected[boardLineBytes + 14] = 0x10;
    Output_Check(stage, expected);
}

// The one-FIFO stage, fed with the bands of two units at once; line generators map them. The FIFO is a template of the
// installed headers, made in this program.
void AllUnit_Run()
{
    CUnitData2BoardData_AllUnit_2::CBandSetFIFO input(2);
    CUnitData2BoardData_AllUnit_2 stage;
    Check(stage.Create(input), "the one-FIFO stage starts");
    auto set = std::make_unique<SBufferData<CBandData*>>();
    Check(set->AllocateBuffer(2, true), "a band set is made");
    set->data[0] = UnitBand_Make(0, 0x80, 0x01).release();
    set->data[1] = UnitBand_Make(15, 0x01, 0x00).release();
    Check(input.In(set.release()), "the band set goes in");
    Check(input.In(nullptr), "the end of the input goes in");

    BoardBytes expected = {};
    expected[0] = 0x80;
    expected[15] = 0x01;
    expected[boardLineBytes + 14] = 0x80;
    Output_Check(stage, expected);
}

// A style of the host's own, and what the classes carry across the border of the library: virtual table, type
// information, copies.
class CInvertedMap : public CPrintUnitDataMap_5
{
public:
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override
    {
        std::vector<unsigned char> inverted(src, src + (param.m_lineBitCount + 7) / 8);
        std::for_each(inverted.begin(), inverted.end(), [](unsigned char& byte) { byte ^= 0xFFU; });
        return CPrintUnitDataMap_5::MapData_Line(param, inverted.data(), dst, dstByteCount);
    }
};

void Map_Run()
{
    CInvertedMap map;
    Check(map.Init(1, 16), "the host's own map is set up");
    const CPrintUnitDataMap_Base* base = &map;
    Check(dynamic_cast<const CPrintUnitDataMap_5*>(base) != nullptr, "type information of an exported class");
    Check(base->SrcPixelCount_2_BoardBitCount(nozzleCount) == boardLineBytes * 8, "a virtual call into the library");
    std::array<unsigned char, boardLineBytes> line = {};
    const unsigned char src = 0x7F;
    SSrcBandDataParam param;
    param.m_lineBitCount = 8;
    Check(base->MapData_Line(param, &src, line.data(), boardLineBytes), "the host's own map maps");
    Check(line[0] == 0x80 && std::count(line.begin(), line.end(), 0) == boardLineBytes - 1, "only the first nozzle");

    const CPrintUnitDataMap_5 empty;
    const CPrintUnitDataMap_5 copy(empty); // without a table: nothing is shared
    Check(copy.AllMapData_Get() == nullptr, "a copy of an empty map");
}

// A failure inside the library is a record of the platform's one logger.
void Log_Run()
{
    std::string seen;
    const int id = CCustomBoostLog::Listener_Add([&seen](const SLogRecord& record) { seen += record.fileName + "\n"; });
    CPrintUnitDataMap_5 map;
    Check(!map.Init(3, 16), "three bits per pixel are refused");
    CCustomBoostLog::Listener_Remove(id);
    Check(seen == "PrintUnitDataMap_Base\nPrintUnitDataMap_5\n", "the records of the refusal");
}

} // namespace

int main()
{
    Check(std::strcmp(DATAMAPPING_VERSION, CONSUMER_EXPECTED_VERSION) == 0, "the version in the headers");
    Job_Set();
    Base_Run();
    AllUnit_Run();
    Map_Run();
    Log_Run();
    std::printf("consumer: %d wrong\n", g_failureCount);
    return g_failureCount == 0 ? 0 : 1;
}
