#pragma once

#include "platform/Message.h"

#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrin {

class DirListItem;
class MarkedList;
class PaneHost;
class PaneModel;

// What a pane does on its own behalf, on its core: opening rows, moving
// entries to the Trash (after asking), renaming in place, opening a file in
// the editor or viewer, measuring a folder, and the copy, move, link, pack
// and unpack requests that it hands to the main window. The keys, the menus
// and the window call these; the list that shows the pane is asked only for
// its selection and its rename field (PaneHost).
//
// GUI thread only.
class PaneCommands
{
public:
    PaneCommands(PaneModel &model, PaneHost &host);

    // Builds a request of the marked rows (or of the selected row when none
    // is marked) and hands it to the window: "refs", "Dragging" "false",
    // "Direction" "Right" and "TypeOfCopy". With `selectedFallback` the
    // selected row stands in only while the request is built.
    void SendRequest(uint32_t what, const char *typeOfCopy, bool selectedFallback);
    // F5: the place's own request for taking rows to the other pane (a
    // copy, or unpacking out of an archive).
    void CopyOut();
    // Ctrl+F5: packs the marked entries into a zip in the other pane.
    void Pack();

    // Asks "Sir?" and hands the marked (or selected) rows to the window as a
    // 606 request: to the Trash, or for good inside the Trash.
    void Trash();
    // The text of that question for these names.
    static std::string TrashQuestion(const std::vector<std::string> &names, bool permanent);

    // In-place rename of the selected row (row 1 or below): the list opens
    // its rename field.
    void Edit();
    // The rename field on the row at `index` was left with `name`.
    void AcceptRename(int32_t index, const std::string &name);

    // New Folder: the first free name of "New Folder", "New Folder 2" ...
    // among the listed folders, made at once and renamed in place.
    void NewFolder();
    // That name, given which names are taken; empty when "New Folder
    // 999999" is reached without a free one.
    static std::string NewFolderName(const std::function<bool(const std::string &)> &taken);
    // A folder of a given name (the new-folder prompt).
    void MkDir(const std::string &name);
    // Renames the selected row's entry (the rename prompt).
    void Rename(const std::string &name);
    // Works out the type of the marked (or selected) files from their
    // content again.
    void Identify();
    // Shows the facts of the marked (or selected) rows that the place knows
    // itself (PaneSource::InfoOf); false when it knows none.
    bool ShowPlaceInfo() const;
    // Gives the marked (or selected) entries the permission bits `mode`;
    // each failure shows its alert and the others still change.
    void SetPermissions(mode_t mode);
    // The paths of the marked (or selected) entries of a local place.
    std::vector<std::string> PathsToActOn() const;
    // The full paths of the marked (or selected) rows, whatever the place.
    std::vector<std::string> PathsOfRows() const;
    // "refs" of the marked rows, or of the selected one; false for none.
    bool GetRefMsg(platform::Message *message) const;

    // Opens the selected row: up a level, or what the place makes of it
    // (into a folder, an archive in the pane, a document in its application).
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
    // Renames one row's entry; false (after the alert) when it failed.
    bool RenameRow(const DirListItem *row, const std::string &name);

    PaneModel &fModel;
    PaneHost &fHost;
    MarkedList &fMarked;
};

} // namespace kestrin
