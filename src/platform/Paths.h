#pragma once

#include "platform/Errors.h"

#include <string>

namespace platform {

// The folders Kestrin keeps things in, from HOME and the XDG base-directory
// variables. Relative XDG values are ignored, as the XDG rules require.
enum class DirectoryWhich {
    Home,         // $HOME
    UserSettings, // $XDG_CONFIG_HOME, else ~/.config
    Trash,        // the freedesktop.org home trash: $XDG_DATA_HOME/Trash, else ~/.local/share/Trash
    UserAddOns,   // $XDG_DATA_HOME/kestrin/add-ons
    SystemAddOns, // <install prefix>/lib/kestrin/add-ons when installed, else the build tree's
    Help,         // <prefix>/share/kestrin/help when installed, else docs/help of the source tree
    Icons,        // <prefix>/share/icons/hicolor when installed, else the source tree's
    Transfers,    // $XDG_CACHE_HOME/kestrin/transfers, else ~/.cache/...: work folders of transfers
    UserData,     // $XDG_DATA_HOME, else ~/.local/share (where desktops keep their places)
};

// B_ENTRY_NOT_FOUND when the environment names no such folder (no HOME). With
// `create`, missing folders are made (owner-only, as XDG asks).
status_t FindDirectory(DirectoryWhich which, std::string *path, bool create = false);

// The prefix Kestrin is installed in, found from the running executable
// (<prefix>/bin/kestrin beside <prefix>/share/kestrin), so that a tree
// installed or unpacked anywhere finds its own files; empty when the
// executable is not in such a tree (run from the build tree, or a test).
std::string InstallPrefix();

// The running executable, from /proc/self/exe; empty when it cannot be read.
std::string ExecutablePath();

} // namespace platform
