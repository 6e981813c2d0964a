// How a run of boardmap ends when somebody wants it to, and what it does with the streams that it was given: requests
// to end and to tell, closed and full outputs, pipes without a reader, files that an ended run left. Through a shell.
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{

bool Pattern(int x, int y)
{
    return (x * 7 + y * 3) % 5 == 0;
}

// A shell of the tests may ignore requests, which a program of its own would inherit.
const std::string start = "env --default-signal=INT,TERM,HUP,USR1 \"$boardmap\" ";

class CEndTest : public CCommandTest
{
protected:
    // More board data than a pipe takes.
    void LargeJob_Write()
    {
        Separation_Write("a.tif", 8000, 400, &Pattern);
        Job_Write("job.toml", {"a.tif", "a.tif"}, 50);
    }
};

} // namespace

TEST_F(CEndTest, OneRequestEndsARunThatWaitsForTheReaderOfAPipe)
{
    LargeJob_Write();
    for (const std::string signal : {"INT", "TERM", "HUP"})
    {
        for (const std::string reader : {"", "sleep 60 <pipe & reader=$!; "})
        {
            const auto begin = std::chrono::steady_clock::now();
            const auto result =
                Shell_Run("mkfifo pipe; " + start + "convert job.toml --format raw -o pipe & run=$!; " + reader +
                          "sleep 0.5; kill -" + signal +
                          " $run; wait $run; status=$?; [ -z \"${reader-}\" ] || kill $reader; rm pipe; "
                          "exit $status");
            EXPECT_EQ(result.status, 130) << signal << reader << result.error;
            EXPECT_THAT(result.error, HasSubstr("interrupted; nothing was written\n"));
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20)) << signal << reader;
            EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml"));
        }
    }
}

TEST_F(CEndTest, ASecondRequestEndsItAtOnce)
{
    LargeJob_Write();
    const auto second = Shell_Run("mkfifo pipe; " + start +
                                  "convert job.toml --format raw -o pipe & run=$!; sleep 0.5; kill -STOP $run; "
                                  "kill -TERM $run; kill -INT $run; kill -CONT $run; wait $run; echo $?; rm pipe");
    EXPECT_THAT(second.out, testing::AnyOf("130\n", "143\n")) << second.error;
    EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml"));
}

TEST_F(CEndTest, ARequestThatIsIgnoredAtTheStartStaysIgnored)
{
    LargeJob_Write();
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw -o whole").status, 0);
    for (const std::string signal : {"INT", "TERM", "HUP"})
    {
        const auto result = Shell_Run("mkfifo pipe; (trap '' " + signal +
                                      "; exec \"$boardmap\" convert job.toml --format raw -o pipe) & "
                                      "run=$!; sleep 0.3; kill -" +
                                      signal +
                                      " $run; sleep 0.3; cat pipe >copy; wait $run; status=$?; "
                                      "cmp whole copy && rm pipe copy; exit $status");
        EXPECT_EQ(result.status, 0) << signal << result.error;
        EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml", "whole"));
    }
}

TEST_F(CEndTest, ARunThatIsAskedTellsWhatItIsDoing)
{
    LargeJob_Write();
    const auto result = Shell_Run(
        "mkfifo pipe; " + start +
        "convert job.toml --format raw -o pipe 2>told & run=$!; sleep 60 <pipe & reader=$!; sleep 0.7; i=0; "
        "while ! grep -q 'bands wait' told && [ $i -lt 100 ]; do kill -USR1 $run; sleep 0.2; i=$((i + 1)); done; "
        "kill -TERM $run; wait $run; status=$?; kill $reader; cat told >&2; exit $status");
    EXPECT_EQ(result.status, 130);
    EXPECT_THAT(result.error, HasSubstr("boardmap: 0 bands, 0 lines, 0 bytes written; its thread runs\n"));
    EXPECT_THAT(result.error, HasSubstr("stage ink-stripe: thread runs, state "));
    EXPECT_THAT(result.error, HasSubstr("unit 1: thread "));
    EXPECT_THAT(result.error, HasSubstr("bands wait\n"));
}

TEST_F(CEndTest, ClosedStandardStreamsNeverEndUpInABoardFile)
{
    Separation_Write("a.tif", 100, 60, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 16);
    ASSERT_EQ(Boardmap_Run("convert job.toml -o whole.tif").status, 0);
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw -o whole.raw").status, 0);
    const std::string wholeTiff = File_Read(In("whole.tif"));
    const std::string wholeRaw = File_Read(In("whole.raw"));
    for (const std::string options : {"-o out", "-o out -v", "-o out --progress plain", "-o out --log log -v",
                                      "-o out --format raw -v", "-o out --format raw --progress plain --log log",
                                      "-o out --json --progress bar", "--format raw -o - -v --progress plain"})
    {
        for (int closed = 0; closed < 8; ++closed)
        {
            const bool bStandard = options.find("-o -") != std::string::npos;
            const std::string line = "\"$boardmap\" convert job.toml " + options + (bStandard ? " >out" : "") +
                                     ((closed & 1) != 0 ? " <&-" : "") + ((closed & 2) != 0 ? " >&-" : "") +
                                     ((closed & 4) != 0 ? " 2>&-" : "");
            const auto result = Shell_Run(line);
            const bool bTold = (closed & 2) == 0; // the summary, or the board data itself
            EXPECT_EQ(result.status, bTold ? 0 : 1) << line << result.error;
            const std::string found = File_Read(In("out"));
            if (!bStandard || bTold)
            {
                EXPECT_TRUE(found == (options.find("raw") != std::string::npos ? wholeRaw : wholeTiff)) << line;
            }
            std::filesystem::remove(In("out"));
            std::filesystem::remove(In("log"));
        }
    }
}

TEST_F(CEndTest, AnAnswerThatCannotBeWrittenIsNoSuccess)
{
    Separation_Write("a.tif", 16, 16, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 16);
    for (const std::string command : {"--help", "--version", "convert --help", "check job.toml", "convert job.toml",
                                      "layout job.toml", "kernels", "info job.boards.tif"})
    {
        const auto full = Shell_Run("\"$boardmap\" " + command + " >/dev/full");
        EXPECT_EQ(full.status, 1) << command;
        EXPECT_EQ(full.error, "standard output: cannot be written: No space left on device\n") << command;
        const auto closed = Shell_Run("{ sleep 0.1; \"$boardmap\" " + command + "; echo $? >status; } | :; cat status");
        EXPECT_EQ(closed.out, "1\n") << command;
        EXPECT_EQ(closed.error, "standard output: cannot be written: Broken pipe\n") << command;
    }
}

TEST_F(CEndTest, ALogThatTakesNothingEndsTheRunAndOneWithoutAReaderIsRefused)
{
    Separation_Write("a.tif", 16, 16, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 16);
    const auto full = Boardmap_Run("convert job.toml --log /dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.error, HasSubstr("Complete : CUnitData2BoardData_Base")); // the record is not lost
    EXPECT_THAT(full.error, HasSubstr("/dev/full: cannot be written: No space left on device\n"));
    EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml"));
    const auto pipe =
        Shell_Run("mkfifo pipe; timeout 20 \"$boardmap\" convert job.toml --log pipe; status=$?; rm pipe; "
                  "exit $status");
    EXPECT_EQ(pipe.status, 2);
    EXPECT_EQ(pipe.error, "pipe: cannot be opened for writing; --log needs a file in a folder that is there, or a pipe "
                          "that somebody reads\n");
    EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml"));
}

TEST_F(CEndTest, AnEndWithoutWarningLeavesNothingBehind)
{
    LargeJob_Write();
    for (const std::string signal : {"KILL", "QUIT"})
    {
        const auto result =
            Shell_Run("ulimit -c 0; mkfifo err; " + start +
                      "convert job.toml -v 2>err & run=$!; sleep 60 <err & reader=$!; sleep 0.5; kill -" + signal +
                      " $run; wait $run; status=$?; kill $reader; rm err; exit $status");
        EXPECT_NE(result.status, 2) << result.error;
        std::filesystem::remove(In("job.boards.tif")); // the machine may have been quick
        EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml"));
    }
}

#if !defined(BOARDMAP_SANITIZED) // the sanitizers' own address space is larger than any limit

// 132 bytes that say they are tiles of 256 MB.
TEST_F(CEndTest, AShortFileCannotAskForMuchMemory)
{
    const auto Word = [](std::uint32_t value, int bytes)
    {
        std::string text;
        for (int i = 0; i < bytes; ++i)
        {
            text += static_cast<char>(value >> (8 * i) & 0xFF);
        }
        return text;
    };
    constexpr std::uint32_t compressionLzw = 5;
    const std::vector<std::array<std::uint32_t, 2>> tags = {
        {256, 65536}, {257, 32768}, {258, 1}, {259, compressionLzw}, {262, 0}, {277, 1}, {322, 65536},
        {323, 32768}, {324, 8},     {325, 10}};
    std::string file = "II" + Word(42, 2) + Word(8, 4) + Word(static_cast<std::uint32_t>(tags.size()), 2);
    for (const auto& [tag, value] : tags)
    {
        file += Word(tag, 2) + Word(4, 2) + Word(1, 4) + Word(value, 4);
    }
    File_Write(In("a.tif"), file + Word(0, 4));
    Job_Write("job.toml", {"a.tif", "a.tif", "a.tif", "a.tif"}, 16);
    const auto result = Shell_Run("ulimit -v 400000 && MALLOC_ARENA_MAX=2 \"$boardmap\" convert job.toml");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error, HasSubstr("tile 0 has 10 bytes of compressed data, which cannot be 32768 rows of 8192"));
}

#endif
