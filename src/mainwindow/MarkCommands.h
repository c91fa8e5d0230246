#pragma once

#include "platform/Message.h"

#include <cstdint>

class QWidget;

namespace platform {
class Handler;
}

namespace kestrin {

class DirPane;

// What the prompt of "Mark by Pattern…" and "Unmark by Pattern…" answers the
// main window with: GetTextWin's reply, "text" the patterns and "checked"
// whether folders are picked too.
inline constexpr uint32_t kMsgMarkPatternText = 744;
inline constexpr uint32_t kMsgUnmarkPatternText = 745;

// The main window's commands that mark rows: by a pattern of names in the
// focused pane, and by comparing the focused pane with the other one
// (CompareCommands). The window hands every message here first.
class MarkCommands
{
public:
    // True when the message is one of them. `other` is the pane a copy of
    // the focused one goes to; `window` the main window, which hears the
    // prompt's answer as `replies`.
    static bool Handle(platform::Message &message,
                       DirPane *focused,
                       DirPane *other,
                       QWidget *window,
                       platform::Handler *replies);

private:
    static void AskPattern(bool mark, QWidget *window, platform::Handler *replies);
    static void MarkByPattern(const platform::Message &answer, DirPane &pane, bool mark);
};

} // namespace kestrin
