// A day's file work by keys and by dragging, checked on disk.

#include "MainWindowTestSupport.h"

#include "fileops/ArchiveReader.h"
#include "fileops/Trash.h"
#include "mainwindow/WindowMessages.h"
#include "panes/KsHeader.h"
#include "panes/PaneMessages.h"
#include "fileops/CopyWin.h"
#include "fileops/FileOpsMessages.h"
#include "query/QueryWindow.h"
#include "viewer/ViewerWindow.h"
#include "ScriptedServer.h"
#include "support/TestArchives.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QFrame>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

namespace {

class FilesTest : public TwoFoldersFixture
{};

TEST_F(FilesTest, CopyMoveFolderRenameAndTrashByKeys)
{
    const std::string data(300000, 'k');
    WriteFileBytes(Left() + "/a", data);
    WriteFileBytes(Left() + "/b", "bee");
    WriteFileBytes(Left() + "/c", "sea");
    WriteFileBytes(Left() + "/d", "dee");
    Start();

    SelectIn(0, "a");
    QTest::keyClick(List(0), Qt::Key_F5);
    EXPECT_TRUE(WaitFor([&] { return ReadFileBytes(Right() + "/a") == data; }));
    EXPECT_TRUE(WaitFor([&] { return List(1)->FindItem("a") > 0; }));

    SelectIn(0, "b");
    QTest::keyClick(List(0), Qt::Key_F6);
    EXPECT_TRUE(WaitFor([&] { return fs::exists(Right() + "/b") && !fs::exists(Left() + "/b"); }));
    EXPECT_TRUE(WaitFor([&] { return List(0)->FindItem("b") < 0; }));

    // F7: "New Folder", renamed in place at once.
    const auto renameField = [&] {
        return List(0)->findChild<QFrame *>("renamecontainer")->findChild<QLineEdit *>();
    };
    List(0)->setFocus();
    QTest::keyClick(List(0), Qt::Key_F7);
    ASSERT_TRUE(fs::is_directory(Left() + "/New Folder"));
    QLineEdit *field = renameField();
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), "New Folder");
    field->setText("made");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(WaitFor([&] { return fs::is_directory(Left() + "/made"); }));
    QTest::keyClick(List(0), Qt::Key_F7);
    QTest::keyClick(renameField(), Qt::Key_Escape);
    QTest::keyClick(List(0), Qt::Key_F7);
    EXPECT_TRUE(fs::is_directory(Left() + "/New Folder 2"));

    SelectIn(0, "d");
    QTest::keyClick(List(0), Qt::Key_F6, Qt::ShiftModifier);
    field = renameField();
    field->setText("e");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(WaitFor([&] { return fs::exists(Left() + "/e") && !fs::exists(Left() + "/d"); }));

    SelectIn(0, "c");
    fAlerts.QueueAnswer(1);
    QTest::keyClick(List(0), Qt::Key_F8);
    kestrin::Trash trash;
    EXPECT_TRUE(WaitFor([&] { return fs::exists(trash.FilesPath() + "/c"); }));
    EXPECT_FALSE(fs::exists(Left() + "/c"));
    EXPECT_TRUE(fs::exists(trash.InfoPath() + "/c.trashinfo"));

    // Empty Trash takes the items and their records.
    platform::Message empty(kestrin::kCmdEmptyTrash);
    fKestrin->Window()->MessageReceived(empty);
    EXPECT_TRUE(
        WaitFor([&] { return fs::is_empty(trash.FilesPath()) && fs::is_empty(trash.InfoPath()); }));
}

TEST_F(FilesTest, RequestsThatAreRefused)
{
    WriteFileBytes(Left() + "/f", "f");
    Profile("Pane1", "/");
    Start();
    SelectIn(0, "f");
    QTest::keyClick(List(0), Qt::Key_F5);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "Warning");
    EXPECT_EQ(fAlerts.Shown()[0].text,
              "Sorry can't copy files or folders to the root of the file system!");

    platform::Message query(kestrin::kMsgQueryResults);
    entry_ref ref;
    platform::Entry(Left() + "/f").GetRef(&ref);
    query.AddRef("refs", ref);
    List(1)->setFocus();
    fKestrin->Window()->MessageReceived(query);
    EXPECT_TRUE(WaitFor([&] { return !List(1)->IsListing(); }));
    SelectIn(0, "f");
    QTest::keyClick(List(0), Qt::Key_F5);
    ASSERT_EQ(fAlerts.Count(), 2u);
    EXPECT_EQ(fAlerts.Shown()[1].text,
              "This view contains Query Results. You cannot copy or move to it.");
}

TEST_F(FilesTest, QueryResultsFillTheFocusedPaneAndCopyOut)
{
    fs::create_directories(Left() + "/deep");
    WriteFileBytes(Left() + "/deep/report.txt", "found me");
    WriteFileBytes(Left() + "/deep/report2.txt", "found me too");
    WriteFileBytes(Left() + "/other.txt", "");
    Start();

    // Ctrl+F7 in a pane opens the query window.
    List(0)->setFocus();
    QTest::keyClick(List(0), Qt::Key_F7, Qt::ControlModifier);
    auto *query = fKestrin->Window()->findChild<kestrin::QueryWindow *>();
    ASSERT_NE(query, nullptr);
    // The left pane's folder is offered, and walked instead of the volumes.
    const QString inFolder = QString::fromStdString("Focused Pane's Folder: " + Left());
    QAction *folderItem = nullptr;
    for (QAction *action : query->findChild<QMenu *>("Volumes")->actions())
        if (action->text() == inFolder)
            folderItem = action;
    ASSERT_NE(folderItem, nullptr);
    folderItem->trigger();
    QTest::keyClicks(query->findChild<QLineEdit *>("Text1"), "report");
    QTest::mouseClick(query->findChild<QPushButton *>("StartQuery"), Qt::LeftButton);
    ASSERT_TRUE(
        WaitFor([&] { return List(0)->Mode() == kestrin::kModeQuery && !List(0)->IsListing(); }));
    EXPECT_EQ(fKestrin->Window()->Panes().at(0)->Header()->Text(), "(name==\"*report*\")");
    ASSERT_EQ(List(0)->CountItems(), 2);

    // F5 copies out of the results into the other pane's folder (row 0,
    // where a folder's ".." would be, is never acted on).
    SelectIn(0, Left() + "/deep/report2.txt");
    QTest::keyClick(List(0), Qt::Key_F5);
    EXPECT_TRUE(WaitFor([&] { return ReadFileBytes(Right() + "/report2.txt") == "found me too"; }));
    EXPECT_EQ(fAlerts.Count(), 0u);
}

TEST_F(FilesTest, ALinkOntoATakenNameSaysSo)
{
    WriteFileBytes(Left() + "/taken", "mine");
    WriteFileBytes(Right() + "/taken", "theirs");
    Start();
    SelectIn(0, "taken");
    QTest::keyClick(List(0), Qt::Key_F9);
    ASSERT_TRUE(WaitFor([&] { return fAlerts.Count() == 1; }));
    EXPECT_EQ(fAlerts.Shown()[0].title, "Sorry Charley");
    EXPECT_EQ(fAlerts.Shown()[0].text, "Strange but this file exists.");
    EXPECT_EQ(ReadFileBytes(Right() + "/taken"), "theirs");
}

std::vector<std::string> MemberPaths(const std::string &archive)
{
    std::vector<std::string> paths;
    kestrin::ArchiveReader reader(archive);
    kestrin::ArchiveMember member;
    while (reader.Next(&member) == B_OK)
        paths.push_back(member.path);
    return paths;
}

TEST_F(FilesTest, ArchivesAreBrowsedUnpackedAndPackedByKeys)
{
    const std::string intro(200000, 'i');
    const std::vector<TestMember> members = {{"readme.txt", "hello", TestMember::File, 0640},
                                             {"docs/intro.txt", intro},
                                             {"docs/index.html", "<html/>"}};
    for (const char *kind : {"zip", "tar.gz", "7z"})
        WriteTestArchive(Left() + "/bundle." + kind, kind, members);
    fs::create_directories(Left() + "/notes/deep");
    WriteFileBytes(Left() + "/notes/deep/a.txt", "a");
    Start();
    kestrin::DirView &left = *List(0);
    const auto showsMembers = [&] {
        return left.Mode() == kestrin::kModeArchive && !left.IsListing()
               && left.FindItem("docs") > 0 && left.FindItem("readme.txt") > 0;
    };

    for (const char *kind : {"tar.gz", "7z", "zip"}) {
        SelectIn(0, std::string("bundle.") + kind);
        QTest::keyClick(&left, Qt::Key_Return);
        ASSERT_TRUE(WaitFor(showsMembers)) << kind;
        if (std::string(kind) != "zip") {
            QTest::keyClick(&left, Qt::Key_Backspace);
            ASSERT_TRUE(WaitFor([&] { return left.Mode() == kestrin::kModeFolder; }));
        }
    }

    // F5 unpacks the marked members of the zip into the other pane.
    left.Select(left.FindItem("docs"));
    QTest::keyClick(&left, Qt::Key_Insert);
    left.Select(left.FindItem("readme.txt"));
    QTest::keyClick(&left, Qt::Key_Insert);
    QTest::keyClick(&left, Qt::Key_F5);
    EXPECT_TRUE(WaitFor([&] { return ReadFileBytes(Right() + "/docs/intro.txt") == intro; }));
    EXPECT_TRUE(WaitFor([&] { return ReadFileBytes(Right() + "/readme.txt") == "hello"; }));
    EXPECT_EQ(fs::status(Right() + "/readme.txt").permissions() & fs::perms::all, fs::perms(0640));
    EXPECT_TRUE(WaitFor([&] { return List(1)->FindItem("docs") > 0; }));

    // Ctrl+F5 on a folder packs it into a zip named after it in the other pane.
    QTest::keyClick(&left, Qt::Key_Backspace);
    ASSERT_TRUE(WaitFor([&] { return left.Mode() == kestrin::kModeFolder; }));
    SelectIn(0, "notes");
    QTest::keyClick(&left, Qt::Key_F5, Qt::ControlModifier);
    EXPECT_TRUE(WaitFor([&] { return List(1)->FindItem("notes.zip") > 0; }));
    EXPECT_EQ(MemberPaths(Right() + "/notes.zip"),
              (std::vector<std::string>{"notes", "notes/deep", "notes/deep/a.txt"}));
    EXPECT_EQ(fAlerts.Count(), 0u);
}

TEST_F(FilesTest, DroppedEntriesAreCopiedOrMoved)
{
    WriteFileBytes(fHome.Root() + "/outside", "from another application");
    WriteFileBytes(Left() + "/moved", "m");
    fs::create_directories(Right() + "/sub");
    Start();

    QWidget *target = List(1)->viewport();
    // Below the rows: into the pane's folder.
    DropPaths(target, {fHome.Root() + "/outside"}, Qt::CopyAction, QPoint(50, target->height() - 5));
    EXPECT_TRUE(WaitFor([&] { return fs::exists(Right() + "/outside"); }));
    EXPECT_TRUE(fs::exists(fHome.Root() + "/outside"));

    // On a folder row: into that folder.
    const QRect sub = List(1)->ItemFrame(List(1)->FindItem("sub"));
    DropPaths(target, {Left() + "/moved"}, Qt::MoveAction, sub.center());
    EXPECT_TRUE(WaitFor([&] { return fs::exists(Right() + "/sub/moved"); }));
    EXPECT_TRUE(WaitFor([&] { return !fs::exists(Left() + "/moved"); }));
}

// Ctrl+Q's item of the menu bar.
QAction *QuitCommand(QWidget &window)
{
    for (QAction *action : window.findChildren<QAction *>())
        if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Q))
            return action;
    ADD_FAILURE() << "no item answers Ctrl+Q";
    return new QAction(&window);
}

platform::Message DownloadFrom(unsigned port)
{
    platform::Message request(kestrin::kMsgFtpDownload);
    request.AddString("Host", "127.0.0.1");
    request.AddInt32("Port", int32_t(port));
    request.AddString("User", "u");
    request.AddString("Password", "p");
    request.AddString("FtpPath", "/x");
    request.AddString("FtpFile", "f");
    return request;
}

} // namespace

// Fault drill: Ctrl+Q while a copy waits for its overwrite question, a
// download waits on a server gone silent, a query walks every volume and a
// viewer indexes a long text. Nothing of it holds the quitting up (the server
// alone would for five seconds, the query for as long as the disks take), and
// no file is left half written.
TEST_F(FilesTest, QuittingWithWorkUnderWayEndsAtOnceAndLeavesNoPartialFile)
{
    constexpr int kFiles = 200;
    const std::string chunk(32 << 10, 'c');
    fs::create_directories(Left() + "/tree");
    for (int i = 0; i < kFiles; i++)
        WriteFileBytes(Left() + "/tree/f" + std::to_string(i), chunk);
    fs::create_directories(Right() + "/tree");
    WriteFileBytes(Right() + "/tree/f100", "older");
    std::string lines;
    for (int i = 0; i < 400000; i++)
        lines += "line " + std::to_string(i) + " of a text that the viewer indexes\n";
    WriteFileBytes(Left() + "/long.txt", lines);
    fs::create_directories(Right() + "/download");
    ScriptedServer server(ScriptedServer::SilentAfterTheFirstBlock);
    kestrin::KestrinWindow &window = Start();

    new kestrin::CopyWin(QRect(100, 100, 400, 130), "Download", Right() + "/download",
                         DownloadFrom(server.Port()), nullptr);
    ASSERT_TRUE(WaitFor([&] { return !fs::is_empty(Right() + "/download"); }));

    platform::Message openQuery(kestrin::kCmdQuery);
    window.MessageReceived(openQuery);
    auto *query = window.findChild<kestrin::QueryWindow *>();
    ASSERT_NE(query, nullptr);
    query->SetRoots({"/"});
    QTest::keyClicks(query->findChild<QLineEdit *>("Text1"), "e");
    query->findChild<QAbstractButton *>("StartQuery")->click();
    ASSERT_TRUE(query->IsSearching());

    kestrin::ViewerWindow::Open(Left() + "/long.txt", &window);

    SelectIn(0, "tree");
    QTest::keyClick(List(0), Qt::Key_F5);
    ASSERT_TRUE(WaitFor([] {
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (widget->windowTitle() == "Item Exists" && widget->isVisible())
                return true;
        return false;
    }));

    QElapsedTimer quitting;
    quitting.start();
    QuitCommand(window)->trigger();
    fKestrin.reset();
    EXPECT_LT(quitting.elapsed(), 3000);
    RecordProperty("quit_ms", int(quitting.elapsed()));
    server.Finish();

    EXPECT_TRUE(fs::is_empty(Right() + "/download")) << "the download's partial file";
    EXPECT_EQ(ReadFileBytes(Right() + "/tree/f100"), "older");
    for (const auto &entry : fs::directory_iterator(Right() + "/tree")) {
        if (entry.path().filename() != "f100") {
            EXPECT_EQ(fs::file_size(entry.path()), chunk.size()) << entry.path();
        }
    }
}
