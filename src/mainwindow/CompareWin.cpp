#include "mainwindow/CompareWin.h"

#include "widgets/PlaceOnScreen.h"
#include "widgets/StatusBar.h"
#include "widgets/WindowConventions.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

namespace kestrin {

namespace {

constexpr int kTimerInterval = 100;

} // namespace

CompareWin::CompareWin(const QRect &frame,
                       const std::string &leftFolder,
                       const std::string &rightFolder,
                       std::vector<FolderComparison::Entry> files,
                       Done done,
                       QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , fProgress(std::make_shared<ContentComparison::Progress>())
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName("CompareWin");
    setWindowTitle("Compare Folders by Content");

    int64_t total = 0;
    for (const FolderComparison::Entry &file : files) {
        total += file.size;
        fNames.push_back(file.name);
    }
    fBar = new StatusBar(this);
    fBar->setObjectName("compareprogress");
    fBar->SetLabel("Comparing ");
    // The bar counts kilobytes: a float holds them exactly far further
    // than it holds bytes.
    fBar->SetMaxValue(float(std::max<int64_t>(1, total / 1024)));
    fCancel = new QPushButton("Cancel", this);
    fCancel->setObjectName("CancelButton");
    connect(fCancel, &QPushButton::clicked, this, &QWidget::close);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(fCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(fBar);
    layout->addLayout(buttons);
    setFixedSize(frame.width(), sizeHint().height());
    PlaceOnScreen(this, QRect(frame.topLeft(), size()));
    WindowConventions::Apply(this, {.cancelButton = fCancel});

    fTimer = new QTimer(this);
    fTimer->setInterval(kTimerInterval);
    connect(fTimer, &QTimer::timeout, this, &CompareWin::ShowProgress);
    fTimer->start();
    ShowProgress();

    // Reading files waits on the disk: a thread of its own, so the pool
    // stays free for listings.
    fTask = platform::Background::Run(
        this,
        [leftFolder, rightFolder, files = std::move(files), progress = fProgress](
            const std::atomic<bool> &stop) {
            return ContentComparison::Differing(leftFolder, rightFolder, files, *progress, stop);
        },
        [this, done = std::move(done)](std::vector<std::string> differing) {
            done(std::move(differing));
            close();
        },
        platform::Background::Thread::Own);
    show();
}

CompareWin::~CompareWin()
{
    // Closing early drops the answer; the worker stops at its next block.
    fTask.Stop();
}

void CompareWin::ShowProgress()
{
    if (fNames.empty())
        return;
    const size_t file = std::min(size_t(fProgress->files.load()), fNames.size() - 1);
    const float kilobytes = float(fProgress->bytes.load() / 1024);
    fBar->Update(kilobytes - fBar->CurrentValue(),
                 QString::fromStdString(fNames[file]),
                 QString("%1 of %2").arg(file + 1).arg(fNames.size()));
}

} // namespace kestrin
