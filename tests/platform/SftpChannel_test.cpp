// What a pane and a transfer ask of an SFTP server, against OpenSSH's sshd
// on 127.0.0.1 serving this machine's own folders, so every answer is
// checked against the files themselves.

#include "SshdServer.h"
#include "TempHome.h"
#include "platform/SftpChannel.h"
#include "platform/SshSession.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>
#include <utime.h>

namespace fs = std::filesystem;
using platform::SftpChannel;
using platform::SftpEntry;
using platform::SshHostKey;
using platform::SshSession;

namespace {

class SftpChannelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        server.PrepareHome(home, SshdServer::Trust::Key);
        std::string why;
        ASSERT_EQ(session.Connect("127.0.0.1",
                                  uint16_t(server.Port()),
                                  SshdServer::User(),
                                  20000,
                                  &why),
                  B_OK)
            << why;
        ASSERT_TRUE(session.AuthenticateWithKeys(nullptr)) << session.LastError();
        ASSERT_EQ(channel.Open(), B_OK) << channel.Error();
        remote = server.Scratch();
        local = home.Root() + "/local";
        fs::create_directories(local);
    }

    static std::string RandomBytes(size_t size)
    {
        std::mt19937 generator(size);
        std::string bytes(size, '\0');
        for (char &byte : bytes)
            byte = char(generator());
        return bytes;
    }

    TempHome home;
    SshdServer server;
    SshSession session;
    SftpChannel channel{session};
    std::string remote;
    std::string local;
};

} // namespace

TEST_F(SftpChannelTest, ListsAndChangesEntriesAsTheyAreOnDisk)
{
    WriteFileBytes(remote + "/a b.txt", "hello");
    chmod((remote + "/a b.txt").c_str(), 0640);
    const utimbuf times{1000000000, 1200000000};
    utime((remote + "/a b.txt").c_str(), &times);
    fs::create_directories(remote + "/sub/deeper");
    fs::create_symlink("a b.txt", remote + "/link");

    std::vector<SftpEntry> entries;
    ASSERT_EQ(channel.List(remote, &entries), B_OK) << channel.Error();
    std::sort(entries.begin(), entries.end(), [](auto &a, auto &b) { return a.name < b.name; });
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].name, "a b.txt");
    EXPECT_EQ(entries[0].kind, SftpEntry::Kind::File);
    EXPECT_EQ(entries[0].size, 5u);
    EXPECT_EQ(entries[0].modified, 1200000000);
    EXPECT_EQ(entries[0].accessed, 1000000000);
    EXPECT_EQ(entries[0].mode, mode_t(0640));
    EXPECT_EQ(entries[1].name, "link");
    EXPECT_EQ(entries[1].kind, SftpEntry::Kind::Link);
    EXPECT_EQ(entries[1].linkTarget, "a b.txt");
    EXPECT_EQ(entries[2].kind, SftpEntry::Kind::Folder);

    SftpEntry entry;
    EXPECT_EQ(channel.Stat(remote + "/missing", &entry), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(channel.List(remote + "/missing", &entries), B_ENTRY_NOT_FOUND);
    ASSERT_EQ(channel.Stat(remote + "/link", &entry), B_OK);
    EXPECT_EQ(entry.kind, SftpEntry::Kind::Link) << "a link is not followed";

    ASSERT_EQ(channel.MakeFolder(remote + "/made", 0750), B_OK);
    EXPECT_EQ(fs::status(remote + "/made").permissions() & fs::perms::all,
              fs::perms(0750) & ~fs::perms(umask(umask(0))));
    EXPECT_NE(channel.MakeFolder(remote + "/made", 0750), B_OK);
    ASSERT_EQ(channel.Rename(remote + "/a b.txt", remote + "/made/c.txt"), B_OK);
    EXPECT_EQ(ReadFileBytes(remote + "/made/c.txt"), "hello");
    ASSERT_EQ(channel.SetMode(remote + "/made/c.txt", 0604), B_OK);
    EXPECT_EQ(fs::status(remote + "/made/c.txt").permissions() & fs::perms::all, fs::perms(0604));
    ASSERT_EQ(channel.SetTimes(remote + "/made/c.txt", 1300000000, 1400000000), B_OK);
    struct stat info = {};
    stat((remote + "/made/c.txt").c_str(), &info);
    EXPECT_EQ(info.st_mtime, 1400000000);
    EXPECT_EQ(info.st_atime, 1300000000);
    ASSERT_EQ(channel.MakeLink("made/c.txt", remote + "/second"), B_OK);
    EXPECT_EQ(fs::read_symlink(remote + "/second"), "made/c.txt");

    EXPECT_NE(channel.RemoveFolder(remote + "/sub"), B_OK) << "a folder that holds entries stays";
    EXPECT_TRUE(fs::exists(remote + "/sub/deeper"));
    ASSERT_EQ(channel.RemoveFolder(remote + "/sub/deeper"), B_OK);
    ASSERT_EQ(channel.RemoveFile(remote + "/made/c.txt"), B_OK);
    EXPECT_FALSE(fs::exists(remote + "/made/c.txt"));

    std::string absolute;
    ASSERT_EQ(channel.RealPath(".", &absolute), B_OK);
    EXPECT_TRUE(fs::is_directory(absolute)) << absolute;
}

TEST_F(SftpChannelTest, TransfersByteForByteResumesAndStopsInStep)
{
    // Sizes around the chunk and the reads kept in flight.
    for (size_t size : {size_t(0), size_t(1), size_t(65536), size_t(3 * 1024 * 1024 + 7)}) {
        const std::string bytes = RandomBytes(size);
        const std::string name = "/f" + std::to_string(size);
        WriteFileBytes(remote + name, bytes);
        ASSERT_EQ(channel.Download(remote + name, local + name, 0, nullptr), B_OK)
            << channel.Error();
        EXPECT_EQ(ReadFileBytes(local + name), bytes) << size;
        ASSERT_EQ(channel.Upload(local + name, remote + name + ".up", 0, 0600, nullptr), B_OK)
            << channel.Error();
        EXPECT_EQ(ReadFileBytes(remote + name + ".up"), bytes) << size;
    }

    // Resumed from what arrived, both ways.
    const std::string bytes = RandomBytes(2 * 1024 * 1024 + 3);
    WriteFileBytes(remote + "/big", bytes);
    WriteFileBytes(local + "/big", bytes.substr(0, 1000000));
    ASSERT_EQ(channel.Download(remote + "/big", local + "/big", 1000000, nullptr), B_OK);
    EXPECT_EQ(ReadFileBytes(local + "/big"), bytes);
    WriteFileBytes(remote + "/big.up", bytes.substr(0, 777777));
    ASSERT_EQ(channel.Upload(local + "/big", remote + "/big.up", 777777, 0600, nullptr), B_OK);
    EXPECT_EQ(ReadFileBytes(remote + "/big.up"), bytes);

    // Stopped after the first chunk: the answers still on their way are
    // taken, and the channel goes on answering in step.
    fs::remove(local + "/big");
    uint64_t told = 0;
    EXPECT_EQ(channel.Download(remote + "/big",
                               local + "/big",
                               0,
                               [&](uint64_t done) {
                                   told = done;
                                   return false;
                               }),
              B_CANCELED);
    EXPECT_EQ(fs::file_size(local + "/big"), told);
    EXPECT_LT(told, bytes.size());
    std::vector<SftpEntry> entries;
    EXPECT_EQ(channel.List(remote, &entries), B_OK) << channel.Error();
    EXPECT_EQ(channel.Download(remote + "/big", local + "/big", told, nullptr), B_OK);
    EXPECT_EQ(ReadFileBytes(local + "/big"), bytes);
}
