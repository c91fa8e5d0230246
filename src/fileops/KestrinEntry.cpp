#include "fileops/KestrinEntry.h"

#include "app/AppUtils.h"
#include "fileops/CopyControl.h"
#include "fileops/FileCopier.h"
#include "fileops/OverwritePolicy.h"
#include "fileops/Trash.h"
#include "platform/Directory.h"
#include "platform/PathNames.h"
#include "platform/Volume.h"

#include <set>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace kestrin {

namespace {

// The paths of a folder's children, read before anything below is visited, so
// a deep tree holds one open folder at a time rather than one per level.
// False when the folder could not be read to its end.
bool ChildPaths(const std::string &folderPath, std::vector<std::string> *paths)
{
    platform::Directory folder(folderPath);
    if (folder.InitCheck() != B_OK)
        return false;
    platform::Entry child;
    status_t status;
    while ((status = folder.GetNextEntry(&child)) == B_OK) {
        std::string path;
        if (child.GetPath(&path) == B_OK)
            paths->push_back(std::move(path));
    }
    return status == B_ENTRY_NOT_FOUND;
}

} // namespace

struct KestrinEntry::CopyWalk
{
    CopyControl *control = nullptr;
    OverwritePolicy *overwrite = nullptr;
    // The folders this copy made or merged into: met again as a source (the
    // destination lies inside the folder being copied), they are not copied
    // into themselves.
    std::set<std::pair<dev_t, ino_t>> targets;
    bool complete = true;

    bool StopRequested() const { return control && control->StopRequested(); }
};

KestrinEntry::KestrinEntry(const entry_ref &ref)
    : platform::Entry(ref, false)
{}

KestrinEntry::KestrinEntry(const std::string &path)
    : platform::Entry(path, false)
{}

KestrinEntry::KestrinEntry(FolderRead, const std::string &childPath)
{
    SetResolved(platform::ParentPath(childPath), platform::LeafName(childPath));
}

double KestrinEntry::CopySize()
{
    struct stat info;
    if (GetStat(&info) != B_OK)
        return 0;
    if (S_ISREG(info.st_mode)) {
        fEntryCount++;
        return double(info.st_size);
    }
    if (!S_ISDIR(info.st_mode))
        return 0;

    std::string path;
    GetPath(&path);
    std::vector<std::string> children;
    ChildPaths(path, &children);
    int64_t sum = 0;
    for (const std::string &childPath : children) {
        if (fStop != nullptr && fStop->load())
            break;
        fEntryCount++;
        KestrinEntry child(FolderRead{}, childPath);
        child.SetStopFlag(fStop);
        sum += int64_t(child.CopySize());
    }
    return double(sum);
}

bool KestrinEntry::CopyTo(const std::string &destFolder,
                          CopyControl *control,
                          OverwritePolicy *overwrite,
                          const std::string &targetName)
{
    CopyWalk walk;
    walk.control = control;
    walk.overwrite = overwrite;
    const bool handled = CopyInto(destFolder, targetName, walk);
    fCopiedCompletely = handled && walk.complete;
    return handled;
}

bool KestrinEntry::CopyInto(const std::string &destFolder,
                            const std::string &targetName,
                            CopyWalk &walk)
{
    Destination into;
    if (!Resolve(destFolder, &into)) {
        walk.complete = false;
        return false;
    }
    return CopyInto(into, targetName, walk);
}

bool KestrinEntry::Resolve(const std::string &folder, Destination *into)
{
    // The folder as the kernel names it, so that a detour through a link
    // cannot hide that the copy would land on the item itself. Once per
    // folder: the files below share it.
    platform::Entry entry;
    node_ref node;
    if (platform::Directory(folder).GetEntry(&entry) != B_OK || entry.GetPath(&into->path) != B_OK
        || platform::Entry(into->path, true).GetNodeRef(&node) != B_OK)
        return false;
    into->device = node.device;
    into->node = node.node;
    return true;
}

bool KestrinEntry::CopyInto(const Destination &into, const std::string &targetName, CopyWalk &walk)
{
    std::string ownPath, leaf;
    if (GetPath(&ownPath) != B_OK || GetName(&leaf) != B_OK) {
        walk.complete = false;
        return false;
    }
    const std::string name = targetName.empty() ? leaf : targetName;
    const std::string targetPath = platform::JoinPath(into.path, name);
    struct stat info;
    if (targetPath == ownPath || GetStat(&info) != B_OK) {
        walk.complete = false;
        return false;
    }

    if (S_ISREG(info.st_mode)) {
        const entry_ref target{into.device, into.node, name, targetPath};
        FileCopier copier(walk.control, walk.overwrite);
        const status_t status = copier.CopyFile(*this, target, true);
        if (status != B_OK || copier.Skipped())
            walk.complete = false;
        return status == B_OK;
    }

    if (S_ISDIR(info.st_mode)) {
        // Not checked: a folder of that name already there is merged into.
        platform::Directory(into.path).CreateDirectory(name);
        if (!CopyFolder(ownPath, leaf, targetPath, walk))
            return false;
        // Every entry made in a folder changes its modification time, so the
        // source's times go on once its contents are in: the deepest folder
        // first, as the walk comes back up. A stopped copy is no copy of it.
        if (!walk.StopRequested())
            KestrinEntry(FolderRead{}, targetPath).SetTimes(info.st_atim, info.st_mtim);
        return true;
    }

    if (S_ISLNK(info.st_mode)) {
        // A link that cannot be copied is missing from the copy; the rest goes on.
        CopyLink(ownPath, into.path, name, info, walk);
        return true;
    }

    CopyControl::ReportError(walk.control,
                             MsgBoxAlert("Error - Kestrin Entry is not a File, Dir, or Link"));
    walk.complete = false;
    return false;
}

void KestrinEntry::CopyLink(const std::string &ownPath,
                            const std::string &destPath,
                            const std::string &name,
                            const struct stat &info,
                            CopyWalk &walk)
{
    // The new link points where this one ends up, through every link on the
    // way; a target that is gone still has that path. Only a link that leads
    // nowhere (a loop) has none: that is the broken link users are told about.
    std::string linkTarget;
    if (platform::Entry(ownPath, true).GetPath(&linkTarget) != B_OK) {
        CopyControl::ReportError(walk.control,
                                 MsgBoxAlert("You appear to be trying to copy a link that is "
                                             "broken.  This is not supported in this version."));
        walk.complete = false;
        return;
    }
    // Anything else in the way (a name already taken, a folder that may not
    // be written) is told as what it is.
    const status_t status = platform::Directory(destPath).CreateSymLink(name, linkTarget);
    if (status != B_OK) {
        ShowError(status, walk.control);
        walk.complete = false;
        return;
    }
    // The link's own times, never its target's; a file system that keeps
    // none for links leaves the new link's.
    KestrinEntry(FolderRead{}, platform::JoinPath(destPath, name))
        .SetTimes(info.st_atim, info.st_mtim);
}

bool KestrinEntry::CopyFolder(const std::string &ownPath,
                              const std::string &leaf,
                              const std::string &targetPath,
                              CopyWalk &walk)
{
    // Whatever is in the way of the new folder (a file of that name, a folder
    // that cannot be entered) fails the copy as a whole.
    Destination into;
    if (!Resolve(targetPath, &into)) {
        walk.complete = false;
        return false;
    }
    walk.targets.insert({into.device, into.node});

    std::vector<std::string> children;
    if (!ChildPaths(ownPath, &children))
        walk.complete = false;

    std::vector<std::string> files, others, folders;
    for (std::string &childPath : children) {
        KestrinEntry child(FolderRead{}, childPath);
        struct stat info;
        std::string name;
        if (child.GetStat(&info) != B_OK || child.GetName(&name) != B_OK) {
            walk.complete = false; // gone since the folder was read
            continue;
        }
        if (S_ISDIR(info.st_mode)) {
            if (walk.targets.count({info.st_dev, info.st_ino}))
                continue;
            if (name == leaf) {
                walk.complete = false;
                continue;
            }
            folders.push_back(std::move(childPath));
        } else if (S_ISREG(info.st_mode)) {
            files.push_back(std::move(childPath));
        } else {
            others.push_back(std::move(childPath));
        }
    }

    // A child that fails is missing from the copy; the rest goes on.
    for (const std::vector<std::string> *list : {&files, &others, &folders}) {
        for (const std::string &childPath : *list) {
            if (walk.StopRequested()) {
                walk.complete = false;
                return true;
            }
            KestrinEntry(FolderRead{}, childPath).CopyInto(into, {}, walk);
        }
    }
    return true;
}

bool KestrinEntry::TrashIt()
{
    Trash trash;
    if (trash.InitCheck() != B_OK)
        return false;
    node_ref own;
    if (GetNodeRef(&own) != B_OK)
        return false;
    const std::optional<dev_t> trashDevice = platform::DeviceForPath(trash.FilesPath());
    if (!trashDevice || *trashDevice != own.device)
        return false;

    std::string leaf, originalPath;
    GetName(&leaf);
    GetPath(&originalPath);
    for (int attempt = 0;; attempt++) {
        const std::string name = Trash::CandidateName(leaf, attempt);
        // The info file first: desktop tools take an item in files/ without
        // one for debris, and the name is claimed before anything moves.
        status_t status = trash.WriteInfo(name, originalPath);
        if (status == B_FILE_EXISTS)
            continue;
        if (status == B_OK) {
            status = MoveTo(trash.FilesPath(), name.c_str(), false);
            if (status == B_OK)
                return true;
            trash.RemoveInfo(name);
            if (status == B_FILE_EXISTS)
                continue;
        }
        // One device number, two mounts (a bind mount): rename cannot cross
        // them, a copy can.
        return status != B_NO_INIT && status != B_BUSY && status != B_ENTRY_NOT_FOUND
               && status != B_CROSS_DEVICE_LINK;
    }
}

void KestrinEntry::DeleteEntry()
{
    struct stat info;
    if (GetStat(&info) == B_OK && S_ISDIR(info.st_mode)) {
        std::string path;
        GetPath(&path);
        std::vector<std::string> children;
        ChildPaths(path, &children);
        for (const std::string &childPath : children) {
            KestrinEntry child(FolderRead{}, childPath);
            if (child.IsDirectory())
                child.DeleteEntry();
            else
                child.Remove();
        }
    }
    Remove();
}

void KestrinEntry::Overwrite(const std::string &sourcePath,
                             const std::string &targetPath,
                             OverwritePolicy &overwrite)
{
    const platform::Entry target(targetPath);
    off_t targetSize = 0;
    time_t targetTime = 0;
    time_t sourceTime = 0;
    target.GetSize(&targetSize);
    target.GetModificationTime(&targetTime);
    GetModificationTime(&sourceTime);
    overwrite.Ask({sourcePath,
                   targetPath,
                   OverwritePolicy::Describe(double(targetSize), targetTime),
                   OverwritePolicy::Describe(CopySize(), sourceTime)});
}

void KestrinEntry::ShowError(status_t status, CopyControl *control)
{
    CopyControl::ReportError(control, ErrorAlert(status));
}

platform::Alert KestrinEntry::ErrorAlert(status_t status)
{
    // B_FILE_EXISTS has had two texts; the later one, with its own button,
    // is what users know ("This file already exists, overwrite not
    // implemented yet." is never shown).
    const char *text = "Unknown Error.";
    const char *button = "OK";
    switch (status) {
    case B_BAD_VALUE:
        text = "Initialization for output incorrect.";
        break;
    case B_BUSY:
        text = "The node is busy.";
        break;
    case B_ENTRY_NOT_FOUND:
        text = "Couldn't create file.";
        break;
    case B_FILE_ERROR:
        text = "A file system error prevented the operation.";
        break;
    case B_FILE_EXISTS:
        text = "Strange but this file exists.";
        button = "Even Scotty Can't Fix it";
        break;
    case B_LINK_LIMIT:
        text = "A cyclic loop has been detected in the file system.";
        break;
    case B_NAME_TOO_LONG:
        text = "The path specified is too long.";
        break;
    case B_NO_MEMORY:
        text = "Out of Memory.";
        break;
    case B_NO_MORE_FDS:
        text = "Too many files are open.";
        break;
    case B_IS_A_DIRECTORY:
        text = "Can't replace a directory with a file.";
        break;
    case B_NOT_A_DIRECTORY:
        text = "A portion of the path is not a directory.";
        break;
    case B_NOT_ALLOWED:
        text = "This volume is read only.";
        break;
    case B_PERMISSION_DENIED:
        text = "Permission denied.";
        break;
    default:
        break;
    }
    return {"Sorry Charley", text, {button}, B_STOP_ALERT, B_WIDTH_FROM_LABEL};
}

} // namespace kestrin
