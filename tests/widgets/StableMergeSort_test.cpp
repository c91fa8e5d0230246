#include "widgets/StableMergeSort.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

using kestrin::StableMergeSort;

namespace {

struct Entry
{
    std::string name;
    bool folder = false;
    bool parent = false; // ".."
};

// The pane's kind of compare: ".." and a folder against a file answer 0, a
// file against a folder compares names. Not a strict weak order.
int CompareEntries(const Entry &a, const Entry &b)
{
    if (a.parent || (a.folder && !b.folder))
        return 0;
    return a.name.compare(b.name);
}

std::vector<std::string> Names(const std::vector<Entry> &entries)
{
    std::vector<std::string> names;
    for (const Entry &entry : entries)
        names.push_back(entry.name);
    return names;
}

} // namespace

TEST(StableMergeSort, KeepsDotDotFirstAndFoldersBeforeFilesInBothDirections)
{
    struct Case
    {
        int folders;
        int files;
    };
    const Case cases[] = {{0, 0}, {1, 0}, {0, 5}, {3, 1}, {2, 7}, {5, 5}, {8, 17}, {33, 31}};
    std::mt19937 random(7);
    std::uniform_int_distribution<int> letter('a', 'z');
    for (const Case &c : cases) {
        // Folder and file names drawn from the same letters, so that a sort
        // which lets names decide across the groups would mix them.
        std::vector<Entry> entries{{"..", true, true}};
        std::vector<std::string> folders;
        std::vector<std::string> files;
        for (int i = 0; i < c.folders + c.files; i++) {
            const std::string name{char(letter(random)), char(letter(random))};
            (i < c.folders ? folders : files).push_back(name);
            entries.push_back(Entry{name, i < c.folders, false});
        }

        for (bool descending : {false, true}) {
            SCOPED_TRACE(testing::Message() << c.folders << " folders, " << c.files
                                            << " files, descending " << descending);
            std::vector<Entry> sorted = entries;
            StableMergeSort(sorted, [descending](const Entry &left, const Entry &right) {
                const int order = CompareEntries(left, right);
                return descending ? order >= 0 : order <= 0;
            });
            // Equal names are indistinguishable, so plain sorting gives the groups.
            const auto ordered = [descending](std::vector<std::string> names) {
                std::sort(names.begin(), names.end());
                if (descending)
                    std::reverse(names.begin(), names.end());
                return names;
            };
            std::vector<std::string> expected{".."};
            for (const std::string &name : ordered(folders))
                expected.push_back(name);
            for (const std::string &name : ordered(files))
                expected.push_back(name);
            EXPECT_EQ(Names(sorted), expected);
        }
    }
}

TEST(StableMergeSort, EqualElementsKeepTheirOrderAndNothingIsLost)
{
    struct Record
    {
        int key = 0;
        int position = 0;
        bool operator==(const Record &) const = default;
    };
    std::mt19937 random(11);
    std::uniform_int_distribution<int> key(0, 9);
    for (size_t size : {0u, 1u, 2u, 3u, 17u, 64u, 1000u}) {
        SCOPED_TRACE(size);
        std::vector<Record> records;
        for (size_t i = 0; i < size; i++)
            records.push_back(Record{key(random), int(i)});

        std::vector<Record> ascending = records;
        StableMergeSort(ascending, [](const Record &l, const Record &r) { return l.key <= r.key; });
        std::vector<Record> expected = records;
        std::stable_sort(expected.begin(), expected.end(), [](const Record &l, const Record &r) {
            return l.key < r.key;
        });
        EXPECT_EQ(ascending, expected);

        std::vector<Record> descending = records;
        StableMergeSort(descending, [](const Record &l, const Record &r) { return l.key >= r.key; });
        expected = records;
        std::stable_sort(expected.begin(), expected.end(), [](const Record &l, const Record &r) {
            return l.key > r.key;
        });
        EXPECT_EQ(descending, expected);

        // Rows are sorted as owning pointers: every one must come out.
        std::vector<std::unique_ptr<Record>> owned;
        for (const Record &record : records)
            owned.push_back(std::make_unique<Record>(record));
        StableMergeSort(owned, [](const auto &l, const auto &r) { return l->key <= r->key; });
        ASSERT_EQ(owned.size(), size);
        for (size_t i = 0; i < size; i++) {
            ASSERT_NE(owned[i], nullptr);
            EXPECT_EQ(*owned[i], ascending[i]);
        }
    }
}
