// A session whose password is in the desktop keyring, used as a user would:
// the pane logs in with the keyring's password and so do the download and
// the upload it starts, while the session's file holds no password.

#include "PrivateKeyring.h"
#include "RealServers.h"
#include "ServerPanes.h"

#include "ftp/FtpSession.h"
#include "ftp/SessionPassword.h"
#include "widgets/StatusLog.h"

namespace {

class FtpKeyringTest : public ServerPaneFixture
{
protected:
    void SetUp() override
    {
        if (!fKeyring.Unavailable().empty())
            GTEST_SKIP() << fKeyring.Unavailable();
        if (!fServer.Unavailable().empty())
            GTEST_SKIP() << fServer.Unavailable();
        TwoPanesOnLocal();
        WriteFileBytes(Local() + "/up.txt", "up");
        fs::create_directories(Pub());
        WriteFileBytes(Pub() + "/down.txt", "down");
        kestrin::FtpSession session;
        session.name = "site";
        session.host = "127.0.0.1";
        session.port = std::to_string(fServer.Port());
        session.user = "kestrin";
        session.remoteDir = "/pub";
        session.passwordInKeyring = true;
        ASSERT_EQ(kestrin::SessionPassword::Keep(session, "secret"), "");
        ASSERT_TRUE(session.Write());
    }
    std::string Pub() const { return fServer.Root() + "/pub"; }

    PrivateKeyring fKeyring;
    PyftpdlibServer fServer;
};

} // namespace

TEST_F(FtpKeyringTest, ThePaneAndItsTransfersLogInWithTheKeyringsPassword)
{
    const std::string sessionFile = fHome.ConfigDir() + "/Kestrin/site.ftp";
    EXPECT_EQ(ReadFileBytes(sessionFile),
              "Host=127.0.0.1\nPort=" + std::to_string(fServer.Port())
                  + "\nUser=kestrin\nPass=\nRemoteDir=/pub\nLocalDir=\n");

    kestrin::KestrinWindow &window = Start();
    OpenSession(0, "site.ftp");
    ASSERT_TRUE(WaitFor([&] { return List(0)->FindItem("down.txt") > 0; }, 30000))
        << window.Panes()[0]->Log()->toPlainText().toStdString();

    SelectIn(0, "down.txt");
    QTest::keyClick(List(0), Qt::Key_F5);
    EXPECT_TRUE(WaitFor([&] { return ReadFileBytes(Local() + "/down.txt") == "down"; }, 30000));

    window.FocusPane(window.Panes()[1]);
    SelectIn(1, "up.txt");
    QTest::keyClick(List(1), Qt::Key_F5);
    EXPECT_TRUE(WaitFor([&] { return ReadFileBytes(Pub() + "/up.txt") == "up"; }, 30000));
    EXPECT_TRUE(fAlerts.Shown().empty()) << fAlerts.Shown().front().text;
}
