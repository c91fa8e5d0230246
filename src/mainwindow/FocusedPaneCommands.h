#pragma once

#include "platform/Message.h"

class QWidget;

namespace kestrin {

class DirPane;
class PaneCommands;
class PaneModel;

// The main window's messages that only act on its focused pane: they are
// handed on here, so the window's own dispatch keeps to windows and panes
// as a whole.
class FocusedPaneCommands
{
public:
    // True when the message is one of them (acted on when there is a pane).
    // `window` is the main window, brought forward when a typed name arrives.
    static bool Handle(platform::Message &message, DirPane *pane, QWidget *window);

private:
    static bool ForPane(platform::Message &message, DirPane &pane);
    static bool ForList(platform::Message &message,
                        PaneModel &model,
                        PaneCommands &commands,
                        QWidget *window);
};

} // namespace kestrin
