#pragma once

#include "platform/Errors.h"

#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

// Open modes, with the values BeOS gave them; File maps them to the O_* flags
// of the running system.
inline constexpr uint32_t B_READ_ONLY = 0x0000;
inline constexpr uint32_t B_WRITE_ONLY = 0x0001;
inline constexpr uint32_t B_READ_WRITE = 0x0002;
inline constexpr uint32_t B_FAIL_IF_EXISTS = 0x0100;
inline constexpr uint32_t B_CREATE_FILE = 0x0200;
inline constexpr uint32_t B_ERASE_FILE = 0x0400;
inline constexpr uint32_t B_OPEN_AT_END = 0x0800;

namespace platform {

// An open regular file (BFile). Folders are refused; links are followed.
// Read and Write answer a byte count, or a negative status.
class File
{
public:
    File() = default;
    File(const std::string &path, uint32_t openMode, mode_t createPermissions = 0666);
    ~File();

    File(File &&other) noexcept;
    File &operator=(File &&other) noexcept;
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    status_t SetTo(const std::string &path, uint32_t openMode, mode_t createPermissions = 0666);
    // A new file of its own, open for reading and writing, named after
    // `pathTemplate` whose last six characters, "XXXXXX", become a unique
    // text (mkstemp); its path in `path`.
    status_t SetToTemporary(const std::string &pathTemplate, std::string *path);
    // Replaces the file at `path` with `bytes` in one step: they are written
    // whole, with `permissions`, under a temporary name beside it, which is
    // then renamed over it; a reader finds the old content or the new, and a
    // failure leaves the old in place.
    static status_t ReplaceContents(const std::string &path,
                                    const std::string &bytes,
                                    mode_t permissions);
    status_t InitCheck() const { return fStatus; }
    void Unset();

    ssize_t Read(void *buffer, size_t size);
    ssize_t Write(const void *buffer, size_t size);
    // Neither moves the file position. Linux appends every write to a file
    // opened with B_OPEN_AT_END, WriteAt's position notwithstanding.
    ssize_t ReadAt(off_t position, void *buffer, size_t size);
    ssize_t WriteAt(off_t position, const void *buffer, size_t size);

    // The new position, or a negative status.
    off_t Seek(off_t position, int whence);
    off_t Position() const;

    status_t SetSize(off_t size);
    // Moves up to `size` bytes from `source`'s position to this file's inside
    // the kernel (copy_file_range), which lets file systems share extents.
    // Bytes copied, 0 at the source's end, or a status: B_CROSS_DEVICE_LINK,
    // B_BAD_VALUE or B_UNSUPPORTED say that this pair of files needs Read and
    // Write instead.
    ssize_t CopyFrom(File &source, size_t size);
    // Makes this file share all of `source`'s data (FICLONE), as
    // `cp --reflink=auto` tries first: no data moves, and the copy takes no
    // room until one of the two is written. B_UNSUPPORTED where the file
    // system, or this pair of volumes, cannot share extents; then CopyFrom.
    status_t CloneFrom(const File &source);
    // Tells the system the file will be read from start to end once
    // (POSIX_FADV_SEQUENTIAL), as cp does before copying it.
    void AdviseSequential();
    // The permission bits (chmod of the open file).
    status_t SetPermissions(mode_t mode);
    // The access and modification times of the open file, to the nanosecond
    // where the file system keeps them (futimens).
    status_t SetTimes(const timespec &accessed, const timespec &modified);
    status_t GetSize(off_t *size) const;
    status_t GetStat(struct stat *info) const;

    // One extended attribute as the file system keeps it: the xattr's full
    // name and its bytes (for a typed attribute, the type header included).
    struct Xattr
    {
        std::string name;
        std::string value;
    };
    // Every extended attribute of the open file that can be read, through
    // its descriptor (no path look-ups, so a copy reads them cheaply). A file
    // system without them has none: B_OK and an empty list.
    status_t ReadXattrs(std::vector<Xattr> *xattrs) const;
    // The names alone.
    status_t GetXattrNames(std::vector<std::string> *names) const;
    status_t WriteXattr(const Xattr &xattr);
    status_t RemoveXattr(const std::string &name);

    // The descriptor, for calls such as copy_file_range; -1 when not open.
    int FD() const { return fFD; }

private:
    int fFD = -1;
    status_t fStatus = B_NO_INIT;
};

} // namespace platform
