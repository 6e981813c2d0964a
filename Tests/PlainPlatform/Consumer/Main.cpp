// A host on a platform that is not this repository's: it sets a job up in that platform's own way, feeds a base stage
// and an ink-stripe stage, and looks at every board byte. Exit status 0 means that all was as it should be.
#include "PlainHost/PlainFIFO.h"
#include "PlainHost/PlainSetup.h"
#include "UnitData2BoardData/UnitData2BoardData_S_AllUnit.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace
{

// Maps one band of unit 3, two lines of eight nozzles, into frames of 16 bits.
template<class TStage>
bool Stage_Run()
{
    auto* band = new CBandData(); // the pool's
    band->Create(8, 2, 1, 1);
    CPlainPool pool;
    pool.Create(&band, 1);
    pool.Empty_Out(band, 1000);
    band->m_unitIndex = 3;
    band->m_travelling_A[0] = 7;
    band->m_pData[0] = 0x80;
    band->m_pData[1] = 0x41;

    TStage stage;
    if (!stage.Create(false, {&pool}) || !pool.Full_In(band, 1000))
    {
        return false;
    }
    pool.SetCompletedFlag();
    CBandData* taken = nullptr;
    const bool bTaken = CPlainOutput(*stage.OutputProcessor_Get()).Out(taken, 60000);
    const std::unique_ptr<CBandData> board(taken);
    stage.WaitExit(4294967295U);

    std::vector<unsigned char> expected(32); // unit 3 has the fourth bit of every frame
    expected[0] = 0x10;
    expected[16 + 2] = 0x10;
    expected[16 + 14] = 0x10;
    return bTaken && board->m_travelling_A[0] == 7 && board->m_dataSize == 32 &&
           std::equal(expected.begin(), expected.end(), board->m_pData);
}

} // namespace

int main()
{
    SPlainSetup& setup = PlainSetup_Get();
    setup.jobInfo.w3 = 1;
    setup.jobInfo_CurPrint.w3 = 1;
    setup.mask.word[16] = 1;
    setup.mask.word[17] = 1;
    setup.lineGeneratorCount = 2;
    const bool bBase = Stage_Run<CUnitData2BoardData_Base>();
    const bool bInk = Stage_Run<CUnitData2BoardData_S_AllUnit>();
    std::printf("base stage %s, ink-stripe stage %s\n", bBase ? "right" : "wrong", bInk ? "right" : "wrong");
    return bBase && bInk ? 0 : 1;
}
