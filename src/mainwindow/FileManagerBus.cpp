#include "mainwindow/FileManagerBus.h"

#include "mainwindow/KestrinApplication.h"
#include "mainwindow/KestrinWindow.h"
#include "mainwindow/WindowMessages.h"
#include "platform/Entry.h"
#include "platform/Message.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimer>
#include <QUrl>

namespace kestrin {

namespace {

// A running Kestrin answers at once: it only starts the listings.
constexpr int kHandOverTimeoutMs = 5000;

// The local path of a URI: file: URLs, and plain absolute paths, which some
// callers send; empty for anything else.
std::string LocalPath(const QString &uri)
{
    const std::string path = KestrinApplication::ArgumentPath(QFile::encodeName(uri).toStdString());
    if (path.empty() || path[0] != '/')
        return std::string();
    return QFile::encodeName(QDir::cleanPath(QFile::decodeName(path.c_str()))).toStdString();
}

} // namespace

QDBusConnection FileManagerBus::SessionBus()
{
    // Without an address libdbus would try to start a bus of its own.
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")
        && (runtime.isEmpty() || !QFileInfo::exists(runtime + "/bus")))
        return QDBusConnection(QStringLiteral("kestrin-no-session-bus"));
    return QDBusConnection::sessionBus();
}

FileManagerBus::HandOver FileManagerBus::HandOverToRunning(QDBusConnection bus,
                                                           const std::vector<std::string> &arguments,
                                                           std::string *why)
{
    if (!bus.isConnected())
        return HandOver::Alone;
    const auto claimed = bus.interface()
                             ->registerService(kKestrinName,
                                               QDBusConnectionInterface::DontQueueService,
                                               QDBusConnectionInterface::DontAllowReplacement);
    if (!claimed.isValid() || claimed.value() == QDBusConnectionInterface::ServiceRegistered)
        return HandOver::Alone;
    // Refs are shown last to first: reversed, the last argument stays shown,
    // as on a first start.
    // Relative paths are this start's, taken from its current folder.
    QStringList uris;
    for (const std::string &argument : arguments) {
        const std::string path = KestrinApplication::ArgumentPath(argument);
        if (!path.empty()) {
            const QString absolute = QDir::current().absoluteFilePath(
                QFile::decodeName(path.c_str()));
            uris.prepend(QUrl::fromLocalFile(absolute).toString(QUrl::FullyEncoded));
        }
    }
    QString startupId = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    if (startupId.isEmpty())
        startupId = qEnvironmentVariable("DESKTOP_STARTUP_ID");
    QDBusMessage call = QDBusMessage::createMethodCall(kKestrinName,
                                                       kObjectPath,
                                                       "org.freedesktop.FileManager1",
                                                       "ShowFolders");
    call << uris << startupId;
    const QDBusMessage reply = bus.call(call, QDBus::Block, kHandOverTimeoutMs);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return HandOver::HandedOver;
    if (why != nullptr)
        *why = "Kestrin is running but did not take the folders: "
               + reply.errorMessage().toStdString();
    return HandOver::Refused;
}

FileManagerBus::FileManagerBus(QDBusConnection bus, KestrinApplication *kestrin)
    : fBus(std::move(bus))
    , fKestrin(kestrin)
{
    if (!fBus.isConnected())
        return;
    fBus.registerObject(kObjectPath, this, QDBusConnection::ExportAllSlots);
    // Another file manager may own the desktop's name; Kestrin does not take
    // it away, nor wait in line for it.
    fBus.interface()->registerService(kFileManagerName,
                                      QDBusConnectionInterface::DontQueueService,
                                      QDBusConnectionInterface::DontAllowReplacement);
}

FileManagerBus::~FileManagerBus()
{
    if (!fBus.isConnected())
        return;
    fBus.unregisterObject(kObjectPath);
    fBus.interface()->unregisterService(kFileManagerName);
    fBus.interface()->unregisterService(kKestrinName);
}

void FileManagerBus::ShowFolders(const QStringList &uris, const QString &startupId)
{
    Show(uris, nullptr, startupId);
}

void FileManagerBus::ShowItems(const QStringList &uris, const QString &startupId)
{
    Show(uris, kRefsShowItems, startupId);
}

void FileManagerBus::ShowItemProperties(const QStringList &uris, const QString &startupId)
{
    Show(uris, kRefsShowProperties, startupId);
}

void FileManagerBus::Show(const QStringList &uris, const char *how, const QString &startupId)
{
    platform::Message refs(B_REFS_RECEIVED);
    for (const QString &uri : uris) {
        const std::string path = LocalPath(uri);
        entry_ref ref;
        if (!path.empty() && platform::Entry(path).GetRef(&ref) == B_OK)
            refs.AddRef("refs", ref);
    }
    if (how != nullptr)
        refs.AddString(kRefsShow, how);
    // The caller (a second start, say) waits for the answer, and showing may
    // stop on a modal alert for a folder that is gone: the answer goes first,
    // the showing after.
    QTimer::singleShot(0, this, [this, refs, how, startupId] { Present(refs, how, startupId); });
}

void FileManagerBus::Present(const platform::Message &refs,
                             const char *how,
                             const QString &startupId)
{
    fKestrin->RefsReceived(refs);

    // The token lets the desktop raise Kestrin for the application that asked.
    if (!startupId.isEmpty()) {
        qputenv("XDG_ACTIVATION_TOKEN", startupId.toUtf8());
        qputenv("DESKTOP_STARTUP_ID", startupId.toUtf8());
    }
    // An information window comes up on top of its own; raising the main
    // window would hide it.
    if (how == kRefsShowProperties)
        return;
    KestrinWindow *window = fKestrin->Window();
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace kestrin
