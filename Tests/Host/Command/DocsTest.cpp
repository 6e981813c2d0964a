// The examples of boardmap in the README and in Docs/: each block that begins with "$ boardmap" is run, and says what
// the page says. Line breaks are free; "..." in the page stands for any text; times and versions are not compared.
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

namespace
{

struct SExample
{
    std::string m_arguments; // behind "boardmap "
    std::string m_answer;
};

// What is the same on every machine and with every line length.
std::string Text_Comparable(const std::string& text)
{
    std::string words;
    std::istringstream stream(text);
    for (std::string word; stream >> word;)
    {
        words += (words.empty() ? "" : " ") + word;
    }
    words = std::regex_replace(words, std::regex("in [0-9.e+-]+ s:"), "in TIME s:");
    return std::regex_replace(words, std::regex("by boardmap [0-9.]+;"), "by boardmap VERSION;");
}

// Whether the answer has the parts of the page in their order, from its beginning to its end.
bool IsAnswer(const std::string& answer, const std::string& page)
{
    const std::string gap = " ...";
    std::string found = Text_Comparable(answer);
    std::string expected = Text_Comparable(page);
    while (!expected.empty())
    {
        const std::size_t end = expected.find(gap);
        const std::string part = expected.substr(0, end);
        if (!found.starts_with(part))
        {
            return false;
        }
        if (end == std::string::npos)
        {
            return found == part;
        }
        expected.erase(0, end + gap.size());
        const std::string next = expected.substr(0, expected.find(gap));
        if (next.empty())
        {
            return true;
        }
        const std::size_t at = found.find(next, part.size());
        if (at == std::string::npos)
        {
            return false;
        }
        found.erase(0, at);
    }
    return true;
}

class Docs : public CCommandTest
{
protected:
    static std::vector<SExample> Examples_Get(const std::string& page)
    {
        std::istringstream stream(File_Read(std::filesystem::path(SOURCE_FOLDER) / page));
        std::vector<SExample> examples;
        bool bBlock = false;
        bool bExample = false;
        for (std::string line; std::getline(stream, line);)
        {
            const std::string prompt = "$ boardmap ";
            if (line.starts_with("```"))
            {
                bBlock = !bBlock;
                bExample = false;
            }
            else if (bBlock && line.starts_with(prompt))
            {
                examples.push_back({line.substr(prompt.size()), ""});
                bExample = true;
            }
            else if (bExample)
            {
                examples.back().m_answer += line + '\n';
            }
        }
        return examples;
    }

    void Examples_Check(const std::string& page, std::size_t count) const
    {
        const std::vector<SExample> examples = Examples_Get(page);
        EXPECT_EQ(examples.size(), count) << page;
        for (const SExample& example : examples)
        {
            const auto result = Boardmap_Run(example.m_arguments);
            const std::string all = result.out + result.error;
            EXPECT_TRUE(IsAnswer(all, example.m_answer)) << page << ": " << example.m_arguments << '\n' << all;
        }
    }

    // The demonstration's jobs and separations, as Scripts/demo-page and the README leave them.
    void Demo_Take(const std::string& folder) const
    {
        std::filesystem::create_directories(In(folder));
        for (const std::string name : {"Black", "Cyan", "Magenta", "Yellow"})
        {
            const std::filesystem::path separation =
                std::filesystem::path(DEMO_PAGE_FOLDER) / ("page." + name + ".tif");
            ASSERT_TRUE(std::filesystem::exists(separation)) << "Scripts/demo-page build/demo makes " << separation;
            std::filesystem::copy(separation, In(folder) / separation.filename());
        }
        std::filesystem::copy(std::filesystem::path(DEMO_JOB_FOLDER) / "demo-cmyk.toml", In(folder) / "demo-cmyk.toml");
    }
};

} // namespace

TEST_F(Docs, AnExampleThatIsNotTrueIsNoticed)
{
    EXPECT_TRUE(IsAnswer("one two\nthree\n", "one\ntwo three"));
    EXPECT_TRUE(IsAnswer("one two three four", "one ... three\nfour"));
    EXPECT_TRUE(IsAnswer("one two three four", "one two\n..."));
    EXPECT_TRUE(IsAnswer("x in 0.5 s: y", "x in 7 s: y"));
    EXPECT_FALSE(IsAnswer("one two three", "one two"));
    EXPECT_FALSE(IsAnswer("one two", "one two three"));
    EXPECT_FALSE(IsAnswer("one two three four", "one ... three"));
    EXPECT_FALSE(IsAnswer("one two three four", "two\n..."));
}

TEST_F(Docs, TheReadmeAnswersForNozzlesAndForBits)
{
    Demo_Take("build/demo");
    Examples_Check("README.md", 2);
}

TEST_F(Docs, CheckSaysWhatItsPageSays)
{
    Demo_Take("build/demo");
    File_Write(In("job.toml"),
               "Version = 1\n\n[DPOption]\nDataMapStyle       = \"FramePerPixel\"\nDataPushStyle      = "
               "\"ByPixel\"\nPrinterSupportBits = \"OneBit\"\nPrinterDataWidth = 17\n\n[PrintParam]\n"
               "BitsPerPixel = 1\n\n[CartInfo]\nNozzles = 400\n\n[[CartInfo.Unit]]\nUnitId     = 0\n"
               "Name       = \"Cyan\"\nSeparation = \"page.Cyan.tif\"\n");
    Examples_Check("Docs/check.md", 2);
}

TEST_F(Docs, ExplainSaysWhatItsPageSays)
{
    SmallJob_Write();
    Examples_Check("Docs/explain.md", 1);
}

TEST_F(Docs, LayoutSaysWhatItsPageSays)
{
    std::filesystem::create_directories(In("Jobs"));
    std::filesystem::copy(std::filesystem::path(DEMO_JOB_FOLDER) / "style-8.toml", In("Jobs/style-8.toml"));
    Examples_Check("Docs/layout.md", 1);
}

TEST_F(Docs, VerifyInfoAndPreviewSayWhatTheirPagesSay)
{
    Demo_Take(".");
    ASSERT_EQ(Boardmap_Run("convert demo-cmyk.toml --progress none").status, 0);
    ASSERT_EQ(Boardmap_Run("convert demo-cmyk.toml --progress none --format raw -o spoiled.raw").status, 0);
    constexpr int band = 12385321; // where the page says that it begins
    constexpr int recordBytes = 108;
    constexpr int lineBytes = 800;
    std::fstream file(In("spoiled.raw"), std::ios::in | std::ios::out | std::ios::binary);
    const std::streamoff at = band + recordBytes + 2000 * lineBytes + 74;
    file.seekg(at);
    const int byte = file.get();
    file.seekp(at);
    file.put(static_cast<char>(byte ^ 0x10));
    file.close();
    Examples_Check("Docs/verify.md", 2);
    Examples_Check("Docs/preview.md", 2);
}
