// The shared logger and its places: console, file, listeners; nothing dropped, nothing torn.
#include "Platform/Log/CustomBoostLog.h"
#include "KelCommon/KelLog.h"
#include "Platform/Log/SeverityLogger.h"
#include "Tests/Support/LogCapture.h"

#include <boost/log/sources/record_ostream.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <csignal>
#include <sys/resource.h>
#endif

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

namespace
{

constexpr auto debug = ESeverityLevel::Debug;
constexpr auto info = ESeverityLevel::Info;
constexpr auto error = ESeverityLevel::Error;

void Record_Write(ESeverityLevel severity, const std::string& message)
{
    KEL_LOG_AT(severity, 88, message);
}

std::vector<std::string> Lines_Split(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

// Whether `text` begins with "hh:mm:ss.uuuuuu severity thread " and where that ends; 0 if it does not.
std::size_t Head_End(const std::string& text)
{
    const std::string shape = "00:00:00.000000 ";
    if (text.size() < shape.size() + 6)
    {
        return 0;
    }
    for (std::size_t i = 0; i < shape.size(); ++i)
    {
        const bool bDigit = text[i] >= '0' && text[i] <= '9';
        if (shape[i] == '0' ? !bDigit : text[i] != shape[i])
        {
            return 0;
        }
    }
    const std::string severity = text.substr(shape.size(), 6);
    if (severity != "debug " && severity != "info  " && severity != "ERROR ")
    {
        return 0;
    }
    const auto thread = text.find_first_not_of("0123456789abcdefx", shape.size() + severity.size());
    return thread != std::string::npos && text[thread] == ' ' ? thread + 1 : 0;
}

// The message of a line, which stands between the place and the scope.
std::string Message_Of(const std::string& line)
{
    const std::string place = "CustomBoostLogTest:88 ";
    const auto begin = Head_End(line);
    const auto end = line.find("  [");
    const bool bWhole = begin != 0 && line.compare(begin, place.size(), place) == 0 && end != std::string::npos &&
                        line.find("Record_Write(", end) != std::string::npos && line.back() == ']' &&
                        line.find("  [", end + 1) == std::string::npos;
    return bWhole ? line.substr(begin + place.size(), end - begin - place.size()) : "torn: " + line;
}

std::vector<std::string> Messages_Of(const std::vector<std::string>& lines)
{
    std::vector<std::string> messages;
    for (const auto& line : lines)
    {
        messages.push_back(Message_Of(line));
    }
    return messages;
}

// Counts how often it is written into a record.
struct SCounted
{
    mutable int m_count = 0;
};
std::ostream& operator<<(std::ostream& stream, const SCounted& counted)
{
    ++counted.m_count;
    return stream;
}

// A folder of the test's own; every place is closed afterwards.
class CustomBoostLog : public testing::Test
{
protected:
    void SetUp() override
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
        m_folder = std::filesystem::temp_directory_path() / (std::string(test->name()) + std::to_string(stamp));
        std::filesystem::create_directory(m_folder);
    }
    void TearDown() override
    {
        CCustomBoostLog::Console_Close();
        CCustomBoostLog::File_Close();
        std::filesystem::remove_all(m_folder);
    }

    std::string Path(const char* name) const
    {
        const auto text = (m_folder / name).u8string();
        return {text.begin(), text.end()};
    }
    std::string Content(const char* name) const
    {
        std::ifstream file(m_folder / name, std::ios::binary);
        std::ostringstream content;
        content << file.rdbuf();
        return content.str();
    }
    std::vector<std::string> Messages(const char* name) const { return Messages_Of(Lines_Split(Content(name))); }

    std::filesystem::path m_folder;
};

using CustomBoostLogDeathTest = CustomBoostLog;

} // namespace

// The record.

TEST_F(CustomBoostLog, AListenerSeesEveryPartOfARecord)
{
    std::vector<SLogRecord> records;
    const int listener = CCustomBoostLog::Listener_Add([&](const SLogRecord& record) { records.push_back(record); });
    const auto before = std::chrono::system_clock::now();
    Record_Write(info, "Complete : CUnitData2BoardData_Base");
    CCustomBoostLog::Listener_Remove(listener);
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].severity, info);
    EXPECT_EQ(records[0].message, "Complete : CUnitData2BoardData_Base");
    EXPECT_EQ(records[0].fileName, "CustomBoostLogTest");
    EXPECT_EQ(records[0].line, 88);
    EXPECT_THAT(records[0].function, HasSubstr("Record_Write(ESeverityLevel, const"));
    EXPECT_GE(records[0].time, before);
    EXPECT_LE(records[0].time, std::chrono::system_clock::now());
}

TEST_F(CustomBoostLog, ThereIsOneLogger)
{
    EXPECT_EQ(&CCustomBoostLog::BoostLog_Get(), &CCustomBoostLog::BoostLog_Get());
}

TEST_F(CustomBoostLog, WithNoPlaceOpenARecordIsNotBuilt)
{
    const SCounted counted;
    BOOST_LOG_SEV(CCustomBoostLog::BoostLog_Get(), error) << counted;
    EXPECT_EQ(counted.m_count, 0);
    {
        const CLogCapture capture;
        BOOST_LOG_SEV(CCustomBoostLog::BoostLog_Get(), debug) << counted;
        EXPECT_EQ(counted.m_count, 1);
    }
    CCustomBoostLog::Console_Open(error);
    BOOST_LOG_SEV(CCustomBoostLog::BoostLog_Get(), info) << counted;
    EXPECT_EQ(counted.m_count, 1) << "the only place wants errors";
    CCustomBoostLog::Console_Close();
    BOOST_LOG_SEV(CCustomBoostLog::BoostLog_Get(), error) << counted;
    EXPECT_EQ(counted.m_count, 1);
}

TEST_F(CustomBoostLog, ARecordOfTheLoggerAloneHasNoScope)
{
    testing::internal::CaptureStderr();
    CCustomBoostLog::Console_Open(debug);
    const CLogCapture capture;
    BOOST_LOG_SEV(CCustomBoostLog::BoostLog_Get(), error) << "bare";
    const auto lines = Lines_Split(testing::internal::GetCapturedStderr());
    ASSERT_THAT(capture.Records(), SizeIs(1));
    EXPECT_EQ(capture.Records()[0].fileName, "");
    EXPECT_EQ(capture.Records()[0].line, 0);
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines[0].substr(Head_End(lines[0])), "bare");
    EXPECT_NE(Head_End(lines[0]), 0U);
}

// The console.

TEST_F(CustomBoostLog, TheConsoleShowsTimeSeverityThreadPlaceMessageAndScopeOnOneLineEach)
{
    testing::internal::CaptureStderr();
    CCustomBoostLog::Console_Open(debug);
    Record_Write(error, "failure");
    Record_Write(info, "Complete : CUnitData2BoardData_Base");
    Record_Write(debug, "detail");
    const std::string text = testing::internal::GetCapturedStderr();
    const auto lines = Lines_Split(text);
    EXPECT_THAT(Messages_Of(lines), ElementsAre("failure", "Complete : CUnitData2BoardData_Base", "detail"));
    EXPECT_THAT(lines[0], HasSubstr(" ERROR "));
    EXPECT_THAT(lines[1], HasSubstr(" info  "));
    EXPECT_THAT(lines[2], HasSubstr(" debug "));
    EXPECT_EQ(text.back(), '\n');
}

TEST_F(CustomBoostLog, ASeverityWithoutANameIsAQuestionMark)
{
    testing::internal::CaptureStderr();
    CCustomBoostLog::Console_Open(error);
    Record_Write(static_cast<ESeverityLevel>(9), "beyond");
    CCustomBoostLog::Console_Close();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(" ?     "));
}

TEST_F(CustomBoostLog, TheConsoleShowsItsMinimumAndAboveUntilItIsClosed)
{
    testing::internal::CaptureStderr();
    const auto writeAll = [](const std::string& phase)
    {
        Record_Write(debug, phase + " debug");
        Record_Write(info, phase + " info");
        Record_Write(error, phase + " error");
    };
    writeAll("before");
    CCustomBoostLog::Console_Open(info);
    writeAll("first");
    CCustomBoostLog::Console_Open(error);
    writeAll("second");
    CCustomBoostLog::Console_Close();
    CCustomBoostLog::Console_Close();
    writeAll("after");
    EXPECT_THAT(Messages_Of(Lines_Split(testing::internal::GetCapturedStderr())),
                ElementsAre("first info", "first error", "second error"));
}

// The file.

TEST_F(CustomBoostLog, TheFileTakesItsMinimumAndAboveAndHasEachRecordAtOnce)
{
    ASSERT_TRUE(CCustomBoostLog::File_Open(Path("log"), info));
    Record_Write(debug, "not wanted");
    Record_Write(info, "one");
    EXPECT_THAT(Messages("log"), ElementsAre("one"));
    Record_Write(error, "two");
    EXPECT_THAT(Messages("log"), ElementsAre("one", "two"));
    CCustomBoostLog::File_Close();
    CCustomBoostLog::File_Close();
    testing::internal::CaptureStderr();
    Record_Write(error, "three");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(Messages("log"), ElementsAre("one", "two"));
}

TEST_F(CustomBoostLog, TheFileIsAppendedTo)
{
    for (const char* message : {"first", "second"})
    {
        ASSERT_TRUE(CCustomBoostLog::File_Open(Path("log"), debug));
        Record_Write(error, message);
        CCustomBoostLog::File_Close();
    }
    EXPECT_THAT(Messages("log"), ElementsAre("first", "second"));
}

TEST_F(CustomBoostLog, AnotherFileReplacesTheOneBefore)
{
    ASSERT_TRUE(CCustomBoostLog::File_Open(Path("old"), debug));
    Record_Write(error, "one");
    ASSERT_TRUE(CCustomBoostLog::File_Open(Path("new"), error));
    Record_Write(error, "two");
    Record_Write(info, "not wanted");
    EXPECT_THAT(Messages("old"), ElementsAre("one"));
    EXPECT_THAT(Messages("new"), ElementsAre("two"));
}

TEST_F(CustomBoostLog, AFileThatCannotBeOpenedIsAFalseAndTheOneBeforeStays)
{
    EXPECT_FALSE(CCustomBoostLog::File_Open(Path("no/such/folder/log"), debug));
    ASSERT_TRUE(CCustomBoostLog::File_Open(Path("log"), info));
    EXPECT_FALSE(CCustomBoostLog::File_Open(Path("no/such/folder/log"), debug));
    Record_Write(debug, "not wanted");
    Record_Write(info, "kept");
    EXPECT_THAT(Messages("log"), ElementsAre("kept"));
}

TEST_F(CustomBoostLog, TheFilesNameMayBeAnyUTF8)
{
    const auto name = std::u8string(u8"Protokoll-\u00E4\u4E2D.log");
    const auto path = (m_folder / name).u8string();
    ASSERT_TRUE(CCustomBoostLog::File_Open({path.begin(), path.end()}, debug));
    Record_Write(error, "failure");
    CCustomBoostLog::File_Close();
    EXPECT_TRUE(std::filesystem::exists(m_folder / name));
    EXPECT_GT(std::filesystem::file_size(m_folder / name), 0U);
}

TEST_F(CustomBoostLog, EveryPlaceHasItsOwnMinimum)
{
    testing::internal::CaptureStderr();
    CCustomBoostLog::Console_Open(error);
    ASSERT_TRUE(CCustomBoostLog::File_Open(Path("log"), info));
    const CLogCapture capture;
    Record_Write(debug, "a");
    Record_Write(info, "b");
    Record_Write(error, "c");
    EXPECT_THAT(Messages_Of(Lines_Split(testing::internal::GetCapturedStderr())), ElementsAre("c"));
    EXPECT_THAT(Messages("log"), ElementsAre("b", "c"));
    EXPECT_THAT(capture.Records(), SizeIs(3));
}

#if defined(__linux__)

TEST_F(CustomBoostLog, ARecordThatTheFileDoesNotTakeGoesToStandardErrorOnce)
{
    testing::internal::CaptureStderr();
    ASSERT_TRUE(CCustomBoostLog::File_Open("/dev/full", info));
    Record_Write(debug, "not wanted");
    Record_Write(info, "one");
    Record_Write(error, "two");
    CCustomBoostLog::Console_Open(error);
    Record_Write(error, "three");
    ASSERT_TRUE(CCustomBoostLog::File_Open(Path("log"), info));
    Record_Write(info, "four");
    EXPECT_THAT(Messages_Of(Lines_Split(testing::internal::GetCapturedStderr())), ElementsAre("one", "two", "three"));
    EXPECT_THAT(Messages("log"), ElementsAre("four"));
}

#endif

#if defined(__linux__)

// In a child process, whose files can be bounded.
TEST_F(CustomBoostLogDeathTest, AFileThatHasRoomAgainTakesTheNextRecord)
{
    const auto writeWithAndWithoutRoom = [&]
    {
        std::signal(SIGXFSZ, SIG_IGN);
        CCustomBoostLog::File_Open(Path("log"), debug);
        Record_Write(error, "one");
        rlimit limit = {};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit full = {std::filesystem::file_size(m_folder / "log"), limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        Record_Write(error, "two");
        setrlimit(RLIMIT_FSIZE, &limit);
        Record_Write(error, "three");
        std::_Exit(0);
    };
    EXPECT_EXIT(writeWithAndWithoutRoom(), testing::ExitedWithCode(0), "CustomBoostLogTest:88 two");
    EXPECT_THAT(Messages("log"), ElementsAre("one", "three"));
}

#endif

// A process that ends at once has its records on disk.
TEST_F(CustomBoostLogDeathTest, RecordsOfAProcessThatIsAbortedAreInTheFile)
{
    // Where a process cannot be doubled, the child is a second run of this test: it must find the file again.
    const std::filesystem::path log = std::filesystem::current_path() / "CustomBoostLogDeathTest.log";
    std::filesystem::remove(log);
    const auto writeAndAbort = [&]
    {
        const auto path = log.u8string();
        CCustomBoostLog::File_Open({path.begin(), path.end()}, debug);
        Record_Write(error, "last words");
        std::_Exit(3);
    };
    EXPECT_EXIT(writeAndAbort(), testing::ExitedWithCode(3), "");
    std::filesystem::rename(log, m_folder / "log");
    EXPECT_THAT(Messages("log"), ElementsAre("last words"));
}

// Listeners.

TEST_F(CustomBoostLog, EveryListenerIsCalledUntilItIsRemoved)
{
    std::vector<std::string> first;
    std::vector<std::string> second;
    const int firstId =
        CCustomBoostLog::Listener_Add([&](const SLogRecord& record) { first.push_back(record.message); });
    Record_Write(error, "a");
    const int secondId =
        CCustomBoostLog::Listener_Add([&](const SLogRecord& record) { second.push_back(record.message); });
    EXPECT_NE(firstId, secondId);
    Record_Write(debug, "b");
    CCustomBoostLog::Listener_Remove(firstId);
    Record_Write(error, "c");
    CCustomBoostLog::Listener_Remove(firstId);
    CCustomBoostLog::Listener_Remove(secondId);
    Record_Write(error, "d");
    EXPECT_THAT(first, ElementsAre("a", "b"));
    EXPECT_THAT(second, ElementsAre("b", "c"));
}

TEST_F(CustomBoostLog, AListenerRunsOnTheThreadThatWroteTheRecord)
{
    std::vector<std::thread::id> threads;
    const int id =
        CCustomBoostLog::Listener_Add([&](const SLogRecord&) { threads.push_back(std::this_thread::get_id()); });
    Record_Write(error, "failure");
    std::thread other([] { Record_Write(error, "failure"); });
    const auto otherId = other.get_id();
    other.join();
    CCustomBoostLog::Listener_Remove(id);
    EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id(), otherId));
}

TEST_F(CustomBoostLog, ARemovedListenerIsNeverCalledAgainWhileRecordsAreWritten)
{
    std::atomic<bool> bDone{false};
    std::vector<std::thread> writers;
    for (int i = 0; i < 3; ++i)
    {
        writers.emplace_back(
            [&]
            {
                while (!bDone)
                {
                    Record_Write(error, "failure");
                }
            });
    }
    std::atomic<int> lateCount{0};
    const auto addAndRemove = [&]
    {
        for (int i = 0; i < 200; ++i)
        {
            // Freed right after the removal: a late call would be one into freed memory.
            const auto bRemoved = std::make_unique<bool>(false);
            const int id = CCustomBoostLog::Listener_Add([&lateCount, pRemoved = bRemoved.get()](const SLogRecord&)
                                                         { lateCount += *pRemoved ? 1 : 0; });
            std::this_thread::yield();
            CCustomBoostLog::Listener_Remove(id);
            *bRemoved = true;
        }
    };
    std::thread other(addAndRemove);
    addAndRemove();
    other.join();
    bDone = true;
    for (auto& writer : writers)
    {
        writer.join();
    }
    EXPECT_EQ(lateCount, 0);
}

// Load.

TEST_F(CustomBoostLog, RecordsOfEightThreadsAreNeitherLostNorTornNorReorderedWithinAThread)
{
    constexpr int threadCount = 8;
    constexpr int perThread = 1000;
    ASSERT_TRUE(CCustomBoostLog::File_Open(Path("log"), debug));
    const CLogCapture capture;
    std::vector<std::thread> writers;
    for (int i = 0; i < threadCount; ++i)
    {
        writers.emplace_back(
            [i]
            {
                for (int k = 0; k < perThread; ++k)
                {
                    Record_Write(error, std::to_string(i) + ' ' + std::to_string(k));
                }
            });
    }
    for (auto& writer : writers)
    {
        writer.join();
    }
    EXPECT_THAT(capture.Records(), SizeIs(threadCount * perThread));
    const auto lines = Lines_Split(Content("log"));
    EXPECT_THAT(lines, SizeIs(threadCount * perThread));
    std::vector<int> next(threadCount, 0);
    int wrongCount = 0;
    for (const auto& line : lines)
    {
        std::istringstream message(Message_Of(line));
        int thread = -1;
        int number = -1;
        message >> thread >> number;
        const bool bRight = thread >= 0 && thread < threadCount && next[static_cast<std::size_t>(thread)]++ == number;
        wrongCount += bRight ? 0 : 1;
    }
    EXPECT_EQ(wrongCount, 0);
}

TEST_F(CustomBoostLog, ChangingOnePlaceLosesNoRecordForAnother)
{
    constexpr int recordCount = 2000;
    ASSERT_TRUE(CCustomBoostLog::File_Open(Path("0"), error));
    const CLogCapture capture;
    testing::internal::CaptureStderr();
    std::atomic<bool> bDone{false};
    std::thread changer(
        [&]
        {
            for (int i = 1; !bDone; ++i)
            {
                CCustomBoostLog::Console_Open(i % 2 == 0 ? info : error);
                CCustomBoostLog::File_Open(Path(i % 2 == 0 ? "0" : "1"), error);
                CCustomBoostLog::Listener_Remove(CCustomBoostLog::Listener_Add([](const SLogRecord&) {}));
                CCustomBoostLog::Console_Close();
            }
        });
    for (int i = 0; i < recordCount; ++i)
    {
        Record_Write(error, std::to_string(i));
    }
    bDone = true;
    changer.join();
    testing::internal::GetCapturedStderr();
    CCustomBoostLog::File_Close();
    EXPECT_THAT(capture.Records(), SizeIs(recordCount));
    std::multiset<std::string> inFiles;
    for (const char* name : {"0", "1"})
    {
        for (const auto& message : Messages(name))
        {
            inFiles.insert(message);
        }
    }
    EXPECT_THAT(inFiles, SizeIs(recordCount));
    for (int i = 0; i < recordCount; ++i)
    {
        ASSERT_EQ(inFiles.count(std::to_string(i)), 1U) << i;
    }
}
