// A session whose password moves into the desktop keyring: its file keeps
// the six keys with "Pass" empty and nothing left of the old password, the
// session's options (our own file beside it) say where the password is, and
// removing the session forgets the keyring's password too.

#include "PrivateKeyring.h"
#include "TempHome.h"
#include "ftp/FtpSession.h"
#include "ftp/SessionOptions.h"
#include "ftp/SessionPassword.h"

#include <QTest>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;
using kestrin::FtpSession;
using kestrin::SessionPassword;

namespace {

std::set<std::string> FilesIn(const std::string &folder)
{
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

} // namespace

TEST(FtpSessionKeyring, ThePasswordMovesIntoTheKeyringAndBackWithoutATrace)
{
    TempHome home;
    PrivateKeyring keyring;
    if (!keyring.Unavailable().empty())
        GTEST_SKIP() << keyring.Unavailable();
    const std::string folder = home.ConfigDir() + "/Kestrin";
    FtpSession session;
    session.name = "site";
    session.host = "ftp.example.org";
    session.user = "me";
    session.pass = "a long old secret";
    session.remoteDir = "/pub";
    ASSERT_TRUE(session.Write());
    // Options of a later build, which this one keeps as they are.
    WriteFileBytes(folder + "/site.ftp.kestrin", "Later=yes\n");

    ASSERT_EQ(SessionPassword::Keep(session, "secret"), "");
    session.passwordInKeyring = true;
    ASSERT_TRUE(session.Write());
    const std::string keyringFile
        = "Host=ftp.example.org\nPort=21\nUser=me\nPass=\nRemoteDir=/pub\n"
          "LocalDir=\n";
    EXPECT_EQ(ReadFileBytes(folder + "/site.ftp"), keyringFile);
    EXPECT_EQ(ReadFileBytes(folder + "/site.ftp.kestrin"), "Later=yes\nPasswordInKeyring=1\n");
    EXPECT_EQ(FilesIn(folder), (std::set<std::string>{"site.ftp", "site.ftp.kestrin"}));
    EXPECT_EQ(fs::status(folder + "/site.ftp").permissions(), fs::perms(0600));

    const FtpSession read = FtpSession::Read("site.ftp");
    EXPECT_TRUE(read.passwordInKeyring);
    EXPECT_EQ(read.pass, "");
    EXPECT_EQ(SessionPassword::Lookup(read).secret, "secret");
    // Saved again: still nothing of the password in the file.
    session.pass = "secret";
    ASSERT_TRUE(session.Write());
    EXPECT_EQ(ReadFileBytes(folder + "/site.ftp"), keyringFile);

    // Back into the file: the options say so, and a later save rewrites in
    // place again, as a plain session's file always was.
    session.passwordInKeyring = false;
    ASSERT_TRUE(session.Write());
    EXPECT_EQ(ReadFileBytes(folder + "/site.ftp"),
              "Host=ftp.example.org\nPort=21\nUser=me\nPass=secret\nRemoteDir=/pub\nLocalDir=\n");
    EXPECT_EQ(ReadFileBytes(folder + "/site.ftp.kestrin"), "Later=yes\n");
    EXPECT_FALSE(FtpSession::Read("site.ftp").passwordInKeyring);
    session.pass = "s";
    ASSERT_TRUE(session.Write());
    EXPECT_EQ(ReadFileBytes(folder + "/site.ftp"),
              "Host=ftp.example.org\nPort=21\nUser=me\nPass=s\ncret\nRemoteDir=/pub\nLocalDir=\n");

    // Removing a session removes its options and what the keyring kept.
    session.passwordInKeyring = true;
    ASSERT_TRUE(session.Write());
    ASSERT_TRUE(FtpSession::Remove("site.ftp"));
    EXPECT_EQ(FilesIn(folder), std::set<std::string>{});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !SessionPassword::Lookup(read).secret; }, 20000));
}
