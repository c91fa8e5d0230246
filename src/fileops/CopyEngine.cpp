#include "fileops/CopyEngine.h"

#include "fileops/ArchiveExtractor.h"
#include "fileops/ArchivePacker.h"
#include "fileops/CopyControl.h"
#include "fileops/FileOpsMessages.h"
#include "fileops/FtpTransfer.h"
#include "fileops/KestrinEntry.h"
#include "fileops/OverwritePolicy.h"
#include "fileops/SftpTransfer.h"
#include "fileops/Trash.h"
#include "platform/Directory.h"
#include "platform/PathNames.h"

#include <utility>

namespace kestrin {

namespace {

int32_t CountRefs(const platform::Message &request)
{
    type_code type = 0;
    int32_t count = 0;
    return request.GetInfo("refs", &type, &count) == B_OK && type == B_REF_TYPE ? count : 0;
}

// Hands each item of "refs" to `act`, in order, until the user stops or `act`
// answers false.
template<typename Act>
void ForEachItem(const platform::Message &request, CopyControl &control, Act act)
{
    const int32_t count = CountRefs(request);
    for (int32_t i = 0; i < count && !control.StopRequested(); i++) {
        entry_ref ref;
        if (request.FindRef("refs", i, &ref) != B_OK)
            continue;
        KestrinEntry item(ref);
        if (!act(item))
            break;
    }
}

} // namespace

CopyEngine::CopyEngine(platform::Message request, std::string destination, CopyControl &control)
    : fRequest(std::move(request))
    , fDestination(std::move(destination))
    , fControl(control)
{}

void CopyEngine::Run()
{
    switch (fRequest.what) {
    case kMsgCopyRequest:
        if (fRequest.HasField("Session"))
            PerformFtp();
        else
            PerformLocal();
        break;
    case kMsgDeleteRequest:
        PerformDelete();
        break;
    case kMsgFtpDownload:
        PerformFtp();
        break;
    case kMsgSftpDownload:
    case kMsgSftpUpload:
        SftpTransfer(fRequest, fDestination, fControl).Run();
        break;
    case kMsgPackRequest:
        ArchivePacker(fRequest, fDestination, fControl).Run();
        break;
    case kMsgUnpackRequest:
        ArchiveExtractor(fRequest, fDestination, fControl).Run();
        break;
    default:
        break;
    }
}

bool CopyEngine::StartBatch(const char *verb)
{
    const int32_t count = CountRefs(fRequest);
    if (count == 0)
        return false;
    // The overall bar has always counted in 32 bits: past 2 GiB the total
    // wraps, and the bar shows what it always showed.
    uint32_t total = 0;
    for (int32_t i = 0; i < count; i++) {
        entry_ref ref;
        if (fRequest.FindRef("refs", i, &ref) == B_OK)
            total += uint32_t(int64_t(KestrinEntry(ref).CopySize()));
    }
    const auto shownTotal = int32_t(total);
    fControl.BatchStarted(shownTotal,
                          std::string(verb) + " " + std::to_string(count) + " files or directories",
                          std::to_string(shownTotal / 1024) + " K");
    return true;
}

void CopyEngine::PerformLocal()
{
    // Says "Copying" for moves and links too; the text comes first.
    if (!StartBatch("Copying"))
        return;
    std::string type = "Copy";
    fRequest.FindString("TypeOfCopy", &type);

    OverwritePolicy overwrite(fControl);
    ForEachItem(fRequest, fControl, [&](KestrinEntry &item) {
        if (type == "Move") {
            if (!MoveItem(item, overwrite))
                return false;
        } else if (type == "Link") {
            LinkItem(item);
        } else {
            item.CopyTo(fDestination, &fControl, &overwrite);
        }
        return !overwrite.Cancelled();
    });
}

void CopyEngine::LinkItem(KestrinEntry &item)
{
    std::string path, leaf;
    if (item.GetPath(&path) != B_OK || item.GetName(&leaf) != B_OK)
        return;
    platform::Directory folder(fDestination);
    status_t status = folder.InitCheck();
    if (status == B_OK)
        status = folder.CreateSymLink(platform::JoinPath(fDestination, leaf), path);
    // A name already taken is not replaced: the user hears of it, as of any
    // other link that could not be made.
    if (status != B_OK)
        KestrinEntry::ShowError(status, &fControl);
}

bool CopyEngine::MoveItem(KestrinEntry &item, OverwritePolicy &overwrite)
{
    std::string leaf;
    if (item.GetName(&leaf) != B_OK)
        return false;
    const platform::Entry target(platform::JoinPath(fDestination, leaf));
    node_ref source, folder;
    if (target.InitCheck() != B_OK || item.GetNodeRef(&source) != B_OK
        || platform::Entry(fDestination, true).GetNodeRef(&folder) != B_OK)
        return false;

    if (source.device == folder.device) {
        const status_t status = item.MoveTo(fDestination, nullptr, false);
        if (status == B_OK)
            return true;
        if (status == B_FILE_EXISTS) {
            if (overwrite.ReplaceOnMove(target, item))
                return item.MoveTo(fDestination, nullptr, true) == B_OK;
            return true;
        }
        // One device mounted twice (a bind mount) cannot be renamed across;
        // it is copied like another volume. Anything else ends the request.
        if (status != B_CROSS_DEVICE_LINK)
            return false;
    }

    // The source goes only when all of it arrived: not after a failure, a
    // stop, or the user's Skip. A folder's source goes only when empty, as
    // one plain remove takes nothing else.
    if (item.CopyTo(fDestination, &fControl, &overwrite) && item.CopiedCompletely())
        item.Remove();
    return true;
}

void CopyEngine::PerformDelete()
{
    if (!StartBatch("Deleting"))
        return;
    Trash trash;
    // A pane that shows the Trash deletes for good.
    const bool forGood = trash.IsTrashFolder(fDestination);

    ForEachItem(fRequest, fControl, [&](KestrinEntry &item) {
        if (forGood)
            DeleteForGood(item, trash);
        else if (!item.TrashIt())
            TrashByCopy(item, trash);
        return true;
    });
}

void CopyEngine::DeleteForGood(KestrinEntry &item, Trash &trash)
{
    std::string name;
    platform::Entry parent;
    std::string parentPath;
    const bool trashed = item.GetName(&name) == B_OK && item.GetParent(&parent) == B_OK
                         && parent.GetPath(&parentPath) == B_OK && parentPath == trash.FilesPath();
    item.DeleteEntry();
    // An item of the Trash takes its record along; a record without its item
    // would only hold its name.
    if (trashed && !item.Exists())
        trash.RemoveInfo(name);
}

void CopyEngine::TrashByCopy(KestrinEntry &item, Trash &trash)
{
    std::string leaf, originalPath, name;
    if (!item.Exists() || item.GetName(&leaf) != B_OK || item.GetPath(&originalPath) != B_OK)
        return;
    if (trash.ReserveName(leaf, originalPath, &name) != B_OK)
        return;
    // The reserved name is free, so there is nothing to ask about.
    if (item.CopyTo(trash.FilesPath(), &fControl, nullptr, name) && item.CopiedCompletely()) {
        item.DeleteEntry();
        return;
    }
    // Half a copy in the Trash keeps nothing safe: the item stays where it
    // was, and the Trash loses what was copied so far.
    KestrinEntry(platform::JoinPath(trash.FilesPath(), name)).DeleteEntry();
    trash.RemoveInfo(name);
}

void CopyEngine::PerformFtp()
{
    FtpTransfer(fRequest, fDestination, fControl).Run();
}

} // namespace kestrin
