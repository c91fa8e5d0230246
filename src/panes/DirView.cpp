#include "panes/DirView.h"

#include "app/AppUtils.h"
#include "app/NumberText.h"
#include "panes/DirListItem.h"
#include "panes/FolderErrors.h"
#include "panes/FolderSource.h"
#include "panes/PaneMessages.h"
#include "panes/PanePopUp.h"
#include "panes/QuerySource.h"
#include "platform/Entry.h"
#include "platform/NodeMonitor.h"
#include "platform/PathNames.h"
#include "platform/Paths.h"
#include "platform/VolumeRoster.h"
#include "widgets/RgbColor.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QTimer>
#include <QToolTip>
#include <algorithm>
#include <vector>

namespace kestrin {

namespace {

constexpr int kProgressIntervalMs = 50;

} // namespace

DirView::DirView(QWidget *parent,
                 const std::string &path,
                 const QString &iconLabel,
                 platform::Handler *owner)
    : ColumnListView(parent, false)
    , fOwner(owner)
    , fSettings(PaneSettings::Load())
    , fSource(std::make_unique<FolderSource>(path))
    , fProgressTimer(new QTimer(this))
    , fMarked(*this)
    , fRows(*this, fMarked)
    , fKeys(*this, fMarked)
    , fCommands(*this, fMarked)
    , fDragDrop(*this, fMarked)
    , fWatch(*this,
             fRows,
             {[this] { return Style(); },
              [this] { return fJob != nullptr; },
              [this] { RowsChanged(); },
              [this] { FolderVanished(); },
              [this] { Refresh(); }})
{
    SetbCaseSensitiveSort(fSettings.caseSensitiveSort);
    AddColumn(iconLabel, 20, 20, CLV_NOT_MOVABLE | CLV_NOT_RESIZABLE);
    AddColumn("Name", 108, 20, CLV_SORT_KEYABLE);
    AddColumn("Size", 70, 20, CLV_SORT_KEYABLE);
    AddColumn("Date", 145, 20, CLV_SORT_KEYABLE);
    AddColumn("Permissions", 100, 20, CLV_SORT_KEYABLE);
    QFont plain = font();
    plain.setPixelSize(12);
    setFont(plain);
    QPalette colours = palette();
    colours.setColor(QPalette::Base, ToQColor(fSettings.colors.background));
    colours.setColor(QPalette::Highlight, ToQColor(fSettings.colors.selectionBar));
    setPalette(colours);
    SetSortFunction(&kestrin::CompareFunc, &kestrin::SortDirRows);
    SetSortKey(kColumnName);
    SortItems();
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    fProgressTimer->setInterval(kProgressIntervalMs);
    connect(fProgressTimer, &QTimer::timeout, this, [this] { PumpProgress(); });
    fMarked.OnChange([this] { Notify(kMsgPaneChanged); });
    // Whoever else sets the Name column's width (the user, or the main
    // window for every pane) sets it for paths too.
    connect(header(), &QHeaderView::sectionResized, this, [this](int column) {
        if (column == kColumnName && !fFittingName)
            fNameWidth.reset();
    });
}

DirView::~DirView()
{
    if (fJob)
        fJob->cancel = true;
    StopNodeMonitoring();
}

void DirView::ReloadSettings()
{
    const PaneSettings fresh = PaneSettings::Load();
    SetbCaseSensitiveSort(fresh.caseSensitiveSort);
    const bool changed = fresh.dateFormat != fSettings.dateFormat
                         || fresh.alternateColors != fSettings.alternateColors
                         || !(fresh.colors.background == fSettings.colors.background)
                         || !(fresh.colors.text == fSettings.colors.text)
                         || !(fresh.colors.selectedText == fSettings.colors.selectedText)
                         || !(fresh.colors.selectionBar == fSettings.colors.selectionBar);
    fSettings = fresh;
    QPalette colours = palette();
    colours.setColor(QPalette::Base, ToQColor(fSettings.colors.background));
    colours.setColor(QPalette::Highlight, ToQColor(fSettings.colors.selectionBar));
    setPalette(colours);
    if (changed && fAttached)
        Refresh();
}

std::string DirView::DefaultPath()
{
    std::string home;
    if (platform::FindDirectory(platform::DirectoryWhich::Home, &home) != B_OK || home.empty())
        return "/";
    return home;
}

void DirView::Notify(uint32_t what)
{
    if (fOwner == nullptr)
        return;
    platform::Message message(what);
    fOwner->Dispatch(message);
}

void DirView::SendToWindow(platform::Message &message)
{
    if (fWindow != nullptr)
        fWindow->Dispatch(message);
}

void DirView::PostToWindow(const platform::Message &message)
{
    if (fWindow != nullptr)
        fWindow->Post(message);
}

// ---- Listing --------------------------------------------------------------

RowStyle DirView::Style() const
{
    return RowStyle{fSettings.colors, fSettings.dateFormat, SortKey(), SortMode()};
}

int DirView::Populate(const std::string &path)
{
    if (path.empty())
        return -1;
    Show(std::make_unique<FolderSource>(path));
    return 0;
}

void DirView::Populate(const platform::Message &results)
{
    Show(std::make_unique<QuerySource>(results, CurrentPath()));
}

void DirView::Show(std::unique_ptr<PaneSource> place, std::function<void()> then)
{
    fSource = std::move(place);
    StartListing(std::move(then));
}

void DirView::StartListing(Continuation then)
{
    fProgressShown = fSettings.showProgress;
    if (fProgressShown)
        Notify(kMsgListingBegan);
    StopNodeMonitoring();
    if (fJob)
        fJob->cancel = true;
    fJob.reset();
    fEventsDuringListing.clear();
    fCommands.EndRename();
    fMarked.Forget();
    fRows.Clear();
    MakeEmpty();
    fMaxSent = false;
    fStepsSent = 0;
    fAfterListing = std::move(then);
    // Watching starts before the place is read, so nothing that happens
    // while it is read is missed; those events wait for the listing.
    fWatchStatus = B_OK;
    if (const std::string watched = fSource->WatchedFolder(); !watched.empty())
        DoNodeMonitor(watched);
    const RowStyle style = Style();
    fJob = fSource->StartReading(style, this, [this](auto job) { ListingArrived(std::move(job)); });
    fProgressTimer->start();
}

void DirView::PumpProgress()
{
    if (!fJob || !fProgressShown)
        return;
    if (!fMaxSent) {
        const int32_t total = fJob->total;
        if (total < 0)
            return;
        platform::Message max(kMsgListingMax);
        max.AddInt32("maxvalue", total + 1);
        if (fOwner != nullptr)
            fOwner->Dispatch(max);
        Notify(kMsgListingStep);
        fMaxSent = true;
    }
    const int32_t done = fJob->done;
    for (; fStepsSent < done; fStepsSent++)
        Notify(kMsgListingStep);
}

void DirView::EndProgress()
{
    if (fProgressShown)
        Notify(kMsgListingEnded);
    fProgressShown = false;
}

void DirView::ListingArrived(std::shared_ptr<FolderLister::Job> job)
{
    if (job != fJob)
        return;
    fProgressTimer->stop();
    if (job->openStatus == B_OK)
        PumpProgress();
    fJob.reset();
    // A folder that was there when it was asked for (it could be watched,
    // or it was read before) and is gone by the time it is read is as gone
    // as one removed while shown: its removal event went with its watch, or
    // with the events the kernel dropped in a burst. A folder that never was
    // there stays a quiet empty pane.
    const std::string path = CurrentPath();
    const bool vanished = job->openStatus != B_OK && fSource->IsLocalFolder()
                          && (fWatch.IsWatching() || path == fLastOpenedFolder)
                          && !platform::IsFolder(path);
    fLastOpenStatus = job->openStatus;
    if (job->openStatus == B_OK)
        fLastOpenedFolder = path;
    fSource->Listed(*job);
    if (job->openStatus == B_OK) {
        AddList(std::move(job->rows));
        fRows.Reset(std::move(job->byName), job->files);
    } else {
        StopNodeMonitoring();
    }
    if (!vanished)
        ErrorCheck(job->readStatus);
    if (job->openStatus == B_OK && fWatchStatus != B_OK)
        ErrorCheck(fWatchStatus);
    RecolorRows();
    FitNameColumn(true);
    for (const platform::Message &event : std::exchange(fEventsDuringListing, {}))
        HandleNodeMonitor(event);
    fWatch.ApplyPending();
    EndProgress();
    if (Continuation then = std::exchange(fAfterListing, nullptr))
        then();
    emit ListingFinished();
    if (vanished)
        LeaveVanishedFolder();
}

bool DirView::ErrorCheck(status_t status)
{
    if (status == B_OK || status == B_ENTRY_NOT_FOUND)
        return true;
    const std::string text = FolderErrors::Text(status, CurrentPath());
    if (!text.empty())
        MsgBox(text.c_str(), B_STOP_ALERT);
    if (fSettings.showProgress)
        Notify(kMsgListingEnded);
    return false;
}

void DirView::RecolorRows()
{
    if (fSettings.alternateColors)
        InvalidateAll();
}

void DirView::drawRow(QPainter *painter,
                      const QStyleOptionViewItem &option,
                      const QModelIndex &index) const
{
    if (DirListItem *row = Row(index.row()))
        row->SetShaded(fSettings.alternateColors && index.row() % 2 != 0);
    ColumnListView::drawRow(painter, option, index);
}

void DirView::Clear()
{
    StopNodeMonitoring();
    if (fJob)
        fJob->cancel = true;
    fJob.reset();
    fProgressTimer->stop();
    fAfterListing = nullptr;
    fEventsDuringListing.clear();
    fCommands.EndRename();
    fMarked.Empty();
    fMarked.Forget();
    fRememberedIndex = -1;
    fRows.Clear();
    MakeEmpty();
}

void DirView::Refresh()
{
    // The row the user was on stays selected when it is still there.
    const CLVListItem *selected = SelectedItem();
    const std::string name = selected != nullptr
                                 ? static_cast<const DirListItem *>(selected)->Name()
                                 : "";
    StartListing([this, name] { SelectByName(name); });
}

void DirView::SelectByName(const std::string &name)
{
    if (name.empty())
        return;
    const int index = FindItem(name);
    if (index >= 0) {
        Select(index);
        ScrollToSelection();
    }
}

void DirView::GoToDir(const std::string &path)
{
    if (!fSource->HoldsLocalEntries())
        return;
    MsgBox("Inside GoToDir");
    MsgBox(path.c_str());
    fPreviousPath = path;
    fSource = std::make_unique<FolderSource>(path);
    Notify(kMsgPaneChanged);
    Refresh();
}

void DirView::NavigateUp()
{
    std::string selectAfter;
    std::unique_ptr<PaneSource> parent = fSource->Parent(&selectAfter);
    if (!parent)
        return;
    if (fSource->IsLocalFolder())
        fPreviousPath = CurrentPath();
    Clear();
    fSource = std::move(parent);
    Notify(kMsgPaneChanged);
    fWentUp = true;
    StartListing([this, selectAfter] { SelectByName(selectAfter); });
}

void DirView::NavigateDown()
{
    if (!fWentUp)
        return;
    fWentUp = false;
    Clear();
    Populate(fPreviousPath);
}

// ---- Node monitoring ------------------------------------------------------

void DirView::DoNodeMonitor(const std::string &path)
{
    fWatchStatus = fWatch.Start(path, fOwner != nullptr ? fOwner : this);
}

void DirView::StopNodeMonitoring()
{
    fWatch.Stop();
}

void DirView::HandleNodeMonitor(const platform::Message &message)
{
    if (fJob)
        fEventsDuringListing.push_back(message);
    else
        fWatch.Handle(message);
}

void DirView::FolderVanished()
{
    if (!fWatch.IsWatching())
        return;
    StopNodeMonitoring();
    LeaveVanishedFolder();
}

void DirView::LeaveVanishedFolder()
{
    ErrorCheck(B_NOT_A_DIRECTORY);
    std::string folder = CurrentPath();
    while (folder != "/" && !platform::IsFolder(folder))
        folder = platform::ParentPath(folder);
    // A volume that went away leaves only the folder it was mounted on:
    // home is a better place to be than that empty folder.
    if (!platform::IsFolder(folder) || !platform::VolumeRoster::ForDevice(FolderDevice()))
        folder = DefaultPath();
    Clear();
    Populate(folder);
    Notify(kMsgPaneChanged);
}

void DirView::RowsChanged()
{
    RecolorRows();
    Notify(kMsgPaneChanged);
}

void DirView::EntriesChanged(const std::string &from, const std::string &to)
{
    if (!fSource->IsLocalFolder() || fJob) {
        Refresh();
        return;
    }
    if (from.empty())
        fRows.Touch(to);
    else
        fRows.Rename(from, to);
    if (fRows.ApplyNow(CurrentPath(), Style()))
        RowsChanged();
}

void DirView::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgRenameAccept:
    case kMsgRenameCancel: {
        void *field = nullptr;
        message.FindPointer("field", &field);
        if (field != nullptr && field != fCommands.RenameField())
            break;
        int32_t row = -1;
        if (message.FindInt32("pos", &row) == B_OK && message.what == kMsgRenameAccept)
            fCommands.AcceptRename(row);
        else
            fCommands.EndRename();
        break;
    }
    case B_NODE_MONITOR:
        HandleNodeMonitor(message);
        break;
    default:
        break;
    }
}

// ---- Rows and selection ---------------------------------------------------

std::string DirView::PathOf(const DirListItem *row) const
{
    return fSource->PathOf(*row);
}

entry_ref DirView::RefOf(const DirListItem *row) const
{
    return fSource->RefOf(*row);
}

DirListItem *DirView::Row(int index) const
{
    return static_cast<DirListItem *>(ItemAt(index));
}

int DirView::GetSelected(std::string *path) const
{
    const DirListItem *row = Row(CurrentSelection());
    if (row == nullptr)
        return 0;
    if (!row->IsFolder())
        return 2;
    *path = fSource->FolderShownFor(*row);
    return 1;
}

void DirView::GetSelected(std::vector<DirListItem *> *rows) const
{
    if (DirListItem *row = Row(CurrentSelection()))
        rows->push_back(row);
}

bool DirView::GetItemPath(std::string *path) const
{
    const DirListItem *row = fMarked.IsEmpty() ? Row(CurrentSelection()) : fMarked.Rows().front();
    if (row == nullptr)
        return false;
    *path = PathOf(row);
    return true;
}

int DirView::FindItem(const std::string &name) const
{
    if (const DirListItem *row = fRows.Find(name))
        return IndexOf(row);
    for (int i = 0; i < CountItems(); i++) {
        if (Row(i)->Name() == name)
            return i;
    }
    return -1;
}

void DirView::SetSortMode(int key, int mode)
{
    SetSortKey(key);
    ColumnListView::SetSortMode(mode == Descending ? Descending : Ascending);
    SortItems();
    RecolorRows();
}

std::string DirView::GetFiles() const
{
    // 32-bit totals, as the footer has always added them: folders of more
    // than 2 GB wrap. The files of the folder are summed as its rows come
    // and go; only the marked rows are walked here. The first row is never
    // counted (it is ".." where there is one).
    const FileTotals &files = fRows.Files();
    uint32_t totalSize = files.bytes;
    int32_t totalCount = files.count;
    const DirListItem *first = Row(0);
    if (first != nullptr && !first->IsFolder()) {
        totalSize -= uint32_t(first->Size());
        totalCount--;
    }
    uint32_t selectedSize = 0;
    int32_t selectedCount = 0;
    const auto count = [&](const DirListItem *row) {
        if (row != nullptr && row != first && !row->IsFolder()) {
            selectedSize += uint32_t(row->Size());
            selectedCount++;
        }
    };
    std::vector<DirListItem *> marked = fMarked.Rows();
    std::sort(marked.begin(), marked.end());
    marked.erase(std::unique(marked.begin(), marked.end()), marked.end());
    for (const DirListItem *row : marked) {
        if (row->IsMarked())
            count(row);
    }
    const DirListItem *selected = Row(CurrentSelection());
    if (selected != nullptr && !selected->IsMarked())
        count(selected);
    return std::to_string(int32_t(selectedSize) / 1024) + " of "
           + std::to_string(int32_t(totalSize) / 1024) + "k in " + std::to_string(selectedCount)
           + " of " + std::to_string(totalCount) + " files selected";
}

// ---- Input and hooks ------------------------------------------------------

void DirView::keyPressEvent(QKeyEvent *event)
{
    if (!fKeys.Handle(event))
        ColumnListView::keyPressEvent(event);
}

bool DirView::viewportEvent(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return ColumnListView::viewportEvent(event);
    // Names are cut at their column's edge; hovering shows a cut one whole.
    const QPoint point = static_cast<QHelpEvent *>(event)->pos();
    const DirListItem *row = Row(IndexOf(point));
    const int left = header()->sectionViewportPosition(kColumnName);
    const int width = header()->sectionSize(kColumnName);
    if (row == nullptr || point.x() < left || point.x() >= left + width
        || row->TextFits(kColumnName, width, fontMetrics())) {
        QToolTip::hideText();
        event->ignore();
        return true;
    }
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                       QString::fromUtf8(row->Name().c_str()),
                       viewport());
    return true;
}

void DirView::mousePressEvent(QMouseEvent *event)
{
    fDragDrop.MousePress(event);
    ColumnListView::mousePressEvent(event);
}

void DirView::mouseMoveEvent(QMouseEvent *event)
{
    if (!fDragDrop.MouseMove(event))
        ColumnListView::mouseMoveEvent(event);
}

void DirView::contextMenuEvent(QContextMenuEvent *event)
{
    const int row = IndexOf(event->pos());
    if (row >= 0)
        Select(row);
    PanePopUp::Exec(*this, event->globalPos(), row >= 0, fTreeShown);
}

void DirView::dragEnterEvent(QDragEnterEvent *event)
{
    fDragDrop.DragEnter(event);
}

void DirView::dragMoveEvent(QDragMoveEvent *event)
{
    fDragDrop.DragMove(event);
}

void DirView::dropEvent(QDropEvent *event)
{
    fDragDrop.Drop(event);
}

float DirView::SavedColumnWidth(int column) const
{
    return column == kColumnName && fNameWidth ? *fNameWidth : ColumnWidth(column);
}

void DirView::FitNameColumn(bool measure)
{
    float width = ColumnWidth(kColumnName);
    if (!fSource->NamesArePaths()) {
        if (!fNameWidth)
            return;
        width = *std::exchange(fNameWidth, std::nullopt);
    } else {
        if (!fNameWidth)
            fNameWidth = width;
        if (measure)
            fWidestName = WidestName();
        const int room = viewport()->width() - int(ColumnWidth(kColumnIcon));
        width = std::max(*fNameWidth, float(std::min(fWidestName, room)));
    }
    fFittingName = true;
    SetColumnWidth(kColumnName, width);
    fFittingName = false;
}

int DirView::WidestName() const
{
    // Measured are only the names longest in bytes: a query finds rows by
    // the hundred thousand, and text is measured slowly.
    constexpr size_t kMeasured = 32;
    std::vector<const DirListItem *> rows;
    for (int i = 0; i < CountItems(); i++)
        rows.push_back(Row(i));
    const auto longer = [](const DirListItem *a, const DirListItem *b) {
        return a->Name().size() > b->Name().size();
    };
    const size_t measured = std::min(kMeasured, rows.size());
    std::partial_sort(rows.begin(), rows.begin() + ptrdiff_t(measured), rows.end(), longer);
    int widest = 0;
    for (size_t i = 0; i < measured; i++)
        widest = std::max(widest, rows[i]->TextWidth(kColumnName, fontMetrics()));
    // Room after the text as before it.
    return widest + (widest > 0 ? 4 : 0);
}

void DirView::resizeEvent(QResizeEvent *event)
{
    ColumnListView::resizeEvent(event);
    if (fNameWidth)
        FitNameColumn(false);
}

void DirView::showEvent(QShowEvent *event)
{
    ColumnListView::showEvent(event);
    if (fAttached)
        return;
    fAttached = true;
    StartListing([this] {
        if (fLastOpenStatus != B_OK) {
            Show(std::make_unique<FolderSource>(DefaultPath()), [this] { Notify(kMsgPaneChanged); });
            return;
        }
        Notify(kMsgPaneChanged);
    });
}

void DirView::focusInEvent(QFocusEvent *event)
{
    emit FocusChanged(true);
    ColumnListView::focusInEvent(event);
    if (fRememberedIndex >= 0 && CountItems() > 0) {
        Select(std::min(fRememberedIndex, CountItems() - 1));
        fRememberedIndex = -1;
    }
}

void DirView::focusOutEvent(QFocusEvent *event)
{
    ColumnListView::focusOutEvent(event);
    // A menu opening, or another window taking over, leaves this list the
    // focused one of its window: commands from the menu act on it.
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason)
        return;
    // The rename field is part of the list: the selection stays while it
    // has the focus.
    const QWidget *focus = QApplication::focusWidget();
    if (focus != nullptr && isAncestorOf(focus))
        return;
    emit FocusChanged(false);
    if (CountItems() == 0)
        return;
    if (CurrentSelection() < 0 && SelectedItem() == nullptr)
        Select(0);
    fRememberedIndex = CurrentSelection();
    DeselectAll();
}

void DirView::SelectionChanged()
{
    Notify(kMsgPaneChanged);
}

void DirView::Invoked(int)
{
    fCommands.Invoke();
}

void DirView::SortChanged()
{
    RecolorRows();
}

void DirView::ColumnWidthChanged(int column, float width)
{
    platform::Message message(kMsgColumnWidth);
    message.AddString("ColumnIndex", std::to_string(column));
    message.AddString("ColumnWidth", std::to_string(int(width)));
    SendToWindow(message);
}

} // namespace kestrin
