// The main window with a pane on a real vsftpd: 602 and 125, the titles of
// transfers and the pane listing again after one, and the pane kept in the
// profile as its session and connected again at start-up.

#include "RealServers.h"
#include "ServerPanes.h"

#include "ftp/FtpSession.h"
#include "panes/FtpSource.h"
#include "support/TestArchives.h"
#include "widgets/StatusLog.h"

#include <QSignalSpy>

namespace {

class FtpPanesTest : public ServerPaneFixture
{
protected:
    void SetUp() override
    {
        if (!fServer.Unavailable().empty())
            GTEST_SKIP() << fServer.Unavailable();
        TwoPanesOnLocal();
        WriteFileBytes(Local() + "/up.txt", "up");
        WriteFileBytes(Upload() + "/down.txt", "down");
        kestrin::FtpSession session;
        session.name = "site";
        session.host = "127.0.0.1";
        session.port = std::to_string(fServer.Port());
        session.user = "anonymous";
        session.remoteDir = Upload();
        ASSERT_TRUE(session.Write());
    }
    std::string Upload() const { return fServer.Root() + "/upload"; }
    kestrin::KestrinWindow &StartOnServer(size_t pane)
    {
        kestrin::KestrinWindow &window = Start();
        OpenSession(pane, "site.ftp");
        return window;
    }

    VsftpdServer fServer;
};

} // namespace

// A download for F3 that brings nothing opens no viewer and leaves no folder.
TEST_F(FtpPanesTest, F3ViewsAServersFileFromATemporaryCopy)
{
    WriteFileBytes(Upload() + "/notes.txt", "remote words\n");
    WriteFileBytes(Upload() + "/gone.txt", "soon gone\n");
    kestrin::KestrinWindow &window = StartOnServer(0);
    ASSERT_TRUE(WaitFor([&] { return List(0)->FindItem("gone.txt") > 0; }));
    ExpectViewedFromATemporaryCopy("notes.txt", "remote words\n");

    fs::remove(Upload() + "/gone.txt");
    SelectIn(0, "gone.txt");
    QTest::keyClick(List(0), Qt::Key_F3);
    auto *pending = window.findChild<kestrin::ViewFromServer *>();
    ASSERT_NE(pending, nullptr);
    const std::string unused = pending->Folder();
    EXPECT_TRUE(WaitFor([&] { return CopyTitle().isEmpty() && !fs::exists(unused); }));
    EXPECT_EQ(Viewer(), nullptr);
    EXPECT_FALSE(fAlerts.Shown().empty()) << "the failed download says so";
}

TEST_F(FtpPanesTest, ConnectTransferDisconnectAndComeBackAtStartUp)
{
    kestrin::KestrinWindow &window = StartOnServer(0);
    ASSERT_TRUE(WaitFor([&] { return Header(0) == "ftp: " + Upload(); }));
    ASSERT_TRUE(WaitFor([&] { return List(0)->FindItem("down.txt") > 0; }));

    // Out of the server into the other pane, and from it onto the server;
    // the server's pane lists again once each transfer window is gone.
    SelectIn(0, "down.txt");
    QTest::keyClick(List(0), Qt::Key_F5);
    EXPECT_EQ(CopyTitle(), "Download");
    ASSERT_TRUE(WaitFor([] { return CopyTitle().isEmpty(); }));
    window.FocusPane(window.Panes()[1]);
    SelectIn(1, "up.txt");
    QSignalSpy relisted(List(0), &kestrin::DirView::ListingFinished);
    QTest::keyClick(List(1), Qt::Key_F5);
    EXPECT_EQ(CopyTitle(), "Upload");
    EXPECT_TRUE(relisted.wait(15000));

    // The focused pane leaves the server for the folder it stood in.
    ExpectKeptAndConnectedAgain("site", "ftp: " + Upload(), [&] {
        window.FocusPane(window.Panes()[0]);
        platform::Message disconnect(kestrin::kCmdDisconnectFtp);
        window.MessageReceived(disconnect);
    });
}

// Packing or unpacking into a pane on the server goes through a work folder
// and lands on the server, never in the local folder of the remote path;
// the work folder goes with the copy window. What the server cannot take
// (a move off it) is refused before any window opens.
TEST_F(FtpPanesTest, PackingAndUnpackingIntoAServerPaneLandOnTheServer)
{
    WriteTestArchive(Local() + "/bundle.zip", "zip", {{"inner.txt", "inner"}});
    kestrin::KestrinWindow &window = StartOnServer(1);
    ASSERT_TRUE(WaitFor([&] { return List(1)->FindItem("down.txt") > 0; }));

    window.FocusPane(window.Panes()[0]);
    SelectIn(0, "up.txt");
    QTest::keyClick(List(0), Qt::Key_F5, Qt::ControlModifier);
    EXPECT_EQ(CopyTitle(), "Packing");
    ASSERT_TRUE(WaitFor([] { return CopyTitle().isEmpty(); }));

    window.FocusPane(window.Panes()[1]);
    SelectIn(1, "down.txt");
    QTest::keyClick(List(1), Qt::Key_F6);
    EXPECT_EQ(CopyTitle(), "");
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "Move");
    EXPECT_TRUE(fs::exists(Upload() + "/down.txt"));

    window.FocusPane(window.Panes()[0]);
    SelectIn(0, "bundle.zip");
    QTest::keyClick(List(0), Qt::Key_Return);
    ASSERT_TRUE(WaitFor([&] { return List(0)->FindItem("inner.txt") > 0; }));
    List(0)->Select(List(0)->FindItem("inner.txt"));
    QTest::keyClick(List(0), Qt::Key_F5);
    EXPECT_EQ(CopyTitle(), "Unpacking");
    ASSERT_TRUE(WaitFor([] { return CopyTitle().isEmpty(); }));
    EXPECT_EQ(fAlerts.Count(), 1u) << fAlerts.Shown().back().text;

    EXPECT_EQ(ReadFileBytes(Upload() + "/inner.txt"), "inner");
    EXPECT_TRUE(fs::is_regular_file(Upload() + "/up.txt.zip"));
    EXPECT_FALSE(fs::exists(Local() + Upload())) << "nothing under the remote path's local twin";
    const fs::path work = fHome.TransferWork();
    EXPECT_TRUE(!fs::exists(work) || fs::is_empty(work));
    ASSERT_TRUE(WaitFor([&] { return List(1)->FindItem("up.txt.zip") > 0; }));
}

// Tab goes from a server's pane straight to the other pane, as between two
// folders: its log is no stop on the way, in either direction.
TEST_F(FtpPanesTest, TabGoesFromAServersPaneToTheOtherPane)
{
    kestrin::KestrinWindow &window = StartOnServer(1);
    ASSERT_TRUE(WaitFor([&] { return List(1)->FindItem("down.txt") > 0; }));
    ASSERT_TRUE(window.Panes().at(1)->Log()->isVisible());
    const struct
    {
        size_t from;
        Qt::Key key;
        size_t to;
    } rows[] = {{1, Qt::Key_Tab, 0},
                {0, Qt::Key_Tab, 1},
                {1, Qt::Key_Backtab, 0},
                {0, Qt::Key_Backtab, 1}};
    for (const auto &row : rows) {
        List(row.from)->setFocus();
        ASSERT_TRUE(WaitFor([&] { return QApplication::focusWidget() == List(row.from); }));
        QTest::keyClick(QApplication::focusWidget(), row.key);
        EXPECT_EQ(QApplication::focusWidget(), List(row.to))
            << row.from << " -> " << row.to << ": "
            << (QApplication::focusWidget()
                    ? QApplication::focusWidget()->objectName().toStdString()
                    : "none");
    }
}

// Back and Forward on a server go through the pane's connection while it
// lasts, and make one anew, straight to the folder kept, after the pane has
// left the server.
TEST_F(FtpPanesTest, BackAndForwardOnAServerKeepTheConnection)
{
    fs::create_directories(Upload() + "/inner");
    StartOnServer(0);
    const auto conversation = [&]() -> const kestrin::FtpConversation * {
        const auto *server = dynamic_cast<const kestrin::FtpSource *>(&List(0)->Source());
        return server != nullptr ? &server->Conversation() : nullptr;
    };
    const auto keyTo = [&](Qt::Key key, const std::string &header) {
        QTest::keyClick(List(0), key, Qt::AltModifier);
        EXPECT_TRUE(HeaderIs(0, header)) << Header(0) << " instead of " << header;
    };
    ASSERT_TRUE(WaitFor([&] { return List(0)->FindItem("inner") > 0; }));
    const kestrin::FtpConversation *first = conversation();
    SelectIn(0, "inner");
    QTest::keyClick(List(0), Qt::Key_Return);
    ASSERT_TRUE(WaitFor([&] { return Header(0) == "ftp: " + Upload() + "/inner"; }));

    keyTo(Qt::Key_Left, "ftp: " + Upload());
    EXPECT_EQ(conversation(), first);
    // The place gone back to speaks through the same conversation: its
    // lines reach the log once, not once more for each place followed.
    const auto log = [&] { return fKestrin->Window()->Panes().at(0)->Log()->toPlainText(); };
    const size_t before = log().count("CWD ");
    keyTo(Qt::Key_Right, "ftp: " + Upload() + "/inner");
    EXPECT_EQ(log().count("CWD "), before + 1) << log().toStdString();
    keyTo(Qt::Key_Left, "ftp: " + Upload());
    keyTo(Qt::Key_Left, Local());
    EXPECT_EQ(conversation(), nullptr);
    keyTo(Qt::Key_Right, "ftp: " + Upload());
    keyTo(Qt::Key_Right, "ftp: " + Upload() + "/inner");
    EXPECT_TRUE(
        WaitFor([&] { return List(0)->FindItem("down.txt") < 0 && List(0)->CountItems() > 0; }));
}
