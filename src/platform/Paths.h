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
};

// B_ENTRY_NOT_FOUND when the environment names no such folder (no HOME). With
// `create`, missing folders are made (owner-only, as XDG asks).
status_t FindDirectory(DirectoryWhich which, std::string *path, bool create = false);

// The running executable, from /proc/self/exe; empty when it cannot be read.
std::string ExecutablePath();

} // namespace platform
