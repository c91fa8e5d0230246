#include "PaneTestSupport.h"

#include "fileops/FileOpsMessages.h"
#include "panes/ArchiveSource.h"
#include "support/TestArchives.h"

using kestrin::DirPane;
using kestrin::DirView;

namespace {

class ArchivePaneTest : public PaneFixture
{
protected:
    void SetUp() override
    {
        PaneFixture::SetUp();
        MakeFile(Folder() + "/aaa.txt", 3);
        WriteTestArchive(Archive(),
                         "tar.gz",
                         {{"readme.txt", "hello"},
                          {"docs/guide/intro.txt", "intro"},
                          {"docs/index.html", "<html/>"},
                          FolderMember("src/"),
                          {"src/main.c", "int main;"},
                          {"../evil", "x"}});
    }
    std::string Archive() const { return Folder() + "/bundle.tar.gz"; }

    // Runs `action` and waits until the list has shown every listing it led to.
    void Settle(const std::function<void()> &action)
    {
        EXPECT_TRUE(Listed(action));
        WaitFor([this] { return !fPane->List()->IsListing(); });
    }
};

TEST_F(ArchivePaneTest, BrowsesInAndOutOfAnArchive)
{
    DirPane &pane = Open();
    DirView &view = *pane.List();
    Settle([&] { pane.DoZip(Archive()); });
    EXPECT_EQ(view.Mode(), kestrin::kModeArchive);
    EXPECT_EQ(view.CurrentPath(), Folder());
    EXPECT_EQ(pane.Header()->Text(), Archive());
    EXPECT_EQ(RowNames(view),
              (std::vector<std::string>{"..", "docs", "src", "../evil", "readme.txt"}));
    EXPECT_EQ(view.Row(view.FindItem("readme.txt"))->SizeText(), "5 Bytes");
    EXPECT_EQ(view.Row(view.FindItem("readme.txt"))->PermissionText(), "rw-r--r--");

    // Enter goes into a folder, Backspace and ".." come back up.
    view.Select(view.FindItem("docs"));
    Settle([&] { Key(Qt::Key_Return); });
    EXPECT_EQ(RowNames(view), (std::vector<std::string>{"..", "guide", "index.html"}));
    EXPECT_EQ(pane.Header()->Text(), Archive() + "/docs/");
    view.Select(view.FindItem("guide"));
    Settle([&] { Key(Qt::Key_Return); });
    EXPECT_EQ(RowNames(view), (std::vector<std::string>{"..", "intro.txt"}));
    Settle([&] { Key(Qt::Key_Backspace); });
    EXPECT_EQ(RowNames(view), (std::vector<std::string>{"..", "guide", "index.html"}));
    EXPECT_EQ(Selected(), "guide");
    view.Select(0);
    Settle([&] { Key(Qt::Key_Return); });
    EXPECT_EQ(Selected(), "docs");

    // A hostile name and a file open nothing; F3 and F4 have nothing to open.
    for (const char *name : {"../evil", "readme.txt"}) {
        view.Select(view.FindItem(name));
        Key(Qt::Key_Return);
        Key(Qt::Key_F3);
        Key(Qt::Key_F4);
        EXPECT_EQ(view.Mode(), kestrin::kModeArchive);
    }
    EXPECT_TRUE(fLaunches.Launches().empty());
    EXPECT_TRUE(fWindow.messages.empty());

    // At the top, up leaves the archive for its folder, on the archive's row.
    Settle([&] { Key(Qt::Key_Backspace); });
    EXPECT_EQ(view.Mode(), kestrin::kModeFolder);
    EXPECT_EQ(view.CurrentPath(), Folder());
    EXPECT_EQ(Selected(), "bundle.tar.gz");
    EXPECT_EQ(fAlerts.Count(), 0u);
}

TEST_F(ArchivePaneTest, F5AsksToUnpackTheMarkedMembers)
{
    DirPane &pane = Open();
    DirView &view = *pane.List();
    Settle([&] { pane.DoZip(Archive()); });
    view.Select(view.FindItem("docs"));
    Key(Qt::Key_Insert);
    view.Select(view.FindItem("readme.txt"));
    Key(Qt::Key_Insert);
    Key(Qt::Key_F5);
    const platform::Message *request = fWindow.Last(kestrin::kMsgUnpackRequest);
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(Strings(*request, "Archive"), std::vector<std::string>{Archive()});
    EXPECT_EQ(Strings(*request, "CopyFrom"), std::vector<std::string>{""});
    EXPECT_EQ(Strings(*request, "ZipDir"), std::vector<std::string>{"docs"});
    EXPECT_EQ(Strings(*request, "ZipFile"), std::vector<std::string>{"readme.txt"});
    EXPECT_EQ(Strings(*request, "From"), std::vector<std::string>{Folder()});
    EXPECT_EQ(Strings(*request, "TypeOfCopy"), std::vector<std::string>{"UnPack"});
    EXPECT_EQ(Strings(*request, "Direction"), std::vector<std::string>{"Right"});
    EXPECT_EQ(Strings(*request, "Dragging"), std::vector<std::string>{"false"});
    // Ctrl+F5 names the same members; the planner fetches them first.
    Key(Qt::Key_F5, Qt::ControlModifier);
    request = fWindow.Last(kestrin::kMsgPackRequest);
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(Strings(*request, "Archive"), std::vector<std::string>{Archive()});
    EXPECT_EQ(Strings(*request, "ZipDir"), std::vector<std::string>{"docs"});
    EXPECT_EQ(Strings(*request, "TypeOfCopy"), std::vector<std::string>{"Pack"});

    // Inside a folder, the selected row alone, and its folder as "CopyFrom".
    view.Select(view.FindItem("src"));
    Settle([&] { Key(Qt::Key_Return); });
    view.Select(view.FindItem("main.c"));
    Key(Qt::Key_F5);
    request = fWindow.Last(kestrin::kMsgUnpackRequest);
    EXPECT_EQ(Strings(*request, "CopyFrom"), std::vector<std::string>{"src/"});
    EXPECT_EQ(Strings(*request, "ZipFile"), std::vector<std::string>{"main.c"});
    EXPECT_TRUE(Strings(*request, "ZipDir").empty());
    EXPECT_EQ(view.Source().Place().kind, kestrin::TransferPlace::Kind::Archive);
    EXPECT_EQ(view.Source().Place().folder, Folder());
}

TEST_F(ArchivePaneTest, AFileThatIsNoArchiveLeavesThePaneInItsFolder)
{
    WriteFileBytes(Folder() + "/broken.zip", "PK but nothing more than these words");
    DirPane &pane = Open();
    DirView &view = *pane.List();
    QSignalSpy finished(&view, &DirView::ListingFinished);
    pane.DoZip(Folder() + "/broken.zip");
    EXPECT_TRUE(WaitFor([&] { return finished.count() == 2 && !view.IsListing(); }));
    EXPECT_EQ(view.Mode(), kestrin::kModeFolder);
    EXPECT_EQ(Selected(), "broken.zip");
    EXPECT_EQ(pane.Header()->Text(), Folder());
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_NE(fAlerts.Shown()[0].text.find("broken.zip"), std::string::npos);
}

} // namespace
