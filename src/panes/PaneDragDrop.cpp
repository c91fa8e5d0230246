#include "panes/PaneDragDrop.h"

#include "panes/DirListItem.h"
#include "panes/MarkedList.h"
#include "panes/PaneMessages.h"
#include "panes/PaneModel.h"
#include "platform/Entry.h"
#include "platform/PathNames.h"
#include "widgets/ColumnListView.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

namespace kestrin {

namespace {

const char *TypeOfCopy(Qt::DropAction action)
{
    switch (action) {
    case Qt::MoveAction:
        return "Move";
    case Qt::LinkAction:
        return "Link";
    default:
        return "Copy";
    }
}

} // namespace

PaneDragDrop::PaneDragDrop(ColumnListView &view, PaneModel &model)
    : fView(view)
    , fModel(model)
    , fMarked(model.Marked())
{}

QMimeData *PaneDragDrop::MimeFor(const std::vector<std::string> &paths)
{
    QList<QUrl> urls;
    for (const std::string &path : paths)
        urls.push_back(QUrl::fromLocalFile(QString::fromUtf8(path.c_str())));
    auto *data = new QMimeData;
    data->setUrls(urls);
    return data;
}

std::vector<std::string> PaneDragDrop::PathsIn(const QMimeData *data)
{
    std::vector<std::string> paths;
    if (data == nullptr || !data->hasUrls())
        return paths;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile())
            paths.push_back(url.toLocalFile().toStdString());
    }
    return paths;
}

void PaneDragDrop::MousePress(QMouseEvent *event)
{
    fPressPoint = event->position().toPoint();
    fPressRow = event->button() == Qt::LeftButton ? fView.IndexOf(fPressPoint) : -1;
}

bool PaneDragDrop::MouseMove(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton) || fPressRow < 1
        || (event->position().toPoint() - fPressPoint).manhattanLength()
               < QApplication::startDragDistance())
        return false;
    if (!fModel.Source().HoldsLocalEntries())
        return false;
    // The marked rows travel together; a row that is not marked travels alone.
    std::vector<std::string> paths;
    const DirListItem *pressed = fModel.Row(fPressRow);
    if (pressed->IsMarked()) {
        for (const DirListItem *row : fMarked.Rows())
            paths.push_back(fModel.PathOf(row));
    } else {
        paths.push_back(fModel.PathOf(pressed));
    }
    fPressRow = -1;
    auto *drag = new QDrag(&fView);
    drag->setMimeData(MimeFor(paths));
    drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
    return true;
}

std::string PaneDragDrop::DropFolder(const QPoint &point) const
{
    const DirListItem *row = fModel.Row(fView.IndexOf(point));
    if (row != nullptr && row->IsFolder() && !row->IsParent() && fModel.Source().IsLocalFolder())
        return fModel.PathOf(row);
    return fModel.CurrentPath();
}

bool PaneDragDrop::Accepts(const QMimeData *data, const QPoint &point) const
{
    const std::vector<std::string> paths = PathsIn(data);
    if (paths.empty())
        return false;
    // Entries dropped where they already are have nowhere to go.
    const std::string target = DropFolder(point);
    for (const std::string &path : paths) {
        if (platform::ParentPath(path) != target && path != target)
            return true;
    }
    return false;
}

void PaneDragDrop::DragEnter(QDragEnterEvent *event)
{
    if (Accepts(event->mimeData(), event->position().toPoint()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void PaneDragDrop::DragMove(QDragMoveEvent *event)
{
    if (Accepts(event->mimeData(), event->position().toPoint()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void PaneDragDrop::Drop(QDropEvent *event)
{
    const QPoint point = event->position().toPoint();
    if (!Accepts(event->mimeData(), point)) {
        event->ignore();
        return;
    }
    const std::vector<std::string> paths = PathsIn(event->mimeData());
    platform::Message request(kMsgCopyRequest);
    for (const std::string &path : paths) {
        entry_ref ref;
        if (platform::Entry(path).GetRef(&ref) == B_OK)
            request.AddRef("refs", ref);
    }
    request.AddString("From", platform::ParentPath(paths.front()));
    request.AddString("Dragging", "true");
    request.AddString("Direction", "Right");
    request.AddString("TypeOfCopy", TypeOfCopy(event->dropAction()));
    request.AddString("DropFolder", DropFolder(point));
    // The list the drop landed on: the window finds its pane by it.
    request.AddPointer("Target", static_cast<QWidget *>(&fView));
    event->acceptProposedAction();
    // The window may ask questions about the request; the drop ends first.
    fModel.PostToWindow(request);
}

} // namespace kestrin
