#pragma once

#include "platform/Errors.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace platform {

// One entry of a folder as a listing needs it: the entry's own stat data
// (links not followed) and, for a link, what it leads to.
struct ScannedEntry
{
    std::string name;
    struct stat info = {};
    // lstat failed (the entry went while it was read): `info` is zero and
    // `statStatus` says why.
    status_t statStatus = B_OK;
    // For a link: the target's stat data was read (false for a link to
    // nowhere or a loop), and then the target's own mode.
    bool targetKnown = false;
    mode_t targetMode = 0;
};

// One entry read on its own, as a scan reads it; `name` becomes the
// entry's name (a leaf, or the whole path where a listing shows paths).
ScannedEntry ScanEntry(const std::string &path, const std::string &name);

// Reads a whole folder for a listing, off the GUI thread. Made for huge
// folders: names first (so the count is known before the slow part), then
// the stat data of each entry with fstatat relative to the open folder.
class FolderScan
{
public:
    // Opens the folder (links followed). The result is B_OK or the reason:
    // B_ENTRY_NOT_FOUND, B_NOT_A_DIRECTORY, B_PERMISSION_DENIED, B_LINK_LIMIT,
    // B_NAME_TOO_LONG ...
    explicit FolderScan(const std::string &path);
    ~FolderScan();

    FolderScan(const FolderScan &) = delete;
    FolderScan &operator=(const FolderScan &) = delete;

    status_t InitCheck() const { return fStatus; }
    // The folder's own stat data (valid after a successful open).
    const struct stat &FolderInfo() const { return fFolderInfo; }

    // Reads every name but "." and ".."; the count of names, or a negative
    // status when reading failed part way (the names read so far are kept).
    int32_t ReadNames();
    const std::vector<std::string> &Names() const { return fNames; }

    // Stats every name read, in order, into `entries` (which it replaces).
    // After each entry `done` (when given) is incremented; when `cancel`
    // (when given) is set the scan stops at the next entry and answers
    // B_CANCELED. B_ENTRY_NOT_FOUND at the normal end, the way a folder
    // iteration ends on BeOS.
    status_t StatEntries(std::vector<ScannedEntry> *entries,
                         const std::atomic<bool> *cancel = nullptr,
                         std::atomic<int32_t> *done = nullptr);

    // Whether the folder has at least one sub-folder (a link counts when it
    // leads to a folder only if `followLinks`); reads no further than the
    // first one, using the entry type where the file system gives it.
    static bool HasSubfolder(const std::string &path, bool followLinks = false);

private:
    // Below this many names a second thread costs more than it saves.
    static constexpr size_t kNamesForASecondThread = 2000;
    static constexpr size_t kMostThreads = 4;

    int fFD = -1;
    status_t fStatus = B_NO_INIT;
    struct stat fFolderInfo = {};
    std::vector<std::string> fNames;
};

} // namespace platform
