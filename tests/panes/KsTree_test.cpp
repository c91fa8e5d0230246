#include "PaneTestSupport.h"

#include "panes/KsTree.h"
#include "panes/KsTreeListItem.h"

using kestrin::KsTree;
using kestrin::KsTreeListItem;

namespace {

TEST(KsTree, FoldersOnlyReadLazilyAndOnce)
{
    TempHome home;
    const std::string root = home.Root() + "/t";
    fs::create_directories(root + "/a/deep/deeper");
    fs::create_directories(root + "/files-only");
    MakeFile(root + "/files-only/x");
    MakeFile(root + "/a/file");

    EXPECT_TRUE(KsTree::FindChildren("/hood"));
    EXPECT_TRUE(KsTree::FindChildren(root + "/a"));
    EXPECT_FALSE(KsTree::FindChildren(root + "/files-only"));
    EXPECT_FALSE(KsTree::FindChildren(root + "/missing"));

    bool focused = true;
    KsTree tree(nullptr, [&focused] { return focused; });
    tree.resize(300, 400);
    tree.show();
    QSignalSpy expanded(&tree, &KsTree::PathExpanded);
    const auto expandedAgain = [&expanded] {
        const qsizetype before = expanded.count();
        return std::function<bool()>(
            [&expanded, before] { return WaitFor([&] { return expanded.count() > before; }); });
    };
    std::function<bool()> done = expandedAgain();
    tree.Populate(root);
    ASSERT_TRUE(done());

    KsTreeListItem *t = tree.FindRow(root);
    ASSERT_NE(t, nullptr);
    EXPECT_TRUE(t->IsExpanded());
    EXPECT_EQ(tree.SelectedPath(), root);
    KsTreeListItem *a = tree.FindRow(root + "/a");
    KsTreeListItem *filesOnly = tree.FindRow(root + "/files-only");
    ASSERT_NE(a, nullptr);
    ASSERT_NE(filesOnly, nullptr);
    EXPECT_EQ(tree.FindRow(root + "/a/file"), nullptr);
    // Not read yet: a's only row is the placeholder; a folder of files has
    // no expander.
    EXPECT_TRUE(a->IsSuperItem());
    ASSERT_EQ(a->CountSubitems(), 1);
    EXPECT_TRUE(static_cast<KsTreeListItem *>(a->SubitemAt(0))->IsPlaceholder());
    EXPECT_EQ(static_cast<KsTreeListItem *>(a->SubitemAt(0))->Name(), "<populating...>");
    EXPECT_FALSE(filesOnly->IsSuperItem());
    EXPECT_EQ(tree.ReadCount(root + "/a"), 0);

    QSignalSpy read(&tree, &KsTree::BranchRead);
    tree.Expand(a);
    ASSERT_TRUE(WaitFor([&] { return read.count() > 0; }));
    ASSERT_EQ(a->CountSubitems(), 1);
    EXPECT_EQ(static_cast<KsTreeListItem *>(a->SubitemAt(0))->Name(), "deep");
    tree.Collapse(a);
    tree.Expand(a);
    done = expandedAgain();
    tree.ExpandToPath(root + "/a/deep/deeper");
    ASSERT_TRUE(done());
    EXPECT_EQ(tree.ReadCount(root + "/a"), 1);
    EXPECT_EQ(tree.SelectedPath(), root + "/a/deep/deeper");

    // Without the focus the path is opened but nothing is selected.
    focused = false;
    done = expandedAgain();
    tree.ExpandToPath(root + "/files-only");
    ASSERT_TRUE(done());
    EXPECT_TRUE(tree.SelectedPath().empty());
}

} // namespace
