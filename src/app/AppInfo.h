#pragma once

namespace kestrin {

inline constexpr const char *kProductName = "Kestrin";
inline constexpr const char *kVersion = "v0.7.2";
inline constexpr const char *kWindowTitle = "Kestrin v0.7.2";
inline constexpr const char *kAppSignature = "application/x-vnd.Be-Kestrin";

// The folder and file of the settings profile.
inline constexpr const char *kSettingsFolder = "Kestrin";
inline constexpr const char *kSettingsFile = "Kestrin.pref";

} // namespace kestrin
