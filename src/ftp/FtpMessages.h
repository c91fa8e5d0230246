#pragma once

#include <cstdint>

namespace kestrin {

// One log line of an FTP client, for a pane's log view and the status
// window: "status" (string).
inline constexpr uint32_t kMsgFtpStatus = 603;

} // namespace kestrin
