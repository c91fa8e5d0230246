#include "PaneCoreSupport.h"

#include "panes/FolderRows.h"
#include "panes/MarkedList.h"
#include "panes/RowFilter.h"

#include <QThreadPool>

using kestrin::DirListItem;
using kestrin::FolderRows;

namespace {

TEST(FolderRows, ABatchReadBeforeTheLatestChangeIsNotApplied)
{
    TempHome home;
    const std::string folder = home.Root();
    kestrin::ColumnListModel list(false);
    list.SetSortFunction(&kestrin::CompareFunc);
    ListStandIn host(list);
    kestrin::MarkedList marked(list);
    kestrin::RowFilter filter(list, host, marked);
    FolderRows rows(list, host, marked, filter);
    rows.Reset({}, {});
    const kestrin::RowStyle style;
    QObject context;

    MakeFile(folder + "/x");
    rows.Touch("x");
    bool applied = false;
    rows.ApplyLater(folder, style, &context, [&](bool) { applied = true; });
    // The batch has read "x" as present, and waits to be applied ...
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_TRUE(rows.IsReading());
    // ... while the pane removes it and applies that at once.
    fs::remove(folder + "/x");
    rows.Touch("x");
    rows.ApplyNow(folder, style);
    EXPECT_TRUE(RowNames(list).empty());

    ASSERT_TRUE(WaitFor([&] { return applied; }));
    EXPECT_TRUE(RowNames(list).empty()) << "the older reading brought the row back";

    // A batch whose listing was replaced is dropped, not applied.
    MakeFile(folder + "/y");
    rows.Touch("y");
    applied = false;
    rows.ApplyLater(folder, style, &context, [&](bool) { applied = true; });
    rows.Reset({}, {});
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    EXPECT_FALSE(applied);
    EXPECT_TRUE(RowNames(list).empty());

    // A rename keeps the row's mark; both names are read again.
    rows.Touch("y");
    rows.ApplyNow(folder, style);
    ASSERT_EQ(RowNames(list), std::vector<std::string>{"y"});
    marked.Toggle(0);
    fs::rename(folder + "/y", folder + "/z");
    rows.Rename("y", "z");
    rows.ApplyNow(folder, style);
    ASSERT_EQ(RowNames(list), std::vector<std::string>{"z"});
    EXPECT_TRUE(static_cast<DirListItem *>(list.ItemAt(0))->IsMarked());
    ASSERT_EQ(marked.Count(), 1);
}

} // namespace
