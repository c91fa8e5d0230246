#pragma once

#include <cstdint>

namespace kestrin {

// Asks the main window to connect its focused pane to a stored session: the
// string "session" holds the session's file name, "<name>.ftp".
inline constexpr uint32_t kMsgOpenFtpSession = 602;
// One line of an FTP conversation for a log view: the string "status".
inline constexpr uint32_t kMsgFtpStatus = 603;

// The buttons of the sessions and connection-settings windows.
inline constexpr uint32_t kMsgFtpConnect = 203; // also "OK" of the settings window
inline constexpr uint32_t kMsgFtpCancel = 204;
inline constexpr uint32_t kMsgFtpNewSession = 205;
inline constexpr uint32_t kMsgFtpEditSession = 206;
inline constexpr uint32_t kMsgFtpDeleteSession = 207;

} // namespace kestrin
