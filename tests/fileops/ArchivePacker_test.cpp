#include "fileops/ArchivePacker.h"

#include "CopyTestSupport.h"
#include "fileops/ArchiveContents.h"
#include "fileops/ArchiveExtractor.h"
#include "support/SmallVolume.h"

using namespace kestrin;

namespace {

platform::Message Pack(const std::vector<std::string> &paths, const std::string &from)
{
    platform::Message request = Request(kMsgPackRequest, paths, "Pack");
    request.AddString("From", from);
    return request;
}

std::vector<std::string> Names(const std::string &folder)
{
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// Every entry below `root`: its kind, mode, time and content or link target.
std::map<std::string, std::string> Tree(const std::string &root)
{
    std::map<std::string, std::string> tree;
    for (const auto &entry : fs::recursive_directory_iterator(root)) {
        const std::string path = entry.path().string();
        struct stat info;
        lstat(path.c_str(), &info);
        std::string facts = std::to_string(info.st_mode) + " ";
        if (S_ISLNK(info.st_mode))
            facts += fs::read_symlink(path).string();
        else if (S_ISREG(info.st_mode))
            facts += std::to_string(info.st_mtime) + " " + *ReadFileBytes(path);
        tree[path.substr(root.size())] = facts;
    }
    return tree;
}

class StopAtFirstChunk : public FakeCopyControl
{
public:
    bool StopRequested() override { return archiveSteps.size() >= 2; }
};

using ArchivePackerTest = CopyTest;

TEST_F(ArchivePackerTest, PackedEntriesComeBackByteForByteWithModesTimesAndLinks)
{
    fs::create_directories(src + "/tree/deep");
    WriteFileBytes(src + "/tree/a.txt", "alpha");
    WriteFileBytes(src + "/tree/deep/b.bin", std::string(700000, 'b'));
    WriteFileBytes(src + "/solo.txt", "solo");
    fs::create_symlink("a.txt", src + "/tree/ln");
    // Names and contents that trip packers up: no bytes, every byte value
    // over several read blocks, a name that is not UTF-8, a link to nowhere.
    WriteFileBytes(src + "/tree/empty", "");
    WriteFileBytes(src + "/tree/deep/bytes", RandomBytes(300 * 1024 + 3, 1));
    WriteFileBytes(src + "/tree/raw \xff name", "raw");
    fs::create_symlink("nowhere at all", src + "/tree/dangling");
    chmod((src + "/tree/a.txt").c_str(), 0640);
    chmod((src + "/tree/deep/b.bin").c_str(), 0755);
    chmod((src + "/tree/deep").c_str(), 0750);
    SetModified(src + "/tree/a.txt", 1100000000);
    SetModified(src + "/tree/deep/b.bin", 1200000001);

    Run(Pack({src + "/tree", src + "/solo.txt"}, src), dest);
    // Named after the folder the entries come from, and nothing else left.
    EXPECT_EQ(Names(dest), std::vector<std::string>{"src.zip"});
    EXPECT_TRUE(control.errors.empty());
    EXPECT_FALSE(control.archiveSteps.empty());
    const ArchiveContents::Result listed = ArchiveContents::List(dest + "/src.zip", "");
    ASSERT_EQ(listed.items.size(), 2u);

    const std::string out = home.Root() + "/out";
    fs::create_directory(out);
    Run(Unpack(dest + "/src.zip", "", {"tree"}, {"solo.txt"}), out);
    EXPECT_EQ(Tree(out), Tree(src));
    // QTemporaryDir cannot remove names that are not UTF-8.
    fs::remove(src + "/tree/raw \xff name");
    fs::remove(out + "/tree/raw \xff name");

    // One entry names the archive.
    Run(Pack({src + "/solo.txt"}, src), dest);
    EXPECT_EQ(Names(dest), (std::vector<std::string>{"solo.txt.zip", "src.zip"}));
}

TEST_F(ArchivePackerTest, AnExistingArchiveIsAskedAboutAndAStoppedOrFailedPackLeavesNothing)
{
    WriteFileBytes(src + "/big", std::string(2 << 20, 'x'));
    WriteFileBytes(dest + "/big.zip", "an older archive");

    control.answers = {kSkip};
    Run(Pack({src + "/big"}, src), dest);
    ASSERT_EQ(control.questions.size(), 1u);
    EXPECT_EQ(control.questions[0].withFileLine, dest + "/big.zip");
    EXPECT_EQ(ReadFileBytes(dest + "/big.zip"), "an older archive");

    StopAtFirstChunk stopping;
    stopping.answers = {kOverwrite};
    CopyEngine(Pack({src + "/big"}, src), dest, stopping).Run();
    EXPECT_EQ(stopping.questions.size(), 1u);
    EXPECT_EQ(ReadFileBytes(dest + "/big.zip"), "an older archive");
    EXPECT_EQ(Names(dest), std::vector<std::string>{"big.zip"});

    // An entry gone by the time it is packed fails the whole archive.
    WriteFileBytes(src + "/gone", "soon gone");
    const platform::Message request = Pack({src + "/big", src + "/gone"}, src);
    fs::remove(src + "/gone");
    Run(request, dest);
    EXPECT_EQ(Names(dest), std::vector<std::string>{"big.zip"});
    ASSERT_EQ(control.errors.size(), 1u);
    EXPECT_NE(control.errors[0].text.find("gone"), std::string::npos);
}

// A zip that outgrows its volume: the temporary file is removed, nothing
// takes the archive's name, and the packed entries are untouched.
TEST_F(ArchivePackerTest, AFullDiskLeavesNoArchiveAndNoTemporaryFile)
{
    SmallVolume volume(home.Root() + "/small");
    if (!volume.Mount())
        GTEST_SKIP() << SmallVolume::kCannotMount;
    const std::string noise = RandomBytes(2 << 20, 9);
    WriteFileBytes(src + "/noise", noise);
    Run(Pack({src + "/noise"}, src), volume.Path());
    EXPECT_TRUE(fs::is_empty(volume.Path())) << Names(volume.Path())[0];
    ASSERT_EQ(control.errors.size(), 1u);
    EXPECT_EQ(control.errors[0].text,
              "Kestrin could not pack \"" + volume.Path()
                  + "/noise.zip\": cannot write the archive: No space left on device.");
    EXPECT_EQ(ReadFileBytes(src + "/noise"), noise);
}

} // namespace
