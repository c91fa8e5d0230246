#include "PaneCoreSupport.h"
#include "support/TestArchives.h"

#include "ftp/FtpSession.h"
#include "panes/ArchiveSource.h"
#include "panes/TypedPlace.h"

using kestrin::TypedPlace;
using Kind = kestrin::TypedPlace::Kind;

namespace {

class TypedPlaceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        fs::create_directories(Home() + "/work/sub folder/deep");
        fs::create_directories(Home() + "/other");
        WriteFileBytes(Home() + "/work/notes.txt", "text");
        WriteTestArchive(Home() + "/work/a.zip", "zip", {{"sub/inner.txt", "x"}});
        fs::create_directory_symlink(Home() + "/other", Home() + "/work/link");
        fs::create_directories(kestrin::FtpSession::Folder());
        WriteFileBytes(kestrin::FtpSession::Folder() + "/site.ftp", "");
        fHome.SetEnv("KESTRIN_PLACE", Home() + "/other");
    }

    std::string Home() const { return fHome.Home(); }
    std::string Work() const { return Home() + "/work"; }

    TempHome fHome;
};

} // namespace

TEST_F(TypedPlaceTest, ExpandsWhatIsTypedOrPastedIntoAnAbsolutePath)
{
    struct Row
    {
        std::string typed;
        std::string expanded;
    };
    const std::vector<Row> rows = {
        {"", ""},
        {" \n\t", ""},
        {"/", "/"},
        {"~", Home()},
        {"~/work", Work()},
        {"~user/x", Work() + "/~user/x"},
        {"$HOME/work", Work()},
        {"${HOME}/work/", Work() + "/"},
        {"$KESTRIN_PLACE/x", Home() + "/other/x"},
        {"$KESTRIN_UNSET_NAME/x", Work() + "/$KESTRIN_UNSET_NAME/x"},
        {"${HOME/x", Work() + "/${HOME/x"},
        {"cost$", Work() + "/cost$"},
        {"sub folder/deep", Work() + "/sub folder/deep"},
        {"..", Home()},
        {"./deep/../x//y/", Work() + "/x/y/"},
        {"  " + Work() + "/notes.txt\n", Work() + "/notes.txt"},
        {"\n\n" + Work() + "\r\n/etc\n", Work()},
        {"'" + Work() + "/sub folder'", Work() + "/sub folder"},
        {"file://" + Work() + "/sub%20folder", Work() + "/sub folder"},
        {"file:///tmp/$HOME", "/tmp/$HOME"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(TypedPlace::Expand(row.typed, Work()), row.expanded) << "typed: " << row.typed;
}

TEST_F(TypedPlaceTest, ReadsWhichPlaceAPathLeadsToAndWhatIsMissing)
{
    struct Row
    {
        std::string typed;
        Kind kind;
        std::string path;
        std::string inside;
        std::string problem;
    };
    const std::vector<Row> rows = {
        {"", Kind::Nothing, "", "", ""},
        {"~/work", Kind::Folder, Work(), "", ""},
        {"sub folder/deep/", Kind::Folder, Work() + "/sub folder/deep", "", ""},
        {"link", Kind::Folder, Work() + "/link", "", ""},
        {"notes.txt", Kind::File, Work(), "notes.txt", ""},
        {"file://" + Work() + "/notes.txt\n", Kind::File, Work(), "notes.txt", ""},
        {"a.zip", Kind::File, Work(), "a.zip", ""},
        {"a.zip/", Kind::Archive, Work() + "/a.zip", "", ""},
        {"a.zip/sub", Kind::Archive, Work() + "/a.zip", "sub/", ""},
        {"site", Kind::Session, "site.ftp", "", ""},
        {"link/site", Kind::Missing, "", "", "\"site\" not found in " + Work() + "/link"},
        {"sub folder/gone/deeper", Kind::Missing, "", "", "\"gone\" not found in " + Work() + "/sub folder"},
        {"notes.txt/", Kind::Missing, "", "", "\"notes.txt\" is a file, not a folder"},
        {"notes.txt/x", Kind::Missing, "", "", "\"notes.txt\" is a file, not a folder"},
    };
    for (const Row &row : rows) {
        const TypedPlace place = TypedPlace::Read(row.typed, Work());
        EXPECT_EQ(place.kind, row.kind) << "typed: " << row.typed;
        EXPECT_EQ(place.Problem(), row.problem) << "typed: " << row.typed;
        if (row.kind != Kind::Missing) {
            EXPECT_EQ(place.path, row.path) << "typed: " << row.typed;
            EXPECT_EQ(place.inside, row.inside) << "typed: " << row.typed;
        }
    }

    // The missing part is marked from where the first missing name starts.
    const TypedPlace gone = TypedPlace::Read("sub folder/gone/deeper", Work());
    EXPECT_EQ(gone.path, Work() + "/sub folder/gone/deeper");
    EXPECT_EQ(gone.path.substr(gone.MissingAt()), "gone/deeper");
    const TypedPlace top = TypedPlace::Read("/kestrin-no-such-top", Work());
    EXPECT_EQ(top.path.substr(top.MissingAt()), "kestrin-no-such-top");
}

TEST_F(TypedPlaceTest, MakesThePlaceToShowAndListsOnlySubFolders)
{
    std::string select;
    const auto file = TypedPlace::Read("notes.txt", Work()).Source(Work(), &select);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->Folder(), Work());
    EXPECT_EQ(select, "notes.txt");

    // An archive's folder leads back to the folder holding the archive.
    const auto inside = TypedPlace::Read(Work() + "/a.zip/sub", Home()).Source(Home(), nullptr);
    ASSERT_NE(inside, nullptr);
    EXPECT_EQ(inside->PathText(), Work() + "/a.zip/sub/");
    EXPECT_EQ(inside->Folder(), Work());
    std::string up;
    ASSERT_NE(inside->Parent(&up), nullptr);
    EXPECT_EQ(TypedPlace::Read(inside->PathText(), "/").kind, Kind::Archive);

    EXPECT_EQ(TypedPlace::Read("gone", Work()).Source(Work(), nullptr), nullptr);

    const std::atomic<bool> go{false};
    EXPECT_EQ(TypedPlace::FolderNames(Work(), go),
              (std::vector<std::string>{"link", "sub folder"}));
    EXPECT_TRUE(TypedPlace::FolderNames(Work() + "/gone", go).empty());
}
