// Files that cannot be opened, each with the reason in words.
#include "Host/InputFile.h"

#include "Host/HostError.h"
#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace
{

// What the error says behind the file's name; empty if the file was opened.
std::string Refusal_Of(const std::filesystem::path& file)
{
    try
    {
        static_cast<void>(InputFile_Open(file, "job file"));
        return "";
    }
    catch (const CInputError& error)
    {
        EXPECT_EQ(error.what(), file.string() + ": " + error.WithoutFile());
        return error.WithoutFile();
    }
}

} // namespace

TEST(InputFile, WhatIsNoFileIsNamed)
{
    const CTestFolder folder;
    EXPECT_EQ(Refusal_Of(folder / "none"), "there is no such file");
    EXPECT_EQ(Refusal_Of(folder / "none/none"), "there is no such file");
    EXPECT_EQ(Refusal_Of(folder.Path()), "is a folder, not a job file");
    std::ofstream(folder / "file") << "text";
    EXPECT_EQ(Refusal_Of(folder / "file"), "");
    EXPECT_EQ(Refusal_Of(folder / "file/none"), "there is no such file");
}

#ifndef _WIN32
TEST(InputFile, APipeIsNotOpenedSinceThatCouldWaitForEver)
{
    EXPECT_EQ(Refusal_Of("/dev/null"), "is a device or a pipe, not a job file");
}

TEST(InputFile, TheSystemsReasonIsTold)
{
    const CTestFolder folder;
    std::filesystem::create_symlink(folder / "b", folder / "a");
    std::filesystem::create_symlink(folder / "a", folder / "b");
    EXPECT_EQ(Refusal_Of(folder / "a"), "cannot be opened: Too many levels of symbolic links");
    EXPECT_EQ(Refusal_Of(folder / std::string(300, 'n')), "cannot be opened: File name too long");
}
#endif
