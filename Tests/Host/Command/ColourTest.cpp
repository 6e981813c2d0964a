// Colours: on a terminal only, and not where the environment asks for none.
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::Not;

namespace
{

constexpr const char* sequence = "\x1b[";

} // namespace

using Colour = CCommandTest;

TEST_F(Colour, AFileGetsNone)
{
    const auto result = Boardmap_Run("check");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.out + result.error, Not(HasSubstr(sequence)));
}

#if !defined(_WIN32)

namespace
{

// On a terminal of its own, whose output is the result's.
class ColourTerminal : public CCommandTest
{
protected:
    std::string Terminal_Run(const std::string& environment, const std::string& arguments) const
    {
        return Shell_Run(environment + " script -qec \"$boardmap " + arguments + "\" /dev/null").out;
    }
};

} // namespace

TEST_F(ColourTerminal, ErrorsAreRedThereAndWarningsYellow)
{
    EXPECT_THAT(Terminal_Run("NO_COLOR= TERM=xterm", "convert none.toml"),
                HasSubstr("\x1b[31mnone.toml: there is no such file\x1b[0m"));
    Separation_Write("c.tif", 20, 9, [](int x, int) { return x == 3; });
    File_Write(In("job.toml"), "Version = 1\n[DPOption]\nDataMapStyle = 1\nPrinterDataWidth = 16\n[PrintParam]\n"
                               "BitsPerPixel = 1\n[CartInfo]\nNozzles = 3\n[[CartInfo.Unit]]\nUnitId = 0\n"
                               "Separation = \"c.tif\"\n");
    EXPECT_THAT(Terminal_Run("NO_COLOR= TERM=xterm", "convert job.toml --progress none"),
                HasSubstr("\x1b[33mjob.toml:8:11: warning: "));
}

TEST_F(ColourTerminal, TheEnvironmentCanAskForNone)
{
    for (const std::string environment : {"NO_COLOR=1 TERM=xterm", "NO_COLOR=0 TERM=xterm", "TERM=dumb"})
    {
        const std::string shown = Terminal_Run(environment, "convert none.toml");
        EXPECT_THAT(shown, HasSubstr("none.toml: there is no such file")) << environment;
        EXPECT_THAT(shown, Not(HasSubstr(sequence))) << environment;
    }
}

TEST_F(ColourTerminal, WhatAFileSaysCannotEndTheColour)
{
    const std::string shown = Terminal_Run("NO_COLOR= TERM=xterm", "convert $'no\\x1b[0mne.toml'");
    EXPECT_THAT(shown, Not(HasSubstr("no\x1b")));
}

TEST_F(ColourTerminal, TheHelpSaysHow)
{
    EXPECT_THAT(Boardmap_Run("--help").out, HasSubstr("NO_COLOR"));
}

#endif
