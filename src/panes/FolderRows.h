#pragma once

#include "panes/FolderLister.h"
#include "panes/RowIndex.h"
#include "widgets/ColumnListModel.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class QObject;

namespace kestrin {

class DirListItem;
class MarkedList;
class PaneHost;
class RowFilter;

// The rows of a listed local folder, kept in step with the folder: an index
// of the rows by name, and the changes that node monitoring reports, applied
// in batches. A change only says which names to read again; a batch reads
// them on a worker, then removes, remakes or adds their rows in one pass over
// the list, each new row merged into its place among the sorted folders or
// files. So a flood of events (a hundred thousand files created) costs one
// pass per batch, not one per file, the GUI thread never waits on the disk,
// and events replayed after a listing arrived are harmless whatever they say.
//
// GUI thread only; a batch's reading runs on a worker with copies.
class FolderRows
{
public:
    // `list` holds the shown rows, which `host` shows; `filter` the others.
    FolderRows(ColumnListModel &list, PaneHost &host, MarkedList &marked, RowFilter &filter);

    // After a listing: the index the listing made. A batch still being read
    // belongs to the listing before and is dropped when it arrives.
    void Reset(RowIndex byName, const FileTotals &files);
    void Clear();

    DirListItem *Find(const std::string &name) const;
    // The files among the rows, kept as rows come and go.
    const FileTotals &Files() const { return fFiles; }
    // A row by its entry's node; a walk over the rows.
    DirListItem *FindNode(dev_t device, ino_t node) const;

    // The name is read again with the next batch.
    void Touch(const std::string &name);
    // Both names are read again; the new row keeps the old one's mark and
    // selection.
    void Rename(const std::string &from, const std::string &to);
    bool HasPending() const { return !fTouched.empty(); }
    bool IsReading() const { return fReading; }

    // Reads the touched names of `folder` on a worker and applies them;
    // `applied` follows on the GUI thread, told whether any row changed.
    // Nothing starts while a batch is being read: the caller starts the
    // next one from `applied`.
    void ApplyLater(const std::string &folder,
                    const RowStyle &style,
                    QObject *context,
                    std::function<void(bool changed)> applied);
    // The same at once, on this thread: for the pane's own changes (a new
    // folder, a rename), one or two names that must show before the key
    // press ends.
    bool ApplyNow(const std::string &folder, const RowStyle &style);

private:
    struct Batch;

    std::shared_ptr<Batch> TakeBatch(const std::string &folder, const RowStyle &style);
    static void Read(Batch &batch);
    bool Merge(Batch &batch);

    ColumnListModel &fList;
    PaneHost &fHost;
    MarkedList &fMarked;
    RowFilter &fFilter;
    RowIndex fByName;
    FileTotals fFiles;
    std::vector<std::string> fTouched;
    std::unordered_set<std::string> fTouchedSet;
    std::unordered_map<std::string, std::string> fRenamedFrom; // new name -> old name
    // Which batch read a name last: an older batch's reading of it is stale.
    std::unordered_map<std::string, uint64_t> fReadBy;
    uint64_t fBatches = 0;
    uint64_t fListing = 0;
    bool fReading = false;
};

} // namespace kestrin
