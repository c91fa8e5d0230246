#pragma once

#include <string>
#include <vector>

namespace kestrin {

// A folder the desktop's own file managers keep as a bookmark: its label
// and its local path.
struct DesktopBookmark
{
    std::string label;
    std::string path;

    bool operator==(const DesktopBookmark &) const = default;
};

// The bookmarks of the desktop, which the hotlist's menu shows below its own
// entries, read-only: GTK's (gtk-3.0/bookmarks in the settings folder, lines
// of a file:// address and an optional label) and KDE's (user-places.xbel in
// the data folder, XBEL bookmarks). Only local folders are kept: other
// addresses (sftp://, trash:/, recent:/ ...) are skipped, as are the places
// KDE hides.
class DesktopBookmarks
{
public:
    static std::vector<DesktopBookmark> FromGtk(const std::string &text);
    static std::vector<DesktopBookmark> FromXbel(const std::string &text);
    // GTK's then KDE's, from the user's folders; a file that is missing or
    // unreadable gives none. Each path once.
    static std::vector<DesktopBookmark> Read();
};

} // namespace kestrin
