#include "platform/AddOnRunner.h"

#include "platform/Entry.h"

#include "support/TempHome.h"

#include <QTest>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <sys/stat.h>

using namespace platform;
namespace fs = std::filesystem;

namespace {

constexpr int kWaitMs = 30000;

using Kind = AddOnOutcome::Kind;

// What a run's completion saw. Shared with the completion, which may come
// after a failed test has given up waiting.
struct Seen
{
    std::optional<AddOnOutcome> outcome;
    int calls = 0;
};

std::shared_ptr<Seen> Start(const std::string &addOn,
                            const entry_ref &folder,
                            const std::vector<entry_ref> &entries = {})
{
    auto seen = std::make_shared<Seen>();
    EXPECT_EQ(AddOnRunner::Run(addOn,
                               folder,
                               entries,
                               [seen](const AddOnOutcome &outcome) {
                                   seen->outcome = outcome;
                                   seen->calls++;
                               }),
              B_OK);
    EXPECT_EQ(seen->calls, 0) << "the completion waits for the event loop";
    return seen;
}

bool Wait(const std::shared_ptr<Seen> &seen)
{
    return QTest::qWaitFor([&] { return seen->calls > 0; }, kWaitMs);
}

// The outcome; after a run that never ended, a failure and a default outcome.
AddOnOutcome RunAndWait(const std::string &addOn,
                        const entry_ref &folder,
                        const std::vector<entry_ref> &entries = {})
{
    const std::shared_ptr<Seen> seen = Start(addOn, folder, entries);
    if (!Wait(seen)) {
        ADD_FAILURE() << addOn << " never ended";
        return {};
    }
    EXPECT_EQ(seen->calls, 1);
    return *seen->outcome;
}

entry_ref RefOf(const std::string &path)
{
    entry_ref ref;
    EXPECT_EQ(Entry(path).GetRef(&ref), B_OK) << path;
    return ref;
}

// The fields of a record_args record, each ended by a NUL byte.
std::vector<std::string> Fields(const std::string &record)
{
    std::vector<std::string> fields;
    size_t start = 0;
    for (size_t end; (end = record.find('\0', start)) != std::string::npos; start = end + 1)
        fields.push_back(record.substr(start, end - start));
    return fields;
}

void AppendRef(std::vector<std::string> *fields, const entry_ref &ref)
{
    fields->push_back(std::to_string(uintmax_t(ref.device)));
    fields->push_back(std::to_string(uintmax_t(ref.directory)));
    fields->push_back(ref.name);
    fields->push_back(ref.path);
}

// QTemporaryDir cannot remove names that are not UTF-8.
struct RemovedAtEnd
{
    ~RemovedAtEnd()
    {
        std::error_code error;
        fs::remove_all(path, error);
    }
    std::string path;
};

class AddOnRunnerTest : public ::testing::Test
{
protected:
    AddOnRunnerTest()
        : root(fs::canonical(home.Root()).string())
        , record(root + "/record")
    {
        home.SetEnv("KESTRIN_TEST_ADDON_RECORD", record);
        home.SetEnv("KESTRIN_TEST_ADDON_RESULT", std::nullopt);
        home.SetEnv("KESTRIN_TEST_ADDON_EXIT", std::nullopt);
    }

    TempHome home;
    const std::string root;
    const std::string record;
};

} // namespace

TEST_F(AddOnRunnerTest, TheFolderAndEntriesArriveExactly)
{
    // Names that a command line, a text codec or a field separator could bend.
    const std::string folder = root + "/a folder\nwith \xff\xfe bytes";
    const RemovedAtEnd cleanup{folder};
    fs::create_directories(folder);
    const std::vector<std::string> names = {"plain",
                                            "with  spaces ",
                                            "new\nline",
                                            "bad\xc3\x28 utf-8",
                                            "100%25 %",
                                            "-v",
                                            "tab\there"};
    std::vector<entry_ref> entries;
    for (const std::string &name : names) {
        WriteFileBytes(folder + "/" + name, name);
        entries.push_back(RefOf(folder + "/" + name));
    }
    // Numbers are passed whole, all 64 bits of them; empty strings stay.
    entry_ref odd;
    odd.device = dev_t(-1);
    odd.directory = ino_t(-2);
    odd.path = "/";
    entries.push_back(odd);

    const entry_ref folderRef = RefOf(folder);
    const AddOnOutcome outcome = RunAndWait(KESTRIN_TEST_ADDON_RECORD_ARGS, folderRef, entries);
    EXPECT_EQ(outcome.kind, Kind::Done) << outcome.message;

    std::vector<std::string> expected = {std::to_string(entries.size()), "null", folder};
    AppendRef(&expected, folderRef);
    for (const entry_ref &entry : entries)
        AppendRef(&expected, entry);
    const std::optional<std::string> written = ReadFileBytes(record);
    ASSERT_TRUE(written);
    EXPECT_EQ(Fields(*written), expected);

    // No selection at all still reaches the add-on, as a count of 0.
    EXPECT_EQ(RunAndWait(KESTRIN_TEST_ADDON_RECORD_ARGS, folderRef).kind, Kind::Done);
    expected = {"0", "null", folder};
    AppendRef(&expected, folderRef);
    EXPECT_EQ(Fields(ReadFileBytes(record).value_or("")), expected);
}

TEST_F(AddOnRunnerTest, TellsHowAnAddOnFailed)
{
    struct Case
    {
        const char *addOn;
        std::optional<std::string> returned; // what record_args returns
        std::optional<std::string> exit;     // the status it exits with instead
        Kind kind;
        int result;
        const char *message;
    };
    for (const Case &each : {
             // Its standard output came first, and does not bury its last words.
             Case{KESTRIN_TEST_ADDON_RETURNS_THREE, {}, {}, Kind::Failed, 3, "the last words"},
             // Results an exit status could not carry.
             Case{KESTRIN_TEST_ADDON_RECORD_ARGS, "256", {}, Kind::Failed, 256, ""},
             Case{KESTRIN_TEST_ADDON_RECORD_ARGS, "-1", {}, Kind::Failed, -1, ""},
             // An add-on that exits by itself: its status is its result, even
             // one the host uses for its own verdicts.
             Case{KESTRIN_TEST_ADDON_RECORD_ARGS, {}, "3", Kind::Failed, 3, ""},
             Case{KESTRIN_TEST_ADDON_RECORD_ARGS, {}, "0", Kind::Done, 0, ""},
         }) {
        SCOPED_TRACE(testing::Message() << each.addOn << " " << each.returned.value_or("-") << " "
                                        << each.exit.value_or("-"));
        home.SetEnv("KESTRIN_TEST_ADDON_RESULT", each.returned);
        home.SetEnv("KESTRIN_TEST_ADDON_EXIT", each.exit);
        const AddOnOutcome outcome = RunAndWait(each.addOn, RefOf(root));
        EXPECT_EQ(outcome.kind, each.kind);
        EXPECT_EQ(outcome.result, each.result);
        EXPECT_EQ(outcome.message, each.message);
    }
}

TEST_F(AddOnRunnerTest, TellsWhatCouldNotBeLoaded)
{
    const entry_ref folder = RefOf(root);

    EXPECT_EQ(RunAndWait(KESTRIN_TEST_ADDON_NO_ENTRY_POINT, folder).kind, Kind::NoEntryPoint);

    const std::string text = root + "/not an add-on";
    WriteFileBytes(text, "#!/bin/sh\necho hello\n");
    for (const std::string &path : {text, root + "/missing"}) {
        const AddOnOutcome outcome = RunAndWait(path, folder);
        EXPECT_EQ(outcome.kind, Kind::CannotLoad) << path;
        // The loader's own words, which name the file.
        EXPECT_NE(outcome.message.find(path), std::string::npos) << outcome.message;
        EXPECT_EQ(outcome.message.find('\n'), std::string::npos);
    }
}

TEST_F(AddOnRunnerTest, ACrashEndsOnlyItsRun)
{
    const std::string folder = root + "/folder";
    fs::create_directories(folder);

    for (const char *addOn : {KESTRIN_TEST_ADDON_CRASH_IN_CALL, KESTRIN_TEST_ADDON_CRASH_ON_LOAD}) {
        const AddOnOutcome outcome = RunAndWait(addOn, RefOf(folder));
        EXPECT_EQ(outcome.kind, Kind::Crashed) << addOn << ": " << outcome.message;
        EXPECT_EQ(outcome.signal, SIGSEGV) << addOn;
    }
    // The run's working folder is the user's: no core file lands in it.
    EXPECT_TRUE(fs::is_empty(folder));

    EXPECT_EQ(RunAndWait(KESTRIN_TEST_ADDON_RECORD_ARGS, RefOf(folder)).kind, Kind::Done);
}

TEST_F(AddOnRunnerTest, RunsSideBySideKeepTheirOwnOutcomes)
{
    const entry_ref folder = RefOf(root);
    const std::shared_ptr<Seen> failing = Start(KESTRIN_TEST_ADDON_RETURNS_THREE, folder);
    const std::shared_ptr<Seen> crashing = Start(KESTRIN_TEST_ADDON_CRASH_IN_CALL, folder);
    const std::shared_ptr<Seen> missing = Start(KESTRIN_TEST_ADDON_NO_ENTRY_POINT, folder);
    ASSERT_TRUE(Wait(failing) && Wait(crashing) && Wait(missing));
    EXPECT_EQ(failing->outcome->kind, Kind::Failed);
    EXPECT_EQ(crashing->outcome->kind, Kind::Crashed);
    EXPECT_EQ(missing->outcome->kind, Kind::NoEntryPoint);
}

TEST_F(AddOnRunnerTest, WithoutItsHostNothingRuns)
{
    // The build tree's host, when the test is not beside one.
    EXPECT_EQ(fs::path(AddOnRunner::HostPath()).filename(), "kestrin-addon-host");

    const std::string notExecutable = root + "/kestrin-addon-host";
    WriteFileBytes(notExecutable, "");
    for (const std::string &host : {root + "/missing", notExecutable}) {
        const std::string previous = AddOnRunner::SetHostPath(host);
        EXPECT_EQ(AddOnRunner::HostPath(), "");
        const AddOnOutcome outcome = RunAndWait(KESTRIN_TEST_ADDON_RECORD_ARGS, RefOf(root));
        AddOnRunner::SetHostPath(previous);
        EXPECT_EQ(outcome.kind, Kind::HostMissing) << host;
    }
    EXPECT_FALSE(fs::exists(record)) << "the add-on ran after all";
}
