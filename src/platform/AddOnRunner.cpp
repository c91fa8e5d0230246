#include "platform/AddOnRunner.h"

#include "platform/AddOnHostProtocol.h"
#include "platform/Handler.h"
#include "platform/Paths.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QThread>
#include <QTimer>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

namespace host = addon_host;

constexpr const char *kHostName = "kestrin-addon-host";

// Only the end of what a chatty add-on prints matters; the rest is dropped
// as it comes, so the run's memory stays bounded.
constexpr size_t kKeptOutput = 64 * 1024;

std::string &HostOverride()
{
    static std::string path;
    return path;
}

bool IsExecutableFile(const std::string &path)
{
    struct stat info;
    return !path.empty() && stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode)
           && access(path.c_str(), X_OK) == 0;
}

void Keep(std::string *kept, const QByteArray &more)
{
    kept->append(more.constData(), size_t(more.size()));
    if (kept->size() > kKeptOutput)
        kept->erase(0, kept->size() - kKeptOutput);
}

std::string LastLine(const std::string &output)
{
    size_t end = output.size();
    while (end > 0) {
        const size_t start = output.rfind('\n', end - 1);
        const size_t first = start == std::string::npos ? 0 : start + 1;
        std::string line = output.substr(first, end - first);
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
            line.pop_back();
        if (!line.empty())
            return line;
        if (start == std::string::npos)
            break;
        end = start;
    }
    return std::string();
}

void AddRef(QStringList *arguments, const entry_ref &ref)
{
    const auto encoded = [](const std::string &bytes) {
        return QString::fromLatin1(host::EncodeArgument(bytes));
    };
    *arguments << encoded(std::to_string(uintmax_t(ref.device)))
               << encoded(std::to_string(uintmax_t(ref.directory))) << encoded(ref.name)
               << encoded(ref.path);
}

AddOnOutcome Judge(QProcess::ExitStatus status,
                   int exitCode,
                   const std::string &report,
                   const std::string &output)
{
    AddOnOutcome outcome;
    outcome.message = LastLine(output);
    if (status == QProcess::CrashExit) {
        // Qt gives the terminating signal as the exit code of a crash.
        outcome.kind = AddOnOutcome::Kind::Crashed;
        outcome.signal = exitCode;
        return outcome;
    }
    const std::string line = report.substr(0, report.find('\n'));
    const std::string failed = std::string(host::kReportFailed) + " ";
    if (line == host::kReportDone) {
        outcome.kind = AddOnOutcome::Kind::Done;
    } else if (line.rfind(failed, 0) == 0) {
        outcome.kind = AddOnOutcome::Kind::Failed;
        outcome.result = int(std::strtol(line.c_str() + failed.size(), nullptr, 10));
    } else if (line == host::kReportCannotLoad) {
        outcome.kind = AddOnOutcome::Kind::CannotLoad;
    } else if (line == host::kReportNoEntryPoint) {
        outcome.kind = AddOnOutcome::Kind::NoEntryPoint;
    } else {
        // No report: the add-on ended the process itself, with exit().
        outcome.kind = exitCode == 0 ? AddOnOutcome::Kind::Done : AddOnOutcome::Kind::Failed;
        outcome.result = exitCode;
    }
    return outcome;
}

// What one run keeps between the process's signals.
struct RunState
{
    AddOnRunner::Completion done;
    std::string output;
    bool finished = false;
};

void Finish(QProcess *process, const std::shared_ptr<RunState> &run, const AddOnOutcome &outcome)
{
    if (run->finished)
        return;
    run->finished = true;
    // The completion may run a nested event loop (an alert); the process
    // object stays until that is over.
    const AddOnRunner::Completion done = std::move(run->done);
    done(outcome);
    process->deleteLater();
}

} // namespace

status_t AddOnRunner::Run(const std::string &addOnPath,
                          const entry_ref &folder,
                          const std::vector<entry_ref> &entries,
                          Completion done)
{
    if (addOnPath.empty() || !done)
        return B_BAD_VALUE;
    if (const status_t status = CheckGuiThread(); status != B_OK)
        return status;
    QCoreApplication *app = QCoreApplication::instance();

    const std::string hostPath = HostPath();
    if (hostPath.empty()) {
        QTimer::singleShot(0, app, [done = std::move(done)] {
            AddOnOutcome outcome;
            outcome.kind = AddOnOutcome::Kind::HostMissing;
            done(outcome);
        });
        return B_OK;
    }

    // dlopen searches the library path for a name without a slash; an add-on
    // is a file, wherever the caller's path leads.
    std::error_code error;
    const std::string absolute = std::filesystem::absolute(addOnPath, error).string();
    QStringList arguments;
    arguments << QString::fromLatin1(host::EncodeArgument(error ? addOnPath : absolute));
    AddRef(&arguments, folder);
    for (const entry_ref &entry : entries)
        AddRef(&arguments, entry);

    // Owned by the application until the run ends, then deleted.
    auto *process = new QProcess(app);
    process->setProgram(QFile::decodeName(hostPath.c_str()));
    process->setArguments(arguments);
    process->setStandardInputFile(QProcess::nullDevice());

    auto run = std::make_shared<RunState>();
    run->done = std::move(done);
    QObject::connect(process, &QProcess::readyReadStandardError, process, [process, run] {
        Keep(&run->output, process->readAllStandardError());
    });
    QObject::connect(process,
                     &QProcess::finished,
                     process,
                     [process, run](int exitCode, QProcess::ExitStatus status) {
                         Keep(&run->output, process->readAllStandardError());
                         const QByteArray report = process->readAllStandardOutput();
                         Finish(process,
                                run,
                                Judge(status, exitCode, report.toStdString(), run->output));
                     });
    QObject::connect(process,
                     &QProcess::errorOccurred,
                     process,
                     [process, run](QProcess::ProcessError error) {
                         // Other errors are followed by finished(). This one may
                         // come from inside start(), so the completion waits.
                         if (error != QProcess::FailedToStart)
                             return;
                         QTimer::singleShot(0, process, [process, run] {
                             AddOnOutcome outcome;
                             outcome.kind = AddOnOutcome::Kind::HostMissing;
                             Finish(process, run, outcome);
                         });
                     });
    process->start();
    return B_OK;
}

std::string AddOnRunner::HostPath()
{
    if (!HostOverride().empty())
        return IsExecutableFile(HostOverride()) ? HostOverride() : std::string();

    // Installed, the host is a private program of Kestrin's, out of PATH.
    std::vector<std::string> candidates;
    if (const std::string prefix = InstallPrefix(); !prefix.empty())
        candidates.push_back(prefix + "/" + KESTRIN_HOST_DIR + "/" + kHostName);
    const std::string exe = ExecutablePath();
    if (!exe.empty())
        candidates.push_back(exe.substr(0, exe.rfind('/')) + "/" + kHostName);
    candidates.push_back(KESTRIN_BUILD_ADDON_HOST);
    candidates.push_back(std::string(KESTRIN_INSTALL_PREFIX) + "/" + KESTRIN_HOST_DIR + "/"
                         + kHostName);
    for (const std::string &candidate : candidates)
        if (IsExecutableFile(candidate))
            return candidate;
    return std::string();
}

std::string AddOnRunner::SetHostPath(const std::string &path)
{
    return std::exchange(HostOverride(), path);
}

} // namespace platform
