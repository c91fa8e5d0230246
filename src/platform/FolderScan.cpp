#include "platform/FolderScan.h"

#include "platform/DirEntries.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace platform {

namespace {

int OpenFolder(const std::string &path)
{
    int fd;
    do {
        fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

bool IsFolderAt(int fd, const char *name, bool followLinks)
{
    struct stat info;
    if (fstatat(fd, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    if (S_ISDIR(info.st_mode))
        return true;
    return followLinks && S_ISLNK(info.st_mode) && fstatat(fd, name, &info, 0) == 0
           && S_ISDIR(info.st_mode);
}

// The entry itself and, for a link, what it leads to; relative to an open
// folder, or to the working folder with AT_FDCWD and a whole path.
void StatAt(int folder, const std::string &name, ScannedEntry *entry)
{
    if (fstatat(folder, name.c_str(), &entry->info, AT_SYMLINK_NOFOLLOW) != 0) {
        entry->statStatus = LastError();
        entry->info = {};
        return;
    }
    entry->statStatus = B_OK;
    if (!S_ISLNK(entry->info.st_mode))
        return;
    struct stat target;
    if (fstatat(folder, name.c_str(), &target, 0) == 0) {
        entry->targetKnown = true;
        entry->targetMode = target.st_mode;
    }
}

} // namespace

ScannedEntry ScanEntry(const std::string &path, const std::string &name)
{
    ScannedEntry entry;
    entry.name = name;
    StatAt(AT_FDCWD, path, &entry);
    return entry;
}

FolderScan::FolderScan(const std::string &path)
{
    if (path.empty()) {
        fStatus = B_BAD_VALUE;
        return;
    }
    fFD = OpenFolder(path);
    if (fFD < 0) {
        fStatus = LastError();
        return;
    }
    if (fstat(fFD, &fFolderInfo) != 0) {
        fStatus = LastError();
        close(fFD);
        fFD = -1;
        return;
    }
    fStatus = B_OK;
}

FolderScan::~FolderScan()
{
    if (fFD >= 0)
        close(fFD);
}

int32_t FolderScan::ReadNames()
{
    fNames.clear();
    if (fStatus != B_OK)
        return fStatus;
    // A second call reads the folder afresh.
    if (lseek(fFD, 0, SEEK_SET) < 0)
        return LastError();
    const status_t status = ForEachDirEntry(fFD, [this](const char *name, unsigned char) {
        fNames.emplace_back(name);
        return true;
    });
    return status == B_OK ? int32_t(fNames.size()) : status;
}

status_t FolderScan::StatEntries(std::vector<ScannedEntry> *entries,
                                 const std::atomic<bool> *cancel,
                                 std::atomic<int32_t> *done)
{
    if (fStatus != B_OK)
        return fStatus;
    if (!entries)
        return B_BAD_VALUE;
    entries->clear();
    entries->resize(fNames.size());
    // Each stat waits on the kernel's lookup of one name, and the lookups of
    // two names do not wait on each other: in a big folder a second thread
    // halves the time, which is most of a listing's.
    const size_t threads = fNames.size() < kNamesForASecondThread
                               ? 1
                               : std::clamp<size_t>(std::thread::hardware_concurrency(), 1, kMostThreads);
    std::atomic<bool> canceled = false;
    auto statSlice = [&](size_t slice) {
        const size_t begin = fNames.size() * slice / threads;
        const size_t end = fNames.size() * (slice + 1) / threads;
        for (size_t i = begin; i < end; i++) {
            if (cancel && cancel->load(std::memory_order_relaxed)) {
                canceled = true;
                return;
            }
            ScannedEntry &entry = (*entries)[i];
            entry.name = fNames[i];
            StatAt(fFD, fNames[i], &entry);
            if (done)
                done->fetch_add(1, std::memory_order_relaxed);
        }
    };
    {
        std::vector<std::jthread> helpers;
        for (size_t slice = 1; slice < threads; slice++)
            helpers.emplace_back(statSlice, slice);
        statSlice(0);
    }
    if (canceled) {
        entries->clear();
        return B_CANCELED;
    }
    return B_ENTRY_NOT_FOUND;
}

bool FolderScan::HasSubfolder(const std::string &path, bool followLinks)
{
    const int fd = OpenFolder(path);
    if (fd < 0)
        return false;
    bool found = false;
    ForEachDirEntry(fd, [&](const char *name, unsigned char type) {
        switch (type) {
        case DT_DIR:
            found = true;
            break;
        case DT_UNKNOWN:
            // Some file systems (older XFS, some FUSE ones) leave the type out.
            found = IsFolderAt(fd, name, followLinks);
            break;
        case DT_LNK:
            found = followLinks && IsFolderAt(fd, name, true);
            break;
        default:
            break;
        }
        return !found;
    });
    close(fd);
    return found;
}

} // namespace platform
