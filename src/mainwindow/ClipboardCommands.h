#pragma once

#include "platform/Message.h"

namespace kestrin {

class DirPane;
class KestrinWindow;

// The Edit menu's clipboard items, for the main window's focused pane: Copy
// and Cut put the marked (or the selected) rows on the system clipboard as
// other file managers put files there; Paste takes entries another
// application copied or cut into the pane's place, through the same
// transfer decision and progress window as a drop from that application,
// and afterwards empties the clipboard of a cut, whose entries have moved.
//
// GUI thread only.
class ClipboardCommands
{
public:
    // True when the message is one of them (acted on when a pane has the
    // focus).
    static bool Handle(const platform::Message &message, KestrinWindow &window);

private:
    static void Put(DirPane &pane, bool cut);
    static void Paste(DirPane &pane, KestrinWindow &window);
};

} // namespace kestrin
