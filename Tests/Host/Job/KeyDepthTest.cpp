// Keys of too many parts are found before anything walks them.
#include "Host/Job/KeyDepth.h"

#include "Tests/Host/Job/TestJob.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

// "a.a.a" of so many parts.
std::string Key_Make(int parts)
{
    std::string key = "a";
    for (int i = 1; i < parts; ++i)
    {
        key += ".a";
    }
    return key;
}

std::optional<SFilePlace> Found(const std::string& text)
{
    return KeyDepth_Find(text, 16);
}

} // namespace

TEST(KeyDepth, CountsThePartsOfKeysAndHeaders)
{
    EXPECT_EQ(Found(Key_Make(16) + " = 1"), std::nullopt);
    EXPECT_EQ(Found(Key_Make(17) + " = 1"), (SFilePlace{1, 1}));
    EXPECT_EQ(Found("x = 1\n[[" + Key_Make(17) + "]]"), (SFilePlace{2, 3}));
    EXPECT_EQ(Found("  x = {y = 1, " + Key_Make(17) + " = 1}"), (SFilePlace{1, 15}));
    EXPECT_EQ(Found(Key_Make(10) + " = 1\n" + Key_Make(10) + " = 1.5"), std::nullopt);
    std::string numbers = "1.5";
    for (int i = 0; i < 40; ++i)
    {
        numbers += ", 1.5";
    }
    EXPECT_EQ(Found("x = [" + numbers + "]"), std::nullopt);
}

TEST(KeyDepth, SpacesAndQuotedPartsBelongToAKey)
{
    std::string key = "\"a.b\"";
    for (int i = 0; i < 16; ++i)
    {
        key += i % 2 == 0 ? " . 'c.d'" : "\t.\"e\\\"f\"";
    }
    EXPECT_EQ(Found("\n" + key + " = 1"), (SFilePlace{2, 1}));
}

TEST(KeyDepth, DotsInStringsAndCommentsAreNone)
{
    const std::string dots(40, '.');
    EXPECT_EQ(Found("a = \"" + dots + "\"\nb = '" + dots + "' # " + dots), std::nullopt);
    EXPECT_EQ(Found("a = \"\"\"\n" + dots + "\"\\\"\"\"" + dots + "\"\"\"\nb = '''" + dots + "\n'" + dots + "'''"),
              std::nullopt);
    EXPECT_EQ(Found("a = \"../../../../../../../../../../../../../../../../../../page.tif\""), std::nullopt);
}

TEST(KeyDepth, NothingHidesAKey)
{
    const std::string key = Key_Make(17);
    EXPECT_TRUE(Found("a = \"\"\"x\"\"\"\"\"\n" + key + " = 1"));
    EXPECT_TRUE(Found("a = {b = \"\"\"x\"\"\"\", " + key + " = 1}"));
    EXPECT_TRUE(Found("a = {b = '''x''''', " + key + " = 1}"));
    EXPECT_TRUE(Found("a = \"\"\n" + key + " = 1"));
    EXPECT_TRUE(Found("a = \"x\\\\\"\n" + key + " = 1"));
    EXPECT_TRUE(Found("a = 'x\\'\n" + key + " = 1"));
    EXPECT_TRUE(Found("a = \"\"\"\\\"\"\"\"\n" + key + " = 1"));
    EXPECT_TRUE(Found("# \"\n" + key + " = 1"));
}

TEST(KeyDepth, BrokenTextIsLookedThroughToItsEnd)
{
    for (const std::string text : {"", "\"", "'''", "a = \"\"\"", "a = \"\\", "#", "..."})
    {
        EXPECT_EQ(Found(text), std::nullopt) << text;
    }
}

TEST(KeyDepth, AJobWithAnEndlessKeyIsRefusedAtItsPlace)
{
    EXPECT_EQ(JobError_Of("Version = 1\n" + Key_Make(40'000) + " = 1\n"),
              "job.toml:2:1: here is a key of more than 16 parts; a job's keys have at most three");
}
