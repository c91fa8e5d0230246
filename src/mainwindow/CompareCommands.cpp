#include "mainwindow/CompareCommands.h"

#include "mainwindow/CompareWin.h"
#include "panes/DirListItem.h"
#include "panes/DirPane.h"
#include "panes/MarkedList.h"
#include "panes/PaneModel.h"
#include "platform/Alerts.h"

#include <QPointer>
#include <QWidget>
#include <unordered_set>

namespace kestrin {

namespace {

constexpr int kProgressWidth = 400;

void Tell(const std::string &title, const std::string &text)
{
    platform::Alerts::Go({title, text, {"OK"}, B_INFO_ALERT});
}

std::string TitleOf(FolderComparison::By by)
{
    return by == FolderComparison::By::Content ? "Compare Folders by Content" : "Compare Folders";
}

} // namespace

void CompareCommands::Compare(DirPane *focused,
                              DirPane *other,
                              FolderComparison::By by,
                              QWidget *window)
{
    if (focused == nullptr)
        return;
    if (const std::string refusal = Refusal(focused, other, by); !refusal.empty()) {
        Tell(TitleOf(by), refusal);
        return;
    }
    PaneModel &left = focused->Model();
    PaneModel &right = other->Model();
    const FolderComparison::Result result = FolderComparison::Compare(EntriesOf(left),
                                                                      EntriesOf(right),
                                                                      by);
    MarkOnly(left, result.left);
    MarkOnly(right, result.right);
    if (result.sameSize.empty()) {
        SayWhenSame(left, right);
        return;
    }
    // The marks by content follow once the files are read, on the panes
    // still showing the folders compared.
    const std::string leftFolder = left.CurrentPath();
    const std::string rightFolder = right.CurrentPath();
    QRect frame(0, 0, kProgressWidth, 0);
    frame.moveCenter(window->geometry().center());
    // Owned by the main window, and by itself once closed.
    new CompareWin(frame,
                   leftFolder,
                   rightFolder,
                   result.sameSize,
                   [leftPane = QPointer<DirPane>(focused),
                    rightPane = QPointer<DirPane>(other),
                    leftFolder,
                    rightFolder](const std::vector<std::string> &differing) {
                       if (!leftPane || !rightPane || leftPane->Model().CurrentPath() != leftFolder
                           || rightPane->Model().CurrentPath() != rightFolder)
                           return;
                       MarkToo(leftPane->Model(), differing);
                       MarkToo(rightPane->Model(), differing);
                       SayWhenSame(leftPane->Model(), rightPane->Model());
                   },
                   window);
}

std::string CompareCommands::Refusal(const DirPane *focused,
                                     const DirPane *other,
                                     FolderComparison::By by)
{
    if (other == nullptr)
        return "There is only one pane: add a second one to compare this one with.";
    for (const DirPane *pane : {focused, other}) {
        const PaneModel &model = pane->Model();
        if (model.Source().NamesArePaths())
            return "Query results come from many folders: only two folders, archives or "
                   "folders on a server can be compared.";
        if (model.IsListing())
            return "\"" + model.Source().HeaderText()
                   + "\" is still being listed: compare again once it is shown.";
        if (by == FolderComparison::By::Content && !model.Source().IsLocalFolder())
            return "Files can be compared by content only in folders on this computer, and \""
                   + model.Source().HeaderText()
                   + "\" is not one. Compare Folders compares them by size and time.";
    }
    return {};
}

std::vector<FolderComparison::Entry> CompareCommands::EntriesOf(const PaneModel &model)
{
    std::vector<FolderComparison::Entry> entries;
    for (int i = 0; const DirListItem *row = model.Row(i); i++) {
        if (!row->IsParent())
            entries.push_back({row->Name(), row->IsFolder(), row->Size(), row->ModificationTime()});
    }
    return entries;
}

void CompareCommands::MarkOnly(PaneModel &model, const std::vector<std::string> &names)
{
    model.Marked().Empty();
    MarkToo(model, names);
}

void CompareCommands::MarkToo(PaneModel &model, const std::vector<std::string> &names)
{
    const std::unordered_set<std::string> wanted(names.begin(), names.end());
    model.Marked().SetWhere([&wanted](const DirListItem &row) { return wanted.count(row.Name()) > 0; },
                            true);
}

void CompareCommands::SayWhenSame(const PaneModel &left, const PaneModel &right)
{
    // A comparison that marks nothing would look like one that did not run.
    if (left.Marked().IsEmpty() && right.Marked().IsEmpty())
        Tell("Compare Folders", "The two folders hold the same entries.");
}

} // namespace kestrin
