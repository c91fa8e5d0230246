#include "mainwindow/FocusedPaneCommands.h"

#include "app/AppUtils.h"
#include "fileops/FileOpsMessages.h"
#include "ftp/FtpMessages.h"
#include "mainwindow/Terminal.h"
#include "mainwindow/WindowMessages.h"
#include "panes/DirPane.h"
#include "panes/PaneCommands.h"
#include "panes/PaneMessages.h"
#include "panes/PaneModel.h"
#include "platform/Launcher.h"
#include "platform/PathNames.h"
#include "query/QueryMessages.h"

#include <QWidget>
#include <algorithm>
#include <array>
#include <sys/types.h>

namespace kestrin {

namespace {

constexpr std::array kCodes{
    kCmdOpen,
    kCmdUpALevel,
    kCmdDownALevel,
    kCmdTreeView,
    kCmdRemoveTreeView,
    kCmdOpenTracker,
    kCmdOpenTerminal,
    kCmdOpenTerminalHere,
    kCmdMyProjects,
    kCmdIdentify,
    kMsgSetPermissions,
    kCmdTrash,
    kCmdMkDirText,
    kCmdRenameText,
    kMsgQueryResults,
    kMsgOpenFtpSession,
    kCmdDisconnectFtp,
    kMsgOpenArchive,
    kCmdGoToPath,
};

} // namespace

bool FocusedPaneCommands::Handle(platform::Message &message, DirPane *pane, QWidget *window)
{
    if (std::find(kCodes.begin(), kCodes.end(), message.what) == kCodes.end())
        return false;
    if (pane != nullptr && !ForPane(message, *pane))
        ForList(message, pane->Model(), pane->Commands(), window);
    return true;
}

bool FocusedPaneCommands::ForPane(platform::Message &message, DirPane &pane)
{
    std::string text;
    switch (message.what) {
    case kCmdTreeView:
        pane.DoTree();
        return true;
    case kCmdRemoveTreeView:
        pane.UnDoTree();
        return true;
    case kCmdMyProjects: {
        const std::string projects = PaneModel::DefaultPath() + "/MyProjects";
        pane.GoToDir(projects);
        MsgBox(projects.c_str());
        return true;
    }
    case kMsgOpenFtpSession:
        if (message.FindString("session", &text) == B_OK)
            pane.DoFtp(text);
        return true;
    case kCmdDisconnectFtp:
        pane.Disconnect();
        return true;
    case kCmdGoToPath:
        pane.EditPath();
        return true;
    case kMsgOpenArchive:
        if (message.FindString("session", &text) == B_OK)
            pane.DoZip(text);
        return true;
    default:
        return false;
    }
}

bool FocusedPaneCommands::ForList(platform::Message &message,
                                  PaneModel &model,
                                  PaneCommands &commands,
                                  QWidget *window)
{
    std::string text;
    int32_t mode = 0;
    switch (message.what) {
    case kCmdOpen:
        commands.Invoke();
        return true;
    case kCmdUpALevel:
        model.NavigateUp();
        return true;
    case kCmdDownALevel:
        model.NavigateDown();
        return true;
    case kCmdOpenTracker:
        platform::Launcher::OpenWithPreferredApplication(model.CurrentPath(),
                                                         platform::FailureNotice::StandardError);
        return true;
    case kCmdOpenTerminal:
    case kCmdOpenTerminalHere:
        // The selected folder when there is one, else the pane's own.
        if (!model.GetItemPath(&text) || !platform::IsFolder(text))
            text = model.CurrentPath();
        Terminal::Open(text);
        return true;
    case kCmdIdentify:
        commands.Identify();
        return true;
    case kMsgSetPermissions:
        if (message.FindInt32("Permissions", &mode) == B_OK)
            commands.SetPermissions(mode_t(mode));
        return true;
    case kCmdTrash:
        commands.Trash();
        return true;
    case kCmdMkDirText:
    case kCmdRenameText:
        if (message.FindString("text", &text) == B_OK) {
            window->activateWindow();
            if (message.what == kCmdMkDirText)
                commands.MkDir(text);
            else
                commands.Rename(text);
        }
        return true;
    case kMsgQueryResults:
        model.Clear();
        model.Populate(message);
        return true;
    default:
        return false;
    }
}

} // namespace kestrin
