#include "app/TextUtils.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace kestrin;

TEST(TextUtils, ReplaceAllDoesNotSearchWhatItInserted)
{
    struct Case
    {
        const char *find, *replace, *source, *expected;
    };
    const Case cases[] = {
        {"a", "aa", "banana", "baanaanaa"},
        {"aa", "a", "aaaaa", "aaa"},
        {"/", "%\\", "a/b/", "a%\\b%\\"},
        {"x", "", "xaxbx", "ab"},
        {"", "zz", "abc", "abc"},
        {"abc", "X", "ab", "ab"},
    };
    for (const Case &c : cases) {
        MallocedString result(ReplaceAll(c.find, c.replace, c.source));
        ASSERT_TRUE(result);
        EXPECT_STREQ(result.get(), c.expected)
            << c.find << " -> " << c.replace << " in " << c.source;
    }
}

TEST(TextUtils, TokensFollowStrtokRules)
{
    struct Case
    {
        const char *source, *delimiters;
        std::vector<std::string> tokens;
    };
    const Case cases[] = {
        {",,a,,b,", ",", {"a", "b"}},
        {"drwxr-xr-x  2 ftp ftp 4096 Jan  1 file name",
         " ",
         {"drwxr-xr-x", "2", "ftp", "ftp", "4096", "Jan", "1", "file", "name"}},
        {"a b\tc", " \t", {"a", "b", "c"}},
        {"", ",", {}},
        {",,,", ",", {}},
        {"whole", "", {"whole"}},
    };
    for (const Case &c : cases) {
        char **tokens = reinterpret_cast<char **>(0x1);
        const int count = StrTokenize(c.source, c.delimiters, &tokens);
        EXPECT_EQ(StrTokenCount(c.source, c.delimiters), count) << c.source;
        ASSERT_EQ(count, int(c.tokens.size())) << c.source;
        if (count == 0) {
            EXPECT_EQ(tokens, nullptr);
        }
        for (int i = 0; i < count; i++)
            EXPECT_EQ(tokens[i], c.tokens[size_t(i)]);
        FreeTokens(&tokens, count);
        EXPECT_EQ(tokens, nullptr);
    }
}

TEST(TextUtils, InStrFoldsCaseOnlyWhenAsked)
{
    EXPECT_TRUE(InStr("Hello World", "World", true));
    EXPECT_FALSE(InStr("Hello World", "world", true));
    EXPECT_TRUE(InStr("Hello World", "wORLD", false));
    EXPECT_TRUE(InStr("anything", "", true));
    EXPECT_FALSE(InStr("", "a", false));
    // Bytes outside ASCII are compared as they are, never folded into letters.
    EXPECT_FALSE(InStr("\xc3\x84", "\xc3\xa4", false));
}
