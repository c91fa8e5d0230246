#pragma once

#include "platform/Errors.h"
#include "platform/TypeCodes.h"

#include <cstdint>
#include <memory>
#include <string>

// Node-monitor messages as BeOS sends them: code B_NODE_MONITOR, the event in
// the int32 field "opcode".
inline constexpr uint32_t B_NODE_MONITOR = platform::FourCC("NDMN");

inline constexpr int32_t B_ENTRY_CREATED = 1;
inline constexpr int32_t B_ENTRY_REMOVED = 2;
inline constexpr int32_t B_ENTRY_MOVED = 3;
inline constexpr int32_t B_STAT_CHANGED = 4;
inline constexpr int32_t B_ATTR_CHANGED = 5;
inline constexpr int32_t B_DEVICE_MOUNTED = 6;
inline constexpr int32_t B_DEVICE_UNMOUNTED = 7;

// The kernel dropped events (its queue overflowed): what is listed may be
// stale, and the watcher should read the folder again. Linux only.
inline constexpr int32_t kEventsLost = 100;

// Watch flags of watch_node.
inline constexpr uint32_t B_STOP_WATCHING = 0x00;
inline constexpr uint32_t B_WATCH_NAME = 0x01;
inline constexpr uint32_t B_WATCH_STAT = 0x02;
inline constexpr uint32_t B_WATCH_ATTR = 0x04;
inline constexpr uint32_t B_WATCH_DIRECTORY = 0x08;
inline constexpr uint32_t B_WATCH_ALL = 0x0f;

namespace platform {

class Handler;

// Watching folders through inotify, read on the GUI thread through a
// QSocketNotifier; each event reaches the watching handler as a
// B_NODE_MONITOR message, delivered synchronously (MessageReceived is called
// directly) on the GUI thread, in the order the kernel reported them.
//
// Fields of the messages (device int32, nodes and directories int64, names
// strings; "path" is the full path of the entry the event is about):
//
//   B_ENTRY_CREATED   "device", "directory", "node", "name", "path"
//   B_ENTRY_REMOVED   "device", "directory", "node" (0 when unknown), "name", "path"
//   B_ENTRY_MOVED     "device", "from directory", "to directory", "node",
//                     "name" (the new name), "from name", "path" (the new
//                     path), "from path". A rename inside the watched folder
//                     has both directories equal to it. An entry moved out of
//                     the folder has "to directory" 0 and "name" equal to
//                     "from name"; one moved in has "from directory" 0.
//   B_STAT_CHANGED    "device", "directory", "node", "name", "path"
//   kEventsLost       "device", "directory"
//
// When the watched folder itself goes (deleted, moved away, unmounted) the
// handler gets B_ENTRY_REMOVED with "node" the folder's own node, "directory"
// its parent's node, "name" its leaf and "path" the path it was watched
// under; the watch ends with it.
//
// Only B_WATCH_DIRECTORY (events about the folder's entries, their stat
// changes included) is supported; B_WATCH_STAT and B_WATCH_NAME on the
// folder are accepted and add nothing beyond the removal message above.
//
// GUI thread only. Stat changes of one entry that arrive in one read of the
// kernel's queue are reported once.
class NodeMonitor
{
public:
    // Starts watching the folder at `path` (links followed) for `target`.
    // B_OK, B_ENTRY_NOT_FOUND, B_NOT_A_DIRECTORY, B_PERMISSION_DENIED,
    // B_NO_MORE_FDS (the user's inotify watch limit) or B_NO_INIT without a
    // QCoreApplication. Watching a folder twice for one target is one watch.
    static status_t WatchDirectory(const std::string &path, Handler *target);

    // Stops `target`'s watch of the folder at `path` (as it was given).
    static status_t StopWatching(const std::string &path, Handler *target);
    // Stops every watch of `target`: call it before the handler goes.
    static void StopWatching(Handler *target);

    // How many folders are watched for `target`; for tests.
    static int CountWatches(Handler *target);
};

} // namespace platform
