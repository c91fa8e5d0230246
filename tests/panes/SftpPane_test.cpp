// A pane on an SFTP server (OpenSSH's sshd): connecting, browsing, making,
// renaming, deleting trees and setting permissions with the pane's keys, the
// log of what was done, commands that cannot work yet saying so, and a
// server that says nothing never holding up the window.

#include "PaneTestSupport.h"
#include "SilentServer.h"
#include "SshdServer.h"
#include "support/TickGaps.h"
#include "support/UnprivilegedRerun.h"

#include "fileops/FileOpsMessages.h"
#include "ftp/FtpSession.h"
#include "panes/PathField.h"

#include <QApplication>
#include <QLineEdit>
#include <sys/stat.h>

using kestrin::DirPane;
using kestrin::DirView;

namespace {

class SftpPaneTest : public PaneFixture
{
protected:
    void SetUp() override
    {
        if (!fServer.Unavailable().empty())
            GTEST_SKIP() << fServer.Unavailable();
        PaneFixture::SetUp();
        fServer.PrepareHome(fHome, SshdServer::Trust::KeyAndHost);
        fs::create_directories(Remote() + "/sub/deep");
        MakeFile(Remote() + "/sub/deep/inner.txt", 10);
        MakeFile(Remote() + "/b.txt", 2048);
        MakeFile(Remote() + "/a.txt", 1024);
        StoreSftp("box", fServer.Port(), Remote());
    }
    std::string Remote() const { return fServer.Scratch(); }
    static void StoreSftp(const std::string &name, unsigned port, const std::string &remoteDir)
    {
        Store(name, port, remoteDir, SshdServer::User(), "", kestrin::FtpSession::Kind::Sftp);
    }

    SshdServer fServer;
};

} // namespace

TEST_F(SftpPaneTest, BrowsesMakesRenamesDeletesAndSetsPermissionsWithThePanesKeys)
{
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("box.sftp"); }));
    ASSERT_TRUE(WaitFor([&] { return Header() == "sftp: " + Remote() && !list.IsListing(); }))
        << Header();
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "sub", "a.txt", "b.txt"}));
    EXPECT_TRUE(pane.Log()->isVisible());
    EXPECT_EQ(list.Source().SavedPlace(), "box.sftp");
    EXPECT_EQ(list.Source().Place().kind, kestrin::TransferPlace::Kind::SftpFolder);
    EXPECT_EQ(list.Row(list.FindItem("b.txt"))->Size(), 2048);

    Select("sub");
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Return); }));
    EXPECT_EQ(Header(), "sftp: " + Remote() + "/sub");
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "deep"}));
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Backspace); }));
    EXPECT_EQ(Header(), "sftp: " + Remote());
    EXPECT_EQ(list.Row(list.CurrentSelection())->Name(), "sub");

    MakeFile(Remote() + "/c.txt");
    fs::create_symlink("sub", Remote() + "/link");
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F2); }));
    EXPECT_NE(list.FindItem("c.txt"), -1);
    EXPECT_TRUE(list.Row(list.FindItem("link"))->IsLink());

    // F7 (the window's New Folder) makes "New Folder" on the server;
    // Shift+F6 renames it in place.
    Key(Qt::Key_F7);
    ASSERT_FALSE(fWindow.messages.empty());
    EXPECT_EQ(fWindow.messages.back().what, kestrin::kMsgNewFolder);
    ASSERT_TRUE(Listed([&] { list.Commands().NewFolder(); }));
    ASSERT_TRUE(fs::is_directory(Remote() + "/New Folder"));
    Select("New Folder");
    Key(Qt::Key_F6, Qt::ShiftModifier);
    auto *editor = list.findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    editor->setText("made");
    ASSERT_TRUE(Listed([&] { QTest::keyClick(editor, Qt::Key_Return); }));
    EXPECT_TRUE(fs::is_directory(Remote() + "/made"));
    EXPECT_FALSE(fs::exists(Remote() + "/New Folder"));
    EXPECT_EQ(list.Row(list.CurrentSelection())->Name(), "made");
    EXPECT_NE(LogText().find("Renaming " + Remote() + "/New Folder to made"), std::string::npos);

    // Permissions on the marked rows, as the permissions window sends them.
    Select("a.txt");
    ASSERT_TRUE(Listed([&] { list.Commands().SetPermissions(0640); }));
    EXPECT_EQ(fs::status(Remote() + "/a.txt").permissions() & fs::perms::all, fs::perms(0640));
    EXPECT_EQ(list.Row(list.FindItem("a.txt"))->PermissionText().substr(1), "rw-r-----");

    // F8 asks the FTP pane's question, then deletes the whole tree.
    Select("sub");
    fAlerts.QueueAnswer(0); // Cancel
    Key(Qt::Key_F8);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].text,
              "Do you really want permanently delete the following files/folders:\n\tsub");
    EXPECT_TRUE(fs::exists(Remote() + "/sub/deep/inner.txt"));
    fAlerts.QueueAnswer(1); // Delete
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F8); }));
    EXPECT_FALSE(fs::exists(Remote() + "/sub"));
    EXPECT_EQ(list.FindItem("sub"), -1);
    fAlerts.Clear();

    // Get Info tells what the listing said of the entry.
    fs::permissions(Remote() + "/b.txt", fs::perms(0604));
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F2); }));
    Select("b.txt");
    EXPECT_TRUE(list.Commands().ShowPlaceInfo());
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "Get Info");
    for (const std::string &fact : {Remote() + "/b.txt\nKind: file\nSize: 2048 bytes\nModified: ",
                                    std::string("\nPermissions: -rw----r--")})
        EXPECT_NE(fAlerts.Shown()[0].text.find(fact), std::string::npos) << fAlerts.Shown()[0].text;
    fAlerts.Clear();
    // F5 asks for a download with the server's fields.
    Key(Qt::Key_F5);
    ASSERT_FALSE(fWindow.messages.empty());
    const platform::Message &download = fWindow.messages.back();
    EXPECT_EQ(download.what, kestrin::kMsgSftpDownload);
    EXPECT_EQ(Strings(download, "FtpPath"), std::vector<std::string>{Remote()});
    EXPECT_EQ(Strings(download, "FtpFile"), std::vector<std::string>{"b.txt"});
    EXPECT_EQ(Strings(download, "Session"), std::vector<std::string>{"box"});

    // A path on the same server, typed into the path field: a whole one, a
    // relative one, and an sftp:// address.
    QApplication::setActiveWindow(&pane);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&pane));
    const auto type = [&](const std::string &text) {
        pane.EditPath();
        pane.PathEdit()->clear();
        QTest::keyClicks(pane.PathEdit(), QString::fromStdString(text));
        QTest::keyClick(pane.PathEdit(), Qt::Key_Return);
    };
    const std::string address = "sftp://127.0.0.1:" + std::to_string(fServer.Port());
    const std::pair<std::string, std::string> typed[] = {{Remote() + "/made", "/made"},
                                                         {"..", ""},
                                                         {address + Remote() + "/made/", "/made"}};
    for (const auto &row : typed) {
        // Named apart: clang before 16 cannot capture a structured binding in a lambda.
        const std::string &text = row.first;
        const std::string &reached = row.second;
        ASSERT_TRUE(Listed([&] { type(text); })) << text;
        EXPECT_EQ(Header(), "sftp: " + Remote() + reached) << text;
    }
    EXPECT_TRUE(fAlerts.Shown().empty());

    ASSERT_TRUE(Listed([&] { pane.Disconnect(); }));
    EXPECT_EQ(list.Mode(), kestrin::kModeFolder);
    EXPECT_EQ(Header(), Folder());
    EXPECT_TRUE(fAlerts.Shown().empty());
}

// The log tells of the pane's connection: it keeps its lines from folder
// to folder, and starts afresh with another session, on the same server or
// on another kind of server.
TEST_F(SftpPaneTest, TheLogStartsAfreshWithEachConnection)
{
    DirPane &pane = Open();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("box.sftp"); }));
    ASSERT_TRUE(WaitFor([&] { return Header() == "sftp: " + Remote(); })) << Header();
    Select("sub");
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Return); }));
    EXPECT_EQ(Header(), "sftp: " + Remote() + "/sub");
    EXPECT_EQ(LogCount("Logged in as"), 1) << LogText();

    StoreSftp("other", fServer.Port(), Remote() + "/sub/deep");
    ASSERT_TRUE(Listed([&] { pane.DoFtp("other.sftp"); }));
    ASSERT_TRUE(WaitFor([&] { return Header() == "sftp: " + Remote() + "/sub/deep"; }))
        << Header();
    EXPECT_EQ(LogCount("Logged in as"), 1) << LogText();
    EXPECT_EQ(LogCount("Connecting to "), 1) << LogText();

    SilentServer silent(1);
    Store("plain", silent.Port(), "/");
    pane.DoFtp(kestrin::FtpSession::FileNameOf("plain"));
    ASSERT_TRUE(WaitFor([&] { return silent.Accepted() == 1; }));
    EXPECT_EQ(LogText().find("Logged in as"), std::string::npos) << LogText();
    ASSERT_TRUE(Listed([&] { pane.Disconnect(); }));
    EXPECT_TRUE(fAlerts.Shown().empty());
}

// A server that takes the connection and never says a word: the window
// goes on, and Disconnect returns at once and cuts the connection.
TEST_F(SftpPaneTest, ASilentServerNeverHoldsTheWindowAndDisconnectCutsIt)
{
    SilentServer silent(1);
    StoreSftp("box", silent.Port(), "/");
    DirPane &pane = Open();
    TickGaps gaps;
    pane.DoFtp("box.sftp");
    EXPECT_EQ(Header(), "sftp: Connecting...");
    ASSERT_TRUE(WaitFor([&] { return silent.Accepted() == 1; }));
    ASSERT_TRUE(Listed([&] { pane.Disconnect(); }));
    EXPECT_EQ(Header(), Folder());
    EXPECT_TRUE(WaitFor([&] { return silent.Closed() == 1; }));
    EXPECT_LT(gaps.Longest(), TickGaps::kBlockedMs);
    EXPECT_TRUE(fAlerts.Shown().empty());
}

// The server ends the pane's session while it is idle: the next command
// logs in again by itself and does what it was asked; the window goes on
// meanwhile.
TEST_F(SftpPaneTest, ADroppedSessionIsMadeAgainByTheNextCommand)
{
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("box.sftp"); }));
    ASSERT_TRUE(WaitFor([&] { return Header() == "sftp: " + Remote() && !list.IsListing(); }));
    const std::vector<std::string> top = {"..", "sub", "a.txt", "b.txt"};
    TickGaps gaps;
    TickGaps::OffTheWindowThread([&] { fServer.DropSessions(); });
    Select("sub");
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Return); }));
    EXPECT_EQ(Header(), "sftp: " + Remote() + "/sub");
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "deep"}));
    EXPECT_NE(LogText().find("The server ended the connection.\nConnecting to"),
              std::string::npos)
        << LogText();
    EXPECT_TRUE(fAlerts.Shown().empty());
    // Dropped again, then a refresh: the same.
    TickGaps::OffTheWindowThread([&] { fServer.DropSessions(); });
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Backspace); }));
    EXPECT_EQ(Header(), "sftp: " + Remote());
    EXPECT_EQ(RowNames(list), top);
    EXPECT_TRUE(fAlerts.Shown().empty());
    EXPECT_LT(gaps.Longest(), TickGaps::kBlockedMs);
}

// No agent and no key: the password is asked for each connection and used,
// and the session file never learns it; one the server refuses is said in
// the log and an alert, and not asked for again and again.
TEST_F(SftpPaneTest, AnAskedPasswordIsUsedButNeverStoredAndARefusedOneIsSaid)
{
    if (!fServer.PasswordUnavailable().empty())
        GTEST_SKIP() << fServer.PasswordUnavailable();
    fs::remove(fHome.Home() + "/.ssh/id_ed25519");
    const std::string file = kestrin::FtpSession::Folder() + "/box.sftp";
    const std::optional<std::string> stored = ReadFileBytes(file);
    ASSERT_TRUE(stored);
    const std::string refusal = "The server did not let " + SshdServer::User() + " in.";
    const struct
    {
        std::string answer;
        std::vector<std::string> alerts;
    } rows[] = {
        {"guess", {"Password", "Connect Failed"}},
        {SshdServer::Password(), {"Password"}},
    };
    for (const auto &row : rows) {
        fAlerts.Clear();
        fAlerts.QueueSecret(row.answer);
        DirPane &pane = Open();
        ASSERT_TRUE(Listed([&] { pane.DoFtp("box.sftp"); })) << row.answer;
        std::vector<std::string> titles;
        for (const auto &alert : fAlerts.Shown())
            titles.push_back(alert.title);
        EXPECT_EQ(titles, row.alerts) << row.answer;
        EXPECT_EQ(fAlerts.Shown()[0].text,
                  "The password of " + SshdServer::User() + " on 127.0.0.1 (port "
                      + std::to_string(fServer.Port()) + "):");
        if (row.alerts.size() > 1) {
            EXPECT_EQ(fAlerts.Shown()[1].text, refusal);
            EXPECT_NE(LogText().find(refusal), std::string::npos) << LogText();
        } else {
            EXPECT_EQ(Header(), "sftp: " + Remote());
            EXPECT_EQ(RowNames(*pane.List()),
                      (std::vector<std::string>{"..", "sub", "a.txt", "b.txt"}));
        }
        EXPECT_EQ(ReadFileBytes(file), stored) << row.answer;
        fPane.reset();
    }
}

// Run by a user whom the bits bind (root is bound by none): the pane browses
// as that user, and what the server refuses in a folder the user may not
// write to is said in the log, the folder left as it was.
TEST_F(SftpPaneTest, AsAUserTheBitsBindTheServersRefusalsAreSaidAndChangeNothing)
{
    if (UnprivilegedRerun::Delegated())
        return;
    const std::string locked = Remote() + "/locked";
    fs::create_directory(locked);
    MakeFile(locked + "/kept.txt", 4);
    ASSERT_EQ(chmod(locked.c_str(), 0555), 0);
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("box.sftp"); }));
    Select("locked");
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Return); }));
    EXPECT_EQ(Header(), "sftp: " + locked);
    const std::vector<std::string> rows = {"..", "kept.txt"};
    EXPECT_EQ(RowNames(list), rows);

    const auto rename = [&] {
        Select("kept.txt");
        Key(Qt::Key_F6, Qt::ShiftModifier);
        auto *editor = list.findChild<QLineEdit *>();
        ASSERT_NE(editor, nullptr);
        editor->setText("moved.txt");
        QTest::keyClick(editor, Qt::Key_Return);
    };
    const auto remove = [&] {
        Select("kept.txt");
        fAlerts.QueueAnswer(1); // Delete
        Key(Qt::Key_F8);
    };
    const struct
    {
        std::function<void()> command;
        std::string target;
        std::string said;
    } refused[] = {
        {[&] { list.Commands().NewFolder(); }, "/New Folder", "Making the folder "},
        {rename, "/kept.txt", "Renaming "},
        {remove, "/kept.txt", "Deleting "},
    };
    for (const auto &row : refused) {
        const std::string path = locked + row.target;
        ASSERT_TRUE(Listed(row.command)) << path;
        const std::string log = LogText();
        EXPECT_NE(log.find(row.said + path), std::string::npos) << log;
        EXPECT_NE(log.find("\n" + path + ": permission denied."), std::string::npos) << log;
        EXPECT_EQ(RowNames(list), rows) << path;
        std::vector<std::string> left;
        for (const auto &entry : fs::directory_iterator(locked))
            left.push_back(entry.path().filename().string());
        EXPECT_EQ(left, std::vector<std::string>{"kept.txt"}) << path;
    }
    ASSERT_EQ(chmod(locked.c_str(), 0755), 0);
}
