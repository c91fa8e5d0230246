#include "fileops/FileCopier.h"

#include "app/AppUtils.h"
#include "fileops/CopyControl.h"
#include "fileops/KestrinEntry.h"
#include "fileops/OverwritePolicy.h"
#include "platform/Entry.h"
#include "platform/File.h"
#include "platform/PathNames.h"
#include "platform/Volume.h"

#include <chrono>
#include <memory>
#include <new>
#include <set>
#include <sys/stat.h>
#include <vector>

namespace kestrin {

namespace {

constexpr uint32_t kCreateNew = B_WRITE_ONLY | B_CREATE_FILE | B_FAIL_IF_EXISTS;
constexpr uint32_t kReplace = B_WRITE_ONLY | B_CREATE_FILE | B_ERASE_FILE;
// The copy is private to its owner until it is complete; the source's
// permissions follow at the end.
constexpr mode_t kWorkingMode = 0600;

// Attributes the kernel manages (security labels, ACLs, trusted.*) travel if
// they can; a file system or a user that may not set them does not make the
// copy fail. Kestrin's typed attributes and the user's own xattrs must arrive.
bool IsBestEffort(const std::string &xattr)
{
    return xattr.compare(0, 5, "user.") != 0;
}

// When the kernel cannot copy between this pair of files, read and write can.
bool KernelCopyUnavailable(status_t status)
{
    return status == B_CROSS_DEVICE_LINK || status == B_BAD_VALUE || status == B_UNSUPPORTED;
}

bool SameNode(const std::string &first, const std::string &second)
{
    node_ref a, b;
    return platform::Entry(first, true).GetNodeRef(&a) == B_OK
           && platform::Entry(second, true).GetNodeRef(&b) == B_OK && a == b;
}

} // namespace

FileCopier::FileCopier(CopyControl *control, OverwritePolicy *overwrite)
    : fControl(control)
    , fOverwrite(overwrite)
{}

status_t FileCopier::CopyFile(KestrinEntry &source, const entry_ref &target, bool preflight)
{
    fSkipped = false;
    std::string sourcePath;
    if (status_t status = source.GetPath(&sourcePath); status != B_OK)
        return status;
    const std::string &targetPath = target.path;
    if (targetPath.empty())
        return B_BAD_VALUE;

    // Everything about the source is read through the one open descriptor:
    // its size, mode and attributes, each once.
    platform::File in(sourcePath, B_READ_ONLY);
    if (in.InitCheck() != B_OK)
        return in.InitCheck();
    struct stat info;
    if (status_t status = in.GetStat(&info); status != B_OK)
        return status;
    // Attributes that cannot be listed fail the copy once its data is in.
    Xattrs xattrs;
    const status_t listed = in.ReadXattrs(&xattrs);
    if (preflight) {
        if (status_t status = CheckSpace(targetPath, info.st_size, xattrs); status != B_OK)
            return status;
    }

    platform::File out;
    bool replaced = false;
    if (status_t status = OpenTarget(source, sourcePath, targetPath, &out, &replaced);
        status != B_OK || fSkipped)
        return status;

    if (fControl)
        fControl->FileStarted(sourcePath, targetPath, double(info.st_size));
    // No size is set beforehand: the target grows with its data, as cp's
    // does, so a source that shrinks or grows meanwhile is copied to its end.
    status_t status = CopyData(in, out, platform::LeafName(sourcePath));
    if (status != B_OK) {
        out.Unset();
        platform::Entry(targetPath).Remove();
        return status;
    }

    status = listed != B_OK ? listed : CopyAttributes(out, xattrs, replaced);
    // After the attributes, since a read-only mode would keep an ordinary
    // user from writing them. Set-id bits do not travel, as with `cp`.
    out.SetPermissions(info.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO));
    // The times last, as nothing written after them would keep them: those
    // the source had before it was read. Another user's file that was
    // replaced may keep the time of the copy; the data is what counts.
    out.SetTimes(info.st_atim, info.st_mtim);
    return status;
}

status_t FileCopier::CheckSpace(const std::string &targetPath, off_t size, const Xattrs &xattrs)
{
    // A volume that cannot be looked at is not refused for it: the copy
    // itself will tell whether there is room.
    platform::FreeSpace space;
    if (platform::FreeSpaceForPath(platform::ParentPath(targetPath), &space) != B_OK
        || space.blockSize <= 0)
        return B_OK;
    const off_t blockSize = space.blockSize;

    // The data, one block more, and the attributes: they sit in the inode or
    // in blocks of their own; names and values together, rounded up to
    // blocks, never underestimate them.
    off_t attributeBytes = 0;
    for (const platform::File::Xattr &xattr : xattrs)
        attributeBytes += off_t(xattr.name.size() + xattr.value.size());
    const off_t blocks = (size + blockSize - 1) / blockSize + 1
                         + (attributeBytes + blockSize - 1) / blockSize;
    if (blocks > space.freeBlocks - kSpareBlocks) {
        const char *text = "Cannot Copy file.\nInsufficient space on destination.";
        CopyControl::ReportError(fControl, MsgBoxAlert(text));
        return B_DEVICE_FULL;
    }
    return B_OK;
}

status_t FileCopier::OpenTarget(KestrinEntry &source,
                                const std::string &sourcePath,
                                const std::string &targetPath,
                                platform::File *target,
                                bool *replaced)
{
    const status_t status = target->SetTo(targetPath, kCreateNew, kWorkingMode);
    if (status != B_FILE_EXISTS)
        return status;
    if (!fOverwrite)
        return B_FILE_EXISTS;
    // Another name of the source itself (a hard link, a link to it): erasing
    // the target would erase the source.
    if (SameNode(sourcePath, targetPath))
        return B_BAD_VALUE;
    if (!fOverwrite->ReplaceOnCopy(source, targetPath)) {
        fSkipped = true;
        return B_OK;
    }
    if (status_t reopened = target->SetTo(targetPath, kReplace, kWorkingMode); reopened != B_OK)
        return reopened;
    *replaced = true;
    // Only now: after a skip or a failed reopen the window stays hidden
    // until a later file of the batch is replaced.
    fOverwrite->Control().SetProgressVisible(true);
    return B_OK;
}

bool FileCopier::Reported(int64_t bytes, const std::string &leafName, int64_t total)
{
    if (!fControl)
        return true;
    fControl->ChunkCopied(bytes, leafName, total);
    return !fControl->StopRequested();
}

status_t FileCopier::CopyData(platform::File &source,
                              platform::File &target,
                              const std::string &leafName)
{
    // Shared extents first, as `cp --reflink=auto`: the whole file at once,
    // whatever its size. Anything else (a file system without them, two
    // volumes, an empty file) copies.
    off_t size = 0;
    if (target.CloneFrom(source) == B_OK && target.GetSize(&size) == B_OK)
        return Reported(size, leafName, size) ? B_OK : kStopped;

    source.AdviseSequential();
    size_t chunk = kBufferSize;
    int64_t total = 0;
    for (;;) {
        const auto start = std::chrono::steady_clock::now();
        const ssize_t done = target.CopyFrom(source, chunk);
        if (done < 0 && KernelCopyUnavailable(status_t(done)))
            break;
        if (done < 0)
            return status_t(done);
        // Files of pseudo file systems can answer 0 here with data to
        // read; a plain read settles whether this really is the end.
        if (done == 0 && total == 0)
            break;
        if (done == 0)
            return B_OK;
        total += done;
        if (!Reported(done, leafName, total))
            return kStopped;
        const auto took = std::chrono::steady_clock::now() - start;
        if (took < std::chrono::milliseconds(kQuickChunkMs) && chunk < kMaxKernelChunk)
            chunk *= 2;
        else if (took > std::chrono::milliseconds(kSlowChunkMs) && chunk > kBufferSize)
            chunk /= 2;
    }
    return CopyByReading(source, target, leafName, total);
}

status_t FileCopier::CopyByReading(platform::File &source,
                                   platform::File &target,
                                   const std::string &leafName,
                                   int64_t total)
{
    std::unique_ptr<char[]> buffer(new (std::nothrow) char[kBufferSize]);
    if (!buffer)
        return B_NO_MEMORY;
    for (;;) {
        const ssize_t done = source.Read(buffer.get(), kBufferSize);
        if (done <= 0)
            return done < 0 ? status_t(done) : B_OK;
        const ssize_t written = target.Write(buffer.get(), size_t(done));
        if (written < 0)
            return status_t(written);
        total += done;
        if (!Reported(done, leafName, total))
            return kStopped;
    }
}

status_t FileCopier::CopyAttributes(platform::File &target, const Xattrs &xattrs, bool replaced)
{
    // A replaced file keeps its own attributes through the erase; those the
    // source does not have would make the copy claim what is not so.
    if (replaced) {
        std::set<std::string> wanted;
        for (const platform::File::Xattr &xattr : xattrs)
            wanted.insert(xattr.name);
        std::vector<std::string> present;
        target.GetXattrNames(&present);
        for (const std::string &name : present) {
            if (!wanted.count(name) && !IsBestEffort(name))
                target.RemoveXattr(name);
        }
    }

    // Linux file systems keep no attribute indices: there is never one to
    // create on the target volume. An attribute is its xattr, so the bytes
    // travel as they are, the type header of a typed one included.
    for (const platform::File::Xattr &xattr : xattrs) {
        const status_t status = target.WriteXattr(xattr);
        if (status != B_OK && !IsBestEffort(xattr.name))
            return status;
    }
    return B_OK;
}

} // namespace kestrin
