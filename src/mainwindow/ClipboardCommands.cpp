#include "mainwindow/ClipboardCommands.h"

#include "fileops/ClipboardEntries.h"
#include "mainwindow/KestrinWindow.h"
#include "mainwindow/WindowMessages.h"
#include "panes/DirPane.h"
#include "panes/PaneCommands.h"
#include "panes/PaneModel.h"
#include "panes/PaneSource.h"
#include "platform/Alerts.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace kestrin {

bool ClipboardCommands::Handle(const platform::Message &message, KestrinWindow &window)
{
    const uint32_t what = message.what;
    if (what != kCmdCopyToClipboard && what != kCmdCutToClipboard && what != kCmdPasteFromClipboard)
        return false;
    DirPane *pane = window.GetFocusedPane();
    if (pane == nullptr)
        return true;
    if (what == kCmdPasteFromClipboard)
        Paste(*pane, window);
    else
        Put(*pane, what == kCmdCutToClipboard);
    return true;
}

void ClipboardCommands::Put(DirPane &pane, bool cut)
{
    const std::vector<std::string> paths = pane.Commands().PathsOfRows();
    if (paths.empty())
        return;
    ClipboardEntries::Written written
        = ClipboardEntries::ForPlace(pane.Model().Source().Place(),
                                     cut ? ClipboardEntries::Action::Cut
                                         : ClipboardEntries::Action::Copy,
                                     paths);
    if (written.refusal) {
        platform::Alerts::Go(*written.refusal);
        return;
    }
    // The clipboard owns the data from here on.
    QGuiApplication::clipboard()->setMimeData(written.data.release());
}

void ClipboardCommands::Paste(DirPane &pane, KestrinWindow &window)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    const QMimeData *data = clipboard->mimeData();
    const ClipboardEntries entries = data != nullptr ? ClipboardEntries::Read(*data)
                                                     : ClipboardEntries{};
    const PaneModel &model = pane.Model();
    // Entries already in the pane's folder stay out; a place that is no
    // local folder has none of them.
    ClipboardEntries::Paste paste = entries.PasteInto(
        model.Source().IsLocalFolder() ? model.CurrentPath() : std::string());
    if (paste.refusal) {
        platform::Alerts::Go(*paste.refusal);
        return;
    }
    paste.request.AddPointer("Target", pane.ListWidget());
    // A cut is pasted once, as in other file managers: its entries are on
    // their way to the new place, and the clipboard would only name where
    // they were.
    if (window.DoDrag(paste.request) && entries.action == ClipboardEntries::Action::Cut)
        clipboard->clear();
}

} // namespace kestrin
