#pragma once

#include "panes/PaneSettings.h"
#include "widgets/ColumnListView.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kestrin {

class DirListItem;
class MarkedList;

// The rows of a listed local folder, kept in step with the folder: an index
// of the rows by name, and the changes that node monitoring reports, applied
// in batches. A change only says which names to read again; Apply reads
// them, and removes, remakes or adds their rows in one pass over the list,
// each new row merged into its place among the sorted folders or files. So a
// flood of events (a hundred thousand files created) costs one pass per
// batch, not one per file, and events replayed after a listing arrived are
// harmless whatever they say.
//
// GUI thread only.
class FolderRows
{
public:
    // How new rows are made and where they go.
    struct Context
    {
        std::string folder;
        int32_t mode = 0;
        RowColors colors;
        std::string dateFormat;
        int32_t sortKey = 1;
        CLVSortMode sortMode = Ascending;
    };

    FolderRows(ColumnListView &list, MarkedList &marked);

    // After a listing: the index the listing made.
    void Reset(std::unordered_map<std::string, DirListItem *> byName);
    void Clear();

    DirListItem *Find(const std::string &name) const;
    // A row by its entry's node; a walk over the rows.
    DirListItem *FindNode(dev_t device, ino_t node) const;

    // The name is read again at the next Apply.
    void Touch(const std::string &name);
    // Both names are read again; the new row keeps the old one's mark and
    // selection.
    void Rename(const std::string &from, const std::string &to);
    bool HasPending() const { return !fTouched.empty(); }

    // Reads every touched name and brings its row in line with what is on
    // disk. Answers whether any row changed.
    bool Apply(const Context &context);

private:
    ColumnListView &fList;
    MarkedList &fMarked;
    std::unordered_map<std::string, DirListItem *> fByName;
    std::vector<std::string> fTouched;
    std::unordered_set<std::string> fTouchedSet;
    std::unordered_map<std::string, std::string> fRenamedFrom; // new name -> old name
};

} // namespace kestrin
