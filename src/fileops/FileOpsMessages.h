#pragma once

#include "platform/TypeCodes.h"

#include <cstdint>

namespace kestrin {

// Requests to the copy engine.
inline constexpr uint32_t kMsgCopyRequest = platform::FourCC("DATA"); // copy, move, link; FTP upload
inline constexpr uint32_t kMsgFtpDownload = 604;
// Transfers from and to an SFTP folder. They carry the server's fields as an
// FTP download or upload does ("Session", "Host", "User", "Password",
// "Port", "FtpPath" the remote folder) and, from a server, "FtpFile" and
// "FtpDir" for each entry; to a server, the local "refs".
inline constexpr uint32_t kMsgSftpDownload = 650;
inline constexpr uint32_t kMsgSftpUpload = 651;
inline constexpr uint32_t kMsgDeleteRequest = 606; // trash, or delete for good in the Trash
inline constexpr uint32_t kMsgPackRequest = 615;
inline constexpr uint32_t kMsgUnpackRequest = 618;

// The progress window's buttons.
inline constexpr uint32_t kMsgPauseCopy = 300;
inline constexpr uint32_t kMsgStopCopy = 301;

// The permissions window: its buttons, and the mode it sends ("Permissions").
inline constexpr uint32_t kMsgPermissionsOK = 203;
inline constexpr uint32_t kMsgPermissionsCancel = 204;
inline constexpr uint32_t kMsgSetPermissions = 617;

// Overwrite answers; the code of the pressed button is the decision.
inline constexpr int32_t kNoDecision = 0;
inline constexpr int32_t kOverwrite = 1000;
inline constexpr int32_t kOverwriteAll = 1001;
inline constexpr int32_t kOverwriteAllOlder = 1002;
inline constexpr int32_t kSkip = 1003;
inline constexpr int32_t kSkipAll = 1004;
inline constexpr int32_t kCancelBatch = 1005;

} // namespace kestrin
