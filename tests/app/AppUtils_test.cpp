#include "app/AppUtils.h"

#include "TempHome.h"
#include "platform/AlertRecorder.h"
#include "platform/Paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace kestrin;

TEST(AppUtils, GetVolumeKnowsOnlyExactMountPaths)
{
    const auto boot = GetVolume("/boot");
    ASSERT_TRUE(boot);
    EXPECT_EQ(boot->MountPath(), "/");
    const auto root = GetVolume("/");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->Device(), boot->Device());
    EXPECT_FALSE(GetVolume("/boot/home"));
    EXPECT_FALSE(GetVolume("/dev/shm/"));
    const auto shm = GetVolume("/dev/shm");
    ASSERT_TRUE(shm);
    EXPECT_NE(shm->Device(), boot->Device());
}

TEST(AppUtils, ValidFileNeedsAReadableFile)
{
    TempHome home;
    const std::string file = home.Root() + "/readable";
    WriteFileBytes(file, "x");
    EXPECT_TRUE(valid_file(file.c_str()));
    EXPECT_FALSE(valid_file((home.Root() + "/missing").c_str()));
    EXPECT_FALSE(valid_file(home.Root().c_str())) << "a folder is not a file";
}

TEST(AppUtils, OnlyKestrinsOwnSignatureResolves)
{
    char path[B_PATH_NAME_LENGTH] = "untouched";
    EXPECT_EQ(get_app_from_sig("application/x-vnd.Be-Kestrin", path), B_OK);
    EXPECT_EQ(path, platform::ExecutablePath());
    EXPECT_EQ(get_app_from_sig("application/x-vnd.be-kestrin", path), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(get_app_from_sig("application/x-vnd.Be-Tracker", path), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(get_app_from_sig("", path), B_BAD_VALUE);
    EXPECT_EQ(get_app_from_sig(nullptr, path), B_BAD_VALUE);
}

TEST(AppUtils, MessageBoxesCarryTheirTitlesAndButtons)
{
    platform::AlertRecorder alerts;
    alerts.QueueAnswer(0);
    alerts.QueueAnswer(1);
    MsgBox("Please select an item first", B_WARNING_ALERT);
    EXPECT_EQ(MessageBox("Delete?", "Confirm", "Cancel", "Delete"), 1);
    EXPECT_EQ(MessageBox("Just one", "Note", "Fine", nullptr, nullptr), 0);

    const auto shown = alerts.Shown();
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_EQ(shown[0],
              (platform::Alert{"foo", "Please select an item first", {"OK"}, B_WARNING_ALERT}));
    EXPECT_EQ(shown[1], (platform::Alert{"Confirm", "Delete?", {"Cancel", "Delete"}, B_INFO_ALERT}));
    EXPECT_EQ(shown[2].buttons, std::vector<std::string>{"Fine"});
}

TEST(AppUtils, CaseSensitiveSortFlagStartsFalse)
{
    // Runs in its own process under CTest, so this is the flag's first read.
    EXPECT_FALSE(GetbCaseSensitiveSort());
}
