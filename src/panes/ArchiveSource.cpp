#include "panes/ArchiveSource.h"

#include "fileops/ArchiveContents.h"
#include "fileops/FileOpsMessages.h"
#include "panes/DirListItem.h"
#include "panes/PaneMessages.h"
#include "panes/PlaceText.h"
#include "platform/Alerts.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"

namespace kestrin {

namespace {

// A member as a row: its stat data as the archive keeps it. Members that are
// neither folders, files nor links (devices, pipes) show as files; a link is
// a file row, since it cannot be entered here.
std::unique_ptr<DirListItem> RowFor(const ArchiveContents::Item &item, const RowStyle &style)
{
    platform::ScannedEntry entry;
    entry.name = item.name;
    entry.info = item.info;
    entry.info.st_dev = 0;
    entry.info.st_ino = 0;
    const mode_t type = item.info.st_mode & S_IFMT;
    if (type == S_IFLNK) {
        entry.targetKnown = true;
        entry.targetMode = S_IFREG;
    } else if (type != S_IFDIR && type != S_IFREG) {
        entry.info.st_mode = S_IFREG | (item.info.st_mode & 07777);
    }
    return std::make_unique<DirListItem>(entry, style.colors, false, style.dateFormat);
}

void ListArchive(const std::string &archive,
                 const std::string &subPath,
                 const RowStyle &style,
                 FolderLister::Job &job)
{
    job.total = 100;
    ArchiveContents::Result result = ArchiveContents::List(archive, subPath, &job.cancel, &job.done);
    job.openStatus = result.openStatus;
    job.readStatus = result.readStatus;
    job.problem = std::move(result.problem);
    if (result.readStatus == B_CANCELED)
        return;
    // The source tells the user itself what went wrong with an archive
    // (Listed): the statuses of folders would say it wrongly.
    if (result.openStatus != B_OK) {
        job.readStatus = B_ENTRY_NOT_FOUND;
        return;
    }
    job.done = 100;
    FolderLister::Groups groups;
    groups.Add(job,
               std::make_unique<DirListItem>(platform::ScannedEntry(),
                                             style.colors,
                                             true,
                                             style.dateFormat));
    for (const ArchiveContents::Item &item : result.items)
        groups.Add(job, RowFor(item, style));
    groups.MoveInto(job);
    job.readStatus = B_ENTRY_NOT_FOUND;
}

// Whether a row's name can stand for a folder inside the archive.
bool IsPlainName(const std::string &name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

} // namespace

ArchiveSource::ArchiveSource(std::string archive,
                             std::string folder,
                             Outside outside,
                             std::string subPath)
    : fArchive(std::move(archive))
    , fFolder(folder.empty() ? "/" : std::move(folder))
    , fOutside(std::move(outside))
    , fSubPath(std::move(subPath))
{}

int32_t ArchiveSource::Mode() const
{
    return kModeArchive;
}

std::string ArchiveSource::HeaderText() const
{
    return fSubPath.empty() ? fArchive : fArchive + "/" + fSubPath;
}

std::string ArchiveSource::RecalledPlace() const
{
    return PlaceText::ArchivePlace(fArchive, fSubPath);
}

FolderLister::Reader ArchiveSource::Reader(const RowStyle &style) const
{
    return [archive = fArchive, subPath = fSubPath, style](FolderLister::Job &job) {
        ListArchive(archive, subPath, style, job);
    };
}

void ArchiveSource::Listed(const FolderLister::Job &job)
{
    if (job.problem.empty() && job.openStatus == B_OK)
        return;
    const std::string text
        = job.openStatus != B_OK
              ? "Kestrin cannot read \"" + fArchive + "\" as an archive."
              : "\"" + fArchive + "\" is damaged: only the part before the damage is listed.";
    platform::Alerts::Go({"Archive",
                          job.problem.empty() ? text : text + "\n\n" + job.problem,
                          {"OK"},
                          B_WARNING_ALERT});
}

std::unique_ptr<PaneSource> ArchiveSource::Fallback(std::string *selectAfter) const
{
    // Whatever folder of the archive was asked for, an archive that cannot
    // be read is left for the place it was opened from, on its row.
    if (selectAfter != nullptr)
        *selectAfter = platform::LeafName(fArchive);
    return fOutside();
}

std::string ArchiveSource::PathOf(const DirListItem &row) const
{
    return fArchive + "/" + fSubPath + row.Name();
}

std::unique_ptr<PaneSource> ArchiveSource::Parent(std::string *selectAfter) const
{
    if (fSubPath.empty()) {
        if (selectAfter != nullptr)
            *selectAfter = platform::LeafName(fArchive);
        return fOutside();
    }
    const std::string inside = fSubPath.substr(0, fSubPath.size() - 1);
    const size_t slash = inside.rfind('/');
    if (selectAfter != nullptr)
        *selectAfter = slash == std::string::npos ? inside : inside.substr(slash + 1);
    return std::make_unique<ArchiveSource>(fArchive,
                                           fFolder,
                                           fOutside,
                                           slash == std::string::npos
                                               ? ""
                                               : inside.substr(0, slash + 1));
}

Opening ArchiveSource::Open(const DirListItem &row) const
{
    Opening opening;
    if (row.IsFolder() && IsPlainName(row.Name()))
        opening.place = std::make_unique<ArchiveSource>(fArchive,
                                                        fFolder,
                                                        fOutside,
                                                        fSubPath + row.Name() + "/");
    return opening;
}

TransferPlace ArchiveSource::Place() const
{
    return {TransferPlace::Kind::Archive, fFolder, {}};
}

CopyOut ArchiveSource::CopyRequest() const
{
    return {kMsgUnpackRequest, "UnPack"};
}

platform::Message ArchiveSource::Request(uint32_t what,
                                         const std::vector<const DirListItem *> &rows) const
{
    platform::Message request(what);
    request.AddString("Archive", fArchive);
    request.AddString("CopyFrom", fSubPath);
    for (const DirListItem *row : rows)
        request.AddString(row->IsFolder() ? "ZipDir" : "ZipFile", row->Name());
    request.AddString("From", fFolder);
    return request;
}

} // namespace kestrin
