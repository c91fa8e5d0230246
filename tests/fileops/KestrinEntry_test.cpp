#include "fileops/KestrinEntry.h"

#include "CopyTestSupport.h"
#include "UnprivilegedRerun.h"
#include "fileops/FileCopier.h"
#include "fileops/OverwritePolicy.h"
#include "platform/Node.h"

#include <sys/xattr.h>

using namespace kestrin;

namespace {

// Every xattr of a node, raw, as the kernel keeps it.
std::map<std::string, std::string> Xattrs(const std::string &path)
{
    std::string list(65536, '\0');
    list.resize(size_t(std::max<ssize_t>(llistxattr(path.c_str(), list.data(), list.size()), 0)));
    std::map<std::string, std::string> values;
    for (size_t start = 0; start < list.size(); start += strlen(list.c_str() + start) + 1) {
        std::string value(65536, '\0');
        const ssize_t size = lgetxattr(path.c_str(), list.c_str() + start, value.data(), 65536);
        values[list.c_str() + start] = value.substr(0, size_t(std::max<ssize_t>(size, 0)));
    }
    return values;
}

mode_t Mode(const std::string &path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

} // namespace

using KestrinEntryTest = CopyTest;

TEST_F(KestrinEntryTest, CopiesAFolderTreeWithAttributesModesAndLinks)
{
    fs::create_directory(src + "/sub");
    WriteFileBytes(src + "/a.txt", "alpha");
    platform::Node a(src + "/a.txt");
    const int32_t rating = 7;
    ASSERT_EQ(a.WriteAttr("Media:Rating", B_INT32_TYPE, 0, &rating, sizeof rating), 4);
    ASSERT_EQ(a.WriteAttr("Empty", B_RAW_TYPE, 0, "", 0), 0);
    ASSERT_EQ(lsetxattr((src + "/a.txt").c_str(), "user.comment", "note", 4, 0), 0);
    chmod((src + "/a.txt").c_str(), 0640);
    WriteFileBytes(src + "/ro.txt", "read only");
    ASSERT_EQ(lsetxattr((src + "/ro.txt").c_str(), "user.tag", "x", 1, 0), 0);
    chmod((src + "/ro.txt").c_str(), 0444);
    const std::string longName(255, 'n');
    WriteFileBytes(src + "/" + longName, "long");
    const std::string big = RandomBytes(1024 * 1024 + 3, 7);
    WriteFileBytes(src + "/sub/b.bin", big);
    fs::create_symlink("a.txt", src + "/rel");
    fs::create_symlink(home.Root() + "/missing", src + "/gone");
    fs::create_symlink("loop2", src + "/loop1");
    fs::create_symlink("loop1", src + "/loop2");

    OverwritePolicy overwrite(control);
    KestrinEntry entry(src);
    EXPECT_TRUE(entry.CopyTo(dest, &control, &overwrite));
    EXPECT_FALSE(entry.CopiedCompletely()) << "the looping links did not arrive";

    const std::string out = dest + "/src";
    for (const char *name : {"/a.txt", "/ro.txt"}) {
        EXPECT_EQ(ReadFileBytes(out + name), ReadFileBytes(src + name));
        EXPECT_EQ(Xattrs(out + name), Xattrs(src + name));
        EXPECT_EQ(Mode(out + name), Mode(src + name));
    }
    EXPECT_EQ(Xattrs(out + "/a.txt").size(), 3u);
    EXPECT_EQ(ReadFileBytes(out + "/" + longName), "long");
    EXPECT_EQ(ReadFileBytes(out + "/sub/b.bin"), big);

    // Links point where the originals end, absolutely; a vanished target is
    // still a target, a loop has none.
    EXPECT_EQ(fs::read_symlink(out + "/rel"), src + "/a.txt");
    EXPECT_EQ(fs::read_symlink(out + "/gone"), home.Root() + "/missing");
    EXPECT_FALSE(Exists(out + "/loop1") || Exists(out + "/loop2"));
    EXPECT_EQ(alerts.Count(), 0u) << "the progress window reports what failed";
    ASSERT_EQ(control.errors.size(), 2u);
    EXPECT_EQ(control.errors[0],
              (platform::Alert{"foo",
                               "You appear to be trying to copy a link that is broken.  This is "
                               "not supported in this version.",
                               {"OK"},
                               B_INFO_ALERT}));

    // The folder's files come before its sub-folders; progress per chunk,
    // the first no bigger than the copy buffer.
    ASSERT_EQ(control.startedTargets.size(), 4u);
    EXPECT_EQ(control.startedTargets.back(), out + "/sub/b.bin");
    int64_t sum = 0;
    int chunks = 0;
    for (const FakeCopyControl::Chunk &chunk : control.chunks) {
        if (chunk.leafName == "b.bin") {
            if (chunks++ == 0) {
                EXPECT_LE(chunk.bytes, int64_t(FileCopier::kBufferSize));
            }
            EXPECT_EQ(chunk.fileTotal, sum += chunk.bytes);
        }
    }
    EXPECT_GE(chunks, 2);
    EXPECT_EQ(sum, int64_t(big.size()));
}

TEST_F(KestrinEntryTest, AFolderCopiedIntoItselfStopsAtOneCopy)
{
    const std::string a = src + "/A";
    fs::create_directories(a + "/B");
    WriteFileBytes(a + "/f", "f");
    WriteFileBytes(a + "/B/h", "h");

    EXPECT_TRUE(KestrinEntry(a).CopyTo(a, nullptr, nullptr));
    EXPECT_EQ(ReadFileBytes(a + "/A/B/h"), "h");
    EXPECT_FALSE(Exists(a + "/A/A"));
    // Into a folder further down: the copy is not met again on the way.
    EXPECT_TRUE(KestrinEntry(a).CopyTo(a + "/B", nullptr, nullptr));
    EXPECT_EQ(ReadFileBytes(a + "/B/A/f"), "f");
    EXPECT_EQ(ReadFileBytes(a + "/B/A/B/h"), "h");
    EXPECT_FALSE(Exists(a + "/B/A/B/A"));

    // A genuine sub-folder that bears its parent's name is left out too.
    fs::create_directories(src + "/C/C");
    WriteFileBytes(src + "/C/y", "y");
    EXPECT_TRUE(KestrinEntry(src + "/C").CopyTo(dest, nullptr, nullptr));
    EXPECT_TRUE(Exists(dest + "/C/y"));
    EXPECT_FALSE(Exists(dest + "/C/C"));
}

TEST_F(KestrinEntryTest, RefusesCopiesThatCannotLand)
{
    fs::create_directory(src + "/A");
    WriteFileBytes(src + "/f", "new");
    KestrinEntry file(src + "/f");
    KestrinEntry folder(src + "/A");

    EXPECT_FALSE(file.CopyTo(src, nullptr, nullptr)) << "onto itself";
    EXPECT_EQ(ReadFileBytes(src + "/f"), "new");
    // An existing target, and nobody to ask.
    WriteFileBytes(dest + "/f", "old");
    EXPECT_FALSE(file.CopyTo(dest, nullptr, nullptr));
    EXPECT_EQ(ReadFileBytes(dest + "/f"), "old");
    // A file where the folder's copy would go.
    WriteFileBytes(dest + "/A", "in the way");
    EXPECT_FALSE(folder.CopyTo(dest, nullptr, nullptr));
    EXPECT_EQ(ReadFileBytes(dest + "/A"), "in the way");
    // A destination that vanished.
    fs::remove_all(dest);
    EXPECT_FALSE(file.CopyTo(dest, nullptr, nullptr));
    EXPECT_FALSE(folder.CopyTo(dest, nullptr, nullptr));
    EXPECT_FALSE(Exists(dest));
}

TEST_F(KestrinEntryTest, PermissionsKeepOutOnlyWhatTheyGuard)
{
    if (UnprivilegedRerun::Delegated())
        return;
    // A file that cannot be read is missing from its folder's copy; a folder
    // that cannot be written to receives nothing.
    fs::create_directory(src + "/A");
    WriteFileBytes(src + "/A/secret", "s");
    WriteFileBytes(src + "/A/open", "o");
    chmod((src + "/A/secret").c_str(), 0);
    KestrinEntry folder(src + "/A");
    EXPECT_TRUE(folder.CopyTo(dest, nullptr, nullptr));
    EXPECT_FALSE(folder.CopiedCompletely());
    EXPECT_TRUE(Exists(dest + "/A/open"));
    EXPECT_FALSE(Exists(dest + "/A/secret"));
    chmod(dest.c_str(), 0555);
    EXPECT_FALSE(KestrinEntry(src + "/A/open").CopyTo(dest, nullptr, nullptr));
    chmod(dest.c_str(), 0755);
    EXPECT_FALSE(Exists(dest + "/open"));
}

TEST_F(KestrinEntryTest, CopySizeAndShowError)
{
    fs::create_directories(src + "/sub");
    fs::create_directory(src + "/empty");
    WriteFileBytes(src + "/one", std::string(10, 'x'));
    WriteFileBytes(src + "/sub/two", std::string(5, 'x'));
    fs::create_symlink(src + "/one", src + "/link");
    KestrinEntry folder(src);
    EXPECT_EQ(folder.CopySize(), 15.0);
    EXPECT_EQ(folder.EntryCount(), 4) << "its own children, not what is inside sub";
    KestrinEntry link(src + "/link");
    EXPECT_EQ(link.CopySize(), 0.0);
    EXPECT_EQ(link.EntryCount(), 0);

    KestrinEntry::ShowError(B_FILE_EXISTS);
    KestrinEntry::ShowError(B_LINK_LIMIT);
    KestrinEntry::ShowError(B_DEVICE_FULL);
    ASSERT_EQ(alerts.Count(), 3u);
    EXPECT_EQ(alerts.Shown()[0], kFileExistsAlert);
    EXPECT_EQ(alerts.Shown()[1].text, "A cyclic loop has been detected in the file system.");
    EXPECT_EQ(alerts.Shown()[2].text, "Unknown Error.");
}
