#include "panes/PaneModel.h"

#include "app/AppUtils.h"
#include "panes/DirListItem.h"
#include "panes/FolderErrors.h"
#include "panes/FolderSource.h"
#include "panes/PaneHost.h"
#include "panes/PaneMessages.h"
#include "panes/QuerySource.h"
#include "platform/Entry.h"
#include "platform/NodeMonitor.h"
#include "platform/PathNames.h"
#include "platform/Paths.h"
#include "platform/VolumeRoster.h"
#include "widgets/ColumnListModel.h"

#include <QTimer>
#include <algorithm>
#include <vector>

namespace kestrin {

namespace {

constexpr int kProgressIntervalMs = 50;

} // namespace

PaneModel::PaneModel(ColumnListModel &list,
                     PaneHost &host,
                     const std::string &path,
                     platform::Handler *owner)
    : fList(list)
    , fHost(host)
    , fOwner(owner)
    , fSettings(PaneSettings::Load())
    , fSource(std::make_unique<FolderSource>(path))
    , fProgressTimer(new QTimer(this))
    , fMarked(list)
    , fFilter(list, host, fMarked)
    , fRows(list, host, fMarked, fFilter)
    , fWatch(*this,
             fRows,
             {[this] { return Style(); },
              [this] { return fJob != nullptr; },
              [this] { RowsChanged(); },
              [this] { FolderVanished(); },
              [this] { Refresh(); }})
{
    SetbCaseSensitiveSort(fSettings.caseSensitiveSort);
    // The pane's columns, which are its sort keys too; the list sets their
    // widths and labels the first with the pane's number.
    for (const char *label : {"", "Name", "Size", "Date", "Permissions"}) {
        const bool icon = fList.CountColumns() == kColumnIcon;
        fList.AddColumn(label, 20, icon ? CLV_NOT_MOVABLE | CLV_NOT_RESIZABLE : CLV_SORT_KEYABLE);
    }
    fList.SetSortFunction(&kestrin::CompareFunc, &kestrin::SortDirRows);
    fList.SetSortKey(kColumnName);
    fProgressTimer->setInterval(kProgressIntervalMs);
    connect(fProgressTimer, &QTimer::timeout, this, [this] { PumpProgress(); });
    fMarked.OnChange([this] { Notify(kMsgPaneChanged); });
    connect(&fFilter, &RowFilter::Filtered, this, [this] { RowsChanged(); });
}

PaneModel::~PaneModel()
{
    if (fJob)
        fJob->cancel = true;
    StopNodeMonitoring();
}

void PaneModel::ReloadSettings()
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
    if (changed && fAttached)
        Refresh();
}

std::string PaneModel::DefaultPath()
{
    std::string home;
    if (platform::FindDirectory(platform::DirectoryWhich::Home, &home) != B_OK || home.empty())
        return "/";
    return home;
}

void PaneModel::Notify(uint32_t what)
{
    if (fOwner == nullptr)
        return;
    platform::Message message(what);
    fOwner->Dispatch(message);
}

void PaneModel::SendToWindow(platform::Message &message)
{
    if (fWindow != nullptr)
        fWindow->Dispatch(message);
}

void PaneModel::PostToWindow(const platform::Message &message)
{
    if (fWindow != nullptr)
        fWindow->Post(message);
}

// ---- Listing --------------------------------------------------------------

int PaneModel::SortKey() const
{
    return fList.SortKey();
}

int PaneModel::SortMode() const
{
    return fList.SortMode();
}

RowStyle PaneModel::Style() const
{
    return RowStyle{fSettings.colors, fSettings.dateFormat, fList.SortKey(), fList.SortMode()};
}

int PaneModel::Populate(const std::string &path)
{
    if (path.empty())
        return -1;
    Show(std::make_unique<FolderSource>(path));
    return 0;
}

void PaneModel::Populate(const platform::Message &results)
{
    Show(std::make_unique<QuerySource>(results, CurrentPath()));
}

void PaneModel::Show(std::unique_ptr<PaneSource> place, std::function<void()> then)
{
    fSource = std::move(place);
    // Before the list is first shown, the listing that showing it starts
    // reads the place; reading it now as well would be done twice.
    if (!fAttached) {
        fAfterFirstListing = std::move(then);
        return;
    }
    StartListing(std::move(then));
}

void PaneModel::StartListing(Continuation then)
{
    fProgressShown = fSettings.showProgress;
    if (fProgressShown)
        Notify(kMsgListingBegan);
    StopNodeMonitoring();
    if (fJob)
        fJob->cancel = true;
    fJob.reset();
    fEventsDuringListing.clear();
    fHost.EndRename();
    fMarked.Forget();
    fRows.Clear();
    fFilter.Forget();
    // A filter belongs to the place it was typed in.
    const std::string place = std::to_string(fSource->Mode()) + fSource->HeaderText();
    if (place != fFilteredPlace)
        fFilter.ClearText();
    fFilteredPlace = place;
    fList.MakeEmpty();
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

void PaneModel::PumpProgress()
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

void PaneModel::EndProgress()
{
    if (fProgressShown)
        Notify(kMsgListingEnded);
    fProgressShown = false;
}

void PaneModel::ListingArrived(std::shared_ptr<FolderLister::Job> job)
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
        fFilter.AddListing(std::move(job->rows));
        fRows.Reset(std::move(job->byName), job->files);
    } else {
        StopNodeMonitoring();
    }
    if (!vanished)
        ErrorCheck(job->readStatus);
    if (job->openStatus == B_OK && fWatchStatus != B_OK)
        ErrorCheck(fWatchStatus);
    RecolorRows();
    emit RowsListed();
    for (const platform::Message &event : std::exchange(fEventsDuringListing, {}))
        HandleNodeMonitor(event);
    fWatch.ApplyPending();
    EndProgress();
    if (Continuation then = std::exchange(fAfterListing, nullptr))
        then();
    emit ListingFinished();
    if (vanished)
        LeaveVanishedFolder();
    else if (job->openStatus != B_OK)
        ShowFallback();
}

void PaneModel::ShowFallback()
{
    std::string selectAfter;
    std::unique_ptr<PaneSource> instead = fSource->Fallback(&selectAfter);
    if (!instead)
        return;
    Show(std::move(instead), [this, selectAfter] {
        SelectByName(selectAfter);
        Notify(kMsgPaneChanged);
    });
}

bool PaneModel::ErrorCheck(status_t status)
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

void PaneModel::RecolorRows()
{
    if (fSettings.alternateColors)
        fList.InvalidateAll();
}

void PaneModel::Clear()
{
    StopNodeMonitoring();
    if (fJob)
        fJob->cancel = true;
    fJob.reset();
    fProgressTimer->stop();
    fAfterListing = nullptr;
    fEventsDuringListing.clear();
    fHost.EndRename();
    fMarked.Empty();
    fMarked.Forget();
    fRows.Clear();
    fFilter.Forget();
    fList.MakeEmpty();
    emit Cleared();
}

void PaneModel::Refresh()
{
    // The row the user was on stays selected when it is still there.
    const DirListItem *selected = SelectedRow();
    const std::string name = selected != nullptr ? selected->Name() : "";
    StartListing([this, name] { SelectByName(name); });
}

void PaneModel::SelectByName(const std::string &name)
{
    if (name.empty())
        return;
    const int index = FindItem(name);
    if (index >= 0)
        fHost.SelectRow(index, true);
}

void PaneModel::GoToDir(const std::string &path)
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

void PaneModel::NavigateUp()
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

void PaneModel::NavigateDown()
{
    if (!fWentUp)
        return;
    fWentUp = false;
    Clear();
    Populate(fPreviousPath);
}

// ---- Node monitoring ------------------------------------------------------

void PaneModel::DoNodeMonitor(const std::string &path)
{
    fWatchStatus = fWatch.Start(path, fOwner != nullptr ? fOwner : this);
}

void PaneModel::StopNodeMonitoring()
{
    fWatch.Stop();
}

void PaneModel::HandleNodeMonitor(const platform::Message &message)
{
    if (fJob)
        fEventsDuringListing.push_back(message);
    else
        fWatch.Handle(message);
}

void PaneModel::FolderVanished()
{
    if (!fWatch.IsWatching())
        return;
    StopNodeMonitoring();
    LeaveVanishedFolder();
}

void PaneModel::LeaveVanishedFolder()
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

void PaneModel::RowsChanged()
{
    RecolorRows();
    Notify(kMsgPaneChanged);
}

void PaneModel::EntriesChanged(const std::string &from, const std::string &to)
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

void PaneModel::MessageReceived(platform::Message &message)
{
    if (message.what == B_NODE_MONITOR)
        HandleNodeMonitor(message);
}

// ---- Rows and selection ---------------------------------------------------

std::string PaneModel::PathOf(const DirListItem *row) const
{
    return fSource->PathOf(*row);
}

entry_ref PaneModel::RefOf(const DirListItem *row) const
{
    return fSource->RefOf(*row);
}

DirListItem *PaneModel::Row(int index) const
{
    return static_cast<DirListItem *>(fList.ItemAt(index));
}

DirListItem *PaneModel::SelectedRow() const
{
    return Row(fHost.Selection());
}

int PaneModel::GetSelected(std::string *path) const
{
    const DirListItem *row = SelectedRow();
    if (row == nullptr)
        return 0;
    if (!row->IsFolder())
        return 2;
    *path = fSource->FolderShownFor(*row);
    return 1;
}

void PaneModel::GetSelected(std::vector<DirListItem *> *rows) const
{
    if (DirListItem *row = SelectedRow())
        rows->push_back(row);
}

bool PaneModel::GetItemPath(std::string *path) const
{
    const DirListItem *row = fMarked.IsEmpty() ? SelectedRow() : fMarked.Rows().front();
    if (row == nullptr)
        return false;
    *path = PathOf(row);
    return true;
}

int PaneModel::FindItem(const std::string &name) const
{
    if (const DirListItem *row = fRows.Find(name))
        return fList.IndexOf(row);
    for (int i = 0; i < fList.CountItems(); i++) {
        if (Row(i)->Name() == name)
            return i;
    }
    return -1;
}

void PaneModel::SetSortMode(int key, int mode)
{
    fList.SetSortKey(key);
    fList.SetSortMode(mode == Descending ? Descending : Ascending);
    fList.SortItems();
    RecolorRows();
}

std::string PaneModel::GetFiles() const
{
    // 32-bit totals, as the footer has always added them: folders of more
    // than 2 GB wrap. The files of the folder are summed as its rows come
    // and go; only the marked rows are walked here. The first row is never
    // counted (it is ".." where there is one).
    const FileTotals &files = fRows.Files();
    uint32_t totalSize = files.bytes - fFilter.HiddenFiles().bytes;
    int32_t totalCount = files.count - fFilter.HiddenFiles().count;
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
    const DirListItem *selected = SelectedRow();
    if (selected != nullptr && !selected->IsMarked())
        count(selected);
    return std::to_string(int32_t(selectedSize) / 1024) + " of "
           + std::to_string(int32_t(totalSize) / 1024) + "k in " + std::to_string(selectedCount)
           + " of " + std::to_string(totalCount) + " files selected";
}

void PaneModel::Attach()
{
    if (fAttached)
        return;
    fAttached = true;
    StartListing([this, then = std::exchange(fAfterFirstListing, nullptr)] {
        if (fLastOpenStatus != B_OK) {
            Show(std::make_unique<FolderSource>(DefaultPath()), [this] { Notify(kMsgPaneChanged); });
            return;
        }
        Notify(kMsgPaneChanged);
        if (then)
            then();
    });
}

} // namespace kestrin
