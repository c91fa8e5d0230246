#include "panes/FolderComparison.h"

#include <gtest/gtest.h>

using kestrin::FolderComparison;
using By = FolderComparison::By;
using Entry = FolderComparison::Entry;
using Names = std::vector<std::string>;

namespace {

constexpr time_t kNoon = 1700000000;

Entry File(const char *name, int64_t size = 10, time_t modified = kNoon)
{
    return {name, false, size, modified};
}

Entry Folder(const char *name, time_t modified = kNoon)
{
    return {name, true, 4096, modified};
}

// Each row compares names on both sides (or on one) and says which sides
// each is marked on; by content, which files are left to their bytes.
TEST(FolderComparisonTest, WhatIsMarkedOnEachSide)
{
    struct Case
    {
        const char *what;
        std::vector<Entry> left, right;
        By by;
        Names markedLeft, markedRight, sameSize;
    };
    const Case cases[] = {
        {"the same file", {File("a")}, {File("a")}, By::SizeAndTime, {}, {}, {}},
        {"only on one side", {File("a")}, {File("b")}, By::SizeAndTime, {"a"}, {"b"}, {}},
        {"sizes differ", {File("a")}, {File("a", 11)}, By::SizeAndTime, {"a"}, {"a"}, {}},
        {"two seconds apart", {File("a")}, {File("a", 10, kNoon - 2)}, By::SizeAndTime, {"a"}, {"a"}, {}},
        {"a zip's even second", {File("a")}, {File("a", 10, kNoon + 1)}, By::SizeAndTime, {}, {}, {}},
        {"a time not known", {File("a")}, {File("a", 10, 0)}, By::SizeAndTime, {}, {}, {}},
        {"names differ in case", {File("a")}, {File("A")}, By::SizeAndTime, {"a"}, {"A"}, {}},
        {"a folder and a file", {Folder("a")}, {File("a")}, By::SizeAndTime, {"a"}, {"a"}, {}},
        {"folders on both sides", {Folder("d")}, {Folder("d", kNoon + 9)}, By::SizeAndTime, {}, {}, {}},
        {"a folder on one side", {Folder("d")}, {}, By::SizeAndTime, {"d"}, {}, {}},
        {"by content, times do not count", {File("a")}, {File("a", 10, kNoon + 5)}, By::Content, {}, {}, {"a"}},
        {"by content, sizes still do", {File("a")}, {File("a", 9)}, By::Content, {"a"}, {"a"}, {}},
        {"by content, folders are not read", {Folder("d")}, {Folder("d")}, By::Content, {}, {}, {}},
        {"several at once",
         {File("z", 1), File("a"), File("m", 5)},
         {File("m", 5), File("b", 1), File("z", 2)},
         By::SizeAndTime,
         {"z", "a"},
         {"z", "b"},
         {}},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.what);
        const FolderComparison::Result result = FolderComparison::Compare(each.left, each.right, each.by);
        EXPECT_EQ(result.left, each.markedLeft);
        EXPECT_EQ(result.right, each.markedRight);
        Names sameSize;
        for (const Entry &entry : result.sameSize)
            sameSize.push_back(entry.name);
        EXPECT_EQ(sameSize, each.sameSize);
    }
}

} // namespace
