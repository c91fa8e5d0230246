#include "fileops/Trash.h"

#include "CopyTestSupport.h"
#include "fileops/KestrinEntry.h"

#include <cstdio>
#include <optional>
#include <regex>
#include <sys/xattr.h>

using namespace kestrin;

namespace {

// gio writes bytes outside ASCII in original paths as \xHH.
std::string Unescaped(const std::string &listing)
{
    std::string text;
    for (size_t i = 0; i < listing.size(); i++) {
        if (listing.compare(i, 2, "\\x") == 0 && i + 3 < listing.size()) {
            text += char(std::stoi(listing.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            text += listing[i];
        }
    }
    return text;
}

// The trash as a desktop tool lists it; nullopt when no tool here can (gio
// needs gvfs and a session bus for it; trash-list comes with trash-cli).
std::optional<std::string> ListedByDesktopTool()
{
    for (const char *command : {"dbus-run-session -- gio trash --list 2>/dev/null",
                                "gio trash --list 2>/dev/null",
                                "trash-list 2>/dev/null"}) {
        FILE *pipe = popen(command, "r");
        std::string output;
        char buffer[4096];
        for (size_t read; pipe && (read = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
            output.append(buffer, read);
        if (pipe && pclose(pipe) == 0)
            return Unescaped(output);
    }
    return std::nullopt;
}

std::string Repeat(const std::string &text, int times)
{
    std::string result;
    while (times-- > 0)
        result += text;
    return result;
}

class TrashTest : public CopyTest
{
protected:
    std::string Info(const std::string &name)
    {
        return ReadFileBytes(trash + "/info/" + name + ".trashinfo").value_or("");
    }

    const std::string trash = home.Home() + "/.local/share/Trash";
};

} // namespace

TEST_F(TrashTest, ClashingNamesGetCopySuffixesAndRecordTheirOrigin)
{
    home.SetEnv("TZ", "EST5"); // five hours behind UTC, all year
    const time_t before = time(nullptr);
    for (const char *folder : {"one", "two", "three"}) {
        fs::create_directory(src + "/" + folder);
        WriteFileBytes(src + "/" + folder + "/notes", folder);
        EXPECT_TRUE(KestrinEntry(src + "/" + folder + "/notes").TrashIt());
    }
    const std::string odd = src + "/a b%\xC3\xA9";
    fs::create_directory(odd);
    EXPECT_TRUE(KestrinEntry(odd).TrashIt());
    // 127 two-byte characters and one byte more; cut on a character boundary
    // so that name + ".trashinfo" fits 255 bytes.
    const std::string longName = Repeat("\xC3\xA9", 127) + "n";
    WriteFileBytes(src + "/" + longName, "");
    EXPECT_TRUE(KestrinEntry(src + "/" + longName).TrashIt());
    const time_t after = time(nullptr);

    EXPECT_FALSE(Exists(src + "/one/notes") || Exists(odd) || Exists(src + "/" + longName));
    EXPECT_EQ(ReadFileBytes(trash + "/files/notes"), "one");
    EXPECT_EQ(ReadFileBytes(trash + "/files/notes copy"), "two");
    EXPECT_EQ(ReadFileBytes(trash + "/files/notes copy2"), "three");
    EXPECT_TRUE(fs::is_directory(trash + "/files/a b%\xC3\xA9"));
    EXPECT_TRUE(Exists(trash + "/files/" + Repeat("\xC3\xA9", 122)));

    const std::string info = Info("notes copy");
    const std::string head = "[Trash Info]\nPath=" + src + "/two/notes\nDeletionDate=";
    ASSERT_EQ(info.substr(0, head.size()), head);
    const std::string date = info.substr(head.size());
    ASSERT_TRUE(std::regex_match(date, std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\n)"))) << date;
    struct tm local = {};
    strptime(date.c_str(), "%Y-%m-%dT%H:%M:%S", &local);
    const time_t deleted = timegm(&local) + 5 * 60 * 60;
    EXPECT_TRUE(deleted >= before && deleted <= after) << "local time, not UTC: " << date;
    EXPECT_NE(Info("a b%\xC3\xA9").find("\nPath=" + src + "/a%20b%25%C3%A9\n"), std::string::npos);
    EXPECT_NE(Info(Repeat("\xC3\xA9", 122)).find("/" + Repeat("%C3%A9", 127) + "n\n"),
              std::string::npos);

    const std::optional<std::string> listing = ListedByDesktopTool();
    if (!listing)
        GTEST_SKIP() << "neither `gio trash --list` (needs gvfs) nor trash-list works here";
    EXPECT_NE(listing->find(src + "/two/notes"), std::string::npos) << *listing;
    EXPECT_NE(listing->find(odd), std::string::npos) << *listing;
}

TEST_F(TrashTest, ItemsOnAnotherVolumeAreCopiedInThenDeleted)
{
    const QTemporaryDir shm(kShmTemplate);
    const std::string from = ShmPath(shm);
    WriteFileBytes(from + "/doc", "from shm");
    ASSERT_EQ(lsetxattr((from + "/doc").c_str(), "user.comment", "kept", 4, 0), 0);
    fs::create_directory(from + "/dir");
    WriteFileBytes(from + "/dir/inner", "inner");
    SetModified(from + "/dir/inner", 1577966400);
    SetModified(from + "/dir", 1577966400);
    WriteFileBytes(src + "/doc", "from home");
    ASSERT_TRUE(KestrinEntry(src + "/doc").TrashIt());

    EXPECT_FALSE(KestrinEntry(from + "/doc").TrashIt());
    EXPECT_TRUE(Exists(from + "/doc"));
    Run(Request(kMsgDeleteRequest, {from + "/doc", from + "/dir"}), from);

    EXPECT_EQ(control.batches.at(0).text, "Deleting 2 files or directories");
    EXPECT_EQ(ReadFileBytes(trash + "/files/doc"), "from home");
    EXPECT_EQ(ReadFileBytes(trash + "/files/doc copy"), "from shm");
    char comment[8] = {};
    EXPECT_EQ(lgetxattr((trash + "/files/doc copy").c_str(), "user.comment", comment, 8), 4);
    EXPECT_EQ(ReadFileBytes(trash + "/files/dir/inner"), "inner");
    EXPECT_EQ(TimesOf(trash + "/files/dir/inner").modified.tv_sec, 1577966400);
    EXPECT_EQ(TimesOf(trash + "/files/dir").modified.tv_sec, 1577966400) << "after its contents";
    EXPECT_FALSE(Exists(from + "/doc") || Exists(from + "/dir"));
    EXPECT_NE(Info("doc copy").find("\nPath=" + from + "/doc\n"), std::string::npos);
    EXPECT_NE(Info("dir").find("\nPath=" + from + "/dir\n"), std::string::npos);

    // What does not arrive whole (a looping link has nothing to point at)
    // stays where it was, and the Trash keeps no half of it.
    fs::create_directory(from + "/keep");
    WriteFileBytes(from + "/keep/file", "file");
    fs::create_symlink("loop", from + "/keep/loop");
    Run(Request(kMsgDeleteRequest, {from + "/keep"}), from);
    EXPECT_TRUE(Exists(from + "/keep/file"));
    EXPECT_FALSE(Exists(trash + "/files/keep") || Exists(trash + "/info/keep.trashinfo"));
}

TEST_F(TrashTest, ThePaneThatShowsTheTrashDeletesForGood)
{
    WriteFileBytes(src + "/x", "x");
    fs::create_directories(src + "/y/z");
    WriteFileBytes(src + "/y/z/deep", "deep");
    Run(Request(kMsgDeleteRequest, {src + "/x", src + "/y"}), src);
    ASSERT_TRUE(Exists(trash + "/files/x"));
    ASSERT_TRUE(Exists(trash + "/files/y/z/deep"));

    Run(Request(kMsgDeleteRequest, {trash + "/files/x"}), trash + "/files");
    EXPECT_FALSE(Exists(trash + "/files/x") || Exists(trash + "/info/x.trashinfo"));
    Run(Request(kMsgDeleteRequest, {trash + "/files/y"}), trash);
    EXPECT_TRUE(fs::is_empty(trash + "/files"));
}
