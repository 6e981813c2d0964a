// The manual pages and the completions of shells: everything that the help says is in them, and their readers take
// them.
#include "Host/Pages/Completion.h"
#include "Host/Pages/ManPage.h"
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

namespace
{

class Pages : public CCommandTest
{
protected:
    // The page as a person sees it, with single spaces.
    std::string Page_Rendered(const std::string& page) const
    {
        File_Write(In("page.1"), page);
        const SCommandResult result = Shell_Run("groff -man -Tascii -ww -rLL=200i -rHY=0 -P-cbou page.1");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.error, "");
        return Spaces_One(result.out);
    }

    static std::string Spaces_One(const std::string& text)
    {
        std::istringstream words(text);
        std::string joined;
        for (std::string word; words >> word;)
        {
            joined += ' ' + word;
        }
        return joined;
    }

    // What bash offers behind these words, the last of which may be half a word.
    std::vector<std::string> Bash_Complete(const std::string& words) const
    {
        File_Write(In("boardmap.bash"), Completion_Bash());
        const SCommandResult result =
            Shell_Run("bash -c 'set -u; compopt() { :; }; . ./boardmap.bash; COMP_WORDS=(boardmap " + words +
                      "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _boardmap; printf \"%s\\n\" \"${COMPREPLY[@]}\"'");
        EXPECT_EQ(result.error, "");
        std::istringstream lines(result.out);
        std::vector<std::string> offers;
        for (std::string line; std::getline(lines, line);)
        {
            offers.push_back(line);
        }
        return offers;
    }
};

} // namespace

TEST_F(Pages, AManualPageSaysAllThatTheHelpSays)
{
    for (const SCommand* pCommand : Commands())
    {
        const std::string page = Page_Rendered(ManPage_Of(*pCommand));
        EXPECT_THAT(page, HasSubstr(" boardmap-" + pCommand->m_name + " - " + pCommand->m_summary));
        for (const SCommandOption& option : pCommand->m_options)
        {
            std::string names;
            for (const std::string& name : option.Names())
            {
                names += (names.empty() ? "" : ", ") + name;
            }
            EXPECT_THAT(page, HasSubstr(Spaces_One(names + ' ' + option.m_value + ' ' + option.m_help)));
        }
        for (const SCommandExample& example : pCommand->m_examples)
        {
            EXPECT_THAT(page, HasSubstr(Spaces_One(example.m_what + ": " + example.m_line)));
        }
        EXPECT_THAT(page, HasSubstr("2 bad usage or bad input"));
    }
}

TEST_F(Pages, TheProgramsPageLeadsToTheOthers)
{
    const std::string page = Page_Rendered(ManPage_OfProgram());
    EXPECT_THAT(page, HasSubstr(Spaces_One(ProgramText_Get())));
    for (const SCommand* pCommand : Commands())
    {
        EXPECT_THAT(page, HasSubstr(' ' + pCommand->m_name + ' ' + pCommand->m_summary));
        EXPECT_THAT(page, HasSubstr(" boardmap-" + pCommand->m_name + "(1)"));
    }
}

TEST_F(Pages, BashCompletesCommandsOptionsAndChoices)
{
    EXPECT_THAT(Bash_Complete("conv"), ElementsAre("convert"));
    EXPECT_THAT(Bash_Complete("\"\""), IsSupersetOf({"init", "check", "convert", "kernels", "--help"}));
    EXPECT_THAT(Bash_Complete("convert --fo"), ElementsAre("--format", "--force"));
    EXPECT_THAT(Bash_Complete("convert page.toml --format \"\""), ElementsAre("tiff", "raw"));
    EXPECT_THAT(Bash_Complete("layout page.toml --format s"), ElementsAre("svg"));
    EXPECT_THAT(Bash_Complete("convert page.toml -o \"\""), ElementsAre("")); // a file: bash's own completion
    EXPECT_THAT(Bash_Complete("convert pa"), ElementsAre(""));
}

TEST_F(Pages, FishCompletesCommandsOptionsAndChoices)
{
    File_Write(In("boardmap.fish"), Completion_Fish());
    const auto Complete = [this](const std::string& words)
    {
        const SCommandResult result =
            Shell_Run("HOME=\"$PWD\" fish --no-config -c '. ./boardmap.fish; complete -C \"boardmap " + words + "\"'");
        EXPECT_EQ(result.error, "");
        return result.out;
    };
    EXPECT_EQ(Complete("conv"), "convert\tTurn a job's separations into board data\n");
    EXPECT_EQ(Complete("convert --format "),
              "raw\ttiff: one page per board band\ntiff\ttiff: one page per board band\n");
    EXPECT_EQ(Complete("convert --outp"), "--output\tWhere the board data goes\n");
    EXPECT_EQ(Complete("kernels --outp"), "");
}

TEST_F(Pages, ZshCompletesCommandsOptionsAndChoices)
{
    File_Write(In("_boardmap"), Completion_Zsh());
    // A shell of its own on a terminal of its own: completion works nowhere else.
    File_Write(In("complete.zsh"), R"(zmodload zsh/zpty
zpty shell zsh -f -i
zpty -w shell "PROMPT= ; fpath=($PWD \$fpath); autoload -U compinit; compinit -u -d $PWD/dump; LISTMAX=1000; bindkey '^I' complete-word; zstyle ':completion:*' verbose no; echo rea''dy"
zpty -r -m shell line '*ready*'
zpty -w -n shell "boardmap $1"$'\t\C-a\C-kecho en'"''"$'d\n'
zpty -r -m shell line '*end*'
print -r -- $line
zpty -d shell
)");
    const auto Complete = [this](const std::string& words)
    {
        const SCommandResult result = Shell_Run("TERM=dumb timeout 20 zsh -f complete.zsh '" + words + "'");
        EXPECT_EQ(result.error, "");
        return result.out;
    };
    EXPECT_THAT(Complete("conv"), HasSubstr("convert"));
    EXPECT_THAT(Complete("convert --comp"), HasSubstr("--compress"));
    EXPECT_THAT(Complete("convert --format r"), HasSubstr("raw"));
}
