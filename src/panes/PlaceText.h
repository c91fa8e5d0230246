#pragma once

#include <string>
#include <utility>

namespace kestrin {

// The text the history and the hotlist keep for a place that the profile
// would keep as less: a folder inside an archive as
// "archive:<archive>\t<folder inside>" (a session's name never holds a "/")
// and a server's folder as "<session>\t<remote folder>" (no path and no name
// holds a tab that Kestrin keeps). Anything else is a folder's path or a
// session's name, as the profile keeps them. Text only: SavedPlace makes
// the places.
class PlaceText
{
public:
    // `inside` is "" at the archive's top, else ends in "/".
    static std::string ArchivePlace(const std::string &archive, const std::string &inside);
    static bool IsArchivePlace(const std::string &text);
    // The archive and the folder inside it.
    static std::pair<std::string, std::string> ArchiveParts(const std::string &text);

    static std::string ServerPlace(const std::string &session, const std::string &remoteFolder);
    // The session's name, and the remote folder (empty when the text names
    // only the session).
    static std::pair<std::string, std::string> ServerParts(const std::string &text);

    // What a menu shows for a kept place: a path, an archive's path with
    // the folder inside it, or "session: /remote/folder".
    static std::string Title(const std::string &text);
};

} // namespace kestrin
