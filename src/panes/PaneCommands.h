#pragma once

#include "panes/EditControl.h"

#include <QFrame>
#include <QPointer>
#include <cstdint>
#include <string>
#include <vector>

class QFrame;

namespace kestrin {

class DirListItem;
class DirView;
class EditControl;

// What a pane's list does on its own behalf: opening rows, moving entries
// to the Trash (after asking), renaming in place, opening a file in the
// editor or viewer, measuring a folder, and the copy, move, link, pack and
// unpack requests that it hands to the main window.
//
// GUI thread only.
class PaneCommands
{
public:
    explicit PaneCommands(DirView &view);
    ~PaneCommands();

    // Builds a request of the marked rows (or of the selected row when none
    // is marked) and hands it to the window: "refs", "Dragging" "false",
    // "Direction" "Right" and "TypeOfCopy". With `selectedFallback` the
    // selected row stands in only while the request is built.
    void SendRequest(uint32_t what, const char *typeOfCopy, bool selectedFallback);

    // Asks "Sir?" and hands the marked (or selected) rows to the window as a
    // 606 request: to the Trash, or for good inside the Trash.
    void Trash();
    // The text of that question for these names.
    static std::string TrashQuestion(const std::vector<std::string> &names, bool permanent);

    // In-place rename of the selected row (row 1 or below).
    void Edit();
    void AcceptRename(int32_t row);
    void EndRename();
    EditControl *RenameField() const { return fField; }

    // Opens the selected row: up a level, into a folder, a zip file in the
    // pane, any other file with its preferred application.
    void Invoke();
    // F4: every marked (or the selected) file in the text editor.
    void OpenEditor();
    // F3: the selected file in the viewer.
    void View();
    // The occupied space of the selected folder, shown in its Size column
    // once it has been counted on a worker.
    void GetSize();

private:
    std::vector<DirListItem *> RowsToActOn() const;

    DirView &fView;
    QPointer<QFrame> fRenameContainer;
    QPointer<EditControl> fField;
};

} // namespace kestrin
