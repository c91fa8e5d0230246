#include "platform/Launcher.h"

#include "platform/Alerts.h"
#include "platform/Background.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

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

// How long the desktop may take to name its text editor before Kestrin
// falls back on its opener.
constexpr std::chrono::seconds kAnswerBound{10};

// Starts `launch.program` (looked for on PATH) as a child of Kestrin's own.
// With `output`, the child's standard output comes through a pipe whose
// reading end is left there.
status_t Spawn(const Launch &launch, pid_t *child, int *output)
{
    const std::string program = Launcher::FindProgram({launch.program});
    if (program.empty())
        return B_ENTRY_NOT_FOUND;
    std::vector<char *> argv{const_cast<char *>(program.c_str())};
    for (const std::string &argument : launch.arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    int pipeEnds[2] = {-1, -1};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output != nullptr) {
        // Close-on-exec, so that no other child keeps the pipe open.
        if (pipe2(pipeEnds, O_CLOEXEC) != 0) {
            posix_spawn_file_actions_destroy(&actions);
            return LastError();
        }
        posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    }
    const int error = posix_spawn(child, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (output != nullptr) {
        close(pipeEnds[1]);
        *output = pipeEnds[0];
    }
    if (error != 0) {
        if (output != nullptr)
            close(pipeEnds[0]);
        return StatusFromErrno(error);
    }
    return B_OK;
}

// Reads `fd` to its end; false when `deadline` passes first.
bool ReadToEnd(int fd, std::chrono::steady_clock::time_point deadline, std::string *text)
{
    char buffer[4096];
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        pollfd entry{fd, POLLIN, 0};
        const int ready = poll(&entry, 1, int(left.count()));
        if (ready == 0)
            return false;
        const ssize_t got = ready > 0 ? read(fd, buffer, sizeof buffer) : -1;
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return true;
        text->append(buffer, size_t(got));
    }
}

// Whether the child ended with 0, waited for on the calling thread.
bool AwaitSuccess(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Starts an opener (xdg-open, gio) and waits for it on a thread of its own:
// only its exit code says whether it found an application for the type.
// Kestrin never waits on it and it outlives Kestrin; `failed` runs on the
// GUI thread.
status_t StartWatched(const Launch &launch, std::function<void()> failed)
{
    pid_t child = 0;
    const status_t status = Spawn(launch, &child, nullptr);
    if (status != B_OK)
        return status;
    Background::Run(
        nullptr,
        [child](const std::atomic<bool> &) { return AwaitSuccess(child); },
        [failed = std::move(failed)](bool succeeded) {
            if (!succeeded)
                failed();
        },
        Background::Thread::Own);
    return B_OK;
}

// Asks a program of the desktop (xdg-mime) for what it writes, on a thread
// of its own: a desktop may take seconds to answer. `answered` runs on the
// GUI thread with the answer, empty when the program failed or was still
// busy after kAnswerBound (it is ended then).
status_t AskWatched(const Launch &launch, std::function<void(const std::string &)> answered)
{
    pid_t child = 0;
    int output = -1;
    const status_t status = Spawn(launch, &child, &output);
    if (status != B_OK)
        return status;
    Background::Run(
        nullptr,
        [child, output](const std::atomic<bool> &) {
            std::string answer;
            if (!ReadToEnd(output, std::chrono::steady_clock::now() + kAnswerBound, &answer))
                kill(child, SIGKILL);
            close(output);
            if (!AwaitSuccess(child))
                answer.clear();
            return answer;
        },
        std::move(answered),
        Background::Thread::Own);
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

// Opens `path` with the application of the desktop file named `name`
// (found where the desktop keeps them), else with the desktop's opener.
void OpenWithDesktopFile(const std::string &name, const std::string &path, FailureNotice notice)
{
    const QString desktopFile = QString::fromStdString(name).trimmed();
    const QString found = desktopFile.isEmpty()
                              ? QString()
                              : QStandardPaths::locate(QStandardPaths::ApplicationsLocation,
                                                       desktopFile);
    if (!found.isEmpty() && !Launcher::FindProgram({"gio"}).empty())
        Open({"gio", {"launch", found.toStdString(), path}, {}, {}}, path, notice);
    else
        Launcher::OpenWithPreferredApplication(path, notice);
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
    const status_t asked = AskWatched({"xdg-mime", {"query", "default", "text/plain"}, {}, {}},
                                      [path, notice](const std::string &answer) {
                                          OpenWithDesktopFile(answer, path, notice);
                                      });
    return asked == B_OK ? B_OK : OpenWithPreferredApplication(path, notice);
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
