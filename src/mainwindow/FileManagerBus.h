#pragma once

#include "platform/Message.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <string>
#include <vector>

namespace kestrin {

class KestrinApplication;

// Kestrin on the session bus. It owns the name org.kestrin.Kestrin, so that a
// second start hands its arguments to the first and ends, and, when no other
// file manager has it, org.freedesktop.FileManager1, the desktop's interface
// behind "Show in folder". Both names lead to this object at
// /org/freedesktop/FileManager1; what it is asked to show reaches the main
// window as refs received, after the caller has had its answer.
//
// GUI thread only. Without a session bus nothing here does anything.
class FileManagerBus : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    static constexpr const char *kKestrinName = "org.kestrin.Kestrin";
    static constexpr const char *kFileManagerName = "org.freedesktop.FileManager1";
    static constexpr const char *kObjectPath = "/org/freedesktop/FileManager1";

    // The session bus, or a disconnected connection when the environment
    // names none (no attempt is made to start one).
    static QDBusConnection SessionBus();

    enum class HandOver {
        Alone,      // no bus, or this start now holds the name: it is the Kestrin
        HandedOver, // the running Kestrin took the arguments: this start is done
        Refused,    // another holds the name but did not take the arguments
    };

    // Claims org.kestrin.Kestrin on `bus`. When another Kestrin has it, that
    // one is handed `arguments` (paths or file: URLs, relative ones taken
    // from the current folder). On Refused, `why` (when given) says what
    // went wrong; this start must not open a window of its own then either,
    // or two Kestrins would write one settings file.
    static HandOver HandOverToRunning(QDBusConnection bus,
                                      const std::vector<std::string> &arguments,
                                      std::string *why = nullptr);

    // Serves `kestrin` on `bus` (which should have been claimed first).
    FileManagerBus(QDBusConnection bus, KestrinApplication *kestrin);
    ~FileManagerBus() override;

public slots:
    // Folders (or files, shown selected in their folders) to show.
    void ShowFolders(const QStringList &uris, const QString &startupId);
    // Items to show selected in their folders.
    void ShowItems(const QStringList &uris, const QString &startupId);
    // Items whose information windows to open.
    void ShowItemProperties(const QStringList &uris, const QString &startupId);

private:
    void Show(const QStringList &uris, const char *how, const QString &startupId);
    void Present(const platform::Message &refs, const char *how, const QString &startupId);

    QDBusConnection fBus;
    KestrinApplication *fKestrin; // not owned; outlives this object
};

} // namespace kestrin
