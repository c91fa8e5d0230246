#include "MainWindowTestSupport.h"
#include "app/SideFile.h"
#include "mainwindow/WindowMessages.h"
#include "panes/Hotlist.h"
#include "panes/KsFtr.h"
#include "panes/KsHeader.h"
#include "query/QueryMessages.h"
#include "support/TestArchives.h"

#include <QAction>
#include <QListWidget>
#include <QMenu>

using kestrin::KestrinWindow;

namespace kestrin {
void PrintTo(const HotlistEntry &entry, std::ostream *out)
{
    *out << "{" << entry.name << ", " << entry.place << "}";
}
} // namespace kestrin

namespace {

class PlacesTest : public KestrinFixture
{
protected:
    kestrin::DirPane &Pane(size_t pane) { return *fKestrin->Window()->Panes().at(pane); }
    std::string Header(size_t pane) { return Pane(pane).Header()->Text(); }

    // Sends a key to the pane's list and waits until its header shows `to`.
    void KeyTo(size_t pane, Qt::Key key, Qt::KeyboardModifiers modifiers, const std::string &to)
    {
        QTest::keyClick(List(pane), key, modifiers);
        EXPECT_TRUE(WaitFor([&] { return Header(pane) == to && !List(pane)->IsListing(); }))
            << Header(pane) << " instead of " << to;
    }
    void Open(size_t pane, const std::string &name, const std::string &to)
    {
        SelectIn(pane, name);
        KeyTo(pane, Qt::Key_Return, Qt::NoModifier, to);
    }
    // The pop-up menu of places open now, and its items' texts.
    static QMenu *PopUp()
    {
        QMenu *menu = nullptr;
        WaitFor([&] { return (menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())); });
        return menu;
    }
    // The offscreen platform gives the activation back to no window when a
    // pop-up closes, as a window manager would to the main window.
    void AfterPopUp()
    {
        ASSERT_TRUE(WaitFor([] { return QApplication::activePopupWidget() == nullptr; }));
        QApplication::setActiveWindow(fKestrin->Window());
    }
    static std::vector<std::string> Items(const QMenu &menu)
    {
        std::vector<std::string> items;
        for (const QAction *action : menu.actions())
            items.push_back(action->isSeparator() ? "--" : action->text().toStdString());
        return items;
    }
};

} // namespace

TEST_F(PlacesTest, BackForwardAndRecentPlacesByKeysWithTheListFocused)
{
    for (const char *folder : {"/a", "/b", "/c"})
        fs::create_directories(Home() + folder);
    const std::string archive = Home() + "/a/bundle.tar.gz";
    WriteTestArchive(archive, "tar.gz", {{"docs/index.html", "<html/>"}});
    Start();
    Open(1, "c", Home() + "/c");
    Open(0, "a", Home() + "/a");
    Open(0, "bundle.tar.gz", archive);
    Open(0, "docs", archive + "/docs/");

    KeyTo(0, Qt::Key_Left, Qt::AltModifier, archive);
    KeyTo(0, Qt::Key_Left, Qt::AltModifier, Home() + "/a");
    KeyTo(0, Qt::Key_Right, Qt::AltModifier, archive);
    KeyTo(0, Qt::Key_Right, Qt::AltModifier, archive + "/docs/");
    KeyTo(0, Qt::Key_Right, Qt::AltModifier, archive + "/docs/");
    EXPECT_EQ(Pane(0).Footer()->Text(), "No place to go forward to");
    for (const std::string &back : {archive, Home() + "/a", Home()})
        KeyTo(0, Qt::Key_Left, Qt::AltModifier, back);
    KeyTo(0, Qt::Key_Left, Qt::AltModifier, Home());
    EXPECT_EQ(Pane(0).Footer()->Text(), "No place to go back to");
    // A new place after going back: nothing is ahead any more.
    Open(0, "b", Home() + "/b");
    KeyTo(0, Qt::Key_Right, Qt::AltModifier, Home() + "/b");
    EXPECT_EQ(Pane(0).Footer()->Text(), "No place to go forward to");

    // The pane's places, newest first and each once, then the other pane's.
    QTest::keyClick(List(0), Qt::Key_Down, Qt::AltModifier);
    QMenu *menu = PopUp();
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(Items(*menu),
              (std::vector<std::string>{
                  Home(), Home() + "/a", archive, archive + "/docs/", "--", Home() + "/c"}));
    QTest::keyClick(menu, Qt::Key_Up);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_TRUE(WaitFor([&] { return Header(0) == Home() + "/c"; }));

    // Kept between runs; the history of a pane that is gone goes too.
    kestrin::SideFile extras = kestrin::SideFile::Read("Kestrin.extras");
    extras.SetAll("HistoryPane7", {Home()});
    ASSERT_TRUE(extras.Write());
    fKestrin->Window()->close();
    fKestrin.reset();
    Start();
    KeyTo(0, Qt::Key_Left, Qt::AltModifier, Home() + "/b");
    KeyTo(0, Qt::Key_Left, Qt::AltModifier, Home());
    EXPECT_EQ(kestrin::SideFile::Read("Kestrin.extras").GetAll("HistoryPane2"),
              (std::vector<std::string>{Home(), Home() + "/c"}));
    EXPECT_TRUE(kestrin::SideFile::Read("Kestrin.extras").GetAll("HistoryPane7").empty());
}

TEST_F(PlacesTest, HotlistAddChooseByNumberEditAndBookmarks)
{
    fs::create_directories(Home() + "/a");
    fs::create_directories(Home() + "/My Files");
    fs::create_directories(Home() + "/.config/gtk-3.0");
    WriteFileBytes(Home() + "/.config/gtk-3.0/bookmarks",
                   "file://" + Home() + "/My%20Files Mine\nsftp://host/x Remote\n");
    Start();
    QTest::keyClick(List(0), Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(Pane(0).Footer()->Text(), "Added to the hotlist: " + Home());
    QTest::keyClick(List(0), Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(Pane(0).Footer()->Text(), "Already in the hotlist");
    Open(0, "a", Home() + "/a");
    QTest::keyClick(List(0), Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    Open(1, "My Files", Home() + "/My Files");
    List(0)->setFocus();

    QTest::keyClick(List(0), Qt::Key_B, Qt::ControlModifier);
    QMenu *menu = PopUp();
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(Items(*menu),
              (std::vector<std::string>{
                  "&1  " + Home(), "&2  " + Home() + "/a", "--", "Mine", "--", "&Edit Hotlist…"}));
    QTest::keyClick(menu, Qt::Key_1);
    EXPECT_TRUE(WaitFor([&] { return Header(0) == Home() && !List(0)->IsListing(); }));
    AfterPopUp();
    QTest::keyClick(List(0), Qt::Key_B, Qt::ControlModifier);
    menu = PopUp();
    ASSERT_NE(menu, nullptr);
    // Past the two entries and the separator, to the desktop's bookmark.
    for (int down = 0; down < 3; down++)
        QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_TRUE(WaitFor([&] { return Header(0) == Home() + "/My Files"; }));
    AfterPopUp();
    EXPECT_TRUE(List(0)->hasFocus());

    // The edit window, from the hotlist's own menu: the second entry
    // renamed and moved up, the first (now second) removed.
    QTest::keyClick(List(0), Qt::Key_B, Qt::ControlModifier);
    menu = PopUp();
    ASSERT_NE(menu, nullptr);
    QTest::keyClick(menu, Qt::Key_E);
    auto *entries = fKestrin->Window()->findChild<QListWidget *>("HotlistEntries");
    ASSERT_NE(entries, nullptr);
    QApplication::setActiveWindow(entries->window());
    ASSERT_TRUE(WaitFor([&] { return entries->hasFocus(); }));
    QTest::keyClick(entries, Qt::Key_Down);
    QTest::keyClick(entries, Qt::Key_F2);

    QWidget *editor = QApplication::focusWidget();
    ASSERT_NE(editor, entries);
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(editor, "Work");
    QTest::keyClick(editor, Qt::Key_Return);
    // The field hands its text over once the key's event has ended.
    ASSERT_TRUE(
        WaitFor([&] { return entries->currentItem()->text() == "Work" && entries->hasFocus(); }));
    QTest::keyClick(entries, Qt::Key_Up, Qt::ControlModifier);
    QTest::keyClick(entries, Qt::Key_Down);
    QTest::keyClick(entries, Qt::Key_Delete);
    const std::vector<kestrin::HotlistEntry> kept = {{"Work", Home() + "/a"}};
    EXPECT_EQ(kestrin::Hotlist::Read().Entries(), kept);
    QTest::keyClick(entries, Qt::Key_Escape);
    EXPECT_TRUE(WaitFor(
        [&] { return fKestrin->Window()->findChild<QListWidget *>("HotlistEntries") == nullptr; }));
}

TEST_F(PlacesTest, QueryResultsSayWhyTheyAreNotKept)
{
    Start();
    platform::Message results(kestrin::kMsgQueryResults);
    results.AddString("QueryString", "(name==\"*x*\")");
    List(0)->setFocus();
    List(0)->Populate(results);
    ASSERT_TRUE(WaitFor([&] { return !List(0)->IsListing(); }));
    QTest::keyClick(List(0), Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "Hotlist");
    EXPECT_TRUE(kestrin::Hotlist::Read().Entries().empty());
    // Back from the results is the folder they were found from.
    KeyTo(0, Qt::Key_Left, Qt::AltModifier, Home());
}

// What the history, the hotlist and the hidden-files choice keep lives
// beside the profile: from the same profile, a run that uses them all
// writes it byte for byte as a run that uses none of them (each run makes
// the window a little larger, as it always has, so both start alike).
TEST_F(PlacesTest, TheProfileIsTheSameByteForByteWhateverTheExtrasHold)
{
    fs::create_directories(Home() + "/a/inner");
    fs::create_directories(Home() + "/b");
    WriteFileBytes(Home() + "/a/.hidden", "x");
    PanesOn({Home() + "/a", Home() + "/b"});
    const std::string pref = fHome.ConfigDir() + "/Kestrin/Kestrin.pref";
    const std::string before = ReadFileBytes(pref).value_or("");

    Start().close();
    fKestrin.reset();
    const std::optional<std::string> plain = ReadFileBytes(pref);
    ASSERT_TRUE(plain);

    WriteFileBytes(pref, before);
    Start();
    Open(0, "inner", Home() + "/a/inner");
    KeyTo(0, Qt::Key_Left, Qt::AltModifier, Home() + "/a");
    QTest::keyClick(List(0), Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    QTest::keyClick(List(0), Qt::Key_H, Qt::ControlModifier);
    EXPECT_TRUE(WaitFor([&] { return List(0)->FindItem(".hidden") < 0; }));
    fKestrin->Window()->close();
    fKestrin.reset();
    EXPECT_EQ(ReadFileBytes(pref), plain);
    const kestrin::SideFile extras = kestrin::SideFile::Read("Kestrin.extras");
    EXPECT_EQ(extras.Get("HiddenPane0"), "hidden");
    EXPECT_NE(extras.Get("HistoryPane1"), "");
    EXPECT_FALSE(kestrin::Hotlist::Read().Entries().empty());
}
