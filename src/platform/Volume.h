#pragma once

#include "platform/Errors.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace platform {

// One mounted file system (BVolume), as /proc/self/mountinfo describes it.
// The sizes come from statvfs when asked, so listing volumes never touches a
// slow or dead network mount.
class Volume
{
public:
    Volume() = default;
    Volume(dev_t device,
           std::string mountPath,
           std::string fileSystem,
           std::string source,
           bool readOnly);

    status_t InitCheck() const { return fMountPath.empty() ? B_NO_INIT : B_OK; }

    dev_t Device() const { return fDevice; }
    const std::string &MountPath() const { return fMountPath; }
    // The leaf of the mount path; "/" for the root.
    std::string Name() const;
    // The file system type: "ext4", "tmpfs", "fuse.sshfs" ...
    const std::string &FileSystem() const { return fFileSystem; }
    // What was mounted: a device node, a server path, or a pseudo name.
    const std::string &Source() const { return fSource; }
    bool IsReadOnly() const { return fReadOnly; }

    // In bytes and blocks; free space is what an unprivileged user may fill.
    // A negative status when statvfs fails.
    off_t Capacity() const;
    off_t FreeBytes() const;
    off_t BlockSize() const;
    off_t FreeBlocks() const;

    bool operator==(const Volume &other) const
    {
        return fDevice == other.fDevice && fMountPath == other.fMountPath;
    }

private:
    dev_t fDevice = 0;
    std::string fMountPath;
    std::string fFileSystem;
    std::string fSource;
    bool fReadOnly = false;
};

// The room left on the volume that holds `path`, from one statvfs: what a copy
// checks before every file, without looking the volume itself up.
struct FreeSpace
{
    off_t blockSize = 0;
    off_t freeBlocks = 0; // what an unprivileged user may fill
};
status_t FreeSpaceForPath(const std::string &path, FreeSpace *space);

// The device `path` lives on, following links (dev_for_path).
std::optional<dev_t> DeviceForPath(const std::string &path);

} // namespace platform
