#include "fileops/ArchiveContents.h"

#include "support/TempHome.h"
#include "support/TestArchives.h"

#include <map>

using namespace kestrin;

namespace {

// name -> "d" or "f" plus the size, for comparing listings.
std::map<std::string, std::string> Summary(const ArchiveContents::Result &result)
{
    std::map<std::string, std::string> summary;
    for (const ArchiveContents::Item &item : result.items)
        summary[item.name] = item.isFolder ? "d" : "f" + std::to_string(item.info.st_size);
    return summary;
}

const std::vector<TestMember> kNested = {
    {"readme.txt", "hello"},
    // "docs" exists only through its members; "src" has a member of its own.
    {"docs/guide/intro.txt", "intro"},
    {"docs/index.html", "<html/>"},
    FolderMember("src/"),
    {"src/main.c", "int main;"},
    LinkMember("latest", "src/main.c"),
};

} // namespace

TEST(ArchiveContents, ListsTheMembersDirectlyInsideASubPathOfZipAndTarGz)
{
    TempHome home;
    for (const std::string kind : {"zip", "tar.gz", "7z"}) {
        SCOPED_TRACE(kind);
        const std::string path = home.Root() + "/nested." + kind;
        WriteTestArchive(path, kind, kNested);

        const ArchiveContents::Result top = ArchiveContents::List(path, "");
        EXPECT_EQ(top.openStatus, B_OK);
        EXPECT_EQ(top.readStatus, B_ENTRY_NOT_FOUND);
        EXPECT_EQ(Summary(top),
                  (std::map<std::string, std::string>{{"readme.txt", "f5"},
                                                      {"docs", "d"},
                                                      {"src", "d"},
                                                      {"latest", "f0"}}));
        std::map<std::string, mode_t> modes;
        for (const ArchiveContents::Item &item : top.items)
            modes[item.name] = item.info.st_mode;
        EXPECT_TRUE(S_ISDIR(modes["src"]));
        EXPECT_TRUE(S_ISLNK(modes["latest"]));

        EXPECT_EQ(Summary(ArchiveContents::List(path, "docs/")),
                  (std::map<std::string, std::string>{{"guide", "d"}, {"index.html", "f7"}}));
        EXPECT_EQ(Summary(ArchiveContents::List(path, "docs/guide/")),
                  (std::map<std::string, std::string>{{"intro.txt", "f5"}}));
        EXPECT_TRUE(ArchiveContents::List(path, "nothing/").items.empty());
    }
}

TEST(ArchiveContents, ShowsHostileNamesWholeAtTheTopAndSaysWhatCannotBeRead)
{
    TempHome home;
    const std::string path = home.Root() + "/hostile.tar";
    WriteTestArchive(path,
                     "tar",
                     {{"../evil", "x"}, {"/etc/owned", "y"}, {"a/../../up", "z"}, {"ok", "k"}});
    const ArchiveContents::Result top = ArchiveContents::List(path, "");
    EXPECT_EQ(Summary(top),
              (std::map<std::string, std::string>{{"../evil", "f1"},
                                                  {"/etc/owned", "f1"},
                                                  {"a/../../up", "f1"},
                                                  {"ok", "f1"}}));
    // Not inside "a": that path never leads anywhere below it.
    EXPECT_TRUE(ArchiveContents::List(path, "a/").items.empty());

    const std::string notAnArchive = home.Root() + "/plain.txt";
    WriteFileBytes(notAnArchive, "just some words, not an archive at all\n");
    const ArchiveContents::Result refused = ArchiveContents::List(notAnArchive, "");
    EXPECT_NE(refused.openStatus, B_OK);
    EXPECT_NE(ArchiveContents::List(home.Root() + "/missing.zip", "").openStatus, B_OK);

    // Cut short, an archive lists what comes before the damage and says so.
    const std::string whole = home.Root() + "/whole.tar";
    WriteTestArchive(whole,
                     "tar",
                     {{"first", std::string(4096, 'a')}, {"second", std::string(100000, 'b')}});
    std::string bytes = *ReadFileBytes(whole);
    bytes.resize(4096 + 512 + 512 + 2000);
    const std::string cut = home.Root() + "/cut.tar";
    WriteFileBytes(cut, bytes);
    const ArchiveContents::Result damaged = ArchiveContents::List(cut, "");
    EXPECT_EQ(damaged.openStatus, B_OK);
    EXPECT_NE(damaged.readStatus, B_ENTRY_NOT_FOUND);
    EXPECT_FALSE(damaged.problem.empty());
    EXPECT_EQ(Summary(damaged).count("first"), 1u);
}

TEST(ArchiveContents, AnArchiveOfDotListsItsMembersUnderTheirOwnNames)
{
    // As `tar czf x.tar.gz .` makes it: the folder itself as "./", every
    // member below it.
    TempHome home;
    for (const std::string kind : {"tar.gz", "zip"}) {
        SCOPED_TRACE(kind);
        const std::string path = home.Root() + "/dot." + kind;
        WriteTestArchive(path,
                         kind,
                         {FolderMember("./"),
                          {"./a", "A"},
                          FolderMember("./sub/"),
                          {"./sub/b", "BB"},
                          {"././c", "CCC"},
                          FolderMember(".")});
        EXPECT_EQ(Summary(ArchiveContents::List(path, "")),
                  (std::map<std::string, std::string>{{"a", "f1"}, {"sub", "d"}, {"c", "f3"}}));
        EXPECT_EQ(Summary(ArchiveContents::List(path, "sub/")),
                  (std::map<std::string, std::string>{{"b", "f2"}}));
    }
}
