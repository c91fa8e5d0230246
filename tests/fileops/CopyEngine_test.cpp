#include "fileops/CopyEngine.h"

#include "CopyTestSupport.h"
#include "platform/Node.h"

#include <sys/xattr.h>
#include <unistd.h>

using namespace kestrin;

namespace {

constexpr time_t kJan10 = 947505600; // Mon Jan 10 12:00:00 2000 UTC
constexpr time_t kDay = 24 * 60 * 60;
constexpr time_t kJan2 = 1577966400; // Thu Jan  2 12:00:00 2020 UTC

// A tree of every kind of entry, each with times of its own, for the copies
// to keep: the entry's path below the tree's folder, its kind ('f' file, 'd'
// folder, 'l' link to "b" beside it), and how many days before Jan 2, 2020
// noon it was modified; it was read an hour and a quarter after that.
struct DatedEntry
{
    const char *path;
    char kind;
    int daysBefore;
};
constexpr DatedEntry kDatedTree[] = {
    {"f", 'f', 0},
    {"T", 'd', 1},
    {"T/a", 'f', 2},
    {"T/S", 'd', 3},
    {"T/S/b", 'f', 4},
    {"T/S/l", 'l', 5},
    {"T/S/E", 'd', 6},
};

// Makes the tree in `root` and answers the times each entry has, as the
// file system keeps them and TimesBelow compares them; set once everything
// is made, since a folder's times change as entries are made in it.
std::map<std::string, EntryTimes> MakeDatedTree(const std::string &root)
{
    for (const DatedEntry &entry : kDatedTree) {
        const std::string path = root + "/" + entry.path;
        if (entry.kind == 'd')
            fs::create_directory(path);
        else if (entry.kind == 'l')
            fs::create_symlink("b", path);
        else
            WriteFileBytes(path, entry.path);
    }
    std::map<std::string, EntryTimes> times;
    for (const DatedEntry &entry : kDatedTree) {
        const time_t modified = kJan2 - entry.daysBefore * kDay;
        times[entry.path] = SetTimes(root + "/" + entry.path,
                                     {{modified + 4500, 250000000}, {modified, 500000000}});
        if (entry.kind == 'd')
            times[entry.path].accessed = {};
    }
    return times;
}

// The times of the tree's entries in `root`; a folder's modification time
// alone, since measuring the request lists every folder, which dates its
// access before the copy begins (as showing it in a pane would).
std::map<std::string, EntryTimes> TimesBelow(const std::string &root)
{
    std::map<std::string, EntryTimes> times;
    for (const DatedEntry &entry : kDatedTree) {
        times[entry.path] = TimesOf(root + "/" + entry.path);
        if (entry.kind == 'd')
            times[entry.path].accessed = {};
    }
    return times;
}

class CopyEngineTest : public CopyTest
{
protected:
    // The same name in both folders, with the given modification times.
    void Conflict(const std::string &name, time_t sourceTime, time_t targetTime)
    {
        WriteFileBytes(src + "/" + name, "new " + name);
        WriteFileBytes(dest + "/" + name, "old " + name);
        SetModified(src + "/" + name, sourceTime);
        SetModified(dest + "/" + name, targetTime);
    }
};

} // namespace

TEST_F(CopyEngineTest, SkipKeepsTheWindowHiddenUntilALaterReplace)
{
    home.SetEnv("TZ", "UTC");
    Conflict("a", kJan10, kJan10 + kDay);
    fs::resize_file(src + "/a", 2048 * 1024);
    fs::resize_file(dest + "/a", 1025);
    Conflict("b", kJan10, kJan10);
    fs::resize_file(src + "/b", 1024);
    SetModified(src + "/a", kJan10);
    SetModified(dest + "/a", kJan10 + kDay);
    SetModified(src + "/b", kJan10);

    control.answers = {kSkip, kOverwrite};
    Run(Request(kMsgCopyRequest, {src + "/a", src + "/b"}), dest);

    ASSERT_EQ(control.questions.size(), 2u) << "a Skip is asked again at the next conflict";
    EXPECT_EQ(control.questions[0],
              (OverwriteQuestion{src + "/a",
                                 dest + "/a",
                                 "1 K  Tue Jan 11 12:00:00 2000",
                                 "2048 K  Mon Jan 10 12:00:00 2000"}));
    EXPECT_EQ(control.questions[1].fourthLine, "1024 Bytes  Mon Jan 10 12:00:00 2000");
    EXPECT_EQ(fs::file_size(dest + "/a"), 1025u);
    EXPECT_EQ(ReadFileBytes(dest + "/b"), ReadFileBytes(src + "/b"));
    EXPECT_EQ(control.visibility, (std::vector<bool>{false, false, true}));
}

TEST_F(CopyEngineTest, OverwriteAllOlderReplacesTheCurrentTargetThenOnlyOlderOnes)
{
    Conflict("x", 1000, 1100); // the answered one: replaced although newer
    Conflict("y", 1000, 900);
    Conflict("z", 1000, 1000);
    Conflict("w", 1000, 1100);
    control.answers = {kOverwriteAllOlder};
    Run(Request(kMsgCopyRequest, {src + "/x", src + "/y", src + "/z", src + "/w"}), dest);

    EXPECT_EQ(control.questions.size(), 1u);
    EXPECT_EQ(ReadFileBytes(dest + "/x"), "new x");
    EXPECT_EQ(ReadFileBytes(dest + "/y"), "new y");
    EXPECT_EQ(ReadFileBytes(dest + "/z"), "old z") << "the same time is not older";
    EXPECT_EQ(ReadFileBytes(dest + "/w"), "old w");
}

TEST_F(CopyEngineTest, CancelEndsTheBatchAfterTheCurrentItem)
{
    fs::create_directory(src + "/F");
    fs::create_directory(dest + "/F");
    Conflict("F/f1", 1000, 1000);
    Conflict("F/f2", 1000, 1000);
    WriteFileBytes(src + "/F/n", "n");
    WriteFileBytes(src + "/g", "g");

    control.answers = {kCancelBatch, kCancelBatch};
    Run(Request(kMsgCopyRequest, {src + "/F", src + "/g"}), dest);

    // Inside the folder the copy goes on and asks again.
    ASSERT_EQ(control.questions.size(), 2u);
    EXPECT_EQ(ReadFileBytes(dest + "/F/f1").value_or("").substr(0, 3), "old");
    EXPECT_EQ(ReadFileBytes(dest + "/F/f2").value_or("").substr(0, 3), "old");
    EXPECT_TRUE(Exists(dest + "/F/n"));
    EXPECT_FALSE(Exists(dest + "/g")) << "the batch ends with the folder";

    // A later answer inside the folder that is not Cancel lets the batch go on.
    fs::remove_all(dest + "/F/n");
    control.answers = {kCancelBatch, kSkip};
    control.questions.clear();
    Run(Request(kMsgCopyRequest, {src + "/F", src + "/g"}), dest);
    EXPECT_EQ(control.questions.size(), 2u);
    EXPECT_TRUE(Exists(dest + "/g"));
}

TEST_F(CopyEngineTest, SkipAllNeverAsksAgainAndNoTargetIsTheSourceItself)
{
    for (const char *name : {"a", "b", "c"})
        Conflict(name, 2000, 1000);
    control.answers = {kSkipAll};
    Run(Request(kMsgCopyRequest, {src + "/a", src + "/b", src + "/c"}), dest);
    EXPECT_EQ(control.questions.size(), 1u);
    EXPECT_EQ(ReadFileBytes(dest + "/c"), "old c");
    EXPECT_EQ(control.visibility, std::vector<bool>{false});

    // A hard link of the source in the way: erasing it would erase the source.
    WriteFileBytes(src + "/h", "precious");
    ASSERT_EQ(link((src + "/h").c_str(), (dest + "/h").c_str()), 0);
    Run(Request(kMsgCopyRequest, {src + "/h"}), dest);
    EXPECT_EQ(control.questions.size(), 1u);
    EXPECT_EQ(ReadFileBytes(src + "/h"), "precious");
}

TEST_F(CopyEngineTest, MoveWithinAVolumeAsksTargetFirstAndEndsWhenItCannotReplace)
{
    home.SetEnv("TZ", "UTC");
    Conflict("a", kJan10, kJan10 - kDay);
    fs::resize_file(src + "/a", 3000);
    SetModified(src + "/a", kJan10);
    Conflict("b", kJan10, kJan10 + kDay);
    Conflict("c", kJan10, kJan10 - kDay);
    control.answers = {kOverwriteAllOlder};
    Run(Request(kMsgCopyRequest, {src + "/a", src + "/b", src + "/c"}, "Move"), dest);

    EXPECT_EQ(control.batches.at(0).text, "Copying 3 files or directories");
    ASSERT_EQ(control.questions.size(), 1u);
    EXPECT_EQ(control.questions[0],
              (OverwriteQuestion{dest + "/a",
                                 src + "/a",
                                 "2 K  Mon Jan 10 12:00:00 2000",
                                 "5 Bytes  Sun Jan  9 12:00:00 2000"}));
    EXPECT_EQ(control.visibility, (std::vector<bool>{false, true}));
    EXPECT_EQ(fs::file_size(dest + "/a"), 3000u);
    EXPECT_FALSE(Exists(src + "/a"));
    EXPECT_EQ(ReadFileBytes(dest + "/b"), "old b");
    EXPECT_TRUE(Exists(src + "/b"));
    EXPECT_EQ(ReadFileBytes(dest + "/c"), "new c");

    // A folder cannot replace a folder with contents: the request ends there.
    fs::create_directories(src + "/dir");
    fs::create_directories(dest + "/dir");
    WriteFileBytes(dest + "/dir/theirs", "theirs");
    WriteFileBytes(src + "/m", "m");
    control.answers = {kOverwrite};
    Run(Request(kMsgCopyRequest, {src + "/dir", src + "/m"}, "Move"), dest);
    EXPECT_TRUE(Exists(src + "/dir"));
    EXPECT_TRUE(Exists(dest + "/dir/theirs"));
    EXPECT_TRUE(Exists(src + "/m"));
}

TEST_F(CopyEngineTest, MoveToAnotherVolumeRemovesOnlyWhatArrivedWhole)
{
    const QTemporaryDir shm(kShmTemplate);
    const std::string from = ShmPath(shm);
    WriteFileBytes(from + "/f", "file");
    ASSERT_EQ(platform::Node(from + "/f").WriteAttrString("BEOS:TYPE", "text/plain"), B_OK);
    ASSERT_EQ(lsetxattr((from + "/f").c_str(), "user.comment", "kept", 4, 0), 0);
    fs::create_directories(from + "/G");
    WriteFileBytes(from + "/G/inside", "inside");
    fs::create_directory(from + "/E");
    WriteFileBytes(from + "/s", "source of a skip");
    WriteFileBytes(dest + "/s", "kept target");

    control.answers = {kSkip};
    Run(Request(kMsgCopyRequest, {from + "/f", from + "/G", from + "/E", from + "/s"}, "Move"),
        dest);

    std::string type;
    EXPECT_EQ(platform::Node(dest + "/f").ReadAttrString("BEOS:TYPE", &type), B_OK);
    EXPECT_EQ(type, "text/plain");
    char comment[8] = {};
    EXPECT_EQ(lgetxattr((dest + "/f").c_str(), "user.comment", comment, sizeof comment), 4);
    EXPECT_FALSE(Exists(from + "/f"));
    // A folder with contents is copied and its source stays; an empty one goes.
    EXPECT_TRUE(Exists(dest + "/G/inside"));
    EXPECT_TRUE(Exists(from + "/G/inside"));
    EXPECT_TRUE(Exists(dest + "/E"));
    EXPECT_FALSE(Exists(from + "/E"));
    // Skipped: both sides kept.
    EXPECT_EQ(ReadFileBytes(dest + "/s"), "kept target");
    EXPECT_TRUE(Exists(from + "/s"));

    // Stopped in the middle: the source stays, no partial target.
    WriteFileBytes(from + "/big", std::string(2 * 1024 * 1024, 'b'));
    control.stopAfterChunks = control.chunks.size() + 1;
    Run(Request(kMsgCopyRequest, {from + "/big"}, "Move"), dest);
    EXPECT_TRUE(Exists(from + "/big"));
    EXPECT_FALSE(Exists(dest + "/big"));
}

// Links point at the items' absolute paths; those that cannot be made are
// reported and the rest goes on.
TEST_F(CopyEngineTest, LinksPointAtTheItemsAndThoseThatCannotBeMadeAreReported)
{
    WriteFileBytes(src + "/a", "a");
    WriteFileBytes(src + "/b", "b");
    fs::create_directory(src + "/d");
    WriteFileBytes(dest + "/a", "mine");
    Run(Request(kMsgCopyRequest, {src + "/a", src + "/b", src + "/d"}, "Link"), dest);
    EXPECT_EQ(control.errors, std::vector<platform::Alert>{kFileExistsAlert});
    EXPECT_FALSE(fs::is_symlink(dest + "/a")) << "a name already taken is not replaced";
    EXPECT_EQ(ReadFileBytes(dest + "/a"), "mine");
    EXPECT_EQ(fs::read_symlink(dest + "/b"), src + "/b");
    EXPECT_EQ(fs::read_symlink(dest + "/d"), src + "/d");

    // A link inside a copied folder meets a name already taken.
    fs::create_directory(src + "/F");
    fs::create_symlink(src + "/a", src + "/F/l");
    WriteFileBytes(src + "/F/f", "f");
    fs::create_directory(dest + "/F");
    WriteFileBytes(dest + "/F/l", "taken");
    control.errors.clear();
    Run(Request(kMsgCopyRequest, {src + "/F"}), dest);
    EXPECT_EQ(control.errors, std::vector<platform::Alert>{kFileExistsAlert});
    EXPECT_EQ(ReadFileBytes(dest + "/F/l"), "taken");
    EXPECT_EQ(ReadFileBytes(dest + "/F/f"), "f");

    // Each failure with the text of its own status.
    control.errors.clear();
    Run(Request(kMsgCopyRequest, {src + "/b"}, "Link"), dest + "/a");
    ASSERT_EQ(control.errors.size(), 1u);
    EXPECT_EQ(control.errors[0].text, "A portion of the path is not a directory.");
    EXPECT_EQ(ReadFileBytes(dest + "/a"), "mine");
    EXPECT_EQ(alerts.Count(), 0u) << "nothing goes past the progress window";
}

TEST_F(CopyEngineTest, CopiesAndMovesKeepTheirDatesFoldersAfterTheirContents)
{
    const std::map<std::string, EntryTimes> times = MakeDatedTree(src);
    Run(Request(kMsgCopyRequest, {src + "/f", src + "/T"}), dest);
    EXPECT_TRUE(control.errors.empty());
    EXPECT_EQ(TimesBelow(dest), times);

    // Across devices a move is a copy and a delete: the copy keeps them too.
    const QTemporaryDir shm(kShmTemplate);
    const std::string from = ShmPath(shm);
    const std::map<std::string, EntryTimes> shmTimes = MakeDatedTree(from);
    const std::string moved = dest + "/moved";
    fs::create_directory(moved);
    Run(Request(kMsgCopyRequest, {from + "/f", from + "/T"}, "Move"), moved);
    EXPECT_FALSE(Exists(from + "/f"));
    EXPECT_EQ(TimesBelow(moved), shmTimes);
}

TEST_F(CopyEngineTest, OverwriteAllOlderJudgesTheOriginalsDateNotTheCopys)
{
    for (const char *name : {"x", "y", "z"}) {
        WriteFileBytes(src + "/" + name, "first");
        SetModified(src + "/" + name, kJan10);
    }
    Run(Request(kMsgCopyRequest, {src + "/x", src + "/y", src + "/z"}), dest);

    // Edited since: y later, z put back to its old date.
    for (const char *name : {"x", "y", "z"})
        WriteFileBytes(src + "/" + name, "second");
    SetModified(src + "/x", kJan10);
    SetModified(src + "/y", kJan10 + kDay);
    SetModified(src + "/z", kJan10);
    control.answers = {kOverwriteAllOlder};
    Run(Request(kMsgCopyRequest, {src + "/x", src + "/y", src + "/z"}), dest);
    EXPECT_EQ(control.questions.size(), 1u);
    EXPECT_EQ(ReadFileBytes(dest + "/x"), "second") << "the one answered";
    EXPECT_EQ(ReadFileBytes(dest + "/y"), "second") << "its copy is older than it";
    EXPECT_EQ(ReadFileBytes(dest + "/z"), "first") << "its copy is as old as it";
}
