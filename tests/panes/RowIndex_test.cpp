#include "panes/RowIndex.h"

#include "panes/DirListItem.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

using kestrin::DirListItem;
using kestrin::RowIndex;

namespace {

std::unique_ptr<DirListItem> Row(const std::string &name)
{
    return std::make_unique<DirListItem>(name, "1", "", "-rw-r--r--", kestrin::RowColors());
}

// Enough names that the table grows several times and its runs of taken
// slots wrap around its end; every third is erased again, which moves the
// rows after each hole.
TEST(RowIndex, FindsEveryRowThroughGrowthAndErasure)
{
    std::vector<std::unique_ptr<DirListItem>> rows;
    RowIndex index;
    for (int i = 0; i < 3000; i++) {
        rows.push_back(Row("entry" + std::to_string(i)));
        index.Insert(rows.back().get());
    }
    ASSERT_EQ(index.Size(), 3000u);
    for (int i = 0; i < 3000; i += 3)
        index.Erase("entry" + std::to_string(i));
    index.Erase("never there");
    EXPECT_EQ(index.Size(), 2000u);
    for (int i = 0; i < 3000; i++) {
        const std::string name = "entry" + std::to_string(i);
        EXPECT_EQ(index.Find(name), i % 3 == 0 ? nullptr : rows[size_t(i)].get()) << name;
    }

    // A row made again under its name takes the old one's place.
    auto again = Row("entry1");
    index.Insert(again.get());
    EXPECT_EQ(index.Find("entry1"), again.get());
    EXPECT_EQ(index.Size(), 2000u);

    index.Clear();
    EXPECT_EQ(index.Find("entry2"), nullptr);
    EXPECT_EQ(index.Size(), 0u);
}

} // namespace
