#include "ftp/FTPStatus.h"

#include "ftp/FtpMessages.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

namespace {

void Status(kestrin::FTPStatus &window, const std::string &text)
{
    platform::Message message(kestrin::kMsgFtpStatus);
    message.AddString("status", text);
    window.Dispatch(message);
}

TEST(FTPStatusTest, EachLineGoesOnItsOwnLineAndTheEndStaysInSight)
{
    kestrin::FTPStatus window(QRect(0, 0, 800, 600));
    auto *log = window.findChild<QWidget *>("ScrollContainer")
                    ->findChild<QPlainTextEdit *>("StatusWindow");
    ASSERT_NE(log, nullptr);
    EXPECT_TRUE(log->isReadOnly());
    EXPECT_EQ(window.windowTitle(), "Status");

    std::string expected;
    for (int i = 0; i < 200; i++) {
        const std::string line = "227 Entering Passive Mode (127,0,0,1,4," + std::to_string(i)
                                 + ")";
        Status(window, line);
        expected += "\n" + line;
    }
    EXPECT_EQ(log->toPlainText().toStdString(), expected);
    QScrollBar *bar = log->verticalScrollBar();
    EXPECT_GT(bar->maximum(), 0);
    EXPECT_EQ(bar->value(), bar->maximum());

    // Text the user selected to copy stays selected; the log still grows at its end.
    QTextCursor cursor = log->textCursor();
    cursor.setPosition(1);
    cursor.setPosition(4, QTextCursor::KeepAnchor);
    log->setTextCursor(cursor);
    Status(window, "226 Transfer complete");
    EXPECT_EQ(log->toPlainText().toStdString(), expected + "\n226 Transfer complete");
    EXPECT_EQ(log->textCursor().selectedText(), "227");
    EXPECT_EQ(bar->value(), bar->maximum());
}

} // namespace
