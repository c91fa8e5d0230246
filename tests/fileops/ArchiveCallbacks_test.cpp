#include "fileops/ArchiveCallbacks.h"

#include "CopyTestSupport.h"

using namespace kestrin;

TEST(ArchiveCallbacks, ReportPositionsAndMemberToTheControlAndAnswerStop)
{
    FakeCopyControl control;
    EXPECT_EQ(UnZipCallback(40, 70, "readme.txt", &control), 1);
    EXPECT_EQ(ZipCallback(60, 20, "docs/deep/notes.txt", &control), 1);
    EXPECT_EQ(UnZipCallback(70, 5, "a/b", &control), 1);
    // -1 and no control report nothing and go on.
    EXPECT_EQ(ZipCallback(-1, 90, "other/x", &control), 1);
    EXPECT_EQ(UnZipCallback(90, 90, "other/x", nullptr), 1);
    EXPECT_EQ(control.archiveSteps,
              (std::vector<FakeCopyControl::ArchiveStep>{
                  {40, 70, "readme.txt", "readme.txt"}, // a name without a folder is shown whole
                  {60, 20, "notes.txt", "docs/deep/notes.txt"},
                  {70, 5, "b", "a/b"},
              }));

    // Once the user stopped, the routine is told to end; the step still shows.
    control.stopAfterChunks = 0;
    EXPECT_EQ(ZipCallback(80, 10, "c/d", &control), 0);
    EXPECT_EQ(UnZipCallback(90, 10, "c/e", &control), 0);
    EXPECT_EQ(control.archiveSteps.size(), 5u);
}
