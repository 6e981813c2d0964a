// Files that appear when they are complete, and standard output.
#include "Host/Output/ByteSink.h"

#include "Host/HostError.h"
#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{

constexpr const char* fullDevice = "/dev/full";

bool FullDevice_Exists()
{
    return std::filesystem::is_character_file(fullDevice);
}

} // namespace

TEST(OutputFile, AppearsUnderItsNameOnlyWhenItIsFinished)
{
    const CTestFolder folder;
    COutputFile file(folder / "page.tif", ESpecialFile::Refuse);
    file.Write("data", 4);
    for (const std::string& name : folder.Names()) // none, where the system knows files without a name
    {
        EXPECT_EQ(name.substr(0, 15), ".page.tif.part-");
    }
    file.Finish();
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.tif"});
    EXPECT_EQ(File_Read(folder / "page.tif"), "data");
}

TEST(OutputFile, ReplacesAnExistingFileOnlyWhenItIsFinished)
{
    const CTestFolder folder;
    File_Write(folder / "page.tif", "earlier and longer");
    COutputFile file(folder / "page.tif", ESpecialFile::Refuse);
    file.Write("data", 4);
    EXPECT_EQ(File_Read(folder / "page.tif"), "earlier and longer");
    file.Finish();
    EXPECT_EQ(File_Read(folder / "page.tif"), "data");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.tif"});
}

TEST(OutputFile, AbandonedLeavesTheExistingFileAndNoTemporaryFile)
{
    const CTestFolder folder;
    File_Write(folder / "page.tif", "earlier");
    {
        COutputFile file(folder / "page.tif", ESpecialFile::Refuse);
        file.Write("data", 4);
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.tif"});
    EXPECT_EQ(File_Read(folder / "page.tif"), "earlier");
}

TEST(OutputFile, TwoAtOnceForOneNameDoNotDisturbEachOther)
{
    const CTestFolder folder;
    COutputFile first(folder / "page.tif", ESpecialFile::Refuse);
    COutputFile second(folder / "page.tif", ESpecialFile::Refuse);
    first.Write("first", 5);
    second.Write("second", 6);
    second.Finish();
    EXPECT_EQ(File_Read(folder / "page.tif"), "second");
    first.Finish();
    EXPECT_EQ(File_Read(folder / "page.tif"), "first");
}

TEST(OutputFile, WritesAndReadsAnywhereInItself)
{
    const CTestFolder folder;
    COutputFile file(folder / "f", ESpecialFile::Refuse);
    ASSERT_TRUE(file.TryWrite("0123456789", 10));
    file.Position_Set(2);
    ASSERT_TRUE(file.TryWrite("ab", 2));
    EXPECT_EQ(file.Position(), 4);
    std::string text(3, ' ');
    file.Position_Set(3);
    EXPECT_EQ(file.TryRead(text.data(), 3), 3U);
    EXPECT_EQ(text, "b45");
    ASSERT_TRUE(file.TryWrite("X", 1));
    EXPECT_EQ(file.Size(), 10);
    file.Position_Set(9);
    EXPECT_EQ(file.TryRead(text.data(), 3), 1U);
    file.Position_Set(12);
    ASSERT_TRUE(file.TryWrite("end", 3));
    EXPECT_EQ(file.Size(), 15);
    file.Finish();
    EXPECT_EQ(File_Read(folder / "f"), std::string("01ab45X789\0\0end", 15));
}

TEST(OutputFile, GoesOnBehindFourGibibytes)
{
    const CTestFolder folder;
    constexpr std::int64_t far = (std::int64_t{5} << 30) + 1; // most of it a hole
    COutputFile file(folder / "f", ESpecialFile::Refuse);
    ASSERT_TRUE(file.TryWrite("begin", 5));
    file.Position_Set(far);
    ASSERT_TRUE(file.TryWrite("end", 3));
    EXPECT_EQ(file.Size(), far + 3);
    file.Position_Set(far + 1);
    std::string text(3, ' ');
    EXPECT_EQ(file.TryRead(text.data(), 3), 2U);
    EXPECT_EQ(text, "nd ");
    file.Finish();
    EXPECT_EQ(std::filesystem::file_size(folder / "f"), static_cast<std::uintmax_t>(far + 3));
    std::ifstream stream(folder / "f", std::ios::binary);
    stream.seekg(far);
    stream.read(text.data(), 3);
    EXPECT_EQ(text, "end");
    stream.seekg(5);
    EXPECT_EQ(stream.get(), 0);
}

TEST(OutputFile, LongestFileNameStillHasRoomForTheTemporaryName)
{
    const CTestFolder folder;
    const std::string name(250, 'n');
    COutputFile file(folder / name, ESpecialFile::Refuse);
    for (const std::string& hidden : folder.Names())
    {
        EXPECT_EQ(hidden.substr(0, 13), ".boards.part-");
    }
    file.Finish();
    EXPECT_EQ(folder.Names(), std::vector<std::string>{name});
}

TEST(OutputFile, LinkStaysALinkAndItsFileIsReplaced)
{
    const CTestFolder folder;
    std::filesystem::create_directory(folder / "real");
    File_Write(folder / "real/page.tif", "earlier");
    std::error_code error;
    std::filesystem::create_symlink("real/page.tif", folder / "page.tif", error);
    if (error)
    {
        GTEST_SKIP() << "no symbolic links here";
    }
    COutputFile file(folder / "page.tif", ESpecialFile::Refuse);
    file.Write("data", 4);
    file.Finish();
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "page.tif"));
    EXPECT_EQ(File_Read(folder / "real/page.tif"), "data");
}

TEST(OutputFile, FolderAsTargetIsRefused)
{
    const CTestFolder folder;
    const auto open = [](const std::filesystem::path& target)
    { return Error_Of<CInputError>([&] { COutputFile(target, ESpecialFile::Refuse); }); };
    EXPECT_EQ(open(folder.Path()), folder.Path().string() + ": is a folder; give the name of a file");
    EXPECT_EQ(open(folder / "new/"), (folder / "new/").string() + ": is a folder; give the name of a file");
}

TEST(OutputFile, MissingFolderIsRefused)
{
    const CTestFolder folder;
    const std::filesystem::path target = folder / "missing/page.tif";
    EXPECT_EQ(Error_Of<CInputError>([&] { COutputFile(target, ESpecialFile::Refuse); }),
              target.string() + ": there is no folder " + (folder / "missing").string());
}

TEST(OutputFile, FolderThatMayNotBeWrittenToIsRefused)
{
    // A folder in which not even the administrator makes files.
    const std::filesystem::path target = "/sys/page.tif";
    if (!std::filesystem::is_directory("/sys/kernel"))
    {
        GTEST_SKIP() << "no such folder here";
    }
    const std::string error = Error_Of<CInputError>([&] { COutputFile(target, ESpecialFile::Refuse); });
    EXPECT_EQ(error.substr(0, 34), "/sys/page.tif: cannot be written: ") << error;
    EXPECT_GT(error.size(), 34U);
}

TEST(OutputFile, DeviceIsRefusedWhereAFileIsNeeded)
{
    if (!FullDevice_Exists())
    {
        GTEST_SKIP() << "no such device here";
    }
    EXPECT_EQ(Error_Of<CInputError>([] { COutputFile(fullDevice, ESpecialFile::Refuse); }),
              "/dev/full: is a device or a pipe; this format needs a regular file");
}

TEST(OutputFile, FullDiskIsAnErrorOfTheRunWithTheSystemsReason)
{
    if (!FullDevice_Exists())
    {
        GTEST_SKIP() << "no such device here";
    }
    COutputFile large(fullDevice, ESpecialFile::WriteInPlace);
    const std::string bytes(100000, 'x');
    EXPECT_EQ(Error_Of<CRunError>([&] { large.Write(bytes.data(), bytes.size()); }),
              "/dev/full: cannot be written: No space left on device");
    EXPECT_EQ(Error_Of<CRunError>([&] { large.Finish(); }), "/dev/full: cannot be written: No space left on device");
    EXPECT_TRUE(FullDevice_Exists());
}

#if !defined(_WIN32)

TEST(OutputFile, WhatIsReplacedHandsOnItsAccessRightsAndWhatIsWriteProtectedIsRefused)
{
    namespace fs = std::filesystem;
    const CTestFolder folder;
    File_Write(folder / "page.tif", "earlier");
    const auto unusual = static_cast<fs::perms>(0604);
    fs::permissions(folder / "page.tif", unusual);
    {
        COutputFile file(folder / "page.tif", ESpecialFile::Refuse);
        file.Write("data", 4);
        file.Finish();
    }
    EXPECT_EQ(File_Read(folder / "page.tif"), "data");
    EXPECT_EQ(fs::status(folder / "page.tif").permissions(), unusual);
    fs::permissions(folder / "page.tif", static_cast<fs::perms>(0444));
    EXPECT_EQ(Error_Of<CInputError>([&] { COutputFile(folder / "page.tif", ESpecialFile::Refuse); }),
              (folder / "page.tif").string() + ": is write-protected; name another file, or allow writing to it");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.tif"});
}

#endif

TEST(OutputFile, WhatAnEndedProcessLeftIsTakenAwayAndNothingElse)
{
    const CTestFolder folder;
    File_Write(folder / ".page.tif.part-0123456789abcdef", "left behind");
    File_Write(folder / ".page.tif.part-0123456789abcdeX", "somebody's");
    File_Write(folder / ".other.tif.part-0123456789abcdef", "another's");
    COutputFile file(folder / "page.tif", ESpecialFile::Refuse);
    file.Finish();
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{".other.tif.part-0123456789abcdef",
                                                        ".page.tif.part-0123456789abcdeX", "page.tif"}));
}

TEST(StandardOutput, BytesArriveUnchangedAndAtTheEndAtTheLatest)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::tmpfile(), &std::fclose);
    ASSERT_NE(stream, nullptr);
    const std::string bytes("\r\n\x1A\0\xFF", 5);
    CStandardOutput sink(stream.get());
    sink.Write(bytes.data(), bytes.size());
    sink.Finish();
    std::rewind(stream.get());
    std::string found(6, ' ');
    EXPECT_EQ(std::fread(found.data(), 1, 6, stream.get()), 5U);
    EXPECT_EQ(found.substr(0, 5), bytes);
}

TEST(StandardOutput, FailedWriteIsAnErrorOfTheRun)
{
    if (!FullDevice_Exists())
    {
        GTEST_SKIP() << "no such device here";
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(fullDevice, "wb"), &std::fclose);
    CStandardOutput sink(stream.get());
    EXPECT_EQ(Error_Of<CRunError>([&] { sink.Write("x", 1); }),
              "standard output: cannot be written: No space left on device");
    const std::string bytes(100000, 'x');
    EXPECT_EQ(Error_Of<CRunError>([&] { sink.Write(bytes.data(), bytes.size()); }),
              "standard output: cannot be written: No space left on device");
}
