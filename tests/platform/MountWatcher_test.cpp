#include "platform/MountWatcher.h"

#include "platform/Handler.h"
#include "platform/Message.h"
#include "platform/NodeMonitor.h"

#include "MessageRecorder.h"
#include "support/SmallVolume.h"
#include "support/TempHome.h"

#include <QTest>
#include <algorithm>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

using namespace platform;
namespace fs = std::filesystem;

namespace {

constexpr int kWaitMs = 10000;

class Recorder : public MessageRecorder
{
public:
    ~Recorder() override { MountWatcher::StopWatching(this); }
};

int32_t Int32(const Message &message, const char *field)
{
    int32_t value = -1;
    message.FindInt32(field, &value);
    return value;
}

std::string Path(const Message &message)
{
    std::string path;
    message.FindString("path", &path);
    return path;
}

// A volume is told by its device and where it is mounted: the device number
// of a tmpfs that went is handed to the next one, wherever that is mounted.
struct Mounted
{
    dev_t device;
    std::string path;
};

// A message of `opcode` about `volume`, whose device a mount gives as "new device".
bool Is(const Message &message, int32_t opcode, const Mounted &volume)
{
    const char *device = opcode == B_DEVICE_MOUNTED ? "new device" : "device";
    return message.what == B_NODE_MONITOR && Int32(message, "opcode") == opcode
           && Int32(message, device) == int32_t(volume.device) && Path(message) == volume.path;
}

// Other programs may mount and unmount meanwhile: only messages about the
// test's own volume count.
std::vector<Message> About(const Recorder &recorder, const Mounted &volume)
{
    std::vector<Message> about;
    for (const Message &message : recorder.messages)
        if (Is(message, B_DEVICE_MOUNTED, volume) || Is(message, B_DEVICE_UNMOUNTED, volume))
            about.push_back(message);
    return about;
}

// Until the recorder has a message of `opcode` about `volume`; false after a bounded wait.
bool WaitFor(const Recorder &recorder, int32_t opcode, const Mounted &volume)
{
    return QTest::qWaitFor(
        [&] {
            return std::any_of(recorder.messages.begin(),
                               recorder.messages.end(),
                               [&](const Message &message) { return Is(message, opcode, volume); });
        },
        kWaitMs);
}

dev_t DeviceOf(const std::string &path)
{
    struct stat info = {};
    stat(path.c_str(), &info);
    return info.st_dev;
}

} // namespace

TEST(MountWatcher, EveryWatcherHearsOfMountsAndUnmounts)
{
    TempHome home;
    const std::string root = fs::canonical(home.Root()).string();
    const std::string point = root + "/volume";
    SmallVolume volume(point);

    Recorder first, second;
    ASSERT_EQ(MountWatcher::Watch(&first), B_OK);
    ASSERT_EQ(MountWatcher::Watch(&second), B_OK);
    ASSERT_EQ(MountWatcher::Watch(&first), B_OK) << "watching twice is one watch";

    if (!volume.Mount())
        GTEST_SKIP() << SmallVolume::kCannotMount;
    const Mounted device{DeviceOf(point), point};
    ASSERT_NE(device.device, DeviceOf(root));
    ASSERT_TRUE(WaitFor(first, B_DEVICE_MOUNTED, device));
    // Delivered to all in one go: once the first has it, so has the second.
    for (const Recorder *recorder : {&first, &second}) {
        const std::vector<Message> about = About(*recorder, device);
        ASSERT_EQ(about.size(), 1u);
        EXPECT_EQ(Int32(about[0], "device"), int32_t(DeviceOf(root))) << "what it was mounted on";
    }

    volume.Unmount();
    ASSERT_TRUE(WaitFor(first, B_DEVICE_UNMOUNTED, device));
    EXPECT_EQ(About(first, device).size(), 2u);
    EXPECT_EQ(About(second, device).size(), 2u);

    // Once everyone has left, a newcomer starts from the volumes as they are.
    MountWatcher::StopWatching(&first);
    MountWatcher::StopWatching(&second);
    const size_t heard = first.messages.size();
    Recorder newcomer;
    ASSERT_EQ(MountWatcher::Watch(&newcomer), B_OK);
    ASSERT_TRUE(volume.Mount());
    const Mounted again{DeviceOf(point), point};
    ASSERT_TRUE(WaitFor(newcomer, B_DEVICE_MOUNTED, again));
    EXPECT_EQ(About(newcomer, again).size(), 1u);
    EXPECT_EQ(first.messages.size(), heard);
}

TEST(MountWatcher, WatchersMayComeAndGoWhileReceiving)
{
    TempHome home;
    const std::string root = fs::canonical(home.Root()).string();
    const std::string point = root + "/volume";
    SmallVolume volume(point);

    Recorder changer, stopped, late, witness;
    auto doomed = std::make_unique<Recorder>();
    Mounted device{0, point};
    changer.onMessage = [&](Message &message) {
        if (device.device == 0 || !Is(message, B_DEVICE_MOUNTED, device))
            return;
        MountWatcher::StopWatching(&stopped);
        doomed.reset(); // stops its own watch as it goes
        EXPECT_EQ(MountWatcher::Watch(&late), B_OK);
        MountWatcher::StopWatching(&changer);
    };
    // The changer first, the witness last: when the witness has a message,
    // everyone who was to get it has.
    for (Handler *handler :
         std::initializer_list<Handler *>{&changer, &stopped, doomed.get(), &witness})
        ASSERT_EQ(MountWatcher::Watch(handler), B_OK);

    if (!volume.Mount())
        GTEST_SKIP() << SmallVolume::kCannotMount;
    device.device = DeviceOf(point);
    ASSERT_TRUE(WaitFor(witness, B_DEVICE_MOUNTED, device));
    EXPECT_FALSE(MountWatcher::IsWatching(&changer));
    EXPECT_TRUE(About(stopped, device).empty());
    EXPECT_TRUE(About(late, device).empty()) << "it came after the mount";

    volume.Unmount();
    ASSERT_TRUE(WaitFor(witness, B_DEVICE_UNMOUNTED, device));
    ASSERT_EQ(About(late, device).size(), 1u) << "it hears of the unmount";
    EXPECT_TRUE(Is(About(late, device)[0], B_DEVICE_UNMOUNTED, device));
    EXPECT_EQ(About(changer, device).size(), 1u);
    EXPECT_TRUE(About(stopped, device).empty());
}

TEST(MountWatcher, AVolumeThatTakesTheDeviceNumberOfOneJustGoneIsHeardOf)
{
    TempHome home;
    const std::string root = fs::canonical(home.Root()).string();
    SmallVolume first(root + "/first");
    SmallVolume second(root + "/second");
    Recorder recorder;
    ASSERT_EQ(MountWatcher::Watch(&recorder), B_OK);
    if (!first.Mount())
        GTEST_SKIP() << SmallVolume::kCannotMount;
    const Mounted device{DeviceOf(root + "/first"), root + "/first"};
    ASSERT_TRUE(WaitFor(recorder, B_DEVICE_MOUNTED, device));

    // Between two looks at the table: one tmpfs goes, the next one comes,
    // and the kernel hands it the anonymous device number just freed.
    first.Unmount();
    ASSERT_TRUE(second.Mount());
    const Mounted reused{DeviceOf(root + "/second"), root + "/second"};
    ASSERT_TRUE(WaitFor(recorder, B_DEVICE_UNMOUNTED, device));
    ASSERT_TRUE(WaitFor(recorder, B_DEVICE_MOUNTED, reused));
    EXPECT_EQ(About(recorder, device).size(), 2u) << "mounted and unmounted";
    EXPECT_EQ(About(recorder, reused).size(), 1u) << "mounted, whatever device number it was given";
}
