#pragma once

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
// window as refs received.
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

    // Claims org.kestrin.Kestrin on `bus`. When another Kestrin has it, that
    // one is handed `arguments` (paths or file: URLs, relative ones taken
    // from the current folder) and true is returned: this start is done.
    // False when this is the first Kestrin, or there is no bus, or the other
    // one does not answer.
    static bool HandOverToRunning(QDBusConnection bus, const std::vector<std::string> &arguments);

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

    QDBusConnection fBus;
    KestrinApplication *fKestrin; // not owned; outlives this object
};

} // namespace kestrin
