#pragma once

#include "fileops/CopyControl.h"
#include "fileops/TransferPlan.h"
#include "platform/Handler.h"
#include "platform/Message.h"

#include <QRect>
#include <QString>
#include <QWidget>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

class QLabel;
class QTimer;
class QToolButton;

namespace kestrin {

class OverWin;
class StatusBar;

// The progress window of one request of the panes. The pane creates it and
// forgets it: the window shows itself, runs the request on a worker thread of
// its own when first shown, and closes and deletes itself when the worker is
// done. The user can pause, resume and stop the work, but not close the window.
//
// The worker reaches the window only through CopyControl: progress lands in
// counters that a timer on the GUI thread copies into the widgets about ten
// times a second; questions are handed to the GUI thread while the worker
// waits on a condition. The GUI thread never waits on the worker, except to
// join it once it has been told to stop.
class CopyWin : public QWidget, public platform::Handler, public CopyControl
{
    Q_OBJECT

public:
    // The work of a request, run on the worker thread. By default the copy
    // engine carries out the request; tests hand in a job of their own.
    using Job = std::function<void(CopyControl &control)>;

    CopyWin(const QRect &frame,
            const QString &title,
            const std::string &destination,
            const platform::Message &request,
            platform::Handler *target,
            Job job = {});
    // The window of a whole plan: its title and target, sized for its first
    // step, running every step on the one worker.
    CopyWin(const QRect &frame, const TransferPlan &plan, platform::Handler *target);
    // Stops the worker, cuts what it waits on (a server's connection) at once,
    // wakes it wherever it waits on this window (pause, an overwrite question)
    // and joins it. An alert the worker is showing through
    // platform::Alerts is answered on the GUI thread, so the window must not be
    // deleted from inside such an alert; it deletes itself once its work is done.
    ~CopyWin() override;

    // 300 pauses or resumes, 301 stops; both also come from the buttons.
    void MessageReceived(platform::Message &message) override;

    // The bars, on the GUI thread only.
    StatusBar *FileBar() const { return fFileBar; }
    StatusBar *MainBar() const { return fMainBar; }
    platform::Handler *Target() const { return fTarget; }

    // CopyControl, called on the worker thread.
    void BatchStarted(int32_t total,
                      const std::string &text,
                      const std::string &trailingText) override;
    void FileStarted(const std::string &source, const std::string &target, double size) override;
    void ChunkCopied(int64_t bytes, const std::string &leafName, int64_t fileTotal) override;
    void TransferProgress(int32_t percentDelta,
                          const std::string &leafName,
                          const std::string &fileTrailing,
                          const std::string &mainTrailing) override;
    void SetProgressVisible(bool visible) override;
    bool StopRequested() override;
    void SetStopAction(std::function<void()> action) override;
    int32_t AskOverwrite(const OverwriteQuestion &question) override;
    int32_t FileError(const platform::Alert &alert) override;
    void ArchiveProgress(int32_t overall,
                         int32_t fileProgress,
                         const std::string &leafName,
                         const std::string &memberName) override;

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // What the worker has reported and the widgets do not show yet. The
    // values are where the bars should be; maxima, the overall bar's texts
    // and the value lines only once something has set them.
    struct Progress
    {
        bool batchKnown = false;
        double mainMax = 0;
        double mainValue = 0;
        std::string mainText;
        std::optional<std::string> mainTrailing;
        bool fileKnown = false;
        double fileMax = 0;
        double fileValue = 0;
        std::string fileText;
        std::string fileTrailing;
        std::optional<std::string> source;
        std::optional<std::string> target;
        bool visible = true;
        bool dirty = false;
    };

    void BuildViews();
    void LayoutViews();
    void StartRequest();
    void RunWorker();
    void WorkerFinished();
    void TogglePause();
    void Stop();
    void ApplyProgress();
    void ApplyVisibility();
    void ShowQuestion(const OverwriteQuestion &question);
    void OverwriteAnswered(int32_t decision);

    // Set in the constructor, read by both threads, never changed.
    const platform::Message fRequest;
    const std::string fDestination;
    const Job fJob;

    // GUI thread. The widgets are children of this window (Qt ownership).
    platform::Handler *fTarget;
    QWidget *fContainer = nullptr;
    StatusBar *fFileBar = nullptr;
    StatusBar *fMainBar = nullptr;
    QLabel *fFromLabel = nullptr;
    QLabel *fToLabel = nullptr;
    QLabel *fFromValue = nullptr;
    QLabel *fToValue = nullptr;
    QToolButton *fPauseButton = nullptr;
    QToolButton *fStopButton = nullptr;
    QTimer *fProgressTimer = nullptr;
    std::unique_ptr<OverWin> fOverWin; // a window of its own, created when the request starts
    int fFullHeight = 0;               // the height with the overall bar
    bool fShort = false;               // the overall bar is cut off
    bool fFirstShow = true;
    bool fFinished = false;
    // Started and joined by the GUI thread; runs RunWorker().
    std::thread fWorker;

    // Written by the worker, read and cleared by the GUI thread's timer.
    std::mutex fProgressLock;
    Progress fProgress;

    // Pause, stop and the overwrite answer: written by the GUI thread, waited
    // for by the worker. fStop is also read without the lock; it is only ever
    // set with the lock held, so a waiter cannot miss it.
    std::mutex fControlLock;
    std::condition_variable fControlChanged;
    bool fPaused = false;
    int32_t fAnswer = 0;
    std::optional<int32_t> fAlertAnswer;
    std::atomic<bool> fStop{false};
    std::function<void()> fStopAction; // guarded by fControlLock
};

} // namespace kestrin
