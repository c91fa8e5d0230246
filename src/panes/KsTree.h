#pragma once

#include "app/PaneSettings.h"
#include "widgets/ColumnListView.h"

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace kestrin {

class KsTreeListItem;

// The folder tree a pane can show beside its list: folders only, read
// lazily branch by branch on a worker. An unread branch holds the single
// placeholder row "<populating...>" until its folder has been read; each
// folder is read once. The tree follows the pane's path by opening the
// branches down to it, and the pane follows the folder selected in it.
//
// GUI thread only.
class KsTree : public ColumnListView
{
    Q_OBJECT

public:
    // `paneHasFocus` tells whether the pane is the active one.
    KsTree(QWidget *parent, std::function<bool()> paneHasFocus);
    ~KsTree() override;

    // Reads the top level (the folders of "/") and opens the tree down to
    // `path`.
    void Populate(const std::string &path);
    // Opens the branches down to `path`, reading those not read yet, then
    // selects its row when the pane has the focus.
    void ExpandToPath(const std::string &path);

    // Whether a folder has sub-folders (and so an expander). "/hood" always
    // has, without being read.
    static bool FindChildren(const std::string &path);

    // Takes the colours from the profile again and redraws every row.
    void ReloadSettings();

    KsTreeListItem *FindRow(const std::string &path) const;
    // The folder of the selected row; empty when none.
    std::string SelectedPath() const;
    // How many times a folder has been read; for tests.
    int ReadCount(const std::string &path) const;
    bool IsReading() const { return !fWaiting.empty(); }

signals:
    // The user selected a folder: the pane shows it.
    void FolderSelected(const std::string &path);
    // A branch (or the top level, path "/") has been read and shown.
    void BranchRead(const std::string &path);
    // ExpandToPath has opened everything it could.
    void PathExpanded(const std::string &path);

protected:
    void ExpandRequested(CLVListItem *item) override;
    void SelectionChanged() override;
    void Invoked(int index) override;

private:
    struct Child
    {
        std::string name;
        std::string path;
        bool expandable = false;
    };
    using Then = std::function<void()>;

    // Reads the folder of `path` ("/" for the top level) once; `then` runs
    // when its rows are in the tree.
    void ReadBranch(const std::string &path, Then then);
    void BranchArrived(const std::string &path, std::vector<Child> children);
    void ExpandStep(std::vector<std::string> components, size_t depth, std::string target);
    static std::vector<Child> ReadChildren(const std::string &path);

    std::function<bool()> fPaneHasFocus;
    RowColors fColors;
    bool fTopLevelRead = false;
    bool fFollowingPath = false;
    std::unordered_map<std::string, std::vector<Then>> fWaiting;
    std::unordered_map<std::string, int> fReadCount;
};

} // namespace kestrin
