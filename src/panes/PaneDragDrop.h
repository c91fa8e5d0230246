#pragma once

#include <QPoint>
#include <string>
#include <vector>

class QDragEnterEvent;
class QDragMoveEvent;
class QDropEvent;
class QMimeData;
class QMouseEvent;

struct entry_ref;

namespace kestrin {

class ColumnListView;
class MarkedList;
class PaneModel;

// Dragging entries out of a pane's list and dropping entries on it. A drag
// carries the entries as text/uri-list, so other applications take them as
// they take files from any file manager; a drop, from a pane or from another
// application, becomes the same request as a key would make ("refs",
// "TypeOfCopy" from the drop action: copy, move with Shift, link with Ctrl
// and Shift), with "Dragging" "true", handed to the main window. A drop on a
// folder row goes into that folder; anywhere else into the pane's folder.
// The rows and the requests are the pane's core's; the list that shows them
// says which row is where.
//
// GUI thread only.
class PaneDragDrop
{
public:
    PaneDragDrop(ColumnListView &view, PaneModel &model);

    // From the list's mouse handlers: true when the event started a drag
    // and is used up.
    void MousePress(QMouseEvent *event);
    bool MouseMove(QMouseEvent *event);

    void DragEnter(QDragEnterEvent *event);
    void DragMove(QDragMoveEvent *event);
    void Drop(QDropEvent *event);

    // The uri-list of some paths, and the local paths of a uri-list.
    static QMimeData *MimeFor(const std::vector<std::string> &paths);
    static std::vector<std::string> PathsIn(const QMimeData *data);

private:
    // The folder a drop at this point of the viewport goes into.
    std::string DropFolder(const QPoint &point) const;
    bool Accepts(const QMimeData *data, const QPoint &point) const;

    ColumnListView &fView;
    PaneModel &fModel;
    MarkedList &fMarked;
    QPoint fPressPoint;
    int fPressRow = -1;
};

} // namespace kestrin
