#include "panes/ServerSource.h"

#include "ftp/FtpListing.h"
#include "ftp/ServerConversation.h"
#include "panes/DirListItem.h"
#include "panes/PaneMessages.h"
#include "panes/PlaceText.h"
#include "platform/Alerts.h"
#include "platform/PathNames.h"

#include <QDir>
#include <QUrl>
#include <algorithm>

namespace kestrin {

ServerSource::ServerSource(std::shared_ptr<ServerConversation> conversation,
                           const std::string &localFolder,
                           std::string base)
    : fConversation(std::move(conversation))
    , fLocalFolder(LocalFolderOf(fConversation->Session(), localFolder))
    , fBase(std::move(base))
    , fReached(std::make_shared<Reached>())
{}

std::string ServerSource::LocalFolderOf(const FtpSession &session, const std::string &standing)
{
    if (!session.localDir.empty() && platform::IsFolder(session.localDir))
        return session.localDir;
    return standing.empty() ? "/" : standing;
}

platform::Alert ServerSource::PathRefusal(const std::string &text)
{
    return {"Go to Path", text, {"OK"}, B_WARNING_ALERT};
}

int32_t ServerSource::Mode() const
{
    return kModeFtp;
}

const FtpSession &ServerSource::Session() const
{
    return fConversation->Session();
}

const std::string &ServerSource::RemoteFolder() const
{
    return fReached->done ? fReached->folder : fBase;
}

std::string ServerSource::HeaderText() const
{
    if (!fConversation->Status().empty())
        return fConversation->Status();
    return fConversation->Scheme() + ": " + RemoteFolder();
}

std::string ServerSource::SavedPlace() const
{
    return Session().SavedPlace();
}

std::string ServerSource::RecalledPlace() const
{
    return PlaceText::ServerPlace(SavedPlace(), RemoteFolder());
}

std::unique_ptr<PaneSource> ServerSource::Recall(const std::string &recalled) const
{
    const auto [session, remoteFolder] = PlaceText::ServerParts(recalled);
    if (session != SavedPlace() || remoteFolder.empty() || remoteFolder[0] != '/')
        return nullptr;
    return StayAt(remoteFolder);
}

FolderLister::Reader ServerSource::Reader(const RowStyle &) const
{
    // A server's folder is read only through the pane's conversation
    // (StartReading): a reader of its own would log in again each time.
    return [](FolderLister::Job &job) {
        job.openStatus = B_NOT_ALLOWED;
        job.readStatus = B_ENTRY_NOT_FOUND;
    };
}

bool ServerSource::ToldProblem(const FolderLister::Job &job)
{
    if (job.problem.empty())
        return false;
    platform::Alerts::Go({"Connect Failed", job.problem, {"OK"}, B_WARNING_ALERT});
    return true;
}

void ServerSource::Follow(QObject *context,
                          std::function<void(const std::string &)> logLine,
                          std::function<void()> changed) const
{
    QObject::connect(fConversation.get(),
                     &ServerConversation::LogLine,
                     context,
                     [logLine = std::move(logLine)](const QString &line) {
                         logLine(line.toStdString());
                     });
    QObject::connect(fConversation.get(), &ServerConversation::Changed, context, std::move(changed));
}

std::string ServerSource::PathOf(const DirListItem &row) const
{
    return platform::JoinPath(RemoteFolder(), row.Name());
}

entry_ref ServerSource::RefOf(const DirListItem &row) const
{
    // Not a local entry: nothing on this machine may be taken for it.
    return entry_ref{0, 0, row.Name(), PathOf(row)};
}

std::unique_ptr<PaneSource> ServerSource::Parent(std::string *selectAfter) const
{
    const std::string &folder = RemoteFolder();
    if (folder.empty() || folder == "/")
        return nullptr;
    if (selectAfter != nullptr)
        platform::ParentPath(folder, selectAfter);
    return Up();
}

TransferPlace ServerSource::Place() const
{
    return {PlaceKind(), RemoteFolder(), Session()};
}

std::optional<platform::Message> ServerSource::ViewRequest(const DirListItem &row) const
{
    const uint32_t download = CopyRequest().what;
    platform::Message request = Request(download, {&row});
    if (request.what == 0)
        return std::nullopt;
    request.what = kMsgViewFromServer;
    // The kind of download that brings the file.
    request.AddInt32(kViewDownload, int32_t(download));
    return request;
}

platform::Message ServerSource::Request(uint32_t what,
                                        const std::vector<const DirListItem *> &rows) const
{
    return RowsRequest(what, Session(), RemoteFolder(), rows);
}

std::string ServerSource::TypedRemotePath(const std::string &typed,
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

platform::Message ServerSource::RowsRequest(uint32_t what,
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
