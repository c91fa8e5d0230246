#include "panes/FolderRows.h"

#include "panes/DirListItem.h"
#include "panes/MarkedList.h"
#include "panes/PaneHost.h"
#include "panes/RowFilter.h"
#include "panes/RowPlacement.h"
#include "platform/Background.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"

#include <algorithm>

namespace kestrin {

// The names one batch reads again, and what it found: `fresh` holds a row for
// each name that still exists, made on the worker.
struct FolderRows::Batch
{
    uint64_t number = 0;
    uint64_t listing = 0;
    std::string folder;
    RowStyle style;
    std::vector<std::string> names;
    std::unordered_map<std::string, std::string> renamedFrom;
    std::vector<std::unique_ptr<CLVListItem>> fresh;
};

namespace {

struct Carried
{
    bool marked = false;
    bool selected = false;
};

} // namespace

FolderRows::FolderRows(ColumnListModel &list, PaneHost &host, MarkedList &marked, RowFilter &filter)
    : fList(list)
    , fHost(host)
    , fMarked(marked)
    , fFilter(filter)
{}

void FolderRows::Reset(RowIndex byName, const FileTotals &files)
{
    fByName = std::move(byName);
    fFiles = files;
    fTouched.clear();
    fTouchedSet.clear();
    fRenamedFrom.clear();
    fReadBy.clear();
    fListing++;
    fReading = false;
}

void FolderRows::Clear()
{
    Reset({}, {});
}

DirListItem *FolderRows::Find(const std::string &name) const
{
    return fByName.Find(name);
}

DirListItem *FolderRows::FindNode(dev_t device, ino_t node) const
{
    for (int i = 0; i < fList.CountItems(); i++) {
        auto *row = static_cast<DirListItem *>(fList.ItemAt(i));
        if (!row->IsParent() && row->Node().device == device && row->Node().node == node)
            return row;
    }
    return nullptr;
}

void FolderRows::Touch(const std::string &name)
{
    if (name.empty() || name == "." || name == "..")
        return;
    if (fTouchedSet.insert(name).second)
        fTouched.push_back(name);
}

void FolderRows::Rename(const std::string &from, const std::string &to)
{
    Touch(from);
    Touch(to);
    fRenamedFrom[to] = from;
}

std::shared_ptr<FolderRows::Batch> FolderRows::TakeBatch(const std::string &folder,
                                                         const RowStyle &style)
{
    auto batch = std::make_shared<Batch>();
    batch->number = ++fBatches;
    batch->listing = fListing;
    batch->folder = folder;
    batch->style = style;
    batch->names = std::exchange(fTouched, {});
    batch->renamedFrom = std::exchange(fRenamedFrom, {});
    fTouchedSet.clear();
    for (const std::string &name : batch->names)
        fReadBy[name] = batch->number;
    return batch;
}

void FolderRows::Read(Batch &batch)
{
    for (const std::string &name : batch.names) {
        const platform::ScannedEntry entry = platform::ScanEntry(platform::JoinPath(batch.folder,
                                                                                    name),
                                                                 name);
        if (entry.statStatus == B_OK)
            batch.fresh.push_back(std::make_unique<DirListItem>(entry,
                                                                batch.style.colors,
                                                                false,
                                                                batch.style.dateFormat));
    }
}

void FolderRows::ApplyLater(const std::string &folder,
                            const RowStyle &style,
                            QObject *context,
                            std::function<void(bool)> applied)
{
    if (fReading || fTouched.empty())
        return;
    fReading = true;
    std::shared_ptr<Batch> batch = TakeBatch(folder, style);
    // The rows belong to the context: while it lives, so does this.
    platform::Background::Run(
        context,
        [batch](const std::atomic<bool> &) { Read(*batch); },
        [this, batch, applied = std::move(applied)] {
            if (batch->listing != fListing)
                return;
            fReading = false;
            applied(Merge(*batch));
        });
}

bool FolderRows::ApplyNow(const std::string &folder, const RowStyle &style)
{
    if (fTouched.empty())
        return false;
    std::shared_ptr<Batch> batch = TakeBatch(folder, style);
    Read(*batch);
    return Merge(*batch);
}

bool FolderRows::Merge(Batch &batch)
{
    // A name read again by a later batch, or touched again since, is that
    // batch's to apply: this reading of it is stale.
    const auto current = [this, &batch](const std::string &name) {
        const auto readBy = fReadBy.find(name);
        return readBy != fReadBy.end() && readBy->second == batch.number
               && fTouchedSet.count(name) == 0;
    };
    const CLVListItem *selected = fList.ItemAt(fHost.Selection());
    std::unordered_map<std::string, Carried> carried;
    std::vector<int> gone;
    bool marksChanged = false;
    std::unordered_set<const CLVListItem *> hiddenGoing;
    for (const std::string &name : batch.names) {
        if (!current(name))
            continue;
        if (DirListItem *existing = Find(name)) {
            carried[name] = Carried{existing->IsMarked(), existing == selected};
            marksChanged = marksChanged || existing->IsMarked();
            if (const int at = fList.IndexOf(existing); at >= 0)
                gone.push_back(at);
            else
                hiddenGoing.insert(existing);
            fByName.Erase(name);
        }
    }
    // Rows the filter hides leave it; the others leave the list below.
    const ColumnListModel::Rows hiddenGone = fFilter.Take(hiddenGoing);
    for (const std::unique_ptr<CLVListItem> &row : hiddenGone)
        fFiles.Remove(*row);
    for (const auto &[to, from] : batch.renamedFrom) {
        const auto old = carried.find(from);
        if (old != carried.end() && carried.find(to) == carried.end())
            carried[to] = old->second;
    }
    std::erase_if(batch.fresh, [&current](const std::unique_ptr<CLVListItem> &row) {
        return !current(static_cast<DirListItem *>(row.get())->Name());
    });
    for (const std::string &name : batch.names) {
        if (current(name))
            fReadBy.erase(name);
    }
    if (gone.empty() && batch.fresh.empty())
        return !hiddenGone.empty();

    // When the selected row goes for good, the row that takes its place (or
    // the new last row) is selected, so the keys go on where the user was.
    const int selectedAt = selected != nullptr ? fList.IndexOf(selected) : -1;
    const bool selectionGoes = std::find(gone.begin(), gone.end(), selectedAt) != gone.end();
    const int removedAbove = int(
        std::count_if(gone.begin(), gone.end(), [selectedAt](int at) { return at < selectedAt; }));

    // The rows that go are still pointed to by the marked list until it is
    // rebuilt below, so they live until the end of this call.
    std::vector<std::unique_ptr<CLVListItem>> removed = fList.RemoveItems(std::move(gone));
    for (const std::unique_ptr<CLVListItem> &row : removed)
        fFiles.Remove(*row);
    CLVListItem *successor = nullptr;
    if (selectionGoes && fList.CountItems() > 0)
        successor = fList.ItemAt(std::min(selectedAt - removedAbove, fList.CountItems() - 1));

    // Folders before files, each group in the list's order, as a listing
    // has them; then each row goes after the last row that it does not
    // precede.
    std::stable_partition(batch.fresh.begin(),
                          batch.fresh.end(),
                          [](const std::unique_ptr<CLVListItem> &row) {
                              return static_cast<DirListItem *>(row.get())->IsFolder();
                          });
    FolderLister::SortRows(batch.fresh, batch.style.sortKey, batch.style.sortMode);
    const int firstFile = RowPlacement::FirstFile(fList);
    std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> inserts;
    std::vector<DirListItem *> toSelect;
    std::vector<std::unique_ptr<CLVListItem>> hidden;
    for (std::unique_ptr<CLVListItem> &item : batch.fresh) {
        auto *row = static_cast<DirListItem *>(item.get());
        const auto carry = carried.find(row->Name());
        if (carry != carried.end()) {
            row->SetMarked(carry->second.marked);
            marksChanged = marksChanged || carry->second.marked;
            if (carry->second.selected && fFilter.Passes(*row))
                toSelect.push_back(row);
        }
        fByName.Insert(row);
        fFiles.Add(*row);
        if (!fFilter.Passes(*row)) {
            hidden.push_back(std::move(item));
            continue;
        }
        inserts.emplace_back(RowPlacement::InsertionPoint(fList,
                                                          *row,
                                                          firstFile,
                                                          batch.style.sortKey,
                                                          batch.style.sortMode),
                             std::move(item));
    }
    fList.InsertItems(std::move(inserts));
    // Where a hidden row would be is known once the shown rows are in.
    fFilter.Keep(std::move(hidden));
    if (marksChanged)
        fMarked.Rebuild();
    if (!toSelect.empty())
        fHost.SelectRow(fList.IndexOf(toSelect.back()), false);
    else if (successor != nullptr)
        fHost.SelectRow(fList.IndexOf(successor), false);
    return true;
}

} // namespace kestrin
