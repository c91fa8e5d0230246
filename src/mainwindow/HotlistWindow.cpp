#include "mainwindow/HotlistWindow.h"

#include "panes/Hotlist.h"
#include "panes/PlaceText.h"
#include "platform/Alerts.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/WindowConventions.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace kestrin {

namespace {

constexpr int kPlaceRole = Qt::UserRole;

QPointer<HotlistWindow> &OpenWindow()
{
    static QPointer<HotlistWindow> window;
    return window;
}

} // namespace

HotlistWindow *HotlistWindow::Open(QWidget *parent)
{
    QPointer<HotlistWindow> &window = OpenWindow();
    if (window == nullptr) {
        window = new HotlistWindow(parent);
        window->setAttribute(Qt::WA_DeleteOnClose);
        // Over the middle of the main window, wide enough for a long path.
        QRect wanted(QPoint(), window->sizeHint().expandedTo(QSize(480, 300)));
        if (parent != nullptr)
            wanted.moveCenter(parent->geometry().center());
        PlaceOnScreen(window, wanted, parent);
    }
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

HotlistWindow::HotlistWindow(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle("Edit Hotlist");
    setObjectName("HotlistWindow");
    fList = new QListWidget(this);
    fList->setObjectName("HotlistEntries");
    fList->setAccessibleName("Hotlist entries");
    fList->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::DoubleClicked);
    auto *label = new QLabel("&Places:", this);
    label->setBuddy(fList);
    fRename = new QPushButton("&Rename", this);
    fRemove = new QPushButton("Re&move", this);
    fUp = new QPushButton("Move &Up", this);
    fDown = new QPushButton("Move &Down", this);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QPushButton *close = buttons->button(QDialogButtonBox::Close);

    auto *side = new QVBoxLayout;
    for (QPushButton *button : {fRename, fRemove, fUp, fDown})
        side->addWidget(button);
    side->addStretch();
    auto *row = new QHBoxLayout;
    row->addWidget(fList, 1);
    row->addLayout(side);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addLayout(row);
    layout->addWidget(buttons);

    const auto onList = [this](const QKeySequence &key, auto slot) {
        auto *shortcut = new QShortcut(key, fList);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    onList(QKeySequence::Delete, [this] { RemoveCurrent(); });
    onList(QKeySequence(Qt::CTRL | Qt::Key_Up), [this] { MoveCurrent(-1); });
    onList(QKeySequence(Qt::CTRL | Qt::Key_Down), [this] { MoveCurrent(1); });
    connect(fList, &QListWidget::itemActivated, this, [this] { RenameCurrent(); });
    connect(fList, &QListWidget::itemChanged, this, [this] { Keep(); });
    connect(fList, &QListWidget::currentRowChanged, this, [this] { UpdateButtons(); });
    connect(fRename, &QPushButton::clicked, this, [this] { RenameCurrent(); });
    connect(fRemove, &QPushButton::clicked, this, [this] { RemoveCurrent(); });
    connect(fUp, &QPushButton::clicked, this, [this] { MoveCurrent(-1); });
    connect(fDown, &QPushButton::clicked, this, [this] { MoveCurrent(1); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    WindowConventions::Apply(this,
                             {.firstField = fList, .defaultButton = close, .cancelButton = close});
    Fill();
}

void HotlistWindow::Fill()
{
    const QSignalBlocker quiet(fList);
    fList->clear();
    const Hotlist hotlist = Hotlist::Read();
    for (const HotlistEntry &entry : hotlist.Entries()) {
        auto *item = new QListWidgetItem(QString::fromStdString(entry.name), fList);
        item->setData(kPlaceRole, QString::fromStdString(entry.place));
        item->setToolTip(QString::fromStdString(PlaceText::Title(entry.place)));
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    }
    fList->setCurrentRow(0);
    UpdateButtons();
}

void HotlistWindow::Keep()
{
    std::vector<HotlistEntry> entries;
    for (int i = 0; i < fList->count(); i++) {
        const QListWidgetItem *item = fList->item(i);
        entries.push_back({item->text().trimmed().toStdString(),
                           item->data(kPlaceRole).toString().toStdString()});
    }
    Hotlist hotlist;
    hotlist.SetEntries(entries);
    if (!hotlist.Write())
        platform::Alerts::Go(
            {"Hotlist", "The hotlist could not be saved.", {"OK"}, B_WARNING_ALERT});
}

void HotlistWindow::RenameCurrent()
{
    if (QListWidgetItem *item = fList->currentItem())
        fList->editItem(item);
}

void HotlistWindow::RemoveCurrent()
{
    const int row = fList->currentRow();
    if (row < 0)
        return;
    delete fList->takeItem(row);
    Keep();
    UpdateButtons();
}

void HotlistWindow::MoveCurrent(int by)
{
    const int row = fList->currentRow();
    const int to = row + by;
    if (row < 0 || to < 0 || to >= fList->count())
        return;
    {
        const QSignalBlocker quiet(fList);
        fList->insertItem(to, fList->takeItem(row));
        fList->setCurrentRow(to);
    }
    Keep();
    UpdateButtons();
}

void HotlistWindow::UpdateButtons()
{
    const int row = fList->currentRow();
    fRename->setEnabled(row >= 0);
    fRemove->setEnabled(row >= 0);
    fUp->setEnabled(row > 0);
    fDown->setEnabled(row >= 0 && row + 1 < fList->count());
}

} // namespace kestrin
