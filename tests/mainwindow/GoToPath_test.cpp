#include "MainWindowTestSupport.h"

#include "panes/KsHeader.h"
#include "panes/PathField.h"

#include <QClipboard>
#include <QGuiApplication>

using kestrin::DirPane;
using kestrin::KestrinWindow;

using GoToPathTest = KestrinFixture;

// Ctrl+L while a list has the keyboard opens its pane's path field; a path
// another application put on the clipboard is pasted with the field's own
// Ctrl+V (not the window's item of that key) and gone to with Return.
TEST_F(GoToPathTest, CtrlLOpensTheFieldAndAPastedPathIsGoneTo)
{
    fs::create_directories(Home() + "/far/away");
    KestrinWindow &window = Start();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    DirPane *pane = window.Panes().at(1);
    List(1)->setFocus();
    QTest::keyClick(List(1), Qt::Key_L, Qt::ControlModifier);
    kestrin::PathField *field = pane->PathEdit();
    ASSERT_NE(field, nullptr);
    ASSERT_TRUE(WaitFor([&] { return QApplication::focusWidget() == field; }));
    EXPECT_EQ(field->text().toStdString(), List(1)->CurrentPath());
    EXPECT_EQ(window.GetFocusedPane(), pane);

    QGuiApplication::clipboard()->setText(QString::fromStdString(" " + Home() + "/far/away\n"));
    QTest::keyClick(field, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(pane->Tree(), nullptr);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(WaitFor([&] { return pane->Header()->Text() == Home() + "/far/away"; }));
    EXPECT_TRUE(List(1)->hasFocus());
    EXPECT_EQ(window.Panes().at(0)->Header()->Text(), Home());
}
