// One logger for the whole process: records that are written inside the data-mapping library, inside the controller
// platform's and in the program itself reach the same places. The program is linked with both shared libraries, as its
// users' are, and each of the three has its own copy of the log function.
#include "DataMap/PrintUnitDataMap_5.h"
#include "KelCommon/KelLog.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/Log/CustomBoostLog.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/TestFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{

void Records_Write()
{
    KEL_LOG(ESeverityLevel::Info, "the program's own");
    CPrintUnitDataMap_5 map;
    EXPECT_FALSE(map.Init(3, 16));
    EXPECT_THROW(CBandDataFIFO_S(0), int);
}

} // namespace

TEST(SharedLog, RecordsOfBothLibrariesAndTheProgramReachOneListener)
{
    const CLogCapture log;
    Records_Write();
    EXPECT_THAT(log.Summary(), ElementsAre(HasSubstr("1 the program's own @SharedLogTest"),
                                           HasSubstr("@PrintUnitDataMap_Base"), HasSubstr("@PrintUnitDataMap_5"),
                                           "2 Argument is invalid. bufferLen = 0 @KelThreadPtrFIFO_T"));
}

TEST(SharedLog, RecordsOfBothLibrariesAndTheProgramReachOneFile)
{
    const CTestFolder folder;
    const std::u8string path = (folder / "log").u8string();
    ASSERT_TRUE(CCustomBoostLog::File_Open({path.begin(), path.end()}, ESeverityLevel::Error));
    Records_Write();
    CCustomBoostLog::File_Close();
    const std::string text = File_Read(folder / "log");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3); // the program's own is below the minimum
    EXPECT_LT(text.find("PrintUnitDataMap_Base"), text.find("KelThreadPtrFIFO_T"));
    EXPECT_LT(text.find("KelThreadPtrFIFO_T"), text.size());
}
