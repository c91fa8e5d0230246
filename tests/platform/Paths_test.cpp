#include "platform/Paths.h"

#include "TempHome.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using platform::DirectoryWhich;
using platform::FindDirectory;

namespace {

std::string Find(DirectoryWhich which)
{
    std::string path = "(none)";
    FindDirectory(which, &path);
    return path;
}

} // namespace

TEST(Paths, FoldersFollowHomeAndXdgVariables)
{
    TempHome home;
    const std::string h = home.Home();
    EXPECT_EQ(Find(DirectoryWhich::Home), h);
    EXPECT_EQ(Find(DirectoryWhich::UserSettings), h + "/.config");
    EXPECT_EQ(Find(DirectoryWhich::Trash), h + "/.local/share/Trash");
    EXPECT_EQ(Find(DirectoryWhich::UserAddOns), h + "/.local/share/kestrin/add-ons");

    home.SetEnv("XDG_CONFIG_HOME", home.Root() + "/cfg/");
    home.SetEnv("XDG_DATA_HOME", home.Root() + "/data");
    EXPECT_EQ(Find(DirectoryWhich::UserSettings), home.Root() + "/cfg");
    EXPECT_EQ(Find(DirectoryWhich::Trash), home.Root() + "/data/Trash");

    // Relative XDG values do not count; without HOME nothing is known.
    home.SetEnv("XDG_CONFIG_HOME", "relative/cfg");
    EXPECT_EQ(Find(DirectoryWhich::UserSettings), h + "/.config");
    home.SetEnv("HOME", std::nullopt);
    std::string path = "untouched";
    EXPECT_EQ(FindDirectory(DirectoryWhich::UserSettings, &path), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(path, "untouched");
    EXPECT_EQ(FindDirectory(DirectoryWhich::Trash, &path), B_OK) << "XDG_DATA_HOME is still set";
}

TEST(Paths, CreateMakesMissingFoldersForTheOwnerOnly)
{
    TempHome home;
    std::string trash;
    ASSERT_EQ(FindDirectory(DirectoryWhich::Trash, &trash, true), B_OK);
    struct stat info;
    ASSERT_EQ(stat(trash.c_str(), &info), 0);
    EXPECT_TRUE(S_ISDIR(info.st_mode));
    EXPECT_EQ(info.st_mode & 0777, 0700u);

    // A file where a folder should be is an error, not a silent success.
    WriteFileBytes(home.Home() + "/.config", "not a folder");
    std::string settings;
    EXPECT_NE(FindDirectory(DirectoryWhich::UserSettings, &settings, true), B_OK);
}
