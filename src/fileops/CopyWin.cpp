#include "fileops/CopyWin.h"

#include "fileops/CopyEngine.h"
#include "fileops/FileOpsMessages.h"
#include "fileops/OverWin.h"
#include "fileops/TransferRun.h"
#include "platform/Alerts.h"
#include "platform/Entry.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/RgbColor.h"
#include "widgets/StatusBar.h"
#include "widgets/WindowConventions.h"

#include <QCloseEvent>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QTimer>
#include <QToolButton>
#include <QtGlobal>
#include <algorithm>
#include <exception>
#include <system_error>

namespace kestrin {

namespace {

constexpr int kShortening = 32;
constexpr int kWidening = 30;
constexpr int kTimerInterval = 100;
// How long a stop may wait for the next block before the work is cut short.
constexpr int kStopGraceMs = 2000;
constexpr int kMargin = 10;
constexpr int kLineHeight = 17;
constexpr int kValueLeft = 58;
constexpr int kButtonSize = 24;
const QColor kPictureColor(64, 64, 64);

// One file (not a folder: lstat, so a link to a folder counts as a file) needs
// no overall bar, nor does a download or an upload of several items.
bool NeedsNoOverallBar(const platform::Message &request)
{
    int32_t count = 0;
    type_code type = 0;
    if (request.GetInfo("refs", &type, &count) != B_OK)
        count = 0;
    if (request.what == kMsgFtpDownload)
        return true;
    if ((request.what == kMsgCopyRequest || request.what == kMsgPackRequest) && count == 1) {
        entry_ref ref;
        if (request.FindRef("refs", 0, &ref) != B_OK)
            return false;
        return !platform::Entry(ref).IsDirectory();
    }
    // An SFTP transfer measures its trees first: its overall bar counts bytes.
    return count > 1 && request.what == kMsgCopyRequest && request.HasField("Session");
}

QIcon PauseIcon()
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.fillRect(QRect(3, 2, 4, 12), kPictureColor);
    painter.fillRect(QRect(9, 2, 4, 12), kPictureColor);
    return QIcon(pixmap);
}

QIcon StopIcon()
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.fillRect(QRect(3, 3, 10, 10), kPictureColor);
    return QIcon(pixmap);
}

} // namespace

CopyWin::CopyWin(const QRect &frame,
                 const QString &title,
                 const std::string &destination,
                 const platform::Message &request,
                 platform::Handler *target,
                 Job job)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , fRequest(request)
    , fDestination(destination)
    , fJob(job ? std::move(job) : Job([request, destination](CopyControl &control) {
        CopyEngine(request, destination, control).Run();
    }))
    , fTarget(target)
{
    setWindowTitle(title);
    fFullHeight = frame.height();
    fShort = NeedsNoOverallBar(request);
    setFixedSize(frame.width(), fShort ? fFullHeight - kShortening : fFullHeight);
    PlaceOnScreen(this, QRect(frame.topLeft(), size()));

    BuildViews();
    LayoutViews();
    // Stop is the way out of a copy, and what Escape does; nothing else
    // closes the window.
    WindowConventions::Apply(this, {.cancelButton = fStopButton, .closable = false});

    fProgressTimer = new QTimer(this);
    fProgressTimer->setInterval(kTimerInterval);
    connect(fProgressTimer, &QTimer::timeout, this, &CopyWin::ApplyProgress);

    show();
}

CopyWin::CopyWin(const QRect &frame, const TransferPlan &plan, platform::Handler *target)
    : CopyWin(frame,
              QString::fromStdString(plan.title),
              plan.destination,
              plan.steps.empty() ? platform::Message(0) : plan.steps.front().request,
              target,
              [plan](CopyControl &control) { TransferRun(plan, control).Run(); })
{}

CopyWin::~CopyWin()
{
    {
        std::lock_guard lock(fControlLock);
        fStop = true;
        fPaused = false;
        // No grace here: whoever deletes a running window (quitting does)
        // waits for the worker, and a silent server would hold it until the
        // connection's time-out.
        if (fStopAction)
            fStopAction();
    }
    fControlChanged.notify_all();
    if (fWorker.joinable())
        fWorker.join();
}

void CopyWin::BuildViews()
{
    fContainer = new QWidget(this);
    fContainer->setObjectName("temp");
    QPalette panel = fContainer->palette();
    panel.setColor(QPalette::Window, kPanelGrey);
    fContainer->setPalette(panel);
    fContainer->setAutoFillBackground(true);

    fFileBar = new StatusBar(fContainer);
    fFileBar->setObjectName("fileprogress");
    fFileBar->SetTrailingLabel(" Bytes");
    fMainBar = new StatusBar(fContainer);
    fMainBar->setObjectName("mainprogress");
    fMainBar->setVisible(!fShort);

    fFromLabel = new QLabel("From :", fContainer);
    fFromLabel->setObjectName("label1");
    fToLabel = new QLabel("To     :", fContainer);
    fToLabel->setObjectName("label2");
    fFromValue = new QLabel("initializing...", fContainer);
    fFromValue->setObjectName("FromPath");
    fToValue = new QLabel("initializing...", fContainer);
    fToValue->setObjectName("ToPath");

    fPauseButton = new QToolButton(fContainer);
    fPauseButton->setObjectName("PauseButton");
    fPauseButton->setIcon(PauseIcon());
    fPauseButton->setCheckable(true);
    fPauseButton->setFocusPolicy(Qt::NoFocus);
    fPauseButton->setAccessibleName("Pause");
    connect(fPauseButton, &QToolButton::clicked, this, [this] {
        platform::Message pause(kMsgPauseCopy);
        Dispatch(pause);
    });
    fStopButton = new QToolButton(fContainer);
    fStopButton->setObjectName("StopButton");
    fStopButton->setIcon(StopIcon());
    fStopButton->setFocusPolicy(Qt::NoFocus);
    fStopButton->setAccessibleName("Stop");
    connect(fStopButton, &QToolButton::clicked, this, [this] {
        platform::Message stop(kMsgStopCopy);
        Dispatch(stop);
    });
}

void CopyWin::LayoutViews()
{
    const int w = width();
    fContainer->setGeometry(0, 0, w, height());
    fFromLabel->setGeometry(kMargin, 6, kValueLeft - kMargin, kLineHeight);
    fFromValue->setGeometry(kValueLeft, 6, w - kValueLeft - kMargin, kLineHeight);
    fToLabel->setGeometry(kMargin, 6 + kLineHeight, kValueLeft - kMargin, kLineHeight);
    fToValue->setGeometry(kValueLeft, 6 + kLineHeight, w - kValueLeft - kMargin, kLineHeight);

    const int barHeight = fFileBar->sizeHint().height();
    const int fileTop = 10 + 2 * kLineHeight;
    const int buttonsWidth = 2 * kButtonSize + 4;
    fFileBar->setGeometry(kMargin, fileTop, w - 2 * kMargin - buttonsWidth - 6, barHeight);
    const int buttonTop = fileTop + barHeight - kButtonSize + 2;
    fPauseButton->setGeometry(w - kMargin - buttonsWidth, buttonTop, kButtonSize, kButtonSize);
    fStopButton->setGeometry(w - kMargin - kButtonSize, buttonTop, kButtonSize, kButtonSize);

    // The overall bar sits at the foot of the full height, in the part that a
    // window without it does without (it is hidden there as well).
    const int mainTop = std::max(fileTop + barHeight + 4, fFullHeight - barHeight - 4);
    fMainBar->setGeometry(kMargin, mainTop, w - 2 * kMargin, barHeight);
}

void CopyWin::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    LayoutViews();
}

void CopyWin::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (fFirstShow) {
        fFirstShow = false;
        StartRequest();
    }
}

void CopyWin::closeEvent(QCloseEvent *event)
{
    // Only the end of the work closes the window; Stop is the user's way out.
    if (fFinished)
        event->accept();
    else
        event->ignore();
}

void CopyWin::StartRequest()
{
    if (fRequest.what == kMsgCopyRequest && !fRequest.HasField("Session"))
        setFixedSize(width() + kWidening, height());

    fOverWin = std::make_unique<OverWin>(geometry(), "Item Exists");
    connect(fOverWin.get(), &OverWin::Answered, this, &CopyWin::OverwriteAnswered);

    fProgressTimer->start();
    try {
        fWorker = std::thread(&CopyWin::RunWorker, this);
    } catch (const std::system_error &error) {
        qWarning("Kestrin: no thread for the copy: %s", error.what());
        QTimer::singleShot(0, this, &CopyWin::WorkerFinished);
    }
}

void CopyWin::RunWorker()
{
    try {
        fJob(*this);
    } catch (const std::exception &error) {
        // Nothing can be shown from here; ending the window is what the user
        // would otherwise wait for forever.
        qWarning("Kestrin: the copy ended early: %s", error.what());
    }
    QMetaObject::invokeMethod(this, &CopyWin::WorkerFinished, Qt::QueuedConnection);
}

void CopyWin::WorkerFinished()
{
    if (fWorker.joinable())
        fWorker.join();
    fProgressTimer->stop();
    ApplyProgress();
    if (fOverWin)
        fOverWin->HideDisplay();
    fFinished = true;
    close();
    deleteLater();
}

void CopyWin::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgPauseCopy:
        TogglePause();
        break;
    case kMsgStopCopy:
        Stop();
        break;
    default:
        break;
    }
}

void CopyWin::TogglePause()
{
    bool paused = false;
    {
        std::lock_guard lock(fControlLock);
        if (!fStop)
            fPaused = !fPaused;
        paused = fPaused;
    }
    fControlChanged.notify_all();
    fPauseButton->setChecked(paused);
}

void CopyWin::Stop()
{
    {
        std::lock_guard lock(fControlLock);
        fStop = true;
        fPaused = false;
    }
    fControlChanged.notify_all();
    fPauseButton->setChecked(false);
    fPauseButton->setEnabled(false);
    fStopButton->setEnabled(false);
    // A stop is taken at the next block; a server that has gone silent never
    // sends one, so its connection is cut instead.
    QTimer::singleShot(kStopGraceMs, this, [this] {
        std::lock_guard lock(fControlLock);
        if (fStopAction)
            fStopAction();
    });
    // An open question would keep the worker waiting: Cancel ends the batch.
    if (fOverWin && fOverWin->IsShown()) {
        platform::Message cancel{uint32_t(kCancelBatch)};
        fOverWin->Dispatch(cancel);
    }
}

void CopyWin::BatchStarted(int32_t total, const std::string &text, const std::string &trailingText)
{
    std::lock_guard lock(fProgressLock);
    fProgress.batchKnown = true;
    fProgress.mainMax = total;
    fProgress.mainValue = 0;
    fProgress.mainText = text;
    fProgress.mainTrailing = trailingText;
    fProgress.dirty = true;
}

void CopyWin::FileStarted(const std::string &source, const std::string &target, double size)
{
    std::lock_guard lock(fProgressLock);
    fProgress.fileKnown = true;
    fProgress.fileMax = size;
    fProgress.fileValue = 0;
    fProgress.fileText.clear();
    fProgress.fileTrailing.clear();
    fProgress.source = source;
    fProgress.target = target;
    fProgress.dirty = true;
}

void CopyWin::ChunkCopied(int64_t bytes, const std::string &leafName, int64_t fileTotal)
{
    std::lock_guard lock(fProgressLock);
    fProgress.fileValue += double(bytes);
    fProgress.mainValue += double(bytes);
    fProgress.fileText = leafName;
    fProgress.fileTrailing = std::to_string(fileTotal);
    fProgress.dirty = true;
}

void CopyWin::TransferProgress(int32_t percentDelta,
                               const std::string &leafName,
                               const std::string &fileTrailing,
                               const std::string &mainTrailing)
{
    std::lock_guard lock(fProgressLock);
    fProgress.fileValue += percentDelta;
    fProgress.mainValue += percentDelta;
    fProgress.fileText = leafName;
    fProgress.fileTrailing = fileTrailing;
    fProgress.mainTrailing = mainTrailing;
    fProgress.dirty = true;
}

void CopyWin::SetProgressVisible(bool visible)
{
    {
        std::lock_guard lock(fProgressLock);
        fProgress.visible = visible;
    }
    // Not left to the timer: the window must be gone before a question that
    // the worker posts next, and queued calls arrive in order.
    QMetaObject::invokeMethod(this, &CopyWin::ApplyVisibility, Qt::QueuedConnection);
}

void CopyWin::SetStopAction(std::function<void()> action)
{
    std::lock_guard lock(fControlLock);
    fStopAction = std::move(action);
}

bool CopyWin::StopRequested()
{
    std::unique_lock lock(fControlLock);
    fControlChanged.wait(lock, [this] { return !fPaused || fStop; });
    return fStop;
}

int32_t CopyWin::AskOverwrite(const OverwriteQuestion &question)
{
    {
        std::lock_guard lock(fControlLock);
        if (fStop)
            return kCancelBatch;
        fAnswer = kNoDecision;
    }
    QMetaObject::invokeMethod(
        this, [this, question] { ShowQuestion(question); }, Qt::QueuedConnection);
    std::unique_lock lock(fControlLock);
    fControlChanged.wait(lock, [this] { return fAnswer != kNoDecision || fStop; });
    return fAnswer != kNoDecision ? fAnswer : kCancelBatch;
}

int32_t CopyWin::FileError(const platform::Alert &alert)
{
    // Shown on the GUI thread while the worker waits, as the overwrite
    // question is; the wait ends with a stop too, so a window deleted on
    // quitting never joins a worker that waits for the GUI thread.
    {
        std::lock_guard lock(fControlLock);
        if (fStop)
            return 0;
        fAlertAnswer.reset();
    }
    QMetaObject::invokeMethod(
        this,
        [this, alert] {
            const int32_t pressed = platform::Alerts::Go(alert);
            {
                std::lock_guard lock(fControlLock);
                fAlertAnswer = pressed;
            }
            fControlChanged.notify_all();
        },
        Qt::QueuedConnection);
    std::unique_lock lock(fControlLock);
    fControlChanged.wait(lock, [this] { return fAlertAnswer.has_value() || fStop; });
    return fAlertAnswer.value_or(0);
}

void CopyWin::ArchiveProgress(int32_t overall,
                              int32_t fileProgress,
                              const std::string &leafName,
                              const std::string &memberName)
{
    std::lock_guard lock(fProgressLock);
    fProgress.mainValue = overall;
    fProgress.fileValue = fileProgress;
    fProgress.fileText = leafName;
    fProgress.target = memberName;
    fProgress.dirty = true;
}

void CopyWin::ShowQuestion(const OverwriteQuestion &question)
{
    {
        std::lock_guard lock(fControlLock);
        if (fStop)
            return;
    }
    fOverWin->SetPaths(QString::fromStdString(question.overwriteLine),
                       QString::fromStdString(question.withFileLine),
                       QString::fromStdString(question.thirdLine),
                       QString::fromStdString(question.fourthLine));
    fOverWin->DoDisplay();
}

void CopyWin::OverwriteAnswered(int32_t decision)
{
    {
        std::lock_guard lock(fControlLock);
        fAnswer = decision;
    }
    fControlChanged.notify_all();
}

void CopyWin::ApplyVisibility()
{
    bool visible = true;
    {
        std::lock_guard lock(fProgressLock);
        visible = fProgress.visible;
    }
    if (!fFinished)
        setVisible(visible);
}

void CopyWin::ApplyProgress()
{
    Progress progress;
    {
        std::lock_guard lock(fProgressLock);
        if (!fProgress.dirty)
            return;
        progress = fProgress;
        fProgress.dirty = false;
    }
    // The counters hold where the bars should be; the bars move by the difference.
    if (progress.batchKnown) {
        fMainBar->SetMaxValue(float(progress.mainMax));
        fMainBar->SetText(QString::fromStdString(progress.mainText));
    }
    if (progress.mainTrailing)
        fMainBar->SetTrailingText(QString::fromStdString(*progress.mainTrailing));
    fMainBar->Update(float(progress.mainValue - fMainBar->CurrentValue()));
    if (progress.fileKnown)
        fFileBar->SetMaxValue(float(progress.fileMax));
    fFileBar->Update(float(progress.fileValue - fFileBar->CurrentValue()));
    fFileBar->SetText(QString::fromStdString(progress.fileText));
    fFileBar->SetTrailingText(QString::fromStdString(progress.fileTrailing));
    if (progress.source)
        fFromValue->setText(QString::fromStdString(*progress.source));
    if (progress.target)
        fToValue->setText(QString::fromStdString(*progress.target));
}

} // namespace kestrin
