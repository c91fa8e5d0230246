#pragma once

#include "fileops/FileOpsMessages.h"
#include "platform/TypeCodes.h"

#include <cstdint>

namespace kestrin {

// What the lists of the panes send and take. Codes between the list and its
// pane, and from the list to the main window, are fixed numbers that the
// windows of Kestrin have always used.

// The list's own selection and invocation messages.
inline constexpr uint32_t kMsgListSelection = 1;
inline constexpr uint32_t kMsgListInvocation = 2;

// From the list to its pane.
inline constexpr uint32_t kMsgPaneChanged = 500; // path or selection changed
inline constexpr uint32_t kMsgListingBegan = 607;
inline constexpr uint32_t kMsgListingEnded = 608;
inline constexpr uint32_t kMsgListingStep = 609;
inline constexpr uint32_t kMsgListingMax = 610; // "maxvalue" int32: entries + 1
inline constexpr uint32_t kMsgHelpKeys = 140;   // F1

// From the list to the main window.
inline constexpr uint32_t kMsgColumnWidth = 600; // "ColumnIndex", "ColumnWidth" (strings)
inline constexpr uint32_t kMsgNewFolder = 106;   // F7
inline constexpr uint32_t kMsgNewQuery = 123;    // Ctrl+F7
inline constexpr uint32_t kMsgOpenArchive = 616; // "session": the zip file's path
// F3: show a file in the viewer; "path" is the file.
inline constexpr uint32_t kMsgOpenViewer = platform::FourCC("View");
// F3 on a server's file: the fields of its download (604), to a folder of
// the main window's choosing, after which the viewer shows it.
inline constexpr uint32_t kMsgViewFromServer = platform::FourCC("VwDl");
// The field of kMsgViewFromServer that holds the code of the download
// that brings the file (kMsgFtpDownload when there is none).
inline constexpr const char *kViewDownload = "Download";

// From the in-place rename field to the list.
inline constexpr uint32_t kMsgRenameAccept = 513; // "pos" int32: the row
inline constexpr uint32_t kMsgRenameCancel = 605;

// Pane modes.
inline constexpr int32_t kModeQuery = 1100;
inline constexpr int32_t kModeFolder = 1101;
inline constexpr int32_t kModeFtp = 1102;
inline constexpr int32_t kModeArchive = 1103;

// Sort keys are the list's column indexes.
inline constexpr int32_t kColumnIcon = 0;
inline constexpr int32_t kColumnName = 1;
inline constexpr int32_t kColumnSize = 2;
inline constexpr int32_t kColumnDate = 3;
inline constexpr int32_t kColumnPermissions = 4;

} // namespace kestrin
