#include "platform/LaunchRecorder.h"

#include "TempHome.h"

#include <QFileInfo>
#include <QTest>
#include <gtest/gtest.h>

using platform::Launch;
using platform::Launcher;

TEST(Launcher, RealLaunchRunsDetachedInItsFolderWithItsEnvironment)
{
    TempHome home;
    const std::string out = home.Root() + "/out";
    const Launch launch{"/bin/sh",
                        {"-c",
                         "printf '%s %s' \"$PWD\" \"$FOLDER_PATH\" > out.tmp && mv out.tmp out"},
                        home.Root(),
                        {{"FOLDER_PATH", "/some folder"}}};
    ASSERT_EQ(Launcher::Start(launch), B_OK);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return QFileInfo::exists(QString::fromStdString(out)); }, 10000));
    EXPECT_EQ(ReadFileBytes(out), home.Root() + " /some folder");

    EXPECT_NE(Launcher::Start({"/nonexistent/program", {}, {}, {}}), B_OK);
    EXPECT_EQ(Launcher::Start({}), B_BAD_VALUE);
}

TEST(Launcher, RecorderKeepsLaunchesInsteadOfStartingThem)
{
    platform::LaunchRecorder recorder;
    recorder.SetResult(B_ENTRY_NOT_FOUND);
    EXPECT_EQ(Launcher::OpenWithPreferredApplication("/tmp/a b.txt"), B_ENTRY_NOT_FOUND);
    const auto launches = recorder.Launches();
    ASSERT_EQ(launches.size(), 1u);
    EXPECT_EQ(launches[0], (Launch{"xdg-open", {"/tmp/a b.txt"}, {}, {}}));
}

TEST(Launcher, FindProgramTakesTheFirstThatExists)
{
    const std::string found = Launcher::FindProgram({"no-such-terminal-xyz", "sh", "bash"});
    EXPECT_EQ(QFileInfo(QString::fromStdString(found)).fileName(), "sh");
    EXPECT_TRUE(QFileInfo(QString::fromStdString(found)).isExecutable());
    EXPECT_EQ(Launcher::FindProgram({"no-such-terminal-xyz"}), "");
}
