#pragma once

#include "panes/FolderLister.h"
#include "platform/EntryRef.h"
#include "platform/Errors.h"

#include <QElapsedTimer>
#include <functional>
#include <string>

class QObject;

namespace platform {
class Handler;
class Message;
} // namespace platform

namespace kestrin {

class FolderRows;

// Keeps the rows of a listed folder in step with the folder: watches it
// through node monitoring, turns each message into the names its rows must
// read again, and has them read in batches on a worker, one batch at a time,
// the next one gathering what arrives meanwhile.
//
// GUI thread only, like the pane's core that owns it.
class FolderWatch
{
public:
    // What the watch asks of, and tells, the pane's core.
    struct Hooks
    {
        std::function<RowStyle()> style;
        // A listing is in flight: its rows are not there to change yet.
        std::function<bool()> listing;
        std::function<void()> rowsChanged;
        // The folder itself went away.
        std::function<void()> vanished;
        // The kernel dropped events: only reading the folder again helps.
        std::function<void()> eventsLost;
    };

    FolderWatch(QObject &context, FolderRows &rows, Hooks hooks);

    // Watches `path` on behalf of `target`, which is handed the messages
    // (and hands them back to Handle). B_OK or why not.
    status_t Start(const std::string &path, platform::Handler *target);
    void Stop();
    bool IsWatching() const { return fWatching; }
    const std::string &Path() const { return fPath; }

    // One node-monitor message of the watched folder.
    void Handle(const platform::Message &message);
    // Has the names touched so far read and applied; runs by itself right
    // after the messages of one read are handed in.
    void ApplyPending();

private:
    void Touched(const std::string &name);
    void Renamed(const std::string &from, const std::string &to);
    void StatChanged(const node_ref &node, const std::string &name);
    void Schedule();

    QObject &fContext;
    FolderRows &fRows;
    Hooks fHooks;
    platform::Handler *fTarget = nullptr;
    bool fWatching = false;
    std::string fPath;
    node_ref fNode;
    bool fScheduled = false;
    QElapsedTimer fSinceApplied; // since the last batch was asked for
};

} // namespace kestrin
