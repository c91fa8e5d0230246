#include "MessageRecorder.h"
#include "TempHome.h"
#include "SmallVolume.h"
#include "UnprivilegedRerun.h"
#include "platform/AlertRecorder.h"
#include "query/ContentSearch.h"
#include "query/PredicateParser.h"
#include "query/QueryRun.h"
#include "query/QueryWalk.h"

#include <QTest>
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using kestrin::ContentSearch;
using kestrin::QueryRun;
using kestrin::QueryWalk;

namespace {

// The paths a walk finds, sorted (threads find them in any order), each
// checked against the reference that carries it.
std::vector<std::string> Found(const std::string &predicate,
                               const std::vector<std::string> &roots,
                               std::optional<std::string> text = std::nullopt)
{
    QueryWalk walk(*kestrin::PredicateParser::Parse(predicate).predicate, std::move(text));
    walk.Run(roots);
    const std::vector<entry_ref> refs = walk.TakeResults();
    EXPECT_EQ(walk.Found(), int64_t(refs.size()));
    std::vector<std::string> paths;
    for (const entry_ref &ref : refs) {
        struct stat folder;
        EXPECT_EQ(lstat(fs::path(ref.path).parent_path().c_str(), &folder), 0);
        EXPECT_EQ(ref.directory, folder.st_ino) << ref.path;
        EXPECT_EQ(ref.device, folder.st_dev) << ref.path;
        EXPECT_EQ(fs::path(ref.path).filename().string(), ref.name);
        paths.push_back(ref.path);
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace

TEST(QueryWalk, FindsEachEntryOnceWithoutFollowingLinks)
{
    TempHome home;
    const std::string root = home.Root() + "/tree";
    fs::create_directories(root + "/a/b/c");
    fs::create_directories(root + "/x7y3");
    WriteFileBytes(root + "/a/one73", "");
    WriteFileBytes(root + "/a/b/c/two73", "");
    WriteFileBytes(root + "/a/b/other", "");
    // Qt cannot name this file to remove it with the temporary folder.
    const std::string badName = root
                                + "/bad\xff\xfe"
                                  "73";
    WriteFileBytes(badName, "");
    const std::shared_ptr<void> removeBadName(nullptr, [&](void *) { fs::remove(badName); });
    fs::create_directory_symlink("..", root + "/a/b/loop73");
    fs::create_directory_symlink(root + "/a", root + "/link");
    fs::create_directory_symlink(root, home.Root() + "/rootlink");

    // The same folder twice, through a link to it, and inside an earlier
    // root: walked once; the link itself is a match but never entered.
    const std::vector<std::string> expected = {root + "/a/b/c/two73",
                                               root + "/a/b/loop73",
                                               root + "/a/one73",
                                               badName,
                                               root + "/x7y3"};
    EXPECT_EQ(Found("name==\"*7*3*\"", {root, root, home.Root() + "/rootlink"}), expected);
    EXPECT_EQ(Found("name==\"*7*3*\"", {root + "/missing", root}), expected);

    // A loop walked by name only never reaches a file twice.
    EXPECT_EQ(Found("name==\"other\"", {root, root + "/a/b"}),
              std::vector<std::string>{root + "/a/b/other"});
    EXPECT_EQ(Found("(name==\"*\")&&(size>=1000000000)", {root}), std::vector<std::string>{});
}

TEST(QueryWalk, StaysOnTheRootsDevice)
{
    TempHome home;
    const std::string root = home.Root() + "/tree";
    SmallVolume volume(root + "/mounted", "64k");
    if (!volume.Mount())
        GTEST_SKIP() << SmallVolume::kCannotMount;
    const std::string &mounted = volume.Path();
    WriteFileBytes(mounted + "/inner", "");
    WriteFileBytes(root + "/outer", "");

    EXPECT_EQ(Found("name==\"*er\"", {root}), std::vector<std::string>{root + "/outer"});
    EXPECT_EQ(Found("name==\"*er\"", {root, mounted}),
              (std::vector<std::string>{mounted + "/inner", root + "/outer"}));
}

TEST(QueryWalk, PassesOverWhatItMayNotRead)
{
    if (UnprivilegedRerun::Delegated())
        return;
    TempHome home;
    const std::string root = home.Root() + "/tree";
    fs::create_directories(root + "/closed");
    WriteFileBytes(root + "/closed/hidden", "needle");
    WriteFileBytes(root + "/unreadable", "needle");
    WriteFileBytes(root + "/open", "needle");
    fs::permissions(root + "/closed", fs::perms::none);
    fs::permissions(root + "/unreadable", fs::perms::none);
    platform::AlertRecorder alerts;

    EXPECT_EQ(Found("name==\"*\"", {root}),
              (std::vector<std::string>{root + "/closed", root + "/open", root + "/unreadable"}));
    EXPECT_EQ(Found("name==\"*\"", {root}, "needle"), std::vector<std::string>{root + "/open"});
    EXPECT_EQ(alerts.Count(), 0u);
    fs::permissions(root + "/closed", fs::perms::owner_all);
}

TEST(ContentSearch, FollowsTheBlockRule)
{
    TempHome home;
    const std::string path = home.Root() + "/data";
    const size_t block = ContentSearch::kBlockSize;
    const auto search = [&](const std::string &content, const std::string &text) {
        WriteFileBytes(path, content);
        return ContentSearch::Search(path, text);
    };
    using R = ContentSearch::Result;

    // Across the first border, and deep in a later block.
    EXPECT_EQ(search(std::string(block - 3, 'a') + "needle" + std::string(100, 'b'), "needle"),
              R::Found);
    EXPECT_EQ(search(std::string(5 * block, 'a') + "needle", "needle"), R::Found);
    EXPECT_EQ(search(std::string(3 * block, 'a'), "needle"), R::NotFound);
    // Case-sensitive bytes.
    EXPECT_EQ(search("a Needle", "needle"), R::NotFound);
    // A block ends at its first zero byte; the next block starts afresh.
    EXPECT_EQ(search(std::string(10, 'a') + '\0' + "needle", "needle"), R::NotFound);
    EXPECT_EQ(search(std::string(10, 'a') + '\0' + std::string(2 * block, 'b') + "needle", "needle"),
              R::Found);
    // A file exactly one block long is read once more, at the overlap.
    EXPECT_EQ(search(std::string(block - 6, 'a') + "needle", "needle"), R::Found);
    EXPECT_EQ(ContentSearch::Search(home.Root() + "/none", "x"), R::CannotOpen);
}

TEST(QueryRun, SendsOneResultsMessageOrNothingWhenCancelled)
{
    TempHome home;
    const std::string root = home.Root() + "/tree";
    fs::create_directories(root + "/sub");
    WriteFileBytes(root + "/sub/big", std::string(5000, 'x') + "needle");
    WriteFileBytes(root + "/small", "needle");
    WriteFileBytes(root + "/big2", std::string(5000, 'y'));
    MessageRecorder recipient;

    const std::string predicate = "(name==\"*\")&&(size>=4096)";
    std::string error;
    auto run = QueryRun::Start({predicate, "needle", {root}, 601}, &recipient, 77, &error);
    ASSERT_TRUE(run) << error;
    ASSERT_TRUE(QTest::qWaitFor([&] { return !recipient.messages.empty(); }));
    EXPECT_EQ(recipient.messages[0].what, 77u);
    platform::Message results = run->TakeResults();
    EXPECT_EQ(results.what, 601u);
    entry_ref ref;
    EXPECT_EQ(results.FindRef("ref", 0, &ref), B_OK);
    EXPECT_EQ(ref.path, root + "/sub/big");
    EXPECT_NE(results.FindRef("ref", 1, &ref), B_OK);
    std::string text;
    EXPECT_EQ(results.FindString("QueryString", &text), B_OK);
    EXPECT_EQ(text, predicate);
    EXPECT_EQ(run->Found(), 1);
    EXPECT_EQ(run->LookedAt(), 4);

    // Nothing found: only the predicate.
    run = QueryRun::Start({"name==\"nothing\"", std::nullopt, {root}, 601}, &recipient, 77, &error);
    ASSERT_TRUE(QTest::qWaitFor([&] { return recipient.messages.size() == 2; }));
    results = run->TakeResults();
    EXPECT_NE(results.FindRef("ref", 0, &ref), B_OK);
    EXPECT_EQ(results.FindString("QueryString", &text), B_OK);

    // Cancelled over the whole machine: done soon after, with nothing.
    run = QueryRun::Start({"name==\"*\"", std::nullopt, {"/"}, 601}, &recipient, 77, &error);
    run->Cancel();
    ASSERT_TRUE(QTest::qWaitFor([&] { return recipient.messages.size() == 3; }));
    EXPECT_TRUE(run->IsDone());
    EXPECT_EQ(run->TakeResults().what, 0u);

    // A predicate that does not parse runs nothing.
    EXPECT_FALSE(QueryRun::Start({"(size>", std::nullopt, {root}, 601}, &recipient, 77, &error));
    EXPECT_FALSE(error.empty());
}
