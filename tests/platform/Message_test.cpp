#include "platform/Message.h"

#include <gtest/gtest.h>

using platform::FourCC;
using platform::Message;

TEST(Message, FourCharacterCodesReadAsOnBeOS)
{
    EXPECT_EQ(FourCC("DATA"), 0x44415441u);
    EXPECT_EQ(FourCC("NDMN"), 0x4E444D4Eu);
    EXPECT_EQ(FourCC("_QRQ"), 0x5F515251u);
    EXPECT_EQ(B_REF_TYPE, 0x52524546u);
}

TEST(Message, FieldsAreTypedAndRepeatable)
{
    Message message(FourCC("DATA"));
    entry_ref ref{1, 2, "notes", "/tmp/notes"};
    int marker = 0;
    ASSERT_EQ(message.AddString("TypeOfCopy", "Move"), B_OK);
    ASSERT_EQ(message.AddRef("refs", ref), B_OK);
    ASSERT_EQ(message.AddRef("refs", entry_ref{1, 2, "b", "/tmp/b"}), B_OK);
    ASSERT_EQ(message.AddInt8("i8", -3), B_OK);
    ASSERT_EQ(message.AddInt32("Port", 2121), B_OK);
    ASSERT_EQ(message.AddInt64("size", int64_t(1) << 40), B_OK);
    ASSERT_EQ(message.AddBool("flag", true), B_OK);
    ASSERT_EQ(message.AddFloat("f", 1.5f), B_OK);
    ASSERT_EQ(message.AddDouble("d", 2.25), B_OK);
    ASSERT_EQ(message.AddPointer("source", &marker), B_OK);

    std::string text;
    entry_ref found;
    int8_t i8 = 0;
    int32_t i32 = 0;
    int64_t i64 = 0;
    bool flag = false;
    float f = 0;
    double d = 0;
    void *pointer = nullptr;
    EXPECT_EQ(message.FindString("TypeOfCopy", &text), B_OK);
    EXPECT_EQ(text, "Move");
    EXPECT_EQ(message.FindRef("refs", 1, &found), B_OK);
    EXPECT_EQ(found.path, "/tmp/b");
    EXPECT_EQ(message.FindInt8("i8", &i8), B_OK);
    EXPECT_EQ(message.FindInt32("Port", &i32), B_OK);
    EXPECT_EQ(message.FindInt64("size", &i64), B_OK);
    EXPECT_EQ(message.FindBool("flag", &flag), B_OK);
    EXPECT_EQ(message.FindFloat("f", &f), B_OK);
    EXPECT_EQ(message.FindDouble("d", &d), B_OK);
    EXPECT_EQ(message.FindPointer("source", &pointer), B_OK);
    EXPECT_EQ(i8, -3);
    EXPECT_EQ(i32, 2121);
    EXPECT_EQ(i64, int64_t(1) << 40);
    EXPECT_TRUE(flag);
    EXPECT_EQ(f, 1.5f);
    EXPECT_EQ(d, 2.25);
    EXPECT_EQ(pointer, &marker);

    // Wrong name, wrong type, wrong index: each its own status, output untouched.
    text = "untouched";
    EXPECT_EQ(message.FindString("Missing", &text), B_NAME_NOT_FOUND);
    EXPECT_EQ(message.FindString("Port", &text), B_BAD_TYPE);
    EXPECT_EQ(message.FindString("TypeOfCopy", 1, &text), B_BAD_INDEX);
    EXPECT_EQ(message.FindString("TypeOfCopy", -1, &text), B_BAD_INDEX);
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(message.AddInt32("TypeOfCopy", 1), B_BAD_TYPE);
}

TEST(Message, ReplaceRemoveAndInfoKeepFieldOrder)
{
    Message message(606);
    message.AddString("first", "a");
    message.AddInt32("second", 1);
    message.AddInt32("second", 2);
    message.AddString("third", "c");

    EXPECT_EQ(message.ReplaceInt32("second", 1, 20), B_OK);
    EXPECT_EQ(message.ReplaceInt32("second", 2, 30), B_BAD_INDEX);
    EXPECT_EQ(message.ReplaceString("second", 0, "x"), B_BAD_TYPE);
    int32_t value = 0;
    message.FindInt32("second", 1, &value);
    EXPECT_EQ(value, 20);

    EXPECT_EQ(message.CountNames(), 3);
    EXPECT_EQ(message.CountNames(B_STRING_TYPE), 2);
    std::string name;
    type_code type = 0;
    int32_t count = 0;
    ASSERT_EQ(message.GetInfo(B_STRING_TYPE, 1, &name, &type, &count), B_OK);
    EXPECT_EQ(name, "third");
    EXPECT_EQ(message.GetInfo(B_STRING_TYPE, 2, &name, &type, &count), B_BAD_INDEX);
    EXPECT_EQ(message.GetInfo(B_BOOL_TYPE, 0, &name, &type, &count), B_BAD_TYPE);

    // Removing the first of two values shifts the second down; the last value
    // takes the field with it.
    EXPECT_EQ(message.RemoveData("second", 0), B_OK);
    message.FindInt32("second", 0, &value);
    EXPECT_EQ(value, 20);
    EXPECT_EQ(message.RemoveData("second", 0), B_OK);
    EXPECT_FALSE(message.HasField("second"));
    EXPECT_EQ(message.RemoveData("second", 0), B_NAME_NOT_FOUND);
    EXPECT_EQ(message.RemoveName("first"), B_OK);
    ASSERT_EQ(message.GetInfo(B_ANY_TYPE, 0, &name, &type, &count), B_OK);
    EXPECT_EQ(name, "third");
    message.MakeEmpty();
    EXPECT_TRUE(message.IsEmpty());
    EXPECT_EQ(message.what, 606u);
}
