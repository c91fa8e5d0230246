#pragma once

#include "panes/PaneSource.h"

namespace kestrin {

// The entries a query found (mode 1100), shown by their full paths. Nothing
// may be copied into them, and up a level goes back to the folder the pane
// showed before.
class QuerySource : public PaneSource
{
public:
    QuerySource(std::vector<entry_ref> refs, std::string queryText, std::string folder);
    // The "refs" and "QueryString" of a results message.
    QuerySource(const platform::Message &results, std::string folder);

    int32_t Mode() const override;
    const std::string &Folder() const override { return fFolder; }
    std::string HeaderText() const override { return fQueryText; }
    // The results of a walk are not kept: going back to them would walk
    // again.
    std::string RecalledPlace() const override { return {}; }

    FolderLister::Reader Reader(const RowStyle &style) const override;

    std::string PathOf(const DirListItem &row) const override;
    bool NamesArePaths() const override { return true; }
    std::string FolderShownFor(const DirListItem &row) const override { return PathOf(row); }

    std::unique_ptr<PaneSource> Parent(std::string *selectAfter) const override;
    Opening Open(const DirListItem &row) const override;
    TransferPlace Place() const override;

private:
    std::vector<entry_ref> fRefs;
    std::string fQueryText;
    std::string fFolder;
};

} // namespace kestrin
