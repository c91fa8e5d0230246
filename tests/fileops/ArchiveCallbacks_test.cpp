#include "fileops/ArchiveCallbacks.h"

#include "fileops/CopyWin.h"
#include "fileops/FileOpsMessages.h"
#include "platform/Entry.h"
#include "support/TempHome.h"
#include "widgets/StatusBar.h"

#include <QLabel>
#include <QPointer>
#include <QTest>
#include <future>
#include <gtest/gtest.h>

using namespace kestrin;

TEST(ArchiveCallbacks, MoveTheBarsToThePositionsAndShowTheMember)
{
    TempHome home;
    platform::Message request(kMsgCopyRequest);
    entry_ref folder;
    ASSERT_EQ(platform::Entry(home.Root()).GetRef(&folder), B_OK);
    request.AddRef("refs", folder);
    std::promise<void> release;
    auto job = [released = release.get_future().share()](CopyControl &) { released.wait(); };
    QPointer<CopyWin> window
        = new CopyWin(QRect(0, 0, 400, 130), "Packing", home.Root(), request, nullptr, job);
    StatusBar *file = window->FileBar();
    StatusBar *overall = window->MainBar();
    auto *to = window->findChild<QLabel *>("ToPath");

    EXPECT_EQ(UnZipCallback(40, 70, "readme.txt", window), 1);
    EXPECT_FLOAT_EQ(file->CurrentValue(), 70);
    EXPECT_FLOAT_EQ(overall->CurrentValue(), 40);
    EXPECT_EQ(file->Text(), "readme.txt") << "a name without a folder is shown whole";
    EXPECT_EQ(to->text(), "readme.txt");

    EXPECT_EQ(ZipCallback(60, 20, "docs/deep/notes.txt", window), 1);
    EXPECT_FLOAT_EQ(file->CurrentValue(), 20) << "a position behind the bar moves it back";
    EXPECT_FLOAT_EQ(overall->CurrentValue(), 60);
    EXPECT_EQ(file->Text(), "notes.txt");
    EXPECT_EQ(to->text(), "docs/deep/notes.txt");
    EXPECT_EQ(UnZipCallback(70, 5, "a/b", window), 1);
    EXPECT_EQ(file->Text(), "b");

    EXPECT_EQ(ZipCallback(-1, 90, "other/x", window), 1);
    EXPECT_EQ(UnZipCallback(90, 90, "other/x", nullptr), 1);
    EXPECT_FLOAT_EQ(file->CurrentValue(), 5) << "-1 only redraws";
    EXPECT_EQ(to->text(), "a/b");

    release.set_value();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }));
}
