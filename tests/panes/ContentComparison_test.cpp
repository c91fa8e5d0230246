#include "PaneCoreSupport.h"

#include "panes/ContentComparison.h"

using kestrin::ContentComparison;
using kestrin::FolderComparison;

namespace {

// Pairs of real files of the same size: only those whose bytes differ
// anywhere (in the first block, past it, at the very end) are named; a file
// gone from one side since it was listed is named too.
TEST(ContentComparisonTest, NamesThePairsWhoseBytesDiffer)
{
    const TempHome home;
    const std::string left = home.Root() + "/left", right = home.Root() + "/right";
    fs::create_directories(left);
    fs::create_directories(right);
    const std::string big(700000, 'b');
    std::string lastByte = big;
    lastByte.back() = 'c';
    std::string secondBlock = big;
    secondBlock[300000] = 'x';
    struct Pair
    {
        const char *name;
        std::string left, right;
        bool differs;
    };
    const Pair pairs[] = {
        {"same", big, big, false},
        {"empty", "", "", false},
        {"first", "abc", "xbc", true},
        {"lastbyte", big, lastByte, true},
        {"secondblock", big, secondBlock, true},
        {"small", "hello", "hello", false},
    };
    std::vector<FolderComparison::Entry> files;
    std::vector<std::string> expected;
    int64_t total = 0;
    for (const Pair &pair : pairs) {
        WriteFileBytes(left + "/" + pair.name, pair.left);
        WriteFileBytes(right + "/" + pair.name, pair.right);
        files.push_back({pair.name, false, int64_t(pair.left.size()), 0});
        total += int64_t(pair.left.size());
        if (pair.differs)
            expected.push_back(pair.name);
    }
    WriteFileBytes(left + "/gone", "data");
    files.push_back({"gone", false, 4, 0});
    total += 4;
    expected.push_back("gone");

    ContentComparison::Progress progress;
    const std::atomic<bool> stop{false};
    EXPECT_EQ(ContentComparison::Differing(left, right, files, progress, stop), expected);
    EXPECT_EQ(progress.bytes.load(), total);
    EXPECT_EQ(progress.files.load(), int32_t(files.size()));

    // Asked to stop, it names nothing it did not finish.
    const std::atomic<bool> stopped{true};
    EXPECT_TRUE(ContentComparison::Differing(left, right, files, progress, stopped).empty());
}

} // namespace
