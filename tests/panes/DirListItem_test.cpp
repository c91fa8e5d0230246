#include "PaneCoreSupport.h"

#include "app/AppUtils.h"
#include "platform/Entry.h"
#include "platform/FolderScan.h"
#include "support/PipesAndSockets.h"
#include "widgets/StableMergeSort.h"

#include <cstring>
#include <memory>
#include <unistd.h>
#include <vector>

using kestrin::CompareFunc;
using kestrin::DirListItem;
using kestrin::RowColors;

namespace {

DirListItem Local(const std::string &path,
                  kestrin::RowName naming = kestrin::RowName::Leaf,
                  const char *dateFormat = "%D %R",
                  bool parent = false)
{
    return DirListItem(platform::Entry(path), RowColors(), parent, naming, dateFormat);
}

TEST(DirListItem, SizeAndPermissionTexts)
{
    const struct
    {
        int64_t size;
        const char *text;
    } sizes[] = {
        {0, "0 Bytes"},
        {1024, "1024 Bytes"},
        {1025, "1 K"},
        {2047, "1 K"},
        {5LL << 30, "5242880 K"},
    };
    for (const auto &row : sizes)
        EXPECT_EQ(DirListItem::SizeTextFor(row.size), row.text) << row.size;
}

TEST(DirListItem, RowsOfEntriesAndLinks)
{
    TempHome home;
    const std::string root = home.Root();
    MakeFile(root + "/file", 1500);
    fs::create_directory(root + "/folder");
    fs::create_directory_symlink(root + "/folder", root + "/to-folder");
    fs::create_symlink(root + "/file", root + "/to-file");
    fs::create_symlink(root + "/nowhere", root + "/dangling");

    const DirListItem file = Local(root + "/file");
    EXPECT_FALSE(file.IsFolder());
    EXPECT_EQ(file.SizeText(), "1 K");
    EXPECT_EQ(file.Size(), 1500);
    EXPECT_EQ(file.Name(), "file");
    EXPECT_EQ(file.DateText().size(), 14u); // "%D %R": 11/22/26 05:00

    const DirListItem folder = Local(root + "/folder");
    EXPECT_TRUE(folder.IsFolder());
    EXPECT_EQ(folder.SizeText(), "[Directory]");
    EXPECT_EQ(folder.Size(), 0);

    // A link lists as what it leads to, but says it is a link.
    const DirListItem toFolder = Local(root + "/to-folder");
    EXPECT_TRUE(toFolder.IsFolder());
    EXPECT_EQ(toFolder.SizeText(), "[Link]");
    const DirListItem toFile = Local(root + "/to-file");
    EXPECT_FALSE(toFile.IsFolder());
    EXPECT_EQ(toFile.SizeText(), "[Link]");
    EXPECT_EQ(toFile.Size(), 0);
    const DirListItem dangling = Local(root + "/dangling");
    EXPECT_TRUE(dangling.IsFolder());
    EXPECT_EQ(dangling.SizeText(), "[Link]");

    // Query results show the whole path.
    const DirListItem query = Local(root + "/file", kestrin::RowName::Path, "%Y");
    EXPECT_EQ(query.Name(), root + "/file");
    EXPECT_EQ(query.DateText().size(), 4u);

    const DirListItem parent = Local(root + "/gone", kestrin::RowName::Leaf, "%D", true);
    EXPECT_EQ(parent.Name(), "..");
    EXPECT_EQ(parent.SizeText(), "--");
    EXPECT_EQ(parent.PermissionText(), "--");
    EXPECT_TRUE(parent.DateText().empty());

    const DirListItem missing = Local(root + "/gone");
    EXPECT_EQ(missing.PermissionText(), "n/a");

    const DirListItem remote("pub", "4096", "Jan  1 12:00", "drwxr-xr-x", RowColors());
    EXPECT_TRUE(remote.IsFolder());
    EXPECT_EQ(remote.DateText(), "Jan  1 12:00");
    const DirListItem remoteFile("a b", "1234", "Mar  5  2001", "-rw-r--r--", RowColors());
    EXPECT_FALSE(remoteFile.IsFolder());
    EXPECT_EQ(remoteFile.Size(), 1234);
}

// A row names its colours by a one-byte number; a pane whose colours were
// changed more often than numbers go must still draw every row in whole
// colours, its newest rows in the newest ones.
TEST(DirListItem, RowsKeepTheirColoursWhenLooksOutnumberTheirNumbers)
{
    std::vector<RowColors> colors(300);
    std::vector<std::unique_ptr<DirListItem>> rows;
    for (size_t i = 0; i < colors.size(); i++) {
        colors[i].background = {uint8_t(i % 256), uint8_t(i / 256), 7, 255};
        rows.push_back(std::make_unique<DirListItem>("f", "1", "", "-rw-r--r--", colors[i]));
    }
    const auto same = [](const RowColors &a, const RowColors &b) {
        return a.background == b.background && a.text == b.text;
    };
    size_t own = 0;
    for (size_t i = 0; i < rows.size(); i++) {
        const RowColors &shown = rows[i]->Colors();
        EXPECT_TRUE(same(shown, colors[i]) || same(shown, colors.back())) << "row " << i;
        own += same(shown, colors[i]) ? 1 : 0;
    }
    EXPECT_TRUE(same(rows.back()->Colors(), colors.back()));
    EXPECT_GE(own, 200u);
    // A look met again is found again, not given another number.
    const DirListItem again("g", "1", "", "-rw-r--r--", colors[3]);
    EXPECT_TRUE(same(again.Colors(), colors[3]));
}

TEST(DirListItem, PipesSocketsAndDevicesAreNeitherFoldersNorSized)
{
    TempHome home;
    const std::string root = home.Root();
    MakeFifo(root + "/pipe");
    MakeSocketFile(root + "/socket");
    fs::create_symlink(root + "/pipe", root + "/to-pipe");
    fs::create_symlink("/dev/null", root + "/to-null");

    for (const std::string &path : {root + "/pipe",
                                    root + "/socket",
                                    std::string("/dev/null"),
                                    root + "/to-pipe",
                                    root + "/to-null"}) {
        SCOPED_TRACE(path);
        const DirListItem row = Local(path);
        EXPECT_FALSE(row.IsFolder());
        EXPECT_EQ(row.Size(), 0);
        EXPECT_NE(row.SizeText(), "[Directory]");
    }
    EXPECT_EQ(Local(root + "/pipe").SizeText(), "");
    EXPECT_EQ(Local(root + "/to-pipe").SizeText(), "[Link]");
}

TEST(DirListItem, CompareFuncKeepsItsAsymmetry)
{
    const RowColors colors;
    const DirListItem parent = Local("/", kestrin::RowName::Leaf, "", true);
    const DirListItem folder("zeta", "4096", "", "drwxr-xr-x", colors);
    const DirListItem a("a", "1", "", "-rw-r--r--", colors);
    const DirListItem B("B", "2", "", "-rw-r--r--", colors);
    const DirListItem huge("huge", std::to_string(3LL << 30), "", "-rw-r--r--", colors);

    EXPECT_EQ(CompareFunc(&parent, &a, 1), 0);
    EXPECT_EQ(CompareFunc(&folder, &a, 1), 0);
    // A file on the left falls through to the column: "-rw" before "drw",
    // "a" before "zeta".
    EXPECT_LT(CompareFunc(&a, &folder, 4), 0);
    EXPECT_LT(CompareFunc(&a, &folder, 1), 0);

    const bool saved = kestrin::GetbCaseSensitiveSort();
    kestrin::SetbCaseSensitiveSort(true);
    EXPECT_LT(CompareFunc(&B, &a, 1), 0);
    kestrin::SetbCaseSensitiveSort(false);
    EXPECT_LT(CompareFunc(&a, &B, 1), 0);
    kestrin::SetbCaseSensitiveSort(saved);

    EXPECT_LT(CompareFunc(&a, &B, 2), 0);
    // 3 GB has low 32 bits above 2^31: as a 32-bit number it is negative
    // and sorts before a one-byte file.
    EXPECT_LT(CompareFunc(&huge, &a, 2), 0);
    EXPECT_EQ(CompareFunc(&a, &B, 9), 0);
}

// Rows of local entries make their permission texts when asked; sorted by
// them, they order as the texts do, beside rows whose texts were given.
TEST(DirListItem, PermissionOrderIsTheOrderOfTheTexts)
{
    std::vector<std::unique_ptr<DirListItem>> rows;
    for (mode_t bits : {0644, 0755, 0600, 0444, 0777, 0000, 0711, 0640, 0400, 0200}) {
        platform::ScannedEntry entry;
        entry.name = "f";
        entry.info.st_mode = S_IFREG | bits;
        rows.push_back(std::make_unique<DirListItem>(entry, RowColors(), false, "%D"));
    }
    rows.push_back(std::make_unique<DirListItem>("g", "1", "", "rw-rw-r--", RowColors()));
    rows.push_back(std::make_unique<DirListItem>("n", "1", "", "n/a", RowColors()));
    for (const auto &left : rows) {
        for (const auto &right : rows) {
            const int texts = strcmp(left->PermissionText().c_str(),
                                     right->PermissionText().c_str());
            const int order = CompareFunc(left.get(), right.get(), 4);
            EXPECT_EQ(order < 0, texts < 0) << left->PermissionText() << right->PermissionText();
            EXPECT_EQ(order > 0, texts > 0) << left->PermissionText() << right->PermissionText();
        }
    }
    EXPECT_EQ(rows[0]->PermissionText(), "rw-r--r--");
}

// The keyed sort of a big list must put rows exactly where the list's merge
// sort with the compare function puts them, quirks and ties included: ".."
// and folders first, sizes wrapped to 32 bits, equal keys in their old order.
// Rows with names, sizes and dates that tie often; `big`: some files beyond
// 2 GB, whose sizes the size comparison takes by their low 32 bits.
std::vector<std::unique_ptr<kestrin::CLVListItem>> RowsToSort(bool big)
{
    std::vector<std::unique_ptr<kestrin::CLVListItem>> rows;
    rows.push_back(std::make_unique<DirListItem>("..", "", "", "drwxr-xr-x", RowColors()));
    // Names that agree in their first 8 or 16 bytes, end where another goes
    // on, differ only in case or only beyond ASCII.
    const std::vector<std::string> names = {"b", "B", "a", "_x", "Zeta", "zeta", "10", "9", "été",
                                            "IMG_2024_0001", "IMG_2024_00010", "img_2024_0001",
                                            "abcdefgh", "abcdefghABCDEFGH", "abcdefghabcdefgh1",
                                            "\xff\xfe", "\xc3\x89t\xc3\xa9"};
    for (int i = 0; i < 400; i++) {
        platform::ScannedEntry entry;
        entry.name = names[size_t(i) % names.size()] + std::to_string(i % 7);
        entry.info.st_mode = i % 11 == 0 ? S_IFDIR | 0755
                                         : (i % 13 == 0 ? S_IFLNK : S_IFREG) | 0644;
        entry.info.st_size = big && i % 17 == 0 ? (3LL << 30) + i : (i * 7919) % 50 + (i % 3) * 70000;
        // Some before 1970, some far ahead, and some apart only in their
        // higher bytes.
        entry.info.st_mtime = (i % 5 == 0 ? -86400 : 1000) + (i * 31) % 40 + (i % 9 == 0 ? 65536 : 0)
                              + (big && i % 23 == 0 ? int64_t(1) << 40 : 0);
        rows.push_back(std::make_unique<DirListItem>(entry, RowColors(), false, "%D"));
        if (i % 50 == 0)
            rows.push_back(std::make_unique<DirListItem>("f" + std::to_string(i),
                                                         "12",
                                                         "",
                                                         "-rw-r--r--",
                                                         RowColors()));
    }
    return rows;
}

TEST(DirListItem, KeyedSortGivesTheCompareFunctionsOrder)
{
    // As a list has them (".." then folders then files), which the sorts
    // by name, by date and by sizes below 2 GB take a quicker way for, and
    // mixed.
    const auto inGroups = [](bool big) {
        auto rows = RowsToSort(big);
        std::stable_partition(rows.begin() + 1, rows.end(), [](const auto &row) {
            return static_cast<const DirListItem &>(*row).IsFolder();
        });
        return rows;
    };
    auto rows = RowsToSort(true);
    auto grouped = inGroups(true);
    auto groupedSmall = inGroups(false);
    const bool saved = kestrin::GetbCaseSensitiveSort();
    for (auto *input : {&rows, &grouped, &groupedSmall}) {
        for (const bool caseSensitive : {true, false}) {
            kestrin::SetbCaseSensitiveSort(caseSensitive);
            for (int key = 1; key <= 4; key++) {
                for (const bool descending : {false, true}) {
                    std::vector<kestrin::CLVListItem *> expected;
                    for (const auto &row : *input)
                        expected.push_back(row.get());
                    kestrin::StableMergeSort(expected, [&](auto *left, auto *right) {
                        const int order = CompareFunc(left, right, key);
                        return descending ? order >= 0 : order <= 0;
                    });
                    kestrin::SortDirRows(*input, key, descending);
                    std::vector<kestrin::CLVListItem *> got;
                    for (const auto &row : *input)
                        got.push_back(row.get());
                    EXPECT_EQ(got, expected) << key << descending << caseSensitive
                                             << (input == &rows ? " mixed" : " grouped")
                                             << (input == &groupedSmall ? " small" : "");
                }
            }
        }
    }
    kestrin::SetbCaseSensitiveSort(saved);
}

} // namespace
