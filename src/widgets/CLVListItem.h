#pragma once

#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

namespace kestrin {

class ColumnListModel;

// One row of a ColumnListModel: the data a ColumnListView shows. The model
// owns its rows (and a row owns its sub-rows in the hierarchical form); the
// view paints them (CLVPaintedItem for rows that draw themselves).
//
// Rows are plain objects: they may be made and filled on a worker thread and
// handed to the model afterwards; once in a model they belong to the GUI
// thread.
class CLVListItem
{
public:
    explicit CLVListItem(uint32_t outlineLevel = 0, bool superItem = false);
    virtual ~CLVListItem();

    CLVListItem(const CLVListItem &) = delete;
    CLVListItem &operator=(const CLVListItem &) = delete;

    // The text a column shows, for accessibility and tests; empty by default.
    virtual QString ColumnText(int column) const;
    // The first byte of what type-ahead matches the row by (0 for nothing).
    // The list keeps these bytes apart from the rows, so that a search runs
    // through a few bytes a row rather than through a million rows.
    virtual char SearchByte() const { return 0; }

    uint32_t OutlineLevel() const;
    // A super-item can have sub-rows and shows an expander in the
    // hierarchical form, whether or not its sub-rows are there yet.
    bool IsSuperItem() const { return fSuperItem; }
    void SetSuperItem(bool superItem) { fSuperItem = superItem; }
    bool IsExpanded() const { return fExpanded; }
    // The row this one is under; null at the top level.
    CLVListItem *Superitem() const;
    int CountSubitems() const { return int(Subitems().size()); }
    CLVListItem *SubitemAt(int index) const;

private:
    friend class ColumnListModel;
    using Rows = std::vector<std::unique_ptr<CLVListItem>>;
    struct Outline;

    const Rows &Subitems() const;
    // Makes the row's place in a hierarchy when it first gets one.
    Rows &OwnSubitems();
    void SetSuperitem(CLVListItem *superitem);
    void SetOutlineLevel(uint32_t level);
    Outline &OwnOutline();

    // Where the row stands in a hierarchy. Most rows are in flat lists of up
    // to a million, so only rows of a hierarchy pay for it.
    std::unique_ptr<Outline> fOutline;
    // The row's position among its siblings, kept by the model; trusted only
    // while the model says its positions are current.
    mutable int fRow = -1;
    bool fSuperItem;
    bool fExpanded = false;
};

} // namespace kestrin
