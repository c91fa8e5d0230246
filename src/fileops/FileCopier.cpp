#include "fileops/FileCopier.h"

#include "app/AppUtils.h"
#include "fileops/CopyControl.h"
#include "fileops/KestrinEntry.h"
#include "fileops/OverwritePolicy.h"
#include "platform/Entry.h"
#include "platform/File.h"
#include "platform/Node.h"
#include "platform/PathNames.h"
#include "platform/Volume.h"

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

bool IsUserXattr(const std::string &name)
{
    return name.compare(0, 5, "user.") == 0;
}

// Attributes the kernel manages (security labels, ACLs, trusted.*) travel if
// they can; a file system or a user that may not set them does not make the
// copy fail. Kestrin's typed attributes and the user's own xattrs must arrive.
bool IsBestEffort(const std::string &name, type_code type)
{
    return type == B_XATTR_TYPE && !IsUserXattr(name);
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

bool FileCopier::AllocateBuffer(Buffer *buffer)
{
    for (size_t size = kMaxBufferSize; size > 0; size -= kBufferStep) {
        buffer->data.reset(new (std::nothrow) char[size]);
        if (buffer->data) {
            buffer->size = size;
            return true;
        }
    }
    return false;
}

status_t FileCopier::CopyFile(KestrinEntry &source, const entry_ref &target, bool preflight)
{
    fSkipped = false;
    std::string sourcePath;
    if (status_t status = source.GetPath(&sourcePath); status != B_OK)
        return status;
    const std::string &targetPath = target.path;
    if (targetPath.empty())
        return B_BAD_VALUE;

    if (preflight) {
        if (status_t status = CheckSpace(sourcePath, targetPath); status != B_OK)
            return status;
    }

    Buffer buffer;
    if (!AllocateBuffer(&buffer))
        return B_NO_MEMORY;

    platform::File in(sourcePath, B_READ_ONLY);
    if (in.InitCheck() != B_OK)
        return in.InitCheck();
    struct stat info;
    if (status_t status = source.GetStat(&info); status != B_OK)
        return status;

    platform::File out;
    bool replaced = false;
    if (status_t status = OpenTarget(source, sourcePath, targetPath, &out, &replaced);
        status != B_OK || fSkipped)
        return status;

    if (fControl)
        fControl->FileStarted(sourcePath, targetPath, double(info.st_size));
    // Only a hint that lets the file system place the file in one piece; the
    // size is settled once the data is in.
    out.SetSize(info.st_size);
    out.Seek(0, SEEK_SET);

    status_t status = CopyData(in, out, info.st_size, platform::LeafName(sourcePath), buffer);
    if (status != B_OK) {
        out.Unset();
        platform::Entry(targetPath).Remove();
        return status;
    }

    status = CopyAttributes(sourcePath, targetPath, buffer, replaced);
    // Last, since a read-only mode would keep an ordinary user from writing
    // the attributes. Set-id bits do not travel, as with `cp`.
    out.SetPermissions(info.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO));
    return status;
}

status_t FileCopier::CheckSpace(const std::string &sourcePath, const std::string &targetPath)
{
    // A volume that cannot be looked at is not refused for it: the copy
    // itself will tell whether there is room.
    platform::FreeSpace space;
    if (platform::FreeSpaceForPath(platform::ParentPath(targetPath), &space) != B_OK
        || space.blockSize <= 0)
        return B_OK;
    const off_t blockSize = space.blockSize;
    const off_t freeBlocks = space.freeBlocks;

    off_t blocks = 0;
    if (status_t status = PreflightFileSize(sourcePath, blockSize, &blocks); status != B_OK)
        return status;
    if (blocks > freeBlocks - kSpareBlocks) {
        const char *text = "Cannot Copy file.\nInsufficient space on destination.";
        CopyControl::ReportError(fControl, MsgBoxAlert(text));
        return B_DEVICE_FULL;
    }
    return B_OK;
}

status_t FileCopier::PreflightFileSize(const std::string &sourcePath, off_t blockSize, off_t *blocks)
{
    if (blockSize <= 0 || !blocks)
        return B_BAD_VALUE;
    platform::File file(sourcePath, B_READ_ONLY);
    if (file.InitCheck() != B_OK)
        return file.InitCheck();
    off_t size = 0;
    if (status_t status = file.GetSize(&size); status != B_OK)
        return status;
    *blocks = (size + blockSize - 1) / blockSize + 1;

    // Extended attributes sit in the inode or in blocks of their own; names
    // and values together, rounded up to blocks, never underestimate them.
    platform::Node node(sourcePath);
    std::vector<std::string> names;
    if (node.GetAttrNames(&names) != B_OK)
        return B_OK;
    off_t attributeBytes = 0;
    for (const std::string &name : names) {
        attr_info info;
        if (node.GetAttrInfo(name, &info) == B_OK)
            attributeBytes += off_t(name.size()) + info.size;
    }
    *blocks += (attributeBytes + blockSize - 1) / blockSize;
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

status_t FileCopier::CopyData(platform::File &source,
                              platform::File &target,
                              off_t expectedSize,
                              const std::string &leafName,
                              Buffer &buffer)
{
    bool kernelCopy = true;
    int64_t total = 0;
    for (;;) {
        ssize_t done;
        if (kernelCopy) {
            done = target.CopyFrom(source, buffer.size);
            if (done < 0) {
                if (!KernelCopyUnavailable(status_t(done)))
                    return status_t(done);
                kernelCopy = false;
                continue;
            }
            // Files of pseudo file systems can answer 0 here with data to
            // read; a plain read settles whether this really is the end.
            if (done == 0 && total == 0) {
                kernelCopy = false;
                continue;
            }
        } else {
            done = source.Read(buffer.data.get(), buffer.size);
            if (done < 0)
                return status_t(done);
            if (done > 0) {
                const ssize_t written = target.Write(buffer.data.get(), size_t(done));
                if (written < 0)
                    return status_t(written);
            }
        }
        if (done == 0)
            break;

        total += done;
        if (fControl) {
            fControl->ChunkCopied(done, leafName, total);
            if (fControl->StopRequested())
                return kStopped;
        }
    }
    // A source that shrank or grew while it was copied: the copy holds what
    // was read up to its end, never the zeros of the size set beforehand.
    if (total != expectedSize)
        return target.SetSize(total);
    return B_OK;
}

status_t FileCopier::CopyAttributes(const std::string &sourcePath,
                                    const std::string &targetPath,
                                    Buffer &buffer,
                                    bool replaced)
{
    const platform::Node source(sourcePath);
    if (source.InitCheck() != B_OK)
        return source.InitCheck();
    platform::Node target(targetPath);
    if (target.InitCheck() != B_OK)
        return target.InitCheck();

    std::vector<std::string> names;
    if (status_t status = source.GetAttrNames(&names); status != B_OK)
        return status;

    // A replaced file keeps its own attributes through the erase; those the
    // source does not have would make the copy claim what is not so.
    if (replaced) {
        const std::set<std::string> wanted(names.begin(), names.end());
        std::vector<std::string> present;
        target.GetAttrNames(&present);
        for (const std::string &name : present) {
            attr_info info;
            if (!wanted.count(name) && target.GetAttrInfo(name, &info) == B_OK
                && !IsBestEffort(name, info.type))
                target.RemoveAttr(name);
        }
    }

    // Linux file systems keep no attribute indices: there is never one to
    // create on the target volume.
    for (const std::string &name : names) {
        attr_info info;
        if (source.GetAttrInfo(name, &info) != B_OK)
            continue;
        const status_t status = CopyAttribute(source, target, name, info, buffer);
        if (status != B_OK && !IsBestEffort(name, info.type))
            return status;
    }
    return B_OK;
}

status_t FileCopier::CopyAttribute(const platform::Node &source,
                                   platform::Node &target,
                                   const std::string &name,
                                   const attr_info &info,
                                   Buffer &buffer)
{
    // An empty attribute says something by being there.
    if (info.size == 0) {
        const ssize_t written = target.WriteAttr(name, info.type, 0, buffer.data.get(), 0);
        return written < 0 ? status_t(written) : B_OK;
    }
    for (off_t offset = 0; offset < info.size;) {
        const ssize_t read = source.ReadAttr(name, info.type, offset, buffer.data.get(), buffer.size);
        if (read < 1)
            break;
        const ssize_t written = target.WriteAttr(name,
                                                 info.type,
                                                 offset,
                                                 buffer.data.get(),
                                                 size_t(read));
        if (written < 0)
            return status_t(written);
        offset += read;
    }
    return B_OK;
}

} // namespace kestrin
