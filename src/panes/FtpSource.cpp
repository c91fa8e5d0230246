#include "panes/FtpSource.h"

#include "ftp/FtpConversation.h"
#include "ftp/FtpListing.h"
#include "ftp/FtpTls.h"
#include "panes/DirListItem.h"
#include "panes/PaneMessages.h"
#include "panes/PlaceText.h"
#include "platform/Alerts.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"

#include <QDir>
#include <QPointer>
#include <QUrl>
#include <algorithm>
#include <utility>

namespace kestrin {

namespace {

constexpr int kLoginRefused = 530;

// What the user is told of a login that failed with `code`; nothing where
// the user has been told already (a certificate refused).
std::string ConnectProblem(int code)
{
    if (code == kLoginRefused)
        return "The username or password supplied is incorrect.\nCheck your settings and try to "
               "reconnect.";
    if (code == FtpTls::kCertificateRefused)
        return {};
    if (const char *text = FtpTls::ProblemText(code))
        return text;
    return "Failed to connect to ftp server.\nPlease check your internet connection";
}

// The rows of a server's answer, made on the conversation's worker.
void MakeRows(const FtpResult &result, const RowStyle &style, FolderLister::Job &job)
{
    if (result.connectCode != 0)
        job.problem = ConnectProblem(result.connectCode);
    // A listing that failed shows nothing but the path. After a lost
    // connection the last listing is shown again, if there was one.
    if (result.listCode != 0 || (result.connectCode != 0 && result.folder.empty()))
        return;
    const std::vector<FtpListingRow> entries = GetEntries(result.listing);
    job.total = int32_t(entries.size());
    FolderLister::Groups groups;
    groups.ReserveFiles(entries.size());
    if (result.folder != "/")
        groups.Add(job,
                   std::make_unique<DirListItem>(platform::ScannedEntry(),
                                                 style.colors,
                                                 true,
                                                 style.dateFormat));
    for (const FtpListingRow &entry : entries) {
        auto row = std::make_unique<DirListItem>(entry.name,
                                                 entry.size,
                                                 entry.date,
                                                 entry.permissions,
                                                 style.colors);
        // A machine listing's exact time lets the rows sort by date.
        if (entry.modified)
            row->SetModificationTime(*entry.modified);
        groups.Add(job, std::move(row));
    }
    groups.MoveInto(job);
    job.done = job.total.load();
}

bool ConfirmNotEmpty(const std::string &)
{
    return platform::Alerts::Go({"Sir?",
                                 "The directory is not empty are you sure you want to delete it?",
                                 {"Cancel", "Delete"},
                                 B_STOP_ALERT})
           == 1;
}

platform::Alert PathRefusal(const std::string &text)
{
    return {"Go to Path", text, {"OK"}, B_WARNING_ALERT};
}

} // namespace

std::string FtpSource::LocalFolderOf(const FtpSession &session, const std::string &standing)
{
    if (!session.localDir.empty() && platform::IsFolder(session.localDir))
        return session.localDir;
    return standing.empty() ? "/" : standing;
}

FtpSource::FtpSource(std::shared_ptr<FtpConversation> conversation,
                     const std::string &localFolder,
                     FtpRequest step)
    : fConversation(std::move(conversation))
    , fLocalFolder(LocalFolderOf(fConversation->Session(), localFolder))
    , fStep(std::move(step))
    , fReached(std::make_shared<Reached>())
{}

std::unique_ptr<PaneSource> FtpSource::Connect(const std::string &sessionFile,
                                               const std::string &localFolder)
{
    return std::make_unique<FtpSource>(std::make_shared<FtpConversation>(
                                           FtpSession::Read(sessionFile)),
                                       localFolder);
}

std::unique_ptr<PaneSource> FtpSource::FromSaved(const std::string &saved,
                                                 const std::string &localFolder)
{
    const auto [session, remoteFolder] = PlaceText::ServerParts(saved);
    const std::string sessionFile = FtpSession::FileOfSavedPlace(session);
    // An SFTP session's is SftpSource's.
    if (!FtpSession::IsSessionFile(sessionFile))
        return nullptr;
    if (remoteFolder.empty())
        return Connect(sessionFile, localFolder);
    // Logged in, the conversation goes straight to the folder kept.
    return std::make_unique<FtpSource>(std::make_shared<FtpConversation>(
                                           FtpSession::Read(sessionFile)),
                                       localFolder,
                                       FtpRequest::Of(FtpRequest::Step::Stay, remoteFolder));
}

int32_t FtpSource::Mode() const
{
    return kModeFtp;
}

const std::string &FtpSource::RemoteFolder() const
{
    return fReached->done ? fReached->folder : fStep.base;
}

std::string FtpSource::HeaderText() const
{
    if (!fConversation->Status().empty())
        return fConversation->Status();
    return "ftp: " + RemoteFolder();
}

std::string FtpSource::HeaderNote() const
{
    return fConversation->InClear() ? "not encrypted: the server refused TLS" : "";
}

std::string FtpSource::SavedPlace() const
{
    return fConversation->Session().name;
}

std::string FtpSource::RecalledPlace() const
{
    return PlaceText::ServerPlace(SavedPlace(), RemoteFolder());
}

std::unique_ptr<PaneSource> FtpSource::Recall(const std::string &recalled) const
{
    const auto [session, remoteFolder] = PlaceText::ServerParts(recalled);
    if (session != SavedPlace() || remoteFolder.empty() || remoteFolder[0] != '/')
        return nullptr;
    return std::make_unique<FtpSource>(fConversation,
                                       fLocalFolder,
                                       FtpRequest::Of(FtpRequest::Step::Stay, remoteFolder));
}

FolderLister::Reader FtpSource::Reader(const RowStyle &) const
{
    // A server's folder is read only through the pane's conversation
    // (StartReading): a reader of its own would log in again each time.
    return [](FolderLister::Job &job) {
        job.openStatus = B_NOT_ALLOWED;
        job.readStatus = B_ENTRY_NOT_FOUND;
    };
}

std::shared_ptr<FolderLister::Job> FtpSource::StartReading(const RowStyle &style,
                                                           QObject *context,
                                                           FolderLister::Done done) const
{
    auto job = std::make_shared<FolderLister::Job>();
    // Once reached, the place lists again without repeating its step.
    FtpRequest request = fReached->done ? FtpRequest::Of(FtpRequest::Step::Stay, fReached->folder)
                                        : fStep;
    QPointer<QObject> guard(context);
    fConversation->Submit(
        std::move(request),
        [job, style](FtpResult &result) {
            FolderLister::Run([&result,
                               &style](FolderLister::Job &into) { MakeRows(result, style, into); },
                              style,
                              *job);
            result.listing.clear();
        },
        [job, guard, done = std::move(done), reached = fReached](FtpResult &result) {
            // After a lost connection the place is the folder listed last.
            if (result.connectCode == 0 || !result.folder.empty()) {
                reached->done = true;
                reached->folder = result.folder;
            }
            if (!job->cancel && guard)
                done(job);
        });
    return job;
}

void FtpSource::Listed(const FolderLister::Job &job)
{
    if (!job.problem.empty()) {
        platform::Alerts::Go({"Connect Failed", job.problem, {"OK"}, B_WARNING_ALERT});
        return;
    }
    // Only a typed path is entered by its whole path (a row, by its name).
    // The server stayed where it was when CWD failed: said once, not again
    // each time the folder is listed.
    const bool typed = fStep.step == FtpRequest::Step::Enter && fStep.name.starts_with('/');
    if (!typed || std::exchange(fReached->told, true) || fStep.name == fStep.base || !fReached->done
        || fReached->folder != fStep.base)
        return;
    platform::Alerts::Go(PathRefusal("The server did not enter \"" + fStep.name
                                     + "\": there is no such folder, or it may not be entered. "
                                       "The pane stays in "
                                     + fStep.base + "."));
}

void FtpSource::Follow(QObject *context,
                       std::function<void(const std::string &)> logLine,
                       std::function<void()> changed) const
{
    QObject::connect(fConversation.get(),
                     &FtpConversation::LogLine,
                     context,
                     [logLine = std::move(logLine)](const QString &line) {
                         logLine(line.toStdString());
                     });
    QObject::connect(fConversation.get(), &FtpConversation::Changed, context, std::move(changed));
}

std::string FtpSource::PathOf(const DirListItem &row) const
{
    return platform::JoinPath(RemoteFolder(), row.Name());
}

entry_ref FtpSource::RefOf(const DirListItem &row) const
{
    // Not a local entry: nothing on this machine may be taken for it.
    return entry_ref{0, 0, row.Name(), PathOf(row)};
}

std::unique_ptr<PaneSource> FtpSource::Next(FtpRequest step) const
{
    step.base = RemoteFolder();
    return std::make_unique<FtpSource>(fConversation, fLocalFolder, std::move(step));
}

std::unique_ptr<PaneSource> FtpSource::Parent(std::string *selectAfter) const
{
    const std::string &folder = RemoteFolder();
    if (folder.empty() || folder == "/")
        return nullptr;
    if (selectAfter != nullptr)
        platform::ParentPath(folder, selectAfter);
    return Next(FtpRequest::Of(FtpRequest::Step::Up));
}

Opening FtpSource::Open(const DirListItem &row) const
{
    Opening opening;
    if (row.IsFolder())
        opening.place = Next(FtpRequest::Of(FtpRequest::Step::Enter, {}, row.Name()));
    return opening;
}

std::string FtpSource::TypedRemotePath(const std::string &typed,
                                       const FtpSession &session,
                                       const std::string &folder,
                                       const std::string &scheme,
                                       std::optional<platform::Alert> *refusal)
{
    const QString text = QString::fromStdString(typed).trimmed().section('\n', 0, 0).trimmed();
    if (text.isEmpty())
        return {};
    // A stored session's name opens that session, as it does in any pane:
    // users switch servers so. A folder of that name here is "./name".
    for (const FtpSession::Kind kind : {FtpSession::Kind::Ftp, FtpSession::Kind::Sftp}) {
        const std::vector<std::string> sessions = FtpSession::List(kind);
        if (std::find(sessions.begin(), sessions.end(), text.toStdString()) != sessions.end())
            return {};
    }
    const QString prefix = QString::fromStdString(scheme) + "://";
    QString path = text;
    if (text.startsWith(prefix, Qt::CaseInsensitive)) {
        const QUrl url(text);
        if (url.host().toStdString() != session.host
            || unsigned(url.port(int(session.PortNumber()))) != session.PortNumber()) {
            *refusal = PathRefusal("\"" + url.host().toStdString()
                                   + "\" is another server than this pane's. Open its session "
                                     "with Ftp Connections.");
            return {};
        }
        path = url.path().isEmpty() ? "/" : url.path();
    } else if (text.startsWith('~') || text.startsWith('$') || text.contains("://")
               || text.startsWith("file:")) {
        const std::string kind = session.kind == FtpSession::Kind::Sftp ? "an SFTP" : "an FTP";
        *refusal = PathRefusal("This pane shows a folder on " + kind
                               + " server: only a path on the server can be gone to here. "
                                 "Disconnect the pane first to go to a folder of this computer.");
        return {};
    }
    if (!path.startsWith('/'))
        path = QString::fromStdString(folder) + '/' + path;
    return QDir::cleanPath(path).toStdString();
}

std::unique_ptr<PaneSource> FtpSource::TypedPath(const std::string &typed,
                                                 std::optional<platform::Alert> *refusal) const
{
    const std::string path = TypedRemotePath(typed,
                                             fConversation->Session(),
                                             RemoteFolder(),
                                             "ftp",
                                             refusal);
    if (path.empty())
        return nullptr;
    return Next(FtpRequest::Of(FtpRequest::Step::Enter, {}, path));
}

TransferPlace FtpSource::Place() const
{
    return {TransferPlace::Kind::FtpFolder, RemoteFolder(), fConversation->Session()};
}

std::unique_ptr<PaneSource> FtpSource::WithNewFolder(const std::string &name) const
{
    return Next(FtpRequest::Of(FtpRequest::Step::MakeDir, {}, name));
}

std::unique_ptr<PaneSource> FtpSource::WithoutRows(const std::vector<const DirListItem *> &rows) const
{
    FtpRequest step = FtpRequest::Of(FtpRequest::Step::Remove);
    for (const DirListItem *row : rows)
        step.entries.emplace_back(row->Name(), row->IsFolder());
    step.confirmNotEmpty = &ConfirmNotEmpty;
    return Next(std::move(step));
}

CopyOut FtpSource::CopyRequest() const
{
    return {kMsgFtpDownload, "Copy"};
}

std::optional<platform::Message> FtpSource::ViewRequest(const DirListItem &row) const
{
    platform::Message request = Request(kMsgFtpDownload, {&row});
    if (request.what == 0)
        return std::nullopt;
    request.what = kMsgViewFromServer;
    return request;
}

std::optional<platform::Alert> FtpSource::EditRefusal() const
{
    return platform::Alert{"Foo", "Sorry can't view a file on an FTP server.", {"OK"}};
}

platform::Message FtpSource::Request(uint32_t what,
                                     const std::vector<const DirListItem *> &rows) const
{
    return RowsRequest(what, fConversation->Session(), RemoteFolder(), rows);
}

platform::Message FtpSource::RowsRequest(uint32_t what,
                                         const FtpSession &session,
                                         const std::string &folder,
                                         const std::vector<const DirListItem *> &rows)
{
    platform::Message request(what);
    // The session's name, as an upload carries it: the transfer takes its
    // TLS choice and trusted certificate from there.
    request.AddString("Session", session.name);
    request.AddString("Host", session.host);
    request.AddString("User", session.user);
    request.AddString("Password", session.pass);
    request.AddString("FtpPath", folder);
    request.AddInt32("Port", int32_t(session.PortNumber()));
    std::string refused;
    bool any = false;
    for (const DirListItem *row : rows) {
        if (!IsPlainName(row->Name())) {
            refused += "\n\t" + row->Name();
            continue;
        }
        request.AddString(row->IsFolder() ? "FtpDir" : "FtpFile", row->Name());
        any = true;
    }
    if (!refused.empty())
        platform::Alerts::Go({"Download",
                              "These names cannot be used for files on this computer, so they "
                              "are not downloaded:"
                                  + refused,
                              {"OK"},
                              B_WARNING_ALERT});
    return any ? request : platform::Message(0);
}

} // namespace kestrin
