#include "fileops/PermissionsWin.h"

#include "fileops/FileOpsMessages.h"
#include "support/MessageRecorder.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using kestrin::PermissionsWin;

namespace {

void Click(PermissionsWin &window, const QString &name)
{
    auto *button = window.findChild<QAbstractButton *>(name);
    ASSERT_NE(button, nullptr) << name.toStdString();
    QTest::mouseClick(button, Qt::LeftButton);
}

// Waits for the posted results and answers their modes.
std::vector<int32_t> Modes(MessageRecorder &target, size_t count)
{
    EXPECT_TRUE(QTest::qWaitFor([&] { return target.messages.size() >= count; }, 10000));
    std::vector<int32_t> modes;
    for (const platform::Message &message : target.messages) {
        int32_t mode = -1;
        EXPECT_EQ(message.what, kestrin::kMsgSetPermissions);
        EXPECT_EQ(message.FindInt32("Permissions", &mode), B_OK);
        modes.push_back(mode);
    }
    return modes;
}

} // namespace

TEST(PermissionsWin, TheWindowAndItsViews)
{
    MessageRecorder target;
    PermissionsWin window(QRect(100, 100, 510, 412), &target);
    EXPECT_EQ(window.windowTitle(), "Set File Permissions");
    EXPECT_EQ(window.geometry().topLeft(), QPoint(200, 200));
    EXPECT_EQ(window.size(), QSize(310, 212));
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.minimumSize(), window.maximumSize());
    QStringList labels;
    for (const char *name :
         {"bsvOwner", "bsvGroup", "bsvPublic", "bsvRead", "bsvWrite", "bsvExecute"})
        labels << window.findChild<QLabel *>(name)->text();
    EXPECT_EQ(labels, QStringList({"Owner", "Group", "Public", "R", "W", "E"}));
    EXPECT_EQ(window.findChild<QPushButton *>("bOK")->text(), "OK");
    EXPECT_EQ(window.findChild<QPushButton *>("bCancel")->text(), "Cancel");
    for (int box = 1; box <= 9; box++)
        EXPECT_FALSE(window.findChild<QCheckBox *>(QString("CheckBox%1").arg(box))->isChecked());
}

TEST(PermissionsWin, OKSendsTheModeOfTheBoxesEachTimeAndCancelCloses)
{
    MessageRecorder target;
    PermissionsWin window(QRect(), &target);
    Click(window, "bOK");
    for (const char *box :
         {"CheckBox1", "CheckBox2", "CheckBox3", "CheckBox4", "CheckBox6", "CheckBox7"})
        Click(window, box);
    EXPECT_EQ(window.GetPermissions(), 0754);
    Click(window, "bOK");
    for (const char *box : {"CheckBox5", "CheckBox8", "CheckBox9"})
        Click(window, box);
    Click(window, "bOK");
    EXPECT_EQ(Modes(target, 3), (std::vector<int32_t>{0, 0754, 0777}));
    EXPECT_TRUE(window.isVisible()) << "OK leaves the window open";

    Click(window, "bCancel");
    EXPECT_FALSE(window.isVisible());
    QTest::qWait(0);
    EXPECT_EQ(target.messages.size(), 3u) << "Cancel sends nothing";
}
