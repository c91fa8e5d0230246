#include "platform/Launcher.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <atomic>

namespace platform {

namespace {

std::atomic<LaunchSink *> gSink{nullptr};

status_t StartDetached(const Launch &launch)
{
    QProcess process;
    process.setProgram(QString::fromStdString(launch.program));
    QStringList arguments;
    for (const std::string &argument : launch.arguments)
        arguments << QString::fromStdString(argument);
    process.setArguments(arguments);
    if (!launch.workingDirectory.empty())
        process.setWorkingDirectory(QString::fromStdString(launch.workingDirectory));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : launch.environment)
        environment.insert(QString::fromStdString(name), QString::fromStdString(value));
    process.setProcessEnvironment(environment);
    return process.startDetached() ? B_OK : B_ENTRY_NOT_FOUND;
}

} // namespace

status_t Launcher::Start(const Launch &launch)
{
    if (launch.program.empty())
        return B_BAD_VALUE;
    if (LaunchSink *sink = gSink.load())
        return sink->Start(launch);
    return StartDetached(launch);
}

status_t Launcher::OpenWithPreferredApplication(const std::string &path)
{
    return Start({"xdg-open", {path}, {}, {}});
}

status_t Launcher::OpenInTextEditor(const std::string &path)
{
    const QByteArray editor = qgetenv("KESTRIN_EDITOR");
    if (!editor.isEmpty())
        return Start({editor.toStdString(), {path}, {}, {}});
    // The desktop file that xdg-mime names for plain text, started by gio,
    // so the file opens as text whatever type its name suggests.
    QProcess query;
    query.start("xdg-mime", {"query", "default", "text/plain"});
    if (query.waitForFinished(2000) && query.exitCode() == 0) {
        const QString desktopFile = QString::fromUtf8(query.readAllStandardOutput()).trimmed();
        const QString found = desktopFile.isEmpty()
                                  ? QString()
                                  : QStandardPaths::locate(QStandardPaths::ApplicationsLocation,
                                                           desktopFile);
        if (!found.isEmpty() && !FindProgram({"gio"}).empty())
            return Start({"gio", {"launch", found.toStdString(), path}, {}, {}});
    }
    return OpenWithPreferredApplication(path);
}

LaunchSink *Launcher::SetSink(LaunchSink *sink)
{
    return gSink.exchange(sink);
}

std::string Launcher::FindProgram(const std::vector<std::string> &programs)
{
    for (const std::string &program : programs) {
        const QString found = QStandardPaths::findExecutable(QString::fromStdString(program));
        if (!found.isEmpty())
            return found.toStdString();
    }
    return std::string();
}

} // namespace platform
