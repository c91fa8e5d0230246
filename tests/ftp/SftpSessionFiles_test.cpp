// SFTP sessions beside the FTP ones: "<name>.sftp" with the same six keys in the same order,
// made owner-only, listed and read by kind; an FTP session of the same name and its file
// stay exactly as they were.

#include "TempHome.h"
#include "ftp/FtpSession.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;
using kestrin::FtpSession;
using Kind = kestrin::FtpSession::Kind;

TEST(SftpSessionFiles, BothKindsAreKeptListedReadAndRemovedApart)
{
    TempHome home;
    const std::string folder = home.ConfigDir() + "/Kestrin";
    struct Case
    {
        Kind kind;
        const char *name, *port, *file, *bytes, *saved;
    };
    const Case cases[] = {
        {Kind::Ftp, "site", "21", "site.ftp",
         "Host=h.example\nPort=21\nUser=me\nPass=pw\nRemoteDir=/pub\nLocalDir=/tmp\n", "site"},
        {Kind::Sftp, "site", "22", "site.sftp",
         "Host=h.example\nPort=22\nUser=me\nPass=pw\nRemoteDir=/pub\nLocalDir=/tmp\n", "site.sftp"},
        {Kind::Sftp, "a.b", "2222", "a.b.sftp",
         "Host=h.example\nPort=2222\nUser=me\nPass=pw\nRemoteDir=/pub\nLocalDir=/tmp\n",
         "a.b.sftp"},
    };
    for (const Case &each : cases) {
        FtpSession session;
        session.kind = each.kind;
        session.name = each.name;
        session.host = "h.example";
        session.port = each.port;
        session.user = "me";
        session.pass = "pw";
        session.remoteDir = "/pub";
        session.localDir = "/tmp";
        ASSERT_TRUE(session.Write()) << each.file;
        EXPECT_EQ(ReadFileBytes(folder + "/" + each.file), each.bytes) << each.file;
        EXPECT_EQ(fs::status(folder + "/" + each.file).permissions(), fs::perms(0600)) << each.file;
        EXPECT_EQ(FtpSession::KindOf(each.file), each.kind) << each.file;
        EXPECT_EQ(session.SavedPlace(), each.saved) << each.file;
        EXPECT_EQ(FtpSession::FileOfSavedPlace(each.saved), each.file) << each.file;
        const FtpSession read = FtpSession::Read(each.file);
        EXPECT_EQ(read.kind, each.kind) << each.file;
        EXPECT_EQ(read.name, each.name) << each.file;
        EXPECT_EQ(read.port, each.port) << each.file;
    }
    EXPECT_EQ(FtpSession::List(), std::vector<std::string>{"site"});
    const std::vector<std::string> sftp = FtpSession::List(Kind::Sftp);
    EXPECT_EQ(std::set<std::string>(sftp.begin(), sftp.end()),
              (std::set<std::string>{"site", "a.b"}));
    EXPECT_FALSE(FtpSession::KindOf("site.sftp.bak"));
    EXPECT_FALSE(FtpSession::IsSessionFile("site.sftp"));
    // A folder's path and a session that is not stored name no session.
    EXPECT_EQ(FtpSession::FileOfSavedPlace("gone.sftp"), "");

    // Removing the SFTP session leaves the FTP one and what Kestrin keeps of it.
    WriteFileBytes(folder + "/site.ftp.tls", "Tls=Required\n");
    ASSERT_TRUE(FtpSession::Remove("site.sftp"));
    EXPECT_FALSE(fs::exists(folder + "/site.sftp"));
    EXPECT_EQ(ReadFileBytes(folder + "/site.ftp"), cases[0].bytes);
    EXPECT_TRUE(fs::exists(folder + "/site.ftp.tls"));
}
