#pragma once

#include "platform/Alert.h"
#include "platform/Entry.h"
#include "platform/EntryRef.h"
#include "platform/Errors.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace kestrin {

class CopyControl;
class OverwritePolicy;

// One file-system entry and the operations that act on it and, for a folder,
// on everything below it: measure, copy into a folder, move to the Trash,
// delete, and turn a status code into an alert. A link is always the link
// itself, never its target. One object per item and operation.
class KestrinEntry : public platform::Entry
{
public:
    explicit KestrinEntry(const entry_ref &ref);
    explicit KestrinEntry(const std::string &path);

    // Raised by CopySize for every entry it counts.
    int32_t EntryCount() const { return fEntryCount; }

    // A file's size; a folder's is the sum of the files below it, and each of
    // its children counts one entry. A link measures 0 and counts nothing.
    double CopySize();
    // Makes CopySize stop early (answering what it has counted so far) once
    // `stop` is set; for a measure whose window may go before it is done.
    void SetStopFlag(const std::atomic<bool> *stop) { fStop = stop; }

    // Copies the entry into `destFolder` under its own name (or `targetName`
    // when given): a file with its attributes, a folder with everything below
    // it (files, then links, then sub-folders; a sub-folder of the folder's
    // own name is left out, so a folder copied into itself stops at one
    // copy), a link as a new link to what it resolves to. Each keeps the
    // source's access and modification times. False when the item
    // is refused or fails; a folder fails only when its copy cannot be made.
    // Errors are reported through `control`. Both `control` and `overwrite`
    // may be null: without `control` errors are shown as alerts of their own,
    // without `overwrite` an existing target fails its file with B_FILE_EXISTS.
    bool CopyTo(const std::string &destFolder,
                CopyControl *control,
                OverwritePolicy *overwrite,
                const std::string &targetName = {});
    // After CopyTo: every file, link and folder below arrived, nothing was
    // skipped, refused, failed or stopped. Only then may the source go.
    bool CopiedCompletely() const { return fCopiedCompletely; }

    // Moves the entry into the Trash and records where it came from. False
    // when the Trash is on another device (nothing is moved then; the caller
    // copies and deletes), or the entry is gone, busy or unset; any other
    // failure counts as done and leaves the entry where it is.
    bool TrashIt();

    // Removes the entry and, for a folder, everything below it; whatever
    // cannot be removed stays, silently.
    void DeleteEntry();

    // Asks whether `targetPath` is to be replaced by this entry (at
    // `sourcePath`); the answer is left in `overwrite`.
    void Overwrite(const std::string &sourcePath,
                   const std::string &targetPath,
                   OverwritePolicy &overwrite);

    // The "Sorry Charley" alert for a failed call's status.
    static platform::Alert ErrorAlert(status_t status);
    // Reports ErrorAlert(status) through `control`, or shows it itself
    // without one; returns when it is dismissed.
    static void ShowError(status_t status, CopyControl *control = nullptr);

private:
    struct CopyWalk;
    struct FolderRead
    {};

    // A child found by reading a folder whose own path is resolved: its path
    // needs no look-up of links, which on a big tree costs more than the
    // walk itself.
    KestrinEntry(FolderRead, const std::string &childPath);

    // A folder copied into, named as the kernel names it.
    struct Destination
    {
        std::string path;
        dev_t device = 0;
        ino_t node = 0;
    };

    static bool Resolve(const std::string &folder, Destination *into);
    bool CopyInto(const std::string &destFolder, const std::string &targetName, CopyWalk &walk);
    bool CopyInto(const Destination &into, const std::string &targetName, CopyWalk &walk);
    bool CopyFolder(const std::string &ownPath,
                    const std::string &leaf,
                    const std::string &targetPath,
                    CopyWalk &walk);
    void CopyLink(const std::string &ownPath,
                  const std::string &destPath,
                  const std::string &name,
                  const struct stat &info,
                  CopyWalk &walk);

    int32_t fEntryCount = 0;
    const std::atomic<bool> *fStop = nullptr;
    bool fCopiedCompletely = false;
};

} // namespace kestrin
