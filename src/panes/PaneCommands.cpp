#include "panes/PaneCommands.h"

#include "app/AppUtils.h"
#include "app/NumberText.h"
#include "fileops/FileType.h"
#include "fileops/KestrinEntry.h"
#include "fileops/Trash.h"
#include "panes/DirListItem.h"
#include "panes/MarkedList.h"
#include "panes/PaneHost.h"
#include "panes/PaneMessages.h"
#include "panes/PaneModel.h"
#include "platform/Alerts.h"
#include "platform/Background.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/Launcher.h"
#include "platform/PathNames.h"

#include "platform/Background.h"

#include <unordered_set>

namespace kestrin {

namespace {

constexpr size_t kListedNames = 20;

} // namespace

PaneCommands::PaneCommands(PaneModel &model, PaneHost &host)
    : fModel(model)
    , fHost(host)
    , fMarked(model.Marked())
{}

std::vector<DirListItem *> PaneCommands::RowsToActOn() const
{
    if (!fMarked.Rows().empty())
        return fMarked.Rows();
    std::vector<DirListItem *> rows;
    const int selection = fHost.Selection();
    if (selection >= 1)
        rows.push_back(fModel.Row(selection));
    return rows;
}

void PaneCommands::SendRequest(uint32_t what, const char *typeOfCopy, bool selectedFallback)
{
    // Without marks the selected row stands in; with `selectedFallback` it
    // stands on the marked list while the request is built, else it is
    // named first.
    std::vector<const DirListItem *> rows;
    DirListItem *stand = nullptr;
    if (fMarked.Rows().empty()) {
        const int selection = fHost.Selection();
        if (selection < 1)
            return;
        stand = fModel.Row(selection);
        if (selectedFallback)
            fMarked.AddTemporarily(stand);
        else
            rows.push_back(stand);
    }
    rows.insert(rows.end(), fMarked.Rows().begin(), fMarked.Rows().end());
    platform::Message request = fModel.Source().Request(what, rows);
    request.AddString("Dragging", "false");
    request.AddString("Direction", "Right");
    request.AddString("TypeOfCopy", typeOfCopy);
    if (stand != nullptr && selectedFallback)
        fMarked.RemoveTemporary(stand);
    fModel.SendToWindow(request);
}

void PaneCommands::CopyOut()
{
    const kestrin::CopyOut out = fModel.Source().CopyRequest();
    SendRequest(out.what, out.typeOfCopy, true);
}

void PaneCommands::Pack()
{
    // Members of an archive and files on a server are fetched first; where
    // they go is the transfer planner's to decide.
    SendRequest(kMsgPackRequest, "Pack", true);
}

std::string PaneCommands::TrashQuestion(const std::vector<std::string> &names, bool permanent)
{
    if (names.size() > kListedNames) {
        return std::string(permanent ? "Do you really want to permanently delete the "
                                     : "Do you really want to delete the ")
               + std::to_string(names.size()) + " selected files/folders?";
    }
    std::string text = permanent
                           ? "Do you really want permanently delete the following files/folders:"
                           : "Do you really want to delete the following files/folders:";
    for (const std::string &name : names)
        text += "\n\t" + name;
    return text;
}

void PaneCommands::Trash()
{
    const std::vector<DirListItem *> rows = RowsToActOn();
    if (rows.empty())
        return;
    const kestrin::Trash trash;
    // Nothing on a server goes to the Trash.
    const bool permanent = fModel.Source().IsRemote()
                           || (trash.InitCheck() == B_OK
                               && trash.IsTrashFolder(fModel.CurrentPath()));
    std::vector<std::string> names;
    for (const DirListItem *row : rows)
        names.push_back(row->Name());
    const platform::Alert question{"Sir?",
                                   TrashQuestion(names, permanent),
                                   {"Cancel", "Delete"},
                                   permanent ? B_STOP_ALERT : B_WARNING_ALERT};
    if (platform::Alerts::Go(question) != 1)
        return;
    if (std::unique_ptr<PaneSource> place = fModel.Source().WithoutRows(
            {rows.begin(), rows.end()})) {
        fModel.Show(std::move(place));
        return;
    }
    platform::Message request(kMsgDeleteRequest);
    for (const DirListItem *row : rows)
        request.AddRef("refs", fModel.RefOf(row));
    fModel.SendToWindow(request);
}

void PaneCommands::Edit()
{
    const int selection = fHost.Selection();
    if (selection < 1 || !fModel.Source().RenamesRows())
        return;
    fHost.EndRename();
    fHost.StartRename(selection);
}

void PaneCommands::AcceptRename(int32_t index, const std::string &name)
{
    const DirListItem *row = fModel.Row(index);
    if (row != nullptr && !row->IsParent())
        RenameRow(row, name);
}

bool PaneCommands::RenameRow(const DirListItem *row, const std::string &name)
{
    if (name.empty() || name == row->Name())
        return false;
    const std::string from = row->Name();
    // A server renames the entry itself; the listing that follows shows it.
    if (std::unique_ptr<PaneSource> place = fModel.Source().WithRenamed(*row, name)) {
        fModel.Show(std::move(place), [model = &fModel, name] { model->SelectByName(name); });
        return true;
    }
    if (!fModel.Source().IsLocalFolder())
        return false;
    platform::Entry entry(fModel.PathOf(row));
    // A "/" would move the entry elsewhere: a rename stays in its folder.
    const status_t status = name.find('/') != std::string::npos || name == "." || name == ".."
                                ? B_BAD_VALUE
                                : entry.MoveTo("", name.c_str());
    if (status != B_OK) {
        KestrinEntry::ShowError(status);
        return false;
    }
    fModel.EntriesChanged(from, name);
    return true;
}

void PaneCommands::Rename(const std::string &name)
{
    const DirListItem *row = fModel.SelectedRow();
    if (row != nullptr && !row->IsParent() && fModel.Source().RenamesRows())
        RenameRow(row, name);
}

std::string PaneCommands::NewFolderName(const std::function<bool(const std::string &)> &taken)
{
    constexpr int kLimit = 999999;
    std::string candidate = "New Folder";
    for (int counter = 1; taken(candidate);) {
        counter++;
        if (counter >= kLimit)
            return {};
        candidate = "New Folder " + std::to_string(counter);
    }
    return candidate;
}

void PaneCommands::NewFolder()
{
    // Only folders count: a file called "New Folder" does not move the
    // name on, and making the folder then fails in the file system.
    std::unordered_set<std::string> folders;
    for (int i = 0; fModel.Row(i) != nullptr && fModel.Row(i)->IsFolder(); i++)
        folders.insert(fModel.Row(i)->Name());
    const std::string name = NewFolderName(
        [&folders](const std::string &candidate) { return folders.count(candidate) > 0; });
    if (name.empty()) {
        MsgBox("Hum...you never should have hit this limit.\n  You have more folders starting "
               "with \"New Folder\" then Kestrin is prepared to handle.");
        return;
    }
    // A server makes the folder itself; the listing that follows shows it.
    if (std::unique_ptr<PaneSource> place = fModel.Source().WithNewFolder(name)) {
        fModel.Show(std::move(place), [model = &fModel, name] { model->SelectByName(name); });
        return;
    }
    if (!fModel.Source().IsLocalFolder())
        return;
    MkDir(name);
    const int index = fModel.FindItem(name);
    if (index < 0)
        return;
    fHost.SelectRow(index, false);
    Edit();
}

void PaneCommands::MkDir(const std::string &name)
{
    if (!fModel.Source().IsLocalFolder() || name.empty())
        return;
    if (name.find('/') != std::string::npos) {
        KestrinEntry::ShowError(B_BAD_VALUE);
        return;
    }
    const std::string folder = fModel.CurrentPath();
    // The new row is added here at once; the watch would only add it again.
    fModel.StopNodeMonitoring();
    const status_t status = platform::Directory(folder).CreateDirectory(name);
    fModel.DoNodeMonitor(folder);
    if (status != B_OK) {
        KestrinEntry::ShowError(status);
        return;
    }
    fModel.EntriesChanged({}, name);
}

void PaneCommands::Identify()
{
    if (!fModel.Source().HoldsLocalEntries())
        return;
    for (const DirListItem *row : RowsToActOn()) {
        if (!row->IsFolder())
            FileType::Identify(fModel.PathOf(row));
    }
}

bool PaneCommands::ShowPlaceInfo() const
{
    bool shown = false;
    for (const DirListItem *row : RowsToActOn()) {
        if (std::optional<platform::Alert> info = fModel.Source().InfoOf(*row)) {
            platform::Alerts::Go(*info);
            shown = true;
        }
    }
    return shown;
}

void PaneCommands::SetPermissions(mode_t mode)
{
    const std::vector<DirListItem *> rows = RowsToActOn();
    if (std::unique_ptr<PaneSource> place = fModel.Source().WithMode({rows.begin(), rows.end()},
                                                                     mode)) {
        if (!rows.empty())
            fModel.Show(std::move(place));
        return;
    }
    for (const std::string &path : PathsToActOn()) {
        if (const status_t status = platform::SetPermissions(path, mode); status != B_OK)
            KestrinEntry::ShowError(status);
    }
}

std::vector<std::string> PaneCommands::PathsToActOn() const
{
    if (!fModel.Source().HoldsLocalEntries())
        return {};
    return PathsOfRows();
}

std::vector<std::string> PaneCommands::PathsOfRows() const
{
    std::vector<std::string> paths;
    for (const DirListItem *row : RowsToActOn())
        paths.push_back(fModel.PathOf(row));
    return paths;
}

bool PaneCommands::GetRefMsg(platform::Message *message) const
{
    const std::vector<DirListItem *> rows = RowsToActOn();
    for (const DirListItem *row : rows)
        message->AddRef("refs", fModel.RefOf(row));
    return !rows.empty();
}

void PaneCommands::Invoke()
{
    const DirListItem *row = fModel.SelectedRow();
    if (row == nullptr)
        return;
    if (row->IsParent()) {
        fModel.NavigateUp();
        return;
    }
    Opening opening = fModel.Source().Open(*row);
    if (opening.place) {
        fModel.Clear();
        fModel.Show(std::move(opening.place),
                    [model = &fModel, name = opening.selectAfter] { model->SelectByName(name); });
        fModel.Notify(kMsgPaneChanged);
    }
}

void PaneCommands::OpenEditor()
{
    if (std::optional<platform::Alert> refusal = fModel.Source().EditRefusal()) {
        platform::Alerts::Go(*refusal);
        return;
    }
    if (!fModel.Source().HoldsLocalEntries())
        return;
    for (const DirListItem *row : RowsToActOn()) {
        if (!row->IsFolder())
            platform::Launcher::OpenInTextEditor(fModel.PathOf(row));
    }
}

void PaneCommands::View()
{
    const DirListItem *row = fModel.SelectedRow();
    if (row == nullptr || row->IsFolder())
        return;
    if (std::optional<platform::Message> request = fModel.Source().ViewRequest(*row))
        fModel.SendToWindow(*request);
}

void PaneCommands::GetSize()
{
    const DirListItem *row = fModel.SelectedRow();
    if (row == nullptr || row->IsParent() || !row->IsFolder() || row->IsLink()
        || !fModel.Source().HoldsLocalEntries())
        return;
    const std::string path = fModel.PathOf(row);
    const std::string name = row->Name();
    PaneModel *model = &fModel;
    platform::Background::Run(
        model,
        [path](const std::atomic<bool> &) { return KestrinEntry(path).CopySize(); },
        [model, name](double size) {
            const int index = model->FindItem(name);
            if (index < 0)
                return;
            char text[32];
            GetSizeString(int64_t(size), text);
            model->Row(index)->SetSizeText(text);
            model->List().InvalidateItem(index);
        });
}

} // namespace kestrin
