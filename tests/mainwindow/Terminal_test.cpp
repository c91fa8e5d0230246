#include "mainwindow/Terminal.h"

#include "platform/AlertRecorder.h"
#include "platform/LaunchRecorder.h"

#include "TempHome.h"

#include <QDir>
#include <QFile>
#include <cstring>
#include <gtest/gtest.h>

using kestrin::Terminal;
using platform::Alert;

namespace {

const std::string kBlock = "if [ \"$FOLDER_PATH\" != \"\" ]; then \n"
                           "    cd \"$FOLDER_PATH\" \n"
                           "    unset -v FOLDER_PATH \n"
                           " else \n"
                           "    cd \"$HOME\" \n"
                           " fi \n";

const Alert kNotFound{"Hey", "Couldn't locate the terminal", {"Damn!"}, B_INFO_ALERT};
const Alert kNotLaunched{"Hey", "Couldn't launch the terminal", {"Damn!"}, B_INFO_ALERT};

// An executable named `name` in `folder`, for PATH or TERMINAL to find.
std::string FakeProgram(const std::string &folder, const std::string &name)
{
    QDir().mkpath(QString::fromStdString(folder));
    const std::string path = folder + "/" + name;
    WriteFileBytes(path, "#!/bin/sh\n");
    QFile::setPermissions(QString::fromStdString(path),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

class TerminalTest : public ::testing::Test
{
protected:
    TempHome home;
    platform::AlertRecorder alerts;
    platform::LaunchRecorder launches;
};

} // namespace

TEST_F(TerminalTest, ProfileGetsTheBlockOnceAfterItsLastByte)
{
    const std::string profile = home.Home() + "/.profile";

    Terminal::SetupTerminal();
    EXPECT_EQ(ReadFileBytes(profile), kBlock) << "a missing file is created with the block";
    Terminal::SetupTerminal();
    EXPECT_EQ(ReadFileBytes(profile), kBlock);

    WriteFileBytes(profile, "export A=1");
    Terminal::SetupTerminal();
    EXPECT_EQ(ReadFileBytes(profile), "export A=1" + kBlock) << "no line feed is put before it";

    const std::string edited = "# mine\n" + kBlock + "export B=2\n";
    WriteFileBytes(profile, edited);
    Terminal::SetupTerminal();
    EXPECT_EQ(ReadFileBytes(profile), edited) << "the block anywhere counts";

    const std::string damaged = kBlock.substr(0, kBlock.size() - 1);
    WriteFileBytes(profile, damaged);
    Terminal::SetupTerminal();
    EXPECT_EQ(ReadFileBytes(profile), damaged + kBlock) << "only the whole block counts";

    home.SetEnv("HOME", home.Root() + "/no such home");
    Terminal::SetupTerminal();
    EXPECT_FALSE(QDir(QString::fromStdString(home.Root() + "/no such home")).exists());
    EXPECT_EQ(alerts.Count(), 0u) << "failures are silent";
}

TEST_F(TerminalTest, MyPutenvKeepsAnExistingEntryAndAddsTheNewOneLast)
{
    char first[] = "PATH=/bin";
    char old[] = "FOLDER_PATH=/old";
    char *env[] = {first, old, nullptr};
    char entry[] = "FOLDER_PATH=/new";

    char **result = Terminal::my_putenv(env, entry);
    ASSERT_NE(result, env);
    EXPECT_EQ(result[0], first);
    EXPECT_EQ(result[1], old);
    ASSERT_NE(result[2], nullptr);
    EXPECT_NE(result[2], entry) << "the entry is copied";
    EXPECT_STREQ(result[2], "FOLDER_PATH=/new");
    EXPECT_EQ(result[3], nullptr);
    EXPECT_EQ(env[2], nullptr) << "the old array is left alone";

    std::strcpy(entry, "CHANGED");
    EXPECT_STREQ(result[2], "FOLDER_PATH=/new");
}

TEST_F(TerminalTest, ConfigureArgvPicksTheTerminalAndHowToHandItTheShell)
{
    const std::string bin = home.Root() + "/bin";
    home.SetEnv("PATH", bin);
    home.SetEnv("TERMINAL", std::nullopt);
    home.SetEnv("SHELL", "/bin/zsh");
    std::vector<std::string> argv;

    const std::string xterm = FakeProgram(bin, "xterm");
    ASSERT_TRUE(Terminal::configure_argv(&argv));
    EXPECT_EQ(argv, (std::vector<std::string>{xterm, "-e", "/bin/zsh", "-l"}));

    const std::string xfce = FakeProgram(bin, "xfce4-terminal");
    home.SetEnv("SHELL", std::nullopt);
    ASSERT_TRUE(Terminal::configure_argv(&argv));
    EXPECT_EQ(argv, (std::vector<std::string>{xfce, "-x", "/bin/sh", "-l"}));

    const std::string gnome = FakeProgram(bin, "gnome-terminal");
    ASSERT_TRUE(Terminal::configure_argv(&argv));
    EXPECT_EQ(argv, (std::vector<std::string>{gnome, "--", "/bin/sh", "-l"}));

    const std::string alternative = FakeProgram(bin, "x-terminal-emulator");
    ASSERT_TRUE(Terminal::configure_argv(&argv));
    EXPECT_EQ(argv[0], alternative);

    const std::string chosen = FakeProgram(home.Root() + "/elsewhere", "myterm");
    home.SetEnv("TERMINAL", chosen);
    ASSERT_TRUE(Terminal::configure_argv(&argv));
    EXPECT_EQ(argv, (std::vector<std::string>{chosen, "-e", "/bin/sh", "-l"}));

    home.SetEnv("TERMINAL", "no-such-terminal");
    ASSERT_TRUE(Terminal::configure_argv(&argv));
    EXPECT_EQ(argv[0], alternative) << "a TERMINAL that is not there is passed over";
    EXPECT_EQ(alerts.Count(), 0u);
}

TEST_F(TerminalTest, NoTerminalAlertsAndLaunchesNothing)
{
    QDir().mkpath(QString::fromStdString(home.Root() + "/empty"));
    home.SetEnv("PATH", home.Root() + "/empty");
    home.SetEnv("TERMINAL", std::nullopt);

    Terminal::Open(home.Home());
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0], kNotFound);
    EXPECT_TRUE(launches.Launches().empty());
    EXPECT_FALSE(QFile::exists(QString::fromStdString(home.Home() + "/.profile")))
        << "no terminal, no reason to touch the shell's start-up file";
}

TEST_F(TerminalTest, OpenStartsALoginShellInTheFolderWithFolderPath)
{
    const std::string terminal = FakeProgram(home.Root() + "/bin", "myterm");
    home.SetEnv("TERMINAL", terminal);
    home.SetEnv("SHELL", "/bin/bash");
    home.SetEnv("FOLDER_PATH", "/left over");
    const std::string folder = home.Root() + "/a folder";

    Terminal::Open(folder);
    EXPECT_EQ(ReadFileBytes(home.Home() + "/.profile"), kBlock)
        << "the shell's start-up file reads FOLDER_PATH by the first terminal";
    ASSERT_EQ(launches.Launches().size(), 1u);
    const platform::Launch expected{terminal,
                                    {"-e", "/bin/bash", "-l"},
                                    folder,
                                    {{"FOLDER_PATH", folder}}};
    EXPECT_EQ(launches.Launches()[0], expected);
    EXPECT_EQ(alerts.Count(), 0u);

    launches.SetResult(B_ENTRY_NOT_FOUND);
    EXPECT_EQ(Terminal::LaunchTerminal({terminal, "-e", "/bin/sh", "-l"}, folder), -1);
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0], kNotLaunched);
    launches.SetResult(B_OK);
    EXPECT_EQ(Terminal::LaunchTerminal({terminal, "-e", "/bin/sh", "-l"}, folder), 1);
    EXPECT_EQ(alerts.Count(), 1u);
}
