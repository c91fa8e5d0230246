#pragma once

#include <cstdint>

namespace kestrin {

// The preferences window's own messages, and the one it sends the main
// window when the preferences were saved.
inline constexpr uint32_t kMsgSaveOptions = 3500;
inline constexpr uint32_t kMsgOptionsHelp = 3501;
inline constexpr uint32_t kMsgDateFormatChosen = 3502; // "Date Format"
inline constexpr uint32_t kMsgColorChanged = 623;
inline constexpr uint32_t kMsgColorKindChanged = 624;
inline constexpr uint32_t kMsgPreferencesChanged = 614;

} // namespace kestrin
