#pragma once

#include "app/PaneSettings.h"
#include "panes/FolderLister.h"
#include "panes/FolderRows.h"
#include "panes/FolderWatch.h"
#include "panes/MarkedList.h"
#include "panes/PaneSource.h"
#include "panes/RowFilter.h"
#include "platform/EntryRef.h"
#include "platform/Handler.h"

#include <QObject>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QTimer;

namespace kestrin {

class ColumnListModel;
class DirListItem;
class PaneHost;

// The core of one pane: the rows of the place its source shows (a local
// folder, query results, an FTP folder or an archive), in the order of the
// pane's sort, with their marks, kept in step with the place; the footer's
// summary. It links no widget: a list shows its rows (PaneHost), keys,
// commands and drag and drop act on it. It reports to its owner (the pane)
// and asks the main window (its window target) for everything that outlives
// a key press: copies, new folders, queries. Both are handed messages
// synchronously.
//
// A place is read on a worker (FolderLister) while the list stays
// responsive; what has to follow a listing (selecting the folder just left)
// runs when it arrives, and a newer listing cancels an older one. A watched
// folder is watched from the moment its listing starts; changes that arrive
// before the listing are kept and replayed.
//
// GUI thread only: every member belongs to it.
class PaneModel : public QObject, public platform::Handler
{
    Q_OBJECT

public:
    // The rows are kept in `list` (which outlives the model), with the
    // pane's columns; `host` shows them.
    PaneModel(ColumnListModel &list,
              PaneHost &host,
              const std::string &path,
              platform::Handler *owner);
    ~PaneModel() override;

    ColumnListModel &List() const { return fList; }

    // The main window, or whatever stands in for it; null drops requests.
    void SetWindowTarget(platform::Handler *window) { fWindow = window; }
    platform::Handler *Owner() const { return fOwner; }

    // The place shown, and the mode value that messages and the profile
    // carry for it.
    const PaneSource &Source() const { return *fSource; }
    int32_t Mode() const { return fSource->Mode(); }
    // The device of the place last listed.
    dev_t FolderDevice() const { return fSource->Device(); }
    const std::string &CurrentPath() const { return fSource->Folder(); }
    const std::string &PreviousPath() const { return fPreviousPath; }
    // The folder a pane falls back to: the home folder.
    static std::string DefaultPath();

    // The list is shown for the first time: the place is listed (home when
    // it cannot be opened).
    void Attach();
    // Shows a place: lists it on a worker, and runs `then` once it is shown.
    // Before the list is first shown, the place waits for Attach.
    void Show(std::unique_ptr<PaneSource> place, std::function<void()> then = nullptr);
    // Lists a local folder (and makes it the current path). -1 when the path
    // is empty; a folder that cannot be opened is known only when the listing
    // ends (see ListingFinished).
    int Populate(const std::string &path);
    // Lists the "refs" of a message: query results, the header showing its
    // "QueryString".
    void Populate(const platform::Message &results);
    void Clear();
    void Refresh();
    void GoToDir(const std::string &path);
    void NavigateUp();
    void NavigateDown();
    // Whether a listing is being read.
    bool IsListing() const { return fJob != nullptr; }
    // How opening the place of the last listing went: B_OK or why not.
    status_t LastOpenStatus() const { return fLastOpenStatus; }

    DirListItem *Row(int index) const;
    // The selected row; null for none.
    DirListItem *SelectedRow() const;
    // 0 with no selection, 2 when the selected row is not a folder, else 1
    // with the folder in *path.
    int GetSelected(std::string *path) const;
    void GetSelected(std::vector<DirListItem *> *rows) const;
    // The path of the first marked row, or of the selected row.
    bool GetItemPath(std::string *path) const;
    int FindItem(const std::string &name) const;
    // Selects the row of that name, scrolled into view, when there is one.
    void SelectByName(const std::string &name);
    int SortKey() const;
    int SortMode() const;
    // Mode 2 (unsorted) is applied as ascending.
    void SetSortMode(int key, int mode);

    // The marked rows, which the keys, the commands and drag and drop share.
    MarkedList &Marked() { return fMarked; }
    const MarkedList &Marked() const { return fMarked; }

    // Which rows are shown: the filter's text and the dot-files. A new place
    // starts without a text; the dot-files choice stays.
    RowFilter &Filter() { return fFilter; }
    const RowFilter &Filter() const { return fFilter; }

    // The footer's summary: "12 of 345k in 2 of 10 files selected". Its
    // totals count the shown files only.
    std::string GetFiles() const;

    void SetProgressFlag(bool show) { fSettings.showProgress = show; }
    void SetDateFormat(const std::string &format) { fSettings.dateFormat = format; }
    const PaneSettings &Settings() const { return fSettings; }
    // Reads the display settings again; a shown listing is made again when
    // they changed.
    void ReloadSettings();

    // Node monitoring of the current folder.
    void StopNodeMonitoring();
    void DoNodeMonitor(const std::string &path);
    bool IsWatching() const { return fWatch.IsWatching(); }
    // A node-monitor message of the watched folder, as the owner hands it on.
    void HandleNodeMonitor(const platform::Message &message);
    // The pane changed these entries itself (a new folder, a rename): their
    // rows follow before this returns, or the place is listed again where
    // nothing watches it.
    void EntriesChanged(const std::string &from, const std::string &to);

    // The full path of a row's entry, and its reference.
    std::string PathOf(const DirListItem *row) const;
    entry_ref RefOf(const DirListItem *row) const;
    // Node-monitor messages when the pane watches for itself (no owner).
    void MessageReceived(platform::Message &message) override;

    // Requests to the main window: handed over at once, or posted (for
    // requests made inside an event that must end first, like a drop).
    void SendToWindow(platform::Message &message);
    void PostToWindow(const platform::Message &message);
    // A notification to the pane.
    void Notify(uint32_t what);

signals:
    // A listing's rows are shown, before what follows the listing runs.
    void RowsListed();
    // A listing has been shown (or failed); what followed it has run.
    void ListingFinished();
    // Clear emptied the pane.
    void Cleared();

private:
    using Continuation = std::function<void()>;

    void StartListing(Continuation then);
    void ListingArrived(std::shared_ptr<FolderLister::Job> job);
    void PumpProgress();
    void EndProgress();
    bool ErrorCheck(status_t status);
    // Shows what the source offers instead of a place it could not open.
    void ShowFallback();
    void FolderVanished();
    // To the nearest folder still there, or home, with the alert that says so.
    void LeaveVanishedFolder();
    void RecolorRows();
    void RowsChanged();
    RowStyle Style() const;

    ColumnListModel &fList;
    PaneHost &fHost;
    platform::Handler *fOwner;
    platform::Handler *fWindow = nullptr;
    PaneSettings fSettings;

    std::unique_ptr<PaneSource> fSource;
    std::string fPreviousPath;
    bool fWentUp = false;
    bool fAttached = false;

    status_t fWatchStatus = B_OK;
    status_t fLastOpenStatus = B_OK;
    std::string fLastOpenedFolder;

    // The listing in flight, its progress and what follows it.
    std::shared_ptr<FolderLister::Job> fJob;
    Continuation fAfterListing;
    // What follows the first listing, for a place shown before the list was.
    Continuation fAfterFirstListing;
    std::vector<platform::Message> fEventsDuringListing;
    QTimer *fProgressTimer;
    bool fMaxSent = false;
    int32_t fStepsSent = 0;
    bool fProgressShown = false;

    MarkedList fMarked;
    RowFilter fFilter;
    // The place the filter's text was typed in.
    std::string fFilteredPlace;
    FolderRows fRows;
    FolderWatch fWatch;
};

} // namespace kestrin
