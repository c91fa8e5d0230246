#pragma once

#include "ftp/FtpMessages.h"
#include "platform/Message.h"
#include "platform/TypeCodes.h"
#include "prefs/PrefsMessages.h"
#include "query/QueryMessages.h"

#include <cstdint>

namespace kestrin {

// The main window's commands: the codes of its menu items, of the panes'
// pop-up menu and of the messages other windows send it.
inline constexpr uint32_t kCmdOpen = 100;
inline constexpr uint32_t kCmdOccupiedSpace = 102;
inline constexpr uint32_t kCmdAbout = 105;
inline constexpr uint32_t kCmdNewFolder = 106;
inline constexpr uint32_t kCmdRename = 107;
inline constexpr uint32_t kCmdEmptyTrash = 108;
inline constexpr uint32_t kCmdUpALevel = 110;
inline constexpr uint32_t kCmdOpenInLeftPane = 111;
inline constexpr uint32_t kCmdOpenInRightPane = 112;
inline constexpr uint32_t kCmdDownALevel = 113;
inline constexpr uint32_t kCmdAddPane = 120;
inline constexpr uint32_t kCmdRemovePane = 121;
inline constexpr uint32_t kCmdRevertToDefault = 122;
inline constexpr uint32_t kCmdQuery = 123;
inline constexpr uint32_t kCmdFtpConnections = 124;
inline constexpr uint32_t kCmdDisconnectFtp = 125;
inline constexpr uint32_t kCmdPreferences = 127;
inline constexpr uint32_t kCmdPermissions = 128;
inline constexpr uint32_t kCmdTreeView = 129;
inline constexpr uint32_t kCmdOpenTracker = 130;
inline constexpr uint32_t kCmdOpenTerminal = 131;
inline constexpr uint32_t kCmdOverwrite = 132;
inline constexpr uint32_t kCmdOpenTerminalHere = 133;
inline constexpr uint32_t kCmdMyProjects = 135;
inline constexpr uint32_t kCmdHelp = 139;
inline constexpr uint32_t kCmdKeyboardHelp = 140;
inline constexpr uint32_t kCmdIdentify = 141;
inline constexpr uint32_t kCmdGetInfo = 142;
inline constexpr uint32_t kCmdRemoveTreeView = 143;
inline constexpr uint32_t kCmdTrash = 144;
inline constexpr uint32_t kCmdMkDirText = 512;
inline constexpr uint32_t kCmdRenameText = 513;
inline constexpr uint32_t kCmdRunAddOn = 613;
inline constexpr uint32_t kCmdZoom = 620;
inline constexpr uint32_t kCmdFocusPane = 1000; // 1000 + the pane's index

// Commands Kestrin has beyond the historic menus; their codes stay clear of
// the historic ones and of the messages between windows.
inline constexpr uint32_t kCmdGoToPath = 700;
inline constexpr uint32_t kCmdBack = 710;
inline constexpr uint32_t kCmdForward = 711;
inline constexpr uint32_t kCmdRecentPlaces = 712;
inline constexpr uint32_t kCmdShowHotlist = 720;
inline constexpr uint32_t kCmdAddToHotlist = 721;
inline constexpr uint32_t kCmdEditHotlist = 722;
inline constexpr uint32_t kCmdFilter = 730;
inline constexpr uint32_t kCmdHiddenFiles = 731;
inline constexpr uint32_t kCmdMarkByPattern = 740;
inline constexpr uint32_t kCmdUnmarkByPattern = 741;
inline constexpr uint32_t kCmdCompareFolders = 742;
inline constexpr uint32_t kCmdCompareByContent = 743;
inline constexpr uint32_t kCmdCopyToClipboard = 750;
inline constexpr uint32_t kCmdCutToClipboard = 751;
inline constexpr uint32_t kCmdPasteFromClipboard = 752;
// The "View" menu is about to show: its checkable items follow the focused
// pane.
inline constexpr uint32_t kMsgViewMenuShowing = 735;
// The object name of the checkable "Show Hidden Files" item.
inline constexpr const char *kHiddenFilesItem = "ShowHiddenFiles";

inline constexpr int kMaxPanes = 10;

// A string field of a B_REFS_RECEIVED message that says how its refs are
// shown. Absent, each ref is shown as the command line shows it (a folder
// listed, a file selected in its folder); "items" selects every ref in its
// folder, folders too; "properties" opens an information window on each.
// The desktop's file-manager interface asks for all three.
inline constexpr const char *kRefsShow = "kestrin:show";
inline constexpr const char *kRefsShowItems = "items";
inline constexpr const char *kRefsShowProperties = "properties";

} // namespace kestrin
