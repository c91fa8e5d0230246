#include "panes/FtpSource.h"

#include "ftp/FtpConversation.h"
#include "ftp/FtpListing.h"
#include "ftp/FtpTls.h"
#include "panes/DirListItem.h"
#include "panes/PaneMessages.h"
#include "panes/PlaceText.h"
#include "platform/Alerts.h"
#include "platform/FolderScan.h"

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
void AddRows(const FtpResult &result, const RowStyle &style, FolderLister::Job &job)
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

// The rows, after which the listing's text is no longer needed.
void MakeRows(FtpResult &result, const RowStyle &style, FolderLister::Job &job)
{
    AddRows(result, style, job);
    result.listing.clear();
}

bool ConfirmNotEmpty(const std::string &)
{
    return platform::Alerts::Go({"Sir?",
                                 "The directory is not empty are you sure you want to delete it?",
                                 {"Cancel", "Delete"},
                                 B_STOP_ALERT})
           == 1;
}

} // namespace

FtpSource::FtpSource(std::shared_ptr<FtpConversation> conversation,
                     const std::string &localFolder,
                     FtpRequest step)
    : ServerSource(conversation, localFolder, step.base)
    , fConversation(std::move(conversation))
    , fStep(std::move(step))
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

std::string FtpSource::HeaderNote() const
{
    return fConversation->InClear() ? "not encrypted: the server refused TLS" : "";
}

std::unique_ptr<PaneSource> FtpSource::StayAt(const std::string &folder) const
{
    return std::make_unique<FtpSource>(fConversation,
                                       Folder(),
                                       FtpRequest::Of(FtpRequest::Step::Stay, folder));
}

std::shared_ptr<FolderLister::Job> FtpSource::StartReading(const RowStyle &style,
                                                           QObject *context,
                                                           FolderLister::Done done) const
{
    // Once reached, the place lists again without repeating its step.
    FtpRequest request = Found()->done ? FtpRequest::Of(FtpRequest::Step::Stay, Found()->folder)
                                       : fStep;
    return Read(*fConversation, std::move(request), style, context, std::move(done), &MakeRows);
}

void FtpSource::Listed(const FolderLister::Job &job)
{
    if (ToldProblem(job))
        return;
    // Only a typed path is entered by its whole path (a row, by its name).
    // The server stayed where it was when CWD failed: said once, not again
    // each time the folder is listed.
    const Reached &reached = *Found();
    const bool typed = fStep.step == FtpRequest::Step::Enter && fStep.name.starts_with('/');
    if (!typed || std::exchange(Found()->told, true) || fStep.name == fStep.base || !reached.done
        || reached.folder != fStep.base)
        return;
    platform::Alerts::Go(PathRefusal("The server did not enter \"" + fStep.name
                                     + "\": there is no such folder, or it may not be entered. "
                                       "The pane stays in "
                                     + fStep.base + "."));
}

std::unique_ptr<PaneSource> FtpSource::Next(FtpRequest step) const
{
    step.base = RemoteFolder();
    return std::make_unique<FtpSource>(fConversation, Folder(), std::move(step));
}

std::unique_ptr<PaneSource> FtpSource::Up() const
{
    return Next(FtpRequest::Of(FtpRequest::Step::Up));
}

Opening FtpSource::Open(const DirListItem &row) const
{
    Opening opening;
    if (row.IsFolder())
        opening.place = Next(FtpRequest::Of(FtpRequest::Step::Enter, {}, row.Name()));
    return opening;
}

std::unique_ptr<PaneSource> FtpSource::TypedPath(const std::string &typed,
                                                 std::optional<platform::Alert> *refusal) const
{
    const std::string path = TypedRemotePath(typed, Session(), RemoteFolder(), "ftp", refusal);
    if (path.empty())
        return nullptr;
    return Next(FtpRequest::Of(FtpRequest::Step::Enter, {}, path));
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

std::optional<platform::Alert> FtpSource::EditRefusal() const
{
    return platform::Alert{"Foo", "Sorry can't view a file on an FTP server.", {"OK"}};
}

} // namespace kestrin
