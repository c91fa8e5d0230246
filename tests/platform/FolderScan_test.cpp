#include "platform/FolderScan.h"

#include "support/TempHome.h"
#include "support/UnprivilegedRerun.h"

#include <QTemporaryDir>
#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <unistd.h>

using namespace platform;
namespace fs = std::filesystem;

namespace {

std::map<std::string, ScannedEntry> ByName(const std::vector<ScannedEntry> &entries)
{
    std::map<std::string, ScannedEntry> byName;
    for (const ScannedEntry &entry : entries)
        byName[entry.name] = entry;
    return byName;
}

} // namespace

TEST(FolderScanTest, ReadsAHugeFolderNamesFirstThenStatData)
{
    const QTemporaryDir scratch = ScratchFolder();
    ASSERT_TRUE(scratch.isValid());
    const std::string folder = fs::canonical(scratch.path().toStdString()).string() + "/huge";
    fs::create_directories(folder);
    constexpr int kCount = 12000;
    std::set<std::string> expected;
    for (int i = 0; i < kCount; i++) {
        const std::string name = "file" + std::to_string(i);
        // Sizes tell the entries apart, so stat data cannot land on the wrong name.
        const int fd = open((folder + "/" + name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(ftruncate(fd, i % 1000), 0);
        close(fd);
        expected.insert(name);
    }

    FolderScan scan(folder);
    ASSERT_EQ(scan.InitCheck(), B_OK);
    struct stat info;
    ASSERT_EQ(stat(folder.c_str(), &info), 0);
    EXPECT_EQ(scan.FolderInfo().st_ino, info.st_ino);

    ASSERT_EQ(scan.ReadNames(), kCount);
    EXPECT_EQ(std::set<std::string>(scan.Names().begin(), scan.Names().end()), expected);
    ASSERT_EQ(scan.ReadNames(), kCount) << "a second read starts from the beginning again";

    std::vector<ScannedEntry> entries(3); // replaced, not appended to
    std::atomic<bool> cancel = false;
    std::atomic<int32_t> done = 0;
    ASSERT_EQ(scan.StatEntries(&entries, &cancel, &done), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(done.load(), kCount);
    ASSERT_EQ(entries.size(), size_t(kCount));
    for (size_t i = 0; i < entries.size(); i++) {
        const ScannedEntry &entry = entries[i];
        ASSERT_EQ(entry.name, scan.Names()[i]);
        ASSERT_EQ(entry.statStatus, B_OK);
        ASSERT_TRUE(S_ISREG(entry.info.st_mode));
        ASSERT_EQ(entry.info.st_size, std::stoi(entry.name.substr(4)) % 1000) << entry.name;
        ASSERT_FALSE(entry.targetKnown);
    }

    cancel = true;
    EXPECT_EQ(scan.StatEntries(&entries, &cancel, &done), B_CANCELED);
    EXPECT_TRUE(entries.empty());
    EXPECT_EQ(done.load(), kCount) << "nothing is counted once canceled";
}

TEST(FolderScanTest, KeepsLinksAndOddNamesAsTheyAre)
{
    TempHome home;
    const std::string folder = fs::canonical(home.Root()).string() + "/odd";
    fs::create_directories(folder + "/sub");
    WriteFileBytes(folder + "/file", "12345");
    fs::create_symlink("file", folder + "/to-file");
    fs::create_directory_symlink("sub", folder + "/to-sub");
    fs::create_symlink("nowhere", folder + "/dangling");
    fs::create_symlink("loop", folder + "/loop");
    const std::string newline = "two\nlines", invalid = "bad\xff\xfe", longest(255, 'L');
    for (const std::string &name : {newline, invalid, longest})
        WriteFileBytes(folder + "/" + name, name);
    WriteFileBytes(folder + "/vanishing", "");

    // Through a link: the folder it leads to is read.
    fs::create_directory_symlink("odd", fs::path(folder).parent_path() / "alias");
    FolderScan scan(fs::path(folder).parent_path() / "alias");
    ASSERT_EQ(scan.InitCheck(), B_OK);
    ASSERT_EQ(scan.ReadNames(), 10);
    fs::remove(folder + "/vanishing");
    std::vector<ScannedEntry> entries;
    ASSERT_EQ(scan.StatEntries(&entries), B_ENTRY_NOT_FOUND);
    std::map<std::string, ScannedEntry> byName = ByName(entries);
    ASSERT_EQ(byName.size(), 10u);

    EXPECT_TRUE(S_ISDIR(byName["sub"].info.st_mode));
    EXPECT_EQ(byName["file"].info.st_size, 5);
    EXPECT_FALSE(byName["file"].targetKnown);

    const ScannedEntry &toFile = byName["to-file"];
    EXPECT_TRUE(S_ISLNK(toFile.info.st_mode)) << "an entry's own data, not its target's";
    EXPECT_TRUE(toFile.targetKnown);
    EXPECT_TRUE(S_ISREG(toFile.targetMode));
    EXPECT_TRUE(byName["to-sub"].targetKnown);
    EXPECT_TRUE(S_ISDIR(byName["to-sub"].targetMode));
    for (const char *broken : {"dangling", "loop"}) {
        EXPECT_TRUE(S_ISLNK(byName[broken].info.st_mode)) << broken;
        EXPECT_EQ(byName[broken].statStatus, B_OK) << broken;
        EXPECT_FALSE(byName[broken].targetKnown) << broken;
    }
    for (const std::string &name : {newline, invalid, longest})
        EXPECT_EQ(byName[name].info.st_size, off_t(name.size())) << name;

    const ScannedEntry &vanished = byName["vanishing"];
    EXPECT_EQ(vanished.statStatus, B_ENTRY_NOT_FOUND);
    EXPECT_EQ(vanished.info.st_ino, 0u);
    EXPECT_EQ(vanished.info.st_mode, 0u);

    // QTemporaryDir cannot remove names that are not UTF-8.
    fs::remove_all(folder);
}

TEST(FolderScanTest, TellsWhyAFolderCannotBeRead)
{
    TempHome home;
    const std::string root = fs::canonical(home.Root());
    WriteFileBytes(root + "/file", "");
    fs::create_symlink("loop", root + "/loop");

    EXPECT_EQ(FolderScan(root + "/missing").InitCheck(), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(FolderScan(root + "/file").InitCheck(), B_NOT_A_DIRECTORY);
    EXPECT_EQ(FolderScan(root + "/loop").InitCheck(), B_LINK_LIMIT);
    EXPECT_EQ(FolderScan(root + "/" + std::string(256, 'n')).InitCheck(), B_NAME_TOO_LONG);
    FolderScan missing(root + "/missing");
    std::vector<ScannedEntry> entries;
    EXPECT_EQ(missing.ReadNames(), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(missing.StatEntries(&entries), B_ENTRY_NOT_FOUND);
    EXPECT_FALSE(FolderScan::HasSubfolder(root + "/missing"));
}

TEST(FolderScanTest, RefusesAFolderItMayNotRead)
{
    if (UnprivilegedRerun::Delegated())
        return;
    TempHome home;
    const std::string locked = home.Root() + "/locked";
    fs::create_directories(locked + "/sub");
    chmod(locked.c_str(), 0);
    EXPECT_EQ(FolderScan(locked).InitCheck(), B_PERMISSION_DENIED);
    EXPECT_FALSE(FolderScan::HasSubfolder(locked));
    chmod(locked.c_str(), 0700);
}

TEST(FolderScanTest, HasSubfolderLooksAtTypesAndFollowsLinksOnlyWhenAsked)
{
    TempHome home;
    const std::string root = fs::canonical(home.Root());
    const std::string empty = root + "/empty", files = root + "/files", links = root + "/links",
                      nested = root + "/nested";
    for (const std::string &folder : {empty, files, links, nested + "/inner"})
        fs::create_directories(folder);
    for (int i = 0; i < 50; i++)
        WriteFileBytes(files + "/" + std::to_string(i), "");
    WriteFileBytes(nested + "/a-file", "");
    fs::create_symlink(files + "/0", links + "/to-file");
    fs::create_symlink("nowhere", links + "/dangling");
    fs::create_symlink("loop", links + "/loop");

    EXPECT_FALSE(FolderScan::HasSubfolder(empty));
    EXPECT_FALSE(FolderScan::HasSubfolder(files));
    EXPECT_TRUE(FolderScan::HasSubfolder(nested));
    EXPECT_FALSE(FolderScan::HasSubfolder(links, true)) << "links to files or nowhere";

    fs::create_directory_symlink(nested, links + "/to-folder");
    EXPECT_FALSE(FolderScan::HasSubfolder(links));
    EXPECT_TRUE(FolderScan::HasSubfolder(links, true));
    EXPECT_FALSE(FolderScan::HasSubfolder(files + "/0"));
}
