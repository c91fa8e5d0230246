#pragma once

#include <string>
#include <vector>

namespace kestrin {

// "Open Terminal": a terminal emulator running a login shell in a pane's
// folder. The shell finds the folder in FOLDER_PATH through a block that
// SetupTerminal() adds to ~/.profile once, so any login shell started without
// FOLDER_PATH still goes home.
//
// GUI thread only: the alerts are shown modally.
class Terminal
{
public:
    Terminal() = delete;

    // Appends the FOLDER_PATH block to ~/.profile unless it is already there,
    // creating the file if need be. Failures are silent: a terminal then
    // simply opens in the shell's usual folder.
    static void SetupTerminal();

    // The terminal's command line, ending in a login shell; false, after an
    // alert, when no terminal emulator can be found.
    static bool configure_argv(std::vector<std::string> *argv);

    // A new null-terminated array: the pointers of `env`, then a copy of
    // `entry`. An entry of the same name is kept, so the new one comes after
    // it. The result and the copy are never freed while Kestrin runs.
    static char **my_putenv(char **env, const char *entry);

    // Starts argv[0] with FOLDER_PATH = `folder` added to the environment, in
    // `folder`. 1 when started; -1, after an alert, when not.
    static int LaunchTerminal(const std::vector<std::string> &argv, const std::string &folder);

    // configure_argv, SetupTerminal, then LaunchTerminal.
    static void Open(const std::string &folder);
};

} // namespace kestrin
