#include "fileops/CopyWin.h"

#include "CopyTestSupport.h"
#include "RealServers.h"
#include "ScriptedServer.h"

#include "fileops/ArchiveCallbacks.h"
#include "fileops/OverWin.h"
#include "support/TickGaps.h"
#include "widgets/StatusBar.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <set>
#include <thread>

using kestrin::CopyControl;
using kestrin::CopyWin;
using kestrin::OverWin;
using kestrin::StatusBar;

namespace {

const QRect kFrame(100, 100, 400, 130);

// Holds a fake job on its worker until the test lets it go.
class Gate
{
public:
    void Open() { fPromise.set_value(); }
    void Wait() const { fOpened.wait(); }

private:
    std::promise<void> fPromise;
    std::shared_future<void> fOpened = fPromise.get_future().share();
};

QString TextOf(QWidget *window, const char *name)
{
    auto *label = window->findChild<QLabel *>(name);
    return label ? label->text() : QString("<no %1>").arg(name);
}

OverWin *OpenQuestion()
{
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (auto *question = qobject_cast<OverWin *>(widget); question && question->isVisible())
            return question;
    return nullptr;
}

// A progress window doing `job` for a request about one folder.
CopyWin *OpenWindow(CopyWin::Job job, uint32_t what = kestrin::kMsgCopyRequest)
{
    const std::string folder = QDir::tempPath().toStdString();
    return new CopyWin(kFrame, "Copy", folder, Request(what, {folder}), nullptr, std::move(job));
}

// Lets the job end and waits for the window to delete itself.
bool FinishesByItself(Gate &gate, QPointer<CopyWin> &window)
{
    gate.Open();
    return QTest::qWaitFor([&] { return window.isNull(); });
}

} // namespace

TEST(CopyWin, SizeFollowsTheRequestAndALocalCopyWidensOnStart)
{
    TempHome home;
    const std::string root = home.Root();
    const std::string file = root + "/file", folder = root + "/folder", link = root + "/link";
    fs::create_directory(folder);
    WriteFileBytes(file, "x");
    fs::create_directory_symlink(folder, link);

    struct Case
    {
        const char *what;
        uint32_t code;
        std::vector<std::string> items;
        bool session;
        bool shortened;
        bool widened;
    };
    using namespace kestrin;
    const Case cases[] = {
        {"copy of one file", kMsgCopyRequest, {file}, false, true, true},
        {"copy of one folder", kMsgCopyRequest, {folder}, false, false, true},
        {"copy of a link to a folder", kMsgCopyRequest, {link}, false, true, true},
        {"copy of two items", kMsgCopyRequest, {file, folder}, false, false, true},
        {"upload of two items", kMsgCopyRequest, {file, folder}, true, true, false},
        {"upload of one folder", kMsgCopyRequest, {folder}, true, false, false},
        {"download", kMsgFtpDownload, {}, false, true, false},
        // An SFTP transfer counts the bytes of its trees on the overall bar.
        {"SFTP upload of two items", kMsgSftpUpload, {file, folder}, true, false, false},
        {"SFTP download", kMsgSftpDownload, {}, true, false, false},
        {"pack of one file", kMsgPackRequest, {file}, false, true, false},
        {"delete of one file", kMsgDeleteRequest, {file}, false, false, false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        platform::Message request = Request(c.code, c.items);
        if (c.session)
            request.AddString("Session", "server");
        Gate gate;
        auto job = [&](CopyControl &) { gate.Wait(); };
        QPointer<CopyWin> window = new CopyWin(kFrame, "Copy", root, request, nullptr, job);
        EXPECT_TRUE(window->isVisible());
        EXPECT_EQ(window->height(), kFrame.height() - (c.shortened ? 32 : 0));
        EXPECT_EQ(window->width(), kFrame.width() + (c.widened ? 30 : 0));
        EXPECT_EQ(window->minimumSize(), window->maximumSize()) << "not resizable";
        EXPECT_TRUE(FinishesByItself(gate, window));
    }
}

TEST(CopyWin, ViewsCarryTheirNamesAndTextsAndTheUserCannotClose)
{
    Gate gate;
    auto job = [&](CopyControl &) { gate.Wait(); };
    QPointer<CopyWin> window = OpenWindow(job, kestrin::kMsgPackRequest);
    QWidget *container = window->findChild<QWidget *>("temp");
    ASSERT_NE(container, nullptr);
    for (const char *name :
         {"fileprogress", "mainprogress", "label1", "label2", "PauseButton", "StopButton"}) {
        QWidget *view = window->findChild<QWidget *>(name);
        ASSERT_NE(view, nullptr) << name;
        EXPECT_EQ(view->parentWidget(), container) << name;
    }
    EXPECT_EQ(window->FileBar()->TrailingLabel(), " Bytes");
    EXPECT_EQ(TextOf(window, "label1"), "From :");
    EXPECT_EQ(TextOf(window, "label2"), "To     :");
    EXPECT_EQ(TextOf(window, "FromPath"), "initializing...");
    EXPECT_EQ(TextOf(window, "ToPath"), "initializing...");

    EXPECT_FALSE(window->close());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(FinishesByItself(gate, window));
}

TEST(CopyWin, TheTimerShowsWhatTheWorkerReported)
{
    Gate gate;
    auto job = [&](CopyControl &control) {
        control.BatchStarted(30000, "Copying 2 files or directories", "29 K");
        // A flood of small files ends in one state, whatever the timer caught of it.
        for (int i = 0; i < 5000; i++) {
            control.FileStarted("/from/small", "/to/small", 2);
            control.ChunkCopied(2, "small", 2);
        }
        control.FileStarted("/from/big", "/to/big", 20000);
        control.ChunkCopied(4000, "big", 4000);
        control.ChunkCopied(500, "big", 4500);
        gate.Wait();
    };
    QPointer<CopyWin> window = OpenWindow(job);
    StatusBar *file = window->FileBar();
    StatusBar *overall = window->MainBar();
    ASSERT_TRUE(QTest::qWaitFor([&] { return file->TrailingText() == "4500"; }));
    EXPECT_FLOAT_EQ(file->CurrentValue(), 4500);
    EXPECT_FLOAT_EQ(file->MaxValue(), 20000);
    EXPECT_EQ(file->Text(), "big");
    EXPECT_EQ(file->TrailingLabel(), " Bytes");
    EXPECT_FLOAT_EQ(overall->CurrentValue(), 14500);
    EXPECT_FLOAT_EQ(overall->MaxValue(), 30000);
    EXPECT_EQ(overall->Text(), "Copying 2 files or directories");
    EXPECT_EQ(overall->TrailingText(), "29 K");
    EXPECT_EQ(TextOf(window, "FromPath"), "/from/big");
    EXPECT_EQ(TextOf(window, "ToPath"), "/to/big");
    EXPECT_TRUE(FinishesByItself(gate, window));
}

TEST(CopyWin, FtpProgressMovesBothBarsByThePercentageDifference)
{
    Gate gate;
    auto job = [&](CopyControl &control) {
        control.BatchStarted(200, "2 Files or Directories", "");
        control.FileStarted("/remote/a", "/to/a", 100);
        control.TransferProgress(12, "a", "1200 Bytes @ 1.2 kB/s", "1200");
        control.TransferProgress(25, "a", "3700 Bytes @ 3.6 kB/s", "3700");
        gate.Wait();
    };
    QPointer<CopyWin> window = OpenWindow(job, kestrin::kMsgFtpDownload);
    StatusBar *file = window->FileBar();
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->MainBar()->TrailingText() == "3700"; }));
    EXPECT_FLOAT_EQ(file->CurrentValue(), 37);
    EXPECT_FLOAT_EQ(window->MainBar()->CurrentValue(), 37);
    EXPECT_EQ(file->Text(), "a");
    EXPECT_EQ(file->TrailingText(), "3700 Bytes @ 3.6 kB/s");
    EXPECT_EQ(window->MainBar()->Text(), "2 Files or Directories");
    EXPECT_TRUE(FinishesByItself(gate, window));
}

TEST(CopyWin, ArchiveCallbacksOnTheWorkerMoveTheBars)
{
    Gate first, second;
    auto job = [&](CopyControl &control) {
        kestrin::UnZipCallback(40, 70, "readme.txt", &control);
        first.Wait();
        kestrin::ZipCallback(60, 20, "docs/deep/notes.txt", &control);
        kestrin::UnZipCallback(70, 5, "a/b", &control);
        kestrin::ZipCallback(-1, 90, "other/x", &control);
        second.Wait();
    };
    QPointer<CopyWin> window = OpenWindow(job, kestrin::kMsgUnpackRequest);
    StatusBar *file = window->FileBar();
    StatusBar *overall = window->MainBar();

    ASSERT_TRUE(QTest::qWaitFor([&] { return file->Text() == "readme.txt"; }));
    EXPECT_FLOAT_EQ(file->CurrentValue(), 70);
    EXPECT_FLOAT_EQ(overall->CurrentValue(), 40);
    EXPECT_EQ(TextOf(window, "ToPath"), "readme.txt");
    EXPECT_EQ(TextOf(window, "FromPath"), "initializing...") << "an archive names no source";

    first.Open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return file->Text() == "b"; }));
    EXPECT_FLOAT_EQ(file->CurrentValue(), 5) << "a position behind the bar moves it back";
    EXPECT_FLOAT_EQ(overall->CurrentValue(), 70);
    EXPECT_EQ(TextOf(window, "ToPath"), "a/b");
    EXPECT_TRUE(FinishesByItself(second, window));
}

TEST(CopyWin, PauseHoldsTheWorkerUntilResumedAndStopWakesIt)
{
    Gate first, second;
    // The worker's stage, and what the test had done when StopRequested returned.
    std::atomic<int> stage{0};
    std::atomic<bool> resumedYet{false}, stoppedYet{false};
    bool returns[3] = {};
    bool sawResume = false, sawStop = false;
    auto job = [&](CopyControl &control) {
        first.Wait();
        stage = 1;
        returns[0] = control.StopRequested();
        sawResume = resumedYet;
        stage = 2;
        second.Wait();
        stage = 3;
        returns[1] = control.StopRequested();
        sawStop = stoppedYet;
        returns[2] = control.StopRequested();
    };
    QPointer<CopyWin> window = OpenWindow(job, kestrin::kMsgDeleteRequest);
    auto *pause = window->findChild<QToolButton *>("PauseButton");
    auto *stop = window->findChild<QToolButton *>("StopButton");

    QTest::mouseClick(pause, Qt::LeftButton);
    EXPECT_TRUE(pause->isChecked());
    first.Open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return stage == 1; }));
    resumedYet = true;
    QTest::mouseClick(pause, Qt::LeftButton);
    EXPECT_FALSE(pause->isChecked());
    ASSERT_TRUE(QTest::qWaitFor([&] { return stage == 2; }));

    // Paused through a posted message this time, as another window would.
    window->Post(platform::Message(kestrin::kMsgPauseCopy));
    ASSERT_TRUE(QTest::qWaitFor([&] { return pause->isChecked(); }));
    second.Open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return stage == 3; }));
    stoppedYet = true;
    QTest::mouseClick(stop, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }));

    EXPECT_FALSE(returns[0]);
    EXPECT_TRUE(sawResume) << "StopRequested returned while paused";
    EXPECT_TRUE(returns[1]);
    EXPECT_TRUE(sawStop) << "StopRequested returned while paused";
    EXPECT_TRUE(returns[2]) << "a stop stays";
}

TEST(CopyWin, AQuestionHidesTheWindowAndAButtonAnswersTheWorker)
{
    Gate gate;
    std::atomic<int32_t> first{-1}, second{-1}, third{-1};
    const kestrin::OverwriteQuestion question{"/src/a", "/dst/a", "5 Bytes  x", "7 Bytes  y"};
    auto job = [&](CopyControl &control) {
        control.SetProgressVisible(false);
        first = control.AskOverwrite(question);
        control.SetProgressVisible(true);
        gate.Wait();
        second = control.AskOverwrite(question);
        third = control.AskOverwrite(question);
    };
    QPointer<CopyWin> window = OpenWindow(job);

    OverWin *asked = nullptr;
    ASSERT_TRUE(QTest::qWaitFor([&] { return (asked = OpenQuestion()) != nullptr; }));
    EXPECT_FALSE(window->isVisible()) << "the progress window hides while the question is open";
    EXPECT_EQ(asked->windowTitle(), "Item Exists");
    EXPECT_EQ(TextOf(asked, "OverwriteFile"), "Overwrite: /src/a");
    EXPECT_EQ(TextOf(asked, "OverwriteWith"), "With file: /dst/a");
    QTest::mouseClick(asked->findChild<QPushButton *>("SkipAll"), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return first != -1; }));
    EXPECT_EQ(first, kestrin::kSkipAll);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->isVisible(); }));
    EXPECT_FALSE(asked->isVisible());

    gate.Open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return OpenQuestion() != nullptr; }));
    platform::Message stop(kestrin::kMsgStopCopy);
    window->Dispatch(stop);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }));
    EXPECT_EQ(second, kestrin::kCancelBatch) << "Stop answers an open question with Cancel";
    EXPECT_EQ(third, kestrin::kCancelBatch) << "nothing is asked after a stop";
}

TEST(CopyWin, DestroyingTheWindowReleasesAWaitingWorker)
{
    Gate gate;
    std::atomic<bool> waiting{false};
    bool stopped = false;
    auto pausedJob = [&](CopyControl &control) {
        gate.Wait();
        waiting = true;
        stopped = control.StopRequested();
    };
    auto *paused = OpenWindow(pausedJob);
    QTest::mouseClick(paused->findChild<QToolButton *>("PauseButton"), Qt::LeftButton);
    gate.Open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return waiting.load(); }));
    delete paused;
    EXPECT_TRUE(stopped);

    int32_t answer = 0;
    auto askingJob = [&](CopyControl &control) {
        answer = control.AskOverwrite({"a", "b", "c", "d"});
    };
    auto *asking = OpenWindow(askingJob);
    ASSERT_TRUE(QTest::qWaitFor([&] { return OpenQuestion() != nullptr; }));
    delete asking;
    EXPECT_EQ(answer, kestrin::kCancelBatch);
    EXPECT_EQ(OpenQuestion(), nullptr);

    // The worker waits for an alert's answer from the GUI thread; deleting
    // the window there (quitting) must end that wait, not wait for it.
    std::atomic<bool> alerting{false};
    int32_t pressed = -1;
    auto job = [&](CopyControl &control) {
        alerting = true;
        pressed = control.FileError(platform::Alert{"", "Error", {"OK"}});
    };
    auto *window = OpenWindow(job);
    while (!alerting)
        std::this_thread::yield();
    delete window;
    EXPECT_EQ(pressed, 0);
}

// With no job of its own the window runs the engine for its request: a
// copy whose question it asks, a pack, a link whose error it shows.
TEST(CopyWin, RunsTheEngineAsksItsQuestionsAndShowsItsErrors)
{
    TempHome home;
    platform::AlertRecorder alerts;
    const std::string root = home.Root();
    fs::create_directories(root + "/src/folder/inner");
    fs::create_directories(root + "/dst/folder");
    WriteFileBytes(root + "/src/folder/a", std::string(100000, 'a'));
    WriteFileBytes(root + "/src/folder/inner/b", "bee");
    WriteFileBytes(root + "/dst/folder/a", "old");
    const platform::Message copy = Request(kestrin::kMsgCopyRequest, {root + "/src/folder"}, "Copy");

    QPointer<CopyWin> window = new CopyWin(kFrame, "Copy", root + "/dst", copy, nullptr);
    OverWin *asked = nullptr;
    ASSERT_TRUE(QTest::qWaitFor([&] { return (asked = OpenQuestion()) != nullptr; }));
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(TextOf(asked, "OverwriteFile").endsWith("/src/folder/a"));
    QTest::mouseClick(asked->findChild<QPushButton *>("Overwrite"), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }));
    EXPECT_EQ(ReadFileBytes(root + "/dst/folder/a"), std::string(100000, 'a'));
    EXPECT_EQ(ReadFileBytes(root + "/dst/folder/inner/b"), "bee");

    WriteFileBytes(root + "/file", "content");
    const platform::Message pack = Request(kestrin::kMsgPackRequest, {root + "/file"}, "Pack");
    window = new CopyWin(kFrame, "Packing", root + "/dst", pack, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }));
    EXPECT_EQ(std::set<fs::path>(fs::directory_iterator(root + "/dst"), {}),
              (std::set<fs::path>{root + "/dst/file.zip", root + "/dst/folder"}));
    EXPECT_EQ(ReadFileBytes(root + "/file"), "content");

    const platform::Message link = Request(kestrin::kMsgCopyRequest, {root + "/file"}, "Link");
    WriteFileBytes(root + "/dst/folder/file", "taken");
    window = new CopyWin(kFrame, "Copy", root + "/dst/folder", link, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }));
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0], kFileExistsAlert);
    EXPECT_EQ(ReadFileBytes(root + "/dst/folder/file"), "taken");
}

// How the user leaves a running download: the Stop button, or quitting,
// which deletes the window.
enum class WayOut { StopButton, Quitting };

class CopyWinSilentServer : public testing::TestWithParam<WayOut>
{};

// A server that goes silent in the middle of a file would hold the worker
// until the connection's time-out (a minute): the window cuts the
// connection, and the download ends quietly, leaving nothing behind. Quitting
// waits for the worker on the GUI thread, so it cuts at once.
TEST_P(CopyWinSilentServer, LeavingIsNotHeldUpAndLeavesNothing)
{
    ScriptedServer server(ScriptedServer::SilentAfterTheFirstBlock);
    TempHome home;
    platform::AlertRecorder alerts;
    const std::string dest = home.Root() + "/dest";
    fs::create_directory(dest);
    platform::Message request = FtpRequest(kestrin::kMsgFtpDownload, server.Port(), "/x");
    request.AddString("FtpFile", "f");

    QPointer<CopyWin> window = new CopyWin(kFrame, "Download", dest, request, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] {
        return !fs::is_empty(dest) && fs::file_size(fs::directory_iterator(dest)->path()) == 1000;
    }));
    if (GetParam() == WayOut::StopButton) {
        QTest::mouseClick(window->findChild<QToolButton *>("StopButton"), Qt::LeftButton);
        EXPECT_TRUE(QTest::qWaitFor([&] { return window.isNull(); }, 30000));
    } else {
        QElapsedTimer deleting;
        deleting.start();
        delete window.data();
        // Uncut, the worker would wait for the connection's time-out, or
        // here for the script to give up after its five seconds; a cut takes
        // milliseconds.
        EXPECT_LT(deleting.elapsed(), 4000);
        RecordProperty("quit_ms", int(deleting.elapsed()));
    }
    server.Finish();
    EXPECT_TRUE(alerts.Shown().empty()) << alerts.Shown()[0].text;
    EXPECT_TRUE(fs::is_empty(dest));
}

INSTANTIATE_TEST_SUITE_P(WaysOut,
                         CopyWinSilentServer,
                         testing::Values(WayOut::StopButton, WayOut::Quitting),
                         [](const testing::TestParamInfo<WayOut> &info) {
                             return info.param == WayOut::StopButton ? "StopButton" : "Quitting";
                         });

// The server's session dies in the middle of a file, one way and then the
// other, while the server itself runs on: each transfer logs in again and
// goes on where it broke, and the file arrives whole. Then the server stops
// in the middle of a download and turns every attempt away: the window says
// the connection was lost, and no part of the file stays. The window stays
// responsive throughout.
TEST(CopyWin, ADroppedConnectionIsTakenUpAgainAndALostServerLeavesNoPartialFile)
{
    // Slow enough that the session is dropped long before a file is whole,
    // even when a loaded machine lets this thread look at the file late: the
    // 4 MiB take four seconds.
    VsftpdServer server(1024 * 1024);
    if (!server.Unavailable().empty())
        GTEST_SKIP() << server.Unavailable();
    TempHome home;
    platform::AlertRecorder alerts;
    const std::string remote = server.Root() + "/upload";
    const std::string local = home.Root() + "/local";
    fs::create_directory(local);
    const std::string down = RandomBytes(4 * 1024 * 1024, 1);
    const std::string up = RandomBytes(4 * 1024 * 1024, 2);
    WriteFileBytes(remote + "/down", down);
    WriteFileBytes(local + "/up", up);
    const auto hasBytes = [](const std::string &folder) {
        for (const auto &entry : fs::directory_iterator(folder)) {
            if (entry.is_regular_file() && entry.file_size() > 0)
                return true;
        }
        return false;
    };

    platform::Message download = FtpRequest(kestrin::kMsgFtpDownload, server.Port(), remote);
    download.AddString("FtpFile", "down");
    const std::string received = home.Root() + "/received";
    fs::create_directory(received);
    // The window thread's pauses count while each transfer runs: not the
    // fonts a first window loads, nor the test's own reading of 4 MiB files
    // in between, which under the sanitizers on a loaded machine can take a
    // second.
    qint64 longestPause = 0;
    std::optional<TickGaps> gaps;
    const auto ended = [&](const QPointer<CopyWin> &window) {
        const bool closed = QTest::qWaitFor([&] { return window.isNull(); }, 30000);
        longestPause = std::max(longestPause, gaps->Longest());
        gaps.reset();
        return closed;
    };
    QPointer<CopyWin> window = new CopyWin(kFrame, "Download", received, download, nullptr);
    gaps.emplace();
    ASSERT_TRUE(QTest::qWaitFor([&] { return hasBytes(received); }));
    TickGaps::OffTheWindowThread([&] { server.DropSessions(); });
    ASSERT_TRUE(ended(window));
    EXPECT_TRUE(ReadFileBytes(received + "/down") == down);
    EXPECT_EQ(server.Sessions(), 2u);

    fs::remove(remote + "/down");
    platform::Message upload = FtpRequest(kestrin::kMsgCopyRequest, server.Port(), remote);
    upload.AddRef("refs", RefFor(local + "/up"));
    upload.AddString("Session", "site.ftp");
    window = new CopyWin(kFrame, "Upload", remote, upload, nullptr);
    gaps.emplace();
    ASSERT_TRUE(QTest::qWaitFor([&] { return hasBytes(remote); }));
    TickGaps::OffTheWindowThread([&] { server.DropSessions(); });
    ASSERT_TRUE(ended(window));
    EXPECT_TRUE(ReadFileBytes(remote + "/up") == up);
    EXPECT_EQ(server.Sessions(), 4u);
    EXPECT_TRUE(alerts.Shown().empty()) << alerts.Shown()[0].text;

    fs::rename(remote + "/up", remote + "/again");
    fs::remove(received + "/down");
    download.ReplaceString("FtpFile", 0, "again");
    window = new CopyWin(kFrame, "Download", received, download, nullptr);
    gaps.emplace();
    ASSERT_TRUE(QTest::qWaitFor([&] { return hasBytes(received); }));
    TickGaps::OffTheWindowThread([&] { server.Stop(); });
    ASSERT_TRUE(ended(window));
    EXPECT_TRUE(fs::is_empty(received));
    EXPECT_EQ(TextsOf(alerts.Shown()),
              std::vector<std::string>{
                  "Kestrin did not download \"again\": the connection to the server was lost."});
    EXPECT_LT(longestPause, TickGaps::kBlockedMs);
}
