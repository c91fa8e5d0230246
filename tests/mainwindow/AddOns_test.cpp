#include "mainwindow/AddOns.h"

#include "fileops/ArchiveContents.h"

#include "platform/AddOnRunner.h"
#include "platform/Entry.h"
#include "platform/Paths.h"

#include "support/TempHome.h"

#include <QTest>
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace fs = std::filesystem;
using platform::AddOnOutcome;

namespace {

constexpr int kWaitMs = 30000;

std::string SystemFolder()
{
    std::string folder;
    platform::FindDirectory(platform::DirectoryWhich::SystemAddOns, &folder);
    return folder;
}

// The names in a folder, as the folder lists them; none when it is missing.
std::vector<std::string> Listed(const std::string &folder)
{
    std::vector<std::string> names;
    std::error_code error;
    for (const auto &item : fs::directory_iterator(folder, error))
        names.push_back(item.path().filename().string());
    return names;
}

std::vector<std::string> Labels(const std::vector<AddOns::Item> &items)
{
    std::vector<std::string> labels;
    for (const AddOns::Item &item : items)
        labels.push_back(item.label);
    return labels;
}

entry_ref RefOf(const std::string &path)
{
    entry_ref ref;
    EXPECT_EQ(platform::Entry(path).GetRef(&ref), B_OK) << path;
    return ref;
}

// The problem a run reports; nullopt when none came.
std::optional<std::string> RunAndWait(const std::string &label,
                                      const entry_ref &folder,
                                      const std::vector<entry_ref> &entries = {})
{
    auto problem = std::make_shared<std::optional<std::string>>();
    AddOns::Run(label, folder, entries, [problem](const std::string &text) { *problem = text; });
    EXPECT_FALSE(*problem) << "the answer waits for the event loop";
    if (!QTest::qWaitFor([&] { return problem->has_value(); }, kWaitMs))
        return std::nullopt;
    return *problem;
}

std::optional<AddOnOutcome> RunAddOnAndWait(const std::string &path,
                                            const entry_ref &folder,
                                            const std::vector<entry_ref> &entries)
{
    auto outcome = std::make_shared<std::optional<AddOnOutcome>>();
    EXPECT_EQ(platform::AddOnRunner::Run(path,
                                         folder,
                                         entries,
                                         [outcome](const AddOnOutcome &seen) { *outcome = seen; }),
              B_OK);
    if (!QTest::qWaitFor([&] { return outcome->has_value(); }, kWaitMs))
        return std::nullopt;
    return *outcome;
}

// The names at the top of a zip file; what they hold is the packing
// routine's to get right, and its own tests check it.
std::vector<std::string> TopNames(const std::string &path)
{
    std::vector<std::string> names;
    for (const auto &item : kestrin::ArchiveContents::List(path, "").items)
        names.push_back(item.name);
    std::sort(names.begin(), names.end());
    return names;
}

class AddOnsTest : public ::testing::Test
{
protected:
    AddOnsTest()
        : root(fs::canonical(home.Root()).string())
        , userTracker(root + "/data/kestrin/add-ons/Tracker")
    {
        home.SetEnv("XDG_DATA_HOME", root + "/data");
        home.SetEnv("KESTRIN_TEST_ADDON_RECORD", std::nullopt);
        home.SetEnv("KESTRIN_TEST_ADDON_RESULT", std::nullopt);
        home.SetEnv("KESTRIN_TEST_ADDON_EXIT", std::nullopt);
    }

    void Install(const std::string &label, const std::string &target)
    {
        fs::create_directories(userTracker);
        fs::create_symlink(target, userTracker + "/" + label);
    }

    TempHome home;
    const std::string root;
    const std::string userTracker;
};

} // namespace

TEST_F(AddOnsTest, FindListsTheSystemAddOnsThenTheUsers)
{
    const std::string systemTracker = SystemFolder() + "/Tracker";
    const std::vector<std::string> system = Listed(systemTracker);

    // Without a Tracker folder of the user's, or any folder at all.
    EXPECT_EQ(Labels(AddOns::Find()), system);
    fs::create_directories(root + "/data/kestrin/add-ons");
    EXPECT_EQ(Labels(AddOns::Find()), system);

    // Whatever the folder holds counts, even a folder or a broken link.
    fs::create_directories(userTracker + "/A Folder");
    for (const char *name : {"MakeArchive", "makearchive", "MakeArchive2", "Zipper"})
        WriteFileBytes(userTracker + "/" + name, "");
    fs::create_symlink("nowhere", userTracker + "/Broken");

    const std::vector<AddOns::Item> items = AddOns::Find();
    std::vector<std::string> expected = system;
    for (const std::string &name : Listed(userTracker))
        expected.push_back(name);
    ASSERT_EQ(Labels(items), expected);
    for (size_t i = 0; i < items.size(); i++) {
        const std::string &folder = i < system.size() ? systemTracker : userTracker;
        EXPECT_EQ(items[i].path, folder + "/" + items[i].label);
        EXPECT_EQ(items[i].shortcutA, items[i].label == "MakeArchive") << items[i].label;
    }
}

TEST_F(AddOnsTest, TheBuildTreeProvidesMakeArchive)
{
    // Run from the build tree, the system folder is the one the build fills.
    const fs::path built = KESTRIN_MAKEARCHIVE;
    if (fs::path(SystemFolder()) != built.parent_path().parent_path())
        GTEST_SKIP() << "add-ons are installed in " << SystemFolder();

    const std::vector<AddOns::Item> items = AddOns::Find();
    const auto found = std::find_if(items.begin(), items.end(), [](const AddOns::Item &item) {
        return item.label == "MakeArchive";
    });
    ASSERT_NE(found, items.end());
    EXPECT_EQ(fs::path(found->path), built);
    EXPECT_TRUE(found->shortcutA);
    EXPECT_EQ(AddOns::FindAddOnPath("MakeArchive"), found->path);

    // The user's folder asked for under the system folder's name is searched once.
    const std::string suffix = "/kestrin/add-ons";
    const std::string system = SystemFolder();
    ASSERT_EQ(system.substr(system.size() - suffix.size()), suffix);
    home.SetEnv("XDG_DATA_HOME", system.substr(0, system.size() - suffix.size()));
    EXPECT_EQ(Labels(AddOns::Find()), Listed(system + "/Tracker"));
}

TEST_F(AddOnsTest, FindAddOnPathFollowsLinks)
{
    const std::string addOn = root + "/shelf/Three";
    fs::create_directories(root + "/shelf");
    fs::copy_file(KESTRIN_TEST_ADDON_RETURNS_THREE, addOn);
    Install("Linked", addOn);
    Install("Chained", userTracker + "/Linked");
    Install("Broken", root + "/shelf/missing");

    EXPECT_EQ(AddOns::FindAddOnPath("Linked"), userTracker + "/Linked");
    EXPECT_EQ(AddOns::FindAddOnPath("Chained"), userTracker + "/Chained");
    EXPECT_EQ(AddOns::FindAddOnPath("Broken"), "");
    EXPECT_EQ(AddOns::FindAddOnPath("Missing"), "");
    // A label names an entry of a Tracker folder and nothing else.
    EXPECT_EQ(AddOns::FindAddOnPath("../Tracker/Linked"), "");
    EXPECT_EQ(AddOns::FindAddOnPath(""), "");
}

TEST_F(AddOnsTest, RunTellsTheUserWhatWentWrong)
{
    const std::string text = root + "/text";
    WriteFileBytes(text, "not a shared object\n");
    Install("Fine", KESTRIN_TEST_ADDON_RECORD_ARGS);
    Install("Three", KESTRIN_TEST_ADDON_RETURNS_THREE);
    Install("Crash", KESTRIN_TEST_ADDON_CRASH_IN_CALL);
    Install("Entryless", KESTRIN_TEST_ADDON_NO_ENTRY_POINT);
    Install("Text", text);
    const entry_ref folder = RefOf(root);
    const std::vector<entry_ref> entries = {RefOf(text)};

    EXPECT_EQ(RunAndWait("Fine", folder, entries), "");
    EXPECT_EQ(RunAndWait("Three", folder, entries), "The add-on \"Three\" failed: the last words");
    EXPECT_EQ(RunAndWait("Crash", folder, entries),
              "The add-on \"Crash\" stopped unexpectedly (signal 11).");
    EXPECT_EQ(RunAndWait("Entryless", folder, entries),
              "The add-on \"Entryless\" has no process_refs entry point.");
    EXPECT_EQ(RunAndWait("Nowhere", folder, entries), "The add-on \"Nowhere\" was not found.");

    const std::string loadProblem = RunAndWait("Text", folder, entries).value_or("");
    const std::string prefix = "The add-on \"Text\" could not be loaded: ";
    EXPECT_EQ(loadProblem.substr(0, prefix.size()), prefix);
    EXPECT_GT(loadProblem.size(), prefix.size()) << "the loader's reason follows";
    EXPECT_EQ(loadProblem.find('\n'), std::string::npos);

    // A failure without a word from the add-on still says something.
    home.SetEnv("KESTRIN_TEST_ADDON_RESULT", "7");
    EXPECT_EQ(RunAndWait("Fine", folder, entries), "The add-on \"Fine\" failed (error 7).");

    const std::string previous = platform::AddOnRunner::SetHostPath(root + "/no-host");
    const std::optional<std::string> hostless = RunAndWait("Fine", folder, entries);
    platform::AddOnRunner::SetHostPath(previous);
    EXPECT_EQ(hostless,
              "The add-on \"Fine\" could not be run: Kestrin's helper program "
              "kestrin-addon-host is missing.");
}

TEST_F(AddOnsTest, MakeArchivePacksTheSelectionBesideItUnderAFreeName)
{
    const std::string work = root + "/work";
    fs::create_directories(work + "/folder/deeper");
    WriteFileBytes(work + "/first file.txt", "the first file\n");
    WriteFileBytes(work + "/folder/deeper/inner", "inner");
    fs::create_symlink("first file.txt", work + "/top link");
    std::vector<entry_ref> entries;
    for (const char *name : {"first file.txt", "folder", "top link"})
        entries.push_back(RefOf(work + "/" + name));
    const entry_ref folder = RefOf(work);
    const std::vector<std::string> expected = {"first file.txt", "folder", "top link"};

    std::optional<AddOnOutcome> outcome = RunAddOnAndWait(KESTRIN_MAKEARCHIVE, folder, entries);
    ASSERT_TRUE(outcome);
    ASSERT_EQ(outcome->kind, AddOnOutcome::Kind::Done) << outcome->message;
    const std::string archive = work + "/first file.txt.zip";
    EXPECT_EQ(TopNames(archive), expected);

    // The name is taken: the next archive gets a number, the first stays.
    const std::optional<std::string> before = ReadFileBytes(archive);
    outcome = RunAddOnAndWait(KESTRIN_MAKEARCHIVE, folder, entries);
    ASSERT_TRUE(outcome);
    ASSERT_EQ(outcome->kind, AddOnOutcome::Kind::Done) << outcome->message;
    EXPECT_EQ(ReadFileBytes(archive), before);
    EXPECT_EQ(TopNames(work + "/first file.txt 2.zip"), expected);
}

TEST_F(AddOnsTest, MakeArchiveLeavesNothingBehindWhenItFails)
{
    const std::string work = root + "/work";
    fs::create_directories(work);
    WriteFileBytes(work + "/kept", "data");
    // Selected, then gone before the add-on came to it.
    std::vector<entry_ref> entries = {RefOf(work + "/kept")};
    WriteFileBytes(work + "/vanished", "");
    entries.push_back(RefOf(work + "/vanished"));
    fs::remove(work + "/vanished");

    const std::optional<AddOnOutcome> outcome = RunAddOnAndWait(KESTRIN_MAKEARCHIVE,
                                                                RefOf(work),
                                                                entries);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->kind, AddOnOutcome::Kind::Failed);
    EXPECT_NE(outcome->message.find(work + "/vanished"), std::string::npos) << outcome->message;
    EXPECT_EQ(Listed(work), std::vector<std::string>{"kept"});
}
