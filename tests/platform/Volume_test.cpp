#include "platform/VolumeRoster.h"

#include "support/TempHome.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sys/sysmacros.h>

using namespace platform;

TEST(VolumeTest, FindsTheMountedVolumes)
{
    TempHome home;
    const std::optional<Volume> boot = VolumeRoster::BootVolume();
    ASSERT_TRUE(boot);
    EXPECT_EQ(boot->MountPath(), "/");
    EXPECT_EQ(boot->Name(), "/");
    EXPECT_EQ(boot->Device(), DeviceForPath("/"));
    EXPECT_GT(boot->Capacity(), 0);
    EXPECT_GT(boot->BlockSize(), 0);
    EXPECT_LE(boot->FreeBytes(), boot->Capacity());
    EXPECT_EQ(boot->FreeBlocks() * boot->BlockSize(), boot->FreeBytes());
    EXPECT_EQ(VolumeRoster::ForDevice(boot->Device()).value_or(Volume()).MountPath(), "/");

    const std::optional<dev_t> shm = DeviceForPath("/dev/shm");
    ASSERT_TRUE(shm);
    EXPECT_NE(*shm, boot->Device());
    const std::optional<Volume> shared = VolumeRoster::ForDevice(*shm);
    ASSERT_TRUE(shared) << "the device that /dev/shm shows must be listed";
    EXPECT_EQ(shared->MountPath(), "/dev/shm");
    EXPECT_EQ(shared->Name(), "shm");
    EXPECT_EQ(shared->FileSystem(), "tmpfs");

    std::filesystem::create_directory_symlink("/dev/shm", home.Root() + "/shm");
    EXPECT_EQ(DeviceForPath(home.Root() + "/shm"), shm);
    EXPECT_FALSE(DeviceForPath(home.Root() + "/missing"));
    EXPECT_FALSE(VolumeRoster::ForMountPath("/boot/home"));
    EXPECT_FALSE(VolumeRoster::ForMountPath(home.Root()));

    std::set<dev_t> devices;
    for (const Volume &volume : VolumeRoster::MountedVolumes())
        EXPECT_TRUE(devices.insert(volume.Device()).second) << volume.MountPath();
}

TEST(VolumeTest, ParsesMountInfo)
{
    const std::string mountInfo
        = "21 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
          "22 21 0:23 / /dev/shm rw - tmpfs tmpfs rw\n"
          "23 22 0:27 / /dev/shm rw - tmpfs tmpfs rw\n"
          "24 21 8:17 / /media/My\\040Disk\\134x ro,nosuid master:3 - vfat /dev/sdb1 rw\n"
          "25 21 8:1 /srv /srv/bind rw - ext4 /dev/sda1 rw\n"
          "26 21 8:33 /sub /data/bind rw - xfs /dev/sdc1 rw\n"
          "27 21 8:33 / /data rw - xfs /dev/sdc1 ro\n"
          "not a mount line\n";

    const std::vector<Volume> volumes = VolumeRoster::ParseVolumes(mountInfo);
    ASSERT_EQ(volumes.size(), 4u);
    EXPECT_EQ(volumes[0].MountPath(), "/");
    EXPECT_EQ(volumes[0].Device(), makedev(8, 1));
    EXPECT_EQ(volumes[0].Source(), "/dev/sda1");
    EXPECT_FALSE(volumes[0].IsReadOnly());
    EXPECT_EQ(volumes[1].Device(), makedev(0, 27)) << "the mount on top is the one in use";
    EXPECT_EQ(volumes[2].MountPath(), "/media/My Disk\\x");
    EXPECT_EQ(volumes[2].Name(), "My Disk\\x");
    EXPECT_EQ(volumes[2].FileSystem(), "vfat");
    EXPECT_TRUE(volumes[2].IsReadOnly());
    EXPECT_EQ(volumes[3].MountPath(), "/data") << "the whole file system, not a bound folder";
    EXPECT_TRUE(volumes[3].IsReadOnly());

    std::vector<std::string> paths;
    for (const Volume &mount : VolumeRoster::ParseMounts(mountInfo))
        paths.push_back(mount.MountPath());
    EXPECT_EQ(paths,
              (std::vector<std::string>{
                  "/", "/dev/shm", "/media/My Disk\\x", "/srv/bind", "/data/bind", "/data"}));
}
