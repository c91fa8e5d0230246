#include "fileops/FileCopier.h"

#include "CopyTestSupport.h"
#include "fileops/KestrinEntry.h"
#include "support/SmallVolume.h"

#include <QProcess>
#include <fstream>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <memory>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>
#include <vector>

using namespace kestrin;

namespace {

// Whether every extent of the file is shared with another file (FIEMAP).
bool AllExtentsShared(const std::string &path)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    constexpr unsigned kExtents = 64;
    std::vector<char> buffer(sizeof(fiemap) + kExtents * sizeof(fiemap_extent));
    auto *map = reinterpret_cast<fiemap *>(buffer.data());
    map->fm_length = FIEMAP_MAX_OFFSET;
    map->fm_flags = FIEMAP_FLAG_SYNC;
    map->fm_extent_count = kExtents;
    const bool mapped = ioctl(fd, FS_IOC_FIEMAP, map) == 0;
    close(fd);
    if (!mapped || map->fm_mapped_extents == 0)
        return false;
    for (unsigned i = 0; i < map->fm_mapped_extents; i++) {
        if (!(map->fm_extents[i].fe_flags & FIEMAP_EXTENT_SHARED))
            return false;
    }
    return true;
}

} // namespace

using FileCopierTest = CopyTest;

TEST_F(FileCopierTest, StopLeavesNoPartialTargetAndEndsTheBatch)
{
    WriteFileBytes(src + "/big", RandomBytes(3 * 1024 * 1024, 1));
    WriteFileBytes(src + "/next", "next");
    control.stopAfterChunks = 2;
    Run(Request(kMsgCopyRequest, {src + "/big", src + "/next"}), dest);
    EXPECT_EQ(control.chunks.size(), 2u);
    EXPECT_FALSE(Exists(dest + "/big"));
    EXPECT_FALSE(Exists(dest + "/next"));
}

TEST_F(FileCopierTest, ASourceThatChangesWhileCopiedIsCopiedToItsEnd)
{
    const std::string original = RandomBytes(2 * 1024 * 1024, 2);
    WriteFileBytes(src + "/shrinks", original);
    WriteFileBytes(src + "/grows", original);
    control.onChunk = [&](size_t count) {
        if (count == 1)
            fs::resize_file(src + "/shrinks", 600 * 1024);
    };
    EXPECT_TRUE(KestrinEntry(src + "/shrinks").CopyTo(dest, &control, nullptr));
    EXPECT_EQ(ReadFileBytes(dest + "/shrinks"), original.substr(0, 600 * 1024));

    control.chunks.clear();
    control.onChunk = [&](size_t count) {
        if (count == 1)
            std::ofstream(src + "/grows", std::ios::app) << "tail";
    };
    EXPECT_TRUE(KestrinEntry(src + "/grows").CopyTo(dest, &control, nullptr));
    EXPECT_EQ(ReadFileBytes(dest + "/grows"), original + "tail");
}

TEST_F(FileCopierTest, TotalsPastTwoGiBWrapInThirtyTwoBits)
{
    // Sparse: three GiB that take no room and are never copied whole.
    WriteFileBytes(src + "/huge", "");
    fs::resize_file(src + "/huge", 3ull * 1024 * 1024 * 1024);
    WriteFileBytes(src + "/small", std::string(1000, 's'));
    control.stopAfterChunks = 1;
    Run(Request(kMsgCopyRequest, {src + "/huge", src + "/small"}), dest);

    ASSERT_EQ(control.batches.size(), 1u);
    EXPECT_EQ(control.batches[0].total, -1073740824); // 3221226472 - 2^32
    EXPECT_EQ(control.batches[0].text, "Copying 2 files or directories");
    EXPECT_EQ(control.batches[0].trailingText, "-1048575 K");
    EXPECT_FALSE(Exists(dest + "/huge"));
    EXPECT_FALSE(Exists(dest + "/small"));
}

TEST_F(FileCopierTest, AFullVolumeRefusesOrCleansUp)
{
    SmallVolume volume(home.Root() + "/small");
    if (!volume.Mount())
        GTEST_SKIP() << SmallVolume::kCannotMount;
    const std::string &small = volume.Path();

    // 256 blocks of 4 KiB, 128 kept spare: 100 KiB fit, 600 KiB do not.
    WriteFileBytes(src + "/fits", RandomBytes(100 * 1024, 3));
    WriteFileBytes(src + "/large", RandomBytes(600 * 1024, 4));
    EXPECT_TRUE(KestrinEntry(src + "/fits").CopyTo(small, nullptr, nullptr));
    EXPECT_EQ(alerts.Count(), 0u);
    EXPECT_FALSE(KestrinEntry(src + "/large").CopyTo(small, nullptr, nullptr));
    EXPECT_FALSE(Exists(small + "/large"));
    const platform::Alert insufficient{"foo",
                                       "Cannot Copy file.\nInsufficient space on destination.",
                                       {"OK"},
                                       B_INFO_ALERT};
    ASSERT_EQ(alerts.Count(), 1u) << "no progress window: an alert of its own";
    EXPECT_EQ(alerts.Shown()[0], insufficient);
    // With a progress window the same alert goes to it.
    EXPECT_FALSE(KestrinEntry(src + "/large").CopyTo(small, &control, nullptr));
    EXPECT_EQ(control.errors, std::vector<platform::Alert>{insufficient});
    EXPECT_EQ(alerts.Count(), 1u);
    EXPECT_FALSE(Exists(small + "/large"));

    // Without the check, the volume fills up in the middle of the data.
    WriteFileBytes(src + "/overflow", RandomBytes(2 * 1024 * 1024, 5));
    KestrinEntry overflow(src + "/overflow");
    FileCopier copier(&control, nullptr);
    EXPECT_EQ(copier.CopyFile(overflow, RefFor(small + "/overflow"), false), B_DEVICE_FULL);
    EXPECT_FALSE(Exists(small + "/overflow"));
}

TEST_F(FileCopierTest, AVolumeThatSharesExtentsGetsTheBytesAsSharedExtentsInOneStep)
{
    const std::string image = home.Root() + "/btrfs.img";
    const std::string volume = home.Root() + "/btrfs";
    WriteFileBytes(image, "");
    fs::resize_file(image, 128 * 1024 * 1024);
    fs::create_directory(volume);
    if (QProcess::execute("mkfs.btrfs", {"-q", QString::fromStdString(image)}) != 0)
        GTEST_SKIP() << "no mkfs.btrfs here (btrfs-progs): extent sharing is not tried";
    if (QProcess::execute("mount",
                          {"-o",
                           "loop",
                           QString::fromStdString(image),
                           QString::fromStdString(volume)})
        != 0)
        GTEST_SKIP() << "cannot loop-mount a btrfs image here (needs root and loop devices)";
    const std::shared_ptr<void> unmount(nullptr,
                                        [&](void *) { umount2(volume.c_str(), MNT_DETACH); });

    const std::string original = RandomBytes(3 * 1024 * 1024, 6);
    WriteFileBytes(volume + "/big", original);
    fs::create_directory(volume + "/copy");
    ASSERT_TRUE(KestrinEntry(volume + "/big").CopyTo(volume + "/copy", &control, nullptr));
    EXPECT_EQ(ReadFileBytes(volume + "/copy/big"), original);
    EXPECT_TRUE(AllExtentsShared(volume + "/copy/big"));
    // Shared at once: the progress window hears of the whole file in one report.
    ASSERT_EQ(control.chunks.size(), 1u);
    EXPECT_EQ(control.chunks[0].bytes, int64_t(original.size()));
}
