// Every window besides the main one, by keyboard: the focus when it opens,
// Tab, Return, Escape and Ctrl+W, and the names a screen reader says.

#include "MessageRecorder.h"
#include "TempHome.h"

#include "fileops/CopyWin.h"
#include "fileops/FileOpsMessages.h"
#include "fileops/GetInfo.h"
#include "fileops/GetTextWin.h"
#include "fileops/OverWin.h"
#include "fileops/PermissionsWin.h"
#include "fileops/mdlGetTextDlg.h"
#include "ftp/ConWin.h"
#include "ftp/FTPStatus.h"
#include "ftp/FtpWin.h"
#include "platform/AlertRecorder.h"
#include "prefs/OptionsWindow.h"
#include "query/QueryWindow.h"
#include "viewer/TextPager.h"
#include "viewer/ViewerWindow.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <filesystem>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <memory>

namespace {

const QRect kFrame(100, 100, 600, 400);

// What a window's test needs around it.
struct Surroundings
{
    std::string root;
    std::string settings; // the settings folder, "Kestrin"
    MessageRecorder *target;
    char *buffer;
    std::shared_future<void> copyMayEnd;
};

struct Row
{
    const char *window;
    std::function<QWidget *(const Surroundings &)> open;
    // The object names of the control focused on opening, of the button (or
    // list) that Return there presses, and of the button Escape presses;
    // null for none.
    const char *first;
    const char *onReturn;
    const char *onEscape;
    // Ctrl+W, and Escape without a cancel button, close it.
    bool closable;
};

const std::vector<Row> &Rows()
{
    using namespace kestrin;
    static const std::vector<Row> rows = {
        {"Query",
         [](const Surroundings &s) { return new QueryWindow(kFrame, s.target); },
         "Text1",
         "StartQuery",
         "CancelQuery",
         true},
        {"Ftp Sessions",
         [](const Surroundings &s) {
             WriteFileBytes(s.settings + "/site.ftp", "Host=h\nPort=21\nUser=u\n");
             return new ConWin(kFrame, s.target);
         },
         "lvConnections",
         "lvConnections",
         "bCancel",
         true},
        {"Ftp Connection",
         [](const Surroundings &) { return new FtpWin(kFrame, nullptr, std::nullopt); },
         "text1",
         "bOK",
         "bCancel",
         true},
        {"Get Info",
         [](const Surroundings &s) {
             WriteFileBytes(s.root + "/file.txt", "text\n");
             return new GetInfo(s.root + "/file.txt", kFrame);
         },
         "AttributeView",
         nullptr,
         nullptr,
         true},
        {"Set File Permissions",
         [](const Surroundings &s) { return new PermissionsWin(kFrame, s.target); },
         "CheckBox1",
         "bOK",
         "bCancel",
         true},
        {"Preferences",
         [](const Surroundings &s) { return new OptionsWindow(kFrame, s.target); },
         "DateFormat",
         "SaveOptions",
         "CancelOptions",
         true},
        {"Viewer",
         [](const Surroundings &s) {
             WriteFileBytes(s.root + "/notes.txt", "first\nsecond\n");
             return new ViewerWindow(kFrame, s.root + "/notes.txt");
         },
         "TextScroll",
         nullptr,
         nullptr,
         true},
        {"Status",
         [](const Surroundings &) { return new FTPStatus(kFrame); },
         "StatusWindow",
         nullptr,
         nullptr,
         true},
        {"Item Exists",
         [](const Surroundings &) {
             auto *question = new OverWin(kFrame, "Item Exists");
             question->DoDisplay();
             return question;
         },
         "Skip",
         "Skip",
         "Cancel",
         false},
        {"Modal prompt",
         [](const Surroundings &s) { return new mdlGetTextDlg("Name:", s.buffer, 15); },
         "Text1",
         "OK Button",
         "Cancel Button",
         true},
        {"Prompt",
         [](const Surroundings &s) {
             return new GetTextWin(kFrame, "Prompt", s.target, "Name:", "x", 7, "OK", "Cancel");
         },
         "Text1",
         "Button1",
         "Button2",
         false},
        {"Copy",
         [](const Surroundings &s) {
             return new CopyWin(kFrame,
                                "Copy",
                                s.root,
                                platform::Message(kMsgDeleteRequest),
                                nullptr,
                                [wait = s.copyMayEnd](CopyControl &) { wait.wait(); });
         },
         nullptr,
         nullptr,
         "StopButton",
         false},
    };
    return rows;
}

class SecondaryWindowsTest : public ::testing::Test
{
protected:
    SecondaryWindowsTest() { std::filesystem::create_directories(Settings()); }

    std::string Settings() const { return fHome.ConfigDir() + "/Kestrin"; }

    ~SecondaryWindowsTest() override
    {
        fCopyMayEnd.set_value();
        for (const QPointer<QWidget> &window : fOpened) {
            // A copy window goes by itself once its work has ended.
            if (qobject_cast<kestrin::CopyWin *>(window.data()) != nullptr) {
                EXPECT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }));
            }
            delete window.data();
        }
    }

    // The row's window, shown and active, with a spy on everything that can
    // be pressed in it.
    QWidget *Open(const Row &row)
    {
        QWidget *window = row.open({fHome.Root(), Settings(), &fTarget, fBuffer, fCopyMayEndFuture});
        fOpened.emplace_back(window);
        fSpies.clear();
        for (QAbstractButton *button : window->findChildren<QAbstractButton *>())
            fSpies[button->objectName().toStdString()]
                = std::make_unique<QSignalSpy>(button, &QAbstractButton::clicked);
        for (QAbstractItemView *list : window->findChildren<QAbstractItemView *>())
            fSpies[list->objectName().toStdString()]
                = std::make_unique<QSignalSpy>(list, &QAbstractItemView::activated);
        window->show();
        QApplication::setActiveWindow(window);
        EXPECT_TRUE(QTest::qWaitForWindowActive(window)) << row.window;
        return window;
    }

    std::vector<std::string> Pressed() const
    {
        std::vector<std::string> pressed;
        for (const auto &[name, spy] : fSpies) {
            if (!spy->isEmpty())
                pressed.push_back(name);
        }
        return pressed;
    }

    static std::vector<std::string> Named(const char *name)
    {
        return name != nullptr ? std::vector<std::string>{name} : std::vector<std::string>{};
    }

    static void Press(QWidget *window, Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QWidget *focus = QApplication::focusWidget();
        QTest::keyClick(focus != nullptr ? focus : window, key, modifiers);
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
    MessageRecorder fTarget;
    char fBuffer[16] = "name";
    std::promise<void> fCopyMayEnd;
    std::shared_future<void> fCopyMayEndFuture = fCopyMayEnd.get_future().share();
    std::vector<QPointer<QWidget>> fOpened;
    std::map<std::string, std::unique_ptr<QSignalSpy>> fSpies;
};

// Whether `next` comes after `previous` as the eye reads a window: below it,
// or to its right.
bool ReadsAfter(const QRect &previous, const QRect &next)
{
    return next.top() >= previous.bottom() || next.left() > previous.left();
}

QRect InWindow(const QWidget *widget)
{
    return QRect(widget->mapTo(widget->window(), QPoint(0, 0)), widget->size());
}

TEST_F(SecondaryWindowsTest, TheFirstFieldHasTheFocusAndTabFollowsTheWindowsLayout)
{
    for (const Row &row : Rows()) {
        QWidget *window = Open(row);
        QWidget *focus = QApplication::focusWidget();
        if (row.first == nullptr) {
            EXPECT_TRUE(focus == nullptr || focus == window) << row.window;
            continue;
        }
        ASSERT_NE(focus, nullptr) << row.window;
        EXPECT_EQ(focus->objectName(), row.first) << row.window;

        // Once round the window: only the step from the last control back
        // to the first goes up or left.
        std::vector<QWidget *> visited{focus};
        for (int i = 0; i < 40; i++) {
            Press(window, Qt::Key_Tab);
            if (QApplication::focusWidget() == visited.front())
                break;
            visited.push_back(QApplication::focusWidget());
        }
        EXPECT_EQ(QApplication::focusWidget(), visited.front()) << row.window;
        int backwards = 0;
        for (size_t i = 0; i < visited.size(); i++) {
            QWidget *next = visited[(i + 1) % visited.size()];
            if (!ReadsAfter(InWindow(visited[i]), InWindow(next)))
                backwards++;
        }
        EXPECT_LE(backwards, 1) << row.window;
    }
}

// Return presses the button the window's work ends with, Escape its cancel
// button; Ctrl+W presses nothing, and it (or Escape without a cancel button)
// closes the window unless it may not be closed.
TEST_F(SecondaryWindowsTest, ReturnEscapeAndCtrlWPressTheWindowsButtonsOrCloseIt)
{
    const auto closed = [](const QPointer<QWidget> &window) {
        return window.isNull() || !window->isVisible();
    };
    for (const Row &row : Rows()) {
        Press(Open(row), Qt::Key_Return);
        EXPECT_EQ(Pressed(), Named(row.onReturn)) << row.window;

        QPointer<QWidget> window = Open(row);
        Press(window, Qt::Key_Escape);
        EXPECT_EQ(Pressed(), Named(row.onEscape)) << row.window;
        if (row.onEscape == nullptr) {
            EXPECT_EQ(closed(window), row.closable) << row.window;
        }

        window = Open(row);
        Press(window, Qt::Key_W, Qt::ControlModifier);
        EXPECT_EQ(closed(window), row.closable) << row.window;
        EXPECT_EQ(Pressed(), std::vector<std::string>{}) << row.window;
    }
}

// What a screen reader says for a window and each of its controls.
TEST_F(SecondaryWindowsTest, EveryWindowAndControlHasANameToBeRead)
{
    const auto name = [](QObject *object) {
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(object);
        return accessible != nullptr ? accessible->text(QAccessible::Name) : QString();
    };
    for (const Row &row : Rows()) {
        QWidget *window = Open(row);
        EXPECT_FALSE(name(window).isEmpty()) << row.window;
        for (QWidget *control : window->findChildren<QWidget *>()) {
            // Qt's own parts (a list's header, the menu bar's "more" button)
            // name themselves as Qt does.
            if (control->objectName().startsWith("qt_")
                || qobject_cast<QHeaderView *>(control) != nullptr)
                continue;
            const bool readable = qobject_cast<QAbstractButton *>(control) != nullptr
                                  || qobject_cast<QLineEdit *>(control) != nullptr
                                  || qobject_cast<QAbstractScrollArea *>(control) != nullptr
                                  || (qobject_cast<QAbstractSlider *>(control) != nullptr
                                      && qobject_cast<QScrollBar *>(control) == nullptr);
            if (readable) {
                EXPECT_FALSE(name(control).isEmpty())
                    << row.window << ": " << control->metaObject()->className() << " "
                    << control->objectName().toStdString();
            }
        }
    }
}

} // namespace
