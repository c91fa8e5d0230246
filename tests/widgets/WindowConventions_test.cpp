#include "widgets/WindowConventions.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>
#include <map>
#include <memory>

using kestrin::WindowConventions;

namespace {

// A window with a field, a list, a button that opens a menu, another
// button, and OK and Cancel: each focusable by name.
struct Window
{
    Window(bool withCancel, bool closable)
    {
        widget.setWindowTitle("Window");
        auto *layout = new QVBoxLayout(&widget);
        const auto add = [&](QWidget *child, const char *name) {
            child->setObjectName(name);
            layout->addWidget(child);
            return child;
        };
        field = static_cast<QLineEdit *>(add(new QLineEdit("typed"), "field"));
        list = static_cast<QListWidget *>(add(new QListWidget, "list"));
        list->addItems({"first", "second"});
        list->setCurrentRow(0);
        auto *menuButton = static_cast<QPushButton *>(add(new QPushButton("Choose"), "menu"));
        menuButton->setMenu(new QMenu(menuButton));
        for (const char *name : {"other", "ok", "cancel"})
            buttons[name] = static_cast<QPushButton *>(add(new QPushButton(name), name));
        WindowConventions::Apply(&widget,
                                 {.firstField = field,
                                  .defaultButton = buttons["ok"],
                                  .cancelButton = withCancel ? buttons["cancel"] : nullptr,
                                  .closable = closable});
        for (const auto &[name, button] : buttons)
            spies[name] = std::make_unique<QSignalSpy>(button, &QPushButton::clicked);
    }

    bool ShowActive()
    {
        widget.show();
        QApplication::setActiveWindow(&widget);
        return QTest::qWaitForWindowActive(&widget);
    }

    // The names of the buttons pressed so far.
    std::vector<std::string> Pressed() const
    {
        std::vector<std::string> pressed;
        for (const auto &[name, spy] : spies) {
            if (!spy->isEmpty())
                pressed.push_back(name);
        }
        return pressed;
    }

    QWidget widget;
    QLineEdit *field;
    QListWidget *list;
    std::map<std::string, QPushButton *> buttons;
    std::map<std::string, std::unique_ptr<QSignalSpy>> spies;
};

TEST(WindowConventions, KeysPressTheRightButtonOrCloseTheWindow)
{
    struct Case
    {
        const char *what;
        const char *focus;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        bool withCancel;
        bool closable;
        std::vector<std::string> pressed;
        bool closes;
    };
    const Qt::KeyboardModifiers none = Qt::NoModifier;
    const Case cases[] = {
        {"Return in a field", "field", Qt::Key_Return, none, true, true, {"ok"}, false},
        {"Enter in a field", "field", Qt::Key_Enter, Qt::KeypadModifier, true, true, {"ok"}, false},
        {"Return on a button", "other", Qt::Key_Return, none, true, true, {"other"}, false},
        {"Return on a menu button", "menu", Qt::Key_Return, none, true, true, {"ok"}, false},
        {"Return in a list", "list", Qt::Key_Return, none, true, true, {}, false},
        {"Escape", "field", Qt::Key_Escape, none, true, true, {"cancel"}, false},
        {"Escape, no cancel", "field", Qt::Key_Escape, none, false, true, {}, true},
        {"Escape, not closable", "list", Qt::Key_Escape, none, false, false, {}, false},
        {"Ctrl+W", "other", Qt::Key_W, Qt::ControlModifier, true, true, {}, true},
        {"Ctrl+W, not closable", "field", Qt::Key_W, Qt::ControlModifier, true, false, {}, false},
    };
    for (const Case &each : cases) {
        Window window(each.withCancel, each.closable);
        ASSERT_TRUE(window.ShowActive()) << each.what;
        QSignalSpy activated(window.list, &QListWidget::itemActivated);
        QWidget *focus = window.widget.findChild<QWidget *>(each.focus);
        focus->setFocus();
        QTest::keyClick(focus, each.key, each.modifiers);
        EXPECT_EQ(window.Pressed(), each.pressed) << each.what;
        EXPECT_EQ(window.widget.isVisible(), !each.closes) << each.what;
        // Return in the list invokes its row, once.
        const bool invokes = focus == window.list && each.key == Qt::Key_Return;
        EXPECT_EQ(activated.size(), invokes ? 1 : 0) << each.what;
    }
}

TEST(WindowConventions, TheFirstFieldHasTheFocusEachTimeTheWindowIsShown)
{
    Window window(true, true);
    ASSERT_TRUE(window.ShowActive());
    EXPECT_EQ(QApplication::focusWidget(), window.field);
    EXPECT_EQ(window.field->selectedText(), "typed");
    EXPECT_TRUE(window.buttons["ok"]->isDefault());

    window.buttons["other"]->setFocus();
    window.widget.hide();
    ASSERT_TRUE(window.ShowActive());
    EXPECT_EQ(QApplication::focusWidget(), window.field);
}

// A second Ctrl+W beside the menu's would make both ambiguous.
TEST(WindowConventions, AMenuThatClosesWithCtrlWKeepsIt)
{
    QMainWindow window;
    QAction *close = window.menuBar()->addMenu("File")->addAction("Close");
    close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    QSignalSpy triggered(close, &QAction::triggered);
    WindowConventions::Apply(&window, {});
    window.show();
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(triggered.size(), 1);
}

} // namespace
