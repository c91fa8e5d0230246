#include "panes/FolderSource.h"

#include "fileops/FileType.h"
#include "panes/ArchiveSource.h"
#include "panes/DirListItem.h"
#include "panes/PaneMessages.h"
#include "platform/FolderScan.h"
#include "platform/Launcher.h"
#include "platform/PathNames.h"

namespace kestrin {

namespace {

void ListFolder(const std::string &folder, const RowStyle &style, FolderLister::Job &job)
{
    platform::FolderScan scan(folder);
    job.openStatus = scan.InitCheck();
    if (job.openStatus != B_OK) {
        job.readStatus = job.openStatus;
        return;
    }
    job.folderInfo = scan.FolderInfo();
    const int32_t count = scan.ReadNames();
    job.total = count < 0 ? int32_t(scan.Names().size()) : count;
    std::vector<platform::ScannedEntry> entries;
    status_t status = scan.StatEntries(&entries, &job.cancel, &job.done);
    if (count < 0)
        status = count;
    job.readStatus = status;
    if (status == B_CANCELED)
        return;

    FolderLister::Groups groups;
    groups.ReserveFiles(entries.size());
    if (folder != "/")
        groups.Add(job,
                   std::make_unique<DirListItem>(platform::ScannedEntry(),
                                                 style.colors,
                                                 true,
                                                 style.dateFormat));
    for (const platform::ScannedEntry &entry : entries)
        groups.Add(job, std::make_unique<DirListItem>(entry, style.colors, false, style.dateFormat));
    groups.MoveInto(job);
}

} // namespace

FolderSource::FolderSource(std::string folder)
    : fFolder(folder.empty() ? "/" : std::move(folder))
{}

int32_t FolderSource::Mode() const
{
    return kModeFolder;
}

FolderLister::Reader FolderSource::Reader(const RowStyle &style) const
{
    return [folder = fFolder, style](FolderLister::Job &job) { ListFolder(folder, style, job); };
}

void FolderSource::Listed(const FolderLister::Job &job)
{
    if (job.openStatus == B_OK)
        fInfo = job.folderInfo;
}

std::string FolderSource::PathOf(const DirListItem &row) const
{
    return platform::JoinPath(fFolder, row.Name());
}

entry_ref FolderSource::RefOf(const DirListItem &row) const
{
    if (fInfo.st_ino == 0)
        return PaneSource::RefOf(row);
    return entry_ref{fInfo.st_dev, fInfo.st_ino, row.Name(), PathOf(row)};
}

std::unique_ptr<PaneSource> FolderSource::Parent(std::string *selectAfter) const
{
    if (fFolder == "/")
        return nullptr;
    return std::make_unique<FolderSource>(platform::ParentPath(fFolder, selectAfter));
}

Opening FolderSource::Open(const DirListItem &row) const
{
    return OpenEntry(PathOf(row), fFolder);
}

Opening FolderSource::OpenEntry(const std::string &path, const std::string &standing)
{
    Opening opening;
    struct stat info;
    if (platform::StatPath(path, &info) != B_OK)
        return opening;
    if (S_ISDIR(info.st_mode)) {
        opening.place = std::make_unique<FolderSource>(path);
        return opening;
    }
    if (FileType::IsArchive(FileType::Of(path))) {
        opening.place = Archive(path, standing);
        return opening;
    }
    platform::Launcher::OpenWithPreferredApplication(path);
    return opening;
}

std::unique_ptr<PaneSource> FolderSource::Archive(const std::string &archive,
                                                  const std::string &standing)
{
    return std::make_unique<ArchiveSource>(archive, standing, [standing] {
        return std::make_unique<FolderSource>(standing);
    });
}

} // namespace kestrin
