// What a terminal gets of names and texts from anywhere.
#include "Host/ShownText.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>

TEST(ShownText, KeepsWhatAPersonReads)
{
    const std::string text = "gr\xC3\xBCn \xE4\xBB\x95 \xF0\x9F\x96\xA8, \"a\\b\"\n\tnext line";
    EXPECT_EQ(Text_Shown(text), text);
    EXPECT_EQ(Name_Shown("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D.tif"), "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D.tif");
}

TEST(ShownText, WritesControlCharactersAsTheirNumbers)
{
    EXPECT_EQ(Text_Shown("\x1B[31mred\x1B]0;title\x07\r\b\x7F"),
              "\\u001b[31mred\\u001b]0;title\\u0007\\u000d\\u0008\\u007f");
    // One character that begins such a sequence, too.
    EXPECT_EQ(Text_Shown("\xC2\x9B"
                         "31m"),
              "\\u009b31m");
    EXPECT_EQ(Text_Shown(std::string("a\0b", 3)), "a\\u0000b");
    EXPECT_EQ(Name_Shown("a\tb\nc: all is well"), "a\\u0009b\\u000ac: all is well");
}

TEST(ShownText, WritesWhatTurnsTheReadingDirectionAsItsNumber)
{
    EXPECT_EQ(Text_Shown("page\xE2\x80\xAE.tif"), "page\\u202e.tif");
    EXPECT_EQ(Text_Shown("\xE2\x81\xA6.\xE2\x81\xA9\xE2\x80\x8F\xD8\x9C"), "\\u2066.\\u2069\\u200f\\u061c");
    EXPECT_EQ(Text_Shown(".\xE2\x80\xA8.\xE2\x80\x8B.\xEF\xBB\xBF"), ".\\u2028.\\u200b.\\ufeff");
    EXPECT_EQ(Text_Shown("\xF3\xA0\x81\x81"), "\\U000e0041");
}

TEST(ShownText, WritesBytesThatAreNoUtf8AsTheirNumbers)
{
    EXPECT_EQ(Text_Shown("a\xFF.\xC3"), "a\\xff.\\xc3");
    EXPECT_EQ(Text_Shown("\xC0\xAF"), "\\xc0\\xaf");                   // a character written longer than it is
    EXPECT_EQ(Text_Shown("\xE0\x80\xAF"), "\\xe0\\x80\\xaf");          // likewise
    EXPECT_EQ(Text_Shown("\xED\xA0\x80"), "\\xed\\xa0\\x80");          // half of a pair
    EXPECT_EQ(Text_Shown("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80"); // beyond the last character
    EXPECT_FALSE(Text_IsUtf8("a\xFF"));
    EXPECT_TRUE(Text_IsUtf8("\xF0\x9F\x96\xA8"));
}

RC_GTEST_PROP(ShownText, NothingHiddenIsLeftOfAnyBytes, (const std::string& text))
{
    const std::string shown = Name_Shown(text);
    RC_ASSERT(Text_IsUtf8(shown));
    RC_ASSERT(std::ranges::none_of(shown, [](unsigned char letter) { return letter < 0x20 || letter == 0x7F; }));
    RC_ASSERT(Name_Shown(shown) == shown);
}

TEST(ShownText, PrintableTextStaysOneShortLine)
{
    EXPECT_EQ(Text_Printable("a\tb\n\x7F\x1B"), "a\\u0009b\\u000a\\u007f\\u001b");
    EXPECT_EQ(Text_Printable("gr\xC3\xBCn"), "gr\xC3\xBCn");
    EXPECT_EQ(Text_Printable(std::string(120, 'x')), std::string(120, 'x'));
    EXPECT_EQ(Text_Printable(std::string(121, 'x')), std::string(120, 'x') + "...");
    EXPECT_EQ(Text_Printable(std::string(119, 'x') + "\xC3\xBC\xC3\xBC"), std::string(119, 'x') + "\xC3\xBC...");
}
