// Explicit TLS against a real vsftpd that requires it for logins and data and
// refuses data connections that do not resume the control connection's
// session; and against a plain one that refuses AUTH TLS.

#include "CallbackLog.h"
#include "RealServers.h"
#include "TempHome.h"
#include "ftp/clsFTP.h"
#include "platform/SocketInterrupt.h"

#include <QTest>
#include <atomic>
#include <gtest/gtest.h>
#include <random>
#include <thread>

using kestrin::clsFTP;
using kestrin::FtpTls;

namespace {

constexpr unsigned kTimeout = 20000;

std::string RandomBytes(size_t size)
{
    std::mt19937 generator(28);
    std::string bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(generator());
    return bytes;
}

class FtpTlsVsftpd : public ::testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        if (!fServer.Unavailable().empty())
            GTEST_SKIP() << fServer.Unavailable();
    }

    bool Passive() const { return GetParam(); }
    std::string Upload() const { return fServer.Root() + "/upload"; }

    VsftpdServer fServer{{.tls = true}};
    CallbackLog fLog;
    clsFTP fFtp{"127.0.0.1", fServer.Port(), nullptr, 0, kTimeout, &CallbackLog::Record, &fLog};
};

} // namespace

TEST_P(FtpTlsVsftpd, LogsInListsAndMovesFilesInTls)
{
    // The server takes no login in clear.
    EXPECT_EQ(fFtp.Connect("anonymous", "kestrin@", nullptr), 530);

    // The certificate as the user sees it: the conversation's tests.
    int asked = 0;
    fFtp.UseTls(FtpTls::Choice::Required, [&](const platform::TlsCertificate &certificate) {
        asked++;
        return certificate.fingerprint == fServer.Fingerprint();
    });
    ASSERT_EQ(fFtp.Connect("anonymous", "kestrin@", nullptr), 0) << fFtp.ReplyText();
    EXPECT_EQ(fFtp.Tls().Outcome(), FtpTls::State::Secured);
    EXPECT_TRUE(fFtp.Tls().ProtectsData());
    EXPECT_EQ(asked, 1);
    for (const char *line : {"AUTH TLS\r\n", "PBSZ 0\r\n", "PROT P\r\n"})
        EXPECT_TRUE(fLog.HasText(line)) << line;

    const std::string bytes = RandomBytes(3 * 1024 * 1024 + 17);
    const std::string scratch = fServer.Scratch();
    WriteFileBytes(scratch + "/big.bin", bytes);
    ASSERT_EQ(fFtp.ChangeDir("upload"), 250);
    EXPECT_EQ(fFtp.Upload((scratch + "/big.bin").c_str(), "big.bin", true, Passive()), 0)
        << fFtp.ReplyText();
    EXPECT_TRUE(ReadFileBytes(Upload() + "/big.bin") == bytes);
    EXPECT_EQ(fFtp.Download("big.bin", scratch.c_str(), "copy.bin", true, Passive()), 0)
        << fFtp.ReplyText();
    EXPECT_TRUE(ReadFileBytes(scratch + "/copy.bin") == bytes);
    EXPECT_EQ(fFtp.UploadBuffer("one\ntwo\n", 8, "small.txt", false, Passive()), 0);
    char *listing = nullptr;
    ASSERT_EQ(fFtp.List(nullptr, &listing, Passive()), 0) << fFtp.ReplyText();
    ASSERT_NE(listing, nullptr);
    const std::string text = listing;
    clsFTP::DisposeBuffer(&listing);
    EXPECT_NE(text.find("big.bin"), std::string::npos);
    EXPECT_NE(text.find("small.txt"), std::string::npos);
    EXPECT_EQ(fFtp.Disconnect(), 221);

    // Every data connection resumed the session (vsftpd refuses the others
    // with 522), and the server saw the files whole.
    // A reply, not the digits of a transfer rate ("522274.16Kbyte/sec").
    EXPECT_EQ(fServer.Logged("\"522 "), 0u) << fServer.ProtocolLog();
    EXPECT_EQ(fServer.Logged("OK UPLOAD"), 2u);
    EXPECT_EQ(fServer.Logged("OK DOWNLOAD"), 1u);
}

INSTANTIATE_TEST_SUITE_P(Modes,
                         FtpTlsVsftpd,
                         ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool> &info) {
                             return info.param ? "Passive" : "Active";
                         });

// A server that refuses AUTH TLS: "required" ends the login before anything
// of it is sent; "if offered" logs in in clear and says so.
TEST(FtpTls, RefusedTlsIsNeverSilent)
{
    struct Row
    {
        FtpTls::Choice choice;
        int code;
        FtpTls::State state;
        size_t passwordsSent;
        const char *told;
    };
    const Row rows[] = {
        {FtpTls::Choice::Required,
         FtpTls::kNotOffered,
         FtpTls::State::Off,
         0,
         "The server refused TLS (530), which the session requires: not logging in, no "
         "password sent."},
        {FtpTls::Choice::IfOffered,
         0,
         FtpTls::State::Refused,
         1,
         "The server refused TLS (530): this connection, password included, is not encrypted."},
        {FtpTls::Choice::Off, 0, FtpTls::State::Off, 1, nullptr},
    };
    for (const Row &row : rows) {
        VsftpdServer server({.askPassword = true});
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        CallbackLog log;
        clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kTimeout, &CallbackLog::Record, &log);
        ftp.UseTls(row.choice);
        EXPECT_EQ(ftp.Connect("anonymous", "kestrin@", nullptr), row.code) << row.told;
        EXPECT_EQ(ftp.Tls().Outcome(), row.state);
        if (row.told != nullptr) {
            EXPECT_TRUE(log.HasText(row.told)) << row.told;
        }
        EXPECT_EQ(log.HasText("AUTH TLS\r\n"), row.choice != FtpTls::Choice::Off);
        ftp.Leave();
        EXPECT_EQ(server.Logged("\"PASS "), row.passwordsSent) << server.ProtocolLog();
        if (row.code != 0) {
            EXPECT_EQ(server.Logged("\"USER "), 0u);
        }
    }
}

// The sockets of a TLS transfer belong to the worker's interrupt as plain
// ones do: a stop ends a read or write that waits on a slow server at once.
TEST(FtpTls, AStopCutsATransferWaitingOnTheServer)
{
    VsftpdServer server({.bytesPerSecond = 128 * 1024, .tls = true});
    if (!server.Unavailable().empty())
        GTEST_SKIP() << server.Unavailable();
    const size_t size = 32 * 1024 * 1024;
    const std::string scratch = server.Scratch();
    WriteFileBytes(scratch + "/big", RandomBytes(size));
    WriteFileBytes(server.Root() + "/upload/big", RandomBytes(size));
    for (const bool download : {true, false}) {
        platform::SocketInterrupt interrupt;
        std::atomic<int> moved{0};
        std::atomic<int> result{-1};
        std::thread worker([&] {
            platform::SocketInterrupt::Scope scope(&interrupt);
            const auto progress = [](int code, int count, const char *, void *data) {
                if (code >= 0)
                    static_cast<std::atomic<int> *>(data)->store(count);
                return 1;
            };
            // Far longer than the test may take: only the stop ends it.
            clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, 600000, progress, &moved);
            ftp.UseTls(FtpTls::Choice::Required, [&](const platform::TlsCertificate &c) {
                return c.fingerprint == server.Fingerprint();
            });
            if (ftp.Connect("anonymous", "kestrin@", nullptr) != 0 || ftp.ChangeDir("upload") != 250)
                return;
            result = download ? ftp.Download("big", scratch.c_str(), "down", true, true)
                              : ftp.Upload((scratch + "/big").c_str(), "up", true, true);
        });
        EXPECT_TRUE(QTest::qWaitFor([&] { return moved > 0; }, 60000)) << download;
        interrupt.Trigger();
        worker.join();
        EXPECT_NE(result, 0) << download;
        EXPECT_LT(size_t(moved.load()), size) << download;
    }
}
