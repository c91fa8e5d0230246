#pragma once

#include "platform/Message.h"

#include <vector>

class QMenuBar;
class QWidget;

namespace kestrin {

class DirPane;

// Which rows a pane shows: "Filter…" opens the focused pane's filter field;
// "Show Hidden Files" shows or hides its dot-files. Each pane's dot-files
// choice is kept between runs in Kestrin's own settings file, beside the
// profile, under the pane's number ("HiddenPane0" for the first pane, set
// only while the pane hides them).
class RowViewCommands
{
public:
    // True when the message is one of them. `window` holds the menu bar
    // whose checkable "Show Hidden Files" item follows the focused pane.
    static bool Handle(platform::Message &message,
                       DirPane *focused,
                       const std::vector<DirPane *> &panes,
                       QWidget *window);
    // Gives each pane the choice kept for its number.
    static void Restore(const std::vector<DirPane *> &panes);
    // Keeps each pane's choice, leaving the file's other keys alone.
    static void Save(const std::vector<DirPane *> &panes);

private:
    // Checks the menu item when the focused pane shows its dot-files.
    static void ShowChoice(const DirPane *focused, QWidget *window);
};

} // namespace kestrin
