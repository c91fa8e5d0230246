#include "platform/Entry.h"
#include "platform/Volume.h"

#include "support/TempHome.h"

#include <QTemporaryDir>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace platform;
namespace fs = std::filesystem;

namespace {

std::string PathOf(const Entry &entry)
{
    std::string path;
    entry.GetPath(&path);
    return path;
}

} // namespace

TEST(EntryTest, NormalisesPathsAndDescribesAbstractEntries)
{
    TempHome home;
    const std::string base = fs::canonical(home.Root());
    fs::create_directory(base + "/dir");
    fs::create_directory_symlink("dir", base + "/alias");
    WriteFileBytes(base + "/dir/file", "");

    Entry abstract(base + "//alias/./new");
    ASSERT_EQ(abstract.InitCheck(), B_OK);
    EXPECT_FALSE(abstract.Exists());
    EXPECT_EQ(PathOf(abstract), base + "/dir/new") << "links before the leaf are resolved";
    std::string name;
    ASSERT_EQ(abstract.GetName(&name), B_OK);
    EXPECT_EQ(name, "new");
    Entry parent;
    ASSERT_EQ(abstract.GetParent(&parent), B_OK);
    EXPECT_EQ(PathOf(parent), base + "/dir");

    entry_ref ref;
    ASSERT_EQ(abstract.GetRef(&ref), B_OK);
    struct stat folder;
    ASSERT_EQ(stat((base + "/dir").c_str(), &folder), 0);
    EXPECT_EQ(ref.device, folder.st_dev);
    EXPECT_EQ(ref.directory, folder.st_ino);
    EXPECT_EQ(ref.name, "new");

    Entry leafLink(base + "/alias/");
    EXPECT_EQ(PathOf(leafLink), base + "/alias");
    EXPECT_TRUE(leafLink.IsSymLink()) << "a link in the leaf is not followed";
    EXPECT_EQ(Entry(base + "/dir/file/..").InitCheck(), B_NOT_A_DIRECTORY);
    EXPECT_EQ(PathOf(Entry(base + "/alias/..")), base);

    EXPECT_EQ(Entry(base + "/missing/new").InitCheck(), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(Entry(base + "/dir/file/new").InitCheck(), B_NOT_A_DIRECTORY);
    EXPECT_EQ(Entry(base + "/" + std::string(256, 'n')).InitCheck(), B_NAME_TOO_LONG);
    EXPECT_EQ(Entry(base + "/" + std::string(255, 'n')).InitCheck(), B_OK);

    Entry root("/");
    ASSERT_EQ(root.GetName(&name), B_OK);
    EXPECT_EQ(name, "/");
    EXPECT_EQ(root.GetParent(&parent), B_ENTRY_NOT_FOUND);
}

TEST(EntryTest, TraverseFollowsLinkChainsAndStopsAtLoops)
{
    TempHome home;
    const std::string base = fs::canonical(home.Root());
    fs::create_directory(base + "/dir");
    WriteFileBytes(base + "/target", "t");
    fs::create_symlink("target", base + "/one");
    fs::create_symlink(base + "/one", base + "/two");
    // Relative to the folder of the link, not to the working directory.
    fs::create_symlink("../two", base + "/dir/three");

    Entry chain(base + "/dir/three", true);
    ASSERT_EQ(chain.InitCheck(), B_OK);
    EXPECT_EQ(PathOf(chain), base + "/target");
    EXPECT_TRUE(chain.IsFile());
    EXPECT_TRUE(Entry(base + "/dir/three").IsSymLink());

    fs::create_symlink("dir/ghost", base + "/broken");
    Entry broken(base + "/broken", true);
    ASSERT_EQ(broken.InitCheck(), B_OK);
    EXPECT_EQ(PathOf(broken), base + "/dir/ghost");
    EXPECT_FALSE(broken.Exists());

    fs::create_symlink("nowhere/ghost", base + "/lost");
    EXPECT_EQ(Entry(base + "/lost", true).InitCheck(), B_ENTRY_NOT_FOUND);

    fs::create_symlink("pong", base + "/ping");
    fs::create_symlink("ping", base + "/pong");
    fs::create_symlink("self", base + "/self");
    EXPECT_EQ(Entry(base + "/ping", true).InitCheck(), B_LINK_LIMIT);
    EXPECT_EQ(Entry(base + "/self", true).InitCheck(), B_LINK_LIMIT);
}

TEST(EntryTest, MoveToNeverClobbersUnlessAsked)
{
    TempHome home;
    const std::string base = fs::canonical(home.Root());
    WriteFileBytes(base + "/a", "A");
    WriteFileBytes(base + "/b", "B");
    fs::create_directory(base + "/folder");
    fs::create_directories(base + "/into/folder"); // empty: rename(2) would replace it

    Entry a(base + "/a");
    EXPECT_EQ(a.MoveTo("", "b"), B_FILE_EXISTS);
    EXPECT_EQ(ReadFileBytes(base + "/a"), "A");
    EXPECT_EQ(ReadFileBytes(base + "/b"), "B");
    EXPECT_EQ(PathOf(a), base + "/a");

    Entry folder(base + "/folder");
    EXPECT_EQ(folder.MoveTo(base + "/into"), B_FILE_EXISTS);
    EXPECT_TRUE(fs::is_directory(base + "/folder"));

    EXPECT_EQ(a.MoveTo("", "x/y"), B_BAD_VALUE);
    ASSERT_EQ(a.MoveTo("", "b", true), B_OK);
    EXPECT_FALSE(fs::exists(base + "/a"));
    EXPECT_EQ(ReadFileBytes(base + "/b"), "A");
    EXPECT_EQ(PathOf(a), base + "/b");

    ASSERT_EQ(a.MoveTo(base + "/folder"), B_OK);
    EXPECT_EQ(PathOf(a), base + "/folder/b");
    ASSERT_EQ(a.MoveTo(base + "/into", "c"), B_OK);
    EXPECT_EQ(ReadFileBytes(base + "/into/c"), "A");

    EXPECT_EQ(Entry(base + "/gone").MoveTo("", "other"), B_ENTRY_NOT_FOUND);

    QTemporaryDir shm("/dev/shm/kestrin-entry-XXXXXX"); // another device
    ASSERT_TRUE(shm.isValid());
    const std::string other = shm.path().toStdString();
    if (DeviceForPath(base) == DeviceForPath(other))
        GTEST_SKIP() << "/dev/shm is on the same device as the temporary folder";
    EXPECT_EQ(a.MoveTo(other), B_CROSS_DEVICE_LINK);
    EXPECT_EQ(a.MoveTo(other, nullptr, true), B_CROSS_DEVICE_LINK);
    EXPECT_EQ(ReadFileBytes(base + "/into/c"), "A");
    EXPECT_TRUE(fs::is_empty(other));
}

TEST(EntryTest, RemoveDeletesFilesLinksAndEmptyFolders)
{
    TempHome home;
    const std::string base = fs::canonical(home.Root());
    fs::create_directories(base + "/full/inner");
    fs::create_symlink("full", base + "/link");

    Entry link(base + "/link");
    ASSERT_EQ(link.Remove(), B_OK);
    EXPECT_TRUE(fs::is_directory(base + "/full")) << "removing a link must not touch its target";
    EXPECT_EQ(link.InitCheck(), B_OK);
    EXPECT_EQ(link.Remove(), B_ENTRY_NOT_FOUND);

    EXPECT_EQ(Entry(base + "/full").Remove(), B_DIRECTORY_NOT_EMPTY);
    EXPECT_EQ(Entry(base + "/full/inner").Remove(), B_OK);
    EXPECT_EQ(Entry(base + "/full").Remove(), B_OK);
    EXPECT_FALSE(fs::exists(base + "/full"));
}
