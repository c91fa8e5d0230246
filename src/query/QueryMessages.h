#pragma once

#include <cstdint>

namespace kestrin {

// The query window's messages: its buttons, the choices of its menus, and
// the results it sends the main window.
inline constexpr uint32_t kMsgQueryResults = 601;
inline constexpr uint32_t kMsgStartQuery = 2057;
inline constexpr uint32_t kMsgCancelQuery = 2058;
inline constexpr uint32_t kMsgQueryHelp = 2059;

inline constexpr uint32_t kMsgAgeHours = 2060;
inline constexpr uint32_t kMsgAgeDays = 2061;
inline constexpr uint32_t kMsgAgeWeeks = 2062;
inline constexpr uint32_t kMsgAgeYears = 2063;

inline constexpr uint32_t kMsgSizeEqual = 2070;
inline constexpr uint32_t kMsgSizeGreater = 2071; // greater or equal in the predicate
inline constexpr uint32_t kMsgSizeLess = 2072;    // less or equal in the predicate

inline constexpr uint32_t kMsgSizeBytes = 2080;
inline constexpr uint32_t kMsgSizeKilobytes = 2081;
inline constexpr uint32_t kMsgSizeMegabytes = 2082;

inline constexpr uint32_t kMsgNameContains = 2090;
inline constexpr uint32_t kMsgNameIsNot = 2091;
inline constexpr uint32_t kMsgNameIs = 2092;
inline constexpr uint32_t kMsgNameStartsWith = 2093;
inline constexpr uint32_t kMsgNameEndsWith = 2094;

// A date check box was toggled; pointer field "source", the box.
inline constexpr uint32_t kMsgDateCheck = 2095;
// A volume was chosen; int32 field "Volumes", its device, or none for all.
inline constexpr uint32_t kMsgVolumeChosen = 3000;
// The worker of a running query is done.
inline constexpr uint32_t kMsgQueryDone = 3001;
// The focused pane's folder was chosen in the volume menu; string field
// "Folder". Unlike a volume, it narrows the walk to that folder's tree.
inline constexpr uint32_t kMsgFolderChosen = 3002;

} // namespace kestrin
