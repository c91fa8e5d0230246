#include "platform/MountWatcher.h"

#include "platform/Handler.h"
#include "platform/Message.h"
#include "platform/NodeMonitor.h"
#include "platform/Volume.h"
#include "platform/VolumeRoster.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>
#include <QThread>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr const char *kMountInfo = "/proc/self/mountinfo";

// Whether `volume` is still mounted in `volumes`: its device there at one of
// the paths it had. A device number alone does not say it: an anonymous
// device (tmpfs) that goes is given to the next such mount, and between two
// looks one volume can go and another come with the same number.
bool StillMounted(const std::vector<Volume> &volumes,
                  const std::vector<Volume> &before,
                  dev_t device)
{
    return std::any_of(volumes.begin(), volumes.end(), [&](const Volume &volume) {
        return volume.Device() == device
               && std::find(before.begin(), before.end(), volume) != before.end();
    });
}

// The volume that holds the folder a volume is mounted on.
dev_t MountedOn(const Volume &volume)
{
    const std::string &path = volume.MountPath();
    if (path.size() < 2 || path[0] != '/')
        return 0;
    const size_t slash = path.rfind('/');
    const std::optional<dev_t> device = DeviceForPath(slash == 0 ? "/" : path.substr(0, slash));
    return device.value_or(0);
}

class Watcher
{
public:
    static Watcher &Instance()
    {
        static Watcher watcher;
        return watcher;
    }

    ~Watcher()
    {
        if (fFD >= 0)
            close(fFD);
    }

    status_t Watch(Handler *target);
    void Stop(Handler *target);
    bool Has(const Handler *target) const;

private:
    Watcher() = default;

    void Shut();
    void Check();
    void Deliver(const Message &message);

    // Polled, never read: poll() itself marks a change of the table as seen.
    int fFD = -1;
    QPointer<QSocketNotifier> fNotifier;
    std::vector<Handler *> fHandlers;
    std::vector<Volume> fKnown;
    bool fChecking = false;
};

status_t Watcher::Watch(Handler *target)
{
    if (!target)
        return B_BAD_VALUE;
    if (const status_t status = CheckGuiThread(); status != B_OK)
        return status;
    QCoreApplication *app = QCoreApplication::instance();

    if (fFD < 0) {
        fFD = open(kMountInfo, O_RDONLY | O_CLOEXEC);
        if (fFD < 0)
            return LastError();
    }
    if (!fNotifier) {
        // Opened first, read second: a change in between is flagged on the
        // descriptor and looked at once more, never missed. A new
        // application (tests make one after another) starts afresh too.
        fKnown = VolumeRoster::MountedVolumes();
        auto *notifier = new QSocketNotifier(qintptr(fFD), QSocketNotifier::Exception, app);
        QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this] { Check(); });
        fNotifier = notifier;
    }
    if (!Has(target))
        fHandlers.push_back(target);
    return B_OK;
}

void Watcher::Stop(Handler *target)
{
    fHandlers.erase(std::remove(fHandlers.begin(), fHandlers.end(), target), fHandlers.end());
    if (fHandlers.empty())
        Shut();
}

bool Watcher::Has(const Handler *target) const
{
    return std::find(fHandlers.begin(), fHandlers.end(), target) != fHandlers.end();
}

void Watcher::Shut()
{
    // Possibly from a handler inside Check, which runs in the notifier's
    // signal: the notifier goes later, and is off before its descriptor closes.
    if (fNotifier) {
        fNotifier->setEnabled(false);
        fNotifier->deleteLater();
        fNotifier = nullptr;
    }
    if (fFD >= 0) {
        close(fFD);
        fFD = -1;
    }
    fKnown.clear();
}

void Watcher::Check()
{
    if (fChecking)
        return;
    fChecking = true;
    // A handler that runs a nested event loop (a modal alert) must not see
    // the next change before this one is delivered to everyone; the kernel
    // keeps the flag up until the notifier polls again.
    const QPointer<QSocketNotifier> notifier = fNotifier;
    if (notifier)
        notifier->setEnabled(false);

    std::vector<Volume> now = VolumeRoster::MountedVolumes();
    std::vector<Message> changes;
    std::vector<dev_t> gone;
    for (const Volume &volume : fKnown) {
        if (StillMounted(now, fKnown, volume.Device())
            || std::find(gone.begin(), gone.end(), volume.Device()) != gone.end())
            continue;
        gone.push_back(volume.Device());
        Message message(B_NODE_MONITOR);
        message.AddInt32("opcode", B_DEVICE_UNMOUNTED);
        message.AddInt32("device", int32_t(volume.Device()));
        message.AddString("path", volume.MountPath());
        changes.push_back(std::move(message));
    }
    std::vector<dev_t> come;
    for (const Volume &volume : now) {
        if (StillMounted(now, fKnown, volume.Device())
            || std::find(come.begin(), come.end(), volume.Device()) != come.end())
            continue;
        come.push_back(volume.Device());
        Message message(B_NODE_MONITOR);
        message.AddInt32("opcode", B_DEVICE_MOUNTED);
        message.AddInt32("new device", int32_t(volume.Device()));
        message.AddInt32("device", int32_t(MountedOn(volume)));
        message.AddString("path", volume.MountPath());
        changes.push_back(std::move(message));
    }
    fKnown = std::move(now);

    for (const Message &message : changes)
        Deliver(message);

    fChecking = false;
    // Unless a handler stopped the last watch (and maybe started anew).
    if (notifier && notifier == fNotifier)
        notifier->setEnabled(true);
}

void Watcher::Deliver(const Message &message)
{
    // Handlers may come and go from MessageReceived: each one is checked to
    // still be watching right before its turn.
    const std::vector<Handler *> handlers = fHandlers;
    for (Handler *handler : handlers) {
        if (!Has(handler))
            continue;
        Message delivered = message;
        handler->MessageReceived(delivered);
    }
}

} // namespace

status_t MountWatcher::Watch(Handler *target)
{
    return Watcher::Instance().Watch(target);
}

void MountWatcher::StopWatching(Handler *target)
{
    Watcher::Instance().Stop(target);
}

bool MountWatcher::IsWatching(Handler *target)
{
    return Watcher::Instance().Has(target);
}

} // namespace platform
