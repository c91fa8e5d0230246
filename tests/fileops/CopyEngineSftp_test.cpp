// Downloads and uploads through the copy engine against OpenSSH's sshd on
// 127.0.0.1: trees both ways with their bits and times, the overwrite
// question on either side, a stop in the middle of a file, and a
// connection that drops in the middle of one.

#include "SftpCopyTest.h"
#include "UnprivilegedRerun.h"
#include "sftp/SftpQuestions.h"

using namespace kestrin;

namespace {

class CopyEngineSftp : public SftpCopyTest
{
protected:
    platform::Message Download(const std::string &folder,
                               const std::vector<std::string> &files,
                               const std::vector<std::string> &folders = {}) const
    {
        platform::Message request = SftpRequest(kMsgSftpDownload, folder);
        for (const std::string &file : files)
            request.AddString("FtpFile", file);
        for (const std::string &each : folders)
            request.AddString("FtpDir", each);
        return request;
    }

    platform::Message Upload(const std::string &folder, const std::vector<std::string> &paths) const
    {
        platform::Message request = SftpRequest(kMsgSftpUpload, folder);
        for (const std::string &path : paths)
            request.AddRef("refs", RefFor(path));
        return request;
    }

    std::string FirstError() const
    {
        return control.errors.empty() ? std::string() : control.errors[0].text;
    }
};

// Each entry below `root` with its permission bits and times to the second.
// A folder's access time is left out: every walk of it, this one included,
// sets it to the moment it was read.
std::map<std::string, std::string> Facts(const std::string &root)
{
    std::map<std::string, std::string> facts;
    for (const auto &entry : fs::recursive_directory_iterator(root)) {
        struct stat info = {};
        EXPECT_EQ(lstat(entry.path().c_str(), &info), 0);
        facts[fs::relative(entry.path(), root).string()] = std::to_string(info.st_mode & 07777)
                                                           + " "
                                                           + (S_ISDIR(info.st_mode)
                                                                  ? "-"
                                                                  : std::to_string(info.st_atime))
                                                           + " " + std::to_string(info.st_mtime);
    }
    return facts;
}

struct Bits
{
    const char *path;
    mode_t mode;
};

// Gives each of `rows` below `root` its bits and times of its own, a day
// apart from `when` on; the deepest first, so that setting a folder's bits
// never changes a time set already.
void SetBitsAndTimes(const std::string &root, const std::vector<Bits> &rows, time_t when)
{
    for (const Bits &row : rows) {
        ASSERT_EQ(chmod((root + row.path).c_str(), row.mode), 0);
        SetTimes(root + row.path, {{when + 7, 0}, {when, 0}});
        when += 86400;
    }
}

// A tree with bits and times of its own on every entry.
void MakeTree(const std::string &root)
{
    fs::create_directories(root + "/tree/sub/deeper");
    fs::create_directories(root + "/tree/empty");
    WriteFileBytes(root + "/top.txt", "top");
    WriteFileBytes(root + "/tree/big.bin", RandomBytes(3 * 1024 * 1024 + 17, 1));
    WriteFileBytes(root + "/tree/none", "");
    WriteFileBytes(root + "/tree/sub/deeper/c", RandomBytes(5000, 2));
    SetBitsAndTimes(root,
                    {{"/tree/sub/deeper/c", 0600},
                     {"/tree/sub/deeper", 0750},
                     {"/tree/sub", 0711},
                     {"/tree/none", 0444},
                     {"/tree/big.bin", 0755},
                     {"/tree/empty", 0700},
                     {"/tree", 0755},
                     {"/top.txt", 0640}},
                    1500000000);
}

// Gives the owner back every right below `root`, so that the test's
// folders can be removed by the user the bits bind.
void OpenUp(const std::string &root)
{
    fs::permissions(root, fs::perms::owner_all, fs::perm_options::add);
    for (const auto &entry : fs::recursive_directory_iterator(root))
        if (!entry.is_symlink())
            fs::permissions(entry.path(), fs::perms::owner_all, fs::perm_options::add);
}

} // namespace

TEST_F(CopyEngineSftp, TreesTravelBothWaysWithTheirBitsAndTimes)
{
    MakeTree(remote);
    // A host met for the first time is asked about; refused, it is the
    // end of the request without another word.
    fs::remove(home.Home() + "/.ssh/known_hosts");
    alerts.QueueAnswer(SftpQuestions::kDoNotConnect);
    Run(Download(remote, {"top.txt"}, {"tree"}), dest);
    EXPECT_TRUE(control.errors.empty()) << FirstError();
    EXPECT_TRUE(fs::is_empty(dest));
    alerts.Clear();
    alerts.QueueAnswer(SftpQuestions::kTrust);

    // Reading an entry sets its access time: the facts are taken before.
    std::map<std::string, std::string> facts = Facts(remote);
    Run(Download(remote, {"top.txt"}, {"tree"}), dest);
    EXPECT_TRUE(control.errors.empty()) << FirstError();
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0].title, "Host Key");
    EXPECT_EQ(Facts(dest), facts);
    EXPECT_EQ(Tree(dest), Tree(remote)) << "byte for byte, nothing else, no leftovers";
    // The bars count every byte of the tree.
    ASSERT_EQ(control.batches.size(), 1u);
    EXPECT_EQ(control.batches[0].text, "2 Files or Directories");
    int64_t bytes = 0;
    for (const auto &chunk : control.chunks)
        bytes += chunk.bytes;
    EXPECT_EQ(bytes, 3 + 3 * 1024 * 1024 + 17 + 5000);

    const std::string back = remote + "/back";
    fs::create_directory(back);
    facts = Facts(dest);
    Run(Upload(back, {dest + "/tree", dest + "/top.txt"}), dest);
    EXPECT_TRUE(control.errors.empty()) << FirstError();
    EXPECT_EQ(Facts(back), facts);
    EXPECT_EQ(Tree(back), Tree(dest));
}

TEST_F(CopyEngineSftp, ExistingTargetsOnEitherSideAreTheUsersQuestion)
{
    for (const char *name : {"a", "b"}) {
        WriteFileBytes(remote + "/" + name, std::string("remote ") + name);
        WriteFileBytes(src + "/" + name, std::string("local ") + name);
        WriteFileBytes(dest + "/" + name, std::string("old ") + name);
    }
    control.answers = {kSkip, kOverwrite};
    Run(Download(remote, {"a", "b"}), dest);
    ASSERT_EQ(control.questions.size(), 2u);
    EXPECT_EQ(control.questions[0].overwriteLine, remote + "/a");
    EXPECT_EQ(control.questions[0].withFileLine, dest + "/a");
    EXPECT_EQ(ReadFileBytes(dest + "/a"), "old a");
    EXPECT_EQ(ReadFileBytes(dest + "/b"), "remote b");

    control.answers = {kOverwrite, kSkip};
    Run(Upload(remote, {src + "/a", src + "/b"}), dest);
    ASSERT_EQ(control.questions.size(), 4u);
    EXPECT_EQ(control.questions[2].overwriteLine, src + "/a");
    EXPECT_EQ(control.questions[2].withFileLine, remote + "/a");
    EXPECT_EQ(control.questions[2].thirdLine.substr(0, 9), "8 Bytes  ") << "the server's file";
    EXPECT_EQ(ReadFileBytes(remote + "/a"), "local a");
    EXPECT_EQ(ReadFileBytes(remote + "/b"), "remote b");
    EXPECT_EQ(Tree(remote).size(), 2u) << "no leftovers";
    EXPECT_TRUE(control.errors.empty()) << FirstError();
}

TEST_F(CopyEngineSftp, AStopInTheMiddleOfAFileLeavesNothingBehind)
{
    const std::string bytes = RandomBytes(8 * 1024 * 1024, 3);
    WriteFileBytes(remote + "/big", bytes);
    WriteFileBytes(remote + "/after", "after");
    control.stopAfterChunks = 2;
    Run(Download(remote, {"big", "after"}), dest);
    EXPECT_TRUE(fs::is_empty(dest)) << "neither the partial file nor the next one";

    // A file the upload would have replaced stays as it was.
    WriteFileBytes(src + "/big", bytes);
    fs::create_directory(remote + "/back");
    WriteFileBytes(remote + "/back/big", "old");
    control.chunks.clear();
    control.answers = {kOverwrite};
    Run(Upload(remote + "/back", {src + "/big"}), dest);
    EXPECT_EQ(Tree(remote + "/back"), (std::map<std::string, std::string>{{"big", "old"}}));
    EXPECT_TRUE(control.errors.empty()) << FirstError();
}

TEST_F(CopyEngineSftp, ADroppedConnectionGoesOnWhereItBroke)
{
    const std::string bytes = RandomBytes(8 * 1024 * 1024, 4);
    WriteFileBytes(remote + "/big", bytes);
    // The server goes away once, a few blocks into the file.
    bool dropped = false;
    control.onChunk = [&](size_t count) {
        if (count == 3 && !dropped) {
            dropped = true;
            server.DropSessions();
        }
    };
    Run(Download(remote, {"big"}), dest);
    EXPECT_TRUE(dropped);
    EXPECT_TRUE(control.errors.empty()) << FirstError();
    EXPECT_TRUE(ReadFileBytes(dest + "/big") == bytes);
    EXPECT_EQ(Tree(dest).size(), 1u);

    fs::create_directory(remote + "/back");
    dropped = false;
    control.chunks.clear();
    Run(Upload(remote + "/back", {dest + "/big"}), dest);
    EXPECT_TRUE(dropped);
    EXPECT_TRUE(control.errors.empty()) << FirstError();
    EXPECT_TRUE(ReadFileBytes(remote + "/back/big") == bytes);
    EXPECT_EQ(Tree(remote + "/back").size(), 1u);
}

// Run by a user whom the bits bind (root is bound by none): read-only folders
// and files travel both ways with their bits and times, which only works if
// the bits are set once what they hold is in; and what the server refuses
// is said, and leaves nothing behind on either side.
TEST_F(CopyEngineSftp, AsAUserTheBitsBindReadOnlyTreesTravelAndARefusalIsSaid)
{
    if (UnprivilegedRerun::Delegated())
        return;
    const std::string tree = remote + "/tree";
    fs::create_directories(tree + "/shut/inner");
    WriteFileBytes(tree + "/shut/inner/data", RandomBytes(300000, 5));
    WriteFileBytes(tree + "/shut/mine", "mine");
    SetBitsAndTimes(tree,
                    {{"/shut/inner/data", 0444},
                     {"/shut/inner", 0555},
                     {"/shut/mine", 0400},
                     {"/shut", 0500}},
                    1400000000);
    std::map<std::string, std::string> facts = Facts(tree);
    Run(Download(tree, {}, {"shut"}), dest);
    EXPECT_TRUE(control.errors.empty()) << FirstError();
    EXPECT_EQ(Facts(dest), facts);
    EXPECT_EQ(Tree(dest), Tree(tree));
    const std::string back = remote + "/back";
    fs::create_directory(back);
    facts = Facts(dest);
    Run(Upload(back, {dest + "/shut"}), dest);
    EXPECT_TRUE(control.errors.empty()) << FirstError();
    EXPECT_EQ(Facts(back), facts);
    EXPECT_EQ(Tree(back), Tree(dest));

    // A folder the user may not write to, a file and a folder it may not read.
    const std::string locked = remote + "/locked";
    fs::create_directory(locked);
    WriteFileBytes(locked + "/kept", "kept");
    WriteFileBytes(remote + "/secret", "secret");
    fs::create_directories(remote + "/closed/in");
    WriteFileBytes(src + "/new", RandomBytes(100000, 6));
    fs::create_directories(src + "/folder/sub");
    WriteFileBytes(src + "/folder/sub/file", "file");
    ASSERT_EQ(chmod(locked.c_str(), 0555), 0);
    ASSERT_EQ(chmod((remote + "/secret").c_str(), 0), 0);
    ASSERT_EQ(chmod((remote + "/closed").c_str(), 0), 0);
    const std::string landing = home.Root() + "/landing";
    const struct
    {
        platform::Message request;
        std::string refused;
    } rows[] = {
        {Upload(locked, {src + "/new"}), locked + "/new"},
        {Upload(locked, {src + "/folder"}), locked + "/folder"},
        {Download(remote, {"secret"}), remote + "/secret"},
        {Download(remote, {}, {"closed"}), remote + "/closed"},
    };
    for (const auto &row : rows) {
        fs::create_directory(landing);
        control.errors.clear();
        Run(row.request, landing);
        ASSERT_EQ(control.errors.size(), 1u) << row.refused;
        EXPECT_NE(FirstError().find(row.refused), std::string::npos) << FirstError();
        EXPECT_NE(FirstError().find("permission denied"), std::string::npos) << FirstError();
        EXPECT_TRUE(fs::is_empty(landing)) << row.refused;
        EXPECT_EQ(Tree(locked), (std::map<std::string, std::string>{{"kept", "kept"}}));
        fs::remove_all(landing);
    }
    OpenUp(remote);
    OpenUp(dest);
}
