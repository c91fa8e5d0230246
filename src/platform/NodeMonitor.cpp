#include "platform/NodeMonitor.h"

#include "platform/Handler.h"
#include "platform/Message.h"
#include "platform/PathNames.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace platform {

namespace {

// A message about one entry of a folder, or about the folder itself.
Message EntryMessage(int32_t opcode,
                     dev_t device,
                     int64_t directory,
                     int64_t node,
                     const std::string &name,
                     const std::string &path)
{
    Message message(B_NODE_MONITOR);
    message.AddInt32("opcode", opcode);
    message.AddInt32("device", int32_t(device));
    message.AddInt64("directory", directory);
    message.AddInt64("node", node);
    message.AddString("name", name);
    message.AddString("path", path);
    return message;
}

// IN_EXCL_UNLINK: a file that is unlinked while some program still writes it
// must not keep reporting stat changes for a name that is gone.
// IN_ONLYDIR: a file given as the folder answers ENOTDIR instead of being
// watched as a file.
constexpr uint32_t kWatchMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB
                                | IN_MODIFY | IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF
                                | IN_UNMOUNT | IN_ONLYDIR | IN_EXCL_UNLINK;
constexpr uint32_t kStatMask = IN_ATTRIB | IN_MODIFY | IN_CLOSE_WRITE;
constexpr uint32_t kFolderGoneMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;

// About 2,000 events with short names per read: enough to drain a burst in a
// few reads, small enough that the GUI gets the thread back between them.
constexpr size_t kReadBufferSize = 64 * 1024;

struct Registration
{
    Handler *handler = nullptr;
    // As it was given (made absolute): the base of every path this handler
    // is sent, and the key StopWatching finds it by.
    std::string path;
};

struct WatchedFolder
{
    dev_t device = 0;
    ino_t node = 0;
    ino_t parent = 0;
    // The folder's own leaf and its path with links resolved, for the nodes
    // looked up at event time.
    std::string name;
    std::string resolved;
    std::vector<Registration> registrations;
    // Its removal is being delivered; no further event of the folder counts.
    bool ending = false;

    bool Has(const Handler *handler) const
    {
        for (const Registration &registration : registrations)
            if (registration.handler == handler)
                return true;
        return false;
    }

    // The base path for `handler`'s messages: its own, or for a handler that
    // watches only the other side of a move, the folder's resolved path.
    const std::string &PathFor(const Handler *handler) const
    {
        for (const Registration &registration : registrations)
            if (registration.handler == handler)
                return registration.path;
        return resolved;
    }
};

struct RawEvent
{
    int wd = -1;
    uint32_t mask = 0;
    uint32_t cookie = 0;
    std::string name;
};

// Absolute, without repeated or trailing slashes; "." and ".." and links are
// kept as written, since the path is what the handler's messages are built on.
std::string Normalized(const std::string &path)
{
    std::string absolute = path;
    if (path.empty() || path[0] != '/') {
        std::unique_ptr<char, decltype(&free)> cwd(getcwd(nullptr, 0), &free);
        absolute = JoinPath(cwd ? cwd.get() : "/", path);
    }
    std::string normalized;
    for (char c : absolute)
        if (c != '/' || normalized.empty() || normalized.back() != '/')
            normalized += c;
    if (normalized.size() > 1 && normalized.back() == '/')
        normalized.pop_back();
    return normalized;
}

int64_t NodeAt(const std::string &folder, const std::string &name)
{
    struct stat info;
    return lstat(JoinPath(folder, name).c_str(), &info) == 0 ? int64_t(info.st_ino) : 0;
}

status_t Describe(const std::string &path, WatchedFolder *folder)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return LastError();
    std::unique_ptr<char, decltype(&free)> resolved(realpath(path.c_str(), nullptr), &free);
    if (!resolved)
        return LastError();
    struct stat parent;
    if (stat(JoinPath(resolved.get(), "..").c_str(), &parent) != 0)
        return LastError();
    folder->device = info.st_dev;
    folder->node = info.st_ino;
    folder->parent = parent.st_ino;
    folder->resolved = resolved.get();
    const size_t slash = folder->resolved.rfind('/');
    folder->name = folder->resolved == "/" ? "/" : folder->resolved.substr(slash + 1);
    return B_OK;
}

// The process's one inotify instance and what it watches. Lives for the whole
// process; the socket notifier belongs to the application and goes with it.
class Monitor
{
public:
    static Monitor &Instance()
    {
        static Monitor monitor;
        return monitor;
    }

    ~Monitor()
    {
        delete fNotifier.data();
        if (fFD >= 0)
            close(fFD);
    }

    status_t Watch(const std::string &path, Handler *target);
    status_t Stop(const std::string &path, Handler *target);
    void StopAll(Handler *target);
    int Count(const Handler *target) const;

private:
    Monitor() = default;

    status_t Start();
    void Unregister(int wd, const Handler *target);
    bool IsRegistered(int wd, const Handler *handler) const;
    // The folder of `wd` while its events still count.
    const WatchedFolder *Live(int wd) const;

    void ReadEvents(bool flushCarried);
    void Process(std::vector<RawEvent> &events, bool mayCarry);
    void EmitEntry(int32_t opcode, int wd, const std::string &name);
    void EmitMove(const RawEvent *from, const RawEvent *to);
    void EmitFolderGone(int wd, uint32_t mask);
    void EmitEventsLost();

    int fFD = -1;
    QPointer<QSocketNotifier> fNotifier;
    std::map<int, WatchedFolder> fWatches;
    // A MOVED_FROM that ended a read: its MOVED_TO may be the first event of
    // the next one. It waits for that read or for a zero timer.
    std::optional<RawEvent> fCarried;
    bool fFlushScheduled = false;
    bool fReading = false;
    alignas(inotify_event) char fBuffer[kReadBufferSize];
};

status_t Monitor::Start()
{
    // The table and the notifier belong to the GUI thread.
    if (const status_t status = CheckGuiThread(); status != B_OK)
        return status;
    QCoreApplication *app = QCoreApplication::instance();
    if (fFD < 0) {
        fFD = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        if (fFD < 0)
            return LastError(); // EMFILE, the per-user instance limit: B_NO_MORE_FDS
    }
    if (!fNotifier) {
        // A new application (tests make one after another) gets a notifier
        // of its own for the same descriptor.
        auto *notifier = new QSocketNotifier(qintptr(fFD), QSocketNotifier::Read, app);
        QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this] {
            ReadEvents(false);
        });
        fNotifier = notifier;
    }
    return B_OK;
}

status_t Monitor::Watch(const std::string &path, Handler *target)
{
    if (!target || path.empty())
        return B_BAD_VALUE;
    if (status_t status = Start(); status != B_OK)
        return status;

    const std::string given = Normalized(path);
    const int wd = inotify_add_watch(fFD, given.c_str(), kWatchMask);
    if (wd < 0)
        return errno == ENOSPC ? B_NO_MORE_FDS : LastError();

    // inotify answers the same descriptor for every path of one folder.
    auto found = fWatches.find(wd);
    if (found != fWatches.end() && found->second.ending) {
        fWatches.erase(found);
        found = fWatches.end();
    }
    if (found == fWatches.end()) {
        WatchedFolder folder;
        if (status_t status = Describe(given, &folder); status != B_OK) {
            inotify_rm_watch(fFD, wd);
            return status;
        }
        found = fWatches.emplace(wd, std::move(folder)).first;
    }
    if (!found->second.Has(target))
        found->second.registrations.push_back({target, given});
    return B_OK;
}

status_t Monitor::Stop(const std::string &path, Handler *target)
{
    const std::string given = Normalized(path);
    for (const auto &[wd, folder] : fWatches) {
        for (const Registration &registration : folder.registrations) {
            if (registration.handler == target && registration.path == given) {
                Unregister(wd, target);
                return B_OK;
            }
        }
    }
    // Another path of a folder watched once for this target.
    struct stat info;
    if (stat(given.c_str(), &info) == 0) {
        for (const auto &[wd, folder] : fWatches) {
            if (folder.device == info.st_dev && folder.node == info.st_ino && folder.Has(target)) {
                Unregister(wd, target);
                return B_OK;
            }
        }
    }
    return B_BAD_VALUE;
}

void Monitor::StopAll(Handler *target)
{
    std::vector<int> watched;
    for (const auto &[wd, folder] : fWatches)
        if (folder.Has(target))
            watched.push_back(wd);
    for (int wd : watched)
        Unregister(wd, target);
}

int Monitor::Count(const Handler *target) const
{
    int count = 0;
    for (const auto &[wd, folder] : fWatches)
        if (!folder.ending && folder.Has(target))
            count++;
    return count;
}

void Monitor::Unregister(int wd, const Handler *target)
{
    auto found = fWatches.find(wd);
    if (found == fWatches.end())
        return;
    std::vector<Registration> &registrations = found->second.registrations;
    for (auto it = registrations.begin(); it != registrations.end(); ++it) {
        if (it->handler == target) {
            registrations.erase(it);
            break;
        }
    }
    if (!registrations.empty())
        return;
    // The kernel's IN_IGNORED for it arrives later and finds no watch.
    if (!found->second.ending)
        inotify_rm_watch(fFD, wd);
    fWatches.erase(found);
}

bool Monitor::IsRegistered(int wd, const Handler *handler) const
{
    const auto found = fWatches.find(wd);
    return found != fWatches.end() && found->second.Has(handler);
}

const WatchedFolder *Monitor::Live(int wd) const
{
    const auto found = fWatches.find(wd);
    return found == fWatches.end() || found->second.ending ? nullptr : &found->second;
}

void Monitor::ReadEvents(bool flushCarried)
{
    // A handler that runs a nested event loop (a modal alert) must not see
    // later events before the earlier ones of this read are delivered.
    if (fReading)
        return;
    fReading = true;
    if (fNotifier)
        fNotifier->setEnabled(false);

    ssize_t length;
    do {
        length = read(fFD, fBuffer, sizeof fBuffer);
    } while (length < 0 && errno == EINTR);

    std::vector<RawEvent> events;
    if (fCarried) {
        events.push_back(std::move(*fCarried));
        fCarried.reset();
    }
    for (size_t offset = 0; length > 0 && offset + sizeof(inotify_event) <= size_t(length);) {
        const auto *event = reinterpret_cast<const inotify_event *>(fBuffer + offset);
        RawEvent &raw = events.emplace_back();
        raw.wd = event->wd;
        raw.mask = event->mask;
        raw.cookie = event->cookie;
        if (event->len > 0)
            raw.name.assign(event->name, strnlen(event->name, event->len));
        offset += sizeof(inotify_event) + event->len;
    }
    // A wake-up without events keeps what was carried until its flush.
    Process(events, length > 0 || !flushCarried);

    fReading = false;
    if (fNotifier)
        fNotifier->setEnabled(true);
    if (fCarried && !fFlushScheduled && fNotifier) {
        fFlushScheduled = true;
        QTimer::singleShot(0, fNotifier.data(), [this] {
            fFlushScheduled = false;
            ReadEvents(true);
        });
    }
}

void Monitor::Process(std::vector<RawEvent> &events, bool mayCarry)
{
    // A rename queues MOVED_FROM and MOVED_TO with one cookie, the FROM first;
    // events of other programs may come between them.
    std::vector<ptrdiff_t> partner(events.size(), -1);
    std::unordered_map<uint32_t, size_t> openMoves;
    for (size_t i = 0; i < events.size(); i++) {
        if (events[i].mask & IN_MOVED_FROM) {
            openMoves[events[i].cookie] = i;
        } else if (events[i].mask & IN_MOVED_TO) {
            const auto found = openMoves.find(events[i].cookie);
            if (found != openMoves.end()) {
                partner[found->second] = ptrdiff_t(i);
                partner[i] = ptrdiff_t(found->second);
                openMoves.erase(found);
            }
        }
    }
    if (mayCarry && !events.empty() && (events.back().mask & IN_MOVED_FROM) && partner.back() < 0) {
        fCarried = std::move(events.back());
        events.pop_back();
        partner.pop_back();
    }

    // Stat changes: one per name between the events that make or unmake the
    // name, the last one kept; none when the name is removed later in the read.
    std::vector<bool> skip(events.size(), false);
    std::set<std::pair<int, std::string>> removedLater;
    std::set<std::pair<int, std::string>> reportedLater;
    for (size_t i = events.size(); i-- > 0;) {
        const RawEvent &event = events[i];
        if (event.name.empty())
            continue;
        const std::pair<int, std::string> key(event.wd, event.name);
        if (event.mask & (IN_DELETE | IN_MOVED_FROM)) {
            removedLater.insert(key);
            reportedLater.erase(key);
        } else if (event.mask & (IN_CREATE | IN_MOVED_TO)) {
            removedLater.erase(key);
            reportedLater.erase(key);
        } else if (event.mask & kStatMask) {
            skip[i] = removedLater.count(key) > 0 || !reportedLater.insert(key).second;
        }
    }

    for (size_t i = 0; i < events.size(); i++) {
        const RawEvent &event = events[i];
        if (skip[i])
            continue;
        if (event.mask & IN_Q_OVERFLOW) {
            EmitEventsLost();
        } else if (event.mask & kFolderGoneMask) {
            EmitFolderGone(event.wd, event.mask);
        } else if (event.name.empty()) {
            // A change of the watched folder itself (its mode, say): nothing
            // a listing of its entries shows.
        } else if (event.mask & IN_MOVED_FROM) {
            EmitMove(&event, partner[i] >= 0 ? &events[size_t(partner[i])] : nullptr);
        } else if (event.mask & IN_MOVED_TO) {
            // A paired one went out with its MOVED_FROM.
            if (partner[i] < 0)
                EmitMove(nullptr, &event);
        } else if (event.mask & IN_CREATE) {
            EmitEntry(B_ENTRY_CREATED, event.wd, event.name);
        } else if (event.mask & IN_DELETE) {
            EmitEntry(B_ENTRY_REMOVED, event.wd, event.name);
        } else if (event.mask & kStatMask) {
            EmitEntry(B_STAT_CHANGED, event.wd, event.name);
        }
    }
}

// Deliveries work on copies of the folder records: a handler may stop or
// start watches from MessageReceived, so each one is checked to still be
// registered right before its turn.

void Monitor::EmitEntry(int32_t opcode, int wd, const std::string &name)
{
    const WatchedFolder *live = Live(wd);
    if (!live)
        return;
    const WatchedFolder folder = *live;
    const int64_t node = opcode == B_ENTRY_REMOVED ? 0 : NodeAt(folder.resolved, name);
    for (const Registration &registration : folder.registrations) {
        if (!IsRegistered(wd, registration.handler))
            continue;
        Message message = EntryMessage(opcode,
                                       folder.device,
                                       int64_t(folder.node),
                                       node,
                                       name,
                                       JoinPath(registration.path, name));
        registration.handler->MessageReceived(message);
    }
}

void Monitor::EmitMove(const RawEvent *from, const RawEvent *to)
{
    const WatchedFolder *liveFrom = from ? Live(from->wd) : nullptr;
    const WatchedFolder *liveTo = to ? Live(to->wd) : nullptr;
    if (!liveFrom && !liveTo)
        return;
    const std::optional<WatchedFolder> source = liveFrom ? std::optional(*liveFrom) : std::nullopt;
    const std::optional<WatchedFolder> target = liveTo ? std::optional(*liveTo) : std::nullopt;

    // Out of sight on one side: the name is the one that was seen, and the
    // node of an entry moved out cannot be known.
    const std::string &name = target ? to->name : from->name;
    const std::string &fromName = source ? from->name : name;
    const int64_t node = target ? NodeAt(target->resolved, name) : 0;

    std::vector<Handler *> handlers;
    for (const std::optional<WatchedFolder> *side : {&source, &target}) {
        if (!*side)
            continue;
        for (const Registration &registration : (*side)->registrations)
            if (std::find(handlers.begin(), handlers.end(), registration.handler) == handlers.end())
                handlers.push_back(registration.handler);
    }
    for (Handler *handler : handlers) {
        if (!(source && IsRegistered(from->wd, handler))
            && !(target && IsRegistered(to->wd, handler)))
            continue;
        const std::string fromPath = source ? JoinPath(source->PathFor(handler), fromName) : "";
        const std::string path = target ? JoinPath(target->PathFor(handler), name) : fromPath;
        Message message(B_NODE_MONITOR);
        message.AddInt32("opcode", B_ENTRY_MOVED);
        message.AddInt32("device", int32_t(target ? target->device : source->device));
        message.AddInt64("from directory", source ? int64_t(source->node) : 0);
        message.AddInt64("to directory", target ? int64_t(target->node) : 0);
        message.AddInt64("node", node);
        message.AddString("name", name);
        message.AddString("from name", fromName);
        message.AddString("path", path);
        message.AddString("from path", source ? fromPath : path);
        handler->MessageReceived(message);
    }
}

void Monitor::EmitFolderGone(int wd, uint32_t mask)
{
    const auto found = fWatches.find(wd);
    // Also the IN_IGNORED that follows our own removal of a watch.
    if (found == fWatches.end() || found->second.ending)
        return;
    found->second.ending = true;
    // A folder moved away keeps its kernel watch; end it before any handler
    // may watch a folder again (and get a descriptor of its own).
    if (!(mask & IN_IGNORED))
        inotify_rm_watch(fFD, wd);
    const WatchedFolder folder = found->second;
    for (const Registration &registration : folder.registrations) {
        if (!IsRegistered(wd, registration.handler))
            continue;
        Message message = EntryMessage(B_ENTRY_REMOVED,
                                       folder.device,
                                       int64_t(folder.parent),
                                       int64_t(folder.node),
                                       folder.name,
                                       registration.path);
        registration.handler->MessageReceived(message);
    }
    const auto still = fWatches.find(wd);
    if (still != fWatches.end() && still->second.ending)
        fWatches.erase(still);
}

void Monitor::EmitEventsLost()
{
    const std::map<int, WatchedFolder> watches = fWatches;
    for (const auto &[wd, folder] : watches) {
        for (const Registration &registration : folder.registrations) {
            if (!IsRegistered(wd, registration.handler))
                continue;
            Message message(B_NODE_MONITOR);
            message.AddInt32("opcode", kEventsLost);
            message.AddInt32("device", int32_t(folder.device));
            message.AddInt64("directory", int64_t(folder.node));
            registration.handler->MessageReceived(message);
        }
    }
}

} // namespace

status_t NodeMonitor::WatchDirectory(const std::string &path, Handler *target)
{
    return Monitor::Instance().Watch(path, target);
}

status_t NodeMonitor::StopWatching(const std::string &path, Handler *target)
{
    return Monitor::Instance().Stop(path, target);
}

void NodeMonitor::StopWatching(Handler *target)
{
    Monitor::Instance().StopAll(target);
}

int NodeMonitor::CountWatches(Handler *target)
{
    return Monitor::Instance().Count(target);
}

} // namespace platform
