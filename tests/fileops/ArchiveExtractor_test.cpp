#include "fileops/ArchiveExtractor.h"

#include "CopyTestSupport.h"
#include "fileops/ArchiveContents.h"
#include "support/SmallVolume.h"
#include "support/TestArchives.h"

#include <sys/sysmacros.h>
#include <unistd.h>

using namespace kestrin;

namespace {

struct stat Stat(const std::string &path)
{
    struct stat info = {};
    EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
    return info;
}

std::string LinkTarget(const std::string &path)
{
    std::error_code error;
    return fs::read_symlink(path, error).string();
}

const std::vector<TestMember> kTree = {
    {"readme.txt", "hello", TestMember::File, 0640, 1200000000},
    FolderMember("docs/", 0750),
    {"docs/guide/intro.txt", std::string(300000, 'i'), TestMember::File, 0600, 1300000000},
    {"docs/index.html", "<html/>"},
    {"src/main.c", "int main;", TestMember::File, 0755},
    LinkMember("latest", "src/main.c"),
};

using ArchiveExtractorTest = CopyTest;

TEST_F(ArchiveExtractorTest, UnpacksTheChosenMembersWithModesTimesAndLinks)
{
    for (const std::string kind : {"zip", "tar.gz", "7z"}) {
        SCOPED_TRACE(kind);
        const std::string archive = src + "/tree." + kind;
        const std::string into = dest + "/" + kind;
        fs::create_directory(into);
        WriteTestArchive(archive, kind, kTree);
        Run(Unpack(archive, "", {"docs"}, {"readme.txt", "latest"}), into);

        EXPECT_EQ(ReadFileBytes(into + "/readme.txt"), "hello");
        EXPECT_EQ(Stat(into + "/readme.txt").st_mode & 07777, 0640u);
        EXPECT_EQ(Stat(into + "/readme.txt").st_mtime, 1200000000);
        EXPECT_EQ(ReadFileBytes(into + "/docs/guide/intro.txt"), std::string(300000, 'i'));
        EXPECT_EQ(Stat(into + "/docs/guide/intro.txt").st_mode & 07777, 0600u);
        EXPECT_EQ(Stat(into + "/docs/guide/intro.txt").st_mtime, 1300000000);
        EXPECT_EQ(ReadFileBytes(into + "/docs/index.html"), "<html/>");
        EXPECT_EQ(Stat(into + "/docs").st_mode & 07777, 0750u);
        EXPECT_EQ(LinkTarget(into + "/latest"), "src/main.c");
        EXPECT_FALSE(Exists(into + "/src")); // not asked for
        EXPECT_TRUE(alerts.Shown().empty());
        EXPECT_TRUE(control.errors.empty());
        EXPECT_TRUE(std::any_of(control.archiveSteps.begin(),
                                control.archiveSteps.end(),
                                [](const FakeCopyControl::ArchiveStep &step) {
                                    return step.leafName == "intro.txt"
                                           && step.memberName == "docs/guide/intro.txt";
                                }));

        // From inside a folder, its rows land at the top of the target.
        const std::string inner = into + "/inner";
        fs::create_directory(inner);
        Run(Unpack(archive, "docs/", {"guide"}, {}), inner);
        EXPECT_EQ(ReadFileBytes(inner + "/guide/intro.txt"), std::string(300000, 'i'));
        EXPECT_FALSE(Exists(inner + "/index.html"));
    }
}

TEST_F(ArchiveExtractorTest, RefusesMembersThatWouldLandOutsideTheTarget)
{
    const std::string outside = home.Root() + "/outside";
    fs::create_directory(outside);
    const std::string archive = src + "/hostile.tar";
    WriteTestArchive(archive,
                     "tar",
                     {{"../evil", "x"},
                      {"a/../../up", "y"},
                      {"a/fine", "fine"},
                      LinkMember("esc", outside),
                      {"esc/planted", "z"},
                      {"/" + outside.substr(1) + "/absolute", "w"}});
    Run(Unpack(archive, "", {"a", "esc"}, {"../evil", "/" + outside.substr(1) + "/absolute"}), dest);

    EXPECT_EQ(ReadFileBytes(dest + "/a/fine"), "fine");
    EXPECT_FALSE(Exists(home.Root() + "/evil"));
    EXPECT_FALSE(Exists(home.Root() + "/up"));
    EXPECT_FALSE(Exists(outside + "/planted"));
    EXPECT_FALSE(Exists(outside + "/absolute"));
    EXPECT_TRUE(fs::is_empty(outside));
    // The link itself is made, pointing where it points; nothing goes through it.
    EXPECT_EQ(LinkTarget(dest + "/esc"), outside);
    // One alert for them all, naming each.
    ASSERT_EQ(control.errors.size(), 1u);
    const std::string &text = control.errors[0].text;
    EXPECT_EQ(text.substr(0, text.find('\n')), "Kestrin did not unpack 4 members:");
    for (const char *name : {"../evil", "a/../../up", "esc/planted", "/absolute"})
        EXPECT_NE(text.find(name), std::string::npos) << name;
    EXPECT_EQ(text.find("more."), std::string::npos);
}

TEST_F(ArchiveExtractorTest, DeviceNodesAndPipesAreNeverMade)
{
    // Run by root, as the suite is in CI, libarchive would make them all.
    const std::string archive = src + "/nodes.tar";
    WriteTestArchive(archive,
                     "tar",
                     {NodeMember("mem", S_IFCHR, makedev(1, 1)),
                      NodeMember("disk", S_IFBLK, makedev(8, 0)),
                      NodeMember("pipe", S_IFIFO),
                      {"dev/kept", "kept"},
                      NodeMember("dev/null", S_IFCHR, makedev(1, 3))});
    Run(Unpack(archive, "", {"dev"}, {"mem", "disk", "pipe"}), dest);

    EXPECT_EQ(ReadFileBytes(dest + "/dev/kept"), "kept");
    for (const char *name : {"mem", "disk", "pipe", "dev/null"}) {
        struct stat info;
        EXPECT_NE(lstat((dest + "/" + name).c_str(), &info), 0) << name;
    }
    ASSERT_EQ(control.errors.size(), 1u);
    const std::string &text = control.errors[0].text;
    EXPECT_EQ(text.substr(0, text.find('\n')), "Kestrin did not unpack 4 members:");
    EXPECT_NE(text.find("\"mem\": it is a device, a pipe or a socket"), std::string::npos) << text;
    EXPECT_NE(text.find("\"dev/null\""), std::string::npos) << text;

    // Alone, a refused member is told of as before.
    Run(Unpack(archive, "", {}, {"mem"}), dest);
    ASSERT_EQ(control.errors.size(), 2u);
    EXPECT_EQ(control.errors[1].text,
              "Kestrin did not unpack \"mem\": it is a device, a pipe or a socket, not a file, "
              "a folder or a link.");
}

TEST_F(ArchiveExtractorTest, AHundredThousandRefusedMembersGiveOneAlert)
{
    constexpr int kCount = 100000;
    std::vector<TestMember> members;
    members.reserve(kCount + 1);
    for (int i = 0; i < kCount; i++)
        members.push_back({"../escape-" + std::to_string(i), ""});
    members.push_back({"kept", "kept"});
    const std::string archive = src + "/many.zip";
    WriteTestArchive(archive, "zip", members);
    // Every row marked, as "+" and F5 ask for them.
    std::vector<std::string> rows;
    for (const TestMember &member : members)
        rows.push_back(member.path);
    Run(Unpack(archive, "", {}, rows), dest);

    EXPECT_EQ(ReadFileBytes(dest + "/kept"), "kept");
    EXPECT_FALSE(Exists(home.Root() + "/escape-0"));
    EXPECT_FALSE(Exists(home.Root() + "/escape-99999"));
    ASSERT_EQ(control.errors.size(), 1u);
    const std::string &text = control.errors[0].text;
    EXPECT_EQ(control.errors[0].title, "Unpacking");
    EXPECT_EQ(text.substr(0, text.find('\n')), "Kestrin did not unpack 100000 members:");
    for (int i = 0; i < 5; i++)
        EXPECT_NE(text.find("\"../escape-" + std::to_string(i) + "\""), std::string::npos) << i;
    EXPECT_EQ(text.find("\"../escape-5\""), std::string::npos);
    EXPECT_EQ(text.substr(text.rfind('\n') + 1), "and 99995 more.");
}

TEST_F(ArchiveExtractorTest, AnArchiveOfDotUnpacksWholeWithEveryRowMarked)
{
    const std::string archive = src + "/dot.tar.gz";
    WriteTestArchive(archive,
                     "tar.gz",
                     {FolderMember("./"), {"./a", "A"}, FolderMember("./sub/"), {"./sub/b", "B"}});
    std::vector<std::string> folders, files;
    for (const ArchiveContents::Item &item : ArchiveContents::List(archive, "").items)
        (item.isFolder ? folders : files).push_back(item.name);
    Run(Unpack(archive, "", folders, files), dest);

    EXPECT_EQ(ReadFileBytes(dest + "/a"), "A");
    EXPECT_EQ(ReadFileBytes(dest + "/sub/b"), "B");
    EXPECT_TRUE(control.errors.empty()) << control.errors[0].text;
}

TEST_F(ArchiveExtractorTest, AnExistingTargetIsAskedAbout)
{
    const std::string archive = src + "/tree.zip";
    WriteTestArchive(archive, "zip", kTree);
    WriteFileBytes(dest + "/readme.txt", "old");

    control.answers = {kSkip};
    Run(Unpack(archive, "", {}, {"readme.txt"}), dest);
    EXPECT_EQ(ReadFileBytes(dest + "/readme.txt"), "old");
    ASSERT_EQ(control.questions.size(), 1u);
    EXPECT_EQ(control.questions[0].overwriteLine, archive + "/readme.txt");
    EXPECT_EQ(control.questions[0].withFileLine, dest + "/readme.txt");
    EXPECT_EQ(control.questions[0].thirdLine.substr(0, 7), "3 Bytes");
    EXPECT_EQ(control.questions[0].fourthLine.substr(0, 7), "5 Bytes");

    control.answers = {kOverwrite};
    Run(Unpack(archive, "", {}, {"readme.txt"}), dest);
    EXPECT_EQ(ReadFileBytes(dest + "/readme.txt"), "hello");
    EXPECT_EQ(control.questions.size(), 2u);
}

// Stops once the first block of data is written.
class StopAtFirstBlock : public FakeCopyControl
{
public:
    bool StopRequested() override { return !archiveSteps.empty(); }
};

TEST_F(ArchiveExtractorTest, StopAndDamageLeaveNoPartialFile)
{
    const std::string big = RandomBytes(3 << 20, 8);
    const std::string archive = src + "/big.tar.gz";
    WriteTestArchive(archive, "tar.gz", {{"big.bin", big}, {"after.txt", "after"}});
    StopAtFirstBlock stopping;
    ArchiveExtractor(Unpack(archive, "", {}, {"big.bin", "after.txt"}), dest, stopping).Run();
    EXPECT_EQ(stopping.archiveSteps.size(), 1u);
    EXPECT_FALSE(Exists(dest + "/big.bin"));
    EXPECT_FALSE(Exists(dest + "/after.txt"));

    // Cut in the middle of its second member, an archive gives its first.
    const std::string whole = src + "/whole.tar";
    WriteTestArchive(whole, "tar", {{"first", "one"}, {"second", big}});
    std::string bytes = *ReadFileBytes(whole);
    bytes.resize(1024 + 512 + 100000);
    const std::string cut = src + "/cut.tar";
    WriteFileBytes(cut, bytes);
    Run(Unpack(cut, "", {}, {"first", "second"}), dest);
    EXPECT_EQ(ReadFileBytes(dest + "/first"), "one");
    EXPECT_FALSE(Exists(dest + "/second"));
    ASSERT_EQ(control.errors.size(), 1u);
    EXPECT_NE(control.errors[0].text.find("second"), std::string::npos);
}

// A tar whose one member claims `size` bytes (in the base-256 form that sizes
// past 8 GiB take) and holds none of them.
void WriteBombTar(const std::string &path, uint64_t size)
{
    WriteTestArchive(path, "tar", {{"bomb", "x"}});
    std::string bytes = *ReadFileBytes(path);
    bytes[124] = char(0x80);
    for (int i = 0; i < 11; i++)
        bytes[135 - i] = char(i < 8 ? (size >> (8 * i)) & 0xff : 0);
    std::fill(bytes.begin() + 148, bytes.begin() + 156, ' ');
    unsigned sum = 0;
    for (int i = 0; i < 512; i++)
        sum += static_cast<unsigned char>(bytes[i]);
    snprintf(&bytes[148], 8, "%06o", sum);
    WriteFileBytes(path, bytes);
}

TEST_F(ArchiveExtractorTest, EncryptedMembersAndBombsAreRefused)
{
    const std::string locked = src + "/locked.zip";
    WriteTestArchive(locked, "zip", {{"secret.txt", "hidden words"}}, "password");
    Run(Unpack(locked, "", {}, {"secret.txt"}), dest);
    EXPECT_FALSE(Exists(dest + "/secret.txt"));
    ASSERT_EQ(control.errors.size(), 1u);
    EXPECT_EQ(control.errors[0].text, "Kestrin did not unpack \"secret.txt\": it is encrypted.");

    // The space a member claims is checked before any of it is written.
    const std::string bomb = src + "/bomb.tar";
    WriteBombTar(bomb, uint64_t(1) << 60);
    Run(Unpack(bomb, "", {}, {"bomb"}), dest);
    EXPECT_FALSE(Exists(dest + "/bomb"));
    ASSERT_EQ(control.errors.size(), 2u);
    EXPECT_EQ(control.errors[1].text, "Cannot Copy file.\nInsufficient space on destination.");
}

// A zip member whose size its local header leaves out, told only after the
// data (as a zip written to a pipe has it).
void WriteStreamedZip(const std::string &path, const std::string &name, const std::string &data)
{
    struct archive *out = archive_write_new();
    archive_write_set_format_zip(out);
    ASSERT_EQ(archive_write_open_filename(out, path.c_str()), ARCHIVE_OK);
    struct archive_entry *entry = archive_entry_new();
    archive_entry_set_pathname(entry, name.c_str());
    archive_entry_set_mode(entry, S_IFREG | 0644);
    archive_entry_unset_size(entry);
    ASSERT_EQ(archive_write_header(out, entry), ARCHIVE_OK);
    ASSERT_EQ(archive_write_data(out, data.data(), data.size()), la_ssize_t(data.size()));
    archive_entry_free(entry);
    ASSERT_EQ(archive_write_close(out), ARCHIVE_OK);
    archive_write_free(out);
}

// Unpacking onto a volume that fills up: what fits is unpacked whole, the
// member that does not fit leaves no partial file (its size is known before
// its data, from the zip's directory where its header leaves it out), and
// the archive is untouched.
TEST_F(ArchiveExtractorTest, AFullDiskLeavesNoPartialMember)
{
    SmallVolume volume(home.Root() + "/small");
    if (!volume.Mount())
        GTEST_SKIP() << SmallVolume::kCannotMount;
    const std::string big = RandomBytes(2 << 20, 7);
    const std::string archive = src + "/both.tar.gz";
    WriteTestArchive(archive, "tar.gz", {{"fits.txt", RandomBytes(300 << 10, 8)}, {"big.bin", big}});
    const std::string archiveBytes = *ReadFileBytes(archive);
    Run(Unpack(archive, "", {}, {"fits.txt", "big.bin"}), volume.Path());
    EXPECT_EQ(ReadFileBytes(volume.Path() + "/fits.txt")->size(), size_t(300 << 10));
    EXPECT_FALSE(Exists(volume.Path() + "/big.bin"));
    ASSERT_EQ(control.errors.size(), 1u);
    EXPECT_EQ(control.errors[0].text, "Cannot Copy file.\nInsufficient space on destination.");
    EXPECT_EQ(ReadFileBytes(archive), archiveBytes);

    fs::remove(volume.Path() + "/fits.txt");
    const std::string streamed = src + "/streamed.zip";
    WriteStreamedZip(streamed, "big.bin", big);
    Run(Unpack(streamed, "", {}, {"big.bin"}), volume.Path());
    EXPECT_TRUE(fs::is_empty(volume.Path()));
    ASSERT_EQ(control.errors.size(), 2u);
    EXPECT_EQ(control.errors[1], control.errors[0]);
}

} // namespace
