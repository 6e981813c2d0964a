// The output side: the board band's making, mapping, stamp and hand-over.
#include "Tests/Support/BandHeader.h"
#include "Tests/Support/ConfigGuard.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/UnitData2BoardData/StageSupport.h"

#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using StageOutput = CDrivenStage;

namespace
{

std::vector<int> Bytes(const CBandData& band, int line, int count)
{
    const unsigned char* begin = band.m_pData + line * band.m_bytesPerLine;
    return {begin, begin + count};
}

// A map whose board lines are as long as the test says.
class CMapOfLength : public CPrintUnitDataMap_5
{
public:
    explicit CMapOfLength(int boardBits) : m_boardBits(boardBits) {}
    int SrcPixelCount_2_BoardBitCount(int /*srcPixelCount*/) const override { return m_boardBits; }

private:
    int m_boardBits;
};

// A stage whose line mapping fails on one line, or empties the input list while it generates.
class CFailingStage : public CStageUnderTest
{
public:
    bool MapBandData_Line_OneInput(int line, const CBandData& input) override
    {
        m_lines.push_back(line);
        return line != m_failingLine && CStageUnderTest::MapBandData_Line_OneInput(line, input);
    }
    bool GenerateBandData() override
    {
        m_busyWhileGenerating = ThreadBusy_OpenCount(8);
        const bool bResult = CStageUnderTest::GenerateBandData();
        return bResult && (!m_bLoseInput || Release_InputElement_Internal());
    }

    int m_failingLine = -1;
    bool m_bLoseInput = false;
    int m_busyWhileGenerating = 0;
    std::vector<int> m_lines;
};

// Puts a stage into the state Process with one band of `height` lines of 16 pixels.
template<class Stage>
void Process_Setup(Stage& stage, Journal& journal, int height)
{
    auto* map = new CPrintUnitDataMap_5();
    ASSERT_TRUE(map->Init(1, 16));
    stage.m_pDataMap = map;
    stage.m_pOutputFIFO = new CScriptedOutput(journal);
    stage.m_pInputElements->push_back({Band_Make(0, 16, height).release(), nullptr});
    ASSERT_TRUE(stage.AllocateOutputBuffer());
    ASSERT_EQ(stage.m_processState, 4);
}

} // namespace

TEST_F(StageOutput, TheBoardBandHasTheMapsWidthOneBitUnpaddedLinesAndZeros)
{
    Stage_Prepare(0);
    m_stage.m_pInputElements->push_back({Band_Make(0, 13, 5).release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    const CBandData& board = *m_stage.m_pOutputBand;
    EXPECT_EQ(board.m_width, 13 * 16);
    EXPECT_EQ(board.m_height, 5);
    EXPECT_EQ(board.m_bitsPerPixel, 1);
    EXPECT_EQ(board.m_bytesPerLine, 26);
    EXPECT_THAT(std::vector<int>(board.m_pData, board.m_pData + board.m_dataSize), Each(0));
    EXPECT_EQ(m_stage.m_processState, 4);
}

TEST_F(StageOutput, AnOddBoardWidthIsRoundedToOneByteOnly)
{
    auto* map = new CMapOfLength(17);
    ASSERT_TRUE(map->Init(1, 16));
    m_stage.m_pDataMap = map;
    m_stage.m_pInputElements->push_back({Band_Make(0, 8, 1).release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    EXPECT_EQ(m_stage.m_pOutputBand->m_bytesPerLine, 3);
}

TEST_F(StageOutput, ABoardBandThatCannotBeMadeFailsAndIsAbandoned)
{
    auto* map = new CMapOfLength(-1);
    ASSERT_TRUE(map->Init(1, 16));
    m_stage.m_pDataMap = map;
    m_stage.m_pInputElements->push_back({Band_Make(0, 8, 1).release(), nullptr});
    m_stage.m_processState = 3;
    const CLogCapture log;
    EXPECT_FALSE(m_stage.OneLoop());
    EXPECT_THAT(log.Summary(),
                ElementsAre("2 failure @UnitData2BoardData_Base", "2 m_processState = 3 @UnitData2BoardData_Base"));
    EXPECT_EQ(m_stage.m_pOutputBand, nullptr);
}

TEST_F(StageOutput, AWidthOfWholeBytesMapsThemExactly)
{
    Stage_Prepare(0);
    auto input = Band_Make(2, 16, 1);
    input->m_pData[0] = 0x80;
    input->m_pData[1] = 0x01;
    m_stage.m_pInputElements->push_back({input.release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    ASSERT_TRUE(m_stage.MapBandData_Line_AllInput(0));
    std::vector<int> expected(32, 0);
    expected[0] = 0x20;  // frame 0, unit 2
    expected[30] = 0x20; // frame 15
    EXPECT_EQ(Bytes(*m_stage.m_pOutputBand, 0, 32), expected);
}

TEST_F(StageOutput, ThreePixelsOfTwoBitsAreOneClippedTailAndNothingElse)
{
    auto* map = new CPrintUnitDataMap_5();
    ASSERT_TRUE(map->Init(2, 16)); // one source byte: 4 frames of 2 bytes
    m_stage.m_pDataMap = map;
    auto input = Band_Make(0, 3, 1, 2);
    input->m_pData[0] = 0xFF; // the fourth pixel is beyond the line
    m_stage.m_pInputElements->push_back({input.release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    EXPECT_EQ(m_stage.m_pOutputBand->m_bytesPerLine, 6);
    ASSERT_TRUE(m_stage.MapBandData_Line_AllInput(0));
    EXPECT_THAT(Bytes(*m_stage.m_pOutputBand, 0, 6), ElementsAre(0xC0, 0, 0xC0, 0, 0xC0, 0));
}

TEST_F(StageOutput, TheTailIsLookedUpWholeWhereTheBoardLineHasRoom)
{
    auto* map = new CMapOfLength(128);
    ASSERT_TRUE(map->Init(1, 16));
    m_stage.m_pDataMap = map;
    auto input = Band_Make(0, 3, 1);
    input->m_pData[0] = 0xFF;
    m_stage.m_pInputElements->push_back({input.release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    ASSERT_TRUE(m_stage.MapBandData_Line_AllInput(0));
    const auto bytes = Bytes(*m_stage.m_pOutputBand, 0, 16);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0x80), 8); // all eight pixels, not the three of the line
}

TEST_F(StageOutput, ATailWithoutRoomInTheBoardLineWritesNothing)
{
    auto* map = new CMapOfLength(128);
    ASSERT_TRUE(map->Init(1, 16));
    m_stage.m_pDataMap = map;
    auto input = Band_Make(0, 11, 2); // 8 pixels fill the 16 bytes of a board line; 3 are left over
    std::fill_n(input->m_pData, input->m_dataSize, static_cast<unsigned char>(0xFF));
    m_stage.m_pInputElements->push_back({input.release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    ASSERT_TRUE(m_stage.MapBandData_Line_OneInput(0, *m_stage.m_pInputElements->front().band));
    EXPECT_THAT(Bytes(*m_stage.m_pOutputBand, 1, 16), Each(0)); // the next line is untouched
}

TEST_F(StageOutput, AnInputWithFewerLinesLeavesTheOthersAsTheyWereMade)
{
    Stage_Prepare(0);
    m_stage.m_pInputElements->push_back({Band_Make(0, 8, 3).release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    auto shorter = Band_Make(0, 8, 1);
    shorter->m_pData[0] = 0xFF;
    for (int line = 0; line < 3; ++line)
    {
        EXPECT_TRUE(m_stage.MapBandData_Line_OneInput(line, *shorter));
    }
    EXPECT_EQ(m_stage.m_pOutputBand->m_pData[0], 0x80);
    EXPECT_THAT(Bytes(*m_stage.m_pOutputBand, 1, 32), Each(0));
}

// What lies in memory behind an input's last line is not one of its lines.
TEST_F(StageOutput, TheLineBehindAnInputsLastOneIsNotMapped)
{
    Stage_Prepare(0);
    m_stage.m_pInputElements->push_back({Band_Make(0, 8, 3).release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    auto shorter = Band_Make(0, 8, 3);
    std::fill_n(shorter->m_pData, shorter->m_dataSize, static_cast<unsigned char>(0xFF));
    shorter->m_height = 1;
    for (int line = 0; line < 3; ++line)
    {
        EXPECT_TRUE(m_stage.MapBandData_Line_OneInput(line, *shorter));
    }
    EXPECT_EQ(m_stage.m_pOutputBand->m_pData[0], 0x80);
    EXPECT_THAT(Bytes(*m_stage.m_pOutputBand, 1, 32), Each(0)); // lines 1 and 2
}

TEST_F(StageOutput, WithoutInputsALineIsDone)
{
    EXPECT_TRUE(m_stage.MapBandData_Line_AllInput(0));
}

TEST_F(StageOutput, ABoardBandWithoutLinesIsSentOnWithoutMapping)
{
    CFailingStage stage;
    Process_Setup(stage, m_journal, 0);
    EXPECT_TRUE(stage.OneLoop());
    EXPECT_EQ(stage.m_processState, 5);
    EXPECT_THAT(stage.m_lines, IsEmpty());
    EXPECT_EQ(m_journal.back(), "out.In");
}

TEST_F(StageOutput, LinesAreMappedInAscendingOrder)
{
    CFailingStage stage;
    Process_Setup(stage, m_journal, 4);
    EXPECT_TRUE(stage.OneLoop());
    EXPECT_THAT(stage.m_lines, ElementsAre(0, 1, 2, 3));
}

TEST_F(StageOutput, ALineThatFailsStopsTheBandAndIsReportedOnceByEachCaller)
{
    CFailingStage stage;
    Process_Setup(stage, m_journal, 4);
    stage.m_failingLine = 1;
    const CLogCapture log;
    EXPECT_FALSE(stage.OneLoop());
    EXPECT_THAT(stage.m_lines, ElementsAre(0, 1));
    EXPECT_THAT(log.Summary(),
                ElementsAre("2 failure @UnitData2BoardData_Base", "2 failure @UnitData2BoardData_Base",
                            "2 failure @UnitData2BoardData_Base", "2 m_processState = 4 @UnitData2BoardData_Base"));
    const auto records = log.Records();
    EXPECT_THAT(records[0].function, testing::HasSubstr("MapBandData_Line_AllInput(int)"));
    EXPECT_THAT(records[1].function, testing::HasSubstr("GenerateBandData()"));
    EXPECT_THAT(records[2].function, testing::HasSubstr("Process()"));
    EXPECT_NE(stage.m_pOutputBand, nullptr); // the destructor's
    EXPECT_EQ(stage.m_outputBandNo, 0);
}

TEST_F(StageOutput, ProcessWithoutInputFails)
{
    const CLogCapture log;
    EXPECT_FALSE(m_stage.Process());
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base"));
}

TEST_F(StageOutput, InputThatIsLostDuringGenerationFailsTheBand)
{
    CFailingStage stage;
    Process_Setup(stage, m_journal, 1);
    stage.m_bLoseInput = true;
    const CLogCapture log;
    EXPECT_FALSE(stage.Process());
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base"));
    EXPECT_THAT(m_journal, IsEmpty());
}

TEST_F(StageOutput, TheThreadIsMarkedBusyForTheWholeOfProcessAndNotLonger)
{
    CFailingStage stage;
    Process_Setup(stage, m_journal, 1);
    ThreadBusy_WasClosed(8); // forgets what was before
    EXPECT_TRUE(stage.Process());
    EXPECT_EQ(stage.m_busyWhileGenerating, 1);
    EXPECT_EQ(ThreadBusy_OpenCount(8), 0);
    EXPECT_TRUE(ThreadBusy_WasClosed(8));
}

TEST_F(StageOutput, TheHeaderIsTheFirstInputsWithTheStagesOwnNumber)
{
    Stage_Prepare(0);
    auto first = Band_Make(4, 16, 1);
    STestBandHeader header = {{77, 2, 3, 4, 4, 6, 7, 8, 9, 10, 11, 12, 13}, true};
    BandHeader_Set(*first, header);
    header.words[0] = 5; // the stage's own number
    m_stage.m_outputBandNo = 5;
    m_stage.m_pInputElements->push_back({first.release(), nullptr});
    m_stage.m_pInputElements->push_back({Band_Make(9, 16, 1).release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    ASSERT_TRUE(m_stage.Process());
    EXPECT_EQ(m_stage.m_outputBandNo, 6);
    EXPECT_EQ(m_stage.m_pOutputBand, nullptr);
    CBandData* board = nullptr;
    ASSERT_TRUE(CTestOutputEnd(*m_pOutput).Out(board, 0));
    const std::unique_ptr<CBandData> own(board);
    EXPECT_EQ(BandHeader_Get(*board), header);
    EXPECT_EQ(board->m_width, 16 * 16);
    EXPECT_EQ(board->m_bitsPerPixel, 1);
}

TEST_F(StageOutput, AFullOutputFIFOFailsTheStepAfterOneTryAndKeepsTheBand)
{
    Stage_Prepare(0);
    m_stage.m_pInputElements->push_back({Band_Make(0, 16, 1).release(), nullptr});
    ASSERT_TRUE(m_stage.AllocateOutputBuffer());
    m_pOutput->m_bRefuse = true;
    const CLogCapture log;
    EXPECT_FALSE(m_stage.OneLoop());
    EXPECT_THAT(m_journal, ElementsAre("out.In"));
    EXPECT_THAT(log.Summary(),
                ElementsAre("2 failure @UnitData2BoardData_Base", "2 m_processState = 4 @UnitData2BoardData_Base"));
    EXPECT_NE(m_stage.m_pOutputBand, nullptr);
    EXPECT_EQ(m_stage.m_processState, 4);
    EXPECT_EQ(m_stage.m_pInputElements->size(), 1U);
}

TEST_F(StageOutput, BandNumbersCountFromZeroWhateverTheInputsNumbersAre)
{
    Stage_Prepare(1);
    for (int step = 0; step < 3; ++step)
    {
        auto band = Band_Make(0, 16, 1);
        band->m_bandNo = 40 - step;
        m_fifos[0]->m_full.push_back(band.release());
        for (int i = 0; i < 4; ++i)
        {
            ASSERT_TRUE(m_stage.OneLoop());
        }
        CBandData* board = nullptr;
        ASSERT_TRUE(CTestOutputEnd(*m_pOutput).Out(board, 0));
        const std::unique_ptr<CBandData> own(board);
        EXPECT_EQ(board->m_bandNo, step);
    }
}

TEST_F(StageOutput, CreateStartsTheNumbersAgain)
{
    const CConfigGuard config;
    m_stage.m_outputBandNo = 9;
    m_stage.m_bRefuseThread = true;
    m_stage.Create(false, {});
    EXPECT_EQ(m_stage.m_outputBandNo, 0);
}
