#include "app/SideFile.h"

#include "TempHome.h"
#include "platform/File.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

using namespace kestrin;

namespace {

class SideFileTest : public ::testing::Test
{
protected:
    std::string Folder() const { return fHome.ConfigDir() + "/Kestrin"; }
    std::string Path() const { return Folder() + "/Kestrin.more"; }
    std::string Bytes() const { return ReadFileBytes(Path()).value_or("(missing)"); }

    TempHome fHome;
};

} // namespace

TEST_F(SideFileTest, ListsKeepTheirOrderAndPlaceAndUnknownKeysSurviveARewrite)
{
    std::filesystem::create_directories(Folder());
    WriteFileBytes(Path(), "Older=kept as it was\nHistory=/a\nHistory=/b\nLast=x\nbroken line\n=no key\n");
    SideFile file = SideFile::Read("Kestrin.more");
    EXPECT_EQ(file.GetAll("History"), (std::vector<std::string>{"/a", "/b"}));
    EXPECT_EQ(file.Get("History"), "/a");
    EXPECT_EQ(file.Keys(), (std::vector<std::string>{"Older", "History", "Last"}));

    // A value holding a line end would come back as a line of its own.
    file.SetAll("History", {"/c", "/with\nline end", "/a=b"});
    file.Set("New", "1");
    file.Set("Last", "");
    ASSERT_TRUE(file.Write());
    EXPECT_EQ(Bytes(), "Older=kept as it was\nHistory=/c\nHistory=/a=b\nNew=1\n");
    EXPECT_EQ(SideFile::Read("Kestrin.more").GetAll("History"),
              (std::vector<std::string>{"/c", "/a=b"}));

    struct stat info;
    ASSERT_EQ(stat(Path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    size_t entries = 0;
    for ([[maybe_unused]] const auto &each : std::filesystem::directory_iterator(Folder()))
        entries++;
    EXPECT_EQ(entries, 1u) << "no temporary file is left beside it";
}

TEST_F(SideFileTest, NothingLeftToKeepRemovesTheFileAndAMissingFileReadsEmpty)
{
    SideFile file = SideFile::Read("Kestrin.more");
    EXPECT_TRUE(file.Empty());
    file.Set("Hidden.0", "1");
    ASSERT_TRUE(file.Write());
    EXPECT_EQ(Bytes(), "Hidden.0=1\n");
    file.SetAll("Hidden.0", {});
    ASSERT_TRUE(file.Write());
    EXPECT_FALSE(ReadFileBytes(Path()));
}
