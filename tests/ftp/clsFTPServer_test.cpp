// Every operation against a real vsftpd on 127.0.0.1, in passive and in
// active mode; the password paths against pyftpdlib.

#include "CallbackLog.h"
#include "RealServers.h"
#include "TempHome.h"
#include "ftp/clsFTP.h"

#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>

using kestrin::clsFTP;

namespace {

constexpr unsigned kTimeout = 10000;

std::string RandomBytes(size_t size)
{
    std::mt19937 generator(4711);
    std::string bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(generator());
    return bytes;
}

bool Exists(const std::string &path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

class FtpVsftpd : public ::testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        if (!fServer.Unavailable().empty())
            GTEST_SKIP() << fServer.Unavailable();
        ASSERT_EQ(fFtp.Connect("anonymous", "kestrin@", nullptr), 0) << fFtp.ReplyText();
    }
    void TearDown() override { fFtp.Disconnect(); }

    bool Passive() const { return GetParam(); }
    std::string Upload() const { return fServer.Root() + "/upload"; }

    VsftpdServer fServer;
    CallbackLog fLog;
    clsFTP fFtp{"127.0.0.1", fServer.Port(), nullptr, 0, kTimeout, &CallbackLog::Record, &fLog};
};

} // namespace

TEST_P(FtpVsftpd, FolderCommandsKeepTheirReplyRules)
{
    EXPECT_TRUE(fFtp.IsConnected());
    EXPECT_EQ(fFtp.MakeDir("upload/sub"), 0);
    EXPECT_TRUE(Exists(Upload() + "/sub"));
    EXPECT_EQ(fFtp.MakeDir("missing/sub"), 550);

    // CWD answers 250, which ChangeDir does not count as success.
    EXPECT_EQ(fFtp.ChangeDir("upload/sub"), 250);
    std::string path;
    EXPECT_EQ(fFtp.PrintDir(&path), 0);
    EXPECT_EQ(path, Upload() + "/sub");
    EXPECT_EQ(fFtp.ChangeDir(".."), 250);
    EXPECT_TRUE(fLog.HasText("CDUP\r\n"));
    EXPECT_EQ(fFtp.ChangeDir(""), 0);
    EXPECT_EQ(fFtp.PrintDir(&path), 0);
    EXPECT_EQ(path, Upload());
    EXPECT_EQ(fFtp.ChangeDir("missing"), 550);
    // Judged on the failed CWD before it, not on its own 257.
    EXPECT_EQ(fFtp.PrintDir(&path), 550);

    WriteFileBytes(Upload() + "/old", "x");
    EXPECT_EQ(fFtp.RenameFile("old", "new"), 0);
    EXPECT_TRUE(Exists(Upload() + "/new"));
    EXPECT_EQ(fFtp.RenameFile("gone", "other"), 550);
    EXPECT_EQ(fFtp.DeleteFile("new"), 0);
    EXPECT_FALSE(Exists(Upload() + "/new"));
    EXPECT_EQ(fFtp.DeleteFile("new"), 550);
    EXPECT_EQ(fFtp.RemoveDir("sub"), 0);
    EXPECT_FALSE(Exists(Upload() + "/sub"));

    EXPECT_EQ(fFtp.Disconnect(), 221);
    EXPECT_FALSE(fFtp.IsConnected());
    // A client connects again after a disconnect.
    EXPECT_EQ(fFtp.Connect("anonymous", "kestrin@", nullptr), 0);
}

TEST_P(FtpVsftpd, FilesTravelBothWaysByteForByte)
{
    const std::string bytes = RandomBytes(3 * 1024 * 1024 + 17);
    const std::string local = fServer.Scratch() + "/big.bin";
    WriteFileBytes(local, bytes);
    ASSERT_EQ(fFtp.ChangeDir("upload"), 250);

    EXPECT_EQ(fFtp.Upload(local.c_str(), "big.bin", true, Passive()), 0) << fFtp.ReplyText();
    EXPECT_TRUE(fLog.HasText("Sending " + std::to_string(bytes.size()) + " bytes to server."));
    EXPECT_TRUE(ReadFileBytes(Upload() + "/big.bin") == bytes);
    ASSERT_FALSE(fLog.calls.empty());

    fLog.calls.clear();
    const std::string target = fServer.Scratch();
    EXPECT_EQ(fFtp.Download("big.bin", (target + "/").c_str(), "copy.bin", true, Passive()), 0)
        << fFtp.ReplyText();
    EXPECT_TRUE(ReadFileBytes(target + "/copy.bin") == bytes);
    EXPECT_TRUE(fLog.HasText("Read " + std::to_string(bytes.size()) + " bytes from server."));
    int last = -1;
    for (const auto &call : fLog.calls) {
        if (call.code >= 0) {
            EXPECT_GE(call.code, last);
            last = call.code;
        }
    }
    EXPECT_EQ(last, 100);

    EXPECT_EQ(fFtp.UploadBuffer("line one\nline two\n", 18, "small.txt", false, Passive()), 0);
    EXPECT_EQ(ReadFileBytes(Upload() + "/small.txt"), "line one\nline two\n");
    char *buffer = nullptr;
    int size = 0;
    EXPECT_EQ(fFtp.DownloadBuffer(&buffer, &size, "small.txt", true, Passive()), 0);
    EXPECT_EQ(std::string(buffer, size_t(size)), "line one\nline two\n");
    clsFTP::DisposeBuffer(&buffer);

    char *listing = nullptr;
    EXPECT_EQ(fFtp.List(nullptr, &listing, Passive()), 0);
    ASSERT_NE(listing, nullptr);
    const std::string text = listing;
    clsFTP::DisposeBuffer(&listing);
    EXPECT_NE(text.find("big.bin"), std::string::npos);
    EXPECT_NE(text.find("small.txt"), std::string::npos);
    EXPECT_NE(text.back(), '\n');
    EXPECT_EQ(fFtp.MakeDir("empty"), 0);
    EXPECT_EQ(fFtp.List("empty", &listing, Passive()), 0);
    EXPECT_EQ(listing, nullptr);
}

TEST_P(FtpVsftpd, FailedTransfersLeaveTheSessionUsable)
{
    const std::string scratch = fServer.Scratch();
    EXPECT_EQ(fFtp.Download("missing", scratch.c_str(), "m", true, Passive()), 550);
    EXPECT_TRUE(fLog.HasText("Exception: 550 - Error downloading file."));

    // Local names that would leave the target folder are refused.
    WriteFileBytes(Upload() + "/f", "data");
    for (const char *name : {"../escape", "..", "a/b"}) {
        fLog.calls.clear();
        EXPECT_EQ(fFtp.Download("upload/f", scratch.c_str(), name, true, Passive()), 7) << name;
        EXPECT_TRUE(fLog.HasText("Error opening local file."));
        EXPECT_TRUE(fLog.HasText("ABOR\r\n"));
    }
    EXPECT_FALSE(Exists(scratch + "/../escape"));

    fLog.calls.clear();
    EXPECT_EQ(fFtp.Upload((scratch + "/nothing").c_str(), "upload/n", true, Passive()), 7);
    EXPECT_TRUE(fLog.HasText("Error opening local file."));
    EXPECT_EQ(fFtp.Upload((scratch + "/nothing").c_str(), "missing/n", true, Passive()), 553);

    // After all that the control connection still answers in step.
    EXPECT_EQ(fFtp.ChangeDir("upload"), 250);
    char *buffer = nullptr;
    int size = 0;
    EXPECT_EQ(fFtp.DownloadBuffer(&buffer, &size, "f", true, Passive()), 0);
    EXPECT_EQ(std::string(buffer, size_t(size)), "data");
    clsFTP::DisposeBuffer(&buffer);
}

TEST_P(FtpVsftpd, ZeroFromTheCallbackStopsDownloadsButNotUploads)
{
    const std::string bytes = RandomBytes(1024 * 1024);
    const std::string scratch = fServer.Scratch();
    WriteFileBytes(scratch + "/src", bytes);
    fLog.progressAnswer = 0;
    EXPECT_EQ(fFtp.Upload((scratch + "/src").c_str(), "upload/up", true, Passive()), 0);
    EXPECT_TRUE(ReadFileBytes(Upload() + "/up") == bytes);

    fLog.calls.clear();
    fFtp.Download("upload/up", scratch.c_str(), "down", true, Passive());
    EXPECT_EQ(fLog.ProgressCalls(), 1);
    const auto partial = ReadFileBytes(scratch + "/down");
    ASSERT_TRUE(partial.has_value());
    EXPECT_LT(partial->size(), bytes.size());
    // The server's reply to the cut transfer was read: the next command is in step.
    EXPECT_EQ(fFtp.ChangeDir("upload"), 250);
}

INSTANTIATE_TEST_SUITE_P(Modes,
                         FtpVsftpd,
                         ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool> &info) {
                             return info.param ? "Passive" : "Active";
                         });

TEST(FtpPyftpdlib, LoginWithPassword)
{
    PyftpdlibServer server;
    if (!server.Unavailable().empty())
        GTEST_SKIP() << server.Unavailable();
    CallbackLog log;
    clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kTimeout, &CallbackLog::Record, &log);
    EXPECT_EQ(ftp.Connect("kestrin", "wrong", nullptr), 530);
    EXPECT_TRUE(log.HasText("Exception: 530 - Error connecting to server."));
    EXPECT_FALSE(ftp.IsConnected());
    EXPECT_EQ(ftp.Connect("kestrin", nullptr, nullptr), 331);
    EXPECT_EQ(ftp.SendPass("secret"), 0);
    EXPECT_EQ(ftp.Disconnect(), 221);
    EXPECT_EQ(ftp.Connect("kestrin", "secret", nullptr), 0);
    EXPECT_EQ(ftp.Disconnect(), 221);
}
