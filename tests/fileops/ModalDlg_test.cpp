#include "fileops/GetTextWin.h"
#include "fileops/mdlGetTextDlg.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <tuple>
#include <vector>

using kestrin::GetTextWin;
using kestrin::mdlGetTextDlg;

namespace {

// Runs `answer` once the dialog's own event loop is running.
void WhenWaiting(QWidget *dialog, std::function<void()> answer)
{
    QTimer::singleShot(0, dialog, std::move(answer));
}

struct ReplyRecorder : platform::Handler
{
    std::vector<platform::Message> replies;
    void MessageReceived(platform::Message &message) override { replies.push_back(message); }
};

} // namespace

TEST(mdlGetTextDlg, ACentredFixedPromptStartingFromTheBuffer)
{
    char buffer[16] = "start";
    mdlGetTextDlg dialog("Name:", buffer, 15);
    // Offscreen screens are 800 by 800: (800 - 75) / 2 rounds down.
    ASSERT_EQ(QGuiApplication::primaryScreen()->geometry(), QRect(0, 0, 800, 800));
    EXPECT_EQ(dialog.geometry(), QRect(275, 362, 250, 75));
    EXPECT_EQ(dialog.minimumSize(), dialog.maximumSize());
    EXPECT_TRUE(dialog.isModal());
    EXPECT_EQ(dialog.findChild<QLabel *>("Label1")->text(), "Name:");
    EXPECT_EQ(dialog.findChild<QLineEdit *>("Text1")->text(), "start");
    EXPECT_TRUE(dialog.findChild<QPushButton *>("OK Button")->isDefault());
    EXPECT_EQ(dialog.findChild<QWidget *>("Background")->palette().color(QPalette::Window),
              QColor(216, 216, 216));
}

TEST(mdlGetTextDlg, ReturnTypedIntoTheFocusedFieldFillsTheBufferWithoutATerminator)
{
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    std::memcpy(buffer, "ab", 3);
    mdlGetTextDlg dialog("Name:", buffer, 4);
    WhenWaiting(&dialog, [&] {
        auto *field = dialog.findChild<QLineEdit *>("Text1");
        EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
        EXPECT_EQ(QApplication::focusWidget(), field) << "activation focuses the field";
        EXPECT_EQ(field->selectedText(), "ab") << "typing replaces the initial text";
        QTest::keyClick(field, Qt::Key_End);
        QTest::keyClicks(field, "cdefg");
        QTest::keyClick(field, Qt::Key_Return);
    });
    EXPECT_EQ(dialog.DoModal(), kestrin::kMsgModalOk);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(std::string(buffer, sizeof buffer), "abcd####");
}

TEST(mdlGetTextDlg, CancelAndEscapeLeaveTheBufferAlone)
{
    char buffer[8] = "keep";
    mdlGetTextDlg dialog("Name:", buffer, 7);
    for (bool escape : {false, true}) {
        WhenWaiting(&dialog, [&] {
            QTest::keyClicks(dialog.findChild<QLineEdit *>("Text1"), "typed");
            if (escape)
                QTest::keyClick(dialog.findChild<QLineEdit *>("Text1"), Qt::Key_Escape);
            else
                QTest::mouseClick(dialog.findChild<QPushButton *>("Cancel Button"), Qt::LeftButton);
        });
        EXPECT_EQ(dialog.DoModal(), kestrin::kMsgModalCancel);
        EXPECT_STREQ(buffer, "keep");
    }
}

TEST(ModalDlg, OkWaitsForValidDataAndOtherMessagesAreDropped)
{
    struct Picky : kestrin::ModalDlg
    {
        int asked = 0;
        bool ValidateData() override { return ++asked > 1; }
    } dialog;
    WhenWaiting(&dialog, [&] {
        platform::Message other(kestrin::kMsgModalOk + 1);
        dialog.Dispatch(other);
        dialog.accept();
        EXPECT_TRUE(dialog.isVisible()) << "refused data keeps the dialog open";
        dialog.accept();
    });
    EXPECT_EQ(dialog.DoModal(), kestrin::kMsgModalOk);
    EXPECT_EQ(dialog.asked, 2);
}

TEST(GetTextWin, ButtonsFollowTheLabelsAndReportTheirTextThenTheWindowGoes)
{
    struct Case
    {
        const char *button;
        int8_t number;
        const char *text;
    };
    for (const Case &expected :
         {Case{"Button1", 0, "typed"}, Case{"Button2", 1, ""}, Case{"Button3", 2, ""}}) {
        SCOPED_TRACE(expected.button);
        ReplyRecorder target;
        QPointer<GetTextWin> window = new GetTextWin(QRect(50, 60, 100, 80),
                                                     "Rename",
                                                     &target,
                                                     "New name:",
                                                     "old",
                                                     77,
                                                     "OK",
                                                     "Skip",
                                                     "Cancel");
        window->show();
        auto *field = window->findChild<QLineEdit *>("Text1");
        field->clear();
        QTest::keyClicks(field, "typed");
        QTest::mouseClick(window->findChild<QPushButton *>(expected.button), Qt::LeftButton);

        ASSERT_EQ(target.replies.size(), 1u);
        const platform::Message &reply = target.replies[0];
        EXPECT_EQ(reply.what, 77u);
        std::string title, text;
        int8_t button = -1;
        EXPECT_EQ(reply.FindString("title", &title), B_OK);
        EXPECT_EQ(reply.FindString("text", &text), B_OK);
        EXPECT_EQ(reply.FindInt8("button", &button), B_OK);
        EXPECT_EQ(title, "Rename");
        EXPECT_EQ(text, expected.text);
        EXPECT_EQ(button, expected.number);

        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(window.isNull()) << "the window deletes itself";
    }

    ReplyRecorder unused;
    for (const auto &[second, third, count] :
         {std::tuple{"", "", 1}, std::tuple{"Skip", "", 2}, std::tuple{"Skip", "Cancel", 3}}) {
        GetTextWin *window
            = new GetTextWin(QRect(0, 0, 100, 80), "T", &unused, "P", "", 1, "OK", second, third);
        EXPECT_EQ(window->findChildren<QPushButton *>().size(), count);
        EXPECT_GE(window->width(), 100);
        for (QPushButton *button : window->findChildren<QPushButton *>())
            EXPECT_TRUE(window->rect().contains(button->geometry())) << count;
        delete window;
    }
}
