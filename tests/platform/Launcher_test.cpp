#include "platform/AlertRecorder.h"
#include "platform/LaunchRecorder.h"

#include "TempHome.h"

#include <QDir>
#include <QFile>
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

TEST(Launcher, ADocumentNothingOpensIsToldAsAsked)
{
    TempHome home;
    platform::AlertRecorder alerts;
    // Stand-in openers, each in a folder of its own that PATH leads to in
    // turn: one that finds no application, as xdg-open does for an unknown
    // type, and one that opens. A script is never rewritten while a child
    // may still be starting it.
    const auto useOpener = [&home](int exitCode) {
        const std::string bin = home.Root() + "/exit" + std::to_string(exitCode);
        const std::string path = bin + "/xdg-open";
        if (!QFileInfo::exists(QString::fromStdString(path))) {
            QDir().mkpath(QString::fromStdString(bin));
            WriteFileBytes(path, "#!/bin/sh\nexit " + std::to_string(exitCode) + "\n");
            QFile::setPermissions(QString::fromStdString(path),
                                  QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        }
        home.SetEnv("PATH", bin);
    };

    // Kestrin's own pages say it on standard error only; a document that
    // opens says nothing.
    useOpener(3);
    EXPECT_EQ(Launcher::OpenWithPreferredApplication("/tmp/help.html",
                                                     platform::FailureNotice::StandardError),
              B_OK);
    useOpener(0);
    EXPECT_EQ(Launcher::OpenWithPreferredApplication("/tmp/fine.txt"), B_OK);

    // The opener's verdict comes when it ends.
    useOpener(3);
    EXPECT_EQ(Launcher::OpenWithPreferredApplication("/tmp/odd.type"), B_OK);
    ASSERT_TRUE(QTest::qWaitFor([&] { return alerts.Count() >= 1; }, 10000));
    EXPECT_EQ(alerts.Shown()[0].text, "Kestrin found no application to open \"/tmp/odd.type\".");

    // No opener at all is told at once.
    home.SetEnv("PATH", home.Root() + "/nowhere");
    EXPECT_EQ(Launcher::OpenWithPreferredApplication("/tmp/none.txt"), B_ENTRY_NOT_FOUND);
    ASSERT_EQ(alerts.Count(), 2u);
    EXPECT_EQ(alerts.Shown()[1].text, "Kestrin found no application to open \"/tmp/none.txt\".");
}
