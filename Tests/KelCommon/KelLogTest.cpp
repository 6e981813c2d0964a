// The log macros: what a record carries of the place that wrote it.
#include "KelCommon/KelLog.h"
#include "Tests/Support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::HasSubstr;

static_assert(KelLog_BaseName("some/where/KelBaseThread.h") == "KelBaseThread");
static_assert(KelLog_BaseName("some\\where\\KelBaseThread.cpp") == "KelBaseThread");
static_assert(KelLog_BaseName("KelBaseThread.h") == "KelBaseThread");
static_assert(KelLog_BaseName("a.b/Name") == "Name");
static_assert(KelLog_BaseName("a/Name.x.cpp") == "Name.x");

namespace
{

class CWriter
{
public:
    template<class T>
    static int Record_Write(ESeverityLevel severity, T value)
    {
        KEL_LOG(severity, "value = " + std::to_string(value));
        return __LINE__ - 1;
    }
    static void PublishedRecord_Write() { KEL_LOG_AT(SSeverity::Error, 144, "failure"); }
};

} // namespace

TEST(KelLog, ARecordCarriesSeverityTextFullSignatureFileAndTheLineOfItsStatement)
{
    const CLogCapture capture;
    const int line = CWriter::Record_Write(SSeverity::Info, 17L);
    const auto records = capture.Records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].severity, SSeverity::Info);
    EXPECT_EQ(records[0].message, "value = 17");
    EXPECT_EQ(records[0].fileName, "KelLogTest");
    EXPECT_EQ(records[0].line, line);
    EXPECT_THAT(records[0].function, HasSubstr("CWriter::Record_Write(ESeverityLevel, T)"));
    EXPECT_THAT(records[0].function, HasSubstr("T = long"));
}

TEST(KelLog, APublishedLineIsTheRecordsLine)
{
    const CLogCapture capture;
    CWriter::PublishedRecord_Write();
    EXPECT_EQ(capture.SummaryWithLines(), std::vector<std::string>{"2 failure @KelLogTest:144"});
}

TEST(KelLog, TheSeveritiesAreTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(SSeverity::Debug), 0);
    EXPECT_EQ(static_cast<int>(SSeverity::Info), 1);
    EXPECT_EQ(static_cast<int>(SSeverity::Error), 2);
}

TEST(KelLog, TheMessageIsCopiedBeforeTheCallReturns)
{
    const CLogCapture capture;
    std::string message = "before";
    KEL_LOG(SSeverity::Error, message);
    message = "after!";
    KEL_LOG(SSeverity::Error, std::string_view("a message that is cut").substr(2, 7));
    EXPECT_EQ(capture.Summary(), (std::vector<std::string>{"2 before @KelLogTest", "2 message @KelLogTest"}));
}

TEST(KelLog, ASignatureIsCutAfterItsFirst511Characters)
{
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{1}, std::size_t{511}, std::size_t{512}, std::size_t{900}})
    {
        const std::string signature = std::string(length == 0 ? 0 : length - 1, 'f') + (length == 0 ? "" : ")");
        const CLogCapture capture;
        KelLog_Write(SKelLogSite{SSeverity::Error, signature.c_str(), "File", 3}, "failure");
        const auto records = capture.Records();
        ASSERT_EQ(records.size(), 1U);
        EXPECT_EQ(records[0].function, signature.substr(0, 511)) << length;
        EXPECT_EQ(records[0].fileName, "File");
    }
}

TEST(KelLog, AScopeEndsWithItsRecord)
{
    const CLogCapture capture;
    CWriter::PublishedRecord_Write();
    KEL_LOG_AT(SSeverity::Error, 7, "failure");
    const auto records = capture.Records();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1].line, 7);
    EXPECT_THAT(records[1].function, HasSubstr("TestBody"));
}

// While the program runs, too, not only while it is compiled.
TEST(KelLog, TheBaseNameOfAPathWithOrWithoutFoldersIsTheSame)
{
    for (const std::string path : {"Name.cpp", "a/Name.cpp", "a\\b\\Name.cpp", "Name"})
    {
        EXPECT_EQ(KelLog_BaseName(path), "Name") << path;
    }
}
