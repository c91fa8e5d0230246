#include "PaneTestSupport.h"

#include "app/Profile.h"
#include "panes/KsFtr.h"
#include "panes/KsTree.h"
#include "panes/KsTreeListItem.h"
#include "widgets/StatusBar.h"

#include <QApplication>

using kestrin::DirPane;

namespace {

using DirPaneTest = PaneFixture;

TEST_F(DirPaneTest, HeaderAndFooterFollowTheList)
{
    MakeFile(Folder() + "/a", 4096);
    MakeFile(Folder() + "/b", 2048);
    DirPane &pane = Open(Folder());
    EXPECT_EQ(pane.Header()->Text(), Folder());
    EXPECT_EQ(pane.Footer()->Text(), "0 of 6k in 0 of 2 files selected");
    EXPECT_EQ(pane.Footer()->ProgressBar(), nullptr); // gone once the listing ended

    pane.List()->Select(1);
    EXPECT_EQ(pane.Footer()->Text(), "4 of 6k in 1 of 2 files selected");

    // While a folder is read the footer holds the progress bar "progress".
    for (int i = 0; i < 3000; i++)
        MakeFile(Folder() + "/many" + std::to_string(i));
    pane.List()->Populate(Folder());
    ASSERT_NE(pane.Footer()->ProgressBar(), nullptr);
    EXPECT_EQ(pane.Footer()->ProgressBar()->objectName(), "progress");
    QSignalSpy finished(pane.List(), &kestrin::DirView::ListingFinished);
    EXPECT_TRUE(finished.wait(10000));
    EXPECT_EQ(pane.Footer()->ProgressBar(), nullptr);
    EXPECT_EQ(pane.Footer()->Text(), "0 of 6k in 0 of 3002 files selected");

    MakeFile(Folder() + "/c", 1024);
    EXPECT_TRUE(
        WaitFor([&] { return pane.Footer()->Text() == "0 of 7k in 0 of 3003 files selected"; }));
}

TEST_F(DirPaneTest, FocusShowsInTheHeaderAndAClickGivesIt)
{
    DirPane &pane = Open(Folder());
    QApplication::setActiveWindow(&pane);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&pane));
    pane.List()->clearFocus();
    EXPECT_FALSE(pane.GotFocus());
    QTest::mouseClick(pane.Footer(), Qt::LeftButton);
    EXPECT_TRUE(WaitFor([&] { return pane.GotFocus(); }));
    EXPECT_TRUE(pane.List()->hasFocus());
    EXPECT_EQ(pane.Header()->Background(), (rgb_color{200, 200, 200, 200}));
}

TEST_F(DirPaneTest, HiddenHeaderFromTheProfile)
{
    kestrin::SetProfileString("Kestrin", "ShowHeader", "0", "Kestrin.pref");
    DirPane &pane = Open(Folder());
    EXPECT_FALSE(pane.Header()->isVisible());
    EXPECT_TRUE(pane.Footer()->isVisible());
    EXPECT_EQ(pane.List()->geometry().top(), 0);
    pane.SetHeaderVisible(true);
    EXPECT_GT(pane.List()->geometry().top(), 0);
}

TEST_F(DirPaneTest, TreeOpensToThePathAndThePaneFollowsIt)
{
    fs::create_directories(Folder() + "/one/two");
    fs::create_directories(Folder() + "/other");
    MakeFile(Folder() + "/one/file");
    DirPane &pane = Open(Folder() + "/one");
    QApplication::setActiveWindow(&pane);
    pane.List()->setFocus();
    ASSERT_TRUE(WaitFor([&] { return pane.GotFocus(); }));

    pane.DoTree();
    kestrin::KsTree *tree = pane.Tree();
    ASSERT_NE(tree, nullptr);
    QSignalSpy expanded(tree, &kestrin::KsTree::PathExpanded);
    ASSERT_TRUE(WaitFor([&] { return expanded.count() > 0; }));
    EXPECT_GT(tree->geometry().width(), 0);
    EXPECT_GT(pane.List()->geometry().left(), tree->geometry().left());
    EXPECT_EQ(tree->SelectedPath(), Folder() + "/one");
    ASSERT_NE(tree->FindRow(Folder() + "/one/two"), nullptr);

    // Choosing a folder in the tree lists it in the pane.
    QSignalSpy listed(pane.List(), &kestrin::DirView::ListingFinished);
    tree->Select(tree->FindRow(Folder() + "/other"));
    ASSERT_TRUE(listed.wait(10000));
    EXPECT_EQ(pane.List()->CurrentPath(), Folder() + "/other");
    EXPECT_EQ(pane.Header()->Text(), Folder() + "/other");

    pane.UnDoTree();
    EXPECT_EQ(pane.Tree(), nullptr);
    EXPECT_EQ(pane.List()->geometry().left(), 0);
}

TEST_F(DirPaneTest, TheFooterFollowsEveryChangeOfTheMarks)
{
    for (const char *name : {"a", "b", "c", "d", "e"})
        MakeFile(Folder() + "/" + name, 1024);
    DirPane &pane = Open(Folder());
    kestrin::DirView *list = pane.List();
    list->setFocus();
    const auto key = [list](const char *text) { QTest::keyClick(list, text[0]); };

    key("+");
    EXPECT_EQ(pane.Footer()->Text(), "5 of 5k in 5 of 5 files selected");
    key("-");
    EXPECT_EQ(pane.Footer()->Text(), "0 of 5k in 0 of 5 files selected");
    key("*");
    EXPECT_EQ(pane.Footer()->Text(), "5 of 5k in 5 of 5 files selected");
    list->Select(2);
    QTest::keyClick(list, Qt::Key_Insert);
    EXPECT_EQ(pane.Footer()->Text(), "4 of 5k in 4 of 5 files selected");

    // A marked file that goes away leaves the sum too.
    fs::remove(Folder() + "/e");
    EXPECT_TRUE(
        WaitFor([&] { return pane.Footer()->Text() == "3 of 4k in 3 of 4 files selected"; }));
}

} // namespace
