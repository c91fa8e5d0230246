#pragma once

#include <functional>
#include <string>
#include <vector>

namespace kestrin {

class ColumnListModel;
class DirListItem;

// The rows a user has marked in one list, in the order they were marked. A
// row's own mark flag and its presence here always agree; every change goes
// through this class, which also has the row repainted.
//
// GUI thread only, like the rows it marks.
class MarkedList
{
public:
    explicit MarkedList(ColumnListModel &list);

    // Called after every change of the marks a user can see (the footer
    // sums them up).
    void OnChange(std::function<void()> changed) { fChanged = std::move(changed); }

    const std::vector<DirListItem *> &Rows() const { return fRows; }
    bool IsEmpty() const { return fRows.empty(); }
    int Count() const { return int(fRows.size()); }

    void Toggle(int index);
    // Toggles every row from a to b inclusive (either order).
    void ToggleRange(int a, int b);
    // Marks every unmarked row from a to b inclusive (either order).
    void Mark(int a, int b);
    // Unmarks every marked row from a to b inclusive (either order).
    void Unmark(int a, int b);
    // Marks (or, with `marked` false, unmarks) every row that `picked`
    // accepts, the parent row never, as one change. How many rows changed.
    int SetWhere(const std::function<bool(const DirListItem &)> &picked, bool marked);
    // Clears every mark.
    void Empty();
    // Builds the list again from the rows' flags, last row first.
    void Rebuild();
    // Takes the last marked row of that name off the list (its flag too).
    void Remove(const std::string &name);
    // Forgets every row without touching them (they are about to go).
    void Forget() { fRows.clear(); }

    // Puts a row on the list for the length of one request and takes it off
    // again (F5 and F9 act on the selected row this way).
    void AddTemporarily(DirListItem *row);
    void RemoveTemporary(DirListItem *row);

private:
    void SetMark(DirListItem *row, bool marked);
    void Changed();

    ColumnListModel &fList;
    std::vector<DirListItem *> fRows;
    std::function<void()> fChanged;
};

} // namespace kestrin
