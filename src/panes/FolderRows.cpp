#include "panes/FolderRows.h"

#include "panes/DirListItem.h"
#include "panes/FolderLister.h"
#include "panes/MarkedList.h"
#include "platform/Entry.h"
#include "platform/FolderScan.h"

#include <algorithm>
#include <memory>

namespace kestrin {

namespace {

struct Carried
{
    bool marked = false;
    bool selected = false;
};

// The entry as a listing would have read it; false when it is gone.
bool ReadEntry(const std::string &folder, const std::string &name, platform::ScannedEntry *entry)
{
    const std::string path = folder == "/" ? "/" + name : folder + "/" + name;
    platform::Entry item(path);
    if (item.InitCheck() != B_OK || item.GetStat(&entry->info) != B_OK)
        return false;
    entry->name = name;
    if (S_ISLNK(entry->info.st_mode)) {
        struct stat target;
        if (stat(path.c_str(), &target) == 0) {
            entry->targetKnown = true;
            entry->targetMode = target.st_mode;
        }
    }
    return true;
}

} // namespace

FolderRows::FolderRows(ColumnListView &list, MarkedList &marked)
    : fList(list)
    , fMarked(marked)
{}

void FolderRows::Reset(std::unordered_map<std::string, DirListItem *> byName)
{
    fByName = std::move(byName);
    fTouched.clear();
    fTouchedSet.clear();
    fRenamedFrom.clear();
}

void FolderRows::Clear()
{
    Reset({});
}

DirListItem *FolderRows::Find(const std::string &name) const
{
    const auto found = fByName.find(name);
    return found == fByName.end() ? nullptr : found->second;
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

bool FolderRows::Apply(const Context &context)
{
    if (fTouched.empty())
        return false;
    const CLVListItem *selected = fList.SelectedItem();
    std::unordered_map<std::string, Carried> carried;
    std::vector<int> gone;
    std::vector<std::unique_ptr<CLVListItem>> fresh;
    bool marksChanged = false;
    for (const std::string &name : fTouched) {
        if (DirListItem *existing = Find(name)) {
            carried[name] = Carried{existing->IsMarked(), existing == selected};
            marksChanged = marksChanged || existing->IsMarked();
            gone.push_back(fList.IndexOf(existing));
            fByName.erase(name);
        }
        platform::ScannedEntry entry;
        if (ReadEntry(context.folder, name, &entry))
            fresh.push_back(std::make_unique<DirListItem>(entry,
                                                          context.colors,
                                                          false,
                                                          context.mode,
                                                          context.dateFormat));
    }
    for (const auto &[to, from] : fRenamedFrom) {
        const auto old = carried.find(from);
        if (old != carried.end() && carried.find(to) == carried.end())
            carried[to] = old->second;
    }
    fTouched.clear();
    fTouchedSet.clear();
    fRenamedFrom.clear();

    // The rows that go are still pointed to by the marked list until it is
    // rebuilt below, so they live until the end of this call.
    std::vector<std::unique_ptr<CLVListItem>> removed = fList.RemoveItems(std::move(gone));

    // Folders before files, each group in the list's order, as a listing
    // has them; then each row goes after the last row that it does not
    // precede.
    std::stable_partition(fresh.begin(), fresh.end(), [](const std::unique_ptr<CLVListItem> &row) {
        return static_cast<DirListItem *>(row.get())->IsFolder();
    });
    FolderLister::SortRows(fresh, context.sortKey, context.sortMode);
    const int count = fList.CountItems();
    int firstFile = 0;
    for (int low = 0, high = count; low < high;) {
        const int middle = (low + high) / 2;
        if (static_cast<DirListItem *>(fList.ItemAt(middle))->IsFolder()) {
            low = middle + 1;
            firstFile = low;
        } else {
            high = middle;
        }
    }
    const bool descending = context.sortMode == Descending;
    const auto keepsLeft = [&context, descending](const CLVListItem *left,
                                                  const CLVListItem *right) {
        const int order = CompareFunc(left, right, context.sortKey);
        return descending ? order >= 0 : order <= 0;
    };
    std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> inserts;
    std::vector<DirListItem *> toSelect;
    for (std::unique_ptr<CLVListItem> &item : fresh) {
        auto *row = static_cast<DirListItem *>(item.get());
        int low = row->IsFolder() ? 0 : firstFile;
        int high = row->IsFolder() ? firstFile : count;
        if (context.sortMode != NoSort) {
            while (low < high) {
                const int middle = (low + high) / 2;
                if (keepsLeft(fList.ItemAt(middle), row))
                    low = middle + 1;
                else
                    high = middle;
            }
        } else {
            low = high;
        }
        const auto carry = carried.find(row->Name());
        if (carry != carried.end()) {
            row->SetMarked(carry->second.marked);
            marksChanged = marksChanged || carry->second.marked;
            if (carry->second.selected)
                toSelect.push_back(row);
        }
        fByName[row->Name()] = row;
        inserts.emplace_back(low, std::move(item));
    }
    fList.InsertItems(std::move(inserts));
    if (marksChanged)
        fMarked.Rebuild();
    if (!toSelect.empty())
        fList.Select(toSelect.back());
    return true;
}

} // namespace kestrin
