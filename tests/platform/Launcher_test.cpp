#include "platform/AlertRecorder.h"
#include "platform/LaunchRecorder.h"

#include "TempHome.h"
#include "TickGaps.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using platform::Launch;
using platform::Launcher;

namespace platform {
void PrintTo(const Launch &launch, std::ostream *out)
{
    *out << launch.program;
    for (const std::string &argument : launch.arguments)
        *out << " '" << argument << "'";
}
} // namespace platform

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

namespace {

// An executable shell script `name` in `folder`, made once: a child may still
// be starting it when the test goes on.
void WriteScript(const std::string &folder, const std::string &name, const std::string &body)
{
    QDir().mkpath(QString::fromStdString(folder));
    const std::string path = folder + "/" + name;
    WriteFileBytes(path, "#!/bin/sh\nPATH=/usr/bin:/bin\n" + body);
    QFile::setPermissions(QString::fromStdString(path),
                          QFileDevice::ReadOwner | QFileDevice::ExeOwner);
}

} // namespace

TEST(Launcher, ADocumentNothingOpensIsToldAsAsked)
{
    TempHome home;
    platform::AlertRecorder alerts;
    // Stand-in openers, each in a folder of its own that PATH leads to in
    // turn: one that finds no application, as xdg-open does for an unknown
    // type, and one that opens.
    for (const int exitCode : {0, 3})
        WriteScript(home.Root() + "/exit" + std::to_string(exitCode),
                    "xdg-open",
                    "exit " + std::to_string(exitCode) + "\n");
    const auto useOpener = [&home](int exitCode) {
        home.SetEnv("PATH", home.Root() + "/exit" + std::to_string(exitCode));
    };

    // What Kestrin opens on its own behalf says it on standard error only;
    // a document that opens says nothing.
    useOpener(3);
    EXPECT_EQ(Launcher::OpenWithPreferredApplication("/tmp/folder",
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

TEST(Launcher, TheTextEditorIsAskedOfTheDesktopWhileTheGuiThreadGoesOn)
{
    TempHome home;
    home.SetEnv("KESTRIN_EDITOR", std::nullopt);
    platform::LaunchRecorder launches;
    platform::AlertRecorder alerts;
    const std::string applications = home.Home() + "/.local/share/applications";
    QDir().mkpath(QString::fromStdString(applications));
    WriteFileBytes(applications + "/notepad.desktop",
                   "[Desktop Entry]\nType=Application\nName=Notepad\nExec=true %f\n");
    const std::string slow = home.Root() + "/slow", failing = home.Root() + "/failing",
                      none = home.Root() + "/none";
    for (const std::string &bin : {slow, failing, none})
        WriteScript(bin, "gio", "exit 0\n");
    // A desktop that takes its time to answer, as a cold cache or a
    // network home makes it.
    WriteScript(slow, "xdg-mime", "sleep 2\necho notepad.desktop\n");
    WriteScript(failing, "xdg-mime", "exit 4\n");
    const auto launched = [&](size_t count) {
        return QTest::qWaitFor([&] { return launches.Launches().size() >= count; }, 20000);
    };

    home.SetEnv("PATH", slow);
    {
        TickGaps ticker;
        EXPECT_EQ(Launcher::OpenInTextEditor("/tmp/notes.md"), B_OK);
        ASSERT_TRUE(launched(1));
        EXPECT_LT(ticker.Longest(), TickGaps::kBlockedMs) << "the GUI thread waited on xdg-mime";
    }
    EXPECT_EQ(launches.Launches()[0],
              (Launch{"gio",
                      {"launch", applications + "/notepad.desktop", "/tmp/notes.md"},
                      {},
                      {}}));

    // Without an answer, the desktop's opener; what it cannot open is told.
    launches.SetResult(B_ENTRY_NOT_FOUND);
    home.SetEnv("PATH", failing);
    Launcher::OpenInTextEditor("/tmp/failing.md");
    ASSERT_TRUE(launched(2));
    EXPECT_EQ(launches.Launches()[1], (Launch{"xdg-open", {"/tmp/failing.md"}, {}, {}}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return alerts.Count() == 1; }, 10000));
    EXPECT_EQ(alerts.Shown()[0].text, "Kestrin found no application to open \"/tmp/failing.md\".");

    launches.SetResult(B_OK);
    home.SetEnv("PATH", none);
    Launcher::OpenInTextEditor("/tmp/none.md");
    ASSERT_TRUE(launched(3));
    EXPECT_EQ(launches.Launches()[2], (Launch{"xdg-open", {"/tmp/none.md"}, {}, {}}));
    EXPECT_EQ(alerts.Count(), 1u);
}
