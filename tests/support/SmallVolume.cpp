#include "SmallVolume.h"

#include <filesystem>
#include <sys/mount.h>
#include <utility>

SmallVolume::SmallVolume(std::string path, std::string size)
    : fPath(std::move(path))
    , fSize(std::move(size))
{
    std::error_code ignored;
    std::filesystem::create_directories(fPath, ignored);
}

SmallVolume::~SmallVolume()
{
    Unmount();
}

bool SmallVolume::Mount()
{
    const std::string options = "size=" + fSize;
    fMounted = mount("kestrin-test", fPath.c_str(), "tmpfs", 0, options.c_str()) == 0;
    return fMounted;
}

void SmallVolume::Unmount()
{
    if (fMounted)
        umount2(fPath.c_str(), MNT_DETACH);
    fMounted = false;
}
