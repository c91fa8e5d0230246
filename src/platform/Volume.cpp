#include "platform/Volume.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

namespace platform {

namespace {

enum class Measure { Capacity, FreeBytes, BlockSize, FreeBlocks };

off_t Measured(const std::string &mountPath, Measure measure)
{
    if (mountPath.empty())
        return B_NO_INIT;
    struct statvfs info;
    if (statvfs(mountPath.c_str(), &info) != 0)
        return LastError();
    const off_t blockSize = off_t(info.f_frsize ? info.f_frsize : info.f_bsize);
    switch (measure) {
    case Measure::Capacity:
        return off_t(info.f_blocks) * blockSize;
    case Measure::FreeBytes:
        return off_t(info.f_bavail) * blockSize;
    case Measure::BlockSize:
        return blockSize;
    case Measure::FreeBlocks:
        return off_t(info.f_bavail);
    }
    return B_ERROR;
}

} // namespace

Volume::Volume(
    dev_t device, std::string mountPath, std::string fileSystem, std::string source, bool readOnly)
    : fDevice(device)
    , fMountPath(std::move(mountPath))
    , fFileSystem(std::move(fileSystem))
    , fSource(std::move(source))
    , fReadOnly(readOnly)
{}

std::string Volume::Name() const
{
    if (fMountPath == "/")
        return fMountPath;
    return fMountPath.substr(fMountPath.rfind('/') + 1);
}

off_t Volume::Capacity() const
{
    return Measured(fMountPath, Measure::Capacity);
}

off_t Volume::FreeBytes() const
{
    return Measured(fMountPath, Measure::FreeBytes);
}

off_t Volume::BlockSize() const
{
    return Measured(fMountPath, Measure::BlockSize);
}

off_t Volume::FreeBlocks() const
{
    return Measured(fMountPath, Measure::FreeBlocks);
}

std::optional<dev_t> DeviceForPath(const std::string &path)
{
    struct stat info;
    if (path.empty() || stat(path.c_str(), &info) != 0)
        return std::nullopt;
    return info.st_dev;
}

status_t FreeSpaceForPath(const std::string &path, FreeSpace *space)
{
    struct statvfs info;
    if (statvfs(path.c_str(), &info) != 0)
        return LastError();
    space->blockSize = off_t(info.f_frsize ? info.f_frsize : info.f_bsize);
    space->freeBlocks = off_t(info.f_bavail);
    return B_OK;
}

} // namespace platform
