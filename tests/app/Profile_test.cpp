#include "app/Profile.h"

#include "TempHome.h"
#include "UnprivilegedRerun.h"
#include "platform/AlertRecorder.h"
#include "platform/File.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace kestrin;

namespace {

class ProfileTest : public ::testing::Test
{
protected:
    std::string Path() const { return fHome.ConfigDir() + "/Kestrin/Kestrin.pref"; }

    void WriteProfile(const std::string &bytes)
    {
        ASSERT_TRUE(CreatePrefFile("Kestrin", "Kestrin.pref"));
        WriteFileBytes(Path(), bytes);
    }

    std::string Bytes() const { return ReadFileBytes(Path()).value_or("(missing)"); }

    std::optional<std::string> Get(const std::string &key) const
    {
        std::string value;
        if (!GetProfileString("Kestrin", key, &value, "Kestrin.pref"))
            return std::nullopt;
        return value;
    }

    bool Set(const std::string &key, const std::string &value)
    {
        return SetProfileString("Kestrin", key, value, "Kestrin.pref");
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
};

} // namespace

TEST_F(ProfileTest, MissingFileReadsNothingAndTheFirstWriteCreatesFolderAndFile)
{
    std::string value = "caller's default";
    EXPECT_FALSE(GetProfileString("Kestrin", "Left", &value, "Kestrin.pref"));
    EXPECT_EQ(value, "caller's default");
    EXPECT_FALSE(ReadFileBytes(Path())) << "reading must never create the file";

    ASSERT_TRUE(Set("Left", "10"));
    ASSERT_TRUE(Set("Top", "-40"));
    EXPECT_EQ(Bytes(), "Left=10\nTop=-40\n");
    EXPECT_EQ(GetSettingFullPath("Kestrin", "Kestrin.pref"), Path());
    struct stat info;
    ASSERT_EQ(stat(Path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_EQ(fAlerts.Count(), 0u);

    // An existing profile is kept by CreatePrefFile.
    EXPECT_TRUE(CreatePrefFile("Kestrin", "Kestrin.pref"));
    EXPECT_EQ(Bytes(), "Left=10\nTop=-40\n");
}

TEST_F(ProfileTest, RewritingInPlaceKeepsTheOldTailAndRunsOverTheNextLine)
{
    WriteProfile("Width=1000\nHeight=700\n");
    ASSERT_TRUE(Set("Width", "800"));
    EXPECT_EQ(Bytes(), "Width=800\n\nHeight=700\n");
    EXPECT_EQ(Get("Width"), "800");
    EXPECT_EQ(Get("Height"), "700");

    WriteProfile("Left=5\nTop=10\n");
    ASSERT_TRUE(Set("Left", "500"));
    EXPECT_EQ(Bytes(), "Left=500\np=10\n");
    EXPECT_EQ(Get("Left"), "500");
    EXPECT_EQ(Get("Top"), std::nullopt);
    EXPECT_EQ(Get("p"), "10") << "the leftover tail reads as a key of its own";

    // A missing key is appended; the first of two equal keys is the one read
    // and the one rewritten.
    WriteProfile("K=1\nK=2\n");
    ASSERT_TRUE(Set("New", "x"));
    ASSERT_TRUE(Set("K", "3"));
    EXPECT_EQ(Bytes(), "K=3\nK=2\nNew=x\n");
    EXPECT_EQ(Get("K"), "3");
}

TEST_F(ProfileTest, KeysMatchOnlyWhenFollowedAtOnceByEquals)
{
    struct Case
    {
        const char *key, *line;
        bool matches;
    };
    const Case cases[] = {
        {"Pane1", "Pane1=/boot/home", true},
        {"Pane1", "Pane10=/x", false},
        {"Pane1", "Pane1_Sort=3", false},
        {"Pane1_Sort", "Pane1=/x", false},
        {"Pane1", "Pane1", false},
        {"Pane1", "", false},
        {"", "=x", true},
        {"", "", false},
        {"key", "Key=1", false},
        // A line shorter than the key matches when the key goes on with "=".
        {"a=b", "a", true},
        {"a=b", "a=b=c", true},
        {"ab", "a", false},
    };
    for (const Case &c : cases)
        EXPECT_EQ(Compare(c.key, c.line), c.matches) << c.key << " vs " << c.line;

    WriteProfile("Pane10=/x\nPane1_Sort=3\nPane1=/y\nDateFormat=%D=%T\n");
    EXPECT_EQ(Get("Pane1"), "/y");
    EXPECT_EQ(Get("Pane1_Sort"), "3");
    EXPECT_EQ(Get("DateFormat"), "%D=%T");
    EXPECT_EQ(Get("Pane"), std::nullopt);
}

TEST_F(ProfileTest, ALastLineWithoutLineFeedLosesItsLastCharacter)
{
    WriteProfile("Left=10\nTop=123");
    EXPECT_EQ(Get("Left"), "10");
    EXPECT_EQ(Get("Top"), "12");

    platform::File file(Path(), B_READ_ONLY);
    std::string line;
    EXPECT_EQ(ReadLine(file, &line), 8);
    EXPECT_EQ(line, "Left=10");
    EXPECT_EQ(ReadLine(file, &line), 7);
    EXPECT_EQ(line, "Top=12");
    EXPECT_EQ(ReadLine(file, &line), 0);
    EXPECT_EQ(line, "");
}

TEST_F(ProfileTest, LongLinesAndBinaryBytesAreReadSafely)
{
    const std::string longValue(5000, 'v');
    WriteProfile("Long=" + longValue + "\nAfter=1\nNul=ab" + std::string(1, '\0')
                 + "cd\nBin=\xff\xfe\x01\n");
    EXPECT_EQ(Get("Long"), longValue);
    EXPECT_EQ(Get("After"), "1") << "offsets must count every byte of a long line";
    EXPECT_EQ(Get("Nul"), "ab") << "a value ends at a NUL byte";
    EXPECT_EQ(Get("Bin"), "\xff\xfe\x01");

    // Rewriting a short value over the long line keeps the file's length and
    // everything after the old line.
    const size_t before = Bytes().size();
    ASSERT_TRUE(Set("Long", "s"));
    EXPECT_EQ(Bytes().size(), before);
    EXPECT_EQ(Get("Long"), "s");
    EXPECT_EQ(Get("After"), "1");
    EXPECT_EQ(Get("Bin"), "\xff\xfe\x01");

    // And a long value over short lines runs over them, as any value does.
    ASSERT_TRUE(Set("After", std::string(300, 'w')));
    EXPECT_EQ(Get("After"), std::string(300, 'w'));
}

TEST_F(ProfileTest, NoOrAnUncreatableSettingsFolderGivesTheAlertsAndWritesNothing)
{
    fHome.SetEnv("HOME", std::nullopt);
    std::string value = "default";
    EXPECT_FALSE(GetProfileString("Kestrin", "Left", &value, "Kestrin.pref"));
    EXPECT_EQ(value, "default");
    ASSERT_GE(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0],
              (platform::Alert{"Hey", "Couldn't find the preferences directory.", {"Oh well"}}));

    fAlerts.Clear();
    EXPECT_FALSE(Set("Left", "1"));
    ASSERT_GE(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown().back(),
              (platform::Alert{"Hey",
                               "Could not create the application preferences file.",
                               {"Oh well"}}));

    // A file where ~/.config should be: no folder can be made there, not even by root.
    fHome.SetEnv("HOME", fHome.Home());
    fAlerts.Clear();
    WriteFileBytes(fHome.ConfigDir(), "in the way");
    EXPECT_FALSE(CreatePrefFile("Kestrin", "Kestrin.pref"));
    EXPECT_FALSE(Set("Left", "1"));
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].text, "Could not create the application preferences file.");
    EXPECT_EQ(Get("Left"), std::nullopt);
    EXPECT_EQ(ReadFileBytes(fHome.ConfigDir()), "in the way");
}

TEST_F(ProfileTest, FlagsAreTrueWhenTheirNumberIsNotZero)
{
    WriteProfile("one=1\nzero=0\ntwo=2\ncrlf=1\r\nword=yes\nempty=\n");
    const struct
    {
        const char *key;
        bool fallback;
        bool expected;
    } rows[] = {
        {"one", false, true},
        {"zero", true, false},
        {"two", false, true},
        {"crlf", false, true},
        {"word", true, false},
        {"empty", true, false},
        {"missing", true, true},
        {"missing", false, false},
    };
    for (const auto &row : rows)
        EXPECT_EQ(kestrin::GetProfileFlag("Kestrin", row.key, row.fallback, "Kestrin.pref"),
                  row.expected)
            << row.key;
}

TEST_F(ProfileTest, AReadOnlyProfileIsLeftAlone)
{
    if (UnprivilegedRerun::Delegated())
        return;
    WriteProfile("Left=1\n");
    chmod(Path().c_str(), 0400);
    EXPECT_TRUE(Set("Left", "2")) << "only a missing, uncreatable file is a failure";
    EXPECT_EQ(Bytes(), "Left=1\n");
    EXPECT_EQ(Get("Left"), "1");
}
