#include "ftp/FtpSession.h"

#include "TempHome.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace kestrin;

namespace {

FtpSession Named(const std::string &name)
{
    FtpSession session;
    session.name = name;
    return session;
}

class FtpSessionTest : public ::testing::Test
{
protected:
    std::string PathOf(const std::string &fileName) const
    {
        return fHome.ConfigDir() + "/Kestrin/" + fileName;
    }

    TempHome fHome;
};

TEST_F(FtpSessionTest, OnlyNamesEndingExactlyInFtpAreSessions)
{
    ASSERT_TRUE(Named("x").Write());
    for (const char *name : {"site.ftp.bak", "site.FTP", "a.b.ftp", "plain"})
        WriteFileBytes(PathOf(name), "Host=h\n");
    std::vector<std::string> names = FtpSession::List();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"a.b", "x"}));
}

TEST_F(FtpSessionTest, WrittenOwnerOnlyInKeyOrderAndReadBack)
{
    FtpSession session = Named("work");
    session.host = "127.0.0.1";
    session.port = "2121";
    session.user = "me";
    session.pass = "secret";
    session.remoteDir = "/pub";
    ASSERT_TRUE(session.Write());
    EXPECT_EQ(ReadFileBytes(PathOf("work.ftp")),
              "Host=127.0.0.1\nPort=2121\nUser=me\nPass=secret\nRemoteDir=/pub\nLocalDir=\n");
    struct stat st {};
    ASSERT_EQ(stat(PathOf("work.ftp").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);

    const FtpSession back = FtpSession::Read("work.ftp");
    EXPECT_EQ(back.name, "work");
    EXPECT_EQ(back.host, "127.0.0.1");
    EXPECT_EQ(back.PortNumber(), 2121u);
    EXPECT_EQ(back.pass, "secret");
    EXPECT_EQ(back.remoteDir, "/pub");

    ASSERT_TRUE(FtpSession::Remove("work.ftp"));
    EXPECT_TRUE(FtpSession::List().empty());
}

TEST_F(FtpSessionTest, AMissingKeyRepeatsTheTextReadBeforeIt)
{
    ASSERT_TRUE(Named("s").Write());
    WriteFileBytes(PathOf("odd.ftp"), "Port=21x\nPass=pw\n");
    const FtpSession odd = FtpSession::Read("odd.ftp");
    EXPECT_EQ(odd.host, "odd");
    EXPECT_EQ(odd.port, "21x");
    EXPECT_EQ(odd.user, "21x");
    EXPECT_EQ(odd.pass, "pw");
    EXPECT_EQ(odd.localDir, "pw");
    EXPECT_EQ(odd.PortNumber(), 21u);
}

} // namespace
