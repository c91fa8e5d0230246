#include "platform/Launcher.h"

#include "platform/Alerts.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>

extern char **environ;

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

void TellFailure(const std::string &path, FailureNotice notice)
{
    if (notice == FailureNotice::StandardError) {
        fprintf(stderr, "kestrin: nothing could open %s\n", path.c_str());
        return;
    }
    Alerts::Go({"Kestrin",
                "Kestrin found no application to open \"" + path + "\".",
                {"OK"},
                B_WARNING_ALERT});
}

// Starts an opener (xdg-open, gio) as a child of Kestrin's own and waits for
// it on a thread of its own: only its exit code says whether it found an
// application for the type. Kestrin never waits on it and it outlives
// Kestrin; `failed` runs on the GUI thread.
status_t StartWatched(const Launch &launch, std::function<void()> failed)
{
    const std::string program = Launcher::FindProgram({launch.program});
    if (program.empty())
        return B_ENTRY_NOT_FOUND;
    std::vector<char *> argv{const_cast<char *>(program.c_str())};
    for (const std::string &argument : launch.arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    const int error = posix_spawn(&child, program.c_str(), nullptr, nullptr, argv.data(), environ);
    if (error != 0) {
        errno = error;
        return LastError();
    }
    std::thread([child, failed = std::move(failed)] {
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            QMetaObject::invokeMethod(QCoreApplication::instance(), failed, Qt::QueuedConnection);
    }).detach();
    return B_OK;
}

// An opener for `path`, its failures told as `notice` says.
status_t Open(const Launch &launch, const std::string &path, FailureNotice notice)
{
    status_t status = B_OK;
    if (LaunchSink *sink = gSink.load())
        status = sink->Start(launch);
    else
        status = StartWatched(launch, [path, notice] { TellFailure(path, notice); });
    if (status != B_OK)
        TellFailure(path, notice);
    return status;
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

status_t Launcher::OpenWithPreferredApplication(const std::string &path, FailureNotice notice)
{
    return Open({"xdg-open", {path}, {}, {}}, path, notice);
}

status_t Launcher::OpenInTextEditor(const std::string &path, FailureNotice notice)
{
    const QByteArray editor = qgetenv("KESTRIN_EDITOR");
    if (!editor.isEmpty()) {
        const status_t status = Start({editor.toStdString(), {path}, {}, {}});
        if (status != B_OK)
            TellFailure(path, notice);
        return status;
    }
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
            return Open({"gio", {"launch", found.toStdString(), path}, {}, {}}, path, notice);
    }
    return OpenWithPreferredApplication(path, notice);
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
