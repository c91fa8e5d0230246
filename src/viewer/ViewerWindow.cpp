#include "viewer/ViewerWindow.h"

#include "fileops/FileType.h"
#include "platform/Alerts.h"
#include "platform/Entry.h"
#include "platform/Node.h"
#include "platform/PathNames.h"
#include "platform/Paths.h"
#include "viewer/TImageView.h"
#include "viewer/TextIndex.h"
#include "viewer/TextPager.h"
#include "viewer/ViewerMessages.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/WindowConventions.h"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QStatusBar>
#include <sys/stat.h>

namespace kestrin {

namespace {

// What the index reads before the text shows: the first screen even of
// long rows, and enough rows to fit the window to; the rest follows.
constexpr int64_t kFirstIndexBytes = 256 << 10;
// The columns of text a viewer is at least wide enough for.
constexpr int kLeastColumns = 60;
// Where new viewers open, on the main window's screen.
const QRect kNewViewerFrame(QPoint(50, 50), QPoint(250, 250));

void ShowError(const char *text)
{
    platform::Alerts::Go({"Error!", text, {"Ok"}});
}

} // namespace

ViewerWindow::ViewerWindow(const QRect &frame, const std::string &path, QWidget *owner)
    : QMainWindow(owner, Qt::Window)
{
    setWindowTitle("Viewer");
    PlaceOnScreen(this, frame, owner);
    setAcceptDrops(true);
    menuBar()->setObjectName("MenuBar");
    QMenu *file = menuBar()->addMenu("File");
    file->setObjectName("File");
    AddItem(file, "Open", kMsgViewerOpen, QKeySequence(Qt::CTRL | Qt::Key_O));
    file->addSeparator();
    AddItem(file, "Close", B_QUIT_REQUESTED, QKeySequence(Qt::CTRL | Qt::Key_W));
    // "Quit" asks the whole of Kestrin to quit, through the main window.
    QAction *quit = AddItem(file, "Quit", 0, QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setData(uint32_t(B_QUIT_REQUESTED));
    connect(quit, &QAction::triggered, this, [this] {
        if (platform::Handler *owner = Owner())
            owner->Post(platform::Message(B_QUIT_REQUESTED));
        else
            close();
    });
    OpenFile(frame, path);
    // Escape closes a viewer (its find field, while shown, takes Escape
    // first); Ctrl+W is the "Close" item's.
    WindowConventions::Apply(this, {});
}

ViewerWindow::~ViewerWindow() = default;

ViewerWindow *ViewerWindow::Open(const std::string &path, QWidget *owner)
{
    QRect frame = kNewViewerFrame;
    if (const QScreen *screen = ScreenFor(owner))
        frame.translate(screen->geometry().topLeft());
    auto *viewer = new ViewerWindow(frame, path, owner);
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    viewer->show();
    return viewer;
}

// An item whose code is `code` (kept as its data) sends a message of that
// code to the window; code 0 leaves the item's handling to the caller.
QAction *ViewerWindow::AddItem(QMenu *menu,
                               const QString &label,
                               uint32_t code,
                               const QKeySequence &keys)
{
    QAction *action = menu->addAction(label);
    action->setShortcut(keys);
    action->setData(code);
    if (code != 0)
        connect(action, &QAction::triggered, this, [this, action, code] {
            // Qt marks a checkable item as it is chosen; the message is
            // what decides its mark, whoever sends it.
            if (action->isCheckable())
                action->setChecked(!action->isChecked());
            platform::Message message(code);
            MessageReceived(message);
        });
    return action;
}

QAction *ViewerWindow::AddScaleItem(QMenu *menu, const QString &label, float scale, int32_t mode)
{
    QAction *action = menu->addAction(label);
    action->setData(kMsgScale);
    connect(action, &QAction::triggered, this, [this, scale, mode] {
        platform::Message message(kMsgScale);
        if (scale > 0)
            message.AddFloat("scale", scale);
        message.AddInt32("scale_mode", mode);
        MessageReceived(message);
    });
    return action;
}

// Ctrl+F asks for a text to find in the file; F3 and Shift+F3 find the
// next and the previous place it is.
void ViewerWindow::AddFindKeys()
{
    fFindField = new QLineEdit(this);
    fFindField->setObjectName("findField");
    fFindField->setPlaceholderText("Find");
    statusBar()->addPermanentWidget(fFindField);
    statusBar()->hide();
    fFindField->setAccessibleName("Find");
    // Enter starts a new search, from the top row shown; F3 goes on from
    // the match.
    connect(fFindField, &QLineEdit::returnPressed, this, [this] {
        if (fTextView == nullptr || fFindField->text().isEmpty())
            return;
        statusBar()->showMessage("Searching...");
        fTextView->FindFromTop(fFindField->text());
    });
    connect(new QShortcut(QKeySequence::Find, this),
            &QShortcut::activated,
            this,
            &ViewerWindow::ShowFindField);
    connect(new QShortcut(QKeySequence(Qt::Key_F3), this), &QShortcut::activated, this, [this] {
        FindAgain(true);
    });
    connect(new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F3), this),
            &QShortcut::activated,
            this,
            [this] { FindAgain(false); });
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), fFindField),
            &QShortcut::activated,
            this,
            [this] {
                statusBar()->hide();
                if (fTextView != nullptr)
                    fTextView->setFocus();
            });
}

int32_t ViewerWindow::GetType(const std::string &path)
{
    if (path.empty())
        return 0;
    fPath = path;
    setWindowTitle(QString::fromUtf8(platform::LeafName(path).c_str()));
    const bool node = platform::Node(path).InitCheck() == B_OK;
    if (!node) {
        ShowError("Error opening node!");
        ShowError("Error opening node info!");
        return -1;
    }
    const std::string type = FileType::Of(path).substr(0, 239);
    if (type.empty()) {
        ShowError("Error getting file type!");
        return -1;
    }
    if (type.rfind("image/", 0) == 0)
        return 2;
    return type.rfind("text/", 0) == 0 ? 1 : 3;
}

void ViewerWindow::OpenFile(const QRect &frame, const std::string &path)
{
    // Opening a pipe or a device for reading may wait for ever.
    struct stat info;
    if (!path.empty() && platform::StatPath(path, &info) == B_OK && !S_ISREG(info.st_mode)
        && !S_ISDIR(info.st_mode)) {
        setWindowTitle(QString::fromUtf8(platform::LeafName(path).c_str()));
        platform::Alerts::Go({"Error!",
                              "\"" + platform::LeafName(path)
                                  + "\" is a pipe, a socket or a device, not a file: "
                                    "the viewer does not read it.",
                              {"Ok"}});
        AddTextMenu();
        return;
    }
    const int32_t type = GetType(path);
    if (type == 2)
        AddImageMenu();
    else
        AddTextMenu();
    switch (type) {
    case -1:
        ShowError("An error occured, don't be surprised nothing happened.");
        break;
    case 0:
        platform::Alerts::Go({"", "No file type, nothing to do.", {"Ok"}});
        break;
    case 1:
        AddText(frame);
        break;
    case 2:
        AddImage(frame);
        break;
    default:
        break;
    }
}

void ViewerWindow::AddTextMenu()
{
    QMenu *text = menuBar()->addMenu("Text");
    text->setObjectName("Text");
    fWrapText = AddItem(text, "Wrap Text", kMsgWrapText);
    fWrapToEdge = AddItem(text, "Wrap to Edge", kMsgWrapToEdge);
    fWrapText->setCheckable(true);
    fWrapToEdge->setCheckable(true);
}

void ViewerWindow::AddImageMenu()
{
    QMenu *image = menuBar()->addMenu("Image");
    image->setObjectName("Image");
    fStretch = AddItem(image, "Stretch to Fit", kMsgStretchToFit);
    fStretch->setCheckable(true);
    QMenu *scale = image->addMenu("Scale");
    scale->setObjectName("Scale");
    AddScaleItem(scale, "50%", 0.5f, 0);
    AddScaleItem(scale, "100%", 1.0f, 0);
    AddScaleItem(scale, "200%", 2.0f, 0);
    scale->addSeparator();
    AddScaleItem(scale, "Max", -1.0f, 2);
}

// The window opens at once with an empty view; the index reads the file on
// a worker, and the text shows (and the window fits it) when the first
// screen is read.
void ViewerWindow::AddText(const QRect &)
{
    delete fTextView;
    auto index = std::make_shared<TextIndex>(fPath);
    fTextView = new TextPager(index, this);
    setCentralWidget(fTextView);
    ApplyWrap();
    fTextView->setFocus();
    AddFindKeys();
    connect(fTextView, &TextPager::SearchFinished, this, [this](bool found) {
        statusBar()->showMessage(found ? QString() : "\"" + fFindField->text() + "\" not found");
    });
    connect(fTextView, &TextPager::FirstScreenRead, this, &ViewerWindow::FirstScreenRead);
    QPointer<TextPager> view(fTextView);
    index->Start(kFirstIndexBytes, [view] {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [view] {
                if (view)
                    view->IndexGrew();
            },
            Qt::QueuedConnection);
    });
}

void ViewerWindow::FirstScreenRead()
{
    if (fTextView->Index().InitCheck() != B_OK) {
        // The view is in the middle of telling this.
        fTextView->deleteLater();
        fTextView = nullptr;
        ShowError("An error occured, don't be surprised nothing happened.");
        return;
    }
    FitToText();
}

// The window fits the text the index knows, within the screen, and is
// wide enough for its menus and a few words a row.
void ViewerWindow::FitToText()
{
    const QSize text = fTextView->TextSize();
    fWidestLine = std::max(1.0f, float(text.width()));
    // Beyond the 14 units the text view kept for a scroll bar: what the menu
    // bar, the view's frame and today's wider scroll bars take.
    const QSize chrome(2 * fTextView->frameWidth()
                           + fTextView->verticalScrollBar()->sizeHint().width() - 14,
                       menuBar()->sizeHint().height() + 2 * fTextView->frameWidth()
                           + fTextView->horizontalScrollBar()->sizeHint().height() - 14);
    const int least = kLeastColumns * QFontMetrics(fTextView->font()).averageCharWidth();
    int width = std::max({int(fWidestLine), least}) + 14 + chrome.width();
    int height = text.height() + 14 + chrome.height();
    // The screen's right and bottom edges, counted from its own corner, as
    // the text's width and height are.
    const QRect room = ScreenRoom(parentWidget(), geometry());
    const QPoint corner = geometry().topLeft() - room.topLeft();
    if (width > room.width() - 1)
        width = room.width() - 1 - corner.x() - 100;
    if (height > room.height() - 1)
        height = room.height() - 1 - corner.y() - 100;
    FitWindow(QSize(width, height));
}

// The window at `size`, no narrower than its menus, wholly on the screen.
void ViewerWindow::FitWindow(QSize size)
{
    size.setWidth(std::max(size.width(), menuBar()->sizeHint().width()));
    PlaceOnScreen(this, QRect(geometry().topLeft(), size), parentWidget());
}

// Zoomed: once the picture's size is known, the window takes it, as far as
// the screen has room.
void ViewerWindow::AddImage(const QRect &)
{
    delete fImageView;
    fImageView = new TImageView(fPath, QPoint(0, menuBar()->sizeHint().height()), this);
    setCentralWidget(fImageView);
    connect(fImageView, &TImageView::ImageDecoded, this, [this](bool ok) {
        if (ok)
            RedoSizes();
    });
}

void ViewerWindow::RedoSizes()
{
    if (fImageView == nullptr || fImageView->ScaleMode() != 0)
        return;
    float width = 0, height = 0;
    fImageView->GetMaxSize(&width, &height);
    FitWindow(QSize(int(width) + 14, int(height) + menuBar()->sizeHint().height() + 14));
}

void ViewerWindow::ApplyWrap()
{
    if (fTextView == nullptr)
        return;
    if (fWrapToEdge->isChecked())
        fTextView->SetWrap(TextPager::Wrap::Anywhere);
    else if (fWrapText->isChecked())
        fTextView->SetWrap(TextPager::Wrap::Words);
    else
        fTextView->SetWrap(TextPager::Wrap::None);
}

void ViewerWindow::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgViewerOpen:
        ShowOpenPanel();
        break;
    case B_QUIT_REQUESTED:
        close();
        break;
    case kMsgWrapText:
    case kMsgWrapToEdge: {
        QAction *item = message.what == kMsgWrapText ? fWrapText : fWrapToEdge;
        if (item == nullptr)
            break;
        item->setChecked(!item->isChecked());
        ApplyWrap();
        break;
    }
    case kMsgStretchToFit:
        if (fImageView == nullptr)
            break;
        fStretch->setChecked(!fStretch->isChecked());
        fImageView->SetImageScale(-1, fStretch->isChecked() ? 1 : 0);
        RedoSizes();
        break;
    case kMsgScale: {
        float scale = -1;
        int32_t mode = 3;
        message.FindFloat("scale", &scale);
        message.FindInt32("scale_mode", &mode);
        if (fImageView != nullptr) {
            fImageView->SetImageScale(scale, mode);
            RedoSizes();
        }
        break;
    }
    case B_REFS_RECEIVED:
        RefsReceived(message);
        break;
    default:
        break;
    }
}

void ViewerWindow::RefsReceived(const platform::Message &message)
{
    for (const std::string &path : platform::Entry::PathsOfRefs(message, true)) {
        if (platform::Entry(path).IsFile())
            Open(path, parentWidget());
    }
}

void ViewerWindow::ShowOpenPanel()
{
    if (fPanel == nullptr) {
        std::string home;
        platform::FindDirectory(platform::DirectoryWhich::Home, &home);
        fPanel = new QFileDialog(this, "Open", QString::fromUtf8(home.c_str()));
        fPanel->setOption(QFileDialog::DontUseNativeDialog);
        fPanel->setFileMode(QFileDialog::ExistingFile);
        connect(fPanel, &QFileDialog::filesSelected, this, [this](const QStringList &files) {
            platform::Message refs(B_REFS_RECEIVED);
            for (const QString &file : files) {
                entry_ref ref;
                if (platform::Entry(file.toStdString()).GetRef(&ref) == B_OK)
                    refs.AddRef("refs", ref);
            }
            RefsReceived(refs);
        });
    }
    fPanel->show();
}

void ViewerWindow::ShowFindField()
{
    if (fTextView == nullptr)
        return;
    statusBar()->show();
    fFindField->show();
    fFindField->setFocus();
    fFindField->selectAll();
}

void ViewerWindow::FindAgain(bool forward)
{
    if (fTextView == nullptr || fFindField->text().isEmpty()) {
        ShowFindField();
        return;
    }
    statusBar()->showMessage("Searching...");
    fTextView->Find(fFindField->text(), forward);
}

platform::Handler *ViewerWindow::Owner() const
{
    return dynamic_cast<platform::Handler *>(parentWidget());
}

void ViewerWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

// Entries dropped here are for the main window's focused pane to show.
void ViewerWindow::dropEvent(QDropEvent *event)
{
    platform::Message refs(B_REFS_RECEIVED);
    for (const QUrl &url : event->mimeData()->urls()) {
        entry_ref ref;
        if (url.isLocalFile()
            && platform::Entry(url.toLocalFile().toStdString()).GetRef(&ref) == B_OK)
            refs.AddRef("refs", ref);
    }
    platform::Handler *owner = Owner();
    if (owner == nullptr || refs.IsEmpty())
        return;
    event->acceptProposedAction();
    owner->Post(refs);
}

} // namespace kestrin
