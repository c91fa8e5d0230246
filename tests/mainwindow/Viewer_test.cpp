// F3 from a real pane opens Kestrin's own viewer (which refuses what is not
// a file), and what is dropped on a viewer lands in the main window's
// focused pane.

#include "MainWindowTestSupport.h"

#include "fileops/GetInfo.h"
#include "panes/KsFtr.h"
#include "support/PipesAndSockets.h"
#include "viewer/TImageView.h"
#include "viewer/TextPager.h"
#include "viewer/ViewerWindow.h"

#include <QImage>
#include <QLabel>
#include <QMimeDatabase>

namespace {

class ViewerFromPaneTest : public KestrinFixture
{
protected:
    kestrin::ViewerWindow *ViewerTitled(const QString &title)
    {
        for (auto *viewer : fKestrin->Window()->findChildren<kestrin::ViewerWindow *>()) {
            if (viewer->windowTitle() == title && viewer->isVisible())
                return viewer;
        }
        return nullptr;
    }
    kestrin::ViewerWindow *ViewWith(const std::string &name)
    {
        QApplication::setActiveWindow(fKestrin->Window());
        SelectIn(0, name);
        QTest::keyClick(List(0), Qt::Key_F3);
        return ViewerTitled(QString::fromStdString(name));
    }
};

TEST_F(ViewerFromPaneTest, F3OpensTextsImagesAndOtherFilesInTheViewer)
{
    const std::string folder = Home() + "/docs";
    fs::create_directories(folder);
    WriteFileBytes(folder + "/readme.txt", "hello\n");
    WriteFileBytes(folder + "/a.zip", std::string("PK\x05\x06", 4) + std::string(18, '\0'));
    QImage(12, 8, QImage::Format_RGB32).save(QString::fromStdString(folder + "/p.png"));
    PanesOn({folder, Home()});
    Start();

    kestrin::ViewerWindow *text = ViewWith("readme.txt");
    ASSERT_NE(text, nullptr);
    ASSERT_NE(text->TextView(), nullptr);
    EXPECT_TRUE(WaitFor([&] { return text->TextView()->ShownRows().value(0) == "hello"; }));

    kestrin::ViewerWindow *image = ViewWith("p.png");
    ASSERT_NE(image, nullptr);
    ASSERT_NE(image->ImageView(), nullptr);
    EXPECT_TRUE(WaitFor([&] { return image->ImageView()->ImageSize() == QSize(12, 8); }));

    kestrin::ViewerWindow *zip = ViewWith("a.zip");
    ASSERT_NE(zip, nullptr);
    EXPECT_EQ(zip->TextView(), nullptr);
    EXPECT_EQ(zip->ImageView(), nullptr);
    EXPECT_TRUE(fLaunches.Launches().empty()) << "nothing is handed to the desktop";
    EXPECT_EQ(fAlerts.Count(), 0u);

    // Entries dropped on a viewer go to the focused pane, not the viewer.
    fs::create_directories(Home() + "/elsewhere");
    WriteFileBytes(Home() + "/elsewhere/dropped.txt", "x");
    // Onto the text, as a user drops: the window takes what its views do not.
    DropPaths(text->TextView()->viewport(),
              {Home() + "/elsewhere/dropped.txt"},
              Qt::CopyAction,
              QPoint(5, 5));
    kestrin::DirView *list = fKestrin->Window()->GetFocusedPane()->List();
    EXPECT_TRUE(WaitFor(
        [&] { return list->CurrentPath() == Home() + "/elsewhere" && !list->IsListing(); }));
    EXPECT_EQ(text->windowTitle(), "readme.txt");
}

TEST_F(ViewerFromPaneTest, APipeIsAFileToF3TheFooterAndGetInfo)
{
    const std::string folder = Home() + "/special";
    fs::create_directories(folder);
    WriteFileBytes(folder + "/notes.txt", "words\n");
    MakeFifo(folder + "/pipe");
    PanesOn({folder});
    Start();
    EXPECT_EQ(fKestrin->Window()->Panes().at(0)->Footer()->Text(),
              "0 of 0k in 0 of 2 files selected");

    kestrin::ViewerWindow *viewer = ViewWith("pipe");
    ASSERT_NE(viewer, nullptr);
    EXPECT_EQ(viewer->TextView(), nullptr);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].text,
              "\"pipe\" is a pipe, a socket or a device, not a file: the viewer does not read it.");

    // Get Info works the kind out afresh, which must not read the pipe.
    SelectIn(0, "pipe");
    fKestrin->Window()->OpenInfoWindows(List(0));
    ASSERT_EQ(Shown<kestrin::GetInfo>().size(), 1u);
    kestrin::GetInfo *info = Shown<kestrin::GetInfo>().front();
    EXPECT_EQ(info->windowTitle(), "pipe Info");
    EXPECT_EQ(info->findChild<QLabel *>("kind")->text(),
              QMimeDatabase().mimeTypeForName("inode/fifo").comment());
    EXPECT_EQ(fAlerts.Count(), 1u);
}

} // namespace
