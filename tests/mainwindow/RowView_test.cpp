#include "MainWindowTestSupport.h"

#include "app/SideFile.h"
#include "mainwindow/WindowMessages.h"
#include "panes/KsFtr.h"
#include "panes/PaneModel.h"

#include <QAction>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>

using kestrin::DirPane;
using kestrin::KestrinWindow;

namespace {

using RowViewTest = KestrinFixture;

std::vector<std::string> Names(const kestrin::DirView *list)
{
    std::vector<std::string> names;
    for (int i = 0; i < list->CountItems(); i++)
        names.push_back(list->Row(i)->Name());
    return names;
}

bool HasFocus(const QWidget *widget)
{
    return QApplication::focusWidget() == widget;
}

// Typed into the footer's field, the filter narrows the rows at once; Return
// goes back to the list keeping it, Escape clears it.
TEST_F(RowViewTest, TheFilterFieldFiltersAsItIsTypedAndEscapeClearsIt)
{
    const std::string box = Home() + "/box";
    fs::create_directories(box + "/sub");
    for (const char *name : {"Notes.txt", "report.TXT", "image.png"})
        WriteFileBytes(box + "/" + name, "x");
    KestrinWindow &window = Start();
    List(0)->Populate(box);
    ASSERT_TRUE(WaitFor([&] { return Idle(window); }));
    // Sorted with case, as the profile's default has it.
    const std::vector<std::string> all{"..", "sub", "Notes.txt", "image.png", "report.TXT"};
    ASSERT_EQ(Names(List(0)), all);
    DirPane *pane = window.Panes()[0];
    QLineEdit *field = pane->Footer()->FilterField();
    const std::string summary = List(0)->GetFiles();

    List(0)->setFocus();
    QTest::keyClick(List(0), Qt::Key_J, Qt::ControlModifier);
    ASSERT_TRUE(WaitFor([&] { return HasFocus(field); }));
    QTest::keyClicks(field, "TxT");
    EXPECT_TRUE(WaitFor([&] {
        return Names(List(0)) == std::vector<std::string>{"..", "Notes.txt", "report.TXT"};
    }));
    EXPECT_EQ(pane->Footer()->Text().rfind("2 of 4 shown, ", 0), 0u) << pane->Footer()->Text();
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(HasFocus(List(0)));
    EXPECT_TRUE(pane->Footer()->FilterShown());

    // Opened again, the field holds the text, selected: typing replaces it.
    QTest::keyClick(List(0), Qt::Key_J, Qt::ControlModifier);
    ASSERT_TRUE(WaitFor([&] { return HasFocus(field); }));
    QTest::keyClicks(field, "*.p?g");
    EXPECT_TRUE(WaitFor([&] { return Names(List(0)) == std::vector<std::string>{"..", "image.png"}; }));
    EXPECT_EQ(pane->Footer()->Text().rfind("1 of 4 shown, ", 0), 0u) << pane->Footer()->Text();

    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_TRUE(WaitFor([&] { return Names(List(0)) == all; }));
    EXPECT_TRUE(HasFocus(List(0)));
    EXPECT_FALSE(pane->Footer()->FilterShown());
    EXPECT_EQ(pane->Footer()->Text(), summary);
}

// Ctrl+H in a list hides that pane's dot-files; the View menu's item shows
// the focused pane's choice, which comes back at the next start from
// Kestrin's own file and never reaches the profile.
TEST_F(RowViewTest, HiddenFilesArePerPaneAndKeptOutsideTheProfile)
{
    const std::string box = Home() + "/box";
    fs::create_directories(box + "/.git");
    WriteFileBytes(box + "/.profile", "x");
    WriteFileBytes(box + "/plain", "x");
    PanesOn({box, box});
    const std::vector<std::string> all{"..", ".git", ".profile", "plain"};
    const std::vector<std::string> shown{"..", "plain"};
    const auto itemChecked = [this] {
        KestrinWindow &window = *fKestrin->Window();
        emit window.menuBar()->findChild<QMenu *>("View")->aboutToShow();
        return window.findChild<QAction *>(kestrin::kHiddenFilesItem)->isChecked();
    };

    KestrinWindow &window = Start();
    ASSERT_EQ(Names(List(0)), all);
    List(0)->setFocus();
    QTest::keyClick(List(0), Qt::Key_H, Qt::ControlModifier);
    EXPECT_TRUE(WaitFor([&] { return Names(List(0)) == shown; }));
    EXPECT_EQ(Names(List(1)), all);
    EXPECT_FALSE(itemChecked());
    QTest::keyClick(List(0), Qt::Key_2, Qt::ControlModifier);
    EXPECT_TRUE(itemChecked());
    QTest::keyClick(List(0), Qt::Key_1, Qt::ControlModifier);
    window.close();
    fKestrin.reset();
    EXPECT_EQ(ProfileKeys().find("Hidden"), std::string::npos) << ProfileKeys();
    EXPECT_EQ(kestrin::SideFile::Read("Kestrin.extras").Get("HiddenPane0"), "hidden");

    Start();
    EXPECT_EQ(Names(List(0)), shown);
    EXPECT_EQ(Names(List(1)), all);
    EXPECT_FALSE(itemChecked());
    List(0)->setFocus();
    QTest::keyClick(List(0), Qt::Key_H, Qt::ControlModifier);
    EXPECT_TRUE(WaitFor([&] { return Names(List(0)) == all; }));
    EXPECT_TRUE(itemChecked());
    EXPECT_EQ(kestrin::SideFile::Read("Kestrin.extras").Get("HiddenPane0"), "");
}

} // namespace
