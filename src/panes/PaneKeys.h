#pragma once

class QKeyEvent;
class QString;

namespace kestrin {

class DirView;
class MarkedList;

// The keys of a pane's list, tested in a fixed order: Delete, Page Down,
// Backspace, Space, Insert, type-ahead, "*", "+", "-", Shift with the arrows,
// then F1 to F9 (with Ctrl and Shift). What a key leaves to the list's own
// handling (moving the selection, invoking) is answered false.
//
// GUI thread only.
class PaneKeys
{
public:
    PaneKeys(DirView &view, MarkedList &marked);

    // True when the key was used up here.
    bool Handle(QKeyEvent *event);

    // Jumps to the next row whose name begins with the character, ignoring
    // case; typed again, it steps through such rows, wrapping at the end.
    void TypeAhead(const QString &text);
    void PageDown();

private:
    bool FunctionKey(int key, bool control, bool shift);

    DirView &fView;
    MarkedList &fMarked;
};

} // namespace kestrin
