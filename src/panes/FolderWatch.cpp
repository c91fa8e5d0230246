#include "panes/FolderWatch.h"

#include "panes/DirListItem.h"
#include "panes/FolderRows.h"
#include "platform/Message.h"
#include "platform/NodeMonitor.h"
#include "platform/PathNames.h"

#include <QMetaObject>
#include <QObject>
#include <QTimer>
#include <algorithm>

namespace kestrin {

namespace {

constexpr qint64 kBatchGapMs = 100;

} // namespace

FolderWatch::FolderWatch(QObject &context, FolderRows &rows, Hooks hooks)
    : fContext(context)
    , fRows(rows)
    , fHooks(std::move(hooks))
{}

status_t FolderWatch::Start(const std::string &path, platform::Handler *target)
{
    Stop();
    const status_t status = platform::NodeMonitor::WatchDirectory(path, target);
    if (status != B_OK)
        return status;
    fWatching = true;
    fTarget = target;
    fPath = path;
    struct stat info;
    if (platform::StatPath(path, &info) == B_OK)
        fNode = node_ref{info.st_dev, info.st_ino};
    return B_OK;
}

void FolderWatch::Stop()
{
    if (!fWatching)
        return;
    platform::NodeMonitor::StopWatching(fPath, fTarget);
    fWatching = false;
}

void FolderWatch::Handle(const platform::Message &message)
{
    if (!fWatching)
        return;
    int32_t opcode = 0, device = 0;
    int64_t directory = 0, node = 0, from = 0, to = 0;
    std::string name, fromName;
    message.FindInt32("opcode", &opcode);
    message.FindInt32("device", &device);
    message.FindInt64("directory", &directory);
    message.FindInt64("node", &node);
    message.FindString("name", &name);
    const auto watched = int64_t(fNode.node);
    switch (opcode) {
    case B_ENTRY_CREATED:
        Touched(name);
        break;
    case B_ENTRY_REMOVED:
        if (node == watched && directory != watched) {
            // The folder itself went; leave it after the events in hand.
            QMetaObject::invokeMethod(&fContext, fHooks.vanished, Qt::QueuedConnection);
            return;
        }
        Touched(name);
        break;
    case B_ENTRY_MOVED:
        message.FindInt64("from directory", &from);
        message.FindInt64("to directory", &to);
        message.FindString("from name", &fromName);
        if (from == watched && to == watched)
            Renamed(fromName, name);
        else if (to == watched)
            Touched(name);
        else if (from == watched)
            Touched(fromName.empty() ? name : fromName);
        break;
    case B_STAT_CHANGED:
        StatChanged(node_ref{dev_t(device), ino_t(node)}, name);
        break;
    case kEventsLost:
        fHooks.eventsLost();
        break;
    default:
        break;
    }
}

void FolderWatch::Touched(const std::string &name)
{
    fRows.Touch(name);
    Schedule();
}

void FolderWatch::Renamed(const std::string &from, const std::string &to)
{
    fRows.Rename(from, to);
    Schedule();
}

void FolderWatch::StatChanged(const node_ref &node, const std::string &name)
{
    std::string changed = name;
    if (changed.empty()) {
        if (const DirListItem *row = fRows.FindNode(node.device, node.node))
            changed = row->Name();
    }
    Touched(changed);
}

void FolderWatch::Schedule()
{
    if (fScheduled)
        return;
    fScheduled = true;
    // A burst of changes in a big folder comes as batch after batch, each of
    // which has the view lay out every row again. Ten batches a second at the
    // most leave the GUI thread the time to read the kernel's events, which
    // it would otherwise drop once their queue is full.
    const qint64 since = fSinceApplied.isValid() ? fSinceApplied.elapsed() : kBatchGapMs;
    QTimer::singleShot(int(std::max<qint64>(0, kBatchGapMs - since)), &fContext, [this] {
        ApplyPending();
    });
}

void FolderWatch::ApplyPending()
{
    fScheduled = false;
    fSinceApplied.start();
    if (fHooks.listing() || !fWatching)
        return;
    fRows.ApplyLater(fPath, fHooks.style(), &fContext, [this](bool changed) {
        if (changed)
            fHooks.rowsChanged();
        // What was reported while the batch was read is the next batch.
        if (fRows.HasPending())
            Schedule();
    });
}

} // namespace kestrin
