// The texts of the progress line.
#include "Host/Command/Progress.h"

#include <gtest/gtest.h>

using std::chrono::duration;

TEST(Progress, BytesHaveThreeDigitsAndAUnit)
{
    EXPECT_EQ(ByteText_Make(0), "0 B");
    EXPECT_EQ(ByteText_Make(999), "999 B");
    EXPECT_EQ(ByteText_Make(1000), "1.00 kB");
    EXPECT_EQ(ByteText_Make(12345), "12.3 kB");
    EXPECT_EQ(ByteText_Make(999600), "1.00 MB");
    EXPECT_EQ(ByteText_Make(123.4e6), "123 MB");
    EXPECT_EQ(ByteText_Make(5e15), "5000 TB");
}

TEST(Progress, TimesRoundUpToSeconds)
{
    EXPECT_EQ(TimeText_Make(duration<double>(-1)), "0:00");
    EXPECT_EQ(TimeText_Make(duration<double>(0.2)), "0:01");
    EXPECT_EQ(TimeText_Make(duration<double>(59.5)), "1:00");
    EXPECT_EQ(TimeText_Make(duration<double>(754)), "12:34");
    EXPECT_EQ(TimeText_Make(duration<double>(3723)), "1:02:03");
}

TEST(Progress, TheLineTellsBandsRateAndTimeLeft)
{
    EXPECT_EQ(ProgressText_Make(5, 20, 50'000'000, duration<double>(1), 0, 0), "5/20 bands  50.0 MB/s  0:03 left");
}

TEST(Progress, BeforeTheFirstBandThereIsNoRate)
{
    EXPECT_EQ(ProgressText_Make(0, 20, 0, duration<double>(1), 0, 0), "0/20 bands");
}

TEST(Progress, NumbersShowOnNarrowTerminals)
{
    const auto text = [](int width) { return ProgressText_Make(5, 20, 50'000'000, duration<double>(1), width, 28); };
    EXPECT_EQ(text(35), "5/20 bands  50.0 MB/s  0:03 left   ");
    EXPECT_EQ(text(22), "5/20 bands  0:03 left ");
    EXPECT_EQ(text(19), "[#.....] 5/20 bands");
    EXPECT_EQ(text(10), "5/20 bands");
}

TEST(Progress, TheBarFillsWithTheBandsAndTheLineFillsTheTerminal)
{
    EXPECT_EQ(ProgressText_Make(5, 10, 0, duration<double>(0), 24, 10), "[#####.....] 5/10 bands ");
    EXPECT_EQ(ProgressText_Make(5, 10, 0, duration<double>(0), 18, 10), "[##...] 5/10 bands");
    EXPECT_EQ(ProgressText_Make(5, 10, 0, duration<double>(0), 12, 10), "5/10 bands  ");
    EXPECT_EQ(ProgressText_Make(0, 0, 0, duration<double>(0), 0, 4), "[####] 0/0 bands");
}
