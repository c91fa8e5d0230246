#include "MainWindowTestSupport.h"

#include "ftp/ConWin.h"
#include "mainwindow/WindowMessages.h"
#include "panes/KsTree.h"
#include "panes/PaneMessages.h"

#include <QMenu>
#include <QMenuBar>
#include <QUrl>
#include <sys/mount.h>

using kestrin::DirPane;
using kestrin::KestrinApplication;
using kestrin::KestrinWindow;

namespace {

using KestrinWindowTest = KestrinFixture;

std::vector<std::string> Labels(const KestrinWindow &window)
{
    std::vector<std::string> labels;
    for (const DirPane *pane : window.Panes())
        labels.push_back(pane->List()->ColumnLabel(0).toStdString());
    return labels;
}

void Command(KestrinWindow &window, uint32_t code)
{
    platform::Message message(code);
    window.MessageReceived(message);
}

TEST_F(KestrinWindowTest, FirstStartShowsTwoPanesOnHomeAndWritesTheProfile)
{
    EXPECT_EQ(KestrinApplication::InitialFrame(QRect(0, 0, 640, 480)),
              QRect(QPoint(10, 40), QPoint(619, 429)));
    KestrinWindow &window = Start();
    EXPECT_EQ(window.windowTitle(), "Kestrin v0.7.2");
    ASSERT_EQ(window.Panes().size(), 2u);
    for (const DirPane *pane : window.Panes())
        EXPECT_EQ(pane->List()->CurrentPath(), Home());
    EXPECT_EQ(window.GetFocusedPane(), window.Panes().front());

    EXPECT_EQ(ProfileKeys(),
              "Left Top Width Height bCaseSensitiveSort NumPanes "
              "Pane0 Pane0_Sort Pane0_Mode Pane0_Type Pane1 Pane1_Sort Pane1_Mode Pane1_Type "
              "Column1 Column2 Column3 Column4 ");
    EXPECT_EQ(ProfileValue("NumPanes"), "2");
    EXPECT_EQ(ProfileValue("Pane1"), Home());
    EXPECT_EQ(ProfileValue("Column1"), "108");

    // The menus, in their order, with the odd spelling kept.
    QStringList titles;
    for (QAction *menu : window.menuBar()->actions())
        titles << menu->text();
    EXPECT_EQ(titles,
              QStringList(
                  {"File", "Edit", "Navigation", "View", "Applications", "Windows", "Help", "Add-Ons"}));
    const auto *help = window.menuBar()->findChild<QMenu *>("Help");
    ASSERT_NE(help, nullptr);
    EXPECT_EQ(help->actions().at(0)->text(), "Keybord Shortcuts");

    Command(window, kestrin::kCmdAbout);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "About Kestrin");
    EXPECT_EQ(fAlerts.Shown()[0].buttons, std::vector<std::string>{"Big Deal"});
    EXPECT_EQ(fAlerts.Shown()[0].text.rfind("Kestrin v0.7.2\n\n", 0), 0u);
}

TEST_F(KestrinWindowTest, PanesAreAddedRemovedRenumberedAndLaidOut)
{
    KestrinWindow &window = Start();
    const QSize before = window.size();
    QTest::keyClick(List(0), Qt::Key_P, Qt::ControlModifier);
    ASSERT_EQ(window.Panes().size(), 3u);
    EXPECT_EQ(window.size(), before + QSize(2, 2));
    EXPECT_EQ(Labels(window), (std::vector<std::string>{"1", "2", "3"}));
    EXPECT_EQ(window.GetFocusedPane(), window.Panes().back());

    // Equal shares, each one unit right of its neighbour's right edge.
    window.resize(900 + window.width() - window.centralWidget()->width(), 500);
    ASSERT_EQ(window.centralWidget()->width(), 900);
    std::vector<int> lefts;
    for (const DirPane *pane : window.Panes()) {
        lefts.push_back(pane->geometry().left());
        EXPECT_EQ(pane->width(), 300);
    }
    EXPECT_EQ(lefts, (std::vector<int>{0, 301, 602}));

    // The Windows menu's items move the focus; one past the last pane does nothing.
    QTest::keyClick(List(2), Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(window.GetFocusedPane(), window.Panes()[1]);
    QTest::keyClick(List(1), Qt::Key_7, Qt::ControlModifier);
    EXPECT_EQ(window.GetFocusedPane(), window.Panes()[1]);

    DirPane *last = window.Panes()[2];
    QTest::keyClick(List(1), Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(window.Panes().size(), 2u);
    EXPECT_EQ(Labels(window), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(window.Panes()[1], last);
    EXPECT_EQ(window.GetFocusedPane(), last);

    while (window.Panes().size() < 10)
        Command(window, kestrin::kCmdAddPane);
    Command(window, kestrin::kCmdAddPane);
    EXPECT_EQ(window.Panes().size(), 10u);
    EXPECT_EQ(Labels(window).back(), "0");

    Command(window, kestrin::kCmdRevertToDefault);
    ASSERT_EQ(window.Panes().size(), 2u);
    window.Panes()[0]->List()->setFocus();
    Command(window, kestrin::kCmdRemovePane);
    Command(window, kestrin::kCmdRemovePane);
    EXPECT_EQ(window.Panes().size(), 1u);
}

TEST_F(KestrinWindowTest, TheLayoutComesBackAsItWasLeft)
{
    fs::create_directories(Home() + "/one");
    fs::create_directories(Home() + "/two");
    KestrinWindow &window = Start();
    List(0)->Populate(Home() + "/one");
    List(1)->Populate(Home() + "/two");
    ASSERT_TRUE(WaitFor([&] { return Idle(window); }));
    List(1)->SetSortMode(kestrin::kColumnDate, kestrin::Descending);
    window.Panes()[0]->DoTree();
    List(0)->SetColumnWidth(2, 150);
    const QRect frame = window.geometry();
    window.close();
    fKestrin.reset();

    KestrinWindow &again = Start();
    ASSERT_EQ(again.Panes().size(), 2u);
    EXPECT_EQ(List(0)->CurrentPath(), Home() + "/one");
    EXPECT_EQ(List(1)->CurrentPath(), Home() + "/two");
    EXPECT_NE(again.Panes()[0]->Tree(), nullptr);
    EXPECT_EQ(again.Panes()[1]->Tree(), nullptr);
    EXPECT_EQ(List(1)->GetSort(), kestrin::kColumnDate);
    EXPECT_EQ(List(1)->GetSortMode(), kestrin::Descending);
    EXPECT_EQ(List(0)->GetSort(), kestrin::kColumnName);
    EXPECT_EQ(List(0)->ColumnWidth(2), 150);
    EXPECT_EQ(List(1)->ColumnWidth(2), 150);
    // Each pane added makes the window two units wider and taller.
    EXPECT_EQ(again.geometry().topLeft(), frame.topLeft());
    EXPECT_EQ(again.size(), frame.size() + QSize(4, 4));

    // A column resized in one pane is resized in all.
    platform::Message resized(kestrin::kMsgColumnWidth);
    resized.AddString("ColumnIndex", "3");
    resized.AddString("ColumnWidth", "77");
    again.MessageReceived(resized);
    EXPECT_EQ(List(0)->ColumnWidth(3), 77);
    EXPECT_EQ(List(1)->ColumnWidth(3), 77);
}

TEST_F(KestrinWindowTest, AMissingPaneCarriesTheSortOfThePaneBefore)
{
    fs::create_directories(Home() + "/x");
    Profile("NumPanes", "3");
    Profile("Pane0", Home() + "/x");
    Profile("Pane0_Sort", "2");
    Profile("Pane0_Mode", "1");
    Profile("Pane2", Home() + "/x");
    KestrinWindow &window = Start();
    ASSERT_EQ(window.Panes().size(), 3u);
    EXPECT_EQ(List(1)->CurrentPath(), Home());
    EXPECT_EQ(List(1)->GetSort(), 2);
    EXPECT_EQ(List(1)->GetSortMode(), 1);
    EXPECT_EQ(List(2)->GetSort(), 2);
}

TEST_F(KestrinWindowTest, AGarbageProfileStillStartsUsable)
{
    Profile("Left", "-5000");
    Profile("Top", "999999");
    Profile("Width", "123456789");
    Profile("Height", "3");
    Profile("NumPanes", "1000");
    Profile("Pane0", "/does/not/exist");
    Profile("Pane0_Sort", "77");
    Profile("Pane0_Mode", "-3");
    Profile("Column2", "999999999999");
    KestrinWindow &window = Start();
    EXPECT_EQ(window.Panes().size(), 10u);
    EXPECT_EQ(List(0)->CurrentPath(), Home());
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_TRUE(screen.contains(window.geometry().topLeft()));
    EXPECT_GE(window.height(), 200);
    EXPECT_LE(window.width(), screen.width() + 20);
    // The list still sorts and takes keys.
    QTest::keyClick(List(0), Qt::Key_Plus);
    EXPECT_FALSE(List(0)->Marked().Rows().empty());

    Profile("NumPanes", "0");
    window.close();
    fKestrin.reset();
    Profile("NumPanes", "0");
    EXPECT_EQ(Start().Panes().size(), 2u);
}

TEST_F(KestrinWindowTest, FoldersHandedToKestrinAreShown)
{
    for (const char *name : {"/a", "/b", "/c"})
        fs::create_directories(Home() + name);
    WriteFileBytes(Home() + "/b/doc.txt", "text");
    KestrinWindow &window = Start();
    fKestrin->ArgvReceived({Home() + "/a", Home() + "/b"});
    EXPECT_TRUE(WaitFor([&] { return Idle(window); }));
    EXPECT_EQ(window.GetFocusedPane()->List()->CurrentPath(), Home() + "/b");

    platform::Message refs;
    for (const char *name : {"/c", "/a", "/b"}) {
        entry_ref ref;
        platform::Entry(Home() + name).GetRef(&ref);
        refs.AddRef("refs", ref);
    }
    fKestrin->RefsReceived(refs);
    EXPECT_TRUE(WaitFor([&] { return Idle(window); }));
    EXPECT_EQ(window.GetFocusedPane()->List()->CurrentPath(), Home() + "/c");

    // A document shows its folder with the document selected.
    fKestrin->ArgvReceived({Home() + "/b/doc.txt"});
    kestrin::DirView *list = window.GetFocusedPane()->List();
    EXPECT_TRUE(WaitFor([&] { return !list->IsListing() && list->CurrentSelection() > 0; }));
    EXPECT_EQ(list->Row(list->CurrentSelection())->Name(), "doc.txt");

    fKestrin->ArgvReceived({Home() + "/nothing-here"});
    EXPECT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(list->CurrentPath(), Home() + "/b");

    // The desktop hands over URLs (Exec=kestrin %U): a file: URL is its
    // path, escapes undone; any other URL is passed over without a word.
    fs::create_directories(Home() + "/with space");
    fKestrin->ArgvReceived({QUrl::fromLocalFile(QString::fromStdString(Home() + "/with space"))
                                .toString(QUrl::FullyEncoded)
                                .toStdString(),
                            "sftp://example.invalid/folder"});
    EXPECT_TRUE(WaitFor([&] { return Idle(window); }));
    EXPECT_EQ(list->CurrentPath(), Home() + "/with space");
    EXPECT_EQ(fAlerts.Count(), 1u);
}

TEST_F(KestrinWindowTest, FoldersGivenAtStartGoToTheFocusedPaneBeforeTheWindowIsActive)
{
    for (const char *name : {"/one", "/two"})
        fs::create_directories(Home() + name);
    // As at start: the folders arrive before the window is active, so no
    // widget has the keyboard focus yet.
    fKestrin = std::make_unique<kestrin::KestrinApplication>();
    fKestrin->ArgvReceived({Home() + "/one", Home() + "/two"});
    KestrinWindow &window = *fKestrin->Window();
    ASSERT_EQ(window.Panes().size(), 2u);
    ASSERT_NE(window.GetFocusedPane(), nullptr);
    EXPECT_EQ(window.GetFocusedPane(), window.Panes().front());
    EXPECT_TRUE(WaitFor([&] { return Idle(window); }));
    EXPECT_EQ(window.GetFocusedPane()->List()->CurrentPath(), Home() + "/two");
}

// The Help items open their pages and Tracker the home folder; without a
// program that shows web pages, F1 and the Help items say so, and where the
// page is. Ftp Connections opens the sessions window over the main window.
TEST_F(KestrinWindowTest, LaunchingCommandsAndTheSessionsWindow)
{
    KestrinWindow &window = Start();
    Command(window, kestrin::kCmdKeyboardHelp);
    Command(window, kestrin::kCmdHelp);
    Command(window, kestrin::kCmdOpenTracker);
    auto launches = fLaunches.Launches();
    ASSERT_EQ(launches.size(), 3u);
    EXPECT_EQ(launches[0].arguments.at(0).substr(launches[0].arguments[0].rfind('/')),
              "/keyboardks.html");
    EXPECT_TRUE(fs::exists(launches[0].arguments[0]));
    EXPECT_TRUE(fs::exists(launches[1].arguments.at(0)));
    EXPECT_EQ(launches[2].arguments, std::vector<std::string>{Home()});

    fLaunches.SetResult(B_ENTRY_NOT_FOUND);
    QTest::keyClick(List(0), Qt::Key_F1);
    Command(window, kestrin::kCmdHelp);
    launches = fLaunches.Launches();
    ASSERT_EQ(launches.size(), 5u);
    ASSERT_EQ(fAlerts.Count(), 2u);
    for (size_t i = 0; i < 2; i++) {
        const std::string page = launches[3 + i].arguments.at(0);
        EXPECT_NE(fAlerts.Shown()[i].text.find("\"" + page + "\""), std::string::npos)
            << fAlerts.Shown()[i].text;
    }
    EXPECT_NE(launches[3].arguments[0].find("/keyboardks.html"), std::string::npos);
    EXPECT_NE(launches[4].arguments[0].find("/Index.html"), std::string::npos);

    // Commands whose windows are not there yet do nothing, and do not crash.
    for (uint32_t code : {123u, 125u, 127u, 128u, 142u, 132u})
        Command(window, code);

    Command(window, kestrin::kCmdFtpConnections);
    const auto *sessions = window.findChild<kestrin::ConWin *>();
    ASSERT_NE(sessions, nullptr);
    EXPECT_EQ(sessions->windowTitle(), "Ftp Sessions");
    EXPECT_LE((sessions->geometry().center() - window.frameGeometry().center()).manhattanLength(),
              2);
    EXPECT_EQ(fAlerts.Count(), 2u);
}

TEST_F(KestrinWindowTest, AddOnsRunOnTheSelection)
{
    const std::string addOns = fHome.Root() + "/data/kestrin/add-ons/Tracker";
    fs::create_directories(addOns);
    fs::create_symlink(KESTRIN_MAKEARCHIVE, addOns + "/MakeArchive");
    fHome.SetEnv("XDG_DATA_HOME", fHome.Root() + "/data");
    fs::create_directories(Home() + "/work");
    WriteFileBytes(Home() + "/work/paper.txt", "words");
    PanesOn({Home() + "/work"});
    KestrinWindow &window = Start();

    const auto *menu = window.menuBar()->findChild<QMenu *>("Add-Ons");
    ASSERT_NE(menu, nullptr);
    // The add-on folders are scanned once the window has been painted.
    ASSERT_TRUE(WaitFor([&] { return window.AddOnsLoaded(); }));
    EXPECT_FALSE(menu->actions().isEmpty());
    QAction *makeArchive = nullptr;
    for (QAction *action : menu->actions()) {
        if (action->text() == "MakeArchive" && makeArchive == nullptr)
            makeArchive = action;
    }
    ASSERT_NE(makeArchive, nullptr);
    EXPECT_EQ(makeArchive->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_A));

    List(0)->Select(0);
    makeArchive->trigger();
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].text, "Please select an item first");

    SelectIn(0, "paper.txt");
    QTest::keyClick(List(0), Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(WaitFor([&] { return List(0)->FindItem("paper.txt.zip") >= 0; }));
    EXPECT_EQ(fAlerts.Count(), 1u);
}

TEST_F(KestrinWindowTest, PanesOnAnUnmountedVolumeGoHome)
{
    const std::string point = Home() + "/volume";
    fs::create_directories(point);
    if (mount("kestrin-test", point.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "tmpfs cannot be mounted here";
    WriteFileBytes(point + "/on-the-volume", "v");
    PanesOn({point, Home()});
    KestrinWindow &window = Start();
    ASSERT_EQ(List(0)->CurrentPath(), point);
    umount2(point.c_str(), MNT_DETACH);
    EXPECT_TRUE(WaitFor([&] { return List(0)->CurrentPath() == Home() && Idle(window); }));
    EXPECT_EQ(List(1)->CurrentPath(), Home());
}

} // namespace
