// The main window with a pane on OpenSSH's sshd: a stored SFTP session
// opened in the focused pane, back and forth through its history on the
// same connection, Ctrl+Shift+F back to the local folder, and the pane kept
// in the profile by its session file and connected again at start-up.

#include "ServerPanes.h"
#include "SshdServer.h"

#include "ftp/FtpSession.h"

namespace {

class SftpPanesTest : public ServerPaneFixture
{
protected:
    void SetUp() override
    {
        if (!fServer.Unavailable().empty())
            GTEST_SKIP() << fServer.Unavailable();
        fServer.PrepareHome(fHome, SshdServer::Trust::KeyAndHost);
        TwoPanesOnLocal();
        fs::create_directories(fServer.Scratch() + "/inner");
        WriteFileBytes(fServer.Scratch() + "/down.txt", "down");
        kestrin::FtpSession session;
        session.kind = kestrin::FtpSession::Kind::Sftp;
        session.name = "box";
        session.host = "127.0.0.1";
        session.port = std::to_string(fServer.Port());
        session.user = SshdServer::User();
        session.remoteDir = fServer.Scratch();
        ASSERT_TRUE(session.Write());
    }

    SshdServer fServer;
};

} // namespace

TEST_F(SftpPanesTest, ConnectGoBackAndForthDisconnectAndComeBackAtStartUp)
{
    Start();
    OpenSession(0, "box.sftp");
    const std::string top = "sftp: " + fServer.Scratch();
    ASSERT_TRUE(HeaderIs(0, top)) << Header(0);
    SelectIn(0, "inner");
    QTest::keyClick(List(0), Qt::Key_Return);
    ASSERT_TRUE(HeaderIs(0, top + "/inner")) << Header(0);
    QTest::keyClick(List(0), Qt::Key_Left, Qt::AltModifier);
    EXPECT_TRUE(HeaderIs(0, top)) << Header(0);
    QTest::keyClick(List(0), Qt::Key_Right, Qt::AltModifier);
    EXPECT_TRUE(HeaderIs(0, top + "/inner")) << Header(0);

    ExpectKeptAndConnectedAgain("box.sftp", top, [&] {
        QTest::keyClick(List(0), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    });
}

// F3 on a file of the server shows it as on an FTP pane; F4 still says why
// it cannot edit there.
TEST_F(SftpPanesTest, F3ViewsAServersFileFromATemporaryCopy)
{
    Start();
    OpenSession(0, "box.sftp");
    ASSERT_TRUE(HeaderIs(0, "sftp: " + fServer.Scratch())) << Header(0);
    ExpectViewedFromATemporaryCopy("down.txt", "down");

    QTest::keyClick(List(0), Qt::Key_F4);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_NE(fAlerts.Shown()[0].text.find("SFTP server"), std::string::npos);
}
