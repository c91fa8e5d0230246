#include "platform/File.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace platform {

namespace {

int OpenFlags(uint32_t mode)
{
    int flags = O_CLOEXEC | O_NOCTTY;
    switch (mode & 0x3) {
    case B_WRITE_ONLY:
        flags |= O_WRONLY;
        break;
    case B_READ_WRITE:
        flags |= O_RDWR;
        break;
    default:
        flags |= O_RDONLY;
        break;
    }
    if (mode & B_CREATE_FILE)
        flags |= O_CREAT;
    if (mode & B_FAIL_IF_EXISTS)
        flags |= O_EXCL;
    if (mode & B_ERASE_FILE)
        flags |= O_TRUNC;
    if (mode & B_OPEN_AT_END)
        flags |= O_APPEND;
    return flags;
}

} // namespace

File::File(const std::string &path, uint32_t openMode, mode_t createPermissions)
{
    SetTo(path, openMode, createPermissions);
}

File::~File()
{
    Unset();
}

File::File(File &&other) noexcept
    : fFD(other.fFD)
    , fStatus(other.fStatus)
{
    other.fFD = -1;
    other.fStatus = B_NO_INIT;
}

File &File::operator=(File &&other) noexcept
{
    if (this != &other) {
        Unset();
        fFD = other.fFD;
        fStatus = other.fStatus;
        other.fFD = -1;
        other.fStatus = B_NO_INIT;
    }
    return *this;
}

status_t File::SetToTemporary(const std::string &pathTemplate, std::string *path)
{
    Unset();
    std::string name = pathTemplate;
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0)
        return fStatus = LastError();
    fFD = fd;
    *path = name;
    return fStatus = B_OK;
}

status_t File::ReplaceContents(const std::string &path, const std::string &bytes, mode_t permissions)
{
    File file;
    std::string temporary;
    status_t status = file.SetToTemporary(path + ".XXXXXX", &temporary);
    if (status != B_OK)
        return status;
    status = file.SetPermissions(permissions);
    if (status == B_OK) {
        const ssize_t written = file.Write(bytes.data(), bytes.size());
        if (written != ssize_t(bytes.size()))
            status = written < 0 ? status_t(written) : B_DEVICE_FULL;
    }
    // On disk before the rename makes it the file: a crash must not leave
    // an empty one in its place.
    if (status == B_OK && fsync(file.fFD) != 0)
        status = LastError();
    file.Unset();
    if (status == B_OK && rename(temporary.c_str(), path.c_str()) != 0)
        status = LastError();
    if (status != B_OK)
        unlink(temporary.c_str());
    return status;
}

status_t File::SetTo(const std::string &path, uint32_t openMode, mode_t createPermissions)
{
    Unset();
    if (path.empty())
        return fStatus = B_BAD_VALUE;

    // O_NONBLOCK keeps a FIFO without a peer from freezing the worker that
    // opens it; it is cleared again right after the open.
    int fd;
    do {
        fd = open(path.c_str(), OpenFlags(openMode) | O_NONBLOCK, createPermissions);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return fStatus = LastError();
    // A file this open made is a new regular file: nothing to look at. A
    // copy makes one for every file, and saves the call.
    if ((openMode & B_CREATE_FILE) && (openMode & B_FAIL_IF_EXISTS)) {
        fFD = fd;
        return fStatus = B_OK;
    }

    // Linux opens a folder read-only without complaint; a File never stands
    // for one.
    struct stat info;
    status_t status = B_OK;
    if (fstat(fd, &info) != 0)
        status = LastError();
    else if (S_ISDIR(info.st_mode))
        status = B_IS_A_DIRECTORY;
    if (status != B_OK) {
        close(fd);
        return fStatus = status;
    }
    // Regular files ignore O_NONBLOCK; only what may block needs it off.
    if (!S_ISREG(info.st_mode)) {
        const int flags = fcntl(fd, F_GETFL);
        if (flags != -1)
            fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    }

    fFD = fd;
    return fStatus = B_OK;
}

void File::Unset()
{
    if (fFD >= 0)
        close(fFD);
    fFD = -1;
    fStatus = B_NO_INIT;
}

ssize_t File::Read(void *buffer, size_t size)
{
    if (fFD < 0)
        return B_NO_INIT;
    ssize_t done;
    do {
        done = read(fFD, buffer, size);
    } while (done < 0 && errno == EINTR);
    return done < 0 ? LastError() : done;
}

namespace {

// Short writes and interruptions are retried until every byte is written or a
// real error comes; `writeSome(bytes, count, done)` is one write(2) or pwrite(2).
template<typename WriteSome>
ssize_t WriteFully(const void *buffer, size_t size, WriteSome writeSome)
{
    const char *bytes = static_cast<const char *>(buffer);
    size_t total = 0;
    while (total < size) {
        const ssize_t done = writeSome(bytes + total, size - total, total);
        if (done < 0) {
            if (errno == EINTR)
                continue;
            return LastError();
        }
        total += size_t(done);
    }
    return ssize_t(total);
}

} // namespace

ssize_t File::Write(const void *buffer, size_t size)
{
    if (fFD < 0)
        return B_NO_INIT;
    return WriteFully(buffer, size, [this](const char *bytes, size_t count, size_t) {
        return write(fFD, bytes, count);
    });
}

ssize_t File::ReadAt(off_t position, void *buffer, size_t size)
{
    if (fFD < 0)
        return B_NO_INIT;
    if (position < 0)
        return B_BAD_VALUE;
    ssize_t done;
    do {
        done = pread(fFD, buffer, size, position);
    } while (done < 0 && errno == EINTR);
    return done < 0 ? LastError() : done;
}

ssize_t File::WriteAt(off_t position, const void *buffer, size_t size)
{
    if (fFD < 0)
        return B_NO_INIT;
    if (position < 0)
        return B_BAD_VALUE;
    return WriteFully(buffer, size, [this, position](const char *bytes, size_t count, size_t done) {
        return pwrite(fFD, bytes, count, position + off_t(done));
    });
}

off_t File::Seek(off_t position, int whence)
{
    if (fFD < 0)
        return B_NO_INIT;
    const off_t result = lseek(fFD, position, whence);
    return result < 0 ? LastError() : result;
}

off_t File::Position() const
{
    if (fFD < 0)
        return B_NO_INIT;
    const off_t result = lseek(fFD, 0, SEEK_CUR);
    return result < 0 ? LastError() : result;
}

ssize_t File::CopyFrom(File &source, size_t size)
{
    if (fFD < 0 || source.fFD < 0)
        return B_NO_INIT;
    ssize_t done;
    do {
        done = copy_file_range(source.fFD, nullptr, fFD, nullptr, size, 0);
    } while (done < 0 && errno == EINTR);
    return done < 0 ? LastError() : done;
}

void File::AdviseSequential()
{
    if (fFD >= 0)
        posix_fadvise(fFD, 0, 0, POSIX_FADV_SEQUENTIAL);
}

status_t File::CloneFrom(const File &source)
{
    if (fFD < 0 || source.fFD < 0)
        return B_NO_INIT;
    if (ioctl(fFD, FICLONE, source.fFD) == 0)
        return B_OK;
    switch (errno) {
    case EOPNOTSUPP:
    case ENOTTY:
    case EXDEV:
    case EINVAL:
    case EBADF:
    case EPERM:
        return B_UNSUPPORTED;
    default:
        return LastError();
    }
}

status_t File::SetPermissions(mode_t mode)
{
    if (fFD < 0)
        return B_NO_INIT;
    return fchmod(fFD, mode) == 0 ? B_OK : LastError();
}

status_t File::SetTimes(const timespec &accessed, const timespec &modified)
{
    if (fFD < 0)
        return B_NO_INIT;
    const timespec times[2] = {accessed, modified};
    return futimens(fFD, times) == 0 ? B_OK : LastError();
}

status_t File::SetSize(off_t size)
{
    if (fFD < 0)
        return B_NO_INIT;
    if (size < 0)
        return B_BAD_VALUE;
    int result;
    do {
        result = ftruncate(fFD, size);
    } while (result != 0 && errno == EINTR);
    return result == 0 ? B_OK : LastError();
}

status_t File::GetSize(off_t *size) const
{
    if (fFD < 0)
        return B_NO_INIT;
    if (!size)
        return B_BAD_VALUE;
    struct stat info;
    if (fstat(fFD, &info) != 0)
        return LastError();
    *size = info.st_size;
    return B_OK;
}

} // namespace platform

namespace platform {

status_t File::GetStat(struct stat *info) const
{
    if (fFD < 0)
        return B_NO_INIT;
    if (!info)
        return B_BAD_VALUE;
    return fstat(fFD, info) == 0 ? B_OK : LastError();
}

namespace {

// Answers a list or a value into `out` through `call(buffer, size)`, which is
// flistxattr or fgetxattr: first into a buffer that fits what files usually
// carry, asking for the size only when that is too small. The value may grow
// between asking and reading; then it is asked again.
template<typename Call>
status_t ReadSized(std::string *out, Call call)
{
    out->resize(1024);
    for (;;) {
        const ssize_t read = call(out->data(), out->size());
        if (read >= 0) {
            out->resize(size_t(read));
            return B_OK;
        }
        if (errno != ERANGE)
            return LastError();
        const ssize_t size = call(nullptr, 0);
        if (size < 0)
            return LastError();
        out->resize(size_t(size) + 1);
    }
}

} // namespace

status_t File::GetXattrNames(std::vector<std::string> *names) const
{
    if (fFD < 0)
        return B_NO_INIT;
    names->clear();
    std::string list;
    const status_t status = ReadSized(&list, [this](char *buffer, size_t size) {
        return flistxattr(fFD, buffer, size);
    });
    if (status != B_OK)
        return status == B_UNSUPPORTED ? B_OK : status;
    for (size_t start = 0; start < list.size();) {
        const size_t end = std::min(list.find('\0', start), list.size());
        if (end > start)
            names->emplace_back(list, start, end - start);
        start = end + 1;
    }
    return B_OK;
}

status_t File::ReadXattrs(std::vector<Xattr> *xattrs) const
{
    std::vector<std::string> names;
    if (status_t status = GetXattrNames(&names); status != B_OK)
        return status;
    xattrs->clear();
    for (std::string &name : names) {
        Xattr xattr{std::move(name), {}};
        const status_t status = ReadSized(&xattr.value, [this, &xattr](char *buffer, size_t size) {
            return fgetxattr(fFD, xattr.name.c_str(), buffer, size);
        });
        // One removed since the list was read is not there; one that may
        // not be read (a security label, trusted.*) is not copied either.
        if (status == B_OK)
            xattrs->push_back(std::move(xattr));
    }
    return B_OK;
}

status_t File::WriteXattr(const Xattr &xattr)
{
    if (fFD < 0)
        return B_NO_INIT;
    if (fsetxattr(fFD, xattr.name.c_str(), xattr.value.data(), xattr.value.size(), 0) != 0)
        return LastError();
    return B_OK;
}

status_t File::RemoveXattr(const std::string &name)
{
    if (fFD < 0)
        return B_NO_INIT;
    return fremovexattr(fFD, name.c_str()) == 0 ? B_OK : LastError();
}

} // namespace platform
