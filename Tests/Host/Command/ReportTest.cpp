// boardmap report, without a browser: what the page has in it, taken out again with zlib and held against separations,
// and what it refuses. What a browser makes of it is tested in Tests/Browser.
#include "Tests/Host/Command/RandomJob.h"
#include "Tests/Host/Verify/VerifySupport.h"

#include "Host/Board/BoardReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <zlib.h>

#include <set>

namespace
{

using testing::HasSubstr;
using testing::Not;
using CJson = nlohmann::json;

// What a browser takes out of a page.
class CReportPage
{
public:
    explicit CReportPage(const std::filesystem::path& file) : m_text(File_Read(file))
    {
        m_data = CJson::parse(Script_Inflate("data"));
    }

    const std::string& Text() const { return m_text; }
    const CJson& Data() const { return m_data; }

    bool HasScript(const std::string& id) const { return m_text.find(Tag_Of(id)) != std::string::npos; }

    std::string Script_Inflate(const std::string& id) const
    {
        const std::size_t begin = m_text.find(Tag_Of(id)) + Tag_Of(id).size();
        const std::string packed = Base64_Read(m_text.substr(begin, m_text.find('<', begin) - begin));
        std::string bytes;
        std::array<char, 4096> part{};
        z_stream stream = {};
        inflateInit(&stream);
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
        stream.avail_in = static_cast<uInt>(packed.size());
        int result = Z_OK;
        while (result == Z_OK)
        {
            stream.next_out = reinterpret_cast<Bytef*>(part.data());
            stream.avail_out = static_cast<uInt>(part.size());
            result = inflate(&stream, Z_NO_FLUSH);
            bytes.append(part.data(), part.size() - stream.avail_out);
        }
        EXPECT_EQ(result, Z_STREAM_END) << id;
        inflateEnd(&stream);
        return bytes;
    }

    // The value of a plane at a dot of the page.
    int Value_Get(const std::string& plane, int row, int column) const
    {
        const CJson& area = m_data["Area"];
        const int bits = area["PixelBits"].get<int>();
        const int at = column - area["FirstColumn"].get<int>();
        const auto byte = static_cast<std::size_t>(row * area["RowBytes"].get<int>() + at * bits / 8);
        return static_cast<unsigned char>(plane.at(byte)) >> (8 - bits - at * bits % 8) & ((1 << bits) - 1);
    }

private:
    static std::string Tag_Of(const std::string& id) { return "<script type=\"text/plain\" id=\"" + id + "\">"; }

    static std::string Base64_Read(const std::string& text)
    {
        const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string bytes;
        unsigned group = 0;
        int bits = 0;
        for (const char letter : text.substr(0, text.find('=')))
        {
            group = group << 6U | static_cast<unsigned>(digits.find(letter));
            bits += 6;
            if (bits >= 8)
            {
                bits -= 8;
                bytes += static_cast<char>(group >> static_cast<unsigned>(bits) & 0xFFU);
            }
        }
        EXPECT_EQ(text.size() % 4, 0U);
        return bytes;
    }

    std::string m_text;
    CJson m_data;
};

std::size_t Count_Of(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    {
        ++count;
    }
    return count;
}

class Report : public CRandomJobTest
{
};

class ReportOfStream : public CVerifyTest
{
};

} // namespace

TEST_F(Report, HasTheDotsOfRandomJobsOfEveryMapAndWhatTheJobHasThere)
{
    std::set<std::string> maps;
    for (int i = 0; i < static_cast<int>(randomBoards.size()); ++i)
    {
        Job_WriteRandom(i);
        std::map<SPixel, int> values;
        Pages_Write([&](const SPixel& pixel) { return values[pixel] = Number(0, (1 << m_bits) - 1); });
        ASSERT_EQ(Boardmap_Run("convert job.toml -o out.raw --format raw").status, 0);
        const auto result = Boardmap_Run("report job.toml out.raw");
        ASSERT_EQ(result.status, 0) << result.error << result.out << File_Read(In("job.toml"));
        EXPECT_EQ(result.out, "out.html: open it in a browser. Every dot is where the job wants it.\n");
        const CReportPage page(In("out.html"));
        const SBoardInfo info = CBoardReader::Open(In("out.raw"))->BoardInfo();
        maps.insert(info.m_map);
        for (std::size_t place = 0; place < info.m_units.size(); ++place)
        {
            const std::string output = page.Script_Inflate("plane-" + std::to_string(place));
            const bool bJob = page.Data()["Units"][place]["HasJobPlane"].get<bool>();
            EXPECT_EQ(page.HasScript("job-" + std::to_string(place)), bJob);
            const std::string job = bJob ? page.Script_Inflate("job-" + std::to_string(place)) : "";
            for (const auto& [pixel, value] : values)
            {
                if (pixel.unit != info.m_units[place].m_unitId)
                {
                    continue;
                }
                const int printed = page.Value_Get(output, pixel.row, pixel.column);
                const int drop = page.Data()["DropSize"].get<int>();
                const bool bLost = info.m_map == "1" && info.m_nozzles % 2 == 1 &&
                                   pixel.row % info.m_nozzles == info.m_nozzles - 1; // has no place there
                ASSERT_EQ(printed, bLost ? 0 : drop > 0 && value > 0 ? drop : value);
                const int derived = drop > 0 ? std::min(printed, 1) : printed;
                ASSERT_EQ(bJob ? page.Value_Get(job, pixel.row, pixel.column) : derived, value);
            }
        }
    }
    EXPECT_EQ(maps, (std::set<std::string>{"1", "2", "03", "03_01", "5", "6", "7", "8"}));
}

TEST_F(Report, IsOneFileThatAsksForNothingAndThatNoNameCanBreak)
{
    SmallJob_Write();
    std::string text = File_Read(In("job.toml"));
    text.replace(text.find("Cyan"), 4, "</script><script>alert(1)</script>");
    File_Write(In("job.toml"), text + "# </script> <!-- \n");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    const auto result = Boardmap_Run("report job.toml out.tif -o page.html");
    ASSERT_EQ(result.status, 0) << result.error;
    const CReportPage page(In("page.html"));
    EXPECT_THAT(page.Text(), HasSubstr("content=\"default-src 'none'; script-src 'unsafe-inline'; style-src "
                                       "'unsafe-inline'; img-src data: blob:\""));
    EXPECT_EQ(Count_Of(page.Text(), "<script"), 1U + 2 + 3) << "data, two planes, two libraries and our own";
    EXPECT_EQ(Count_Of(page.Text(), "<script"), Count_Of(page.Text(), "</script"));
    EXPECT_THAT(page.Text(), Not(HasSubstr("alert(1)")));
    EXPECT_THAT(page.Text(), Not(HasSubstr(" src=\"")));
    EXPECT_THAT(page.Text(), Not(HasSubstr("sourceMappingURL")));
    EXPECT_THAT(page.Text(), HasSubstr("Vladimir Agafonkin"));
    EXPECT_THAT(page.Text(), HasSubstr("Dan Vanderkam"));
    EXPECT_EQ(page.Data()["JobText"], File_Read(In("job.toml")));
    EXPECT_EQ(page.Data()["JobName"], "job.toml");
    EXPECT_EQ(page.Data()["Plots"], CJson::array());
    EXPECT_THAT(page.Data()["LayoutSvg"].get<std::string>(), HasSubstr("<svg"));
    EXPECT_EQ(page.Data()["InkUse"][1]["Page"]["Dots"], 3);
}

TEST_F(Report, WordsForRulesAndRolesAreThoseOfExplain)
{
    SmallJob_Write();
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    ASSERT_EQ(Boardmap_Run("report job.toml out.tif").status, 0);
    const CJson data = CReportPage(In("out.html")).Data();
    const CJson said =
        CJson::parse(Boardmap_Run("explain job.toml out.tif --unit 0 --nozzle 0 --position 7 --band 1 --json").out);
    std::vector<std::string> rules;
    for (const CJson& rule : data["Units"][0]["Rules"][1][0])
    {
        rules.push_back(rule < 0 ? data["Directions"][1] : data["Rules"][rule.get<std::size_t>()]);
    }
    std::vector<std::string> expected;
    for (const CJson& rule : said["Rules"])
    {
        expected.push_back(rule["Text"]);
    }
    EXPECT_EQ(rules, expected);
    EXPECT_EQ(rules.size(), 3U) << "direction, zone and offset";
    const CJson place = data["Units"][0]["Places"][0][0];
    EXPECT_EQ(place[1], said["Bits"][0]["Byte"].get<int>() * 8 + said["Bits"][0]["Bit"].get<int>());
    EXPECT_EQ(data["Roles"][place[2].get<std::size_t>()], said["Bits"][0]["Role"]);
    EXPECT_EQ(data["Units"][0]["Text"], "unit 0 (Cyan)");
}

TEST_F(ReportOfStream, NamesTheDotsThatAreNotAsTheJobHasThem)
{
    ASSERT_EQ(Boardmap_Run("report job.toml good.raw").status, 0);
    EXPECT_FALSE(CReportPage(In("good.html")).HasScript("job-0"));
    SStream spoiled = m_stream;
    char& byte = spoiled.Byte(1, zone + 7, 3); // nozzle 3 of the second swath, from right to left
    byte = static_cast<char>(byte ^ 0x40);     // unit 1
    char& stripe = spoiled.Byte(0, 16, 0);     // the first position of unit 2's left stripe
    stripe = static_cast<char>(stripe ^ 0x20);
    File_Write(In("spoiled.raw"), spoiled.Text());
    const auto result = Boardmap_Run("report job.toml spoiled.raw");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "spoiled.html: open it in a browser. 2 dots are not as the job has it:\n");
    const CReportPage page(In("spoiled.html"));
    EXPECT_EQ(page.Data()["Differences"], CJson::parse("[[2, 0, -8], [1, 19, 32]]"));
    EXPECT_FALSE(page.HasScript("job-0"));
    ASSERT_TRUE(page.HasScript("job-1"));
    const std::string output = page.Script_Inflate("plane-1");
    const std::string job = page.Script_Inflate("job-1");
    EXPECT_EQ(page.Value_Get(job, 19, 32), Ink(1, 32, 19) ? 1 : 0);
    EXPECT_NE(page.Value_Get(job, 19, 32), page.Value_Get(output, 19, 32));
}

TEST_F(ReportOfStream, PlotsWhatWasRecordedOfTheRun)
{
    File_Write(In("trace.json"), R"({"displayTimeUnit":"ms","traceEvents":[
        {"ph":"M","pid":1,"tid":1,"name":"thread_name","args":{"name":"stage ink-stripe"}},
        {"ph":"C","pid":1,"tid":0,"ts":0,"name":"queue output","args":{"bands":0}},
        {"ph":"C","pid":1,"tid":0,"ts":200000,"name":"queue output","args":{"bands":2}},
        {"ph":"X","pid":1,"tid":1,"ts":0,"dur":100000,"name":"map","args":{"band":0,"bytes":1000000}},
        {"ph":"X","pid":1,"tid":2,"ts":300000,"dur":100000,"name":"write","args":{"band":0,"bytes":1000000}},
        {"ph":"X","pid":1,"tid":1,"ts":100000,"dur":50000,"name":"stall","args":{"on":"queue output"}}]})");
    const auto result = Boardmap_Run("report job.toml good.raw --trace trace.json");
    ASSERT_EQ(result.status, 0) << result.error;
    const CJson plots = CReportPage(In("good.html")).Data()["Plots"];
    ASSERT_EQ(plots.size(), 3U);
    EXPECT_EQ(plots[0]["Labels"], CJson::parse(R"(["mapping", "writing"])"));
    EXPECT_EQ(plots[1]["Labels"], CJson::parse(R"(["queue output"])"));
    EXPECT_EQ(plots[2]["Labels"], CJson::parse(R"(["stage ink-stripe"])"));
    // 400 steps of a millisecond.
    const auto Row = [&](int plot, int step)
    { return plots[static_cast<std::size_t>(plot)]["Rows"][static_cast<std::size_t>(step)]; };
    EXPECT_EQ(plots[0]["Rows"].size(), 400U);
    EXPECT_EQ(Row(0, 50), CJson::parse("[0.05, 10.0, 0.0]")) << "a megabyte in a tenth of a second";
    EXPECT_EQ(Row(0, 350), CJson::parse("[0.35, 0.0, 10.0]"));
    EXPECT_EQ(Row(1, 199), CJson::parse("[0.199, 0.0]"));
    EXPECT_EQ(Row(1, 250), CJson::parse("[0.25, 2.0]"));
    EXPECT_EQ(Row(2, 99), CJson::parse("[0.099, 0.0]"));
    EXPECT_EQ(Row(2, 120), CJson::parse("[0.12, 100.0]"));
    EXPECT_EQ(Row(2, 160), CJson::parse("[0.16, 0.0]"));
}

TEST_F(ReportOfStream, RefusesWhatDoesNotBelongTogetherAndLeavesNothing)
{
    std::string other = File_Read(In("job.toml"));
    other.replace(other.find("UnitPitch = 8"), 13, "UnitPitch = 7");
    File_Write(In("other.toml"), other);
    File_Write(In("trace.json"), "{\"traceEvents\": [{\"ph\": \"X\"}]}");
    File_Write(In("short.raw"), m_stream.Text().substr(0, 5000));
    const std::string before = File_Read(In("good.raw"));
    Refusals_Check({
        {"report other.toml good.raw", "good.raw: was not made from other.toml as it is now: Zones differs"},
        {"report job.toml good.raw --trace trace.json", "trace.json: is no trace of boardmap convert: "},
        {"report job.toml good.raw --trace job.toml", "job.toml: is no trace of boardmap convert: "},
        {"report job.toml good.raw --trace none.json", "none.json: there is no such file"},
        {"report job.toml short.raw", "short.raw: byte "},
        {"report job.toml good.raw -o good.raw", "good.raw: is what the report is made of; name another file"},
        {"report job.toml good.raw --ink Green=#00ff00", "--ink names Green, which no unit has; there are Cyan"},
        {"report job.toml none.raw", "none.raw: there is no such file"},
    });
    EXPECT_EQ(File_Read(In("good.raw")), before);
}
