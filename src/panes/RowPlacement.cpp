#include "panes/RowPlacement.h"

#include "panes/DirListItem.h"

namespace kestrin {

int RowPlacement::InsertionPoint(const ColumnListModel &list,
                                 const DirListItem &row,
                                 int firstFile,
                                 int sortKey,
                                 CLVSortMode sortMode)
{
    int low = row.IsFolder() ? 0 : firstFile;
    int high = row.IsFolder() ? firstFile : list.CountItems();
    if (sortMode == NoSort)
        return high;
    const bool descending = sortMode == Descending;
    while (low < high) {
        const int middle = (low + high) / 2;
        const int order = CompareFunc(list.ItemAt(middle), &row, sortKey);
        if (descending ? order >= 0 : order <= 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

int RowPlacement::FirstFile(const ColumnListModel &list)
{
    int low = 0;
    for (int high = list.CountItems(); low < high;) {
        const int middle = (low + high) / 2;
        if (static_cast<DirListItem *>(list.ItemAt(middle))->IsFolder())
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

} // namespace kestrin
