#include "app/SideFile.h"
#include "panes/DesktopBookmarks.h"
#include "panes/Hotlist.h"
#include "support/TempHome.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace kestrin;

using Bookmarks = std::vector<DesktopBookmark>;

namespace kestrin {
void PrintTo(const DesktopBookmark &bookmark, std::ostream *out)
{
    *out << "{" << bookmark.label << ", " << bookmark.path << "}";
}
} // namespace kestrin

TEST(HotlistTest, EntriesKeptInTheSideFileBesideOtherKeys)
{
    TempHome home;
    SideFile other = SideFile::Read("Kestrin.extras");
    other.SetAll("HistoryPane1", {"/a"});
    ASSERT_TRUE(other.Write());

    Hotlist hotlist = Hotlist::Read();
    EXPECT_TRUE(hotlist.Entries().empty());
    EXPECT_TRUE(hotlist.Add("Projects", "/home/u/Projects"));
    EXPECT_FALSE(hotlist.Add("Again", "/home/u/Projects"));
    EXPECT_TRUE(hotlist.Add("tab\tin name", "Work\t/pub"));
    EXPECT_TRUE(hotlist.Add("", "/srv"));
    EXPECT_FALSE(hotlist.Add("nothing", ""));
    ASSERT_TRUE(hotlist.Write());

    const std::vector<HotlistEntry> expected = {{"Projects", "/home/u/Projects"},
                                                {"tab in name", "Work\t/pub"},
                                                {"/srv", "/srv"}};
    EXPECT_EQ(Hotlist::Read().Entries(), expected);
    EXPECT_EQ(SideFile::Read("Kestrin.extras").GetAll("HistoryPane1"),
              std::vector<std::string>{"/a"});

    hotlist.SetEntries({{"Server", "Work\t/pub"}, {"Projects", "/home/u/Projects"}});
    ASSERT_TRUE(hotlist.Write());
    EXPECT_EQ(SideFile::Read("Kestrin.extras").GetAll("Hotlist"),
              (std::vector<std::string>{"Server\tWork\t/pub", "Projects\t/home/u/Projects"}));
}

TEST(DesktopBookmarksTest, GtkLines)
{
    struct Row
    {
        const char *line;
        Bookmarks expected;
    };
    const std::vector<Row> rows = {
        {"file:///home/u/Music", {{"Music", "/home/u/Music"}}},
        {"file:///home/u/Music Songs I like", {{"Songs I like", "/home/u/Music"}}},
        {"file:///home/u/My%20Files", {{"My Files", "/home/u/My Files"}}},
        {"file:///home/u/%C3%A9t%C3%A9 Summer", {{"Summer", "/home/u/été"}}},
        {"file:///", {{"/", "/"}}},
        {"file://localhost/srv", {{"srv", "/srv"}}},
        {"file://otherhost/srv", {}},
        {"sftp://host/home/u Remote", {}},
        {"smb://nas/share", {}},
        {"trash:///", {}},
        {"recent:///", {}},
        {"", {}},
        {"file:///home/u/Windows\r", {{"Windows", "/home/u/Windows"}}},
    };
    for (const Row &row : rows)
        EXPECT_EQ(DesktopBookmarks::FromGtk(row.line), row.expected) << row.line;
    EXPECT_EQ(DesktopBookmarks::FromGtk("file:///a A\nsftp://h/x\nfile:///b\n"),
              (Bookmarks{{"A", "/a"}, {"b", "/b"}}));
}

TEST(DesktopBookmarksTest, KdeXbel)
{
    struct Row
    {
        const char *name;
        std::string bookmarks;
        Bookmarks expected;
    };
    const auto bookmark = [](const std::string &href, const std::string &inside) {
        return "<bookmark href=\"" + href + "\">" + inside + "</bookmark>\n";
    };
    const std::string kdeInfo = "<info><metadata owner=\"http://freedesktop.org\">"
                                "<bookmark:icon name=\"folder\"/></metadata>"
                                "<metadata owner=\"http://www.kde.org\"><ID>1/0</ID>"
                                "<isSystemItem>true</isSystemItem></metadata></info>";
    const std::vector<Row> rows = {
        {"title",
         bookmark("file:///home/u", "<title>Home</title>" + kdeInfo),
         {{"Home", "/home/u"}}},
        {"no title", bookmark("file:///home/u/Work", ""), {{"Work", "/home/u/Work"}}},
        {"encoded",
         bookmark("file:///home/u/My%20Files", "<title>Mine &amp; more</title>"),
         {{"Mine & more", "/home/u/My Files"}}},
        {"hidden",
         bookmark("file:///home/u/Old",
                  "<title>Old</title><info><metadata owner=\"http://www.kde.org\">"
                  "<IsHidden>true</IsHidden></metadata></info>"),
         {}},
        {"not files",
         bookmark("remote:/", "<title>Network</title>")
             + bookmark("trash:/", "<title>Trash</title>") + bookmark("timeline:/today", ""),
         {}},
        {"in a folder, then another",
         "<folder><title>Group</title>" + bookmark("file:///a", "<title>A</title>") + "</folder>"
             + bookmark("file:///b", "<title>B</title>"),
         {{"A", "/a"}, {"B", "/b"}}},
    };
    for (const Row &row : rows) {
        const std::string text
            = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xbel>\n"
              "<xbel xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\">\n"
              + row.bookmarks + "</xbel>\n";
        EXPECT_EQ(DesktopBookmarks::FromXbel(text), row.expected) << row.name;
    }
    // A file cut short keeps what came before the cut.
    EXPECT_EQ(DesktopBookmarks::FromXbel("<xbel><bookmark href=\"file:///a\"><title>A</title>"
                                         "</bookmark><bookmark hr"),
              (Bookmarks{{"A", "/a"}}));
}

TEST(DesktopBookmarksTest, ReadFromTheUsersFoldersMissingFilesGiveNone)
{
    TempHome home;
    EXPECT_EQ(DesktopBookmarks::Read(), Bookmarks{});
    namespace fs = std::filesystem;
    fs::create_directories(home.ConfigDir() + "/gtk-3.0");
    WriteFileBytes(home.ConfigDir() + "/gtk-3.0/bookmarks", "file:///a A\nfile:///b B\n");
    EXPECT_EQ(DesktopBookmarks::Read(), (Bookmarks{{"A", "/a"}, {"B", "/b"}}));
    const std::string data = home.Root() + "/data";
    fs::create_directories(data);
    home.SetEnv("XDG_DATA_HOME", data);
    WriteFileBytes(data + "/user-places.xbel",
                   "<xbel><bookmark href=\"file:///b\"><title>Bee</title></bookmark>"
                   "<bookmark href=\"file:///c\"><title>C</title></bookmark></xbel>");
    // A place that both desktops keep shows once.
    EXPECT_EQ(DesktopBookmarks::Read(), (Bookmarks{{"A", "/a"}, {"B", "/b"}, {"C", "/c"}}));
}
