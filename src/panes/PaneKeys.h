#pragma once

class QKeyEvent;
class QString;

namespace kestrin {

class ColumnListView;
class MarkedList;
class PaneCommands;
class PaneModel;

// The keys of a pane's list, tested in a fixed order: Delete, Page Down,
// Backspace, Space, Insert, type-ahead, "*", "+", "-", Shift with the arrows,
// then F1 to F9 (with Ctrl and Shift). What a key leaves to the list's own
// handling (moving the selection, invoking) is answered false. Keys act on
// the pane's core and its commands; the list that shows it is moved through
// its rows.
//
// GUI thread only.
class PaneKeys
{
public:
    PaneKeys(ColumnListView &view, PaneModel &model, PaneCommands &commands);

    // True when the key was used up here.
    bool Handle(QKeyEvent *event);

    // Jumps to the next row whose name begins with the character, ignoring
    // case; typed again, it steps through such rows, wrapping at the end.
    void TypeAhead(const QString &text);
    void PageDown();

private:
    bool FunctionKey(int key, bool control, bool shift);

    ColumnListView &fView;
    PaneModel &fModel;
    PaneCommands &fCommands;
    MarkedList &fMarked;
};

} // namespace kestrin
