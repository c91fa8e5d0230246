#pragma once

namespace kestrin {

// What a pane's core asks of the list that shows its rows: which row is
// selected, selecting one, and the field of an in-place rename. The list
// implements it; a test of the core stands in for it.
//
// GUI thread only.
class PaneHost
{
public:
    // The selected row's index; -1 for none.
    virtual int Selection() const = 0;
    // Selects the row at `index` (nothing for one that is not there) and,
    // with `show`, scrolls it into view.
    virtual void SelectRow(int index, bool show) = 0;
    // Opens the rename field on the row at `index`, scrolled into view; its
    // end comes back as the commands' AcceptRename.
    virtual void StartRename(int index) = 0;
    // Closes the rename field, if one is open.
    virtual void EndRename() = 0;

protected:
    ~PaneHost() = default;
};

} // namespace kestrin
