#pragma once

#include "platform/Volume.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {

// The mounted volumes, read afresh from /proc/self/mountinfo on every call.
// A volume is one device: where a device is mounted several times (bind
// mounts), the mount of its whole file system is kept, else the first one.
// Mounts hidden under a later mount on the same path are left out.
class VolumeRoster
{
public:
    static std::vector<Volume> MountedVolumes();
    // The volume mounted at "/".
    static std::optional<Volume> BootVolume();
    static std::optional<Volume> ForDevice(dev_t device);
    // Only a path that is itself a mount point has a volume.
    static std::optional<Volume> ForMountPath(const std::string &path);

    // The text of a mountinfo file: every visible mount, in its order.
    static std::vector<Volume> ParseMounts(const std::string &mountInfo);
    // The same, one volume per device.
    static std::vector<Volume> ParseVolumes(const std::string &mountInfo);
};

} // namespace platform
