#include "platform/Directory.h"

#include "platform/Entry.h"
#include "platform/File.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

bool IsDotOrDotDot(const char *name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

} // namespace

Directory::Directory(const std::string &path)
{
    SetTo(path);
}

Directory::~Directory()
{
    Unset();
}

Directory::Directory(Directory &&other) noexcept
    : fDir(other.fDir)
    , fPath(std::move(other.fPath))
    , fStatus(other.fStatus)
{
    other.fDir = nullptr;
    other.fPath.clear();
    other.fStatus = B_NO_INIT;
}

Directory &Directory::operator=(Directory &&other) noexcept
{
    if (this != &other) {
        Unset();
        fDir = other.fDir;
        fPath = std::move(other.fPath);
        fStatus = other.fStatus;
        other.fDir = nullptr;
        other.fPath.clear();
        other.fStatus = B_NO_INIT;
    }
    return *this;
}

status_t Directory::CreatePrivate(const std::string &pattern, std::string *path)
{
    std::string name = pattern;
    if (mkdtemp(name.data()) == nullptr)
        return LastError();
    *path = name;
    return B_OK;
}

status_t Directory::SetTo(const std::string &path)
{
    Unset();
    if (path.empty())
        return fStatus = B_BAD_VALUE;

    int fd;
    do {
        fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return fStatus = LastError();

    // The path entries are built from: the folder's own, with its links
    // resolved, so every entry handed out is normalised already.
    std::unique_ptr<char, decltype(&free)> resolved(realpath(path.c_str(), nullptr), &free);
    if (!resolved) {
        const status_t status = LastError();
        close(fd);
        return fStatus = status;
    }
    fDir = fdopendir(fd);
    if (!fDir) {
        const status_t status = LastError();
        close(fd);
        return fStatus = status;
    }
    fPath = resolved.get();
    return fStatus = B_OK;
}

status_t Directory::SetTo(const Entry &entry)
{
    std::string path;
    if (status_t status = entry.GetPath(&path); status != B_OK) {
        Unset();
        return fStatus = status;
    }
    return SetTo(path);
}

void Directory::Unset()
{
    if (fDir)
        closedir(fDir);
    fDir = nullptr;
    fPath.clear();
    fStatus = B_NO_INIT;
}

status_t Directory::GetNextEntry(Entry *entry, bool traverse)
{
    if (!fDir)
        return B_NO_INIT;
    if (!entry)
        return B_BAD_VALUE;
    for (;;) {
        errno = 0;
        const dirent *item = readdir(fDir);
        if (!item)
            return errno == 0 ? B_ENTRY_NOT_FOUND : LastError();
        if (IsDotOrDotDot(item->d_name))
            continue;
        entry->SetResolved(fPath, item->d_name);
        if (traverse) {
            const std::string path = entry->fPath;
            return entry->SetTo(path, true);
        }
        return B_OK;
    }
}

status_t Directory::Rewind()
{
    if (!fDir)
        return B_NO_INIT;
    rewinddir(fDir);
    return B_OK;
}

int32_t Directory::CountEntries() const
{
    if (!fDir)
        return B_NO_INIT;
    // A second stream on the same folder, so the caller's position stays.
    const int fd = openat(dirfd(fDir), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return LastError();
    DIR *stream = fdopendir(fd);
    if (!stream) {
        const status_t status = LastError();
        close(fd);
        return status;
    }
    int32_t count = 0;
    for (;;) {
        errno = 0;
        const dirent *item = readdir(stream);
        if (!item)
            break;
        if (!IsDotOrDotDot(item->d_name))
            count++;
    }
    const status_t status = errno == 0 ? B_OK : LastError();
    closedir(stream);
    return status == B_OK ? count : status;
}

std::string Directory::Resolve(const std::string &path) const
{
    if (!path.empty() && path[0] == '/')
        return path;
    return fPath == "/" ? "/" + path : fPath + "/" + path;
}

status_t Directory::FindEntry(const std::string &path, Entry *entry, bool traverse) const
{
    if (!fDir)
        return B_NO_INIT;
    if (!entry || path.empty())
        return B_BAD_VALUE;
    Entry found(Resolve(path), traverse);
    if (found.InitCheck() != B_OK)
        return found.InitCheck();
    if (!found.Exists())
        return B_ENTRY_NOT_FOUND;
    *entry = found;
    return B_OK;
}

bool Directory::Contains(const std::string &path) const
{
    if (!fDir || path.empty())
        return false;
    if (path[0] == '/') {
        const std::string prefix = fPath == "/" ? fPath : fPath + "/";
        Entry entry(path);
        std::string normalized;
        return entry.GetPath(&normalized) == B_OK && normalized.size() > prefix.size()
               && normalized.compare(0, prefix.size(), prefix) == 0 && entry.Exists();
    }
    struct stat info;
    return fstatat(dirfd(fDir), path.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

status_t Directory::CreateDirectory(const std::string &path, Directory *created) const
{
    if (!fDir)
        return B_NO_INIT;
    if (path.empty())
        return B_BAD_VALUE;
    if (mkdirat(dirfd(fDir), path.c_str(), 0777) != 0)
        return LastError();
    return created ? created->SetTo(Resolve(path)) : B_OK;
}

status_t Directory::CreateFile(const std::string &path, File *file, bool failIfExists) const
{
    if (!fDir)
        return B_NO_INIT;
    if (path.empty())
        return B_BAD_VALUE;
    const uint32_t mode = B_READ_WRITE | B_CREATE_FILE
                          | (failIfExists ? B_FAIL_IF_EXISTS : B_ERASE_FILE);
    File local;
    File &target = file ? *file : local;
    return target.SetTo(Resolve(path), mode);
}

status_t Directory::CreateSymLink(const std::string &path, const std::string &linkTarget) const
{
    if (!fDir)
        return B_NO_INIT;
    if (path.empty() || linkTarget.empty())
        return B_BAD_VALUE;
    return symlinkat(linkTarget.c_str(), dirfd(fDir), path.c_str()) == 0 ? B_OK : LastError();
}

status_t Directory::GetEntry(Entry *entry) const
{
    if (!fDir)
        return B_NO_INIT;
    if (!entry)
        return B_BAD_VALUE;
    return entry->SetTo(fPath);
}

} // namespace platform
