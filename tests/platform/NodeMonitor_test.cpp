#include "platform/NodeMonitor.h"

#include "platform/Handler.h"
#include "platform/Message.h"

#include "MessageRecorder.h"
#include "support/TempHome.h"
#include "support/UnprivilegedRerun.h"

#include <QTemporaryDir>
#include <QTest>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform;
namespace fs = std::filesystem;

namespace {

constexpr int kWaitMs = 10000;

class Recorder : public MessageRecorder
{
public:
    ~Recorder() override { NodeMonitor::StopWatching(this); }
};

int32_t Opcode(const Message &message)
{
    int32_t opcode = -1;
    message.FindInt32("opcode", &opcode);
    return opcode;
}

std::string Text(const Message &message, const char *field)
{
    std::string value;
    message.FindString(field, &value);
    return value;
}

// An int64 field, or the int32 "device".
int64_t Number(const Message &message, const char *field)
{
    int64_t value = -1;
    int32_t narrow;
    if (message.FindInt64(field, &value) != B_OK && message.FindInt32(field, &narrow) == B_OK)
        value = narrow;
    return value;
}

// "created a", "moved a>b", ... for comparing whole sequences.
std::vector<std::string> Summary(const Recorder &recorder)
{
    std::vector<std::string> lines;
    for (const Message &message : recorder.messages) {
        const int32_t opcode = Opcode(message);
        const std::string name = Text(message, "name");
        if (opcode == B_ENTRY_MOVED)
            lines.push_back("moved " + Text(message, "from name") + ">" + name);
        else if (opcode == kEventsLost)
            lines.push_back("lost");
        else
            lines.push_back(std::string(opcode == B_ENTRY_CREATED   ? "created "
                                        : opcode == B_ENTRY_REMOVED ? "removed "
                                        : opcode == B_STAT_CHANGED  ? "stat "
                                                                    : "other ")
                            + name);
    }
    return lines;
}

const Message *Find(const Recorder &recorder, int32_t opcode, const std::string &name)
{
    for (const Message &message : recorder.messages)
        if (message.what == B_NODE_MONITOR && Opcode(message) == opcode
            && Text(message, "name") == name)
            return &message;
    return nullptr;
}

// The message, once it has arrived; after a bounded wait, a failure and an
// empty message.
Message WaitFor(const Recorder &recorder, int32_t opcode, const std::string &name)
{
    if (QTest::qWaitFor([&] { return Find(recorder, opcode, name) != nullptr; }, kWaitMs))
        return *Find(recorder, opcode, name);
    ADD_FAILURE() << "no message " << opcode << " for " << name;
    return Message();
}

Message WaitForMessage(const Recorder &recorder, size_t index)
{
    if (QTest::qWaitFor([&] { return recorder.messages.size() > index; }, kWaitMs))
        return recorder.messages[index];
    ADD_FAILURE() << "no message " << index;
    return Message();
}

struct stat StatOf(const std::string &path)
{
    struct stat info = {};
    lstat(path.c_str(), &info);
    return info;
}

// One inotify queue serves the whole process, so once an event made now has
// been delivered, every event made before it has been too: how a test knows
// that something did not happen without waiting for a while.
class Fence
{
public:
    explicit Fence(const std::string &folder)
        : fFolder(folder)
    {
        fs::create_directories(folder);
        NodeMonitor::WatchDirectory(folder, &fRecorder);
    }

    bool Pass()
    {
        const std::string name = "fence" + std::to_string(++fCount);
        // mkdir queues exactly one event.
        fs::create_directory(fFolder + "/" + name);
        return WaitFor(fRecorder, B_ENTRY_CREATED, name).what == B_NODE_MONITOR;
    }

private:
    std::string fFolder;
    Recorder fRecorder;
    int fCount = 0;
};

// Kernel watches held by this process, over all of its inotify descriptors.
int KernelWatches()
{
    int count = 0;
    for (const auto &item : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (fs::read_symlink(item.path(), error).string() != "anon_inode:inotify")
            continue;
        std::ifstream info("/proc/self/fdinfo/" + item.path().filename().string());
        for (std::string line; std::getline(info, line);)
            if (line.rfind("inotify wd:", 0) == 0)
                count++;
    }
    return count;
}

long QueueLimit()
{
    std::ifstream file("/proc/sys/fs/inotify/max_queued_events");
    long limit = -1;
    file >> limit;
    return limit;
}

// Queues IN_CREATE alone: a descriptor opened for reading closes without IN_CLOSE_WRITE.
void MakeFile(const std::string &path)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0) << path;
    close(fd);
}

class NodeMonitorTest : public ::testing::Test
{
protected:
    std::string Folder(const std::string &name)
    {
        fs::create_directories(root + "/" + name);
        return root + "/" + name;
    }

    TempHome home;
    const std::string root = fs::canonical(home.Root());
};

} // namespace

TEST_F(NodeMonitorTest, ReportsEntryEventsWithTheirFields)
{
    const std::string folder = Folder("watched"), outside = Folder("outside");
    WriteFileBytes(outside + "/incoming", "in");
    const struct stat folderInfo = StatOf(folder);

    Recorder recorder;
    ASSERT_EQ(NodeMonitor::WatchDirectory(folder, &recorder), B_OK);
    EXPECT_EQ(NodeMonitor::CountWatches(&recorder), 1);

    MakeFile(folder + "/a");
    const Message created = WaitFor(recorder, B_ENTRY_CREATED, "a");
    EXPECT_EQ(created.what, B_NODE_MONITOR);
    EXPECT_EQ(Number(created, "device"), int32_t(folderInfo.st_dev));
    EXPECT_EQ(Number(created, "directory"), int64_t(folderInfo.st_ino));
    EXPECT_EQ(Number(created, "node"), int64_t(StatOf(folder + "/a").st_ino));
    EXPECT_EQ(Text(created, "path"), folder + "/a");

    WriteFileBytes(folder + "/a", "more");
    const Message changed = WaitFor(recorder, B_STAT_CHANGED, "a");
    EXPECT_EQ(Number(changed, "node"), int64_t(StatOf(folder + "/a").st_ino));

    const int64_t node = int64_t(StatOf(folder + "/a").st_ino);
    fs::rename(folder + "/a", folder + "/b");
    const Message renamed = WaitFor(recorder, B_ENTRY_MOVED, "b");
    EXPECT_EQ(Number(renamed, "device"), int32_t(folderInfo.st_dev));
    EXPECT_EQ(Number(renamed, "from directory"), int64_t(folderInfo.st_ino));
    EXPECT_EQ(Number(renamed, "to directory"), int64_t(folderInfo.st_ino));
    EXPECT_EQ(Number(renamed, "node"), node);
    EXPECT_EQ(Text(renamed, "from name"), "a");
    EXPECT_EQ(Text(renamed, "path"), folder + "/b");
    EXPECT_EQ(Text(renamed, "from path"), folder + "/a");

    fs::rename(outside + "/incoming", folder + "/arrived");
    const Message movedIn = WaitFor(recorder, B_ENTRY_MOVED, "arrived");
    EXPECT_EQ(Number(movedIn, "from directory"), 0);
    EXPECT_EQ(Number(movedIn, "to directory"), int64_t(folderInfo.st_ino));
    EXPECT_EQ(Number(movedIn, "node"), int64_t(StatOf(folder + "/arrived").st_ino));
    EXPECT_EQ(Text(movedIn, "path"), folder + "/arrived");

    // Alone at the end of its read, the MOVED_FROM waits for a MOVED_TO that
    // never comes, and then still arrives.
    fs::rename(folder + "/b", outside + "/left");
    const Message movedOut = WaitForMessage(recorder, 4);
    EXPECT_EQ(Number(movedOut, "from directory"), int64_t(folderInfo.st_ino));
    EXPECT_EQ(Number(movedOut, "to directory"), 0);
    EXPECT_EQ(Text(movedOut, "from path"), folder + "/b");

    fs::remove(folder + "/arrived");
    const Message removed = WaitFor(recorder, B_ENTRY_REMOVED, "arrived");
    EXPECT_EQ(Number(removed, "node"), 0);
    EXPECT_EQ(Text(removed, "path"), folder + "/arrived");

    const std::vector<std::string> expected = {"created a",
                                               "stat a",
                                               "moved a>b",
                                               "moved arrived>arrived",
                                               "moved b>b",
                                               "removed arrived"};
    EXPECT_EQ(Summary(recorder), expected);
}

TEST_F(NodeMonitorTest, CoalescesStatChangesWithinOneRead)
{
    const std::string folder = Folder("watched");
    WriteFileBytes(folder + "/busy", "");
    WriteFileBytes(folder + "/doomed", "");
    WriteFileBytes(folder + "/reborn", "");
    Fence fence(root + "/fence");
    Recorder recorder;
    ASSERT_EQ(NodeMonitor::WatchDirectory(folder, &recorder), B_OK);

    // Nothing is read while the test does not run the event loop, so all of
    // this lands in one read. Changes of different kinds in turn, which the
    // kernel does not merge by itself.
    for (int i = 0; i < 3; i++) {
        WriteFileBytes(folder + "/busy", std::string(size_t(i + 1), 'x'));
        chmod((folder + "/busy").c_str(), i % 2 ? 0600 : 0644);
        WriteFileBytes(folder + "/doomed", "x");
        chmod((folder + "/doomed").c_str(), i % 2 ? 0600 : 0644);
    }
    fs::remove(folder + "/doomed");
    WriteFileBytes(folder + "/reborn", "old");
    fs::remove(folder + "/reborn");
    WriteFileBytes(folder + "/reborn", "new");
    chmod((folder + "/reborn").c_str(), 0600);
    ASSERT_TRUE(fence.Pass());

    const std::vector<std::string> expected = {"stat busy",
                                               "removed doomed",
                                               "removed reborn",
                                               "created reborn",
                                               "stat reborn"};
    EXPECT_EQ(Summary(recorder), expected);
}

TEST_F(NodeMonitorTest, PairsAMoveWhoseHalvesAreReadSeparately)
{
    // 8,191 creations and the MOVED_FROM are 8,192 events of 32 bytes: any
    // read buffer of a power of two up to 256 KiB ends right after the
    // MOVED_FROM, and its MOVED_TO comes with the next read.
    static_assert(sizeof(inotify_event) == 16);
    constexpr int kCreated = 8191;
    if (QueueLimit() < kCreated + 10)
        GTEST_SKIP() << "the inotify queue limit is below " << kCreated + 10;

    const QTemporaryDir scratch = ScratchFolder();
    ASSERT_TRUE(scratch.isValid());
    const std::string folder = fs::canonical(scratch.path().toStdString());
    const std::string before = "r00000000000000", after = "s00000000000000"; // 15 bytes
    MakeFile(folder + "/" + before);
    Fence fence(root + "/fence");
    Recorder recorder;
    ASSERT_EQ(NodeMonitor::WatchDirectory(folder, &recorder), B_OK);
    ASSERT_TRUE(fence.Pass()) << "the queue must start empty";

    for (int i = 0; i < kCreated; i++) {
        char name[16];
        snprintf(name, sizeof name, "l%014d", i);
        ASSERT_EQ(symlink("nowhere", (folder + "/" + name).c_str()), 0);
    }
    fs::rename(folder + "/" + before, folder + "/" + after);
    ASSERT_TRUE(fence.Pass());

    ASSERT_EQ(recorder.messages.size(), size_t(kCreated + 1));
    const Message &moved = recorder.messages.back();
    EXPECT_EQ(Opcode(moved), B_ENTRY_MOVED);
    EXPECT_EQ(Text(moved, "from name"), before);
    EXPECT_EQ(Text(moved, "name"), after);
    EXPECT_EQ(Number(moved, "from directory"), int64_t(StatOf(folder).st_ino));
    EXPECT_EQ(Number(moved, "to directory"), int64_t(StatOf(folder).st_ino));
}

TEST_F(NodeMonitorTest, MovesBetweenWatchedFoldersReachEachHandlerOnce)
{
    const std::string left = Folder("left"), right = Folder("right");
    WriteFileBytes(left + "/x", "x");
    const int64_t node = int64_t(StatOf(left + "/x").st_ino);
    Fence fence(root + "/fence");

    Recorder leftOnly, rightOnly, both;
    ASSERT_EQ(NodeMonitor::WatchDirectory(left, &leftOnly), B_OK);
    ASSERT_EQ(NodeMonitor::WatchDirectory(right, &rightOnly), B_OK);
    ASSERT_EQ(NodeMonitor::WatchDirectory(left, &both), B_OK);
    ASSERT_EQ(NodeMonitor::WatchDirectory(right, &both), B_OK);
    EXPECT_EQ(NodeMonitor::CountWatches(&both), 2);

    fs::rename(left + "/x", right + "/y");
    ASSERT_TRUE(fence.Pass());

    for (const Recorder *recorder : {&leftOnly, &rightOnly, &both}) {
        ASSERT_EQ(Summary(*recorder), std::vector<std::string>{"moved x>y"});
        const Message &moved = recorder->messages[0];
        EXPECT_EQ(Number(moved, "from directory"), int64_t(StatOf(left).st_ino));
        EXPECT_EQ(Number(moved, "to directory"), int64_t(StatOf(right).st_ino));
        EXPECT_EQ(Number(moved, "node"), node);
        EXPECT_EQ(Text(moved, "from path"), left + "/x");
        EXPECT_EQ(Text(moved, "path"), right + "/y");
    }
}

TEST_F(NodeMonitorTest, TheWatchEndsWithTheWatchedFolder)
{
    const std::string deleted = Folder("deleted"), moved = Folder("moved");
    const struct stat rootInfo = StatOf(root), deletedInfo = StatOf(deleted),
                      movedInfo = StatOf(moved);
    Fence fence(root + "/fence");

    Recorder recorder;
    ASSERT_EQ(NodeMonitor::WatchDirectory(deleted, &recorder), B_OK);
    ASSERT_EQ(NodeMonitor::WatchDirectory(moved + "/", &recorder), B_OK);
    EXPECT_EQ(NodeMonitor::CountWatches(&recorder), 2);

    fs::remove(deleted);
    const Message gone = WaitFor(recorder, B_ENTRY_REMOVED, "deleted");
    EXPECT_EQ(Number(gone, "device"), int32_t(deletedInfo.st_dev));
    EXPECT_EQ(Number(gone, "node"), int64_t(deletedInfo.st_ino));
    EXPECT_EQ(Number(gone, "directory"), int64_t(rootInfo.st_ino));
    EXPECT_EQ(Text(gone, "path"), deleted);
    EXPECT_EQ(NodeMonitor::CountWatches(&recorder), 1);

    fs::rename(moved, root + "/elsewhere");
    const Message away = WaitFor(recorder, B_ENTRY_REMOVED, "moved");
    EXPECT_EQ(Number(away, "node"), int64_t(movedInfo.st_ino));
    EXPECT_EQ(Number(away, "directory"), int64_t(rootInfo.st_ino));
    EXPECT_EQ(Text(away, "path"), moved);
    EXPECT_EQ(NodeMonitor::CountWatches(&recorder), 0);

    // The folder lives on elsewhere; what happens in it is no longer told.
    WriteFileBytes(root + "/elsewhere/late", "");
    ASSERT_TRUE(fence.Pass());
    EXPECT_EQ(Summary(recorder), (std::vector<std::string>{"removed deleted", "removed moved"}));
    EXPECT_EQ(NodeMonitor::StopWatching(moved, &recorder), B_BAD_VALUE);
}

TEST_F(NodeMonitorTest, HandlersAndPathsOfOneFolderShareOneKernelWatch)
{
    const std::string folder = Folder("folder"), alias = root + "/alias";
    fs::create_directory_symlink("folder", alias);
    Fence fence(root + "/fence");
    const int before = KernelWatches();

    Recorder first, second;
    ASSERT_EQ(NodeMonitor::WatchDirectory(folder, &first), B_OK);
    ASSERT_EQ(NodeMonitor::WatchDirectory(alias, &second), B_OK);
    ASSERT_EQ(NodeMonitor::WatchDirectory(alias + "/", &first), B_OK);
    EXPECT_EQ(NodeMonitor::CountWatches(&first), 1) << "watching a folder twice is one watch";
    EXPECT_EQ(NodeMonitor::CountWatches(&second), 1);
    EXPECT_EQ(KernelWatches(), before + 1);

    MakeFile(folder + "/x");
    ASSERT_TRUE(fence.Pass());
    ASSERT_EQ(Summary(first), std::vector<std::string>{"created x"});
    ASSERT_EQ(Summary(second), std::vector<std::string>{"created x"});
    EXPECT_EQ(Text(first.messages[0], "path"), folder + "/x");
    EXPECT_EQ(Text(second.messages[0], "path"), alias + "/x") << "paths follow the watched path";

    ASSERT_EQ(NodeMonitor::StopWatching(alias, &second), B_OK);
    EXPECT_EQ(NodeMonitor::CountWatches(&second), 0);
    EXPECT_EQ(KernelWatches(), before + 1) << "the first handler still watches";
    MakeFile(folder + "/y");
    ASSERT_TRUE(fence.Pass());
    EXPECT_EQ(Summary(first), (std::vector<std::string>{"created x", "created y"}));
    EXPECT_EQ(Summary(second), std::vector<std::string>{"created x"});

    // Stopped under the other path of the same folder.
    ASSERT_EQ(NodeMonitor::StopWatching(alias, &first), B_OK);
    EXPECT_EQ(NodeMonitor::CountWatches(&first), 0);
    EXPECT_EQ(KernelWatches(), before);
    EXPECT_EQ(NodeMonitor::StopWatching(folder, &first), B_BAD_VALUE);
}

TEST_F(NodeMonitorTest, HandlersMayChangeWatchesWhileReceiving)
{
    const std::string folder = Folder("folder"), other = Folder("other");
    Fence fence(root + "/fence");

    Recorder first, stopped, witness;
    auto doomed = std::make_unique<Recorder>();
    first.onMessage = [&](Message &) {
        if (first.messages.size() != 1)
            return;
        EXPECT_EQ(NodeMonitor::StopWatching(folder, &first), B_OK);
        EXPECT_EQ(NodeMonitor::WatchDirectory(other, &first), B_OK);
        NodeMonitor::StopWatching(&stopped);
        doomed.reset(); // stops its own watches as it goes
    };
    for (Handler *handler :
         std::initializer_list<Handler *>{&first, &stopped, doomed.get(), &witness})
        ASSERT_EQ(NodeMonitor::WatchDirectory(folder, handler), B_OK);

    MakeFile(folder + "/x");
    MakeFile(folder + "/y");
    ASSERT_TRUE(fence.Pass());
    EXPECT_EQ(Summary(first), std::vector<std::string>{"created x"});
    EXPECT_TRUE(stopped.messages.empty());
    EXPECT_EQ(Summary(witness), (std::vector<std::string>{"created x", "created y"}));

    MakeFile(other + "/z");
    WaitFor(first, B_ENTRY_CREATED, "z");
    EXPECT_EQ(NodeMonitor::CountWatches(&first), 1);

    // The usual answer to a folder going away: stop watching it, there and then.
    witness.onMessage = [&](Message &message) {
        if (Opcode(message) == B_ENTRY_REMOVED && Text(message, "name") == "folder") {
            EXPECT_EQ(NodeMonitor::StopWatching(Text(message, "path"), &witness), B_OK);
        }
    };
    fs::remove_all(folder);
    WaitFor(witness, B_ENTRY_REMOVED, "folder");
    EXPECT_EQ(NodeMonitor::CountWatches(&witness), 0);
}

TEST_F(NodeMonitorTest, NamesAreBytes)
{
    const std::string folder = Folder("folder");
    Recorder recorder;
    ASSERT_EQ(NodeMonitor::WatchDirectory(folder, &recorder), B_OK);

    const std::string newline = "two\nlines", invalid = "bad\xff\xfe utf-8";
    const std::string longest(255, 'L'), renamed(255, 'R');
    for (const std::string &name : {newline, invalid, longest}) {
        MakeFile(folder + "/" + name);
        const Message created = WaitFor(recorder, B_ENTRY_CREATED, name);
        EXPECT_EQ(Text(created, "path"), folder + "/" + name);
        EXPECT_EQ(Number(created, "node"), int64_t(StatOf(folder + "/" + name).st_ino));
    }
    fs::rename(folder + "/" + longest, folder + "/" + renamed);
    const Message moved = WaitFor(recorder, B_ENTRY_MOVED, renamed);
    EXPECT_EQ(Text(moved, "from name"), longest);
    EXPECT_EQ(Text(moved, "path"), folder + "/" + renamed);

    // QTemporaryDir cannot remove names that are not UTF-8.
    NodeMonitor::StopWatching(&recorder);
    fs::remove_all(folder);
}

TEST_F(NodeMonitorTest, RefusesWhatCannotBeWatched)
{
    WriteFileBytes(root + "/file", "");
    fs::create_symlink("loop", root + "/loop");
    Recorder recorder;

    EXPECT_EQ(NodeMonitor::WatchDirectory(root + "/missing", &recorder), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(NodeMonitor::WatchDirectory(root + "/file", &recorder), B_NOT_A_DIRECTORY);
    EXPECT_EQ(NodeMonitor::WatchDirectory(root + "/loop", &recorder), B_LINK_LIMIT);
    EXPECT_EQ(NodeMonitor::WatchDirectory(root + "/" + std::string(256, 'n'), &recorder),
              B_NAME_TOO_LONG);
    EXPECT_EQ(NodeMonitor::CountWatches(&recorder), 0);
    EXPECT_EQ(NodeMonitor::StopWatching(root, &recorder), B_BAD_VALUE);
}

TEST_F(NodeMonitorTest, RefusesAFolderItMayNotRead)
{
    if (UnprivilegedRerun::Delegated())
        return;
    const std::string locked = Folder("locked");
    chmod(locked.c_str(), 0);
    Recorder recorder;
    EXPECT_EQ(NodeMonitor::WatchDirectory(locked, &recorder), B_PERMISSION_DENIED);
    EXPECT_EQ(NodeMonitor::CountWatches(&recorder), 0);
    chmod(locked.c_str(), 0700);
}

TEST_F(NodeMonitorTest, AnOverflowingQueueTellsEveryHandler)
{
    const long limit = QueueLimit();
    if (limit <= 0 || limit > 100000)
        GTEST_SKIP() << "the inotify queue limit (" << limit << ") is too large to overflow here";

    const QTemporaryDir scratch = ScratchFolder();
    ASSERT_TRUE(scratch.isValid());
    const std::string fast = fs::canonical(scratch.path().toStdString());
    const std::string busy = fast + "/busy", quiet = fast + "/quiet";
    fs::create_directories(busy);
    fs::create_directories(quiet);
    Recorder busyWatcher, quietWatcher;
    ASSERT_EQ(NodeMonitor::WatchDirectory(busy, &busyWatcher), B_OK);
    ASSERT_EQ(NodeMonitor::WatchDirectory(quiet, &quietWatcher), B_OK);

    // One event per link, none read until the loop runs.
    for (long i = 0; i <= limit; i++)
        ASSERT_EQ(symlink("x", (busy + "/" + std::to_string(i)).c_str()), 0);

    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            return !quietWatcher.messages.empty() && !busyWatcher.messages.empty()
                   && Opcode(busyWatcher.messages.back()) == kEventsLost;
        },
        kWaitMs));
    ASSERT_EQ(Summary(quietWatcher), std::vector<std::string>{"lost"});
    EXPECT_EQ(Number(quietWatcher.messages[0], "device"), int32_t(StatOf(quiet).st_dev));
    EXPECT_EQ(Number(quietWatcher.messages[0], "directory"), int64_t(StatOf(quiet).st_ino));
    EXPECT_EQ(Number(busyWatcher.messages.back(), "directory"), int64_t(StatOf(busy).st_ino));
}
