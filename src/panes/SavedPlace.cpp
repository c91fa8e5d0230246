#include "panes/SavedPlace.h"

#include "panes/ArchiveSource.h"
#include "panes/FolderSource.h"
#include "panes/FtpSource.h"
#include "panes/SftpSource.h"
#include "platform/PathNames.h"

#include <string_view>

namespace kestrin {

namespace {

constexpr std::string_view kArchive = "archive:";
constexpr char kApart = '\t';

bool IsArchivePlace(const std::string &text)
{
    return text.starts_with(kArchive) && text.size() > kArchive.size()
           && text[kArchive.size()] == '/';
}

// The archive and the folder inside it.
std::pair<std::string, std::string> ArchiveParts(const std::string &text)
{
    const std::string rest = text.substr(kArchive.size());
    const size_t apart = rest.find(kApart);
    if (apart == std::string::npos)
        return {rest, {}};
    return {rest.substr(0, apart), rest.substr(apart + 1)};
}

std::unique_ptr<PaneSource> ArchiveFolder(const std::string &text)
{
    const auto [archive, inside] = ArchiveParts(text);
    // Up a level from its top leads to the archive's own folder.
    const std::string folder = platform::ParentPath(archive);
    return std::make_unique<ArchiveSource>(
        archive, folder, [folder] { return std::make_unique<FolderSource>(folder); }, inside);
}

} // namespace

std::unique_ptr<PaneSource> SavedPlace::Read(const std::string &saved, const std::string &standing)
{
    if (IsArchivePlace(saved))
        return ArchiveFolder(saved);
    // A server's folder is kept as its session's name.
    for (const auto fromSaved : {&FtpSource::FromSaved, &SftpSource::FromSaved}) {
        if (std::unique_ptr<PaneSource> server = fromSaved(saved, standing))
            return server;
    }
    return std::make_unique<FolderSource>(saved);
}

std::unique_ptr<PaneSource> SavedPlace::Recall(const std::string &recalled, const PaneSource &shown)
{
    if (std::unique_ptr<PaneSource> near = shown.Recall(recalled))
        return near;
    return Read(recalled, shown.Folder());
}

std::unique_ptr<PaneSource> SavedPlace::Session(const std::string &sessionFile,
                                               const std::string &standing)
{
    if (std::unique_ptr<PaneSource> sftp = SftpSource::Connect(sessionFile, standing))
        return sftp;
    return FtpSource::Connect(sessionFile, standing);
}

std::string SavedPlace::ArchivePlace(const std::string &archive, const std::string &inside)
{
    return std::string(kArchive) + archive + kApart + inside;
}

std::string SavedPlace::ServerPlace(const std::string &session, const std::string &remoteFolder)
{
    return remoteFolder.empty() ? session : session + kApart + remoteFolder;
}

std::pair<std::string, std::string> SavedPlace::ServerParts(const std::string &recalled)
{
    const size_t apart = recalled.find(kApart);
    if (apart == std::string::npos)
        return {recalled, {}};
    return {recalled.substr(0, apart), recalled.substr(apart + 1)};
}

std::string SavedPlace::Title(const std::string &recalled)
{
    if (IsArchivePlace(recalled)) {
        const auto [archive, inside] = ArchiveParts(recalled);
        return inside.empty() ? archive : archive + "/" + inside;
    }
    if (recalled.empty() || recalled[0] == '/')
        return recalled;
    const auto [session, folder] = ServerParts(recalled);
    return folder.empty() ? session : session + ": " + folder;
}

} // namespace kestrin
