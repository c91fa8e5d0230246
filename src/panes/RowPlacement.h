#pragma once

#include "widgets/ColumnListModel.h"

namespace kestrin {

class DirListItem;

// Where a row goes in a pane's sorted rows: folders first, then files, each
// group in the order the stable sort would give. What arrives from node
// monitoring and what the filter shows again both land by it.
class RowPlacement
{
public:
    // The row before which `row` goes: after the last row of its group
    // that it does not precede. `firstFile` is FirstFile(list).
    static int InsertionPoint(const ColumnListModel &list,
                              const DirListItem &row,
                              int firstFile,
                              int sortKey,
                              CLVSortMode sortMode);
    // The index of the first row that is not a folder.
    static int FirstFile(const ColumnListModel &list);
};

} // namespace kestrin
