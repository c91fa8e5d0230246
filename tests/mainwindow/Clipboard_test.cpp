// The clipboard by keys: what Ctrl+C and Ctrl+X leave for other file
// managers, and Ctrl+Alt+V taking what another application cut.

#include "MainWindowTestSupport.h"

#include "fileops/ClipboardEntries.h"
#include "fileops/CopyWin.h"
#include "support/TestArchives.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace {

using kestrin::ClipboardEntries;

std::string Format(const char *format)
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data != nullptr ? data->data(format).toStdString() : "";
}

bool CopyWindowShown()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [](QWidget *window) {
        return qobject_cast<kestrin::CopyWin *>(window) != nullptr;
    });
}

using ClipboardTest = TwoFoldersFixture;

TEST_F(ClipboardTest, CopyAndCutByKeysLeaveTheEntriesForOtherFileManagers)
{
    WriteFileBytes(Left() + "/a b", "a");
    WriteFileBytes(Left() + "/ç%", "c");
    WriteFileBytes(Left() + "/single", "s");
    Start();

    // The marked rows, in the order they were marked.
    for (const char *name : {"a b", "ç%"}) {
        SelectIn(0, name);
        QTest::keyClick(List(0), Qt::Key_Insert);
    }
    QTest::keyClick(List(0), Qt::Key_C, Qt::ControlModifier);
    const std::string first = "file://" + Left() + "/a%20b",
                      second = "file://" + Left() + "/%C3%A7%25";
    EXPECT_EQ(Format("x-special/gnome-copied-files"), "copy\n" + first + "\n" + second);
    EXPECT_EQ(Format("text/uri-list"), first + "\r\n" + second + "\r\n");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(),
              Left() + "/a b\n" + Left() + "/ç%");

    // Without marks, the selected row.
    QTest::keyClick(List(0), Qt::Key_Minus);
    SelectIn(0, "single");
    QTest::keyClick(List(0), Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(Format("x-special/gnome-copied-files"), "cut\nfile://" + Left() + "/single");
    EXPECT_EQ(fAlerts.Count(), 0u);
}

// Another application's cut, pasted: moved with the copy window, and the
// clipboard emptied of it. An archive takes nothing, as with F5, and the
// clipboard keeps its entries.
TEST_F(ClipboardTest, PasteMovesWhatAnotherApplicationCutOrSaysWhyNot)
{
    const std::string elsewhere = fHome.Root() + "/elsewhere", big(200000, 'f');
    fs::create_directories(elsewhere + "/folder");
    WriteFileBytes(elsewhere + "/folder/inside", "i");
    WriteFileBytes(elsewhere + "/file", big);
    WriteTestArchive(Left() + "/bundle.zip", "zip", {{"member.txt", "m"}});
    Start();
    const auto cut = [&](const std::vector<std::string> &paths) {
        std::string list = "cut";
        for (const std::string &path : paths)
            list += "\n" + ClipboardEntries::FileUri(path);
        auto *data = new QMimeData;
        data->setData("x-special/gnome-copied-files", QByteArray::fromStdString(list));
        QGuiApplication::clipboard()->setMimeData(data);
    };
    const auto paste = [&](size_t pane) {
        QApplication::setActiveWindow(fKestrin->Window());
        List(pane)->setFocus();
        QTest::keyClick(List(pane), Qt::Key_V, Qt::ControlModifier | Qt::AltModifier);
    };

    cut({elsewhere + "/file", elsewhere + "/folder"});
    paste(1);
    EXPECT_TRUE(CopyWindowShown());
    EXPECT_TRUE(WaitFor([&] {
        return ReadFileBytes(Right() + "/file") == big
               && ReadFileBytes(Right() + "/folder/inside") == "i" && fs::is_empty(elsewhere)
               && List(1)->FindItem("folder") > 0 && !CopyWindowShown();
    }));
    EXPECT_EQ(Format("x-special/gnome-copied-files"), "");
    EXPECT_EQ(fAlerts.Count(), 0u);

    SelectIn(0, "bundle.zip");
    QTest::keyClick(List(0), Qt::Key_Return);
    ASSERT_TRUE(WaitFor([&] { return List(0)->FindItem("member.txt") > 0; }));
    cut({Right() + "/file"});
    paste(0);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].text,
              "This view shows the contents of an archive. You cannot copy or move to it.");
    EXPECT_EQ(Format("x-special/gnome-copied-files"),
              "cut\n" + ClipboardEntries::FileUri(Right() + "/file"));
}

} // namespace
