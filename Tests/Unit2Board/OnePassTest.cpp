// When a line generator maps all bands of a line at once, and that nothing shows it.
#include "Tests/Unit2Board/ConverterSupport.h"

#include <algorithm>
#include <atomic>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// Counts the passes and, by the call of the base, the lines in them.
class CPassMap : public CScriptedMap
{
public:
    using CScriptedMap::CScriptedMap;

    bool MapData_Line_AllInput(const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                               int dstByteCount) const override
    {
        m_passes.push_back(lineCount);
        return CScriptedMap::MapData_Line_AllInput(lines, lineCount, dst, dstByteCount);
    }
    mutable std::vector<int> m_passes;
};

// One line of `bands` bands through a generator without a thread; false if the generator gave up.
bool Line_Process(SBandJob& job, const CPrintUnitDataMap_Base& map, int line)
{
    CKelThreadBuffer_T<int> buffer("test");
    int* element = new int(line);
    EXPECT_TRUE(buffer.Create(&element, 1));
    EXPECT_TRUE(buffer.Empty_Out(element, 0));
    EXPECT_TRUE(buffer.Wait_In(element, 0));
    CUnit2Board_Line generator;
    SAccess::LineBuffer(generator) = &buffer;
    SAccess::DataMap(generator) = &map;
    SAccess::SrcBands(generator) = job.pointers.data();
    SAccess::SrcBandCount(generator) = static_cast<int>(job.pointers.size());
    SAccess::DstBand(generator) = &job.dst;
    EXPECT_TRUE(SAccess::Prepare(generator));
    EXPECT_TRUE(SAccess::OneLoop(generator)); // the scratch object
    EXPECT_TRUE(SAccess::OneLoop(generator)); // the line is taken
    const bool bMapped = SAccess::OneLoop(generator);
    SAccess::Finally(generator);
    return bMapped;
}

std::vector<int> Units(const CScriptedMap& map)
{
    std::vector<int> units;
    for (const SLineCall& call : map.Calls())
    {
        units.push_back(call.param.m_unitIndex);
    }
    return units;
}

} // namespace

TEST(OnePass, AllBandsOfALineGoToTheMapAtOnceInArrayOrder)
{
    SBandJob job(3, 4);
    std::swap(job.pointers[0], job.pointers[2]);
    const CPassMap map(job.dst);
    EXPECT_TRUE(Line_Process(job, map, 3));
    EXPECT_THAT(map.m_passes, ElementsAre(3));
    EXPECT_THAT(Units(map), ElementsAre(12, 11, 10));
    EXPECT_EQ(map.Calls()[1].src, job.pointers[1]->m_pData + 3 * 3);
    EXPECT_EQ(map.Calls()[1].dstByteCount, job.dst.m_bytesPerLine);
}

TEST(OnePass, MoreBandsThanFitAtOnceKeepTheirOrder)
{
    SBandJob job(150, 1);
    const CPassMap map(job.dst);
    EXPECT_TRUE(Line_Process(job, map, 0));
    const std::vector<int> units = Units(map);
    ASSERT_EQ(units.size(), 150U);
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        EXPECT_EQ(units[i], 10 + static_cast<int>(i));
    }
    EXPECT_GE(map.m_passes.size(), 2U);
}

TEST(OnePass, ABandWithoutTheLineTakesTheOthersBackToOneByOne)
{
    SBandJob job(3, 4);
    ASSERT_TRUE(job.sources[1]->Create(24, 2, 1, 1));
    const CPassMap map(job.dst);
    const CLogCapture log;
    EXPECT_TRUE(Line_Process(job, map, 2));
    EXPECT_THAT(map.m_passes, IsEmpty());
    EXPECT_THAT(Units(map), ElementsAre(10, 12));
    EXPECT_THAT(Records_Text(log), ElementsAre("2 failure @Unit2Board_Line:144 MapBandData_Line_OneInput"));
}

TEST(OnePass, AFailureLeavesTheRecordsOfOneByOne)
{
    std::vector<std::vector<std::string>> signatures;
    for (const bool bShortBand : {false, true}) // a band without the line, behind the failing one: one by one
    {
        SBandJob job(4, 4);
        if (bShortBand)
        {
            ASSERT_TRUE(job.sources[3]->Create(24, 2, 1, 1));
        }
        CPassMap map(job.dst);
        map.m_script = [](const SLineCall& call) { return call.param.m_unitIndex != 11; };
        const CLogCapture log;
        EXPECT_FALSE(Line_Process(job, map, 3));
        EXPECT_THAT(Units(map), ElementsAre(10, 11));
        EXPECT_EQ(map.m_passes.empty(), bShortBand);
        EXPECT_THAT(Records_Text(log), ElementsAre("2 failure @Unit2Board_Line:158 MapBandData_Line_OneInput",
                                                   "2 failure @Unit2Board_Line:135 MapBandData_Line_AllInput",
                                                   "2 failure @Unit2Board_Line:114 Process",
                                                   "2 m_processState = 3 @Unit2Board_Line:68 OneLoop"));
        std::vector<std::string> functions;
        for (const auto& record : log.Records())
        {
            functions.push_back(record.function);
        }
        signatures.push_back(functions);
    }
#if !defined(_MSC_VER)
    EXPECT_EQ(signatures[0], signatures[1]); // to the letter
#endif
}
