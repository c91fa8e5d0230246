#include "PaneTestSupport.h"
#include "support/UnprivilegedRerun.h"

#include "panes/DirRowPainter.h"
#include "panes/PaneCommands.h"
#include "platform/Entry.h"
#include "platform/NodeMonitor.h"
#include "support/PipesAndSockets.h"
#include "support/TestArchives.h"

#include <QApplication>
#include <QFrame>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLineEdit>
#include <QToolTip>
#include <QVBoxLayout>

using kestrin::DirRowPainter;
using kestrin::DirView;
using kestrin::kColumnName;
using kestrin::PaneCommands;

namespace {

using DirViewTest = ListFixture;

std::string Text(const platform::Message &message, const char *field)
{
    std::string value;
    message.FindString(field, &value);
    return value;
}

// What the query window sends for `paths`.
platform::Message QueryResults(const std::vector<std::string> &paths)
{
    platform::Message results(601);
    for (const std::string &path : paths) {
        entry_ref ref;
        EXPECT_EQ(platform::Entry(path).GetRef(&ref), B_OK) << path;
        results.AddRef("ref", ref);
    }
    return results;
}

std::vector<std::string> RefNames(const platform::Message &message)
{
    std::vector<std::string> names;
    entry_ref ref;
    for (int32_t i = 0; message.FindRef("refs", i, &ref) == B_OK; i++)
        names.push_back(ref.name);
    return names;
}

TEST_F(DirViewTest, UpALevelSelectsTheFolderLeftAndDownReturns)
{
    fs::create_directories(Folder() + "/sub/deeper");
    MakeFile(Folder() + "/file");
    DirView &view = Open(Folder() + "/sub");

    Relist([&] { Key(Qt::Key_Backspace); });
    EXPECT_EQ(view.CurrentPath(), Folder());
    ASSERT_GE(view.CurrentSelection(), 0);
    EXPECT_EQ(view.Row(view.CurrentSelection())->Name(), "sub");

    Relist([&] { view.NavigateDown(); });
    EXPECT_EQ(view.CurrentPath(), Folder() + "/sub");

    // From a folder just below the root: "/" with that folder selected.
    Relist([&] { view.Populate("/tmp"); });
    Relist([&] { view.NavigateUp(); });
    EXPECT_EQ(view.CurrentPath(), "/");
    ASSERT_GE(view.CurrentSelection(), 0);
    EXPECT_EQ(view.Row(view.CurrentSelection())->Name(), "tmp");
    // From "/" nothing happens.
    view.NavigateUp();
    EXPECT_FALSE(view.IsListing());
    EXPECT_EQ(view.CurrentPath(), "/");
}

TEST_F(DirViewTest, MarkingKeysAndTheFooterSummary)
{
    fs::create_directory(Folder() + "/d");
    MakeFile(Folder() + "/f1", 3072);
    MakeFile(Folder() + "/f2", 2048);
    MakeFile(Folder() + "/f3", 5000);
    DirView &view = Open(Folder());
    const auto marked = [&view] { return MarkedNames(view.Marked()); };

    view.Select(2);
    Key(Qt::Key_Space);
    EXPECT_EQ(marked(), std::vector<std::string>{"f1"});
    EXPECT_EQ(view.CurrentSelection(), 2);
    Key(Qt::Key_Insert); // unmarks f1, moves to f2
    Key(Qt::Key_Insert); // marks f2, moves to f3
    EXPECT_EQ(view.CurrentSelection(), 4);
    Key(Qt::Key_Down, Qt::ShiftModifier); // marks f3
    EXPECT_EQ(marked(), (std::vector<std::string>{"f2", "f3"}));
    EXPECT_EQ(view.GetFiles(), "6 of 9k in 2 of 3 files selected");

    Key(Qt::Key_Asterisk);
    EXPECT_EQ(marked(), (std::vector<std::string>{"d", "f1"}));
    EXPECT_FALSE(view.Row(0)->IsMarked());
    Key(Qt::Key_Minus);
    EXPECT_TRUE(marked().empty());
    Key(Qt::Key_Plus);
    EXPECT_EQ(marked(), (std::vector<std::string>{"d", "f1", "f2", "f3"}));
    view.Marked().Empty();

    // Row 0 is never marked from the keyboard.
    view.Select(0);
    Key(Qt::Key_Space);
    Key(Qt::Key_Insert);
    EXPECT_TRUE(marked().empty());
    EXPECT_EQ(view.CurrentSelection(), 1);

    // "+" needs two rows.
    fs::create_directory(Folder() + "/d/empty");
    Relist([&] { view.Populate(Folder() + "/d/empty"); });
    Key(Qt::Key_Plus);
    Key(Qt::Key_Asterisk);
    EXPECT_TRUE(marked().empty());
}

TEST_F(DirViewTest, TypeAheadStepsThroughMatchingNamesAndWraps)
{
    for (const char *name : {"apple", "Avocado", "banana", "apricot"})
        MakeFile(Folder() + "/" + name);
    DirView &view = Open(Folder());
    ASSERT_EQ(RowNames(view),
              (std::vector<std::string>{"..", "Avocado", "apple", "apricot", "banana"}));
    view.Select(0);
    const auto selected = [&view] { return view.Row(view.CurrentSelection())->Name(); };
    const char *steps[][2] = {
        {"a", "Avocado"},
        {"a", "apple"},
        {"A", "apricot"},
        {"a", "Avocado"},
        {"z", "Avocado"},
        {"B", "banana"},
        {".", ".."},
    };
    for (const auto &step : steps) {
        QTest::keyClicks(&view, step[0]);
        EXPECT_EQ(selected(), step[1]) << "after typing " << step[0];
    }
}

TEST_F(DirViewTest, FunctionKeysSendRequests)
{
    MakeFile(Folder() + "/f1");
    MakeFile(Folder() + "/f2");
    MakeFile(Folder() + "/f3");
    DirView &view = Open(Folder());

    view.Select(1);
    Key(Qt::Key_F5);
    const platform::Message *copy = fTarget.Last(kestrin::kMsgCopyRequest);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(RefNames(*copy), std::vector<std::string>{"f1"});
    entry_ref ref;
    copy->FindRef("refs", &ref);
    EXPECT_EQ(ref.path, Folder() + "/f1");
    EXPECT_EQ(Text(*copy, "TypeOfCopy"), "Copy");
    EXPECT_EQ(Text(*copy, "Dragging"), "false");
    EXPECT_EQ(Text(*copy, "Direction"), "Right");
    EXPECT_TRUE(view.Marked().Rows().empty()); // the stand-in left the marked list

    view.Marked().Toggle(2);
    view.Marked().Toggle(3);
    Key(Qt::Key_F6);
    EXPECT_EQ(RefNames(*fTarget.Last(kestrin::kMsgCopyRequest)),
              (std::vector<std::string>{"f2", "f3"}));
    EXPECT_EQ(Text(*fTarget.Last(kestrin::kMsgCopyRequest), "TypeOfCopy"), "Move");
    Key(Qt::Key_F9);
    EXPECT_EQ(Text(*fTarget.Last(kestrin::kMsgCopyRequest), "TypeOfCopy"), "Link");
    Key(Qt::Key_F5, Qt::ControlModifier);
    ASSERT_NE(fTarget.Last(kestrin::kMsgPackRequest), nullptr);
    EXPECT_EQ(Text(*fTarget.Last(kestrin::kMsgPackRequest), "TypeOfCopy"), "Pack");
    Key(Qt::Key_F7);
    Key(Qt::Key_F7, Qt::ControlModifier);
    EXPECT_EQ(fTarget.Count(kestrin::kMsgNewFolder), 1);
    EXPECT_EQ(fTarget.Count(kestrin::kMsgNewQuery), 1);
    Key(Qt::Key_F1);
    EXPECT_EQ(fOwner.Count(kestrin::kMsgHelpKeys), 1);

    // Nothing marked and the parent row selected: no request.
    view.Marked().Empty();
    view.Select(0);
    const size_t before = fTarget.messages.size();
    Key(Qt::Key_F5);
    Key(Qt::Key_F6);
    Key(Qt::Key_F9);
    EXPECT_EQ(fTarget.messages.size(), before);
}

TEST_F(DirViewTest, TrashAsksFirst)
{
    MakeFile(Folder() + "/f1");
    DirView &view = Open(Folder());
    view.Select(1);
    Key(Qt::Key_F8); // answered "Cancel"
    ASSERT_EQ(fAlerts.Count(), 1u);
    const platform::Alert question = fAlerts.Shown().front();
    EXPECT_EQ(question.title, "Sir?");
    EXPECT_EQ(question.text, "Do you really want to delete the following files/folders:\n\tf1");
    EXPECT_EQ(question.buttons, (std::vector<std::string>{"Cancel", "Delete"}));
    EXPECT_EQ(question.type, B_WARNING_ALERT);
    EXPECT_EQ(fTarget.Count(kestrin::kMsgDeleteRequest), 0);

    fAlerts.QueueAnswer(1);
    Key(Qt::Key_Delete);
    ASSERT_NE(fTarget.Last(kestrin::kMsgDeleteRequest), nullptr);
    EXPECT_EQ(RefNames(*fTarget.Last(kestrin::kMsgDeleteRequest)), std::vector<std::string>{"f1"});

    // Delete on the parent row with nothing marked asks nothing.
    view.Select(0);
    Key(Qt::Key_Delete);
    EXPECT_EQ(fAlerts.Count(), 2u);

    // Inside the Trash the deletion is for good, with the stop icon.
    const std::string trashFiles = fHome.Home() + "/.local/share/Trash/files";
    fs::create_directories(trashFiles);
    MakeFile(trashFiles + "/old");
    Relist([&] { view.Populate(trashFiles); });
    view.Select(1);
    Key(Qt::Key_F8);
    EXPECT_EQ(fAlerts.Shown().back().type, B_STOP_ALERT);
    EXPECT_EQ(fAlerts.Shown().back().text,
              "Do you really want permanently delete the following files/folders:\n\told");

    std::vector<std::string> names(20, "n");
    EXPECT_EQ(PaneCommands::TrashQuestion(names, false).substr(0, 58),
              "Do you really want to delete the following files/folders:\n");
    names.push_back("n");
    EXPECT_EQ(PaneCommands::TrashQuestion(names, false),
              "Do you really want to delete the 21 selected files/folders?");
    EXPECT_EQ(PaneCommands::TrashQuestion(names, true),
              "Do you really want to permanently delete the 21 selected files/folders?");
}

TEST_F(DirViewTest, RenameInPlace)
{
    MakeFile(Folder() + "/f1");
    MakeFile(Folder() + "/f2");
    DirView &view = Open(Folder());
    fWindow->activateWindow();
    view.setFocus();

    view.Select(1);
    Key(Qt::Key_F6, Qt::ShiftModifier);
    auto *container = view.findChild<QFrame *>("renamecontainer");
    ASSERT_NE(container, nullptr);
    auto *field = container->findChild<QLineEdit *>();
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), "f1");
    field->setText("g1");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(WaitFor([&] { return view.FindItem("g1") >= 0 && view.FindItem("f1") < 0; }));
    EXPECT_TRUE(fs::exists(Folder() + "/g1"));
    EXPECT_FALSE(fs::exists(Folder() + "/f1"));
    EXPECT_EQ(view.findChild<QFrame *>("renamecontainer"), nullptr);

    view.Select(view.FindItem("f2"));
    Key(Qt::Key_F6, Qt::ShiftModifier);
    field = view.findChild<QFrame *>("renamecontainer")->findChild<QLineEdit *>();
    field->setText("zzz");
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_TRUE(WaitFor([&] { return view.findChild<QFrame *>("renamecontainer") == nullptr; }));
    EXPECT_TRUE(fs::exists(Folder() + "/f2"));
    EXPECT_FALSE(fs::exists(Folder() + "/zzz"));

    // A name with a slash is refused, and nothing moves.
    view.Select(view.FindItem("f2"));
    Key(Qt::Key_F6, Qt::ShiftModifier);
    field = view.findChild<QFrame *>("renamecontainer")->findChild<QLineEdit *>();
    field->setText("../escape");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(WaitFor([&] { return fAlerts.Count() == 1; }));
    EXPECT_TRUE(fs::exists(Folder() + "/f2"));
}

TEST_F(DirViewTest, AFolderThatBecomesUnreadableKeepsThePaneUsable)
{
    if (UnprivilegedRerun::Delegated())
        return;
    fs::create_directory(Folder() + "/closed");
    MakeFile(Folder() + "/closed/inside");
    DirView &view = Open(Folder() + "/closed");
    ASSERT_GT(view.FindItem("inside"), 0);
    chmod((Folder() + "/closed").c_str(), 0);
    Relist([&] { view.Refresh(); });
    // A refusal to read is no box of the folder check: the pane stays, empty.
    EXPECT_EQ(fAlerts.Count(), 0u);
    EXPECT_EQ(view.CurrentPath(), Folder() + "/closed");
    EXPECT_EQ(RowNames(view), std::vector<std::string>{});
    Relist([&] { Key(Qt::Key_Backspace); });
    EXPECT_EQ(view.CurrentPath(), Folder());
    EXPECT_EQ(view.Row(view.CurrentSelection())->Name(), "closed");
    chmod((Folder() + "/closed").c_str(), 0755);
    Relist([&] { Key(Qt::Key_Return); });
    EXPECT_GT(view.FindItem("inside"), 0);
}

TEST_F(DirViewTest, OpeningRows)
{
    fs::create_directory(Folder() + "/sub");
    WriteFileBytes(Folder() + "/a.zip", std::string("PK\x03\x04", 4) + std::string(40, '\0'));
    WriteFileBytes(Folder() + "/t.txt", "text");
    DirView &view = Open(Folder());

    // An archive opens in the pane itself.
    view.Select(view.FindItem("a.zip"));
    Relist([&] { Key(Qt::Key_Return); });
    EXPECT_EQ(view.Mode(), kestrin::kModeArchive);
    EXPECT_EQ(view.Source().HeaderText(), Folder() + "/a.zip");
    Relist([&] { Key(Qt::Key_Backspace); });
    EXPECT_EQ(view.Row(view.CurrentSelection())->Name(), "a.zip");
    // Any kind of archive opens in the pane, found by its type.
    WriteTestArchive(Folder() + "/b.tar.gz", "tar.gz", {{"member", "data"}});
    Relist([&] { view.Refresh(); });
    view.Select(view.FindItem("b.tar.gz"));
    Relist([&] { Key(Qt::Key_Return); });
    EXPECT_EQ(view.Mode(), kestrin::kModeArchive);
    EXPECT_EQ(view.Source().HeaderText(), Folder() + "/b.tar.gz");
    EXPECT_EQ(RowNames(view), (std::vector<std::string>{"..", "member"}));
    Relist([&] { Key(Qt::Key_Backspace); });
    EXPECT_EQ(view.CurrentPath(), Folder());
    EXPECT_EQ(fTarget.Count(kestrin::kMsgOpenArchive), 0);

    view.Select(view.FindItem("t.txt"));
    Key(Qt::Key_Return);
    ASSERT_EQ(fLaunches.Launches().size(), 1u);
    EXPECT_EQ(fLaunches.Launches()[0].arguments, std::vector<std::string>{Folder() + "/t.txt"});

    view.Select(view.FindItem("sub"));
    Relist([&] { Key(Qt::Key_Return); });
    EXPECT_EQ(view.CurrentPath(), Folder() + "/sub");
    view.Select(0);
    Relist([&] { Key(Qt::Key_Return); });
    EXPECT_EQ(view.CurrentPath(), Folder());
}

TEST_F(DirViewTest, PipesSocketsAndDevicesListAsFilesAndF3AsksTheViewer)
{
    fs::create_directory(Folder() + "/sub");
    MakeFile(Folder() + "/t.txt", 2048);
    MakeFifo(Folder() + "/pipe");
    MakeSocketFile(Folder() + "/socket");
    fs::create_symlink("/dev/null", Folder() + "/to-null");
    DirView &view = Open(Folder());
    EXPECT_EQ(RowNames(view),
              (std::vector<std::string>{"..", "sub", "pipe", "socket", "t.txt", "to-null"}));
    EXPECT_EQ(view.GetFiles(), "0 of 2k in 0 of 4 files selected");

    // The viewer is the one to say it does not read them.
    for (const char *name : {"pipe", "socket", "to-null"}) {
        view.Select(view.FindItem(name));
        const int before = fTarget.Count(kestrin::kMsgOpenViewer);
        Key(Qt::Key_F3);
        ASSERT_EQ(fTarget.Count(kestrin::kMsgOpenViewer), before + 1) << name;
        EXPECT_EQ(Text(*fTarget.Last(kestrin::kMsgOpenViewer), "path"), Folder() + "/" + name);
    }
    view.Select(view.FindItem("sub"));
    Key(Qt::Key_F3);
    EXPECT_EQ(fTarget.Count(kestrin::kMsgOpenViewer), 3);

    // A pipe that appears while the folder is shown is a file as well.
    MakeFifo(Folder() + "/later");
    EXPECT_TRUE(WaitFor([&] { return view.GetFiles() == "0 of 2k in 0 of 5 files selected"; }))
        << view.GetFiles();
    EXPECT_EQ(RowNames(view).at(2), "later");
}

TEST_F(DirViewTest, AnInactiveListShowsNoSelectionAndRemembersIt)
{
    for (int i = 0; i < 3; i++)
        MakeFile(Folder() + "/f" + std::to_string(i));
    DirView &view = Open(Folder());
    auto *other = new QLineEdit(fWindow.get());
    other->show();
    QApplication::setActiveWindow(fWindow.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(fWindow.get()));

    view.setFocus();
    view.Select(2);
    other->setFocus();
    EXPECT_TRUE(WaitFor([&] { return !view.hasFocus(); }));
    EXPECT_EQ(view.CurrentSelection(), -1);
    view.setFocus();
    EXPECT_TRUE(WaitFor([&] { return view.CurrentSelection() == 2; }));
}

TEST_F(DirViewTest, PageDownSelectsTheRowAtTheBottom)
{
    for (int i = 0; i < 100; i++)
        MakeFile(Folder() + "/f" + std::to_string(100 + i));
    DirView &view = Open(Folder());
    view.Select(1);
    Key(Qt::Key_PageDown);
    const int selected = view.CurrentSelection();
    EXPECT_GT(selected, 5);
    EXPECT_EQ(view.IndexOf(QPoint(2, view.viewport()->height() - 2)), selected);
}

} // namespace

TEST_F(DirViewTest, QueryResultsShowPathsAndLeadBackToTheFolder)
{
    fs::create_directories(Folder() + "/deep/er");
    MakeFile(Folder() + "/deep/found.txt", 3);
    DirView &view = Open(Folder());
    platform::Message results = QueryResults({Folder() + "/deep/er", Folder() + "/deep/found.txt"});
    results.AddString("QueryString", "(name==\"*\")");
    Relist([&] { view.Populate(results); });

    EXPECT_EQ(view.Mode(), kestrin::kModeQuery);
    EXPECT_EQ(view.Source().HeaderText(), "(name==\"*\")");
    EXPECT_EQ(RowNames(view),
              (std::vector<std::string>{Folder() + "/deep/er", Folder() + "/deep/found.txt"}));
    EXPECT_FALSE(view.IsWatching());
    EXPECT_EQ(view.Source().Place().kind, kestrin::TransferPlace::Kind::QueryResults);

    // A request out of it names the entries where they are.
    view.Select(1);
    Key(Qt::Key_F5);
    ASSERT_NE(fTarget.Last(kestrin::kMsgCopyRequest), nullptr);
    EXPECT_EQ(RefNames(*fTarget.Last(kestrin::kMsgCopyRequest)),
              std::vector<std::string>{"found.txt"});
    // Renaming in place is for folders only.
    Key(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_EQ(view.findChild<QFrame *>("renamecontainer"), nullptr);

    // Opening a folder result lists that folder; up a level from results
    // goes back to the folder the pane showed.
    Relist([&] { view.Populate(results); });
    view.Select(0);
    Relist([&] { Key(Qt::Key_Return); });
    EXPECT_EQ(view.CurrentPath(), Folder() + "/deep/er");
    Relist([&] { view.Populate(results); });
    Relist([&] { Key(Qt::Key_Backspace); });
    EXPECT_EQ(view.Mode(), kestrin::kModeFolder);
    EXPECT_EQ(view.CurrentPath(), Folder() + "/deep/er");
    EXPECT_TRUE(view.IsWatching());
}

// Query results are read by their paths: the Name column is as wide as the
// longest path needs, within the pane; a path wider than the pane loses its
// middle, keeping where it begins and the entry's own name; and the width
// the column has for names comes back with names (and is the one kept).
TEST_F(DirViewTest, QueryResultsWidenTheNameColumnToTheirPaths)
{
    const std::string deep = Folder() + "/" + std::string(30, 'd') + "/" + std::string(30, 'e');
    fs::create_directories(deep);
    MakeFile(deep + "/found.txt");
    MakeFile(Folder() + "/near.txt");
    DirView &view = Open(Folder());
    fWindow->resize(1200, 400);
    view.resize(1200, 400);
    const float names = view.ColumnWidth(kColumnName);
    Relist([&] { view.Populate(QueryResults({deep + "/found.txt", Folder() + "/near.txt"})); });
    const kestrin::DirListItem *found = view.Row(view.FindItem(deep + "/found.txt"));
    const int longest = DirRowPainter::TextWidth(*found, kColumnName, view.fontMetrics());
    const auto shown = [&] {
        const int width = int(view.ColumnWidth(kColumnName));
        return DirRowPainter::ShownText(*found, kColumnName, width, view.fontMetrics()).toStdString();
    };
    const auto room = [&] {
        return view.viewport()->width() - int(view.ColumnWidth(kestrin::kColumnIcon));
    };
    ASSERT_LT(longest, room());
    EXPECT_GE(view.ColumnWidth(kColumnName), longest);
    EXPECT_LE(view.ColumnWidth(kColumnName), room());
    EXPECT_EQ(shown(), deep + "/found.txt");
    EXPECT_EQ(view.SavedColumnWidth(kColumnName), names);

    // A narrow pane: the column fills it, and the path shows both ends.
    fWindow->resize(longest / 2, 400);
    view.resize(longest / 2, 400);
    EXPECT_EQ(int(view.ColumnWidth(kColumnName)), room());
    const std::string narrow = shown();
    EXPECT_EQ(narrow.substr(0, 10), deep.substr(0, 10)) << narrow;
    EXPECT_EQ(narrow.substr(narrow.size() - 10), "/found.txt") << narrow;
    EXPECT_NE(narrow.find("\u2026"), std::string::npos) << narrow;

    Relist([&] { Key(Qt::Key_Backspace); });
    EXPECT_EQ(view.Mode(), kestrin::kModeFolder);
    EXPECT_EQ(view.ColumnWidth(kColumnName), names);
    const kestrin::DirListItem &near = *view.Row(view.FindItem("near.txt"));
    EXPECT_EQ(DirRowPainter::ShownText(near, kColumnName, 20, view.fontMetrics()), "near.txt")
        << "a name is cut at the edge, as ever";
}

TEST_F(DirViewTest, TheRowThatTakesTheSelectedRowsPlaceIsSelected)
{
    for (int i = 0; i < 30; i++)
        MakeFile(Folder() + "/f" + std::to_string(100 + i));
    DirView &view = Open(Folder());
    fWindow->activateWindow();
    view.setFocus();
    const auto selectedName = [&view] {
        const auto *row = static_cast<const kestrin::DirListItem *>(view.SelectedItem());
        return row != nullptr ? row->Name() : std::string("<none>");
    };

    view.Select(view.FindItem("f110"));
    view.Marked().Toggle(view.FindItem("f120"));
    fs::remove(Folder() + "/f110");
    EXPECT_TRUE(WaitFor([&] { return view.FindItem("f110") < 0; }));
    EXPECT_EQ(selectedName(), "f111");
    EXPECT_EQ(view.Marked().Count(), 1);
    EXPECT_TRUE(view.Row(view.FindItem("f120"))->IsMarked());
    // The keys go on from there.
    Key(Qt::Key_Down);
    EXPECT_EQ(selectedName(), "f112");

    // Several at once, the selected one among them, rows above it too.
    view.Select(view.FindItem("f115"));
    for (const char *name : {"f101", "f102", "f115", "f116"})
        fs::remove(Folder() + "/" + name);
    EXPECT_TRUE(WaitFor([&] { return view.FindItem("f116") < 0 && view.FindItem("f101") < 0; }));
    EXPECT_EQ(selectedName(), "f117");

    // The last row gone: the new last row.
    view.Select(view.FindItem("f129"));
    fs::remove(Folder() + "/f129");
    EXPECT_TRUE(WaitFor([&] { return view.FindItem("f129") < 0; }));
    EXPECT_EQ(selectedName(), "f128");

    // Another row going leaves the selection where it is.
    fs::remove(Folder() + "/f100");
    EXPECT_TRUE(WaitFor([&] { return view.FindItem("f100") < 0; }));
    EXPECT_EQ(selectedName(), "f128");
}

TEST_F(DirViewTest, HoveringACutNameShowsItWhole)
{
    const std::string longName = std::string(120, 'w') + ".txt";
    MakeFile(Folder() + "/" + longName);
    MakeFile(Folder() + "/s");
    DirView &view = Open(Folder());
    const auto hover = [&view](const std::string &name) {
        const QRect frame = view.ItemFrame(view.FindItem(name));
        const QPoint point(view.header()->sectionViewportPosition(kColumnName) + 10,
                           frame.center().y());
        QHelpEvent help(QEvent::ToolTip, point, view.viewport()->mapToGlobal(point));
        QApplication::sendEvent(view.viewport(), &help);
        QTest::qWait(0);
        return QToolTip::isVisible() ? QToolTip::text().toStdString() : std::string();
    };
    EXPECT_EQ(hover(longName), longName);
    hover("s");
    EXPECT_TRUE(WaitFor([] { return !QToolTip::isVisible(); })) << "a name that fits has none";
}

TEST_F(DirViewTest, ADocumentThatCannotBeOpenedSaysSo)
{
    WriteFileBytes(Folder() + "/odd.type", "?");
    DirView &view = Open(Folder());
    fLaunches.SetResult(B_ENTRY_NOT_FOUND);
    view.Select(view.FindItem("odd.type"));
    Key(Qt::Key_Return);
    Key(Qt::Key_F4);
    // The editor is known when the desktop answers.
    ASSERT_TRUE(WaitFor([&] { return fAlerts.Count() == 2; }));
    EXPECT_EQ(fAlerts.Shown()[0].text,
              "Kestrin found no application to open \"" + Folder() + "/odd.type\".");
    EXPECT_EQ(fAlerts.Shown()[1].text, fAlerts.Shown()[0].text);
}
