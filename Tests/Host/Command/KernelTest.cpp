// boardmap kernels and convert --kernel from outside: what they list, what they refuse, and that the output is the
// same.
#include "DataMap/DataMapKernel.h"
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::IsEmpty;

namespace
{

using Kernels = CCommandTest;

std::vector<std::string> Names_Available()
{
    std::vector<std::string> names;
    for (int i = 0; i < CDataMapKernel::Count_Get(); ++i)
    {
        if (CDataMapKernel::IsAvailable(CDataMapKernel::Name_Get(i)))
        {
            names.emplace_back(CDataMapKernel::Name_Get(i));
        }
    }
    return names;
}

} // namespace

TEST_F(Kernels, AreListedOnePerLineWithTheChosenOneMarked)
{
    std::string expected;
    for (const std::string& name : Names_Available())
    {
        expected += name + (name == CDataMapKernel::Current_Get() ? "  (chosen)\n" : "\n");
    }
    const auto result = Boardmap_Run("kernels");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, expected);
    EXPECT_THAT(result.error, IsEmpty());
}

TEST_F(Kernels, AllWriteTheSameBoardData)
{
    const auto Ink = [](int x, int y) { return (x * 7 + y * 13) % 5 == 0; };
    Separation_Write("a.tif", 60, 70, Ink);
    Separation_Write("b.tif", 60, 70, [&](int x, int y) { return !Ink(y, x); });
    Job_Write("job.toml", {"a.tif", "b.tif", "b.tif", "a.tif"}, 21);
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw -o usual.raw").status, 0);
    const std::string usual = File_Read(In("usual.raw"));
    EXPECT_GT(usual.size(), 1000U);
    for (const std::string& name : Names_Available())
    {
        const auto result = Boardmap_Run("convert job.toml --format raw -o forced.raw --kernel " + name);
        EXPECT_EQ(result.status, 0) << result.error;
        EXPECT_TRUE(File_Read(In("forced.raw")) == usual) << name;
    }
}

TEST_F(Kernels, AnUnknownNameIsOneErrorWithTheListAndNothingIsConverted)
{
    Separation_Write("a.tif", 8, 8, [](int, int) { return true; });
    Job_Write("job.toml", {"a.tif"}, 8);
    std::string known;
    for (const std::string& name : Names_Available())
    {
        known += (known.empty() ? "" : ", ") + name;
    }
    const auto before = Files();
    const auto result = Boardmap_Run("convert job.toml --kernel fastest");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.error, "--kernel: \"fastest\" is none of those that this machine runs: " + known + '\n');
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_EQ(Files(), before);

    const auto empty = Boardmap_Run("convert job.toml --kernel ''");
    EXPECT_EQ(empty.status, 2);
    EXPECT_THAT(empty.error, HasSubstr("--kernel: needs a name"));
}

TEST_F(Kernels, TheHelpNamesTheOptionAndTheList)
{
    EXPECT_THAT(Boardmap_Run("convert --help").out, HasSubstr("--kernel NAME"));
    EXPECT_THAT(Boardmap_Run("--help").out, HasSubstr("kernels"));
}

#if !defined(_WIN32)

TEST_F(Kernels, AClosedPipeFailsTheRunOfWhateverOnlyPrints)
{
    for (const std::string arguments : {"kernels", "--help", "convert --help", "--version", "info -V"})
    {
        const auto closed =
            Shell_Run("{ sleep 0.1; \"$boardmap\" " + arguments + "; echo $? >status; } | true; cat status; rm status");
        EXPECT_EQ(closed.out, "1\n") << arguments;
        EXPECT_EQ(closed.error, "standard output: cannot be written: Broken pipe\n") << arguments;
    }
}

#endif
