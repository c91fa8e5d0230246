#include "platform/Directory.h"

#include "platform/Entry.h"
#include "platform/File.h"

#include "support/TempHome.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

using namespace platform;
namespace fs = std::filesystem;

namespace {

std::set<std::string> RemainingNames(Directory &folder)
{
    std::set<std::string> names;
    Entry entry;
    while (folder.GetNextEntry(&entry) == B_OK) {
        std::string name;
        entry.GetName(&name);
        names.insert(name);
    }
    return names;
}

} // namespace

TEST(DirectoryTest, IteratesWithoutFollowingLinks)
{
    TempHome home;
    const std::string root = fs::canonical(home.Root());
    const std::string base = root + "/listing";
    const std::string longName(255, 'n');
    const std::string oddName = "tab\tnew\nline \x01\xff\\*?:";
    fs::create_directories(base + "/sub");
    WriteFileBytes(base + "/sub/inner", "");
    WriteFileBytes(base + "/" + longName, "");
    WriteFileBytes(base + "/" + oddName, "");
    fs::create_directory_symlink("sub", base + "/tosub");
    const std::set<std::string> all = {"sub", longName, oddName, "tosub"};

    fs::create_directory_symlink("listing", root + "/alias");
    Directory folder(root + "/alias");
    ASSERT_EQ(folder.InitCheck(), B_OK);
    Entry self;
    ASSERT_EQ(folder.GetEntry(&self), B_OK);
    std::string path;
    self.GetPath(&path);
    EXPECT_EQ(path, base);

    Entry first;
    ASSERT_EQ(folder.GetNextEntry(&first), B_OK);
    EXPECT_EQ(folder.CountEntries(), 4);
    std::set<std::string> seen = RemainingNames(folder);
    std::string firstName;
    first.GetName(&firstName);
    seen.insert(firstName);
    EXPECT_EQ(seen, all) << "counting must not disturb the iteration";

    Entry entry;
    EXPECT_EQ(folder.GetNextEntry(&entry), B_ENTRY_NOT_FOUND);
    ASSERT_EQ(folder.Rewind(), B_OK);
    EXPECT_EQ(RemainingNames(folder), all);

    ASSERT_EQ(folder.FindEntry("tosub", &entry), B_OK);
    EXPECT_TRUE(entry.IsSymLink());
    ASSERT_EQ(folder.FindEntry("tosub", &entry, true), B_OK);
    entry.GetPath(&path);
    EXPECT_EQ(path, base + "/sub");
    EXPECT_EQ(folder.FindEntry("missing", &entry), B_ENTRY_NOT_FOUND);

    EXPECT_TRUE(folder.Contains(longName));
    EXPECT_TRUE(folder.Contains(base + "/sub/inner"));
    EXPECT_FALSE(folder.Contains("missing"));

    EXPECT_EQ(Directory(base + "/" + longName).InitCheck(), B_NOT_A_DIRECTORY);
    EXPECT_EQ(Directory(base + "/missing").InitCheck(), B_ENTRY_NOT_FOUND);
}

TEST(DirectoryTest, CreatesEntriesButNeverOverAnExistingOne)
{
    TempHome home;
    const std::string base = fs::canonical(home.Root());
    Directory folder(base);
    ASSERT_EQ(folder.InitCheck(), B_OK);

    Directory created;
    ASSERT_EQ(folder.CreateDirectory("new", &created), B_OK);
    EXPECT_EQ(created.InitCheck(), B_OK);
    EXPECT_EQ(created.CreateDirectory("deeper"), B_OK);
    EXPECT_TRUE(fs::is_directory(base + "/new/deeper"));
    EXPECT_EQ(folder.CreateDirectory("new"), B_FILE_EXISTS);
    EXPECT_EQ(folder.CreateDirectory(std::string(256, 'n')), B_NAME_TOO_LONG);

    ASSERT_EQ(folder.CreateSymLink("dangling", "nowhere"), B_OK);
    EXPECT_EQ(folder.CreateDirectory("dangling"), B_FILE_EXISTS);
    EXPECT_EQ(folder.CreateSymLink("dangling", "elsewhere"), B_FILE_EXISTS);

    File file;
    ASSERT_EQ(folder.CreateFile("new/file", &file, true), B_OK);
    EXPECT_EQ(file.Write("abc", 3), 3);
    EXPECT_EQ(folder.CreateFile("new/file", &file, true), B_FILE_EXISTS);
    EXPECT_EQ(ReadFileBytes(base + "/new/file"), "abc");
    ASSERT_EQ(folder.CreateFile(base + "/new/file", nullptr), B_OK);
    EXPECT_EQ(ReadFileBytes(base + "/new/file"), "") << "without failIfExists the file is emptied";
    EXPECT_EQ(folder.CreateFile("new", nullptr), B_IS_A_DIRECTORY);
}
