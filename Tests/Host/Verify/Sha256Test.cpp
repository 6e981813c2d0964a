// The hash against the examples that were published with it, in pieces of every length.
#include "Host/Model/Sha256.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{

std::string Hash_Of(const std::string& text, std::size_t piece)
{
    CSha256 hash;
    const auto* pBytes = reinterpret_cast<const unsigned char*>(text.data());
    for (std::size_t at = 0; at < text.size(); at += piece)
    {
        hash.Add({pBytes + at, std::min(piece, text.size() - at)});
    }
    return hash.Text_Finish();
}

TEST(Sha256, ThePublishedExamplesComeOut)
{
    EXPECT_EQ(Hash_Of("", 1), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Hash_Of("abc", 3), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Hash_Of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", 56),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(Hash_Of(std::string(1000000, 'a'), 1000),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, ThePiecesDoNotMatter)
{
    const std::string text(200, 'x');
    for (std::size_t piece = 1; piece < text.size(); ++piece)
    {
        EXPECT_EQ(Hash_Of(text, piece), Hash_Of(text, text.size())) << piece;
    }
}

} // namespace
