#include "fileops/OverWin.h"

#include "fileops/FileOpsMessages.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using kestrin::OverWin;

TEST(OverWin, AFixedGreyWindowCentredOnTheProgressWindow)
{
    OverWin window(QRect(100, 200, 600, 300), "Item Exists");
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(window.geometry(), QRect(175, 269, 450, 162));
    EXPECT_EQ(window.minimumSize(), window.maximumSize());
    EXPECT_EQ(window.palette().color(QPalette::Window), QColor(216, 216, 216));

    window.SetPaths("/a/src", "/b/dst", "2048 K  Mon Jan 10 12:00:00 2000", "12 Bytes  Tue");
    QStringList lines;
    for (QLabel *label : window.findChildren<QLabel *>())
        lines << label->objectName() + "=" + label->text();
    EXPECT_EQ(lines.mid(0, 2),
              QStringList({"OverwriteFile=Overwrite: /a/src", "OverwriteWith=With file: /b/dst"}));
    EXPECT_TRUE(lines[2].endsWith("=2048 K  Mon Jan 10 12:00:00 2000"));
    EXPECT_TRUE(lines[3].endsWith("=12 Bytes  Tue"));

    window.DoDisplay();
    EXPECT_FALSE(window.close()) << "only an answer closes the question";
    EXPECT_TRUE(window.isVisible());
}

TEST(OverWin, EachButtonHidesTheWindowAndBecomesTheDecision)
{
    struct Button
    {
        const char *name;
        const char *label;
        int32_t code;
    };
    const Button buttons[] = {{"Overwrite", "Overwrite", kestrin::kOverwrite},
                              {"OverwriteAll", "Overwrite All", kestrin::kOverwriteAll},
                              {"OverwriteOlder", "Overwrite All Older", kestrin::kOverwriteAllOlder},
                              {"Skip", "Skip", kestrin::kSkip},
                              {"SkipAll", "Skip All", kestrin::kSkipAll},
                              {"Cancel", "Cancel", kestrin::kCancelBatch}};
    OverWin window(QRect(0, 0, 450, 162), "Item Exists");
    QSignalSpy answered(&window, &OverWin::Answered);
    for (const Button &expected : buttons) {
        SCOPED_TRACE(expected.name);
        auto *button = window.findChild<QPushButton *>(expected.name);
        ASSERT_NE(button, nullptr);
        EXPECT_EQ(button->text(), expected.label);
        window.DoDisplay();
        EXPECT_TRUE(window.IsShown());
        EXPECT_EQ(window.Decision(), 0) << "a new question forgets the last answer";
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_FALSE(window.IsShown() || window.isVisible());
        EXPECT_EQ(window.Decision(), expected.code);
        ASSERT_EQ(answered.size(), 1);
        EXPECT_EQ(answered.takeFirst().at(0).value<int32_t>(), expected.code);
    }

    window.DoDisplay();
    for (uint32_t other : {999u, 1006u}) {
        platform::Message message(other);
        window.Dispatch(message);
    }
    EXPECT_TRUE(window.IsShown()) << "other messages are no answer";
    EXPECT_TRUE(answered.isEmpty());
}
