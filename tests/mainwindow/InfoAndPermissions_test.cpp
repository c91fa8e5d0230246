// Get Info and Set File Permissions from the menus, on real files.

#include "MainWindowTestSupport.h"

#include "fileops/GetInfo.h"
#include "fileops/PermissionsWin.h"
#include "panes/KsFtr.h"
#include "panes/KsHeader.h"
#include "panes/KsTree.h"
#include "panes/PaneMessages.h"
#include "prefs/OptionsWindow.h"
#include "support/UnprivilegedRerun.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QMenu>
#include <QMenuBar>
#include <QSlider>
#include <QTabWidget>
#include <sys/stat.h>
#include <sys/time.h>

namespace {

class InfoTest : public KestrinFixture
{
protected:
    void SetUp() override
    {
        fs::create_directories(Folder());
        PanesOn({Folder()});
    }
    std::string Folder() const { return fHome.Root() + "/work"; }

    QAction *FileItem(const QString &label, const char *menu = "File")
    {
        QMenu *file = fKestrin->Window()->menuBar()->findChild<QMenu *>(menu);
        for (QAction *action : file->actions()) {
            if (action->text() == label)
                return action;
        }
        return nullptr;
    }
    void Mark(const std::string &name)
    {
        SelectIn(0, name);
        QTest::keyClick(List(0), Qt::Key_Insert);
    }
    static mode_t Mode(const std::string &path)
    {
        struct stat info;
        return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : mode_t(-1);
    }
};

// Permissions comes after Get Info in the File menu, without a key.
TEST_F(InfoTest, GetInfoOpensAWindowForEachMarkedEntry)
{
    WriteFileBytes(Folder() + "/one", "1");
    WriteFileBytes(Folder() + "/two", "22");
    WriteFileBytes(Folder() + "/three", "333");
    Start();
    QStringList labels;
    for (QAction *action : fKestrin->Window()->menuBar()->findChild<QMenu *>("File")->actions())
        labels << action->text();
    EXPECT_EQ(labels.mid(2, 3), QStringList({"Get Info", "Permissions", "Identify"}));
    EXPECT_TRUE(FileItem("Permissions")->shortcut().isEmpty());

    SelectIn(0, "three");
    FileItem("Get Info")->trigger();
    ASSERT_EQ(Shown<kestrin::GetInfo>().size(), 1u);
    EXPECT_EQ(Shown<kestrin::GetInfo>().front()->windowTitle(), "three Info");
    Shown<kestrin::GetInfo>().front()->close();
    QTest::qWait(0);

    Mark("one");
    Mark("two");
    FileItem("Get Info")->trigger();
    QStringList titles;
    for (const kestrin::GetInfo *window : Shown<kestrin::GetInfo>())
        titles << window->windowTitle();
    titles.sort();
    EXPECT_EQ(titles, QStringList({"one Info", "two Info"}));
}

TEST_F(InfoTest, PermissionsLandOnTheMarkedFilesAndAFailureIsReported)
{
    // A mode that cannot be set is one only root could set.
    if (UnprivilegedRerun::Delegated())
        return;
    for (const char *name : {"a", "b", "c"}) {
        WriteFileBytes(Folder() + "/" + name, name);
        chmod((Folder() + "/" + name).c_str(), 0644);
    }
    fs::create_symlink("/", Folder() + "/root");
    const mode_t rootMode = Mode("/");
    Start();
    Mark("a");
    Mark("root");
    Mark("b");

    FileItem("Permissions")->trigger();
    ASSERT_EQ(Shown<kestrin::PermissionsWin>().size(), 1u);
    kestrin::PermissionsWin *window = Shown<kestrin::PermissionsWin>().front();
    for (const char *box : {"CheckBox1", "CheckBox2", "CheckBox4"})
        QTest::mouseClick(window->findChild<QAbstractButton *>(box), Qt::LeftButton);
    QTest::mouseClick(window->findChild<QAbstractButton *>("bOK"), Qt::LeftButton);

    ASSERT_TRUE(WaitFor([&] { return Mode(Folder() + "/b") == 0640; }));
    EXPECT_EQ(Mode(Folder() + "/a"), 0640);
    EXPECT_EQ(Mode(Folder() + "/c"), 0644) << "unmarked";
    EXPECT_EQ(Mode("/"), rootMode);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].title, "Sorry Charley");
    EXPECT_TRUE(window->isVisible());
    // The rows follow the change.
    EXPECT_TRUE(WaitFor([&] {
        return List(0)->Row(List(0)->FindItem("a"))->ColumnText(kestrin::kColumnPermissions)
               == "rw-r-----";
    }));
}

TEST_F(InfoTest, SavedPreferencesReachEveryPaneAtOnce)
{
    const std::string file = Folder() + "/dated";
    WriteFileBytes(file, "x");
    struct tm local = {};
    local.tm_year = 100;
    local.tm_mday = 10;
    local.tm_hour = 12;
    local.tm_min = 34;
    local.tm_sec = 56;
    local.tm_isdst = -1;
    const time_t when = mktime(&local);
    const struct timeval times[2] = {{when, 0}, {when, 0}};
    ASSERT_EQ(utimes(file.c_str(), times), 0);
    Start();
    kestrin::DirPane *pane = fKestrin->Window()->Panes().front();
    pane->DoTree();
    const auto dateText = [&] {
        const int row = List(0)->FindItem("dated");
        return row < 0 ? QString() : List(0)->Row(row)->ColumnText(kestrin::kColumnDate);
    };
    ASSERT_TRUE(WaitFor([&] { return dateText() == "01/10/00 12:34"; }));

    FileItem("Preferences", "View")->trigger();
    kestrin::OptionsWindow *options = Shown<kestrin::OptionsWindow>().at(0);
    for (QAction *action : options->findChild<QMenu *>("Select Date Fomat")->actions()) {
        if (action->text() == "%D %T")
            action->trigger();
    }
    options->findChild<QCheckBox *>("ShowHeader")->setChecked(false);
    options->findChild<QTabWidget *>("tab_view")->setCurrentIndex(1);
    options->findChild<QSlider *>("Blue")->setValue(100);
    options->findChild<QAbstractButton *>("SaveOptions")->click();

    EXPECT_TRUE(WaitFor([&] { return dateText() == "01/10/00 12:34:56"; }));
    EXPECT_FALSE(pane->Header()->isVisible());
    EXPECT_TRUE(pane->Footer()->isVisible());
    EXPECT_EQ(List(0)->palette().color(QPalette::Base), QColor(255, 255, 100));
    EXPECT_EQ(pane->Tree()->palette().color(QPalette::Base), QColor(255, 255, 100));
}

} // namespace
