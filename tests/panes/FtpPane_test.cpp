// A pane on an FTP server: connecting, browsing, making, deleting and
// listing again on a real vsftpd; odd listings from a scripted server; a
// slow or silent server that must never hold up the window; and connections
// that are lost.

#include "PaneTestSupport.h"
#include "RealServers.h"
#include "ScriptedServer.h"
#include "SilentServer.h"
#include "support/TickGaps.h"

#include "fileops/FileOpsMessages.h"
#include "ftp/FtpSecurity.h"
#include "panes/PathField.h"

#include <QApplication>
#include <fcntl.h>
#include <sys/stat.h>

using kestrin::DirPane;
using kestrin::DirView;

namespace {

using FtpPaneTest = PaneFixture;

class FtpPaneVsftpd : public FtpPaneTest
{
protected:
    void SetUp() override
    {
        PaneFixture::SetUp();
        if (!fServer.Unavailable().empty())
            GTEST_SKIP() << fServer.Unavailable();
        fs::create_directories(Upload() + "/sub");
        MakeFile(Upload() + "/sub/inner.txt", 10);
        MakeFile(Upload() + "/b.txt", 2048);
        MakeFile(Upload() + "/a.txt", 1024);
        Store("site", fServer.Port(), Upload());
    }
    std::string Upload() const { return fServer.Root() + "/upload"; }

    VsftpdServer fServer;
};

} // namespace

TEST_F(FtpPaneVsftpd, ConnectsBrowsesAndListsAgainOnOneConnection)
{
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] {
        pane.DoFtp("site.ftp");
        EXPECT_EQ(Header(), "ftp: Connecting...");
    }));
    EXPECT_EQ(list.Mode(), kestrin::kModeFtp);
    EXPECT_EQ(Header(), "ftp: " + Upload());
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "sub", "a.txt", "b.txt"}));
    EXPECT_TRUE(pane.Log()->isVisible());
    EXPECT_EQ(LogCount("USER anonymous"), 1);
    EXPECT_EQ(LogCount("\nLIST"), 1);
    EXPECT_EQ(list.Source().SavedPlace(), "site");

    list.Select(list.FindItem("sub"));
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Return); }));
    EXPECT_EQ(Header(), "ftp: " + Upload() + "/sub");
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "inner.txt"}));
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Backspace); }));
    EXPECT_EQ(Header(), "ftp: " + Upload());
    EXPECT_EQ(list.Row(list.CurrentSelection())->Name(), "sub");
    EXPECT_EQ(LogCount("CDUP"), 1);

    MakeFile(Upload() + "/c.txt");
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F2); }));
    EXPECT_EQ(list.FindItem("c.txt"), 4);
    EXPECT_EQ(list.Row(list.CurrentSelection())->Name(), "sub");
    EXPECT_EQ(LogCount("USER anonymous"), 1);

    list.Select(list.FindItem("a.txt"));
    Key(Qt::Key_F4);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "Foo");
    EXPECT_EQ(fAlerts.Shown()[0].text, "Sorry can't view a file on an FTP server.");

    ASSERT_TRUE(Listed([&] { pane.Disconnect(); }));
    EXPECT_EQ(list.Mode(), kestrin::kModeFolder);
    EXPECT_EQ(Header(), Folder());
    EXPECT_FALSE(pane.Log()->isVisible());
}

// The path field: a stored session's name connects; on the server it holds
// the remote folder, and a path on the same server (relative, absolute or an
// ftp:// address) is entered; a local path or another server is refused
// with the reason, the field kept open.
TEST_F(FtpPaneVsftpd, ThePathFieldReachesSessionsAndPathsOnTheSameServer)
{
    DirPane &pane = Open();
    QApplication::setActiveWindow(&pane);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&pane));
    const auto type = [&](const std::string &text) {
        pane.EditPath();
        EXPECT_TRUE(WaitFor([&] { return QApplication::focusWidget() == pane.PathEdit(); }));
        QTest::keyClicks(pane.PathEdit(), QString::fromStdString(text));
        QTest::keyClick(pane.PathEdit(), Qt::Key_Return);
    };
    ASSERT_TRUE(Listed([&] { type("site"); }));
    EXPECT_EQ(Header(), "ftp: " + Upload());
    ASSERT_TRUE(Listed([&] { type("sub"); }));
    EXPECT_EQ(Header(), "ftp: " + Upload() + "/sub");
    EXPECT_EQ(RowNames(*pane.List()), (std::vector<std::string>{"..", "inner.txt"}));
    // A step on the same conversation: its log is followed once.
    EXPECT_EQ(LogCount("CWD " + Upload() + "/sub\n"), 1);
    pane.EditPath();
    EXPECT_EQ(pane.PathEdit()->text().toStdString(), Upload() + "/sub");
    ASSERT_TRUE(Listed([&] { type(Upload()); }));
    EXPECT_EQ(Header(), "ftp: " + Upload());
    const std::string address = "ftp://127.0.0.1:" + std::to_string(fServer.Port());
    ASSERT_TRUE(Listed([&] { type(address + Upload() + "/sub/"); }));
    EXPECT_EQ(Header(), "ftp: " + Upload() + "/sub");
    EXPECT_EQ(LogCount("USER anonymous"), 1);
    EXPECT_TRUE(fAlerts.Shown().empty());

    // A folder the server has not: it stays where it was, and says so once.
    ASSERT_TRUE(Listed([&] { type("gone"); }));
    EXPECT_EQ(Header(), "ftp: " + Upload() + "/sub");
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F2); }));
    type("~/x");
    type("ftp://localhost:" + std::to_string(fServer.Port()) + "/");
    ASSERT_EQ(fAlerts.Count(), 3u);
    EXPECT_EQ(fAlerts.Shown()[0].text,
              "The server did not enter \"" + Upload()
                  + "/sub/gone\": there is no such folder, or it may not be entered. The pane "
                    "stays in "
                  + Upload() + "/sub.");
    EXPECT_EQ(fAlerts.Shown()[1].text.rfind("This pane shows a folder on an FTP server", 0), 0u);
    EXPECT_EQ(fAlerts.Shown()[2].text,
              "\"localhost\" is another server than this pane's. Open its session with Ftp "
              "Connections.");
    EXPECT_TRUE(pane.PathEdit()->isVisible());
    QTest::keyClick(pane.PathEdit(), Qt::Key_Escape);
    EXPECT_FALSE(pane.PathEdit()->isVisible());
    EXPECT_EQ(Header(), "ftp: " + Upload() + "/sub");
    EXPECT_FALSE(pane.List()->IsListing());

    // A stored session's name opens that session, from any of its folders.
    ASSERT_TRUE(Listed([&] { type("site"); }));
    EXPECT_EQ(Header(), "ftp: " + Upload());
    EXPECT_EQ(fAlerts.Count(), 3u);
}

// A server without TLS: a session that would use it goes on in clear, and
// says so in the log and the header; one that wants none does not ask. A
// download request names the session, whose TLS choice the transfer takes.
TEST_F(FtpPaneVsftpd, AConnectionInClearIsNeverSilent)
{
    DirPane &pane = Open();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }));
    EXPECT_EQ(Header(), "ftp: " + Upload());
    EXPECT_EQ(pane.Header()->Note(), "not encrypted: the server refused TLS");
    EXPECT_EQ(LogCount("The server refused TLS (530): this connection, password included, is "
                       "not encrypted."),
              1);
    DirView &list = *pane.List();
    const platform::Message request = list.Source().Request(kestrin::kMsgFtpDownload,
                                                            {list.Row(list.FindItem("a.txt"))});
    EXPECT_EQ(Strings(request, "Session"), std::vector<std::string>{"site"});

    kestrin::FtpSecurity plain;
    plain.tls = kestrin::FtpTls::Choice::Off;
    ASSERT_TRUE(plain.Write("site"));
    pane.Log()->clear();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }));
    EXPECT_EQ(Header(), "ftp: " + Upload());
    EXPECT_EQ(pane.Header()->Note(), "");
    EXPECT_EQ(LogCount("AUTH TLS"), 0);
    EXPECT_EQ(LogCount("USER anonymous"), 1);
}

TEST_F(FtpPaneVsftpd, MakesFoldersAndDeletesFilesAndFullFolders)
{
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }));
    ASSERT_TRUE(Listed([&] { list.Commands().NewFolder(); }));
    EXPECT_TRUE(fs::is_directory(Upload() + "/New Folder"));
    EXPECT_EQ(list.Row(list.CurrentSelection())->Name(), "New Folder");
    ASSERT_TRUE(Listed([&] { list.Commands().NewFolder(); }));
    EXPECT_TRUE(fs::is_directory(Upload() + "/New Folder 2"));

    // "Sir?" first, then the server refuses the full folder and is asked
    // about it; both answered "Delete".
    list.Marked().Toggle(list.FindItem("sub"));
    list.Marked().Toggle(list.FindItem("a.txt"));
    list.Marked().Toggle(list.FindItem("New Folder"));
    fAlerts.QueueAnswer(1);
    fAlerts.QueueAnswer(1);
    ASSERT_TRUE(Listed([&] { list.Commands().Trash(); }));
    ASSERT_EQ(fAlerts.Count(), 2u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "Sir?");
    EXPECT_EQ(fAlerts.Shown()[0].text.rfind("Do you really want permanently delete", 0), 0u);
    EXPECT_EQ(fAlerts.Shown()[1].text,
              "The directory is not empty are you sure you want to delete it?");
    EXPECT_FALSE(fs::exists(Upload() + "/sub"));
    EXPECT_FALSE(fs::exists(Upload() + "/a.txt"));
    EXPECT_FALSE(fs::exists(Upload() + "/New Folder"));
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "New Folder 2", "b.txt"}));
}

TEST_F(FtpPaneVsftpd, AHundredThousandEntries)
{
    const std::string big = Upload() + "/big";
    fs::create_directories(big);
    for (int i = 0; i < 100000; i++)
        MakeFile(big + "/f" + std::to_string(i));
    Store("site", fServer.Port(), big);
    DirPane &pane = Open();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }, 60000));
    EXPECT_EQ(pane.List()->CountItems(), 100001);
}

TEST_F(FtpPaneTest, OddLinesAndNamesAreShownButNeverFetched)
{
    ScriptedServer server([](ScriptedServer::Session &s) {
        s.Send("220 hi\r\n");
        s.ReadLine(); // USER
        s.Send("230 in\r\n");
        s.AnswerFeatures();
        s.ReadLine(); // CWD /
        s.Send("250 ok\r\n");
        s.ReadLine(); // PWD
        s.Send("257 \"/\"\r\n");
        s.ReadLine(); // TYPE A
        s.Send("200 ok\r\n");
        platform::TcpSocket data;
        if (!s.SendPassiveData(&data))
            return;
        const std::string listing = "total 3\r\n"
                                    "-rw-r--r-- 1 u g 7 Jan  1  2020 good.txt\r\n"
                                    "this is not a listing line\r\n"
                                    "-rw-r--r-- 1 u g 5 Jan  1  2020 up/../../out\r\n"
                                    "drwxr-xr-x 1 u g 0 Jan  1  2020 sub\r\n";
        data.SendAll(listing.data(), listing.size());
        data.Close();
        s.Send("226 done\r\n");
        s.WaitForClose();
    });
    Store("site", server.Port(), "/");
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }));
    EXPECT_EQ(Header(), "ftp: /");
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"sub", "good.txt", "up/../../out"}));

    Key(Qt::Key_Plus);
    list.Marked().Toggle(0); // "sub", at "/" the first row
    Key(Qt::Key_F5);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_NE(fAlerts.Shown()[0].text.find("up/../../out"), std::string::npos);
    const platform::Message *request = fWindow.Last(kestrin::kMsgFtpDownload);
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(Strings(*request, "FtpPath"), std::vector<std::string>{"/"});
    EXPECT_EQ(Strings(*request, "Host"), std::vector<std::string>{"127.0.0.1"});
    int32_t port = 0;
    EXPECT_EQ(request->FindInt32("Port", &port), B_OK);
    EXPECT_EQ(port, int32_t(server.Port()));
    EXPECT_EQ(Strings(*request, "FtpFile"), std::vector<std::string>{"good.txt"});
    EXPECT_EQ(Strings(*request, "FtpDir"), std::vector<std::string>{"sub"});

    // What a transfer into the pane is planned on: the folder and the session.
    const kestrin::TransferPlace place = list.Source().Place();
    EXPECT_EQ(place.kind, kestrin::TransferPlace::Kind::FtpFolder);
    EXPECT_EQ(place.folder, "/");
    ASSERT_TRUE(place.server.has_value());
    EXPECT_EQ(place.server->name, "site");
    EXPECT_EQ(place.server->user, "anonymous");
    EXPECT_EQ(place.server->PortNumber(), server.Port());

    // Nothing is above "/".
    Key(Qt::Key_Backspace);
    EXPECT_FALSE(list.IsListing());
    EXPECT_EQ(Header(), "ftp: /");
    fPane.reset();
    server.Finish();
}

TEST_F(FtpPaneTest, SlowServerNeverHoldsTheWindowAndDisconnectReturnsAtOnce)
{
    // The greeting comes when the server has waited five seconds for a
    // client that, rightly, says nothing first.
    ScriptedServer slow([](ScriptedServer::Session &s) {
        s.ReadLine();
        s.Send("220 at last\r\n");
        s.ReadLine(); // USER
        s.Send("230 in\r\n");
        s.AnswerFeatures();
        s.ReadLine(); // CWD
        s.Send("250 ok\r\n");
        s.ReadLine(); // PWD
        s.Send("257 \"/pub\"\r\n");
        s.ReadLine(); // TYPE A
        s.Send("200 ok\r\n");
        s.ReadLine(); // PASV
        s.Send("502 no\r\n");
        s.ReadLine(); // PORT
        s.Send("500 no either\r\n");
        s.WaitForClose();
    });
    Store("site", slow.Port(), "/pub");
    DirPane &pane = Open();
    qint64 longestGap = 0;
    {
        TickGaps gaps;
        ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }));
        longestGap = gaps.Longest();
    }
    EXPECT_EQ(Header(), "ftp: /pub");
    EXPECT_TRUE(fAlerts.Shown().empty());
    // Waiting on the server would freeze the window for its five seconds.
    EXPECT_LT(longestGap, TickGaps::kBlockedMs);
    ASSERT_TRUE(Listed([&] { pane.Disconnect(); }));
    slow.Finish();

    // A server that never answers: Disconnect does not wait for it, and the
    // connection is cut rather than left to its minute of time-out.
    SilentServer silent(1);
    Store("site", silent.Port(), "/pub");
    pane.DoFtp("site.ftp");
    ASSERT_TRUE(WaitFor([&] { return silent.Accepted() == 1; }));
    ASSERT_TRUE(Listed([&] { pane.Disconnect(); }));
    EXPECT_EQ(pane.List()->Mode(), kestrin::kModeFolder);
    EXPECT_EQ(Header(), Folder());
    EXPECT_TRUE(WaitFor([&] { return silent.Closed() == 1; }));
    EXPECT_TRUE(fAlerts.Shown().empty());
}

// The server ends the session while the pane is idle, then shuts down
// altogether, then comes back: the pane tries once per command, keeps what
// it showed and says why, and lists again once the server is back.
TEST_F(FtpPaneVsftpd, ALostConnectionKeepsTheListingAndIsMadeAgainOncePerCommand)
{
    const std::string failed = "ftp: Failed to connect.  Please check you internet connection";
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }));
    const std::vector<std::string> top = {"..", "sub", "a.txt", "b.txt"};
    ASSERT_EQ(RowNames(list), top);
    TickGaps gaps;

    TickGaps::OffTheWindowThread([&] { fServer.DropSessions(); });
    list.Select(list.FindItem("sub"));
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Return); }));
    EXPECT_EQ(Header(), "ftp: " + Upload() + "/sub");
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "inner.txt"}));
    EXPECT_EQ(LogCount("USER anonymous"), 2);
    EXPECT_TRUE(fAlerts.Shown().empty());
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Backspace); }));

    TickGaps::OffTheWindowThread([&] { fServer.Stop(); });
    list.Select(list.FindItem("sub"));
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Return); }));
    EXPECT_EQ(Header(), failed);
    EXPECT_EQ(RowNames(list), top);
    EXPECT_EQ(LogCount("Unable to connect to host"), 1);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0],
              (platform::Alert{"Connect Failed",
                               "Failed to connect to ftp server.\nPlease check your internet "
                               "connection",
                               {"OK"},
                               B_WARNING_ALERT}));
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F2); }));
    EXPECT_EQ(Header(), failed);
    EXPECT_EQ(RowNames(list), top);
    EXPECT_EQ(LogCount("Unable to connect to host"), 2);
    EXPECT_EQ(fAlerts.Count(), 2u);

    ASSERT_TRUE(fServer.Start());
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F2); }));
    EXPECT_EQ(Header(), "ftp: " + Upload());
    EXPECT_EQ(RowNames(list), top);
    list.Select(list.FindItem("sub"));
    ASSERT_TRUE(Listed([&] { Key(Qt::Key_Return); }));
    EXPECT_EQ(Header(), "ftp: " + Upload() + "/sub");
    EXPECT_EQ(fAlerts.Count(), 2u);
    EXPECT_LT(gaps.Longest(), TickGaps::kBlockedMs);
}

// The server goes in the middle of a listing and does not take the
// connection made again at once; the next Refresh finds it back.
TEST_F(FtpPaneTest, ADropInTheListingKeepsTheLastOneUntilTheServerIsBack)
{
    const auto logIn = [](ScriptedServer::Session &s) {
        s.Send("220 hi\r\n");
        for (const char *reply : {"331 pass\r\n", "230 in\r\n"}) {
            s.ReadLine(); // USER, PASS
            s.Send(reply);
        }
        s.AnswerFeatures();
        s.ReadLine(); // CWD /pub
        s.Send("250 ok\r\n");
    };
    const auto listFolder = [](ScriptedServer::Session &s, const std::string &listing) {
        s.ReadLine(); // PWD
        s.Send("257 \"/pub\"\r\n");
        s.ReadLine(); // TYPE A
        s.Send("200 ok\r\n");
        platform::TcpSocket data;
        if (!s.SendPassiveData(&data))
            return false;
        data.SendAll(listing.data(), listing.size());
        return true;
    };
    const std::string first = "drwxr-xr-x 1 u g 0 Jan  1  2020 sub\r\n"
                              "-rw-r--r-- 1 u g 7 Jan  1  2020 a.txt\r\n";
    ScriptedServer server(
        {[&](ScriptedServer::Session &s) {
             logIn(s);
             if (!listFolder(s, first))
                 return;
             s.Send("226 done\r\n");
             s.ReadLine(); // PWD of the Refresh
             s.Send("257 \"/pub\"\r\n");
             platform::TcpSocket data;
             if (s.SendPassiveData(&data))
                 data.SendAll("-rw-r--r-- 1 u g 7 Jan", 22);
             // Gone, data and control alike.
         },
         [](ScriptedServer::Session &) {
             // Not back yet: closed before a greeting.
         },
         [&](ScriptedServer::Session &s) {
             logIn(s);
             if (!listFolder(s, first + "-rw-r--r-- 1 u g 7 Jan  1  2020 b.txt\r\n"))
                 return;
             s.Send("226 done\r\n");
             s.WaitForClose();
         }});
    Store("site", server.Port(), "/pub");
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }));
    ASSERT_EQ(RowNames(list), (std::vector<std::string>{"..", "sub", "a.txt"}));
    TickGaps gaps;

    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F2); }));
    EXPECT_EQ(Header(), "ftp: Failed to connect.  Please check you internet connection");
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "sub", "a.txt"}));
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "Connect Failed");

    ASSERT_TRUE(Listed([&] { Key(Qt::Key_F2); }));
    EXPECT_EQ(Header(), "ftp: /pub");
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"..", "sub", "a.txt", "b.txt"}));
    EXPECT_EQ(fAlerts.Count(), 1u);
    EXPECT_LT(gaps.Longest(), TickGaps::kBlockedMs);
    fPane.reset();
    server.Finish();
}

// A server with machine listings tells times to the second: the rows show
// them in UTC and sort by them, which LIST's dates to the day cannot do.
TEST_F(FtpPaneTest, MachineListingsShowAndSortByExactTimes)
{
    const std::string root = fHome.Root() + "/served";
    fs::create_directories(root);
    const std::pair<const char *, time_t> files[] = {
        {"a", 1577966459}, // 2020-01-02 12:00:59
        {"b", 1577966400}, // the same day, a minute before
        {"c", 1577966430},
    };
    for (const auto &[name, time] : files) {
        MakeFile(root + "/" + name, 1);
        const struct timespec times[2] = {{time, 0}, {time, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, (root + "/" + name).c_str(), times, 0), 0);
    }
    PyftpdlibServer server(root);
    if (!server.Unavailable().empty())
        GTEST_SKIP() << server.Unavailable();
    Store("site", server.Port(), "/", "kestrin", "secret");
    DirPane &pane = Open();
    DirView &list = *pane.List();
    ASSERT_TRUE(Listed([&] { pane.DoFtp("site.ftp"); }));
    list.SetSortMode(kestrin::kColumnDate, kestrin::Ascending);
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"b", "c", "a"}));
    EXPECT_EQ(list.Row(0)->DateText(), "2020-01-02 12:00:00");
    list.SetSortMode(kestrin::kColumnDate, kestrin::Descending);
    EXPECT_EQ(RowNames(list), (std::vector<std::string>{"a", "c", "b"}));
}
