#include "query/QueryVolumes.h"

#include "platform/VolumeRoster.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrin {

namespace {

// File systems that keep files on a local disk or in memory. overlay is the
// root of most containers; zfs and bcachefs are disks too.
constexpr std::array<std::string_view, 20> kLocalFileSystems = {"ext2",    "ext3",     "ext4",
                                                                "xfs",     "btrfs",    "f2fs",
                                                                "tmpfs",   "vfat",     "msdos",
                                                                "exfat",   "ntfs",     "ntfs3",
                                                                "jfs",     "reiserfs", "zfs",
                                                                "nilfs2",  "hfsplus",  "bcachefs",
                                                                "overlay", "udf"};

bool IsUnder(const std::string &path, std::string_view folder)
{
    return path.compare(0, folder.size(), folder) == 0
           && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

bool QueryVolumes::IsQueryable(const platform::Volume &volume)
{
    const std::string &path = volume.MountPath();
    if (IsUnder(path, "/proc") || IsUnder(path, "/sys"))
        return false;
    return std::find(kLocalFileSystems.begin(), kLocalFileSystems.end(), volume.FileSystem())
           != kLocalFileSystems.end();
}

std::vector<platform::Volume> QueryVolumes::Local()
{
    std::vector<platform::Volume> volumes;
    for (platform::Volume &volume : platform::VolumeRoster::MountedVolumes())
        if (IsQueryable(volume))
            volumes.push_back(std::move(volume));
    return volumes;
}

} // namespace kestrin
