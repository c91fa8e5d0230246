#include "panes/MarkedList.h"

#include "panes/DirListItem.h"
#include "widgets/ColumnListModel.h"

#include <algorithm>

namespace kestrin {

MarkedList::MarkedList(ColumnListModel &list)
    : fList(list)
{}

void MarkedList::SetMark(DirListItem *row, bool marked)
{
    if (row->IsMarked() == marked)
        return;
    row->SetMarked(marked);
    if (marked)
        fRows.push_back(row);
    else
        fRows.erase(std::find(fRows.begin(), fRows.end(), row));
    fList.InvalidateItem(row);
    Changed();
}

void MarkedList::Changed()
{
    if (fChanged)
        fChanged();
}

void MarkedList::Toggle(int index)
{
    auto *row = static_cast<DirListItem *>(fList.ItemAt(index));
    if (row != nullptr)
        SetMark(row, !row->IsMarked());
}

void MarkedList::ToggleRange(int a, int b)
{
    const int first = std::max(0, std::min(a, b));
    const int last = std::min(fList.CountItems() - 1, std::max(a, b));
    std::vector<DirListItem *> newlyMarked;
    for (int i = first; i <= last; i++) {
        auto *row = static_cast<DirListItem *>(fList.ItemAt(i));
        row->SetMarked(!row->IsMarked());
        if (row->IsMarked())
            newlyMarked.push_back(row);
    }
    std::erase_if(fRows, [](const DirListItem *row) { return !row->IsMarked(); });
    fRows.insert(fRows.end(), newlyMarked.begin(), newlyMarked.end());
    fList.InvalidateAll();
    Changed();
}

void MarkedList::Mark(int a, int b)
{
    const int first = std::max(0, std::min(a, b));
    const int last = std::min(fList.CountItems() - 1, std::max(a, b));
    for (int i = first; i <= last; i++) {
        auto *row = static_cast<DirListItem *>(fList.ItemAt(i));
        if (!row->IsMarked()) {
            row->SetMarked(true);
            fRows.push_back(row);
        }
    }
    fList.InvalidateAll();
    Changed();
}

void MarkedList::Unmark(int a, int b)
{
    const int first = std::max(0, std::min(a, b));
    const int last = std::min(fList.CountItems() - 1, std::max(a, b));
    bool any = false;
    for (int i = first; i <= last; i++) {
        auto *row = static_cast<DirListItem *>(fList.ItemAt(i));
        if (row->IsMarked()) {
            row->SetMarked(false);
            any = true;
        }
    }
    // One pass over the list instead of one search per row: "-" on a
    // hundred thousand marked rows must not take minutes.
    if (any)
        std::erase_if(fRows, [](const DirListItem *row) { return !row->IsMarked(); });
    fList.InvalidateAll();
    Changed();
}

int MarkedList::SetWhere(const std::function<bool(const DirListItem &)> &picked, bool marked)
{
    int changed = 0;
    for (int i = 0; i < fList.CountItems(); i++) {
        auto *row = static_cast<DirListItem *>(fList.ItemAt(i));
        if (row->IsParent() || row->IsMarked() == marked || !picked(*row))
            continue;
        row->SetMarked(marked);
        if (marked)
            fRows.push_back(row);
        changed++;
    }
    if (changed == 0)
        return 0;
    if (!marked)
        std::erase_if(fRows, [](const DirListItem *row) { return !row->IsMarked(); });
    fList.InvalidateAll();
    Changed();
    return changed;
}

void MarkedList::Empty()
{
    if (fRows.empty())
        return;
    for (DirListItem *row : fRows)
        row->SetMarked(false);
    fRows.clear();
    fList.InvalidateAll();
    Changed();
}

void MarkedList::Rebuild()
{
    fRows.clear();
    for (int i = fList.CountItems() - 1; i >= 0; i--) {
        auto *row = static_cast<DirListItem *>(fList.ItemAt(i));
        if (row->IsMarked())
            fRows.push_back(row);
    }
}

void MarkedList::Remove(const std::string &name)
{
    const auto found = std::find_if(fRows.rbegin(), fRows.rend(), [&name](DirListItem *row) {
        return row->Name() == name;
    });
    if (found != fRows.rend())
        SetMark(*found, false);
}

void MarkedList::AddTemporarily(DirListItem *row)
{
    fRows.push_back(row);
}

void MarkedList::RemoveTemporary(DirListItem *row)
{
    const auto found = std::find(fRows.rbegin(), fRows.rend(), row);
    if (found != fRows.rend())
        fRows.erase(std::next(found).base());
}

} // namespace kestrin
