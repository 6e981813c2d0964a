// The names of pages' files: what a pattern may be, and what it makes.
#include "Host/PageName.h"

#include <gtest/gtest.h>

TEST(PageName, TheNumberStandsWhereThePatternSays)
{
    EXPECT_EQ(PageName_Make("page%d(Cyan).tif", 7), "page7(Cyan).tif");
    EXPECT_EQ(PageName_Make("page-%04d.tif", 7), "page-0007.tif");
    EXPECT_EQ(PageName_Make("page-%04d.tif", 12345), "page-12345.tif");
    EXPECT_EQ(PageName_Make("page-%3d.tif", 7), "page-  7.tif");
    EXPECT_EQ(PageName_Make("%d", 0), "0");
    EXPECT_EQ(PageName_Make("%0d.tif", 5), "5.tif");
    EXPECT_EQ(PageName_Make("%d.tif", 99999999999), "99999999999.tif");
}

TEST(PageName, TwoPercentSignsAreOne)
{
    EXPECT_EQ(PageName_Make("50%% of %d.tif", 7), "50% of 7.tif");
    EXPECT_EQ(PageName_Make("%%%d%%", 7), "%7%");
    EXPECT_EQ(PageName_Make("%%d.tif", 7), "%d.tif");
    EXPECT_FALSE(PagePattern_HasNumber("%%d.tif"));
    EXPECT_TRUE(PagePattern_HasNumber("%%%d.tif"));
    for (const std::string text : {"", "50%", "%d", "%%", "a%b%%c"})
    {
        EXPECT_EQ(PagePattern_Fault(PagePattern_Of(text)), std::nullopt);
        EXPECT_EQ(PageName_Make(PagePattern_Of(text), 3), text);
    }
}

TEST(PageName, OtherPatternsAreFaults)
{
    for (const char* pPattern :
         {"page%", "page%x", "%5", "%ld", "%-3d", "%10d", "%00d", "%d%d", "a%d b%04d", "% d", "%u"})
    {
        EXPECT_NE(PagePattern_Fault(pPattern), std::nullopt) << pPattern;
    }
    for (const char* pPattern : {"", "page", "%d", "%1d", "%09d", "%%%9d%%"})
    {
        EXPECT_EQ(PagePattern_Fault(pPattern), std::nullopt) << pPattern;
    }
}
