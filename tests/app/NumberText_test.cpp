#include "app/NumberText.h"

#include <climits>
#include <gtest/gtest.h>

using namespace kestrin;

TEST(NumberText, IntegerTextsRoundTripThroughTheProfileReader)
{
    char text[32];
    itoa(0, text);
    EXPECT_STREQ(text, "0");
    itoa(-42, text);
    EXPECT_STREQ(text, "-42");
    itoa(INT_MIN, text);
    EXPECT_STREQ(text, "-2147483648");
    itoa(INT_MAX, text);
    EXPECT_STREQ(text, "2147483647");
    ltoa(LONG_MIN, text);
    EXPECT_STREQ(text, "-9223372036854775808");
    ltoa(1234567890123L, text);
    EXPECT_STREQ(text, "1234567890123");

    // The reader takes digits only: a written negative number reads back as 0.
    itoa(-5, text);
    EXPECT_EQ(kestrin::atoi(text), 0);
    EXPECT_EQ(kestrin::atoi("12abc"), 12);
    EXPECT_EQ(kestrin::atoi(""), 0);
    EXPECT_EQ(kestrin::atoi(" 5"), 0);
    EXPECT_EQ(kestrin::atoi("+5"), 0);
    EXPECT_EQ(kestrin::atoi("800\n"), 800);
    EXPECT_EQ(kestrin::atoi("4294967297"), 1) << "overflow wraps silently";

    char odd[] = "abcde";
    reverse(odd);
    EXPECT_STREQ(odd, "edcba");
    char empty[] = "";
    reverse(empty);
    EXPECT_STREQ(empty, "");
}

TEST(NumberText, FtoaTruncatesToTheDigitsTheFloatHolds)
{
    struct Case
    {
        float value;
        int decimals;
        const char *expected;
    };
    const Case cases[] = {
        {3.14159f, 2, "3.14"},
        {2.999f, 1, "2.9"},
        {1.15f, 2, "1.15"},
        {0.1f, 3, "0.100"},
        {-1.5f, 2, "-1.50"},
        {-0.25f, 1, "-0.2"},
        {-0.001f, 2, "0.00"},
        {42.0f, 0, "42."},
        {16777216.0f, 1, "16777216.0"},
    };
    for (const Case &c : cases) {
        char text[64];
        EXPECT_EQ(ftoa(c.value, c.decimals, text), text);
        EXPECT_STREQ(text, c.expected) << c.value << " at " << c.decimals;
    }
}

TEST(NumberText, SizeStringThresholdsAreStrict)
{
    struct Case
    {
        int64_t size;
        const char *expected;
    };
    const Case cases[] = {
        {0, "0 Bytes"},
        {1024, "1024 Bytes"},
        {1025, "1 K"},
        {2047, "1 K"},
        {1048576, "1024 K"},
        {1048577, "1 M"},
        {int64_t(1) << 30, "1024 M"},
        {(int64_t(1) << 30) + 1, "1 G"},
        {int64_t(5) << 40, "5120 G"},
    };
    for (const Case &c : cases) {
        char text[32];
        GetSizeString(c.size, text);
        EXPECT_STREQ(text, c.expected) << c.size;
    }
}
