#pragma once

#include <QIcon>
#include <string>
#include <sys/types.h>

namespace kestrin {

// The icons of the lists, from the desktop's icon theme by the entry's type,
// kept once per type; a type the theme has no icon for gets its generic
// MIME icon. The type comes from the name alone (no file is read):
// icons are drawn while painting, and a paint must never wait on a disk.
//
// GUI thread only.
class FileIcons
{
public:
    // `mode` is the entry's (for a link, its target's when known).
    static const QIcon &ForEntry(const std::string &name, mode_t mode, bool isLink);
    static const QIcon &Folder();

    // The theme the icons come from when the desktop names none (Debian's
    // adwaita-icon-theme, which scripts/setup installs).
    static constexpr const char *kFallbackTheme = "Adwaita";
    // Picks the icon theme before the first icon is looked up: the
    // desktop's, else the fallback, which also fills the desktop theme's gaps.
    static void ChooseTheme();
};

} // namespace kestrin
