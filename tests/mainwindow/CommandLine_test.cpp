#include "mainwindow/CommandLine.h"

#include "panes/EditControl.h"

#include <gtest/gtest.h>

using kestrin::CommandLine;

TEST(CommandLine, TheFieldTakesTheRightHalfInsideTheBevelAndStaysWhenResized)
{
    QWidget parent;
    CommandLine bar(QRect(0, 100, 401, 24), &parent);
    EXPECT_EQ(bar.objectName(), "commandline");
    ASSERT_EQ(bar.findChildren<kestrin::EditControl *>().size(), 1);
    EXPECT_EQ(bar.Edit()->geometry(), QRect(QPoint(201, 3), QPoint(398, 21)));
    EXPECT_EQ(bar.Edit()->font().pixelSize(), 12);

    bar.resize(600, 24);
    EXPECT_EQ(bar.Edit()->geometry(), QRect(QPoint(201, 3), QPoint(398, 21)));
}
