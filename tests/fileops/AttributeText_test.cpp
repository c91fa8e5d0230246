#include "fileops/AttributeText.h"

#include <gtest/gtest.h>

using kestrin::AttributeText;

TEST(AttributeText, TextsOfTypesWithoutANameAndOfOddValues)
{
    EXPECT_EQ(AttributeText::ValueText(B_STRING_TYPE, std::string("text\0tail", 9)), "text");
    EXPECT_EQ(AttributeText::ValueText(B_INT32_TYPE, std::string("\xff\xff\xff\x7f", 4)),
              "2147483647");
    // A 'LONG' of the wrong size holds no number to show.
    EXPECT_EQ(AttributeText::ValueText(B_INT32_TYPE, "ab"), "LONG");
    EXPECT_EQ(AttributeText::ValueText(B_MIME_STRING_TYPE, "text/plain"), "MIMS");
    EXPECT_EQ(AttributeText::ValueText(0x01020304, "x"), "0x01020304");
    EXPECT_EQ(AttributeText::ValueText(B_XATTR_TYPE, std::string("value\0", 6)), "value");
    EXPECT_EQ(AttributeText::ValueText(B_XATTR_TYPE, "line\nbreak"), "10 Bytes");
    EXPECT_EQ(AttributeText::ValueText(B_XATTR_TYPE, "\xc3\x28"), "2 Bytes") << "not UTF-8";
    EXPECT_EQ(AttributeText::ValueText(B_XATTR_TYPE, ""), "0 Bytes");
    EXPECT_EQ(AttributeText::TypeName(B_MEDIA_PARAMETER_GROUP_TYPE), "B_MEDIA_PARAMETER_GROUP_TYPE");
    EXPECT_EQ(AttributeText::TypeName(B_STRING_TYPE), "");
}
