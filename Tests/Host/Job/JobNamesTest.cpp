// Names and their nearest neighbours.
#include "Host/Job/JobNames.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

const std::vector<std::string> g_known = {"Kind", "SkipBlank", "InputBands"};

} // namespace

TEST(JobNames, NearestTakesTheFewestChanges)
{
    EXPECT_EQ(Name_Nearest("Kimd", g_known), "Kind");
    EXPECT_EQ(Name_Nearest("kind", g_known), "Kind");
    EXPECT_EQ(Name_Nearest("InputBand", g_known), "InputBands");
    EXPECT_EQ(Name_Nearest("BlankSkip", g_known), std::nullopt);
    EXPECT_EQ(Name_Nearest("nputBands", g_known), "InputBands");
    EXPECT_EQ(Name_Nearest("Knid", g_known), "Kind");
}

TEST(JobNames, NothingIsNearWhenMoreThanHalfWouldChange)
{
    EXPECT_EQ(Name_Nearest("Kixx", g_known), "Kind");
    EXPECT_EQ(Name_Nearest("Kxxx", g_known), std::nullopt);
    EXPECT_EQ(Name_Nearest("", g_known), std::nullopt);
    EXPECT_EQ(Name_Nearest(std::string(100000, 'K'), g_known), std::nullopt);
    EXPECT_EQ(Name_Nearest("Kind", {}), std::nullopt);
}

TEST(JobNames, ListsReadAsSentences)
{
    EXPECT_EQ(Names_List({}, "or"), "");
    EXPECT_EQ(Names_List(std::vector<std::string>{"a"}, "or"), "a");
    EXPECT_EQ(Names_List(std::vector<std::string>{"a", "b"}, "or"), "a or b");
    EXPECT_EQ(Names_List(g_known, "and"), "Kind, SkipBlank and InputBands");
}
