// The main window with a pane on OpenSSH's sshd: a stored SFTP session
// opened in the focused pane, back and forth through its history on the
// same connection, Ctrl+Shift+F back to the local folder, and the pane kept
// in the profile by its session file and connected again at start-up.

#include "MainWindowTestSupport.h"
#include "SshdServer.h"

#include "fileops/CopyWin.h"
#include "ftp/FtpMessages.h"
#include "ftp/FtpSession.h"
#include "mainwindow/ViewFromServer.h"
#include "panes/KsHeader.h"
#include "viewer/TextPager.h"
#include "viewer/ViewerWindow.h"

namespace {

class SftpPanesTest : public KestrinFixture
{
protected:
    void SetUp() override
    {
        if (!fServer.Unavailable().empty())
            GTEST_SKIP() << fServer.Unavailable();
        fHome.SetEnv("SSH_AUTH_SOCK", std::nullopt);
        fs::create_directories(Home() + "/.ssh");
        fs::copy_file(fServer.UserKey(), Home() + "/.ssh/id_ed25519");
        WriteFileBytes(Home() + "/.ssh/known_hosts", fServer.KnownHostsLine() + "\n");
        fs::create_directories(Local());
        fs::create_directories(fServer.Scratch() + "/inner");
        WriteFileBytes(fServer.Scratch() + "/down.txt", "down");
        Profile("NumPanes", "2");
        Profile("Pane0", Local());
        Profile("Pane1", Local());
        kestrin::FtpSession session;
        session.kind = kestrin::FtpSession::Kind::Sftp;
        session.name = "box";
        session.host = "127.0.0.1";
        session.port = std::to_string(fServer.Port());
        session.user = SshdServer::User();
        session.remoteDir = fServer.Scratch();
        ASSERT_TRUE(session.Write());
    }
    std::string Local() const { return fHome.Root() + "/local"; }
    std::string Header(size_t pane)
    {
        return fKestrin->Window()->Panes().at(pane)->Header()->Text();
    }
    bool HeaderIs(size_t pane, const std::string &header)
    {
        return WaitFor([&] { return Header(pane) == header && !List(pane)->IsListing(); });
    }
    void OpenSession(kestrin::KestrinWindow &window)
    {
        window.FocusPane(window.Panes()[0]);
        platform::Message open(kestrin::kMsgOpenFtpSession);
        open.AddString("session", "box.sftp");
        window.MessageReceived(open);
    }

    SshdServer fServer;
};

} // namespace

TEST_F(SftpPanesTest, ConnectGoBackAndForthDisconnectAndComeBackAtStartUp)
{
    kestrin::KestrinWindow &window = Start();
    OpenSession(window);
    const std::string top = "sftp: " + fServer.Scratch();
    ASSERT_TRUE(HeaderIs(0, top)) << Header(0);
    SelectIn(0, "inner");
    QTest::keyClick(List(0), Qt::Key_Return);
    ASSERT_TRUE(HeaderIs(0, top + "/inner")) << Header(0);
    QTest::keyClick(List(0), Qt::Key_Left, Qt::AltModifier);
    EXPECT_TRUE(HeaderIs(0, top)) << Header(0);
    QTest::keyClick(List(0), Qt::Key_Right, Qt::AltModifier);
    EXPECT_TRUE(HeaderIs(0, top + "/inner")) << Header(0);

    window.SaveSettings();
    EXPECT_EQ(ProfileValue("Pane0"), "box.sftp");
    EXPECT_EQ(ProfileValue("Pane1"), Local());

    QTest::keyClick(List(0), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(HeaderIs(0, Local())) << Header(0);
    EXPECT_FALSE(List(0)->Source().IsRemote());

    fKestrin.reset();
    Start();
    EXPECT_TRUE(List(0)->Source().IsRemote());
    EXPECT_TRUE(HeaderIs(0, top)) << Header(0);
    EXPECT_TRUE(fAlerts.Shown().empty());
}

// F3 on a file of the server shows it as on an FTP pane: downloaded with
// the copy window into a private temporary folder, which goes when the
// viewer closes; F4 still says why it cannot edit there.
TEST_F(SftpPanesTest, F3ViewsAServersFileFromATemporaryCopy)
{
    kestrin::KestrinWindow &window = Start();
    OpenSession(window);
    ASSERT_TRUE(HeaderIs(0, "sftp: " + fServer.Scratch())) << Header(0);
    const auto viewer = [&]() -> kestrin::ViewerWindow * {
        for (auto *each : window.findChildren<kestrin::ViewerWindow *>()) {
            if (each->isVisible())
                return each;
        }
        return nullptr;
    };
    SelectIn(0, "down.txt");
    QTest::keyClick(List(0), Qt::Key_F3);
    EXPECT_TRUE(fAlerts.Shown().empty());
    ASSERT_TRUE(WaitFor([&] { return viewer() != nullptr; }));
    kestrin::ViewerWindow *shown = viewer();
    EXPECT_EQ(shown->windowTitle(), "down.txt");
    ASSERT_NE(shown->TextView(), nullptr);
    EXPECT_TRUE(WaitFor([&] { return shown->TextView()->ShownRows().value(0) == "down"; }));
    auto *copy = shown->findChild<kestrin::ViewFromServer *>();
    ASSERT_NE(copy, nullptr);
    const std::string folder = copy->Folder();
    EXPECT_EQ(ReadFileBytes(folder + "/down.txt"), "down");
    EXPECT_FALSE(fs::exists(Local() + "/down.txt")) << "nothing lands in a pane's folder";
    shown->close();
    EXPECT_TRUE(WaitFor([&] { return !fs::exists(folder); }));
    EXPECT_TRUE(fAlerts.Shown().empty());

    QTest::keyClick(List(0), Qt::Key_F4);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_NE(fAlerts.Shown()[0].text.find("SFTP server"), std::string::npos);
}
