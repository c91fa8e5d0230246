#include "fileops/FileCopier.h"

#include "CopyTestSupport.h"
#include "fileops/KestrinEntry.h"

#include <fstream>
#include <memory>
#include <sys/mount.h>

using namespace kestrin;

namespace {

std::string Pattern(size_t size)
{
    std::string data(size, '\0');
    for (size_t i = 0; i < size; i++)
        data[i] = char((i * 31 + i / 4096) % 253);
    return data;
}

} // namespace

using FileCopierTest = CopyTest;

TEST_F(FileCopierTest, StopLeavesNoPartialTargetAndEndsTheBatch)
{
    WriteFileBytes(src + "/big", Pattern(3 * 1024 * 1024));
    WriteFileBytes(src + "/next", "next");
    control.stopAfterChunks = 2;
    Run(Request(kMsgCopyRequest, {src + "/big", src + "/next"}), dest);
    EXPECT_EQ(control.chunks.size(), 2u);
    EXPECT_FALSE(Exists(dest + "/big"));
    EXPECT_FALSE(Exists(dest + "/next"));
}

TEST_F(FileCopierTest, ASourceThatChangesWhileCopiedIsCopiedToItsEnd)
{
    const std::string original = Pattern(2 * 1024 * 1024);
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
    const std::string small = home.Root() + "/small";
    fs::create_directory(small);
    if (mount("tmpfs", small.c_str(), "tmpfs", 0, "size=1m") != 0)
        GTEST_SKIP() << "cannot mount a small tmpfs here";
    const std::shared_ptr<void> unmount(nullptr,
                                        [&](void *) { umount2(small.c_str(), MNT_DETACH); });

    // 256 blocks of 4 KiB, 128 kept spare: 100 KiB fit, 600 KiB do not.
    WriteFileBytes(src + "/fits", Pattern(100 * 1024));
    WriteFileBytes(src + "/large", Pattern(600 * 1024));
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
    WriteFileBytes(src + "/overflow", Pattern(2 * 1024 * 1024));
    KestrinEntry overflow(src + "/overflow");
    FileCopier copier(&control, nullptr);
    EXPECT_EQ(copier.CopyFile(overflow, RefFor(small + "/overflow"), false), B_DEVICE_FULL);
    EXPECT_FALSE(Exists(small + "/overflow"));
}
