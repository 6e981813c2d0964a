// What a generator may do with a map of the library's own, and with no other: all bands of a line in one pass, and runs
// of lines for one index. Nothing shows either in the bytes or in the records.
#include "Unit2Board/LineRun.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "Tests/Unit2Board/ConverterSupport.h"

#include <algorithm>
#include <numeric>

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// A host's own map: derived from a style, and different.
class CHostMap : public CPrintUnitDataMap_5
{
public:
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override
    {
        m_units.push_back(param.m_unitIndex);
        return CPrintUnitDataMap_5::MapData_Line(param, src, dst, dstByteCount);
    }
    mutable std::vector<int> m_units;
};

// Bands of 24 pixels for the units 0, 1, ... of a style-5 map of 16-bit frames, with another pattern each.
struct SOwnStyleJob
{
    SOwnStyleJob(int srcBandCount, int height)
    {
        EXPECT_TRUE(map.Init(1, 16));
        EXPECT_TRUE(dst.Create(map.SrcPixelCount_2_BoardBitCount(24), height, 1, 1));
        for (int i = 0; i < srcBandCount; ++i)
        {
            Band_Add(i, height);
        }
    }

    void Band_Add(int unit, int height)
    {
        sources.push_back(std::make_unique<CBandData>());
        CBandData& band = *sources.back();
        EXPECT_TRUE(band.Create(24, height, 1, 1));
        band.m_unitIndex = unit;
        std::iota(band.m_pData, band.m_pData + band.m_dataSize, static_cast<unsigned char>(37 * unit + 1));
        pointers.push_back(&band);
    }

    // What the map leaves band by band and line by line.
    std::vector<unsigned char> Expected(const CPrintUnitDataMap_Base& plainMap) const
    {
        std::vector<unsigned char> board(static_cast<std::size_t>(dst.m_dataSize));
        for (int line = 0; line < dst.m_height; ++line)
        {
            for (const auto& band : sources)
            {
                if (line < band->m_height)
                {
                    SSrcBandDataParam param;
                    param.m_unitIndex = band->m_unitIndex;
                    param.m_lineBitCount = 24;
                    EXPECT_TRUE(plainMap.MapData_Line(param, band->m_pData + line * band->m_bytesPerLine,
                                                      board.data() + line * dst.m_bytesPerLine, dst.m_bytesPerLine));
                }
            }
        }
        return board;
    }
    std::vector<unsigned char> Board() const { return {dst.m_pData, dst.m_pData + dst.m_dataSize}; }

    CPrintUnitDataMap_5 map;
    CBandData dst;
    std::vector<std::unique_ptr<CBandData>> sources;
    std::vector<CBandData*> pointers;
};

// One index through a generator without a thread; false if the generator gave up.
bool Index_Process(SOwnStyleJob& job, const CPrintUnitDataMap_Base& map, int index, int lineRun)
{
    CKelThreadBuffer_T<int> buffer("test");
    int* element = new int(index);
    EXPECT_TRUE(buffer.Create(&element, 1));
    EXPECT_TRUE(buffer.Empty_Out(element, 0));
    EXPECT_TRUE(buffer.Wait_In(element, 0));
    CUnit2Board_Line generator;
    generator.LineRun_Set(lineRun);
    SAccess::LineBuffer(generator) = &buffer;
    SAccess::DataMap(generator) = &map;
    SAccess::SrcBands(generator) = job.pointers.data();
    SAccess::SrcBandCount(generator) = static_cast<int>(job.pointers.size());
    SAccess::DstBand(generator) = &job.dst;
    EXPECT_TRUE(SAccess::Prepare(generator));
    EXPECT_TRUE(SAccess::OneLoop(generator)); // the scratch object
    EXPECT_TRUE(SAccess::OneLoop(generator)); // the index is taken
    const bool bMapped = SAccess::OneLoop(generator);
    SAccess::Finally(generator);
    return bMapped;
}

CBandData& Band_Of(CBandData& band, int bytesPerLine, int height)
{
    band.m_bytesPerLine = bytesPerLine; // the size is all that is looked at
    band.m_height = height;
    return band;
}

} // namespace

TEST(LineRun, IsHalfAMegabyteOrAnEighthOfAGeneratorsShare)
{
    CPrintUnitDataMap_5 map;
    ASSERT_TRUE(map.Init(1, 16));
    const auto run = [&](int bytesPerLine, int height, int generatorCount)
    {
        CBandData band;
        const int lines = LineRun_Get(Band_Of(band, bytesPerLine, height), map, generatorCount);
        Band_Of(band, 0, 0);
        return lines;
    };
    EXPECT_EQ(run(8192, 64500, 2), 64); // 512 KB
    EXPECT_EQ(run(8193, 64500, 2), 63);
    EXPECT_EQ(run(524288, 64500, 2), 1);
    EXPECT_EQ(run(524289, 64500, 2), 1);
    EXPECT_EQ(run(100, 64500, 2), 4031); // eight runs for each generator
    EXPECT_EQ(run(800, 1024, 2), 64);
    EXPECT_EQ(run(800, 1023, 2), 63);
    EXPECT_EQ(run(800, 1024, 4), 32);
    EXPECT_EQ(run(800, 100, 1), 12);
    EXPECT_EQ(run(800, 100, 2), 6);
    EXPECT_EQ(run(800, 15, 1), 1);
    EXPECT_EQ(run(800, 7, 1), 1);
    EXPECT_EQ(run(0, 6450, 2), 403); // lines without bytes
    EXPECT_EQ(run(800, 0, 2), 1);
    EXPECT_EQ(run(800, 6450, 0), 1); // no generator
}

TEST(LineRun, IsOneLineForAHostsOwnMap)
{
    CBandData band;
    Band_Of(band, 800, 6450);
    CHostMap hostMap;
    ASSERT_TRUE(hostMap.Init(1, 16));
    EXPECT_EQ(LineRun_Get(band, hostMap, 2), 1);
    const CScriptedMap scriptedMap(band);
    EXPECT_EQ(LineRun_Get(band, scriptedMap, 2), 1);
    const CPrintUnitDataMap_Base base;
    EXPECT_EQ(LineRun_Get(band, base, 2), 1);
    Band_Of(band, 0, 0);
}

TEST(LineRun, AnIndexStandsForTheLinesThatBeginThereAsFarAsTheBandHasThem)
{
    SOwnStyleJob whole(2, 12);
    const auto expected = whole.Expected(whole.map);
    for (int first = 0; first < 12; ++first)
    {
        SOwnStyleJob job(2, 12);
        ASSERT_TRUE(Index_Process(job, job.map, first, 5));
        const auto lineBytes = job.dst.m_bytesPerLine;
        const int end = std::min(first + 5, 12);
        std::vector<unsigned char> run(expected.size(), 0);
        std::copy(expected.begin() + first * lineBytes, expected.begin() + end * lineBytes,
                  run.begin() + first * lineBytes);
        EXPECT_EQ(job.Board(), run) << "from line " << first;
    }
}

TEST(LineRun, AllBandsOfALineLeaveTheBytesOfOneBandAfterTheOtherHoweverMany)
{
    for (const int count : {0, 1, 2, 16})
    {
        SOwnStyleJob job(count, 1);
        EXPECT_TRUE(Index_Process(job, job.map, 0, 1));
        EXPECT_EQ(job.Board(), job.Expected(job.map)) << count;
    }
    SOwnStyleJob many(0, 1);
    for (int i = 0; i < 150; ++i)
    {
        many.Band_Add(i % 16, 1);
    }
    EXPECT_TRUE(Index_Process(many, many.map, 0, 1));
    EXPECT_EQ(many.Board(), many.Expected(many.map));
}

TEST(LineRun, ABandWithoutTheLineHasItsRecordForEachLineAndTheOthersAreMapped)
{
    SOwnStyleJob job(0, 4);
    job.Band_Add(0, 4);
    job.Band_Add(1, 2);
    job.Band_Add(2, 4);
    const CLogCapture log;
    EXPECT_TRUE(Index_Process(job, job.map, 0, 4));
    EXPECT_EQ(job.Board(), job.Expected(job.map));
    const auto records = Records_Text(log);
    EXPECT_EQ(records.size(), 2U);
    EXPECT_THAT(records, Each("2 failure @Unit2Board_Line:144 MapBandData_Line_OneInput"));
}

TEST(LineRun, AHostsOwnMapGetsItsBandsOneByOneInArrayOrder)
{
    SOwnStyleJob job(3, 4);
    std::swap(job.pointers[0], job.pointers[2]);
    CHostMap hostMap;
    ASSERT_TRUE(hostMap.Init(1, 16));
    const CLogCapture log;
    EXPECT_TRUE(Index_Process(job, hostMap, 3, 1));
    EXPECT_THAT(hostMap.m_units, ElementsAre(2, 1, 0));
    EXPECT_THAT(Records_Text(log), IsEmpty());
}

TEST(LineRun, ABandOfAnyHeightIsMappedWholeByAnyNumberOfGenerators)
{
    for (const int height : {1, 7, 16, 19, 20, 21, 100, 167, 1300, 1301})
    {
        for (const int generatorCount : {1, 2, 3, 4})
        {
            SOwnStyleJob job(3, height);
            CWatchedConverter converter;
            ASSERT_TRUE(converter.Create(generatorCount, job.pointers.data(), 3, job.dst, job.map));
            ASSERT_TRUE(converter.WaitExit(testPatienceMs));
            EXPECT_EQ(job.Board(), job.Expected(job.map)) << height << " lines, " << generatorCount << " generators";
            EXPECT_EQ(SAccess::AddedCount(converter), height);
            EXPECT_EQ(SAccess::FinishedCount(converter), height);
        }
    }
}

TEST(LineRun, SlowLinesOfAHostsOwnMapAreSharedOutOneByOne)
{
    SBandJob job(1, 6);
    CTurnstile turnstile;
    job.map.m_script = [&](const SLineCall&) { return turnstile.Pass(); };
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 3));
    EXPECT_TRUE(turnstile.WaitEntered(3)); // three lines at once: no generator holds a line that another could do
    turnstile.Admit(1);
    EXPECT_TRUE(turnstile.WaitEntered(4));
    turnstile.Admit(5);
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_EQ(job.map.CallCount(), 6U);
}
