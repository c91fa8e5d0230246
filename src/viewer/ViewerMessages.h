#pragma once

#include "platform/TypeCodes.h"

#include <cstdint>

namespace kestrin {

// The viewer window's menu commands.
inline constexpr uint32_t kMsgViewerOpen = platform::FourCC("open");
inline constexpr uint32_t kMsgWrapText = platform::FourCC("wrap");
inline constexpr uint32_t kMsgWrapToEdge = platform::FourCC("edge");
inline constexpr uint32_t kMsgStretchToFit = platform::FourCC("tfit");
// "scale" float and "scale_mode" int32 (0 by the factor, 2 to fit the screen).
inline constexpr uint32_t kMsgScale = platform::FourCC("scal");

} // namespace kestrin
