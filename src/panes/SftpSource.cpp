#include "panes/SftpSource.h"

#include "app/EntryTexts.h"
#include "fileops/FileOpsMessages.h"
#include "ftp/FtpListing.h"
#include "panes/DirListItem.h"
#include "panes/PaneMessages.h"
#include "panes/PlaceText.h"
#include "platform/Alerts.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"
#include "sftp/SftpConversation.h"
#include "sftp/SftpQuestions.h"

#include <utility>

namespace kestrin {

namespace {

char TypeLetter(platform::SftpEntry::Kind kind)
{
    switch (kind) {
    case platform::SftpEntry::Kind::Folder:
        return 'd';
    case platform::SftpEntry::Kind::Link:
        return 'l';
    default:
        return '-';
    }
}

// The rows of a server's answer, made on the conversation's worker.
void AddRows(const SftpResult &result, const RowStyle &style, FolderLister::Job &job)
{
    if (!result.connectError.empty())
        job.problem = result.connectError;
    if (!result.listError.empty() || (!result.connectError.empty() && result.folder.empty()))
        return;
    job.total = int32_t(result.entries.size());
    FolderLister::Groups groups;
    groups.ReserveFiles(result.entries.size());
    if (result.folder != "/")
        groups.Add(job,
                   std::make_unique<DirListItem>(platform::ScannedEntry(),
                                                 style.colors,
                                                 true,
                                                 style.dateFormat));
    for (const platform::SftpEntry &entry : result.entries) {
        const bool folder = entry.kind == platform::SftpEntry::Kind::Folder;
        auto row = std::make_unique<DirListItem>(
            entry.name,
            folder ? std::string() : std::to_string(entry.size),
            EntryTexts::DateText(entry.modified, style.dateFormat),
            TypeLetter(entry.kind) + EntryTexts::PermissionText(entry.mode),
            style.colors);
        row->SetModificationTime(entry.modified);
        groups.Add(job, std::move(row));
    }
    groups.MoveInto(job);
    job.done = job.total.load();
}

// The rows, after which the entries are no longer needed.
void MakeRows(SftpResult &result, const RowStyle &style, FolderLister::Job &job)
{
    AddRows(result, style, job);
    result.entries.clear();
}

std::unique_ptr<PaneSource> Connected(const std::string &sessionFile,
                                      const std::string &localFolder,
                                      SftpRequest step)
{
    const FtpSession session = FtpSession::Read(sessionFile);
    return std::make_unique<SftpSource>(
        std::make_shared<SftpConversation>(session, SftpQuestions::ThroughAlerts(session)),
        localFolder,
        std::move(step));
}

SftpRequest StepOf(SftpRequest::Step step, std::string name = {})
{
    SftpRequest request;
    request.step = step;
    request.name = std::move(name);
    return request;
}

platform::Alert EditingRefused()
{
    // A copy edited here would never go back to the server.
    return {"SFTP",
            "Sorry, a file on an SFTP server cannot be edited yet: copy it to this computer "
            "first (F5).",
            {"OK"},
            B_INFO_ALERT};
}

} // namespace

SftpSource::SftpSource(std::shared_ptr<SftpConversation> conversation,
                       const std::string &localFolder,
                       SftpRequest step)
    : ServerSource(conversation, localFolder, step.base)
    , fConversation(std::move(conversation))
    , fStep(std::move(step))
{}

std::unique_ptr<PaneSource> SftpSource::Connect(const std::string &sessionFile,
                                                const std::string &localFolder)
{
    if (!FtpSession::IsSessionFile(sessionFile, FtpSession::Kind::Sftp))
        return nullptr;
    return Connected(sessionFile, localFolder, {});
}

std::unique_ptr<PaneSource> SftpSource::FromSaved(const std::string &saved,
                                                  const std::string &localFolder)
{
    const auto [session, remoteFolder] = PlaceText::ServerParts(saved);
    const std::string sessionFile = FtpSession::FileOfSavedPlace(session);
    if (!FtpSession::IsSessionFile(sessionFile, FtpSession::Kind::Sftp))
        return nullptr;
    if (remoteFolder.empty())
        return Connected(sessionFile, localFolder, {});
    // Logged in, the conversation goes straight to the folder kept.
    SftpRequest stay = StepOf(SftpRequest::Step::Stay);
    stay.base = remoteFolder;
    return Connected(sessionFile, localFolder, std::move(stay));
}

std::unique_ptr<PaneSource> SftpSource::StayAt(const std::string &folder) const
{
    SftpRequest stay = StepOf(SftpRequest::Step::Stay);
    stay.base = folder;
    return std::make_unique<SftpSource>(fConversation, Folder(), std::move(stay));
}

std::shared_ptr<FolderLister::Job> SftpSource::StartReading(const RowStyle &style,
                                                            QObject *context,
                                                            FolderLister::Done done) const
{
    SftpRequest request = fStep;
    if (Found()->done) {
        request = StepOf(SftpRequest::Step::Stay);
        request.base = Found()->folder;
    }
    return Read(*fConversation, std::move(request), style, context, std::move(done), &MakeRows);
}

void SftpSource::Listed(const FolderLister::Job &job)
{
    ToldProblem(job);
}

std::unique_ptr<PaneSource> SftpSource::Next(SftpRequest step) const
{
    step.base = RemoteFolder();
    return std::make_unique<SftpSource>(fConversation, Folder(), std::move(step));
}

std::unique_ptr<PaneSource> SftpSource::Up() const
{
    return Next(StepOf(SftpRequest::Step::Up));
}

Opening SftpSource::Open(const DirListItem &row) const
{
    Opening opening;
    if ((row.IsFolder() || row.IsLink()) && IsPlainName(row.Name()))
        opening.place = Next(StepOf(SftpRequest::Step::Enter, row.Name()));
    return opening;
}

std::unique_ptr<PaneSource> SftpSource::TypedPath(const std::string &typed,
                                                  std::optional<platform::Alert> *refusal) const
{
    const std::string path = TypedRemotePath(typed, Session(), RemoteFolder(), "sftp", refusal);
    if (path.empty())
        return nullptr;
    // Entered by its whole path: the client joins it to nothing.
    SftpRequest enter = StepOf(SftpRequest::Step::Enter, path);
    enter.base = RemoteFolder();
    return std::make_unique<SftpSource>(fConversation, Folder(), std::move(enter));
}

std::unique_ptr<PaneSource> SftpSource::WithNewFolder(const std::string &name) const
{
    return Next(StepOf(SftpRequest::Step::MakeDir, name));
}

std::unique_ptr<PaneSource> SftpSource::WithoutRows(
    const std::vector<const DirListItem *> &rows) const
{
    SftpRequest step = StepOf(SftpRequest::Step::Remove);
    for (const DirListItem *row : rows) {
        if (IsPlainName(row->Name()))
            step.entries.emplace_back(row->Name(), row->IsFolder());
    }
    return Next(std::move(step));
}

std::unique_ptr<PaneSource> SftpSource::WithRenamed(const DirListItem &row,
                                                    const std::string &name) const
{
    if (!IsPlainName(row.Name()))
        return nullptr;
    SftpRequest step = StepOf(SftpRequest::Step::Rename, row.Name());
    step.newName = name;
    return Next(std::move(step));
}

std::unique_ptr<PaneSource> SftpSource::WithMode(const std::vector<const DirListItem *> &rows,
                                                 mode_t mode) const
{
    SftpRequest step = StepOf(SftpRequest::Step::SetMode);
    step.mode = mode;
    for (const DirListItem *row : rows) {
        if (IsPlainName(row->Name()))
            step.entries.emplace_back(row->Name(), row->IsFolder());
    }
    return Next(std::move(step));
}

std::optional<platform::Alert> SftpSource::InfoOf(const DirListItem &row) const
{
    if (row.IsParent())
        return std::nullopt;
    const char *kind = row.IsLink() ? "link" : row.IsFolder() ? "folder" : "file";
    std::string text = PathOf(row) + "\nKind: " + kind;
    if (!row.IsFolder())
        text += "\nSize: " + std::to_string(row.Size()) + " bytes";
    text += "\nModified: " + EntryTexts::DateText(row.ModificationTime(), "%Y-%m-%d %H:%M:%S")
            + "\nPermissions: " + row.PermissionText();
    return platform::Alert{"Get Info", text, {"OK"}, B_INFO_ALERT};
}

CopyOut SftpSource::CopyRequest() const
{
    return {kMsgSftpDownload, "Copy"};
}

std::optional<platform::Alert> SftpSource::EditRefusal() const
{
    return EditingRefused();
}

} // namespace kestrin
