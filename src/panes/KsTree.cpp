#include "panes/KsTree.h"

#include "panes/KsTreeListItem.h"
#include "platform/Background.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"
#include "widgets/RgbColor.h"

#include <algorithm>
#include <strings.h>

namespace kestrin {

namespace {

std::vector<std::string> Components(const std::string &path)
{
    std::vector<std::string> components;
    size_t start = 0;
    while (start <= path.size()) {
        const size_t slash = path.find('/', start);
        const size_t end = slash == std::string::npos ? path.size() : slash;
        if (end > start)
            components.push_back(path.substr(start, end - start));
        if (slash == std::string::npos)
            break;
        start = slash + 1;
    }
    return components;
}

} // namespace

KsTree::KsTree(QWidget *parent, std::function<bool()> paneHasFocus)
    : ColumnListView(parent, true)
    , fPaneHasFocus(std::move(paneHasFocus))
{
    AddColumn(QString(), 20, 20, CLV_EXPANDER | CLV_LOCK_AT_BEGINNING | CLV_NOT_MOVABLE);
    AddColumn(QString(), 1000, 50, CLV_SORT_KEYABLE | CLV_NOT_MOVABLE);
    SetColumnLabelsVisible(false);
    QFont plain = font();
    plain.setPixelSize(14);
    setFont(plain);
    ReloadSettings();
}

void KsTree::ReloadSettings()
{
    fColors = PaneSettings::Load().colors;
    QPalette colours = palette();
    colours.setColor(QPalette::Base, ToQColor(fColors.background));
    colours.setColor(QPalette::Highlight, ToQColor(fColors.selectionBar));
    setPalette(colours);
    const std::function<void(CLVListItem *)> recolour = [&](CLVListItem *item) {
        static_cast<KsTreeListItem *>(item)->SetColors(fColors);
        for (int i = 0; i < item->CountSubitems(); i++)
            recolour(item->SubitemAt(i));
    };
    for (int i = 0; i < CountItems(); i++)
        recolour(ItemAt(i));
    InvalidateAll();
}

KsTree::~KsTree() = default;

bool KsTree::FindChildren(const std::string &path)
{
    if (path == "/hood")
        return true;
    return platform::FolderScan::HasSubfolder(path);
}

std::vector<KsTree::Child> KsTree::ReadChildren(const std::string &path)
{
    std::vector<Child> children;
    platform::FolderScan scan(path);
    if (scan.InitCheck() != B_OK)
        return children;
    scan.ReadNames();
    std::vector<platform::ScannedEntry> entries;
    scan.StatEntries(&entries);
    for (const platform::ScannedEntry &entry : entries) {
        if (entry.statStatus != B_OK || !S_ISDIR(entry.info.st_mode))
            continue;
        const std::string childPath = platform::JoinPath(path, entry.name);
        children.push_back({entry.name, childPath, FindChildren(childPath)});
    }
    // Names in the order people look for them, whatever order the file
    // system keeps.
    std::sort(children.begin(), children.end(), [](const Child &a, const Child &b) {
        const int order = strcasecmp(a.name.c_str(), b.name.c_str());
        return order != 0 ? order < 0 : a.name < b.name;
    });
    return children;
}

KsTreeListItem *KsTree::FindRow(const std::string &path) const
{
    for (CLVListItem *item : FullList()) {
        auto *row = static_cast<KsTreeListItem *>(item);
        if (!row->IsPlaceholder() && row->Path() == path)
            return row;
    }
    return nullptr;
}

std::string KsTree::SelectedPath() const
{
    const auto *row = static_cast<const KsTreeListItem *>(SelectedItem());
    return row != nullptr && !row->IsPlaceholder() ? row->Path() : std::string();
}

int KsTree::ReadCount(const std::string &path) const
{
    const auto found = fReadCount.find(path);
    return found == fReadCount.end() ? 0 : found->second;
}

void KsTree::Populate(const std::string &path)
{
    if (fTopLevelRead) {
        ExpandToPath(path);
        return;
    }
    ReadBranch("/", [this, path] { ExpandToPath(path); });
}

void KsTree::ReadBranch(const std::string &path, Then then)
{
    const bool topLevel = path == "/";
    KsTreeListItem *row = topLevel ? nullptr : FindRow(path);
    if ((topLevel && fTopLevelRead) || (!topLevel && (row == nullptr || row->IsPopulated()))) {
        if (then)
            then();
        return;
    }
    const auto [waiting, fresh] = fWaiting.try_emplace(path);
    if (then)
        waiting->second.push_back(std::move(then));
    // A read of it is under way already: `then` waits for that one.
    if (!fresh)
        return;
    platform::Background::Run(
        this,
        [path](const std::atomic<bool> &) { return ReadChildren(path); },
        [this, path](std::vector<Child> children) { BranchArrived(path, std::move(children)); });
}

void KsTree::BranchArrived(const std::string &path, std::vector<Child> children)
{
    std::vector<Then> waiting = std::move(fWaiting[path]);
    fWaiting.erase(path);
    fReadCount[path]++;
    const bool topLevel = path == "/";
    KsTreeListItem *parent = topLevel ? nullptr : FindRow(path);
    if (!topLevel && parent == nullptr)
        return;
    if (topLevel) {
        if (fTopLevelRead)
            return;
        fTopLevelRead = true;
    } else {
        if (parent->IsPopulated())
            return;
        RemoveSubitems(parent);
        parent->SetPopulated(true);
        parent->SetSuperItem(!children.empty());
    }
    const uint32_t level = topLevel ? 0 : parent->OutlineLevel() + 1;
    for (const Child &child : children) {
        auto row = std::make_unique<KsTreeListItem>(level,
                                                    child.name,
                                                    child.path,
                                                    child.expandable,
                                                    fColors);
        KsTreeListItem *added = row.get();
        if (topLevel)
            AddItem(std::move(row));
        else
            AddUnder(std::move(row), parent);
        if (child.expandable)
            AddUnder(std::make_unique<KsTreeListItem>(level + 1, fColors), added);
    }
    emit BranchRead(path);
    for (Then &then : waiting) {
        if (then)
            then();
    }
}

void KsTree::ExpandRequested(CLVListItem *item)
{
    auto *row = static_cast<KsTreeListItem *>(item);
    if (!row->IsPlaceholder() && !row->IsPopulated())
        ReadBranch(row->Path(), nullptr);
}

void KsTree::ExpandToPath(const std::string &path)
{
    ExpandStep(Components(path), 0, path);
}

void KsTree::ExpandStep(std::vector<std::string> components, size_t depth, std::string target)
{
    std::string folder = "/";
    for (size_t i = 0; i < depth; i++)
        folder = platform::JoinPath(folder, components[i]);
    if (depth < components.size()) {
        const std::string next = platform::JoinPath(folder, components[depth]);
        KsTreeListItem *row = FindRow(next);
        if (row != nullptr) {
            ReadBranch(next, [this, components, depth, target, next] {
                if (KsTreeListItem *opened = FindRow(next))
                    Expand(opened);
                ExpandStep(components, depth + 1, target);
            });
            return;
        }
    }
    // As far as the tree goes: select the deepest folder reached.
    fFollowingPath = true;
    DeselectAll();
    if (fPaneHasFocus && fPaneHasFocus()) {
        if (KsTreeListItem *row = FindRow(folder)) {
            Select(row);
            ScrollTo(row);
        }
    }
    fFollowingPath = false;
    emit PathExpanded(target);
}

void KsTree::SelectionChanged()
{
    if (fFollowingPath)
        return;
    const std::string path = SelectedPath();
    if (!path.empty())
        emit FolderSelected(path);
}

void KsTree::Invoked(int)
{
    CLVListItem *item = SelectedItem();
    if (item == nullptr || !item->IsSuperItem())
        return;
    if (item->IsExpanded())
        Collapse(item);
    else
        Expand(item);
}

} // namespace kestrin
