#pragma once

#include "platform/Volume.h"

#include <vector>

namespace kestrin {

// The volumes a query walks: the local disks (ext2/3/4, xfs, btrfs, f2fs,
// tmpfs, vfat, exfat and their like), each once however often it is
// mounted; never proc, sys, cgroup, device, network or FUSE mounts, nor
// anything mounted inside /proc or /sys.
class QueryVolumes
{
public:
    static std::vector<platform::Volume> Local();
    static bool IsQueryable(const platform::Volume &volume);
};

} // namespace kestrin
