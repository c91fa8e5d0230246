#include "PaneCoreSupport.h"

#include "panes/RowFilter.h"

using kestrin::PaneModel;
using kestrin::RowFilter;

namespace {

using RowFilterTest = PaneCoreFixture;

void Filter(PaneModel &pane, const std::string &text, bool dotFiles = true)
{
    pane.Filter().SetText(text);
    pane.Filter().SetShowDotFiles(dotFiles);
    pane.Filter().Finish();
}

// Each case starts from whatever the case before left: the rows come back
// in their places.
TEST_F(RowFilterTest, ShowsTheRowsThatMatchInTheirOrder)
{
    fs::create_directory(Folder() + "/sub");
    fs::create_directory(Folder() + "/.git");
    MakeFile(Folder() + "/.bashrc", 1024);
    MakeFile(Folder() + "/Alpha.txt", 2048);
    MakeFile(Folder() + "/beta.TXT", 3072);
    MakeFile(Folder() + "/gamma", 4096);
    PaneModel &pane = Open(Folder());
    const std::vector<std::string> all{"..", ".git", "sub", ".bashrc", "Alpha.txt", "beta.TXT", "gamma"};
    ASSERT_EQ(Names(), all);
    // The selected row stays while it is shown, else the first shown row
    // after ".." takes over; the footer counts it.
    struct Case
    {
        const char *text;
        bool dotFiles;
        std::vector<std::string> shown;
        const char *footer;
    };
    const Case cases[] = {
        {"TXT", true, {"..", "Alpha.txt", "beta.TXT"}, "2 of 5k in 1 of 2 files selected"},
        {"", false, {"..", "sub", "Alpha.txt", "beta.TXT", "gamma"}, "2 of 9k in 1 of 3 files selected"},
        {"*.txt", true, {"..", "Alpha.txt", "beta.TXT"}, "2 of 5k in 1 of 2 files selected"},
        {"?amma", true, {"..", "gamma"}, "4 of 4k in 1 of 1 files selected"},
        {"a", false, {"..", "Alpha.txt", "beta.TXT", "gamma"}, "4 of 9k in 1 of 3 files selected"},
        {"S", true, {"..", "sub", ".bashrc"}, "0 of 1k in 0 of 1 files selected"},
        {"git", true, {"..", ".git"}, "0 of 0k in 0 of 0 files selected"},
        {"*.t", true, {".."}, "0 of 0k in 0 of 0 files selected"},
        {"", true, all, "0 of 10k in 0 of 4 files selected"},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(std::string(each.text) + (each.dotFiles ? "" : " without dot-files"));
        Filter(pane, each.text, each.dotFiles);
        EXPECT_EQ(Names(), each.shown);
        EXPECT_EQ(pane.GetFiles(), each.footer);
        EXPECT_EQ(pane.Filter().CountAll(), int(all.size()));
    }
}

// Marks of hidden rows stay, but "+" and the commands see only the shown
// rows; the sort reaches the hidden rows too.
TEST_F(RowFilterTest, MarksAndCommandsKeepToTheShownRows)
{
    for (const char *name : {"a.txt", "b.log", "c.txt", ".d.txt"})
        MakeFile(Folder() + "/" + name, 1024);
    PaneModel &pane = Open(Folder());
    pane.Marked().Toggle(pane.FindItem("b.log"));
    pane.Marked().Toggle(pane.FindItem("c.txt"));

    Filter(pane, "txt", false);
    EXPECT_EQ(MarkedNames(pane.Marked()), std::vector<std::string>{"c.txt"});
    EXPECT_EQ(Commands().PathsToActOn(), std::vector<std::string>{Folder() + "/c.txt"});
    // a.txt took over the selection from the hidden .d.txt.
    EXPECT_EQ(pane.GetFiles(), "2 of 2k in 2 of 2 files selected");

    pane.Marked().Mark(1, fList.CountItems() - 1); // what "+" does
    EXPECT_EQ(MarkedNames(pane.Marked()), (std::vector<std::string>{"a.txt", "c.txt"}));
    pane.SetSortMode(kestrin::kColumnName, kestrin::Descending);
    EXPECT_EQ(Names(), (std::vector<std::string>{"..", "c.txt", "a.txt"}));

    Filter(pane, "", true);
    EXPECT_EQ(Names(), (std::vector<std::string>{"..", "c.txt", "b.log", "a.txt", ".d.txt"}));
    EXPECT_EQ(MarkedNames(pane.Marked()), (std::vector<std::string>{"a.txt", "b.log", "c.txt"}));
    EXPECT_EQ(Commands().PathsToActOn().size(), 3u);
}

// Changes that arrive while rows are hidden land on the right side of the
// filter, and in their places once it is gone.
TEST_F(RowFilterTest, ChangesArriveThroughTheFilter)
{
    for (const char *name : {"b.txt", "d", "f.txt", "h"})
        MakeFile(Folder() + "/" + name, 1024);
    PaneModel &pane = Open(Folder());
    pane.Marked().Toggle(pane.FindItem("h"));
    Filter(pane, "txt");

    for (const char *name : {"a.txt", "j", "c", "ca"})
        MakeFile(Folder() + "/" + name, 1024);
    EXPECT_TRUE(RowsBecome({"..", "a.txt", "b.txt", "f.txt"}));
    fs::remove(Folder() + "/d");
    fs::rename(Folder() + "/h", Folder() + "/g.txt");
    EXPECT_TRUE(RowsBecome({"..", "a.txt", "b.txt", "f.txt", "g.txt"}));
    EXPECT_EQ(MarkedNames(pane.Marked()), std::vector<std::string>{"g.txt"});
    fs::rename(Folder() + "/b.txt", Folder() + "/e");
    EXPECT_TRUE(RowsBecome({"..", "a.txt", "f.txt", "g.txt"}));
    // f.txt took over the selection from b.txt, which left for good.
    EXPECT_TRUE(WaitFor([&] { return pane.GetFiles() == "2 of 3k in 2 of 3 files selected"; }));

    Filter(pane, "");
    EXPECT_EQ(Names(), (std::vector<std::string>{"..", "a.txt", "c", "ca", "e", "f.txt", "g.txt", "j"}));
    EXPECT_EQ(pane.GetFiles(), "2 of 7k in 2 of 7 files selected");
}

// A filter belongs to its place; whether dot-files show belongs to the pane.
TEST_F(RowFilterTest, ANewPlaceDropsTheTextButNotTheDotFiles)
{
    fs::create_directory(Folder() + "/in");
    MakeFile(Folder() + "/in/.x");
    MakeFile(Folder() + "/in/y");
    PaneModel &pane = Open(Folder());
    Filter(pane, "in", false);
    Relist([&] { pane.Populate(Folder() + "/in"); });
    EXPECT_EQ(pane.Filter().Text(), "");
    EXPECT_EQ(Names(), (std::vector<std::string>{"..", "y"}));
    Filter(pane, "y", false);
    Relist([&] { pane.Refresh(); });
    EXPECT_EQ(pane.Filter().Text(), "y");
    EXPECT_EQ(Names(), (std::vector<std::string>{"..", "y"}));
    // The rows that a listing held back come back.
    Filter(pane, "", true);
    EXPECT_EQ(Names(), (std::vector<std::string>{"..", ".x", "y"}));
}

} // namespace
