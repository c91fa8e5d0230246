#include "panes/SavedPlace.h"

#include "panes/ArchiveSource.h"
#include "panes/FolderSource.h"
#include "panes/FtpSource.h"
#include "panes/PlaceText.h"
#include "panes/SftpSource.h"
#include "platform/PathNames.h"

namespace kestrin {

namespace {

std::unique_ptr<PaneSource> ArchiveFolder(const std::string &text)
{
    const auto [archive, inside] = PlaceText::ArchiveParts(text);
    // Up a level from its top leads to the archive's own folder.
    const std::string folder = platform::ParentPath(archive);
    return std::make_unique<ArchiveSource>(
        archive, folder, [folder] { return std::make_unique<FolderSource>(folder); }, inside);
}

} // namespace

std::unique_ptr<PaneSource> SavedPlace::Read(const std::string &saved, const std::string &standing)
{
    if (PlaceText::IsArchivePlace(saved))
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

} // namespace kestrin
