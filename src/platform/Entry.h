#pragma once

#include "platform/EntryRef.h"
#include "platform/Errors.h"
#include "platform/Message.h"

#include <ctime>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

namespace platform {

// A named entry in a folder (BEntry). The entry need not exist: an "abstract"
// entry names a leaf in an existing folder, which is what a copy or a rename
// aims at. The path is kept absolute and normalised: the folder part is
// resolved through its links, the leaf is left alone unless `traverse` asks
// for a link to be followed to its final target.
class Entry
{
public:
    Entry() = default;
    explicit Entry(const std::string &path, bool traverse = false);
    explicit Entry(const entry_ref &ref, bool traverse = false);

    // The paths of the entries of a message's "refs" that can be reached,
    // last first: the order in which refs are handled, so that the first
    // one is left shown.
    static std::vector<std::string> PathsOfRefs(const Message &message, bool traverse = false);

    status_t SetTo(const std::string &path, bool traverse = false);
    status_t SetTo(const entry_ref &ref, bool traverse = false);
    status_t InitCheck() const { return fStatus; }
    void Unset();

    bool Exists() const;
    // The entry itself, as lstat sees it: a link is described, not its target.
    status_t GetStat(struct stat *info) const;
    bool IsFile() const;
    bool IsDirectory() const;
    bool IsSymLink() const;

    status_t GetPath(std::string *path) const;
    status_t GetName(std::string *name) const;
    // B_ENTRY_NOT_FOUND for the root folder, which has no parent.
    status_t GetParent(Entry *parent) const;
    status_t GetRef(entry_ref *ref) const;
    status_t GetNodeRef(node_ref *ref) const;
    status_t GetSize(off_t *size) const;
    status_t GetModificationTime(time_t *time) const;
    // When the entry was made: its birth time where the file system keeps
    // one, else the earlier of its modification and status-change times,
    // the oldest moment known of it.
    status_t GetCreationTime(time_t *time) const;
    // Sets the entry's own access and modification times (a link's, never
    // its target's), to the nanosecond where the file system keeps them.
    status_t SetTimes(const timespec &accessed, const timespec &modified);
    // The modification time alone; the access time stays as it is.
    status_t SetModificationTime(const timespec &modified);

    // Renames the entry into `folder` (empty: where it is now) under `newName`
    // (nullptr: its current name). Never copies: another volume answers
    // B_CROSS_DEVICE_LINK. Without `clobber` an entry in the way is left
    // untouched and the answer is B_FILE_EXISTS. The entry follows the move.
    status_t MoveTo(const std::string &folder, const char *newName = nullptr, bool clobber = false);
    // Deletes a file, a link or an empty folder; the entry stays, abstract.
    status_t Remove();

    bool operator==(const Entry &other) const
    {
        return fStatus == other.fStatus && fPath == other.fPath;
    }

protected:
    // For Directory and the walks of entries below a folder, which hand out
    // entries of a folder resolved already: no name checks, no look-ups.
    void SetResolved(const std::string &folder, const std::string &name);

private:
    friend class Directory;

    status_t FollowLinks();
    std::string ParentPath() const;

    std::string fPath;
    status_t fStatus = B_NO_INIT;
};

} // namespace platform
