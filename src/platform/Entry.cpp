#include "platform/Entry.h"

#include "platform/PathNames.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

// The kernel gives up on a chain of links after 40 hops; anything it can open,
// an entry can resolve.
constexpr int kMaxLinkHops = 40;

status_t RealPath(const std::string &path, std::string *resolved)
{
    std::unique_ptr<char, decltype(&free)> buffer(realpath(path.c_str(), nullptr), &free);
    if (!buffer)
        return LastError();
    *resolved = buffer.get();
    return B_OK;
}

// An absolute path without "//", "." or a trailing slash, whose folder part is
// resolved through its links and must exist; the leaf is kept as written.
status_t Normalize(const std::string &input, std::string *normalized)
{
    if (input.empty())
        return B_BAD_VALUE;

    std::string absolute = input;
    if (input[0] != '/') {
        std::unique_ptr<char, decltype(&free)> cwd(getcwd(nullptr, 0), &free);
        if (!cwd)
            return LastError();
        absolute = JoinPath(cwd.get(), input);
    }

    std::vector<std::string> parts;
    for (size_t start = 0; start < absolute.size();) {
        size_t end = absolute.find('/', start);
        if (end == std::string::npos)
            end = absolute.size();
        std::string part = absolute.substr(start, end - start);
        if (!part.empty() && part != ".")
            parts.push_back(std::move(part));
        start = end + 1;
    }
    if (parts.empty()) {
        *normalized = "/";
        return B_OK;
    }
    // ".." must be taken after the links before it are followed, which is
    // what realpath does; the leaf it yields is a folder, never a link.
    if (parts.back() == "..")
        return RealPath(absolute, normalized);
    if (parts.back().size() > NAME_MAX)
        return B_NAME_TOO_LONG;

    std::string folder;
    for (size_t i = 0; i + 1 < parts.size(); i++)
        folder += "/" + parts[i];
    if (folder.empty()) {
        folder = "/";
    } else {
        if (status_t status = RealPath(folder, &folder); status != B_OK)
            return status;
        // realpath is content with a file as the last component.
        struct stat info;
        if (stat(folder.c_str(), &info) != 0)
            return LastError();
        if (!S_ISDIR(info.st_mode))
            return B_NOT_A_DIRECTORY;
    }
    *normalized = JoinPath(folder, parts.back());
    return B_OK;
}

// Reserves `to` with an empty node of the source's kind and renames over it:
// rename replaces an empty folder with a folder and a file with anything but a
// folder, so what is replaced is only ever our own placeholder.
status_t RenameThroughPlaceholder(const std::string &from, const std::string &to)
{
    struct stat info;
    if (lstat(from.c_str(), &info) != 0)
        return LastError();
    const bool folder = S_ISDIR(info.st_mode);
    if (folder) {
        if (mkdir(to.c_str(), 0700) != 0)
            return LastError();
    } else {
        const int fd = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0)
            return LastError();
        close(fd);
    }
    if (rename(from.c_str(), to.c_str()) == 0)
        return B_OK;
    const status_t status = LastError();
    if (folder)
        rmdir(to.c_str());
    else
        unlink(to.c_str());
    return status;
}

status_t RenameNoReplace(const std::string &from, const std::string &to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return B_OK;
    // EINVAL is also the answer for a folder moved into itself; the fallback
    // meets that case again and reports it the same way.
    if (errno != EINVAL && errno != ENOSYS)
        return LastError();
    return RenameThroughPlaceholder(from, to);
}

} // namespace

Entry::Entry(const std::string &path, bool traverse)
{
    SetTo(path, traverse);
}

Entry::Entry(const entry_ref &ref, bool traverse)
{
    SetTo(ref, traverse);
}

status_t Entry::SetTo(const std::string &path, bool traverse)
{
    Unset();
    std::string normalized;
    if (status_t status = Normalize(path, &normalized); status != B_OK)
        return fStatus = status;
    fPath = std::move(normalized);
    fStatus = B_OK;
    if (traverse) {
        if (status_t status = FollowLinks(); status != B_OK) {
            fPath.clear();
            return fStatus = status;
        }
    }
    return B_OK;
}

status_t Entry::SetTo(const entry_ref &ref, bool traverse)
{
    // Linux cannot open a node by (device, inode); the path carries the ref.
    if (ref.path.empty()) {
        Unset();
        return fStatus = B_BAD_VALUE;
    }
    return SetTo(ref.path, traverse);
}

void Entry::Unset()
{
    fPath.clear();
    fStatus = B_NO_INIT;
}

void Entry::SetResolved(const std::string &folder, const std::string &name)
{
    fPath = JoinPath(folder, name);
    fStatus = B_OK;
}

status_t Entry::FollowLinks()
{
    for (int hops = 0;; hops++) {
        struct stat info;
        if (lstat(fPath.c_str(), &info) != 0)
            return errno == ENOENT ? B_OK : LastError(); // a broken link ends abstract
        if (!S_ISLNK(info.st_mode))
            return B_OK;
        if (hops == kMaxLinkHops)
            return B_LINK_LIMIT;

        // st_size of a link is its target's length, except on the few file
        // systems that report 0; PATH_MAX covers those.
        std::string target(size_t(info.st_size > 0 ? info.st_size : PATH_MAX) + 1, '\0');
        const ssize_t length = readlink(fPath.c_str(), target.data(), target.size());
        if (length < 0)
            return LastError();
        target.resize(size_t(length));
        if (target.empty())
            return B_ENTRY_NOT_FOUND;

        std::string next = target[0] == '/' ? target : JoinPath(ParentPath(), target);
        if (status_t status = Normalize(next, &fPath); status != B_OK)
            return status;
    }
}

std::string Entry::ParentPath() const
{
    const size_t slash = fPath.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : fPath.substr(0, slash);
}

bool Entry::Exists() const
{
    struct stat info;
    return GetStat(&info) == B_OK;
}

status_t Entry::GetStat(struct stat *info) const
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (!info)
        return B_BAD_VALUE;
    return lstat(fPath.c_str(), info) == 0 ? B_OK : LastError();
}

bool Entry::IsFile() const
{
    struct stat info;
    return GetStat(&info) == B_OK && S_ISREG(info.st_mode);
}

bool Entry::IsDirectory() const
{
    struct stat info;
    return GetStat(&info) == B_OK && S_ISDIR(info.st_mode);
}

bool Entry::IsSymLink() const
{
    struct stat info;
    return GetStat(&info) == B_OK && S_ISLNK(info.st_mode);
}

status_t Entry::GetPath(std::string *path) const
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (!path)
        return B_BAD_VALUE;
    *path = fPath;
    return B_OK;
}

status_t Entry::GetName(std::string *name) const
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (!name)
        return B_BAD_VALUE;
    *name = fPath == "/" ? fPath : fPath.substr(fPath.rfind('/') + 1);
    return B_OK;
}

status_t Entry::GetParent(Entry *parent) const
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (!parent)
        return B_BAD_VALUE;
    if (fPath == "/")
        return B_ENTRY_NOT_FOUND;
    parent->fPath = ParentPath();
    parent->fStatus = B_OK;
    return B_OK;
}

std::vector<std::string> Entry::PathsOfRefs(const Message &message, bool traverse)
{
    std::vector<std::string> paths;
    type_code type = 0;
    int32_t count = 0;
    if (message.GetInfo("refs", &type, &count) != B_OK || type != B_REF_TYPE)
        return paths;
    for (int32_t i = count - 1; i >= 0; i--) {
        entry_ref ref;
        std::string path;
        if (message.FindRef("refs", i, &ref) != B_OK)
            continue;
        const Entry entry(ref, traverse);
        if (entry.InitCheck() == B_OK && entry.GetPath(&path) == B_OK)
            paths.push_back(path);
    }
    return paths;
}

status_t Entry::GetRef(entry_ref *ref) const
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (!ref)
        return B_BAD_VALUE;
    struct stat folder;
    if (stat(ParentPath().c_str(), &folder) != 0)
        return LastError();
    ref->device = folder.st_dev;
    ref->directory = folder.st_ino;
    GetName(&ref->name);
    ref->path = fPath;
    return B_OK;
}

status_t Entry::GetNodeRef(node_ref *ref) const
{
    if (!ref)
        return B_BAD_VALUE;
    struct stat info;
    if (status_t status = GetStat(&info); status != B_OK)
        return status;
    ref->device = info.st_dev;
    ref->node = info.st_ino;
    return B_OK;
}

status_t Entry::GetSize(off_t *size) const
{
    if (!size)
        return B_BAD_VALUE;
    struct stat info;
    if (status_t status = GetStat(&info); status != B_OK)
        return status;
    *size = info.st_size;
    return B_OK;
}

status_t Entry::GetModificationTime(time_t *time) const
{
    if (!time)
        return B_BAD_VALUE;
    struct stat info;
    if (status_t status = GetStat(&info); status != B_OK)
        return status;
    *time = info.st_mtime;
    return B_OK;
}

status_t Entry::GetCreationTime(time_t *time) const
{
    if (!time)
        return B_BAD_VALUE;
    if (fStatus != B_OK)
        return fStatus;
    struct statx info;
    if (statx(AT_FDCWD, fPath.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME | STATX_BASIC_STATS, &info)
        != 0)
        return LastError();
    if (info.stx_mask & STATX_BTIME)
        *time = time_t(info.stx_btime.tv_sec);
    else
        *time = time_t(std::min(info.stx_mtime.tv_sec, info.stx_ctime.tv_sec));
    return B_OK;
}

status_t Entry::SetTimes(const timespec &accessed, const timespec &modified)
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    const timespec times[2] = {accessed, modified};
    if (utimensat(AT_FDCWD, fPath.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        return LastError();
    return B_OK;
}

status_t Entry::SetModificationTime(const timespec &modified)
{
    return SetTimes({0, UTIME_OMIT}, modified);
}

status_t Entry::MoveTo(const std::string &folder, const char *newName, bool clobber)
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (fPath == "/")
        return B_BAD_VALUE;

    std::string name;
    if (newName)
        name = newName;
    else
        GetName(&name);
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
        return B_BAD_VALUE;
    if (name.size() > NAME_MAX)
        return B_NAME_TOO_LONG;

    std::string targetFolder = ParentPath();
    if (!folder.empty()) {
        Entry folderEntry(folder, true);
        if (folderEntry.InitCheck() != B_OK)
            return folderEntry.InitCheck();
        if (!folderEntry.IsDirectory())
            return folderEntry.Exists() ? B_NOT_A_DIRECTORY : B_ENTRY_NOT_FOUND;
        folderEntry.GetPath(&targetFolder);
    }

    const std::string target = JoinPath(targetFolder, name);
    if (target == fPath)
        return Exists() ? B_OK : B_ENTRY_NOT_FOUND;

    status_t status;
    if (clobber)
        status = rename(fPath.c_str(), target.c_str()) == 0 ? B_OK : LastError();
    else
        status = RenameNoReplace(fPath, target);
    if (status == B_OK)
        fPath = target;
    return status;
}

status_t Entry::Remove()
{
    struct stat info;
    if (status_t status = GetStat(&info); status != B_OK)
        return status;
    const int result = S_ISDIR(info.st_mode) ? rmdir(fPath.c_str()) : unlink(fPath.c_str());
    return result == 0 ? B_OK : LastError();
}

} // namespace platform
