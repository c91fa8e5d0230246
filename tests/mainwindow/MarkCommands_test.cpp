// Marking by a pattern, by keys, as a user does it.

#include "MainWindowTestSupport.h"

#include "panes/KsFtr.h"

#include <QCheckBox>
#include <QLineEdit>

namespace {

class MarkByPatternTest : public KestrinFixture
{
protected:
    void SetUp() override
    {
        fs::create_directories(Folder() + "/notes.txt");
        for (const char *name : {"a.txt", "b.txt", "c.md", "d.TXT"})
            WriteFileBytes(Folder() + "/" + name, std::string(2048, 'x'));
        PanesOn({Folder(), Home()});
    }
    std::string Folder() const { return fHome.Root() + "/work"; }

    // Asks with the menu's key while the list has the focus, types the
    // patterns, ticks "Folders too" when asked, and answers with Return.
    void Ask(Qt::KeyboardModifiers keys, const char *patterns, bool folders)
    {
        // The offscreen platform has no window manager to give the main
        // window back its activation once a window of ours has closed.
        QApplication::setActiveWindow(fKestrin->Window());
        kestrin::DirView *list = List(0);
        list->setFocus();
        QTest::keyClick(list, Qt::Key_M, keys);
        QLineEdit *field = nullptr;
        ASSERT_TRUE(WaitFor([&] {
            field = qobject_cast<QLineEdit *>(QApplication::focusWidget());
            return field != nullptr && field->objectName() == "Text1";
        }));
        QTest::keyClicks(field, patterns);
        if (folders) {
            QTest::keyClick(field, Qt::Key_Tab);
            auto *check = qobject_cast<QCheckBox *>(QApplication::focusWidget());
            ASSERT_NE(check, nullptr);
            if (!check->isChecked())
                QTest::keyClick(check, Qt::Key_Space);
            QTest::keyClick(check, Qt::Key_Return);
        } else {
            QTest::keyClick(field, Qt::Key_Return);
        }
        EXPECT_TRUE(WaitFor([] { return QApplication::activeModalWidget() == nullptr; }));
    }

    std::string Footer() { return fKestrin->Window()->Panes().at(0)->Footer()->Text(); }
};

TEST_F(MarkByPatternTest, CtrlMMarksAndCtrlShiftMUnmarks)
{
    Start();
    Ask(Qt::ControlModifier, "*.txt", false);
    EXPECT_EQ(Marked(0), (std::set<std::string>{"a.txt", "b.txt"}));
    EXPECT_EQ(Footer(), "4 of 8k in 2 of 4 files selected");

    Ask(Qt::ControlModifier, "*.md; *.TXT", true);
    EXPECT_EQ(Marked(0), (std::set<std::string>{"a.txt", "b.txt", "c.md", "d.TXT"}));

    Ask(Qt::ControlModifier, "*", true);
    EXPECT_EQ(Marked(0), (std::set<std::string>{"a.txt", "b.txt", "c.md", "d.TXT", "notes.txt"}));

    Ask(Qt::ControlModifier | Qt::ShiftModifier, "?.txt", false);
    EXPECT_EQ(Marked(0), (std::set<std::string>{"c.md", "d.TXT", "notes.txt"}));
    EXPECT_EQ(Footer(), "4 of 8k in 2 of 4 files selected");
    EXPECT_FALSE(List(0)->Row(0)->IsMarked());
    EXPECT_EQ(fAlerts.Count(), 0u);
}

} // namespace
