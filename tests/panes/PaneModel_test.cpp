#include "PaneCoreSupport.h"

#include "panes/FolderSource.h"
#include "platform/Entry.h"
#include "support/Gate.h"

#include <algorithm>
#include <sys/stat.h>
#include <utime.h>

using kestrin::MarkedList;
using kestrin::PaneModel;

namespace {

using PaneModelTest = PaneCoreFixture;

// Each case marks from no marks at all; the footer sums up the files among
// the marked rows and the selected one, each once.
TEST_F(PaneModelTest, MarksAndTheFooter)
{
    fs::create_directory(Folder() + "/d");
    MakeFile(Folder() + "/f1", 3072);
    MakeFile(Folder() + "/f2", 2048);
    MakeFile(Folder() + "/f3", 5000);
    PaneModel &pane = Open(Folder());
    ASSERT_EQ(Names(), (std::vector<std::string>{"..", "d", "f1", "f2", "f3"}));
    struct Case
    {
        const char *what;
        std::function<void(MarkedList &)> mark;
        int selected;
        std::vector<std::string> marked; // in the order they were marked
        const char *footer;
    };
    const Case cases[] = {
        {"nothing", [](MarkedList &) {}, -1, {}, "0 of 9k in 0 of 3 files selected"},
        {"the selected file", [](MarkedList &) {}, 2, {}, "3 of 9k in 1 of 3 files selected"},
        {"a selected folder", [](MarkedList &) {}, 1, {}, "0 of 9k in 0 of 3 files selected"},
        {"toggled twice",
         [](MarkedList &m) { m.Toggle(2), m.Toggle(2); },
         -1,
         {},
         "0 of 9k in 0 of 3 files selected"},
        {"marked and selected",
         [](MarkedList &m) { m.Toggle(2); },
         2,
         {"f1"},
         "3 of 9k in 1 of 3 files selected"},
        {"a range toggles each row",
         [](MarkedList &m) { m.Toggle(3), m.ToggleRange(4, 1); },
         -1,
         {"d", "f1", "f3"},
         "7 of 9k in 2 of 3 files selected"},
        {"marking passes the marked",
         [](MarkedList &m) { m.Toggle(4), m.Mark(1, 4); },
         -1,
         {"f3", "d", "f1", "f2"},
         "9 of 9k in 3 of 3 files selected"},
        {"unmarking a range",
         [](MarkedList &m) { m.Mark(1, 4), m.Unmark(4, 3); },
         4,
         {"d", "f1"},
         "7 of 9k in 2 of 3 files selected"},
        {"one taken off by name",
         [](MarkedList &m) { m.Mark(1, 4), m.Remove("f2"); },
         -1,
         {"d", "f1", "f3"},
         "7 of 9k in 2 of 3 files selected"},
        {"emptied",
         [](MarkedList &m) { m.Mark(1, 4), m.Empty(); },
         -1,
         {},
         "0 of 9k in 0 of 3 files selected"},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.what);
        pane.Marked().Empty();
        fHost.Deselect();
        each.mark(pane.Marked());
        fHost.SelectRow(each.selected, false);
        std::vector<std::string> marked;
        for (const kestrin::DirListItem *row : pane.Marked().Rows())
            marked.push_back(row->Name());
        EXPECT_EQ(marked, each.marked);
        for (int i = 0; i < fList.CountItems(); i++) {
            const bool listed = std::count(marked.begin(), marked.end(), pane.Row(i)->Name()) > 0;
            EXPECT_EQ(pane.Row(i)->IsMarked(), listed) << pane.Row(i)->Name();
        }
        EXPECT_EQ(pane.GetFiles(), each.footer);
    }
}

// Sorting by each column both ways keeps ".." on top and the folder before
// the files; a row that arrives later lands where the sort puts it.
TEST_F(PaneModelTest, SortsByEveryColumnBothWays)
{
    struct File
    {
        const char *name;
        size_t size;
        time_t age;
        mode_t mode;
    };
    for (const File &file :
         {File{"b", 300, 20, 0644}, File{"A", 100, 10, 0600}, File{"c", 200, 30, 0755}}) {
        const std::string path = Folder() + "/" + file.name;
        MakeFile(path, file.size);
        chmod(path.c_str(), file.mode);
        const utimbuf times{1000000 - file.age, 1000000 - file.age};
        utime(path.c_str(), &times);
    }
    fs::create_directory(Folder() + "/dir");
    PaneModel &pane = Open(Folder());
    struct Case
    {
        int key;
        int mode;
        std::vector<std::string> files;
    };
    const Case cases[] = {
        {kestrin::kColumnName, kestrin::Ascending, {"A", "b", "c"}},
        {kestrin::kColumnName, kestrin::Descending, {"c", "b", "A"}},
        {kestrin::kColumnSize, kestrin::Ascending, {"A", "c", "b"}},
        {kestrin::kColumnSize, kestrin::Descending, {"b", "c", "A"}},
        {kestrin::kColumnDate, kestrin::Ascending, {"c", "b", "A"}},
        {kestrin::kColumnDate, kestrin::Descending, {"A", "b", "c"}},
        {kestrin::kColumnPermissions, kestrin::Ascending, {"A", "b", "c"}},
        {kestrin::kColumnPermissions, kestrin::Descending, {"c", "b", "A"}},
        // Unsorted is taken as ascending.
        {kestrin::kColumnName, kestrin::NoSort, {"A", "b", "c"}},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(std::to_string(each.key) + "/" + std::to_string(each.mode));
        pane.SetSortMode(each.key, each.mode);
        std::vector<std::string> expected{"..", "dir"};
        expected.insert(expected.end(), each.files.begin(), each.files.end());
        EXPECT_EQ(Names(), expected);
        EXPECT_EQ(pane.SortMode(),
                  each.mode == kestrin::Descending ? kestrin::Descending : kestrin::Ascending);
        // A new listing sorts the same way.
        Relist([&] { pane.Refresh(); });
        EXPECT_EQ(Names(), expected);
    }
    pane.SetSortMode(kestrin::kColumnSize, kestrin::Descending);
    MakeFile(Folder() + "/d", 250);
    EXPECT_TRUE(WaitFor([this] {
        return Names() == std::vector<std::string>{"..", "dir", "b", "d", "c", "A"};
    }));
}

// A local folder whose listing, once read, waits at a gate before it is
// handed over: whatever changes meanwhile changes after the reading.
class HeldFolder : public kestrin::FolderSource
{
public:
    HeldFolder(const std::string &folder, std::shared_ptr<Gate> gate)
        : FolderSource(folder)
        , fGate(std::move(gate))
    {}

    kestrin::FolderLister::Reader Reader(const kestrin::RowStyle &style) const override
    {
        return [read = FolderSource::Reader(style), gate = fGate](kestrin::FolderLister::Job &job) {
            read(job);
            gate->Pass();
        };
    }

private:
    std::shared_ptr<Gate> fGate;
};

// What changes while a folder is being read is kept and applied once its
// rows are there: the rows end as the folder is.
TEST_F(PaneModelTest, ChangesWhileAFolderIsListedAreNotLost)
{
    for (int i = 0; i < 100; i++)
        MakeFile(Folder() + "/f" + std::to_string(i));
    PaneModel &pane = Open(fHome.Root());
    auto gate = std::make_shared<Gate>();
    pane.Show(std::make_unique<HeldFolder>(Folder(), gate));
    MakeFile(Folder() + "/new");
    MakeFile(Folder() + "/gone");
    fs::remove(Folder() + "/gone");
    fs::remove(Folder() + "/f0");
    fs::rename(Folder() + "/f1", Folder() + "/f1-renamed");
    MakeFile(Folder() + "/f2", 4096);
    MakeFile(Folder() + "/last");
    ASSERT_TRUE(WaitFor([&] {
        const auto &names = fOwner.forwardedNames;
        return std::find(names.begin(), names.end(), "last") != names.end();
    }));
    ASSERT_TRUE(pane.IsListing());
    gate->Open();
    std::vector<std::string> expected{".."};
    for (const auto &entry : fs::directory_iterator(Folder()))
        expected.push_back(entry.path().filename().string());
    std::sort(expected.begin() + 1, expected.end());
    EXPECT_TRUE(WaitFor([&] { return !pane.IsListing() && Names() == expected; }));
    EXPECT_EQ(pane.Row(pane.FindItem("f2"))->SizeText(), "4 K");
    EXPECT_EQ(pane.GetFiles(), "0 of 4k in 0 of 101 files selected");
}

TEST_F(PaneModelTest, ListsParentFoldersThenFilesWithProgress)
{
    MakeFile(Folder() + "/b.txt", 10);
    MakeFile(Folder() + "/A.txt", 2000);
    MakeFile(Folder() + "/c");
    fs::create_directory(Folder() + "/zdir");
    fs::create_directory(Folder() + "/Adir");
    fs::create_directory_symlink(Folder() + "/zdir", Folder() + "/lnk");

    PaneModel &pane = Open(Folder());
    EXPECT_EQ(Names(),
              (std::vector<std::string>{"..", "Adir", "lnk", "zdir", "A.txt", "b.txt", "c"}));
    EXPECT_EQ(pane.Row(4)->SizeText(), "1 K");
    EXPECT_TRUE(pane.IsWatching());

    std::vector<uint32_t> expected = {kestrin::kMsgListingBegan, kestrin::kMsgListingMax};
    expected.insert(expected.end(), 7, kestrin::kMsgListingStep);
    expected.push_back(kestrin::kMsgListingEnded);
    expected.push_back(kestrin::kMsgPaneChanged);
    EXPECT_EQ(fOwner.Codes(), expected);
    int32_t max = 0;
    fOwner.Last(kestrin::kMsgListingMax)->FindInt32("maxvalue", &max);
    EXPECT_EQ(max, 7);

    // An empty folder: the parent row alone, and a maximum of 1.
    fs::create_directory(Folder() + "/Adir/empty");
    fOwner.messages.clear();
    Relist([&] { pane.Populate(Folder() + "/Adir/empty"); });
    EXPECT_EQ(Names(), std::vector<std::string>{".."});
    fOwner.Last(kestrin::kMsgListingMax)->FindInt32("maxvalue", &max);
    EXPECT_EQ(max, 1);

    // Without the progress flag no progress message is sent.
    pane.SetProgressFlag(false);
    fOwner.messages.clear();
    Relist([&] { pane.Populate(Folder()); });
    for (uint32_t code : {607, 608, 609, 610})
        EXPECT_EQ(fOwner.Count(code), 0) << code;

    // The root has no parent row.
    Relist([&] { pane.Populate("/"); });
    ASSERT_GT(fList.CountItems(), 0);
    EXPECT_NE(pane.Row(0)->Name(), "..");
}

TEST_F(PaneModelTest, RowsFollowChangesInTheFolder)
{
    MakeFile(Folder() + "/b");
    fs::create_directory(Folder() + "/m");
    PaneModel &pane = Open(Folder());

    MakeFile(Folder() + "/a");
    EXPECT_TRUE(RowsBecome({"..", "m", "a", "b"}));
    fs::create_directory(Folder() + "/n");
    EXPECT_TRUE(RowsBecome({"..", "m", "n", "a", "b"}));

    pane.Marked().Toggle(pane.FindItem("b"));
    fs::rename(Folder() + "/b", Folder() + "/c");
    EXPECT_TRUE(RowsBecome({"..", "m", "n", "a", "c"}));
    EXPECT_TRUE(pane.Row(pane.FindItem("c"))->IsMarked());
    ASSERT_EQ(pane.Marked().Rows().size(), 1u);
    EXPECT_EQ(pane.Marked().Rows().front()->Name(), "c");

    MakeFile(Folder() + "/a", 5000);
    EXPECT_TRUE(WaitFor([&] { return pane.Row(pane.FindItem("a"))->SizeText() == "4 K"; }));

    fs::remove(Folder() + "/a");
    EXPECT_TRUE(RowsBecome({"..", "m", "n", "c"}));
    fs::rename(Folder() + "/c", fHome.Root() + "/c");
    EXPECT_TRUE(RowsBecome({"..", "m", "n"}));
    EXPECT_TRUE(pane.Marked().Rows().empty());
    fs::rename(fHome.Root() + "/c", Folder() + "/in");
    EXPECT_TRUE(RowsBecome({"..", "m", "n", "in"}));
    // The footer heard of every change.
    EXPECT_EQ(pane.GetFiles(), "0 of 0k in 0 of 1 files selected");
}

TEST_F(PaneModelTest, AFloodOfNewFilesEndsInTheRightRows)
{
    PaneModel &pane = Open(Folder());
    constexpr int kFiles = 20000;
    for (int i = 0; i < kFiles; i++)
        MakeFile(Folder() + "/f" + std::to_string(i));
    EXPECT_TRUE(
        WaitFor([&] { return fList.CountItems() == kFiles + 1 && !pane.IsListing(); }, 120000));
    // Sorted, with no row twice.
    const std::vector<std::string> names = Names();
    EXPECT_TRUE(std::is_sorted(names.begin() + 1, names.end()));
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
    // The footer's count follows the rows that came and went.
    EXPECT_NE(pane.GetFiles().find(" of 20000 files selected"), std::string::npos)
        << pane.GetFiles();
    for (int i = 0; i < kFiles; i += 2)
        fs::remove(Folder() + "/f" + std::to_string(i));
    EXPECT_TRUE(WaitFor([&] { return fList.CountItems() == kFiles / 2 + 1; }, 120000));
    EXPECT_NE(pane.GetFiles().find(" of 10000 files selected"), std::string::npos)
        << pane.GetFiles();
}

TEST_F(PaneModelTest, AFolderDeletedWhileShownGivesWayToItsParent)
{
    fs::create_directories(Folder() + "/x/y");
    PaneModel &pane = Open(Folder() + "/x/y");
    fs::remove_all(Folder() + "/x");
    EXPECT_TRUE(WaitFor([&] { return pane.CurrentPath() == Folder() && !pane.IsListing(); }));
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown().front().text,
              "The directory, " + Folder() + "/x/y, is not valid.\nThe volume may not be mounted.");
    EXPECT_EQ(Names(), std::vector<std::string>{".."});
}

// Fault drills: a folder that goes while its listing is read, and one that
// stops being readable while it is shown. Neither crashes nor leaves the pane
// without a place: the pane stands in the nearest folder that is there.
TEST_F(PaneModelTest, AFolderThatGoesWhileItIsListedGivesWayToItsParent)
{
    fs::create_directory(Folder() + "/big");
    for (int i = 0; i < 20000; i++)
        MakeFile(Folder() + "/big/f" + std::to_string(i));
    PaneModel &pane = Open(Folder());
    fHost.SelectRow(pane.FindItem("big"), true);
    Commands().Invoke();
    ASSERT_TRUE(pane.IsListing());
    fs::remove_all(Folder() + "/big");
    EXPECT_TRUE(WaitFor([&] { return pane.CurrentPath() == Folder() && !pane.IsListing(); }, 30000))
        << pane.CurrentPath() << " listing " << pane.IsListing() << " alerts " << fAlerts.Count();
    EXPECT_EQ(Names(), std::vector<std::string>{".."});
    EXPECT_LE(fAlerts.Count(), 1u);
}

TEST_F(PaneModelTest, AwkwardNamesAndAMissingStartFolder)
{
    const std::vector<std::string> names = {"\xff\xfe", "new\nline", std::string(255, 'n')};
    for (const std::string &name : names)
        MakeFile(Folder() + "/" + name);
    PaneModel &pane = Open(Folder() + "/does-not-exist");
    // A folder that cannot be listed at start gives way to the home folder.
    EXPECT_EQ(pane.CurrentPath(), fHome.Home());

    Relist([&] { pane.Populate(Folder()); });
    for (const std::string &name : names) {
        const int index = pane.FindItem(name);
        ASSERT_GE(index, 0);
        EXPECT_EQ(pane.RefOf(pane.Row(index)).path, Folder() + "/" + name);
    }
    // QTemporaryDir cannot remove a name that is not UTF-8.
    fs::remove(Folder() + "/\xff\xfe");
}

TEST_F(PaneModelTest, GoToDirShowsItsTwoBoxes)
{
    fs::create_directory(Folder() + "/there");
    PaneModel &pane = Open(Folder());
    fOwner.messages.clear();
    Relist([&] { pane.GoToDir(Folder() + "/there"); });
    ASSERT_EQ(fAlerts.Count(), 2u);
    EXPECT_EQ(fAlerts.Shown()[0].text, "Inside GoToDir");
    EXPECT_EQ(fAlerts.Shown()[1].text, Folder() + "/there");
    EXPECT_EQ(pane.CurrentPath(), Folder() + "/there");
    EXPECT_EQ(pane.PreviousPath(), Folder() + "/there");
    EXPECT_GE(fOwner.Count(kestrin::kMsgPaneChanged), 1);
}

TEST_F(PaneModelTest, FoldersThatCannotBeListedSayWhy)
{
    MakeFile(Folder() + "/plain");
    fs::create_symlink(Folder() + "/loop-b", Folder() + "/loop-a");
    fs::create_symlink(Folder() + "/loop-a", Folder() + "/loop-b");
    PaneModel &pane = Open(Folder());
    Relist([&] { pane.Populate(Folder() + "/plain"); });
    Relist([&] { pane.Populate(Folder() + "/loop-a"); });
    Relist([&] { pane.Populate(Folder() + "/missing"); });
    const auto shown = fAlerts.Shown();
    ASSERT_EQ(shown.size(), 2u); // a folder that is not there shows no box
    EXPECT_EQ(shown[0].text,
              "The directory, " + Folder()
                  + "/plain, is not valid.\nThe volume may not be mounted.");
    EXPECT_EQ(shown[0].type, B_STOP_ALERT);
    EXPECT_EQ(
        shown[1].text,
        "Link limit exceeded.  It is possible that a cyclic link exists in your file system.");
    EXPECT_EQ(fList.CountItems(), 0);
}

} // namespace
